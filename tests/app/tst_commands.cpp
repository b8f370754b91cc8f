#include "app/commands.h"
#include "support/manualclock.h"
#include "support/recordingservice.h"
#include "support/testmain.h"

#include <QJsonDocument>
#include <QTest>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

struct Fixture
{
    ManualClock clock;
    RecordingService service;
    StatePoll poll{service, clock};
    Toast toast{clock};
    Commands commands{service, poll, toast, clock};
    std::optional<bool> done;
    QString order; ///< what happened, a letter each
    std::optional<qsizetype> hits;

    Commands::Succeeded note()
    {
        return [this](bool ok) {
            done = ok;
            order += QLatin1Char('d');
        };
    }
    template <typename Record> Commands::Found<Record> count()
    {
        return [this](const QList<Record> &found) { hits = found.size(); };
    }
};

using Call = std::function<void(Fixture &)>;

QString text(const char *latin1)
{
    return QString::fromLatin1(latin1);
}

const QByteArray noBody; // null

/// One line of the table of commands.
struct Row
{
    const char *name;
    Call call;
    const char *path;
    QByteArray body;
    int timeoutMs;
};

QList<Row> table()
{
    return {
        {"testPrint", [](Fixture &f) { f.commands.testPrint(text("p1")); }, "/admin/test", R"({"printer":"p1"})", 5000},
        {"saveProfile",
            [](Fixture &f) {
                f.commands.saveProfile(
                    text("p1"), {{text("dots"), QJsonValue()}, {text("cut"), text("full")}}, f.note());
            },
            "/admin/profile", R"({"id":"p1","profile":{"cut":"full","dots":null}})", 5000},
        {"printerAction", [](Fixture &f) { f.commands.printerAction(text("p1"), text("cut"), {}, text("ok")); },
            "/admin/printers/action", R"({"action":"cut","id":"p1"})", 15000},
        {"printerAction with a pin",
            [](Fixture &f) { f.commands.printerAction(text("p1"), text("drawer"), text("5"), text("ok")); },
            "/admin/printers/action", R"({"action":"drawer","id":"p1","pin":"5"})", 15000},
        {"remove", [](Fixture &f) { f.commands.remove(text("p1")); }, "/admin/printers/remove", R"({"id":"p1"})", 5000},
        {"addNetwork", [](Fixture &f) { f.commands.addNetwork(text("K"), text("10.0.0.9"), 9100); },
            "/admin/printers/add", R"({"host":"10.0.0.9","name":"K","port":9100,"transport":"raw","type":"net"})",
            5000},
        {"addNetwork by LPD", [](Fixture &f) { f.commands.addNetwork(text(""), text(" h"), -1, text("lpd")); },
            "/admin/printers/add", R"({"host":" h","name":"","port":-1,"transport":"lpd","type":"net"})", 5000},
        {"addUsb", [](Fixture &f) { f.commands.addUsb(text("U"), text("usb:x")); }, "/admin/printers/add-usb",
            R"({"name":"U","uri":"usb:x"})", 40000},
        {"addOrigin", [](Fixture &f) { f.commands.addOrigin(text(" Pos.Example "), f.note()); }, "/admin/origins/add",
            R"({"origin":" Pos.Example "})", 5000},
        {"removeOrigin", [](Fixture &f) { f.commands.removeOrigin(text("a")); }, "/admin/origins/remove",
            R"({"origin":"a"})", 5000},
        {"revoke", [](Fixture &f) { f.commands.revoke(text("s1")); }, "/admin/revoke", R"({"id":"s1"})", 5000},
        {"setAutoApprove", [](Fixture &f) { f.commands.setAutoApprove(true); }, "/admin/settings",
            R"({"autoApprovePairing":true})", 5000},
        {"scanBonjour", [](Fixture &f) { f.commands.scanBonjour(f.count<BonjourService>()); },
            "/admin/discover/bonjour", noBody, 20000},
        {"scanNetwork", [](Fixture &f) { f.commands.scanNetwork(f.count<NetHost>()); }, "/admin/discover/network",
            noBody, 40000},
        {"scanUsb", [](Fixture &f) { f.commands.scanUsb(f.count<UsbDevice>()); }, "/admin/discover/usb", noBody, 15000},
        {"printDesigner",
            [](Fixture &f) {
                f.commands.printDesigner(text("p1"), {{text("title"), text("T")}}, f.note());
            },
            "/admin/designer/print", R"({"doc":{"title":"T"},"printer":"p1"})", 15000},
    };
}

} // namespace

class CommandsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requests_data()
    {
        QTest::addColumn<qsizetype>("index");
        const QList<Row> rows = table();
        for (qsizetype i = 0; i < rows.size(); ++i)
            QTest::newRow(rows[i].name) << i;
    }
    void requests()
    {
        QFETCH(qsizetype, index);
        const Row row = table().at(index);
        Fixture f;
        row.call(f);
        QCOMPARE(f.service.requests.size(), 1);
        const RecordingService::Request &request = f.service.requests.first();
        QCOMPARE(request.method, QByteArray("POST"));
        QCOMPARE(request.path, text(row.path));
        QCOMPARE(request.timeout, std::chrono::milliseconds(row.timeoutMs));
        QCOMPARE(request.body.has_value(), !row.body.isNull());
        QCOMPARE(request.body.value_or(QJsonObject()), QJsonDocument::fromJson(row.body).object());
    }

    void verdicts_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<QByteArray>("answer"); // null: none
        QTest::addColumn<QString>("message"); // null: none
        QTest::addColumn<QString>("order"); // r: refresh, f: flash, d: done, as they follow each other
        QTest::addColumn<bool>("verdict"); // what done is told
        const auto row = [](const char *name, const Call &call, const QByteArray &answer, const char16_t *message,
                             const char *order, bool verdict = false) {
            QTest::newRow(name) << call << answer << (message ? QString::fromUtf16(message) : QString())
                                << QString::fromLatin1(order) << verdict;
        };
        const QByteArray none;
        const QByteArray good = "{}";
        const QByteArray error = R"({"error":{"code":"x"}})";

        const Call test = [](Fixture &f) { f.commands.testPrint(text("p")); };
        row("test: any body", test, error, u"تم إرسال طباعة التجربة", "f");
        row("test: empty body", test, "", u"تم إرسال طباعة التجربة", "f");
        row("test: none", test, none, u"تعذر إرسال الطباعة", "f");

        const Call profile = [](Fixture &f) { f.commands.saveProfile(text("p"), {}, f.note()); };
        row("profile: good", profile, good, nullptr, "rd", true);
        row("profile: the bare word is no error", profile, R"({"note":"error 5"})", nullptr, "rd", true);
        row("profile: error", profile, error, nullptr, "d");
        row("profile: none", profile, none, nullptr, "d");

        const Call action
            = [](Fixture &f) { f.commands.printerAction(text("p"), text("cut"), {}, QStringLiteral("أُرسل أمر القص")); };
        row("action: good", action, good, u"أُرسل أمر القص", "f");
        row("action: error", action, error, u"تعذر تنفيذ الأمر على هذه الطابعة", "f");
        row("action: none", action, none, u"تعذر تنفيذ الأمر على هذه الطابعة", "f");

        row(
            "remove: none", [](Fixture &f) { f.commands.remove(text("p")); }, none, nullptr, "r");

        const Call add = [](Fixture &f) { f.commands.addNetwork(text("n"), text("h"), 1); };
        row("network: error", add, error, u"تمت إضافة الطابعة", "rf");
        row("network: none", add, none, u"تمت إضافة الطابعة", "rf");

        const Call usb = [](Fixture &f) { f.commands.addUsb(text("n"), text("u")); };
        row("usb: good", usb, R"({"queue":"q"})", u"تم إنشاء طابعة USB", "rf");
        row("usb: an error that speaks of a queue", usb, R"({"error":"no queue"})", u"تم إنشاء طابعة USB", "rf");
        row("usb: error", usb, error, u"تعذر إنشاء الطابعة (قد يلزم صلاحية مدير)", "rf");
        row("usb: none", usb, none, u"تعذر إنشاء الطابعة (قد يلزم صلاحية مدير)", "rf");

        const Call origin = [](Fixture &f) { f.commands.addOrigin(text("o"), f.note()); };
        row("origin: good", origin, R"({"origin":"o.example"})", u"تمت إضافة الموقع", "frd", true);
        row("origin: error", origin, R"({"error":"bad origin"})", u"عنوان غير صالح: اكتب نطاقًا مثل pos.example.com",
            "fd");
        row("origin: none", origin, none, u"عنوان غير صالح: اكتب نطاقًا مثل pos.example.com", "fd");

        row(
            "remove origin: none", [](Fixture &f) { f.commands.removeOrigin(text("o")); }, none, u"تم حذف الموقع",
            "fr");
        row(
            "revoke: error", [](Fixture &f) { f.commands.revoke(text("s")); }, error, nullptr, "r");
        row(
            "auto on", [](Fixture &f) { f.commands.setAutoApprove(true); }, none, u"الموافقة التلقائية مفعّلة", "rf");
        row(
            "auto off", [](Fixture &f) { f.commands.setAutoApprove(false); }, good, u"الموافقة التلقائية متوقفة", "rf");

        const Call print = [](Fixture &f) { f.commands.printDesigner(text("p"), {}, f.note()); };
        row("designer: good", print, good, nullptr, "d", true);
        row("designer: error", print, error, nullptr, "d");
        row("designer: none", print, none, nullptr, "d");
    }
    void verdicts()
    {
        QFETCH(Call, call);
        QFETCH(QByteArray, answer);
        QFETCH(QString, message);
        QFETCH(QString, order);
        QFETCH(bool, verdict);
        Fixture f;
        QObject::connect(&f.poll, &StatePoll::aboutToRefresh, &f.poll, [&f] { f.order += QLatin1Char('r'); });
        QObject::connect(&f.toast, &Toast::changed, &f.toast, [&f] { f.order += QLatin1Char('f'); });
        call(f);
        QCOMPARE(f.order, QString());
        f.service.requests.first().answer(answer.isNull() ? PrintService::Answer() : answer);
        QCOMPARE(f.order, order);
        QCOMPARE(f.toast.text(), message);
        QCOMPARE(f.done.value_or(false), verdict);
    }

    void aDoubleClickIsOneWish_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<Call>("another");
        const auto action = [](const char *id, const char *what) {
            return Call([=](Fixture &f) { f.commands.printerAction(text(id), text(what), {}, text("ok")); });
        };
        const auto test = [](const char *id) { return Call([=](Fixture &f) { f.commands.testPrint(text(id)); }); };
        const auto receipt = [](const char *id) {
            return Call([=](Fixture &f) { f.commands.printDesigner(text(id), {}, f.note()); });
        };
        QTest::newRow("test") << test("p1") << test("p2");
        QTest::newRow("receipt") << receipt("p1") << test("p1");
        QTest::newRow("action") << action("p1", "cut") << action("p1", "drawer");
        QTest::newRow("action elsewhere") << action("p1", "cut") << action("p2", "cut");
    }
    void aDoubleClickIsOneWish()
    {
        QFETCH(Call, call);
        QFETCH(Call, another);
        Fixture f;
        call(f);
        f.clock.advance(2s); // however long the answer takes
        call(f);
        QCOMPARE(f.service.requests.size(), 1);
        another(f); // in whose way nothing is
        QCOMPARE(f.service.requests.size(), 2);
        f.service.requests.first().answer("{}");
        call(f);
        QCOMPARE(f.service.requests.size(), 3);
        f.service.requests.last().answer("{}");
        f.clock.advance(Commands::oneWish - 1ms);
        call(f);
        QCOMPARE(f.service.requests.size(), 3);
        f.clock.advance(1ms);
        call(f);
        QCOMPARE(f.service.requests.size(), 4);
    }

    void searches_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<qsizetype>("hits");
        QTest::newRow("hits") << QByteArray(R"({"hosts":[{"host":"a","port":1},{"host":"b","port":2}]})")
                              << qsizetype(2);
        QTest::newRow("one is odd") << QByteArray(R"({"hosts":[{"host":"a","port":1},{"host":"b","port":"2"}]})")
                                    << qsizetype(0);
        QTest::newRow("error") << QByteArray(R"({"error":1})") << qsizetype(0);
        QTest::newRow("none") << QByteArray() << qsizetype(0);
    }
    void searches()
    {
        QFETCH(QByteArray, answer);
        QFETCH(qsizetype, hits);
        Fixture f;
        f.commands.scanNetwork(f.count<NetHost>());
        f.service.requests.first().answer(answer.isNull() ? PrintService::Answer() : answer);
        QVERIFY(f.hits);
        QCOMPARE(*f.hits, hits);
        QVERIFY(f.toast.text().isNull());
    }
};

ZEMRAK_TEST(commands, CommandsTest, QCoreApplication)
#include "tst_commands.moc"
