#include "support/answeredcommands.h"
#include "support/recordingservice.h"
#include "support/testhost.h"
#include "support/testmain.h"
#include "ui/presenters/addprinter/addprinterpresenter.h"
#include "ui/presenters/alerts/alertspresenter.h"
#include "ui/presenters/sites/sitespresenter.h"
#include "ui/presenters/wizard/wizardpresenter.h"

#include <QJsonDocument>
#include <QSignalSpy>
#include <QTest>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

QVariant cell(const QAbstractItemModel *model, int row, const QByteArray &role)
{
    return model->index(row, 0).data(model->roleNames().key(role, -1));
}

QStringList outcomes(const WizardPresenter &wizard)
{
    QStringList list;
    const QVariantList all = wizard.outcomes();
    for (const QVariant &outcome : all)
        list.append(outcome.toMap().value(QStringLiteral("text")).toString() + QLatin1Char(' ')
            + outcome.toMap().value(QStringLiteral("color")).toString());
    return list;
}

const QString browsePath = QStringLiteral("/admin/discover/bonjour");
const QString enabled = QStringLiteral("مفعّل gGreen");
const QString skipped = QStringLiteral("تم التخطي #80ffffff");
const QString failed = QStringLiteral("لم يكتمل gAmber");

/// The parts that the wizard and the page of alerts use, on a computer that does nothing of itself.
struct AnsweredParts : AnsweredCommands
{
    QTemporaryDir home;
    UserDefaults defaults{home.filePath(QStringLiteral("settings.ini"))};
    FakeBundle files;
    TestHost computer;
    RecordingCommands oneShots;
    LaunchAtLogin login{computer.loginItem, defaults, clock, files.bundle().path()};
    Notifications notifications{computer.notifier};
    HttpsTrust trust{oneShots};
    AlertDelivery delivery{computer.notifier, clock, {}, [](const QStringList &) {}};
    AlertFeed feed{service, [] { return true; }, delivery, clock};
    ConnectionCheck check{service, clock};
    Updates updates{service, clock, files.bundle(), {}};
    SystemSettings systemSettings{computer.desktop, toast};

    [[nodiscard]] WizardParts forWizard() { return {login, notifications, trust, commands}; }
    [[nodiscard]] AlertsParts forAlerts() { return {feed, check, updates, systemSettings}; }
};

} // namespace

class SheetsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void manualPrinters_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("host");
        QTest::addColumn<QString>("port");
        QTest::addColumn<QString>("sentName");
        QTest::addColumn<int>("sentPort");
        const auto row = [](const char *label, const char16_t *name, const char16_t *host, const char16_t *port,
                             const char16_t *sentName, int sentPort) {
            QTest::newRow(label) << QString::fromUtf16(name) << QString::fromUtf16(host) << QString::fromUtf16(port)
                                 << QString::fromUtf16(sentName) << sentPort;
        };
        row("nothing but a host", u"", u"192.168.1.50", u"9100", u"Network 192.168.1.50", 9100);
        row("no port", u"Kitchen", u"h", u"", u"Kitchen", 9100);
        row("no number", u"Kitchen", u"h", u"abc", u"Kitchen", 9100);
        row("a blank before it", u"Kitchen", u"h", u" 9100", u"Kitchen", 9100);
        row("signed", u" ", u"h ", u"+515", u" ", 515);
        row("no port at all", u"K", u"h", u"-1", u"K", -1);
        row("Arabic digits", u"K", u"h", u"٩١٠١", u"K", 9101);
    }
    void manualPrinters()
    {
        QFETCH(QString, name);
        QFETCH(QString, host);
        QFETCH(QString, port);
        QFETCH(QString, sentName);
        QFETCH(int, sentPort);
        AnsweredCommands app;
        AddPrinterPresenter finder(app.commands);
        QCOMPARE(finder.port(), QStringLiteral("9100"));
        finder.addManual(); // without an address
        QVERIFY(!finder.canAddManual());
        finder.setName(name);
        finder.setHost(host);
        finder.setPort(port);
        finder.addManual();
        QTRY_COMPARE(app.toast.text(), QStringLiteral("تمت إضافة الطابعة"));
        QCOMPARE(app.service.countTo(QStringLiteral("/admin/printers/add")), 1);
        QCOMPARE(app.service.lastTo(QStringLiteral("/admin/printers/add")),
            (QJsonObject{{QStringLiteral("type"), QStringLiteral("net")}, {QStringLiteral("name"), sentName},
                {QStringLiteral("host"), host}, {QStringLiteral("port"), sentPort},
                {QStringLiteral("transport"), QStringLiteral("raw")}}));
    }

    void searches()
    {
        AnsweredCommands app;
        AddPrinterPresenter finder(app.commands);
        QCOMPARE(finder.networkHint(), QStringLiteral("اضغط بحث، أو أدخل العنوان يدويًا أدناه."));
        QCOMPARE(finder.networkOutcome(), QString());
        app.service.holdBack = true;
        finder.searchNetwork();
        finder.searchNetwork(); // it is under way
        finder.searchUsb();
        QVERIFY(finder.isScanning() && !finder.canSearchNetwork() && finder.canSearchBonjour());
        QCOMPARE(finder.networkHint(), QStringLiteral("جارٍ البحث…"));
        QVERIFY(app.service.release(
            QStringLiteral("/admin/discover/network"), R"({"hosts":[{"host":"10.0.0.9","port":9101}]})"));
        QTRY_COMPARE(finder.hosts()->count(), 1);
        QVERIFY(finder.isScanning()); // the other still is
        QVERIFY(app.service.release(QStringLiteral("/admin/discover/usb"),
            R"({"devices":[{"product":"TM","uri":"usb:x"},{"vendor":"V","product":"B","uri":"y"}]})"));
        QTRY_VERIFY(!finder.isScanning());
        QCOMPARE(app.service.countTo(QStringLiteral("/admin/discover/network")), 1);
        QCOMPARE(finder.networkHint(), QString());

        app.service.holdBack = false;
        finder.addHost(0);
        QTRY_COMPARE(app.service.lastTo(QStringLiteral("/admin/printers/add"))[QLatin1String("name")].toString(),
            QStringLiteral("Network 10.0.0.9"));
        QCOMPARE(app.service.lastTo(QStringLiteral("/admin/printers/add"))[QLatin1String("port")].toInt(), 9101);
        QTRY_VERIFY(cell(finder.hosts(), 0, "added").toBool());
        QCOMPARE(cell(finder.usb(), 1, "detail").toString(), QStringLiteral("V"));
        finder.addUsb(0);
        QTRY_COMPARE(app.service.lastTo(QStringLiteral("/admin/printers/add-usb")),
            QJsonDocument::fromJson(R"({"name":"TM","uri":"usb:x"})").object());
        finder.addHost(0); // added already
        finder.addHost(7); // no such row

        app.service.answer = R"({"services":[{"name":"A","host":"a","port":631,"transport":"ipp"},
                                         {"name":"B","host":"b","port":515,"transport":"lpd"}]})";
        finder.searchBonjour();
        QTRY_COMPARE(finder.bonjour()->count(), 2);
        QCOMPARE(cell(finder.bonjour(), 0, "note").toString(), QStringLiteral("أضفها من طابعات macOS"));
        QVERIFY(!cell(finder.bonjour(), 0, "addable").toBool() && cell(finder.bonjour(), 1, "addable").toBool());
        finder.addBonjour(0);
        finder.addBonjour(1);
        QTRY_COMPARE(app.service.lastTo(QStringLiteral("/admin/printers/add")),
            QJsonDocument::fromJson(R"({"type":"net","name":"B","host":"b","port":515,"transport":"lpd"})").object());
        QCOMPARE(app.service.countTo(QStringLiteral("/admin/printers/add")), 2);

        app.service.answer = "no JSON"; // replaces its own hits and leaves the others'
        finder.searchNetwork();
        QTRY_VERIFY(!finder.isScanning());
        QVERIFY(finder.hosts()->count() == 0 && finder.bonjour()->count() == 2 && finder.usb()->count() == 2);
    }

    void addsAgainWhatCouldNotBeAdded()
    {
        AnsweredCommands app;
        AddPrinterPresenter finder(app.commands);
        app.service.answer = R"({"devices":[{"product":"TM","uri":"usb:x"}]})";
        finder.searchUsb();
        QTRY_COMPARE(finder.usb()->count(), 1);
        const auto sent = [&app] { return app.service.countTo(QStringLiteral("/admin/printers/add-usb")); };

        app.service.holdBack = true;
        finder.addUsb(0);
        QTRY_COMPARE(sent(), 1);
        QVERIFY(cell(finder.usb(), 0, "adding").toBool() && !cell(finder.usb(), 0, "added").toBool());
        app.service.holdBack = false;
        finder.searchUsb(); // finds it again meanwhile
        QTRY_VERIFY(!finder.isScanning());
        finder.addUsb(0);
        QVERIFY(app.service.release(QStringLiteral("/admin/printers/add-usb"), R"({"error":{}})"));
        QTRY_VERIFY(!cell(finder.usb(), 0, "adding").toBool());
        QVERIFY(!cell(finder.usb(), 0, "added").toBool());
        QCOMPARE(sent(), 1);

        app.service.answer = R"({"queue":"TM"})";
        finder.addUsb(0);
        QTRY_VERIFY(cell(finder.usb(), 0, "added").toBool());
        QCOMPARE(sent(), 2);

        app.service.holdBack = true;
        finder.setHost(QStringLiteral("h"));
        finder.addManual();
        finder.addManual(); // it is under way
        QVERIFY(finder.isAddingManual());
        QVERIFY(app.service.release(QStringLiteral("/admin/printers/add"), "{}"));
        QTRY_VERIFY(!finder.isAddingManual());
        QCOMPARE(app.service.countTo(QStringLiteral("/admin/printers/add")), 1);
    }

    void saysWhatIsWrongAtItsField()
    {
        AnsweredCommands app;
        AddPrinterPresenter finder(app.commands);
        const QString number = QStringLiteral("هذا ليس رقم منفذ، وسيُستخدم 9100 بدلًا منه.");
        const QString range = QStringLiteral("رقم المنفذ بين 1 و65535.");
        for (const auto &[port, problem] : {std::pair(u"abc", number), {u" 9100", number}, {u"0", range},
                 {u"65536", range}, {u"-1", range}, {u"٩١٠٠", QString()}, {u"65535", QString()}, {u"", QString()}}) {
            finder.setPort(QString::fromUtf16(port));
            QCOMPARE(finder.portProblem(), problem);
        }
        app.service.answer = R"({"error":{"code":"invalid_request","message":"في العنوان مسافة."}})";
        finder.setHost(QStringLiteral("a b"));
        finder.addManual();
        QTRY_COMPARE(finder.hostProblem(), QStringLiteral("في العنوان مسافة."));
        finder.setHost(QStringLiteral("ab"));
        QCOMPARE(finder.hostProblem(), QString());

        app.service.answer = R"({"hosts":[],"services":[],"problem":"no_network","message":"لا شبكة."})";
        finder.searchNetwork();
        finder.searchBonjour();
        QTRY_COMPARE(finder.networkOutcome(), QStringLiteral("لا شبكة.")); // once, though neither could be made
        app.service.answer = R"({"hosts":[],"services":[]})";
        finder.searchNetwork();
        QTRY_VERIFY(!finder.isScanning());
        finder.searchBonjour();
        QTRY_VERIFY(finder.networkOutcome().startsWith(QStringLiteral("لم يُعثر")));
    }

    void searchOutlivesItsSheet()
    {
        AnsweredCommands app;
        app.service.holdBack = true;
        auto finder = std::make_unique<AddPrinterPresenter>(app.commands);
        finder->searchUsb();
        finder.reset();
        QVERIFY(
            app.service.release(QStringLiteral("/admin/discover/usb"), R"({"devices":[{"product":"T","uri":"u"}]})"));
    }

    void wizardGoesForward()
    {
        AnsweredParts app;
        app.computer.loginItem.works = true;
        app.computer.notifier.holdPermission = true;
        app.service.holdBack = true;
        WizardPresenter wizard(app.forWizard());
        QSignalSpy finished(&wizard, &WizardPresenter::finished);
        QCOMPARE(wizard.counter(), QStringLiteral("الخطوة 1 من 4"));
        QCOMPARE(wizard.current()[QStringLiteral("icon")].toString(), QStringLiteral("power"));
        wizard.allow();
        QCOMPARE(wizard.step(), 1);
        QVERIFY(!wizard.isBusy() && app.login.launchAtLogin());

        wizard.allow();
        QVERIFY(wizard.isBusy() && wizard.step() == 1);
        const auto answer = std::exchange(app.computer.notifier.asked, {});
        wizard.allow(); // cannot be pressed again
        QVERIFY(!app.computer.notifier.asked);
        wizard.finish();
        wizard.skip();
        QVERIFY(!wizard.isBusy() && wizard.step() == 2 && finished.isEmpty());
        QCOMPARE(wizard.choice(1), WizardChoice::Skipped);
        answer(true, {}); // it came about after all, and moves nothing
        QCOMPARE(wizard.step(), 2);
        QCOMPARE(wizard.choice(1), WizardChoice::Enabled);

        wizard.skip();
        QCOMPARE(wizard.counter(), QStringLiteral("الخطوة 4 من 4"));
        wizard.allow();
        QVERIFY(wizard.isBusy());
        QVERIFY(app.service.release(browsePath, "{}")); // whatever was found
        QVERIFY(wizard.isSummary());
        QVERIFY(!wizard.isBusy() && wizard.current().isEmpty() && wizard.counter().isEmpty());
        QCOMPARE(outcomes(wizard), (QStringList{enabled, enabled, skipped, enabled}));
        wizard.allow();
        wizard.skip();
        QCOMPARE(wizard.step(), 4);
        wizard.finish();
        QCOMPARE(finished.size(), 1);
    }

    void wizardTellsRefusalFromFailure()
    {
        AnsweredParts app;
        app.computer.notifier.holdPermission = true;
        app.service.holdBack = true;
        auto wizard = std::make_unique<WizardPresenter>(app.forWizard());
        wizard->allow();
        wizard->allow();
        app.computer.notifier.asked(false, {});
        wizard->allow();
        QVERIFY(wizard->isBusy());
        app.oneShots.commands.takeLast().end(1); // the command that adds the authority fails
        QCOMPARE(wizard->step(), 3);
        QCOMPARE(outcomes(*wizard), (QStringList{failed, skipped, skipped, skipped}));
        QCOMPARE(wizard->choice(2), WizardChoice::Skipped);
        wizard->allow();
        wizard.reset();
        QVERIFY(app.service.release(browsePath, "{}")); // its wizard is gone
    }

    void alertsAreReadAfterAMoment()
    {
        AnsweredParts app;
        AlertsPresenter page(app.forAlerts(), app.clock);
        const auto posts = [&app] {
            return QList<qsizetype>{app.service.countTo(QStringLiteral("/admin/alerts/read")),
                app.service.countTo(QStringLiteral("/admin/alerts/clear")),
                app.service.countTo(QStringLiteral("/admin/update/stage"))};
        };
        const AlertItem local{.id = QStringLiteral("local-down")};
        const AlertItem unread{.id = QStringLiteral("a")};
        AlertItem read = unread;
        read.read = true;

        page.show({local, read}, {read});
        page.pageShown();
        app.clock.advance(1500ms); // the local one alone asks for nothing
        page.show({local, unread}, {unread});
        page.pageShown();
        page.pageHidden(); // left before anything could be read
        app.clock.advance(1500ms);
        page.pageShown();
        app.clock.advance(1499ms);
        page.clearHistory();
        QCOMPARE(posts(), (QList<qsizetype>{0, 1, 0}));
        app.clock.advance(1ms);
        QCOMPARE(posts(), (QList<qsizetype>{1, 1, 0}));

        QSignalSpy requested(&page, &AlertsPresenter::pageRequested);
        for (const char *action : {"scan", "printers", "jobs", "settings", "update", "network-permission", "dance", ""})
            page.press(QString::fromLatin1(action));
        QStringList pages;
        for (const QList<QVariant> &call : requested)
            pages.append(call.first().toString());
        QCOMPARE(pages.join(QLatin1Char(' ')), QStringLiteral("overview printers jobs settings"));
        QVERIFY(app.check.isScanning());
        QCOMPARE(app.computer.desktop.panes, QList{Desktop::SettingsPane::Network});
        QCOMPARE(posts(), (QList<qsizetype>{1, 1, 1}));
    }

    void sitesThatAskedAreAllowed()
    {
        AnsweredCommands app;
        SitesPresenter sites(app.commands, 60'000);
        const QString first = QStringLiteral("https://a.example"), second = QStringLiteral("https://b.example");
        AgentState state{.askedOrigins = {{first, 0}, {second, 60'000}, {first, 5}}};
        sites.show(&state);
        QCOMPARE(sites.asked()->count(), 2);
        QCOMPARE(cell(sites.asked(), 0, "timeText").toString(), QStringLiteral("طلب الطباعة قبل دقيقة واحدة"));
        app.service.holdBack = true;
        sites.allow(first);
        sites.allow(first); // it is under way
        sites.allow(QStringLiteral("https://gone.example"));
        QCOMPARE(app.service.countTo(QStringLiteral("/admin/origins/add")), 1);
        state.askedOrigins.first().askedAt = 30'000; // it asks again meanwhile
        sites.show(&state);
        QVERIFY(cell(sites.asked(), 0, "allowing").toBool() && !cell(sites.asked(), 1, "allowing").toBool());
        QVERIFY(app.service.release(
            QStringLiteral("/admin/origins/add"), R"({"error":{"message":"المسموح مواقع https."}})"));
        QCOMPARE(cell(sites.asked(), 0, "problem").toString(), QStringLiteral("المسموح مواقع https."));
        sites.allow(first);
        QCOMPARE(cell(sites.asked(), 0, "problem").toString(), QString());
        QVERIFY(app.service.release(QStringLiteral("/admin/origins/add"), {}));
        QVERIFY(cell(sites.asked(), 0, "problem").toString().startsWith(QStringLiteral("لم يُسمح للموقع")));
        sites.allow(first);
        QVERIFY(app.service.release(QStringLiteral("/admin/origins/add"), R"({"origin":"a.example"})"));
        QCOMPARE(sites.asked()->count(), 1);
        sites.show(nullptr);
        QCOMPARE(sites.asked()->count(), 0);
    }

    void sitesAreAddedOnce()
    {
        AnsweredCommands app;
        app.service.answer = R"({"origin":"pos"})";
        SitesPresenter sites(app.commands, app.clock.wallTime());
        QSignalSpy added(&sites, &SitesPresenter::added);
        sites.add(QStringLiteral(" "));
        sites.add(QStringLiteral(" Pos "));
        sites.add(QStringLiteral(" Pos "));
        QVERIFY(sites.isAdding());
        QTRY_VERIFY(!sites.isAdding());
        QCOMPARE(added.size(), 1);
        QCOMPARE(app.service.countTo(QStringLiteral("/admin/origins/add")), 1);
        QCOMPARE(app.service.lastTo(QStringLiteral("/admin/origins/add")),
            QJsonDocument::fromJson(R"({"origin":" Pos "})").object());
        app.service.answer = R"({"error":{"message":"m"}})";
        sites.add(QStringLiteral("x"));
        QTRY_VERIFY(!sites.isAdding());
        QCOMPARE(added.size(), 1);
        QCOMPARE(sites.refusedText() + sites.refusal(), QStringLiteral("xm"));
        sites.revoke(QStringLiteral("s1"));
        QTRY_COMPARE(
            app.service.lastTo(QStringLiteral("/admin/revoke")), QJsonDocument::fromJson(R"({"id":"s1"})").object());
    }
};

ZEMRAK_TEST(sheets, SheetsTest, QCoreApplication)
#include "tst_sheets.moc"
