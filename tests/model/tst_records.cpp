#include "model/agentstate.h"
#include "model/alertitem.h"
#include "model/discovery.h"
#include "model/scanresult.h"
#include "model/wire.h"
#include "support/recordschema.h"
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

/// Each key in turn is left out or holds a value of each type: the record decodes exactly when its schema allows it.
template <typename Record> void checkKeys(const char *schema, const QJsonValue &good)
{
    QVERIFY2(Record::decode(good), schema);
    for (const QByteArray &key : keysOf(schema)) {
        for (const QJsonValue &value :
            {QJsonValue(QJsonValue::Undefined), QJsonValue(), QJsonValue(true), QJsonValue(5), QJsonValue(1.5),
                QJsonValue(QStringLiteral("5")), QJsonValue(QJsonArray()), QJsonValue(QJsonArray{1}),
                QJsonValue(QJsonArray{QStringLiteral("a"), QJsonValue()}), QJsonValue(QJsonObject())}) {
            QJsonObject changed = good.toObject();
            changed.insert(QLatin1String(key), value); // undefined removes the key
            QVERIFY2(Record::decode(changed).has_value() == fits(changed, schema), (schema + (' ' + key)).constData());
        }
    }
    QVERIFY2(!Record::decode(QJsonArray{good}) && !Record::decode(QJsonValue()), schema);
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
        QCOMPARE(state->recentJobs.first().waitingFor, QStringLiteral("paper_out"));
        QCOMPARE(state->recentJobs.first().confirmed, QStringLiteral("no"));
        QVERIFY(!state->recentJobs.last().waitingFor && !state->recentJobs.last().confirmed);
        const QList<AskedOrigin> asked{{QStringLiteral("https://new.example.com"), 1700000002000},
            {QStringLiteral("https://newer.example.com"), 1700000003000}};
        QVERIFY(state->askedOrigins == asked);

        const PrinterInfo &kitchen = state->printers.first();
        QVERIFY(!kitchen.reason && !kitchen.problem);
        QVERIFY(kitchen.paper == QStringLiteral("low") && kitchen.cover == QStringLiteral("closed"));
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

    void everyKeyHasItsType()
    {
        const QJsonObject state = storedObject(QStringLiteral("wire/state.json"));
        const QJsonObject alerts = storedObject(QStringLiteral("wire/alerts.json"));
        checkKeys<AgentState>("state", state);
        checkKeys<PrinterInfo>("printer", state[QLatin1String("printers")][0]);
        checkKeys<PairedSite>("site", state[QLatin1String("pairedSites")][0]);
        checkKeys<JobInfo>("job", state[QLatin1String("recentJobs")][1]);
        checkKeys<AlertsResult>("alerts", alerts);
        checkKeys<AlertItem>("alert", alerts[QLatin1String("alerts")][0]);
        checkKeys<ScanResult>("scan", objectOf(R"({"printers":[],"connected":0})"));
        checkKeys<ScanPrinter>("scanned", objectOf(R"({"id":"1","name":"N","state":"offline","reason":"no_route"})"));
        checkKeys<NetResult>("network", objectOf(R"({"hosts":[{"host":"h","port":9100}]})"));
        checkKeys<NetHost>("host", objectOf(R"({"host":"h","port":9100})"));
        checkKeys<UsbResult>("usb", objectOf(R"({"devices":[{"product":"P","uri":"usb:P"}]})"));
        checkKeys<UsbDevice>("device", objectOf(R"({"vendor":null,"product":"P","uri":"usb:P"})"));
        checkKeys<BonjourResult>("bonjour", objectOf(R"({"services":[]})"));
        checkKeys<BonjourService>("announced", objectOf(R"({"name":"N","host":"h","port":631,"transport":"ipp"})"));
        for (const char *lastOdd : {R"({"hosts":[{"host":"h","port":9100},{"host":"h","port":"9100"}]})",
                 R"({"hosts":[{"host":"h","port":9100},null]})"})
            QVERIFY(!NetResult::decode(objectOf(lastOdd)));
    }

    // The values, by the keys that another record of the same type could be mistaken for.
    void searchesKeepTheirValues()
    {
        const auto usb = decodeBody<UsbResult>(R"({"devices":[{"product":"P","uri":"u","vendor":"V"}]})");
        QCOMPARE(usb->devices, (QList<UsbDevice>{{QStringLiteral("V"), QStringLiteral("P"), QStringLiteral("u")}}));
        const auto found
            = decodeBody<BonjourResult>(R"({"services":[{"name":"N","host":"h","port":631,"transport":"ipp"}]})");
        QCOMPARE(found->services,
            (QList<BonjourService>{{QStringLiteral("N"), QStringLiteral("h"), 631, QStringLiteral("ipp")}}));
        const auto scan = decodeBody<ScanResult>(
            R"({"printers":[{"id":"1","name":"N","state":"offline","reason":"no_route"}],"connected":7})");
        QCOMPARE(scan->connected, 7);
        QCOMPARE(scan->printers,
            (QList<ScanPrinter>{
                {QStringLiteral("1"), QStringLiteral("N"), QStringLiteral("offline"), QStringLiteral("no_route")}}));
    }

    void oddPrinterCostsItsOddField()
    {
        QJsonObject printer = storedObject(QStringLiteral("wire/state.json"))[QLatin1String("printers")][0].toObject();
        for (const QJsonValue &odd :
            {QJsonValue(QJsonValue::Undefined), QJsonValue(), QJsonValue(5), QJsonValue(QJsonArray{1})}) {
            for (const char *key : {"reason", "problem", "paper", "cover", "protocol", "profile"})
                printer.insert(QLatin1String(key), odd);
            const auto decoded = PrinterInfo::decode(printer);
            QVERIFY(decoded && !decoded->reason && !decoded->protocolName && !decoded->profile);
            QCOMPARE(decoded->name, QStringLiteral("Kitchen"));
        }
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

    void numbersKeepTheirKind()
    {
        using Limits = std::numeric_limits<qint64>;
        const std::pair<const char *, std::optional<qint64>> rows[] = {{"9007199254740993", 9007199254740993}, // 2^53+1
            {"9223372036854775807", Limits::max()}, {"-9223372036854775808", Limits::min()},
            {"9223372036854775808", {}}, {"5.0", 5}, {"1e3", 1000}, {"5.5", {}}, {"0", 0}, {"1", 1}, {"true", {}},
            {"\"5\"", {}}, {"1e400", {}}};
        for (const auto &[number, value] : rows) {
            const auto result = decodeBody<NetResult>(QByteArray(R"({"hosts":[{"host":"h","port":)") + number + "}]}");
            QVERIFY2((result ? std::optional(result->hosts.first().port) : std::nullopt) == value, number);
        }
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
