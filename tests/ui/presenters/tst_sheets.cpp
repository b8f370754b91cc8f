#include "app/adminchannel.h"
#include "support/fakebundle.h"
#include "support/httpserver.h"
#include "support/manualclock.h"
#include "support/testmain.h"
#include "ui/presenters/alertspresenter.h"
#include "ui/presenters/printerfinder.h"
#include "ui/presenters/sitespresenter.h"
#include "ui/presenters/wizard.h"

#include <QJsonDocument>
#include <QSignalSpy>
#include <QTest>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

struct Service
{
    FakeBundle files;
    ManualClock clock;
    HttpServer server;
    AdminChannel channel{files.configDir() + QStringLiteral("/admin.token"), clock, server.port()};
    StatePoll poll{channel, clock};
    Toast toast{clock};
    Commands commands{channel, poll, toast, clock};
    QByteArray answer = "{}";
    QHash<QByteArray, QPointer<QTcpSocket>> held; ///< by target, the connection whose answer is held back
    bool holdBack = false;

    Service()
    {
        server.answerWith([this](const HttpRequest &request, QTcpSocket &socket) {
            if (holdBack)
                held.insert(request.target, &socket);
            else
                socket.write(HttpServer::response(answer));
        });
    }
    QJsonDocument last(const QByteArray &target) const
    {
        const QList<HttpRequest> requests = server.requestsTo(target);
        return requests.isEmpty() ? QJsonDocument() : QJsonDocument::fromJson(requests.last().body);
    }
};

QVariant cell(const QAbstractItemModel *model, int row, const QByteArray &role)
{
    return model->index(row, 0).data(model->roleNames().key(role, -1));
}

// A wizard whose host answers when the test says so.
struct Host
{
    bool login = true;
    std::function<void(bool)> notifications;
    std::function<void(bool)> trust;
    std::function<void()> network;
    std::unique_ptr<Wizard> wizard = std::make_unique<Wizard>(WizardActions{
        .enableLaunchAtLogin = [this] { return login; },
        .requestNotifications = [this](auto done) { notifications = std::move(done); },
        .trustForSafari = [this](auto done) { trust = std::move(done); },
        .browseNetwork = [this](auto done) { network = std::move(done); },
    });

    QStringList outcomes() const
    {
        QStringList list;
        const QVariantList all = wizard->outcomes();
        for (const QVariant &outcome : all)
            list.append(outcome.toMap().value(QStringLiteral("text")).toString() + QLatin1Char(' ')
                + outcome.toMap().value(QStringLiteral("color")).toString());
        return list;
    }
};

const QString enabled = QStringLiteral("مفعّل gGreen");
const QString skipped = QStringLiteral("تم التخطي #80ffffff");
const QString failed = QStringLiteral("لم يكتمل gAmber");

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
    }
    void manualPrinters()
    {
        QFETCH(QString, name);
        QFETCH(QString, host);
        QFETCH(QString, port);
        QFETCH(QString, sentName);
        QFETCH(int, sentPort);
        Service service;
        PrinterFinder finder(service.commands);
        QCOMPARE(finder.port(), QStringLiteral("9100"));
        finder.addManual(); // without an address
        QVERIFY(!finder.canAddManual());
        finder.setName(name);
        finder.setHost(host);
        finder.setPort(port);
        finder.addManual();
        QTRY_COMPARE(service.toast.text(), QStringLiteral("تمت إضافة الطابعة"));
        QCOMPARE(service.server.requestsTo("/admin/printers/add").size(), 1);
        QCOMPARE(service.last("/admin/printers/add").object(),
            (QJsonObject{{QStringLiteral("type"), QStringLiteral("net")}, {QStringLiteral("name"), sentName},
                {QStringLiteral("host"), host}, {QStringLiteral("port"), sentPort},
                {QStringLiteral("transport"), QStringLiteral("raw")}}));
    }

    void searches()
    {
        Service service;
        PrinterFinder finder(service.commands);
        QCOMPARE(finder.networkHint(), QStringLiteral("اضغط بحث، أو أدخل العنوان يدويًا أدناه."));
        QCOMPARE(finder.networkOutcome(), QString());
        service.holdBack = true;
        finder.searchNetwork();
        finder.searchNetwork(); // it is under way
        finder.searchUsb();
        QTRY_COMPARE(service.held.size(), 2);
        QVERIFY(finder.isScanning() && !finder.canSearchNetwork() && finder.canSearchBonjour());
        QCOMPARE(finder.networkHint(), QStringLiteral("جارٍ البحث…"));
        service.held["/admin/discover/network"]->write(
            HttpServer::response(R"({"hosts":[{"host":"10.0.0.9","port":9101}]})"));
        QTRY_COMPARE(finder.hosts()->count(), 1);
        QVERIFY(finder.isScanning()); // the other still is
        service.held["/admin/discover/usb"]->write(HttpServer::response(
            R"({"devices":[{"product":"TM","uri":"usb:x"},{"vendor":"V","product":"B","uri":"y"}]})"));
        QTRY_VERIFY(!finder.isScanning());
        QCOMPARE(service.server.requestsTo("/admin/discover/network").size(), 1);
        QCOMPARE(finder.networkHint(), QString());

        service.holdBack = false;
        finder.addHost(0);
        QTRY_COMPARE(service.last("/admin/printers/add").object()[QLatin1String("name")].toString(),
            QStringLiteral("Network 10.0.0.9"));
        QCOMPARE(service.last("/admin/printers/add").object()[QLatin1String("port")].toInt(), 9101);
        QTRY_VERIFY(cell(finder.hosts(), 0, "added").toBool());
        QCOMPARE(cell(finder.usb(), 1, "detail").toString(), QStringLiteral("V"));
        finder.addUsb(0);
        QTRY_COMPARE(
            service.last("/admin/printers/add-usb"), QJsonDocument::fromJson(R"({"name":"TM","uri":"usb:x"})"));
        finder.addHost(0); // added already
        finder.addHost(7); // no such row

        service.answer = R"({"services":[{"name":"A","host":"a","port":631,"transport":"ipp"},
                                         {"name":"B","host":"b","port":515,"transport":"lpd"}]})";
        finder.searchBonjour();
        QTRY_COMPARE(finder.bonjour()->count(), 2);
        QCOMPARE(cell(finder.bonjour(), 0, "note").toString(), QStringLiteral("أضفها من طابعات macOS"));
        QVERIFY(!cell(finder.bonjour(), 0, "addable").toBool() && cell(finder.bonjour(), 1, "addable").toBool());
        finder.addBonjour(0);
        finder.addBonjour(1);
        QTRY_COMPARE(service.last("/admin/printers/add"),
            QJsonDocument::fromJson(R"({"type":"net","name":"B","host":"b","port":515,"transport":"lpd"})"));
        QCOMPARE(service.server.requestsTo("/admin/printers/add").size(), 2);

        service.answer = "no JSON"; // replaces its own hits and leaves the others'
        finder.searchNetwork();
        QTRY_VERIFY(!finder.isScanning());
        QVERIFY(finder.hosts()->count() == 0 && finder.bonjour()->count() == 2 && finder.usb()->count() == 2);
    }

    void addsAgainWhatCouldNotBeAdded()
    {
        Service service;
        PrinterFinder finder(service.commands);
        service.answer = R"({"devices":[{"product":"TM","uri":"usb:x"}]})";
        finder.searchUsb();
        QTRY_COMPARE(finder.usb()->count(), 1);
        const auto sent = [&service] { return service.server.requestsTo("/admin/printers/add-usb").size(); };

        service.holdBack = true;
        finder.addUsb(0);
        QTRY_COMPARE(sent(), 1);
        QVERIFY(cell(finder.usb(), 0, "adding").toBool() && !cell(finder.usb(), 0, "added").toBool());
        service.holdBack = false;
        finder.searchUsb(); // finds it again meanwhile
        QTRY_VERIFY(!finder.isScanning());
        finder.addUsb(0);
        service.held["/admin/printers/add-usb"]->write(HttpServer::response(R"({"error":{}})"));
        QTRY_VERIFY(!cell(finder.usb(), 0, "adding").toBool());
        QVERIFY(!cell(finder.usb(), 0, "added").toBool());
        QCOMPARE(sent(), 1);

        service.answer = R"({"queue":"TM"})";
        finder.addUsb(0);
        QTRY_VERIFY(cell(finder.usb(), 0, "added").toBool());
        QCOMPARE(sent(), 2);

        service.holdBack = true;
        finder.setHost(QStringLiteral("h"));
        finder.addManual();
        finder.addManual(); // it is under way
        QTRY_VERIFY(service.held["/admin/printers/add"]);
        QVERIFY(finder.isAddingManual());
        service.held["/admin/printers/add"]->write(HttpServer::response("{}"));
        QTRY_VERIFY(!finder.isAddingManual());
        QCOMPARE(service.server.requestsTo("/admin/printers/add").size(), 1);
    }

    void searchOutlivesItsSheet()
    {
        Service service;
        service.holdBack = true;
        auto finder = std::make_unique<PrinterFinder>(service.commands);
        finder->searchUsb();
        QTRY_COMPARE(service.held.size(), 1);
        finder.reset();
        service.held["/admin/discover/usb"]->write(HttpServer::response(R"({"devices":[{"product":"T","uri":"u"}]})"));
        QTest::qWait(30);
    }

    void wizardGoesForward()
    {
        Host host;
        Wizard &wizard = *host.wizard;
        QSignalSpy finished(&wizard, &Wizard::finished);
        QCOMPARE(wizard.counter(), QStringLiteral("الخطوة 1 من 4"));
        QCOMPARE(wizard.current()[QStringLiteral("icon")].toString(), QStringLiteral("power"));
        wizard.allow();
        QCOMPARE(wizard.step(), 1);
        QVERIFY(!wizard.isBusy());

        wizard.allow();
        QVERIFY(wizard.isBusy() && wizard.step() == 1);
        host.notifications = {};
        wizard.allow(); // cannot be pressed again
        QVERIFY(!host.notifications);
        wizard.finish();
        wizard.skip();
        QVERIFY(!wizard.isBusy() && wizard.step() == 2 && finished.isEmpty());

        wizard.allow();
        host.trust(true);
        QCOMPARE(wizard.counter(), QStringLiteral("الخطوة 4 من 4"));
        wizard.allow();
        host.network();
        QVERIFY(wizard.isSummary() && !wizard.isBusy() && wizard.current().isEmpty() && wizard.counter().isEmpty());
        QCOMPARE(host.outcomes(), (QStringList{enabled, skipped, enabled, enabled}));
        wizard.allow();
        wizard.skip();
        QCOMPARE(wizard.step(), 4);
        wizard.finish();
        QCOMPARE(finished.size(), 1);
    }

    void wizardTellsRefusalFromFailure()
    {
        Host host;
        host.login = false;
        host.wizard->allow();
        host.wizard->allow();
        host.notifications(false);
        host.wizard->allow();
        const auto late = host.trust;
        host.wizard->skip();
        QCOMPARE(host.outcomes(), (QStringList{failed, skipped, skipped, skipped}));
        host.wizard->allow();
        late(true); // it came about after all, and moves nothing
        QVERIFY(host.wizard->step() == 3 && host.wizard->isBusy());
        QCOMPARE(host.outcomes().at(2), enabled);

        const auto network = host.network;
        host.wizard.reset();
        network(); // nobody is left
    }

    void alertsAreReadAfterAMoment()
    {
        ManualClock clock;
        QStringList done;
        const auto note
            = [&done](const char *what) { return [&done, what] { done.append(QString::fromLatin1(what)); }; };
        AlertsPresenter page({.markRead = note("read"),
                                 .clearHistory = note("clear"),
                                 .runScan = note("scan"),
                                 .installUpdate = note("update"),
                                 .openLocalNetworkSettings = note("network")},
            clock);
        const AlertItem local{.id = QStringLiteral("local-down")};
        const AlertItem unread{.id = QStringLiteral("a")};
        AlertItem read = unread;
        read.read = true;

        page.show({local, unread}, {unread});
        page.pageShown();
        clock.advance(1499ms);
        QVERIFY(done.isEmpty());
        clock.advance(1ms);
        QCOMPARE(done.join(QLatin1Char(' ')), QStringLiteral("read"));
        page.pageShown();
        page.pageHidden(); // left before anything could be read
        clock.advance(5s);
        page.show({local, read}, {read});
        page.pageShown();
        clock.advance(5s); // the local one alone asks for nothing
        QCOMPARE(done.size(), 1);

        QSignalSpy page_(&page, &AlertsPresenter::pageRequested);
        for (const char *action : {"scan", "printers", "jobs", "settings", "update", "network-permission", "dance", ""})
            page.press(QString::fromLatin1(action));
        QStringList pages;
        for (const QList<QVariant> &call : page_)
            pages.append(call.first().toString());
        QCOMPARE(pages.join(QLatin1Char(' ')), QStringLiteral("overview printers jobs settings"));
        page.clearHistory();
        QCOMPARE(done.mid(1).join(QLatin1Char(' ')), QStringLiteral("scan update network clear"));
    }

    void sitesAreAddedOnce()
    {
        Service service;
        service.answer = R"({"origin":"pos"})";
        SitesPresenter sites(service.commands, service.clock.wallTime());
        QSignalSpy added(&sites, &SitesPresenter::added);
        sites.add(QStringLiteral(" "));
        sites.add(QStringLiteral(" Pos "));
        sites.add(QStringLiteral(" Pos "));
        QVERIFY(sites.isAdding());
        QTRY_VERIFY(!sites.isAdding());
        QCOMPARE(added.size(), 1);
        QCOMPARE(service.server.requestsTo("/admin/origins/add").size(), 1);
        QCOMPARE(service.last("/admin/origins/add"), QJsonDocument::fromJson(R"({"origin":" Pos "})"));
        service.answer = R"({"error":1})";
        sites.add(QStringLiteral("x"));
        QTRY_VERIFY(!sites.isAdding());
        QCOMPARE(added.size(), 1);
        sites.revoke(QStringLiteral("s1"));
        QTRY_COMPARE(service.last("/admin/revoke"), QJsonDocument::fromJson(R"({"id":"s1"})"));
    }
};

ZEMRAK_TEST(sheets, SheetsTest, QCoreApplication)
#include "tst_sheets.moc"
