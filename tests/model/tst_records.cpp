#include "model/agentstate.h"
#include "model/alertitem.h"
#include "model/discovery.h"
#include "model/scanresult.h"
#include "model/wire.h"
#include "support/testmain.h"
#include "support/wiredata.h"

#include <QJsonArray>
#include <QTest>

using namespace zemrak;
using namespace zemrak::test;

namespace {

QJsonObject objectOf(const char *json)
{
    return parseObject(QByteArray(json)).value();
}

std::optional<Profile> profileOf(const char *json)
{
    return Profile::decode(objectOf(json));
}

} // namespace

class RecordsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void storedStateDecodesWhole()
    {
        const auto state = decodeBody<AgentState>(storedBody(QStringLiteral("wire/state.json")));
        QVERIFY(state);
        QCOMPARE(state->version, QStringLiteral("1.4.0"));
        QCOMPARE(state->httpPort, 17731);
        QCOMPARE(state->httpsPort, 17732);
        QVERIFY(state->tls && !state->autoApprovePairing);
        QCOMPARE(state->alertsUnread, 2);
        QCOMPARE(state->allowedOrigins.size(), 2);
        QCOMPARE(state->defaultOrigins, QStringList{QStringLiteral("https://pos.zemrak.example")});
        QCOMPARE(state->pairedSites.first().createdAt, 1700000000000.5);

        QCOMPARE(state->recentJobs.size(), 2);
        QCOMPARE(state->recentJobs.first().id, QStringLiteral("j2"));
        QVERIFY(!state->recentJobs.first().printerName);
        QCOMPARE(state->recentJobs.first().errorCode, QStringLiteral("offline"));

        const PrinterInfo &kitchen = state->printers.first();
        QVERIFY(!kitchen.reason);
        QCOMPARE(kitchen.protocolName, QStringLiteral("escpos"));
        const Profile expected{.protocolName = QStringLiteral("escpos"),
            .dots = 576,
            .cut = QStringLiteral("full"),
            .dither = QStringLiteral("floyd"),
            .alias = QStringLiteral("مطبخ 1"),
            .role = QStringLiteral("kitchen"),
            .drawerPin = QStringLiteral("5"),
            .codepageEncoding = QStringLiteral("windows-1256"),
            .codepageEscT = 50};
        QVERIFY(kitchen.profile == expected);
        QVERIFY(!state->printers.last().profile && !state->printers.last().protocolName);
        QCOMPARE(state->printers.last().reason, QStringLiteral("unreachable"));
    }

    void storedAlertsDecodeWhole()
    {
        const auto result = decodeBody<AlertsResult>(storedBody(QStringLiteral("wire/alerts.json")));
        QVERIFY(result);
        QCOMPARE(result->unread, 1);
        QCOMPARE(result->alerts.first().count, 9007199254740993); // 2^53 + 1
        QCOMPARE(result->alerts.first().lastAt, 1700000060000.25);
        QVERIFY(!result->alerts.first().resolvedAt);
        QCOMPARE(result->alerts.last().count, 3);
        QVERIFY(!result->alerts.last().action);
        QCOMPARE(result->alerts.last().resolvedAt, 3.0);
    }

    // Every key of the state is required, and each with its own type.
    void stateNeedsEveryKey()
    {
        const QJsonObject good = storedObject(QStringLiteral("wire/state.json"));
        for (const QString &key : good.keys()) {
            if (key == QLatin1String("aKeyOfALaterVersion"))
                continue;
            for (const QJsonValue &bad :
                {QJsonValue(QJsonValue::Undefined), QJsonValue(), QJsonValue(QJsonObject{}), QJsonValue(1.5)}) {
                QJsonObject broken = good;
                broken.insert(key, bad); // undefined removes the key
                QVERIFY2(!AgentState::decode(broken), qPrintable(key));
            }
        }
    }

    void oddPrinterCostsItsOddField_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QJsonValue>("value");
        QTest::addColumn<bool>("decodes");
        const auto row = [](const char *key, const QJsonValue &value, bool decodes) {
            QTest::addRow("%s/%d", key, int(value.type())) << QString::fromLatin1(key) << value << decodes;
        };
        for (const char *key : {"id", "name", "type", "state"}) {
            row(key, QJsonValue(QJsonValue::Undefined), false);
            row(key, QJsonValue(), false);
            row(key, 5, false);
        }
        for (const char *key : {"reason", "protocol", "profile"}) {
            row(key, QJsonValue(QJsonValue::Undefined), true);
            row(key, QJsonValue(), true);
            row(key, 5, true);
            row(key, QJsonArray{1}, true);
        }
        row("profile", QStringLiteral("none"), true);
    }
    void oddPrinterCostsItsOddField()
    {
        QFETCH(QString, key);
        QFETCH(QJsonValue, value);
        QFETCH(bool, decodes);
        QJsonObject state = storedObject(QStringLiteral("wire/state.json"));
        QJsonArray printers = state[QLatin1String("printers")].toArray();
        QJsonObject printer = printers.last().toObject();
        printer.insert(key, value);
        printers[printers.size() - 1] = printer;
        state.insert(QStringLiteral("printers"), printers);

        const auto decoded = AgentState::decode(state);
        QCOMPARE(decoded.has_value(), decodes);
        if (!decodes)
            return;
        QCOMPARE(decoded->printers.last().name, QStringLiteral("Bar"));
        if (key == QLatin1String("reason"))
            QVERIFY(!decoded->printers.last().reason);
        if (key == QLatin1String("profile"))
            QVERIFY(!decoded->printers.last().profile);
    }

    void profileTakesEachFieldOnItsOwn()
    {
        const Profile defaults{.drawerPin = QStringLiteral("2")};
        QVERIFY(profileOf("{}") == defaults);
        QVERIFY(profileOf(R"({"protocol":1,"dots":"576","cut":[],"dither":{},"alias":false,"role":null})") == defaults);
        QVERIFY(!Profile::decode(QJsonValue(QStringLiteral("text"))));
        QCOMPARE(profileOf(R"({"dots":"576","alias":"A"})")->alias, QStringLiteral("A"));

        QCOMPARE(profileOf(R"({"drawerPin":5})")->drawerPin, QStringLiteral("5"));
        QCOMPARE(profileOf(R"({"drawerPin":5.0})")->drawerPin, QStringLiteral("5"));
        QCOMPARE(profileOf(R"({"drawerPin":"both"})")->drawerPin, QStringLiteral("both"));
        for (const char *odd : {R"({"drawerPin":true})", R"({"drawerPin":2.5})", R"({"drawerPin":null})"})
            QCOMPARE(profileOf(odd)->drawerPin, QStringLiteral("2"));

        const auto half = profileOf(R"({"codepage":{"encoding":"iso-8859-6"}})");
        QCOMPARE(half->codepageEncoding, QStringLiteral("iso-8859-6"));
        QVERIFY(!half->codepageEscT);
        QCOMPARE(profileOf(R"({"codepage":{"encoding":7,"escT":22}})")->codepageEscT, 22);
        QVERIFY(profileOf(R"({"codepage":"windows-1256"})") == defaults);
    }

    void numbersKeepTheirKind_data()
    {
        QTest::addColumn<QByteArray>("number");
        QTest::addColumn<bool>("integer");
        QTest::addColumn<qint64>("value");
        QTest::newRow("2^53+1") << QByteArray("9007199254740993") << true << Q_INT64_C(9007199254740993);
        QTest::newRow("largest") << QByteArray("9223372036854775807") << true << std::numeric_limits<qint64>::max();
        QTest::newRow("smallest") << QByteArray("-9223372036854775808") << true << std::numeric_limits<qint64>::min();
        QTest::newRow("too large") << QByteArray("9223372036854775808") << false << Q_INT64_C(0);
        QTest::newRow("zero fraction") << QByteArray("5.0") << true << Q_INT64_C(5);
        QTest::newRow("exponent") << QByteArray("1e3") << true << Q_INT64_C(1000);
        QTest::newRow("fraction") << QByteArray("5.5") << false << Q_INT64_C(0);
        QTest::newRow("zero") << QByteArray("0") << true << Q_INT64_C(0);
        QTest::newRow("one") << QByteArray("1") << true << Q_INT64_C(1);
        QTest::newRow("boolean") << QByteArray("true") << false << Q_INT64_C(0);
        QTest::newRow("text") << QByteArray("\"5\"") << false << Q_INT64_C(0);
        QTest::newRow("beyond a double") << QByteArray("1e400") << false << Q_INT64_C(0);
    }
    void numbersKeepTheirKind()
    {
        QFETCH(QByteArray, number);
        QFETCH(bool, integer);
        QFETCH(qint64, value);
        const auto result = decodeBody<NetResult>(R"({"hosts":[{"host":"h","port":)" + number + "}]}");
        QCOMPARE(result.has_value(), integer);
        if (integer)
            QCOMPARE(result->hosts.first().port, value);
    }

    void searchesDecodeOrFailWhole()
    {
        const auto usb = decodeBody<UsbResult>(R"({"devices":[{"product":"P","uri":"usb:P","vendor":null}]})");
        QVERIFY(usb && !usb->devices.first().vendor);
        QVERIFY(!decodeBody<UsbResult>(R"({"devices":[{"vendor":"V","product":"P"}]})"));
        QVERIFY(!decodeBody<UsbResult>(R"({"devices":[{"vendor":1,"product":"P","uri":"u"}]})"));
        QVERIFY(!decodeBody<NetResult>(R"({"hosts":[{"host":"h","port":9100},{"host":"h","port":"9100"}]})"));
        QVERIFY(decodeBody<BonjourResult>(R"({"services":[{"name":"N","host":"h","port":631,"transport":"ipp"}]})"));
        QVERIFY(!decodeBody<BonjourResult>(R"({"services":{}})"));
        const auto scan = decodeBody<ScanResult>(
            R"({"printers":[{"id":"1","name":"N","state":"offline","reason":"no_route"}],"connected":0})");
        QCOMPARE(scan->printers.first().reason, QStringLiteral("no_route"));
        QVERIFY(!decodeBody<ScanResult>(R"({"printers":[]})"));
    }

    void brokenBodiesDoNotDecode()
    {
        const QByteArray whole = storedBody(QStringLiteral("wire/state.json")).trimmed();
        for (qsizetype size = 0; size < whole.size(); ++size)
            QVERIFY(!decodeBody<AgentState>(whole.left(size)));

        const auto nested
            = [](int depth) { return "{\"hosts\":[],\"x\":" + QByteArray(depth, '[') + QByteArray(depth, ']') + "}"; };
        QVERIFY(decodeBody<NetResult>(nested(500)));
        QVERIFY(!decodeBody<NetResult>(nested(2000)));
        QVERIFY(!decodeBody<NetResult>(QByteArray("{\"hosts\":[],\"x\":") + QByteArray(1'000'000, '[')));
        QVERIFY(!decodeBody<NetResult>("{\"hosts\":[{\"host\":\"\xff\xfe\",\"port\":1}]}"));
        QVERIFY(!decodeBody<NetResult>("{\"hosts\":[{\"host\":\"\xd8\x00\",\"port\":1}]}"));
        QVERIFY(!decodeBody<NetResult>("[]"));
        QVERIFY(!decodeBody<NetResult>("null"));
        QVERIFY(!decodeBody<NetResult>("{\"hosts\":[]} trailing"));
        // Of a key that stands twice one value is taken, and that one must be right.
        const auto twice = decodeBody<NetResult>(R"({"hosts":[{"host":"a","host":"b","port":1}]})");
        QVERIFY(twice);
        QVERIFY(twice->hosts.first().host == QLatin1String("a") || twice->hosts.first().host == QLatin1String("b"));
    }
};

ZEMRAK_TEST(records, RecordsTest, QCoreApplication)
#include "tst_records.moc"
