#include "support/httpserver.h"
#include "support/manualclock.h"
#include "support/testhost.h"
#include "support/testmain.h"
#include "support/wiredata.h"
#include "ui/presenters/loginstatus.h"
#include "ui/presenters/presenters.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

PrinterInfo printer(const char *name, const char *state)
{
    return {.id = QString::fromLatin1(name),
        .name = QString::fromLatin1(name),
        .state = QString::fromLatin1(state),
        .profile = Profile{.alias = QStringLiteral("لقب")}};
}

qint64 localTime(int day, int hour, int minute)
{
    return QDateTime(QDate(2024, 3, day), QTime(hour, minute)).toMSecsSinceEpoch();
}

struct Application
{
    QTemporaryDir home;
    FakeBundle files;
    ManualClock clock;
    HttpServer server;
    UserDefaults defaults{home.filePath(QStringLiteral("settings.ini"))};
    TestHost computer;
    Agent agent{{.bundle = files.bundle(), .configDir = files.configDir(), .port = server.port()}, defaults, clock,
        computer.forAgent()};
    QJsonObject state = storedObject(QStringLiteral("wire/state.json"));
    QStringList host; ///< what it was asked
    bool holdSaves = false;
    QPointer<QTcpSocket> heldSave;

    Application()
    {
        files.writeToken("t");
        state.insert(QStringLiteral("httpPort"), server.port());
        server.answerWith([this](const HttpRequest &request, QTcpSocket &socket) {
            if (request.target == "/admin/state")
                socket.write(HttpServer::response(toJson(state)));
            else if (request.target == "/admin/alerts")
                socket.write(HttpServer::response(storedBody(QStringLiteral("wire/alerts.json"))));
            else if (request.target == "/admin/profile" && holdSaves)
                heldSave = &socket;
            else
                socket.write(HttpServer::response("{}"));
        });
    }
    HostCalls calls()
    {
        return {.setLaunchAtLogin = [this](bool on) { host.append(on ? QStringLiteral("on") : QStringLiteral("off")); },
            .runScan = [this] { host.append(QStringLiteral("scan")); }};
    }
    void poll()
    {
        QSignalSpy answered(&agent, &Agent::stateChanged);
        agent.refresh();
        QVERIFY(answered.wait());
    }
};

} // namespace

class PagesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hero_data()
    {
        QTest::addColumn<QList<PrinterInfo>>("printers");
        QTest::addColumn<bool>("answers");
        QTest::addColumn<bool>("scanning");
        QTest::addColumn<QStringList>("shown"); // colour, title, subtitle, first counter
        const auto row
            = [](const char *name, const QList<PrinterInfo> &printers, bool answers, bool scanning,
                  const QStringList &shown) { QTest::newRow(name) << printers << answers << scanning << shown; };
        row("stopped", {}, false, false,
            {QStringLiteral("gRed"), QStringLiteral("الخدمة متوقفة"),
                QStringLiteral("اضغط «إعادة التشغيل» من الإعدادات."), QStringLiteral("0/0")});
        row("stopped, being checked", {}, false, true,
            {QStringLiteral("#c084fc"), QStringLiteral("خطوة"), QStringLiteral("جارٍ فحص الاتصال الفعلي بكل طابعة…"),
                QStringLiteral("0/0")});
        row("no printer", {}, true, false,
            {QStringLiteral("gAmber"), QStringLiteral("لم يتم العثور على طابعات"),
                QStringLiteral("وصّل الطابعة أو أضفها من صفحة الطابعات، ثم اضغط فحص الاتصال."), QStringLiteral("0/0")});
        // The first of the list by its own name, whichever is offline.
        row("none connected", {printer("Odd", "odd"), printer("Off", "offline")}, true, false,
            {QStringLiteral("gAmber"), QStringLiteral("لا توجد طابعة متصلة"),
                QStringLiteral("«\u2068Odd\u2069» غير موصولة أو مطفأة. وصّل الكابل أو شغّلها ثم اضغط فحص الاتصال."),
                QStringLiteral("0/2")});
        row("one connected", {printer("a", "offline"), printer("b", "error")}, true, false,
            {QStringLiteral("gGreen"), QStringLiteral("كل شيء جاهز للطباعة"),
                QStringLiteral("طابعة واحدة متصلة وتستقبل أوامر الطباعة من Zemrak مباشرة على هذا الجهاز."),
                QStringLiteral("1/2")});
        row("three of four",
            {printer("a", "ready"), printer("b", "busy"), printer("c", "offline"), printer("d", "ready")}, true, false,
            {QStringLiteral("gGreen"), QStringLiteral("كل شيء جاهز للطباعة"),
                QStringLiteral("3 طابعات متصلة وتستقبل أوامر الطباعة من Zemrak مباشرة على هذا الجهاز."),
                QStringLiteral("3/4")});
    }
    void hero()
    {
        QFETCH(QList<PrinterInfo>, printers);
        QFETCH(bool, answers);
        QFETCH(bool, scanning);
        QFETCH(QStringList, shown);
        AgentState state;
        state.printers = printers;
        const OverviewFacts facts{
            .state = answers ? &state : nullptr, .scanning = scanning, .scanStep = QStringLiteral("خطوة")};
        Overview page;
        QSignalSpy changed(&page, &Overview::changed);
        page.show(facts);
        QCOMPARE((QStringList{page.heroColor(), page.heroTitle(), page.heroSubtitle(), page.printersValue()}), shown);
        QCOMPARE(changed.size(), 1);
        page.show(facts);
        QCOMPARE(changed.size(), 1);
    }

    void jobsOfToday()
    {
        AgentState state;
        for (const qint64 at : {localTime(9, 23, 59), localTime(10, 0, 0), localTime(10, 23, 59), localTime(11, 0, 0)})
            state.recentJobs.append({.id = QString::number(at), .updatedAt = double(at)});
        QCOMPARE(jobsToday(&state, localTime(10, 12, 0)), 2);
        QCOMPARE(jobsToday(&state, localTime(11, 0, 1)), 1); // the day turns while the page is open
        QCOMPARE(jobsToday(nullptr, localTime(10, 12, 0)), 0);
    }

    void scanResults()
    {
        Overview page;
        OverviewFacts facts{.scanning = true};
        page.show(facts);
        QCOMPARE(page.scanMessage(), QStringLiteral("جارٍ البحث عن الطابعات…"));
        QCOMPARE(page.ringHoverHint(), QStringLiteral("جارٍ الفحص…"));
        facts = {.scanResult = ScanResult{}};
        page.show(facts);
        QCOMPARE(page.scanMessage(), QStringLiteral("لا توجد طابعات للفحص"));
        QCOMPARE(page.ringHoverHint(), QStringLiteral("اضغط لفحص الاتصال"));
        facts.scanResult->printers = {{QStringLiteral("a"), QStringLiteral("A"), QStringLiteral("ready"), {}},
            {QStringLiteral("b"), QStringLiteral("B"), QStringLiteral("offline"), QStringLiteral("no_route")}};
        page.show(facts);
        QCOMPARE(page.scanMessage(), QString());
        const ScanResultModel &lines = *page.scanResults();
        QCOMPARE(lines.index(0).data(ScanResultModel::IconRole).toString(), QStringLiteral("checkmark.circle.fill"));
        QCOMPARE(lines.index(0).data(ScanResultModel::ReasonRole).toString(), QString());
        QCOMPARE(lines.index(1).data(ScanResultModel::IconRole).toString(), QStringLiteral("xmark.circle.fill"));
        QCOMPARE(lines.index(1).data(ScanResultModel::ReasonRole).toString(),
            QStringLiteral("لا مسار للشبكة (راجع إذن الشبكة المحلية)"));
        page.show({});
        QVERIFY(page.scanMessage().isEmpty() && page.scanResults()->count() == 0 && !page.showsScan());
        page.show({.scanStep = QStringLiteral("اكتمل الفحص")}); // and the service has not answered
        QVERIFY(page.scanMessage().startsWith(QStringLiteral("لم تصل نتيجة")) && page.showsScan());
    }

    void loginLine()
    {
        const QDateTime proof = QDateTime::fromMSecsSinceEpoch(1'700'000'000'000);
        const qint64 now = proof.addSecs(7200).toMSecsSinceEpoch();
        QVERIFY(loginStatus(true, false, proof, now).startsWith(QStringLiteral("بانتظار موافقتك:")));
        QVERIFY(loginStatus(false, false, proof, now).startsWith(QStringLiteral("غير مفعّل:")));
        QVERIFY(loginStatus(false, true, {}, now).endsWith(QStringLiteral("وسيظهر هنا الدليل")));
        QCOMPARE(loginStatus(false, true, proof, now),
            QStringLiteral("مفعّل في النظام ✓ وثبت عمله: آخر تشغيل تلقائي قبل ساعتين"));
    }

    void settings()
    {
        SettingsPresenter page(QStringLiteral("1.2.3"));
        QSignalSpy changed(&page, &SettingsPresenter::changed);
        SettingsFacts facts;
        page.show(facts);
        QCOMPARE(page.versionTitle(), QStringLiteral("الإصدار الحالي 1.2.3"));
        QCOMPARE(page.notificationStatus(), QStringLiteral("غير مفعّلة بعد"));
        QVERIFY(page.offersNotificationRequest() && !page.offersNotificationTest() && !page.offersInstall()
            && page.updateStatus().isEmpty() && !page.offersLoginSettings());
        QCOMPARE(changed.size(), 1);

        const AgentState state{.autoApprovePairing = true};
        facts = {.loginNeedsApproval = true,
            .notifications = NotificationStatus::Denied,
            .state = &state,
            .caTrusted = true,
            .availableUpdate = QStringLiteral("2.0")};
        page.show(facts);
        QCOMPARE(page.updateStatus(), QStringLiteral("يتوفر الإصدار 2.0؛ التحديث موقَّع ويتراجع تلقائيًا إن لم يعمل"));
        QVERIFY(page.offersLoginSettings() && page.offersNotificationSettings() && page.autoApprove()
            && page.offersInstall());
        QCOMPARE(page.trustStatus(), QStringLiteral("مفعّل على هذا الجهاز ✓ (لا يلزم تكراره)"));
        QCOMPARE(changed.size(), 2);
        facts.notifications = NotificationStatus::Provisional; // they reach the person
        page.show(facts);
        QVERIFY(page.offersNotificationTest());
        page.show(facts);
        QCOMPARE(changed.size(), 3);
    }

    // A poll that brings nothing new changes no row and tells of nothing, and the hands stand while nobody looks.
    void pollsThatBringNothingNew()
    {
        Application app;
        Presenters window(app.agent, app.clock, app.calls());
        window.begin();
        QVERIFY(window.printers()->count() == 0 && window.overview()->heroColor() == QLatin1String("gRed"));
        app.poll();
        QCOMPARE(window.printers()->count(), int(app.state[QLatin1String("printers")].toArray().size()));
        QCOMPARE(window.jobs()->count(), int(app.state[QLatin1String("recentJobs")].toArray().size()));
        QCOMPARE(window.sites()->origins()->count(), int(app.state[QLatin1String("allowedOrigins")].toArray().size()));
        QTRY_VERIFY(window.alerts()->alerts()->count() > 0);
        QVERIFY(window.printers()->count() > 0 && window.jobs()->count() > 0);

        QList<QSignalSpy *> quiet;
        for (QAbstractItemModel *list :
            {static_cast<QAbstractItemModel *>(window.printers()), static_cast<QAbstractItemModel *>(window.jobs()),
                static_cast<QAbstractItemModel *>(window.sites()->origins()),
                static_cast<QAbstractItemModel *>(window.alerts()->alerts())}) {
            quiet.append(new QSignalSpy(list, &QAbstractItemModel::dataChanged));
            quiet.append(new QSignalSpy(list, &QAbstractItemModel::rowsInserted));
            quiet.append(new QSignalSpy(list, &QAbstractItemModel::rowsRemoved));
        }
        quiet.append(new QSignalSpy(window.overview(), &Overview::changed));
        quiet.append(new QSignalSpy(window.settings(), &SettingsPresenter::changed));
        app.server.forget();
        app.clock.advance(1s);
        app.agent.refresh();
        QTRY_COMPARE(app.server.requestsTo("/admin/state").size(), 1);
        QTest::qWait(30);
        for (QSignalSpy *spy : std::as_const(quiet))
            QVERIFY2(spy->isEmpty(), spy->signal().constData());
        qDeleteAll(quiet);
    }

    void shownTimesMoveWhileTheWindowIsOpen()
    {
        Application app;
        QJsonArray jobs{app.state[QLatin1String("recentJobs")].toArray().first()};
        QJsonObject job = jobs.first().toObject();
        job.insert(QStringLiteral("updatedAt"), double(app.clock.wallTime() - 1000));
        app.state.insert(QStringLiteral("recentJobs"), QJsonArray{job});
        Presenters window(app.agent, app.clock, app.calls());
        window.begin();
        app.poll();
        const qsizetype others = app.clock.pending();
        const auto time = [&window] { return window.jobs()->index(0, 0).data(JobListModel::TimeRole).toString(); };
        QCOMPARE(time(), QStringLiteral("قبل ثانية واحدة"));
        window.clock()->setActive(true);
        app.clock.advance(1s);
        QCOMPARE(time(), QStringLiteral("قبل ثانيتين"));
        window.clock()->setActive(false);
        QCOMPARE(app.clock.pending(), others);
    }

    void sheetsComeAndGo()
    {
        Application app;
        auto window = std::make_unique<Presenters>(app.agent, app.clock, app.calls());
        window->begin();
        window->setEdited(std::nullopt);
        QVERIFY(!window->editor());
        window->setEdited(printer("p", "ready"));
        app.clock.advance(0ms);
        window->editor()->setAlias(QStringLiteral("one"));
        window->setEdited(printer("q", "ready")); // another printer: what was left for the first is sent
        QTRY_COMPARE(app.server.requestsTo("/admin/profile").size(), 1);
        QCOMPARE(window->editor()->printerId(), QStringLiteral("q"));
        app.clock.advance(0ms);
        window->editor()->setAlias(QStringLiteral("two"));
        window->setAdding(true);
        QVERIFY(window->finder());
        window->setAdding(false);
        QVERIFY(!window->finder());
        window.reset(); // with the sheet open
        QTRY_COMPARE(app.server.requestsTo("/admin/profile").size(), 2);
        QVERIFY(app.server.requestsTo("/admin/profile").last().body.contains("\"two\""));
    }

    void theEndWaitsForTheLastSave()
    {
        Application app;
        app.holdSaves = true;
        Presenters window(app.agent, app.clock, app.calls());
        window.begin();
        window.setEdited(printer("p", "ready"));
        app.clock.advance(0ms);
        window.editor()->setAlias(QStringLiteral("last"));
        bool answered = false;
        auto *answering = new QTimer(&window);
        connect(answering, &QTimer::timeout, this, [&] {
            if (!app.heldSave)
                return;
            answered = true;
            app.heldSave->write(HttpServer::response("{}"));
            answering->stop();
        });
        answering->start(1);
        window.finishSaving(1s);
        QVERIFY(answered);

        window.editor()->setAlias(QStringLiteral("never answered"));
        QTimer::singleShot(20, this, [&app] { app.clock.advance(1s); });
        window.finishSaving(1s); // comes back all the same
    }

    void wizardAsksTheRightThings()
    {
        Application app;
        Presenters window(app.agent, app.clock, app.calls());
        window.begin();
        window.setWizardShown(true);
        Wizard &wizard = *window.wizard();
        wizard.allow(); // the host does nothing: it is not enabled
        QCOMPARE(wizard.choice(0), WizardChoice::Failed);
        QCOMPARE(app.host, QStringList{QStringLiteral("on")});
        wizard.allow();
        QCOMPARE(wizard.choice(1), WizardChoice::Enabled);
        wizard.allow(); // no way to trust here
        QCOMPARE(wizard.choice(2), WizardChoice::Skipped);
        wizard.allow();
        QTRY_VERIFY(wizard.isSummary());
        QCOMPARE(wizard.choice(3), WizardChoice::Enabled);
        const QList<HttpRequest> browsing = app.server.requestsTo("/admin/discover/bonjour");
        QCOMPARE(browsing.size(), 1);
        QVERIFY(browsing.first().method == "POST" && browsing.first().body == "{}");

        window.setWizardShown(false);
        window.setWizardShown(true); // from the start
        QCOMPARE(window.wizard()->step(), 0);
        QCOMPARE(window.wizard()->choice(1), WizardChoice::None);
    }
};

ZEMRAK_TEST(pages, PagesTest, QCoreApplication)
#include "tst_pages.moc"
