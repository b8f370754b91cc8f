// Adding a printer, the first-run wizard, the pages of alerts and sites: what they ask for, and what they say of it.
#include "ui/presenters/addprinter/addprinterpresenter.h"
#include "ui/presenters/alerts/alertspresenter.h"
#include "ui/presenters/presentertest.h"
#include "ui/presenters/sites/sitespresenter.h"
#include "ui/presenters/wizard/wizardpresenter.h"

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

const char *const network = "/admin/discover/network";
const char *const bonjour = "/admin/discover/bonjour";
const char *const usb = "/admin/discover/usb";
const char *const add = "/admin/printers/add";
const char *const addUsb = "/admin/printers/add-usb";

QString outcomes(const WizardPresenter &wizard)
{
    QStringList list;
    for (const QVariant &outcome : wizard.outcomes())
        list.append(outcome.toMap()[u"text"_s].toString() + u' ' + outcome.toMap()[u"color"_s].toString());
    return list.join(u'|');
}

} // namespace

class SheetsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void manualPrinters()
    {
        // Name, host and port as typed, with quotes; name and port as sent.
        for (const QStringList &row : rowsOf(R"(
                ""        | "192.168.1.50" | "9100"  | "Network 192.168.1.50" | 9100
                "Kitchen" | "h"            | ""      | "Kitchen"              | 9100
                "Kitchen" | "h"            | "abc"   | "Kitchen"              | 9100
                "Kitchen" | "h"            | " 9100" | "Kitchen"              | 9100
                " "       | "h "           | "+515"  | " "                    | 515
                "K"       | "h"            | "-1"    | "K"                    | -1
                "K"       | "h"            | "٩١٠١"  | "K"                    | 9101)")) {
            const auto typed = [&row](int cell) { return row[cell].sliced(1).chopped(1); };
            Parts app;
            AddPrinterPresenter finder(app.commands);
            QCOMPARE(finder.port(), u"9100"_s);
            finder.addManual(); // without an address
            QVERIFY(!finder.canAddManual());
            finder.setName(typed(0));
            finder.setHost(typed(1));
            finder.setPort(typed(2));
            finder.addManual();
            finder.addManual(); // it is under way
            QVERIFY(finder.isAddingManual());
            QVERIFY(app.answer(add));
            QVERIFY(!finder.isAddingManual());
            QCOMPARE(app.toast.text(), u"تمت إضافة الطابعة"_s);
            QCOMPARE(app.sent(add), 1);
            QCOMPARE(app.body(add),
                (QJsonObject{{u"type"_s, u"net"_s}, {u"name"_s, typed(3)}, {u"host"_s, typed(1)},
                    {u"port"_s, row[4].toInt()}, {u"transport"_s, u"raw"_s}}));
        }
    }

    void searches()
    {
        Parts app;
        auto finder = std::make_unique<AddPrinterPresenter>(app.commands);
        QCOMPARE(finder->networkHint(), u"اضغط بحث، أو أدخل العنوان يدويًا أدناه."_s);
        QCOMPARE(finder->networkOutcome(), QString());
        finder->searchNetwork();
        finder->searchNetwork(); // it is under way
        finder->searchUsb();
        QVERIFY(finder->isScanning() && !finder->canSearchNetwork() && finder->canSearchBonjour());
        QCOMPARE(finder->networkHint(), u"جارٍ البحث…"_s);
        QVERIFY(app.answer(network, R"({"hosts":[{"host":"10.0.0.9","port":9101}]})"));
        QVERIFY(finder->hosts()->count() == 1 && finder->isScanning()); // the other still is
        QVERIFY(
            app.answer(usb, R"({"devices":[{"product":"TM","uri":"usb:x"},{"vendor":"V","product":"B","uri":"y"}]})"));
        QVERIFY(!finder->isScanning() && app.sent(network) == 1);
        QCOMPARE(finder->networkHint(), QString());

        for (const int row : {0, 7}) // no such row
            finder->addHost(row);
        QVERIFY(app.answer(add));
        QCOMPARE(cells(*finder->hosts(), 0, "added adding"), u"true|false"_s);
        finder->addHost(0); // added already
        QCOMPARE(app.sent(add), 1);
        QCOMPARE(app.body(add)[u"name"].toString(), u"Network 10.0.0.9"_s);
        QCOMPARE(app.body(add)[u"port"].toInt(), 9101);
        QCOMPARE(cells(*finder->usb(), 1, "detail"), u"V"_s);

        finder->searchBonjour();
        QVERIFY(app.answer(bonjour, R"({"services":[{"name":"A","host":"a","port":631,"transport":"ipp"},
            {"name":"B","host":"b","port":515,"transport":"lpd"}]})"));
        QCOMPARE(cells(*finder->bonjour(), 0, "note addable"), u"أضفها من طابعات macOS|false"_s);
        QCOMPARE(cells(*finder->bonjour(), 1, "addable"), u"true"_s);
        finder->addBonjour(0);
        finder->addBonjour(1);
        QCOMPARE(app.sent(add), 2);
        QCOMPARE(app.body(add), json(R"({"type":"net","name":"B","host":"b","port":515,"transport":"lpd"})"));

        finder->searchNetwork(); // replaces its own hits and leaves the others'
        QVERIFY(app.answer(network, "no JSON"));
        QVERIFY(!finder->isScanning() && finder->hosts()->count() == 0);
        QVERIFY(finder->bonjour()->count() == 2 && finder->usb()->count() == 2);
        finder->searchUsb();
        finder.reset();
        QVERIFY(app.answer(usb, R"({"devices":[{"product":"T","uri":"u"}]})")); // its sheet is gone
    }

    void saysWhatIsWrongAtItsField()
    {
        Parts app;
        AddPrinterPresenter finder(app.commands);
        for (const QStringList &row : rowsOf(R"(
                "abc"   | هذا ليس رقم منفذ، وسيُستخدم 9100 بدلًا منه.
                " 9100" | هذا ليس رقم منفذ، وسيُستخدم 9100 بدلًا منه.
                "0"     | رقم المنفذ بين 1 و65535.
                "65536" | رقم المنفذ بين 1 و65535.
                "-1"    | رقم المنفذ بين 1 و65535.
                "٩١٠٠"  |
                "65535" |
                ""      |)")) {
            finder.setPort(row[0].sliced(1).chopped(1));
            QCOMPARE(row[0] + finder.portProblem(), row[0] + row[1]);
        }
        finder.setHost(u"a b"_s);
        finder.addManual();
        QVERIFY(app.answer(add, R"({"error":{"code":"invalid_request","message":"في العنوان مسافة."}})"));
        QCOMPARE(finder.hostProblem(), u"في العنوان مسافة."_s);
        finder.setHost(u"ab"_s);
        QCOMPARE(finder.hostProblem(), QString());

        const auto search = [&](const char *reply) {
            finder.searchNetwork();
            finder.searchBonjour();
            return app.answer(network, reply) && app.answer(bonjour, reply) ? finder.networkOutcome() : QString();
        };
        QCOMPARE(search(R"({"hosts":[],"services":[],"problem":"no_network","message":"لا شبكة."})"),
            u"لا شبكة."_s); // once, though neither could be made
        QVERIFY(search(R"({"hosts":[],"services":[]})").startsWith(u"لم يُعثر"_s));
    }

    void addsAgainWhatCouldNotBeAdded()
    {
        Parts app;
        AddPrinterPresenter finder(app.commands);
        const auto search = [&] {
            finder.searchUsb();
            QVERIFY(app.answer(usb, R"({"devices":[{"product":"TM","uri":"usb:x"}]})"));
        };
        search();
        finder.addUsb(0);
        QCOMPARE(app.body(addUsb), json(R"({"name":"TM","uri":"usb:x"})"));
        QCOMPARE(cells(*finder.usb(), 0, "adding added"), u"true|false"_s);
        search(); // finds it again meanwhile
        finder.addUsb(0);
        QCOMPARE(app.sent(addUsb), 1);
        QVERIFY(app.answer(addUsb, R"({"error":{}})"));
        QCOMPARE(cells(*finder.usb(), 0, "adding added"), u"false|false"_s);
        finder.addUsb(0);
        QVERIFY(app.answer(addUsb, R"({"queue":"TM"})"));
        QCOMPARE(cells(*finder.usb(), 0, "adding added"), u"false|true"_s);
    }

    void wizardGoesForward()
    {
        Parts app;
        app.computer.loginItem.works = true;
        app.computer.notifier.holdPermission = true;
        WizardPresenter wizard({app.login, app.notifications, app.trust, app.commands});
        QSignalSpy finished(&wizard, &WizardPresenter::finished);
        QCOMPARE(wizard.counter(), u"الخطوة 1 من 4"_s);
        QCOMPARE(wizard.current()[u"icon"_s].toString(), u"power"_s);
        wizard.allow();
        QVERIFY(wizard.step() == 1 && !wizard.isBusy() && app.login.launchAtLogin());

        wizard.allow();
        QVERIFY(wizard.isBusy() && wizard.step() == 1);
        const auto permit = std::exchange(app.computer.notifier.asked, {});
        wizard.allow(); // cannot be pressed again
        QVERIFY(!app.computer.notifier.asked);
        wizard.finish();
        wizard.skip();
        QVERIFY(!wizard.isBusy() && wizard.step() == 2 && finished.isEmpty());
        QCOMPARE(wizard.choice(1), WizardChoice::Skipped);
        permit(true, {}); // it came about after all, and moves nothing
        QVERIFY(wizard.step() == 2 && wizard.choice(1) == WizardChoice::Enabled);

        wizard.skip();
        QCOMPARE(wizard.counter(), u"الخطوة 4 من 4"_s);
        wizard.allow();
        QVERIFY(wizard.isBusy());
        QVERIFY(app.answer(bonjour)); // whatever was found
        QVERIFY(wizard.isSummary() && !wizard.isBusy() && wizard.current().isEmpty() && wizard.counter().isEmpty());
        QCOMPARE(outcomes(wizard), u"مفعّل gGreen|مفعّل gGreen|تم التخطي #80ffffff|مفعّل gGreen"_s);
        wizard.allow();
        wizard.skip();
        QCOMPARE(wizard.step(), 4);
        wizard.finish();
        QCOMPARE(finished.size(), 1);
    }

    void wizardTellsRefusalFromFailure()
    {
        Parts app;
        app.computer.notifier.holdPermission = true;
        auto wizard
            = std::make_unique<WizardPresenter>(WizardParts{app.login, app.notifications, app.trust, app.commands});
        wizard->allow();
        wizard->allow();
        app.computer.notifier.asked(false, {});
        wizard->allow();
        QVERIFY(wizard->isBusy());
        app.oneShots.commands.takeLast().end(1); // the command that adds the authority fails
        QCOMPARE(wizard->step(), 3);
        QCOMPARE(outcomes(*wizard), u"لم يكتمل gAmber|تم التخطي #80ffffff|تم التخطي #80ffffff|تم التخطي #80ffffff"_s);
        QCOMPARE(wizard->choice(2), WizardChoice::Skipped);
        wizard->allow();
        wizard.reset();
        QVERIFY(app.answer(bonjour)); // its wizard is gone
    }

    void alertsAreReadAfterAMoment()
    {
        Parts app;
        AlertsPresenter page({app.feed, app.check, app.updates, app.systemSettings}, app.clock);
        const auto posts = [&app] {
            return u"%1 %2 %3"_s.arg(app.sent("/admin/alerts/read"))
                .arg(app.sent("/admin/alerts/clear"))
                .arg(app.sent("/admin/update/stage"));
        };
        const AlertItem local{.id = u"local-down"_s}, unread{.id = u"a"_s};
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
        QCOMPARE(posts(), u"0 1 0"_s);
        app.clock.advance(1ms);
        QCOMPARE(posts(), u"1 1 0"_s);

        QString pages;
        connect(&page, &AlertsPresenter::pageRequested, this, [&pages](const QString &id) { pages += id + u' '; });
        for (const char *action : {"scan", "printers", "jobs", "settings", "update", "network-permission", "dance", ""})
            page.press(QString::fromLatin1(action));
        QCOMPARE(pages, u"overview printers jobs settings "_s);
        QVERIFY(app.check.isScanning());
        QCOMPARE(app.computer.desktop.panes, QList{Desktop::SettingsPane::Network});
        QCOMPARE(posts(), u"1 1 1"_s);
    }

    void sitesThatAskedAreAllowed()
    {
        Parts app;
        SitesPresenter sites(app.commands, 60'000);
        const QString first = u"https://a.example"_s, second = u"https://b.example"_s;
        const auto asked = [&sites](const char *role) { return column(*sites.asked(), role); };
        AgentState state{.askedOrigins = {{first, 0}, {second, 60'000}, {first, 5}}};
        sites.show(&state);
        QCOMPARE(sites.asked()->count(), 2);
        QCOMPARE(cells(*sites.asked(), 0, "timeText"), u"طلب الطباعة قبل دقيقة واحدة"_s);
        sites.allow(first);
        sites.allow(first); // it is under way
        sites.allow(u"https://gone.example"_s);
        QCOMPARE(app.sent("/admin/origins/add"), 1);
        state.askedOrigins.first().askedAt = 30'000; // it asks again meanwhile
        sites.show(&state);
        QCOMPARE(asked("allowing"), u"true|false"_s);
        QVERIFY(app.answer("/admin/origins/add", R"({"error":{"message":"المسموح مواقع https."}})"));
        QCOMPARE(asked("problem"), u"المسموح مواقع https.|"_s);
        sites.allow(first);
        QCOMPARE(asked("problem"), u"|"_s);
        QVERIFY(app.answer("/admin/origins/add", std::nullopt));
        QVERIFY(asked("problem").startsWith(u"لم يُسمح للموقع"_s));
        sites.allow(first);
        QVERIFY(app.answer("/admin/origins/add", R"({"origin":"a.example"})"));
        QCOMPARE(sites.asked()->count(), 1);
        sites.show(nullptr);
        QCOMPARE(sites.asked()->count(), 0);
    }

    void sitesAreAddedOnce()
    {
        Parts app;
        SitesPresenter sites(app.commands, app.clock.wallTime());
        QSignalSpy added(&sites, &SitesPresenter::added);
        for (const char *typed : {" ", " Pos ", " Pos "})
            sites.add(QString::fromLatin1(typed));
        QVERIFY(sites.isAdding());
        QCOMPARE(app.sent("/admin/origins/add"), 1);
        QCOMPARE(app.body("/admin/origins/add"), json(R"({"origin":" Pos "})"));
        QVERIFY(app.answer("/admin/origins/add", R"({"origin":"pos"})"));
        QVERIFY(!sites.isAdding() && added.size() == 1);
        sites.add(u"x"_s);
        QVERIFY(app.answer("/admin/origins/add", R"({"error":{"message":"m"}})"));
        QVERIFY(!sites.isAdding() && added.size() == 1);
        QCOMPARE(sites.refusedText() + sites.refusal(), u"xm"_s);
        sites.revoke(u"s1"_s);
        QCOMPARE(app.body("/admin/revoke"), json(R"({"id":"s1"})"));
    }
};

ZEMRAK_TEST(sheets, SheetsTest, QCoreApplication)
#include "tst_sheets.moc"
