#include "app/agent.h"
#include "app/servicecommand.h"
#include "platform/platform.h"
#include "support/wiredata.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

using namespace zemrak;
using namespace zemrak::test;

namespace {

/// A receipt printer on the network: it takes what it is sent. Probes, which send nothing, leave no receipt.
class ReceiptPrinter : public QObject
{
public:
    ReceiptPrinter()
    {
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *link = m_server.nextPendingConnection()) {
                auto paper = std::make_shared<QByteArray>();
                connect(link, &QTcpSocket::readyRead, this, [link, paper] { *paper += link->readAll(); });
                connect(link, &QTcpSocket::disconnected, this, [this, link, paper] {
                    if (!paper->isEmpty())
                        m_receipts.append(*paper);
                    link->deleteLater();
                });
            }
        });
    }

    [[nodiscard]] bool switchOn(quint16 port = 0) { return m_server.listen(QHostAddress::LocalHost, port); }
    void switchOff() { m_server.close(); }
    [[nodiscard]] quint16 port() const { return m_server.serverPort(); }
    [[nodiscard]] const QList<QByteArray> &receipts() const { return m_receipts; }

private:
    QList<QByteArray> m_receipts;
    QTcpServer m_server; // last: its links still report here while they go
};

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
    void printsOnANetworkPrinterThatComesAndGoes()
    {
        const QTemporaryDir home;
        qputenv("HOME", home.path().toUtf8());
        UserDefaults defaults(home.filePath(QStringLiteral("settings.ini")));
        SystemClock clock;
        const std::unique_ptr<ChildGuard> guard = platform::makeChildGuard();
        Agent agent({.bundle = ApplicationBundle(QStringLiteral(ZEMRAK_BUNDLE)), .configDir = serviceConfigDir()},
            defaults, clock, *guard);
        agent.start();
        QTRY_VERIFY_WITH_TIMEOUT(agent.state(), 15'000);
        QVERIFY(agent.state()->tls);
        QCOMPARE(agent.state()->printers.size(), 1); // the one that prints into a folder

        ReceiptPrinter device;
        QVERIFY(device.switchOn());
        const quint16 port = device.port();
        const QString name = QStringLiteral("Kitchen");
        agent.commands().addNetwork(name, QStringLiteral("127.0.0.1"), port);
        QTRY_COMPARE(agent.toast(), QStringLiteral("تمت إضافة الطابعة"));
        QTRY_COMPARE(stateOf(agent, name), QStringLiteral("ready"));
        QVERIFY(agent.health().ok);
        const QString id = printerNamed(agent.state(), name)->id;

        agent.commands().testPrint(id);
        QTRY_COMPARE(agent.toast(), QStringLiteral("تم إرسال طباعة التجربة"));
        QTRY_COMPARE(device.receipts().size(), 1);
        QVERIFY(device.receipts().first().startsWith("\x1b@"));

        std::optional<bool> printed;
        agent.commands().printDesigner(
            id, storedObject(QStringLiteral("wire/designer-document.json")), [&](bool ok) { printed = ok; });
        QTRY_COMPARE(printed, true);
        QTRY_COMPARE(device.receipts().size(), 2);
        const QByteArray &receipt = device.receipts().last();
        for (const char *part : {"Corner Shop", "T-0001", "Coffee", "21.00", "31.00"})
            QVERIFY2(receipt.contains(part), part);
        QVERIFY(receipt.contains(QByteArray("\x1dV"))); // cut
        QTRY_VERIFY(agent.state()->recentJobs.size() == 2
            && std::all_of(agent.state()->recentJobs.cbegin(), agent.state()->recentJobs.cend(),
                [](const JobInfo &job) { return job.status == QLatin1String("completed"); }));

        std::optional<bool> saved;
        agent.commands().saveProfile(
            id, {{QStringLiteral("alias"), QStringLiteral("كاشير 1")}}, [&](bool ok) { saved = ok; });
        QTRY_COMPARE(saved, true);
        QTRY_VERIFY(printerNamed(agent.state(), name)
            && printerNamed(agent.state(), name)->profile->alias == QStringLiteral("كاشير 1"));

        // Switched off: two polls later at the latest it is known, and the service has something to say about it.
        const qint64 unreadBefore = agent.state()->alertsUnread;
        device.switchOff();
        QTRY_COMPARE_WITH_TIMEOUT(stateOf(agent, name), QStringLiteral("offline"), 4500);
        QTRY_VERIFY(agent.state()->alertsUnread > unreadBefore);
        QCOMPARE(agent.health().problems.value(0), QStringLiteral("كاشير 1: لا تستجيب على الشبكة"));
        AdminAnswer alerts;
        agent.adminChannel().request(
            {.path = QStringLiteral("/admin/alerts")}, &agent, [&](const AdminAnswer &a) { alerts = a; });
        QTRY_VERIFY(alerts && alerts->contains(":offline"));

        QVERIFY(device.switchOn(port));
        QTRY_COMPARE_WITH_TIMEOUT(stateOf(agent, name), QStringLiteral("ready"), 6000);
        QVERIFY(agent.health().ok);

        // The printer, its profile and the jobs outlive the service.
        agent.restart();
        QTRY_VERIFY(!agent.isRunning());
        QTRY_VERIFY_WITH_TIMEOUT(agent.isRunning(), 6000);
        QTRY_COMPARE_WITH_TIMEOUT(stateOf(agent, name), QStringLiteral("ready"), 6000);
        QCOMPARE(agent.state()->recentJobs.size(), 2);
        QCOMPARE(device.receipts().size(), 2); // nothing was printed again
        agent.shutDown();
        QVERIFY(!agent.isRunning());
    }
};

QTEST_GUILESS_MAIN(MainJobTest)
#include "tst_mainjob.moc"
