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
    QString told; ///< the sentence that came along

    Commands::Succeeded note()
    {
        return [this](bool ok) {
            done = ok;
            order += QLatin1Char('d');
        };
    }
    Commands::Judged judge()
    {
        return [this](bool ok, const QString &hint) {
            note()(ok);
            told = hint;
        };
    }
    template <typename Record> Commands::Found<Record> count()
    {
        return [this](const QList<Record> &found, const QString &why) {
            hits = found.size();
            told = why;
        };
    }
};

using Call = std::function<void(Fixture &)>;

QString text(const char *latin1)
{
    return QString::fromLatin1(latin1);
}

Call action(const char *printer, const char *what, const std::optional<QString> &pin = {})
{
    return
        [=](Fixture &f) { f.commands.printerAction(text(printer), text(what), pin, QStringLiteral("أُرسل أمر القص")); };
}
Call testOf(const char *printer)
{
    return [=](Fixture &f) { f.commands.testPrint(text(printer)); };
}
Call receiptOn(const char *printer)
{
    return [=](Fixture &f) { f.commands.printDesigner(text(printer), {{text("title"), text("T")}}, f.note()); };
}
const Call print = testOf("p1");
const Call cut = action("p1", "cut");
const Call receipt = receiptOn("p1");
const Call profile = [](Fixture &f) {
    f.commands.saveProfile(text("p1"), {{text("dots"), QJsonValue()}, {text("cut"), text("full")}}, f.note());
};
const Call removePrinter = [](Fixture &f) { f.commands.remove(text("p1")); };
const Call addNetwork = [](Fixture &f) { f.commands.addNetwork(text("K"), text("10.0.0.9"), 9100); };
const Call addLpd = [](Fixture &f) { f.commands.addNetwork(text(""), text(" h"), -1, text("lpd"), f.judge()); };
const Call addUsb = [](Fixture &f) { f.commands.addUsb(text("U"), text("usb:x"), f.note()); };
const Call addOrigin = [](Fixture &f) { f.commands.addOrigin(text(" Pos.Example "), f.judge()); };
const Call removeOrigin = [](Fixture &f) { f.commands.removeOrigin(text("a")); };
const Call revokeSite = [](Fixture &f) { f.commands.revoke(text("s1")); };
const Call autoOn = [](Fixture &f) { f.commands.setAutoApprove(true); };
const Call autoOff = [](Fixture &f) { f.commands.setAutoApprove(false); };
const Call bonjour = [](Fixture &f) { f.commands.scanBonjour(f.count<BonjourService>()); };
const Call network = [](Fixture &f) { f.commands.scanNetwork(f.count<NetHost>()); };
const Call usb = [](Fixture &f) { f.commands.scanUsb(f.count<UsbDevice>()); };

const PrintService::Answer none;
const PrintService::Answer good = QByteArray("{}");
const PrintService::Answer error = QByteArray(R"({"error":{"code":"x"}})");

} // namespace

class CommandsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requests()
    {
        const QByteArray noBody; // null
        const std::tuple<Call, const char *, QByteArray, int> rows[] = {{print, "test", R"({"printer":"p1"})", 5000},
            {profile, "profile", R"({"id":"p1","profile":{"cut":"full","dots":null}})", 5000},
            {cut, "printers/action", R"({"action":"cut","id":"p1"})", 15000},
            {action("p1", "drawer", text("5")), "printers/action", R"({"action":"drawer","id":"p1","pin":"5"})", 15000},
            {removePrinter, "printers/remove", R"({"id":"p1"})", 5000},
            {addNetwork, "printers/add", R"({"host":"10.0.0.9","name":"K","port":9100,"transport":"raw","type":"net"})",
                5000},
            {addLpd, "printers/add", R"({"host":" h","name":"","port":-1,"transport":"lpd","type":"net"})", 5000},
            {addUsb, "printers/add-usb", R"({"name":"U","uri":"usb:x"})", 40000},
            {addOrigin, "origins/add", R"({"origin":" Pos.Example "})", 5000},
            {removeOrigin, "origins/remove", R"({"origin":"a"})", 5000}, {revokeSite, "revoke", R"({"id":"s1"})", 5000},
            {autoOn, "settings", R"({"autoApprovePairing":true})", 5000}, {bonjour, "discover/bonjour", noBody, 20000},
            {network, "discover/network", noBody, 40000}, {usb, "discover/usb", noBody, 15000},
            {receipt, "designer/print", R"({"doc":{"title":"T"},"printer":"p1"})", 15000}};
        for (const auto &[call, path, body, timeoutMs] : rows) {
            const InRow row(path + body);
            Fixture f;
            call(f);
            QCOMPARE(f.service.requests.size(), 1);
            const RecordingService::Request &request = f.service.requests.first();
            QCOMPARE(request.method, QByteArray("POST"));
            QCOMPARE(request.path, text("/admin/") + text(path));
            QCOMPARE(request.timeout, std::chrono::milliseconds(timeoutMs));
            QCOMPARE(request.body.has_value(), !body.isNull());
            QCOMPARE(request.body.value_or(QJsonObject()), QJsonDocument::fromJson(body).object());
        }
    }

    void verdicts()
    {
        struct Row
        {
            Call call;
            PrintService::Answer answer;
            const char *message; ///< null: none
            const char *order; ///< r: refresh, f: flash, d: done, as they follow each other
            bool verdict = false; ///< what done is told
        };
        const char *const printed = "تم إرسال طباعة التجربة";
        const char *const notDone = "تعذر تنفيذ الأمر على هذه الطابعة";
        const char *const added = "تمت إضافة الطابعة";
        const char *const noUsb = "تعذر إنشاء الطابعة (قد يلزم صلاحية مدير)";
        const char *const badOrigin = "عنوان غير صالح: اكتب نطاقًا مثل pos.example.com";
        const Row rows[]
            = {{print, error, printed, "f"}, {print, "", printed, "f"}, {print, none, "تعذر إرسال الطباعة", "f"},
                {profile, good, nullptr, "rd", true}, {profile, R"({"note":"error 5"})", nullptr, "rd", true},
                {profile, error, nullptr, "d"}, {profile, none, nullptr, "d"}, {cut, good, "أُرسل أمر القص", "f"},
                {cut, error, notDone, "f"}, {cut, none, notDone, "f"}, {removePrinter, none, nullptr, "r"},
                {addNetwork, error, added, "rf"}, {addLpd, none, added, "rfd"}, {addLpd, error, added, "rfd"},
                {addLpd, good, added, "rfd", true}, {addUsb, R"({"queue":"q"})", "تم إنشاء طابعة USB", "rfd", true},
                {addUsb, R"({"error":"no queue"})", "تم إنشاء طابعة USB", "rfd", true}, // the word decides
                {addUsb, error, noUsb, "rfd"}, {addUsb, none, noUsb, "rfd"},
                {addOrigin, R"({"origin":"o.example"})", "تمت إضافة الموقع", "frd", true},
                {addOrigin, R"({"error":"bad origin"})", badOrigin, "fd"}, {addOrigin, none, badOrigin, "fd"},
                {removeOrigin, none, "تم حذف الموقع", "fr"}, {revokeSite, error, nullptr, "r"},
                {autoOn, none, "الموافقة التلقائية مفعّلة", "rf"}, {autoOff, good, "الموافقة التلقائية متوقفة", "rf"},
                {receipt, good, nullptr, "d", true}, {receipt, error, nullptr, "d"}, {receipt, none, nullptr, "d"}};
        for (const Row &row : rows) {
            const InRow name(QByteArray::number(&row - rows));
            Fixture f;
            QObject::connect(&f.poll, &StatePoll::aboutToRefresh, &f.poll, [&f] { f.order += QLatin1Char('r'); });
            QObject::connect(&f.toast, &Toast::changed, &f.toast, [&f] { f.order += QLatin1Char('f'); });
            row.call(f);
            QCOMPARE(f.order, QString());
            f.service.requests.first().answer(row.answer);
            QCOMPARE(f.order, text(row.order));
            QCOMPARE(f.toast.text(), QString::fromUtf8(row.message));
            QCOMPARE(f.done.value_or(false), row.verdict);
        }
    }

    // A second click is dropped while the first is unanswered and shortly after; what is meant otherwise never is.
    void doubleClickSendsOneRequest()
    {
        const std::pair<Call, Call> rows[] = {{print, testOf("p2")}, {receipt, print}, {cut, action("p1", "drawer")},
            {cut, action("p2", "cut")}, {receipt, receiptOn("p2")}};
        for (const auto &[call, another] : rows) {
            const InRow row(QByteArray::number(&call - &rows[0].first));
            Fixture f;
            call(f);
            f.clock.advance(2s); // however long the answer takes
            call(f);
            QCOMPARE(f.service.requests.size(), 1);
            another(f);
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
    }

    void refusalsComeWithTheirSentence()
    {
        for (const Call &call : {addLpd, addOrigin}) {
            Fixture f;
            call(f);
            f.service.requests.first().answer(R"({"error":{"code":"invalid_request","message":"m"}})");
            QCOMPARE(f.told, text("m"));
        }
    }

    void searches()
    {
        const QString unanswered = QStringLiteral("لم يجرِ البحث لأن خدمة الطباعة لم تجب. أعد المحاولة بعد قليل.");
        const std::tuple<PrintService::Answer, qsizetype, QString> rows[]
            = {{R"({"hosts":[{"host":"a","port":1},{"host":"b","port":2}]})", 2, {}},
                {R"({"hosts":[{"host":"a","port":1},{"host":"b","port":"2"}]})", 0, unanswered},
                {R"({"hosts":[],"problem":"no_network","message":"m"})", 0, text("m")},
                {R"({"hosts":[],"message":1})", 0, {}}, {error, 0, unanswered}, {none, 0, unanswered}};
        for (const auto &[answer, hits, why] : rows) {
            Fixture f;
            network(f);
            f.service.requests.first().answer(answer);
            QCOMPARE(f.hits, std::optional(hits));
            QCOMPARE(f.told, why);
            QVERIFY(f.toast.text().isNull());
        }
    }
};

ZEMRAK_TEST(commands, CommandsTest, QCoreApplication)
#include "tst_commands.moc"
