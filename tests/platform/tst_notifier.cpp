#include "app/notificationcheck.h"
#include "platform/linux/desktopnotifier.h"
#include "support/manualclock.h"
#include "support/notificationserver.h"
#include "support/privatebus.h"

#include <QDBusConnection>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace zemrak;
using namespace zemrak::linux_;
using namespace zemrak::test;

namespace {

struct Fixture
{
    PrivateBus bus;
    QTemporaryDir folder;
    QDBusConnection connection = QDBusConnection::connectToBus(bus.address(), name());
    std::unique_ptr<NotificationServer> server;
    std::unique_ptr<DesktopNotifier> notifier;
    QStringList clicks; ///< by their tokens

    Fixture() { startNotifier(); }
    ~Fixture()
    {
        notifier.reset();
        server.reset();
        QDBusConnection::disconnectFromBus(connection.name());
    }

    static QString name()
    {
        static int count = 0;
        return QStringLiteral("client-%1").arg(++count);
    }
    void startServer() { server = std::make_unique<NotificationServer>(bus.address()); }
    /// Also a restart of the application: only the ledger's file is kept.
    void startNotifier()
    {
        notifier.reset();
        notifier = std::make_unique<DesktopNotifier>(connection, folder.filePath(QStringLiteral("ledger")), QString());
        notifier->onClicked([this](const QString &token) { clicks.append(token); });
        notifier->install();
    }
    void post(const char *id, bool critical = false)
    {
        notifier->post(QString::fromLatin1(id), QStringLiteral("T:") + QString::fromLatin1(id),
            QStringLiteral("طابعة <b>A & B</b>"), critical);
    }
    [[nodiscard]] const NotificationServer::Note *note(const char *id) const
    {
        return server->find(QStringLiteral("T:") + QString::fromLatin1(id));
    }
    void retract(const char *id) { notifier->retract({QString::fromLatin1(id)}); }
};

} // namespace

class NotifierTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void postsPlainTextWithItsHints()
    {
        Fixture f;
        f.startServer();
        f.post("one");
        f.post("two", true);
        QTRY_COMPARE(f.server->notes().size(), 2);
        const NotificationServer::Note &one = f.server->notes().first();
        QCOMPARE(one.body, QStringLiteral("طابعة &lt;b&gt;A &amp; B&lt;/b&gt;"));
        QCOMPARE(one.actions.value(0), QStringLiteral("default"));
        QCOMPARE(one.hints.value(QStringLiteral("urgency")).toInt(), 1);
        QCOMPARE(one.hints.value(QStringLiteral("desktop-entry")).toString(), QStringLiteral("com.zemrak.Printer"));
        QCOMPARE(
            one.hints.value(QStringLiteral("x-zemrak-thread")).toString(), QStringLiteral("zemrak-printer-alerts"));
        const NotificationServer::Note &two = f.server->notes().last();
        QCOMPARE(two.hints.value(QStringLiteral("urgency")).toInt(), 2);
        QVERIFY(two.hints.value(QStringLiteral("sound-name")) != one.hints.value(QStringLiteral("sound-name")));
    }

    void simpleServerGetsNeitherActionsNorEscapes()
    {
        Fixture f;
        f.startServer();
        f.server->setCapabilities({QStringLiteral("body")});
        f.post("one");
        QTRY_COMPARE(f.server->notes().size(), 1);
        QCOMPARE(f.note("one")->body, QStringLiteral("طابعة <b>A & B</b>"));
        QVERIFY(f.note("one")->actions.isEmpty());
    }

    void clickOpensOnlyForOurOwn()
    {
        Fixture f;
        f.startServer();
        f.post("one");
        QTRY_VERIFY(f.note("one"));
        QTRY_VERIFY(QFile::exists(f.folder.filePath(QStringLiteral("ledger"))));
        f.server->click(99);
        f.server->click(f.note("one")->number, QStringLiteral("token-7"));
        f.server->click(f.note("one")->number);
        QTRY_COMPARE(f.clicks, (QStringList{QStringLiteral("token-7"), QString()})); // a token serves one click
    }

    void retractsWhatItPosted()
    {
        Fixture f;
        f.startServer();
        f.post("one");
        f.post("two");
        f.retract("one"); // before the server has even been asked for its abilities
        QTRY_VERIFY(f.note("one") && f.note("one")->closed);
        QTRY_VERIFY(f.note("two"));
        QVERIFY(!f.note("two")->closed);
        const int calls = f.server->calls();
        f.retract("one");
        f.retract("never posted");
        QTest::qWait(50);
        QCOMPARE(f.server->calls(), calls); // nothing to take back, nothing asked
    }

    void retractsWhatAnEarlierRunPosted()
    {
        Fixture f;
        f.startServer();
        f.post("one");
        f.post("two");
        QTRY_COMPARE(f.server->notes().size(), 2);
        f.notifier->retract({QStringLiteral("none")}); // a round trip: both numbers are in the ledger
        QTest::qWait(50);
        f.startNotifier();
        f.retract("one");
        QTRY_VERIFY(f.note("one")->closed);

        // Another server gives out the same numbers for the notes of others.
        f.server.reset();
        f.startServer();
        f.startNotifier();
        f.post("foreign");
        f.post("foreign too");
        QTRY_COMPARE(f.server->notes().size(), 2);
        f.retract("two");
        QTest::qWait(50);
        QVERIFY(!f.server->notes().first().closed && !f.server->notes().last().closed);
    }

    void missingServerCostsNothing()
    {
        Fixture f;
        std::optional<NotificationStatus> status;
        f.post("lost");
        f.notifier->status([&](NotificationStatus answer) { status = answer; });
        QTRY_COMPARE(status, NotificationStatus::Denied);
        f.startServer();
        f.post("found");
        QTRY_VERIFY(f.note("found"));
        f.notifier->status([&](NotificationStatus answer) { status = answer; });
        QTRY_COMPARE(status, NotificationStatus::Authorized);
    }

    void hangingServerIsNotWaitedFor()
    {
        Fixture f;
        f.startServer();
        f.server->setMood(NotificationServer::Mood::Hanging);
        QElapsedTimer took;
        took.start();
        for (int i = 0; i < 100; ++i)
            f.post("hung");
        f.retract("hung");
        QVERIFY(took.elapsed() < 200);
        QTRY_COMPARE(f.server->calls(), 1);
        f.server->wakeUp();
        QTRY_COMPARE(f.server->notes().size(), 100);
    }

    void refusingAndRestartedServers()
    {
        Fixture f;
        f.startServer();
        f.post("one");
        QTRY_VERIFY(f.note("one"));
        f.server->setMood(NotificationServer::Mood::Refusing);
        f.post("refused");
        QTest::qWait(50);
        f.server.reset();
        f.startServer();
        f.server->setCapabilities({QStringLiteral("body")});
        // A round trip: by its end the news of the new server have come as well.
        std::optional<NotificationStatus> status;
        f.notifier->status([&](NotificationStatus answer) { status = answer; });
        QTRY_VERIFY(status);
        f.post("two");
        QTRY_VERIFY(f.note("two"));
        QVERIFY(f.note("two")->actions.isEmpty()); // the new server's abilities, not the old one's
        f.server->click(f.note("two")->number);
        QTRY_COMPARE(f.clicks.size(), 1);
    }

    void withoutABusEverythingIsRefusedQuietly()
    {
        const QTemporaryDir folder;
        DesktopNotifier notifier(QDBusConnection(QStringLiteral("no such connection")),
            folder.filePath(QStringLiteral("ledger")), QString());
        notifier.install();
        notifier.post(QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"), true);
        notifier.retract({QStringLiteral("a")});
        std::optional<bool> granted;
        notifier.requestPermission([&](bool answer, const QString &) { granted = answer; });
        QTRY_COMPARE(granted, false);
    }

    void checkPrintsItsTwoLines()
    {
        Fixture f;
        f.startServer();
        ManualClock clock;
        QStringList lines;
        checkNotifications(*f.notifier, clock, [&](const QString &line) { lines.append(line); });
        QTRY_COMPARE(lines.size(), 2);
        QVERIFY(lines.contains(QStringLiteral("notif-status-before: 2 (0 notDetermined, 1 denied, 2 authorized)")));
        QVERIFY(lines.contains(QStringLiteral("notif-granted: true error: none")));
        QCOMPARE(clock.pending(), 1); // the end, one second later
    }
};

QTEST_GUILESS_MAIN(NotifierTest)
#include "tst_notifier.moc"
