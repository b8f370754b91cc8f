#include "app/agent.h"
#include "app/servicecommand.h"
#include "platform/platform.h"
#include "support/program.h"
#include "support/receiptprinter.h"
#include "support/testhost.h"
#include "support/testmain.h"
#include "support/wiredata.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

using namespace zemrak;
using namespace zemrak::test;

namespace {

const PrinterInfo *printerNamed(const AgentState *state, const QString &name)
{
    if (state == nullptr)
        return nullptr;
    const auto found = std::find_if(
        state->printers.cbegin(), state->printers.cend(), [&](const PrinterInfo &p) { return p.name == name; });
    return found == state->printers.cend() ? nullptr : &*found;
}

QString stateOf(const Agent &agent, const QString &name)
{
    const PrinterInfo *printer = printerNamed(agent.state(), name);
    return printer ? printer->state : QString();
}

} // namespace

// The application's own parts and the bundled service, in real time, with a printer on the other end.
class MainJobTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QTcpServer probe;
        QVERIFY2(probe.listen(QHostAddress::LocalHost, 17731), "Port 17731 is in use on this machine");
    }

    void printsOnANetworkPrinterThatComesAndGoes()
    {
        const QTemporaryDir home;
        qputenv("HOME", home.path().toUtf8());
        UserDefaults defaults(home.filePath(QStringLiteral("settings.ini")));
        SystemClock clock;
        const std::unique_ptr<ChildGuard> guard = platform::makeChildGuard();
        TestHost host;
        Agent agent({.bundle = ApplicationBundle(builtBundle()), .configDir = serviceConfigDir()}, defaults, clock,
            {*guard, host.notifier, host.loginItem, host.activities, host.desktop, host.portHolders, {}});
        QStringList toasts;
        connect(&agent, &Agent::toastChanged, &agent, [&] { toasts.append(agent.toast()); });
        agent.start();
        QTRY_VERIFY_WITH_TIMEOUT(agent.state(), 15'000);
        QVERIFY(agent.state()->tls);
        QVERIFY(agent.state()->printers.isEmpty()); // there is none that nobody has added

        ReceiptPrinter device;
        QVERIFY(device.switchOn());
        const quint16 port = device.port();
        const QString name = QStringLiteral("Kitchen");
        agent.commands().addNetwork(name, QStringLiteral("127.0.0.1"), port);
        QTRY_VERIFY(toasts.contains(QStringLiteral("تمت إضافة الطابعة")));
        QTRY_COMPARE(stateOf(agent, name), QStringLiteral("ready"));
        QVERIFY(agent.health().ok);
        const QString id = printerNamed(agent.state(), name)->id;

        agent.commands().testPrint(id);
        QTRY_VERIFY(toasts.contains(QStringLiteral("تم إرسال طباعة التجربة")));
        QTRY_COMPARE(device.receipts().size(), 1);
        QVERIFY(device.receipts().first().startsWith("\x1b@"));

        std::optional<bool> printed;
        agent.commands().printDesigner(
            id, storedObject(QStringLiteral("wire/designer-document.json")), [&](bool ok) { printed = ok; });
        QTRY_COMPARE(printed, true);
        QTRY_COMPARE(device.receipts().size(), 2);
        const QByteArray &receipt = device.receipts().last();
        for (const char *part :
            {"Corner Shop", "T-0001", "Coffee", "\x1dv0"}) // lines that are not of ASCII alone are drawn
            QVERIFY2(receipt.contains(part), part);
        QVERIFY(receipt.contains(QByteArray("\x1dV"))); // cut
        const auto completedJobs = [&agent] {
            const QList<JobInfo> jobs = agent.state() ? agent.state()->recentJobs : QList<JobInfo>();
            return std::count_if(jobs.cbegin(), jobs.cend(),
                [](const JobInfo &job) { return job.status == QLatin1String("completed"); });
        };
        QTRY_COMPARE(completedJobs(), 2);

        std::optional<bool> saved;
        agent.commands().saveProfile(
            id, {{QStringLiteral("alias"), QStringLiteral("كاشير 1")}}, [&](bool ok) { saved = ok; });
        QTRY_COMPARE(saved, true);
        const auto alias = [&] {
            const PrinterInfo *printer = printerNamed(agent.state(), name);
            return printer && printer->profile ? printer->profile->alias : std::nullopt;
        };
        QTRY_COMPARE(alias(), QStringLiteral("كاشير 1"));

        // Switched off while no window is shown: asked within 10 s, again until it is no moment's loss, and seen by the
        // next poll, 2 s later at the latest; the service has something to say about it.
        device.switchOff();
        QTRY_COMPARE_WITH_TIMEOUT(stateOf(agent, name), QStringLiteral("offline"), 15000);
        QTRY_COMPARE(host.notifier.posted.size(), 1);
        QCOMPARE(agent.alertsBadge(), 1);
        QVERIFY(host.notifier.posted.first().critical
            && host.notifier.posted.first().title.contains(QStringLiteral("كاشير 1")));
        QCOMPARE(agent.health().problems.value(0), QStringLiteral("كاشير 1: لا تستجيب على الشبكة"));

        QVERIFY(device.switchOn(port));
        QTRY_COMPARE_WITH_TIMEOUT(stateOf(agent, name), QStringLiteral("ready"), 6000);
        QVERIFY(agent.health().ok);
        QTRY_COMPARE(host.notifier.retracted.size(), 1);
        QCOMPARE(host.notifier.retracted.first(), QStringList{host.notifier.posted.first().id});

        // The printer, its profile and the jobs outlive the service.
        agent.restart();
        QTRY_VERIFY(!agent.isRunning());
        QTRY_VERIFY_WITH_TIMEOUT(agent.isRunning(), 6000);
        QTRY_COMPARE_WITH_TIMEOUT(stateOf(agent, name), QStringLiteral("ready"), 6000);
        QCOMPARE(completedJobs(), 2);
        QCOMPARE(device.receipts().size(), 2); // nothing was printed again
        agent.shutDown();
        QVERIFY(!agent.isRunning());
    }
};

ZEMRAK_TEST(mainjob, MainJobTest, QCoreApplication)
#include "tst_mainjob.moc"
