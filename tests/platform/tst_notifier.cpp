#include "app/notificationcheck.h"
#include "platform/linux/desktopnotifier.h"
#include "platform/linux/notificationledger.h"
#include "support/manualclock.h"
#include "support/notificationserver.h"
#include "support/privatebus.h"
#include "support/testmain.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

using namespace zemrak;
using namespace zemrak::linux_;
using namespace zemrak::test;

using Mood = NotificationServer::Mood;

namespace {

struct Fixture
{
    PrivateBus bus;
    QTemporaryDir folder;
    BusClient client{bus.address()};
    std::unique_ptr<NotificationServer> server;
    std::unique_ptr<DesktopNotifier> notifier;
    QStringList clicks; ///< by their tokens
    std::optional<NotificationStatus> status;

    Fixture() { startNotifier(); }
    ~Fixture()
    {
        notifier.reset();
        server.reset();
    }

    void startServer(const QStringList &capabilities = {QStringLiteral("actions"), QStringLiteral("body-markup")})
    {
        server.reset();
        server = std::make_unique<NotificationServer>(bus.address());
        server->setCapabilities(capabilities);
    }
    /// Also a restart of the application: only the ledger's file is kept.
    void startNotifier()
    {
        notifier.reset();
        notifier = std::make_unique<DesktopNotifier>(client.bus, folder.filePath(QStringLiteral("ledger")), QString());
        notifier->onClicked([this](const QString &token) { clicks.append(token); });
        notifier->install();
    }
    /// By its end what was posted is in the ledger and what the server sent has arrived: three, since posting takes up
    /// to two questions before it.
    void roundTrip()
    {
        for (int i = 0; i < 3; ++i) {
            status.reset();
            notifier->status([this](NotificationStatus answer) { status = answer; });
            QTRY_VERIFY(status);
        }
    }
    void post(const QString &id, bool critical = false)
    {
        notifier->post(id, id, QStringLiteral("طابعة <b>A & B</b>"), critical);
    }
    void retract(const QString &id) { notifier->retract({id}); }
    /// Titles by number, with "-" in front of what was taken back.
    [[nodiscard]] QString shown() const
    {
        QStringList titles;
        for (const NotificationServer::Note &note : server->notes())
            titles.append((note.closed ? QStringLiteral("-") : QString()) + note.title);
        return titles.join(QLatin1Char(' '));
    }
};

const QString one = QStringLiteral("one");
const QString two = QStringLiteral("two");

} // namespace

class NotifierTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void postsPlainTextAsTheServerTakesIt()
    {
        Fixture f;
        f.startServer();
        f.post(one);
        f.post(two, true);
        QTRY_COMPARE(f.shown(), QStringLiteral("one two"));
        const NotificationServer::Note usual = f.server->notes().first();
        const QVariantMap critical = f.server->notes().last().hints;
        QCOMPARE(usual.body, QStringLiteral("طابعة &lt;b&gt;A &amp; B&lt;/b&gt;"));
        QCOMPARE(usual.actions.value(0), QStringLiteral("default"));
        QCOMPARE(usual.hints.value(QStringLiteral("urgency")).toInt(), 1);
        QCOMPARE(critical.value(QStringLiteral("urgency")).toInt(), 2);
        QVERIFY(usual.hints.value(QStringLiteral("sound-name")) != critical.value(QStringLiteral("sound-name")));
        QCOMPARE(critical.value(QStringLiteral("desktop-entry")).toString(), QStringLiteral("com.zemrak.Printer"));
        QCOMPARE(critical.value(QStringLiteral("x-zemrak-thread")).toString(), QStringLiteral("zemrak-printer-alerts"));

        f.startServer({QStringLiteral("body")});
        f.roundTrip();
        f.post(one);
        QTRY_COMPARE(f.shown(), one);
        QCOMPARE(f.server->notes().first().body, QStringLiteral("طابعة <b>A & B</b>"));
        QVERIFY(f.server->notes().first().actions.isEmpty());
    }

    void clickOpensOnlyForOurOwn()
    {
        Fixture f;
        f.startServer();
        f.post(one);
        f.roundTrip();
        f.server->click(99, QStringLiteral("of another"));
        f.server->click(1, QStringLiteral("token-7"));
        f.server->click(1);
        QTRY_COMPARE(f.clicks, (QStringList{QStringLiteral("token-7"), QString()})); // a token serves one click
        f.startNotifier();
        f.roundTrip();
        f.server->click(1);
        QTRY_COMPARE(f.clicks.size(), 3);
    }

    void numbersOfAnotherServerAreNotOurs()
    {
        Fixture f;
        f.startServer();
        f.post(one);
        f.roundTrip();
        f.startServer(); // its first number goes to another program, or to another problem
        f.server->click(1);
        f.post(two);
        f.roundTrip();
        f.retract(one);
        f.roundTrip();
        QCOMPARE(f.shown(), two);
        QVERIFY(f.clicks.isEmpty());
    }

    void takesBackWhatIsShown()
    {
        Fixture f;
        f.startServer();
        f.post(one);
        f.post(two);
        f.roundTrip();
        QCOMPARE(f.shown(), QStringLiteral("one two"));
        const int calls = f.server->calls();
        f.retract(one);
        f.retract(one);
        f.retract(QStringLiteral("never posted"));
        f.startNotifier();
        f.retract(two);
        QTRY_COMPARE(f.shown(), QStringLiteral("-one -two"));
        QCOMPARE(f.server->calls(), calls + 2); // nothing to take back, nothing asked
    }

    void takesBackFromTheServersListWhatTimedOut()
    {
        constexpr uint expired = 1;
        constexpr uint dismissed = 2;
        Fixture f;
        f.startServer();
        f.post(one);
        f.post(two);
        f.roundTrip();
        f.server->endPopup(1, expired);
        f.server->endPopup(2, dismissed);
        f.server->click(1);
        QTRY_COMPARE(f.clicks.size(), 1);
        const int calls = f.server->calls();
        f.retract(two);
        f.retract(one);
        QTRY_COMPARE(f.shown(), QStringLiteral("-one two"));
        QCOMPARE(f.server->calls(), calls + 1);
    }

    void ledgerKeepsTheNewest()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath(QStringLiteral("ledger"));
        constexpr uint last = NotificationLedger::capacity + 2;
        {
            NotificationLedger ledger(file);
            for (uint number = 1; number <= last; ++number)
                ledger.add(QString::number(number), QStringLiteral(":1.1"), number);
        }
        NotificationLedger ledger(file);
        QCOMPARE(ledger.take(QStringLiteral("2")), std::nullopt);
        QCOMPARE(ledger.take(QStringLiteral("3")), 3U);
        QCOMPARE(ledger.take(QString::number(last)), last);
    }

    void problemThatEndsBeforeItIsShown()
    {
        Fixture f;
        f.startServer();
        f.post(one);
        f.retract(one);
        f.post(two);
        f.roundTrip();
        QCOMPARE(f.shown(), two); // the other never went out

        f.server->setMood(Mood::Hanging);
        const int calls = f.server->calls();
        f.post(one);
        QTRY_COMPARE(f.server->calls(), calls + 1);
        f.retract(one);
        f.server->wakeUp();
        QTRY_COMPARE(f.shown(), QStringLiteral("two -one"));
    }

    void missingAndRefusingServersCostTheNotification()
    {
        Fixture f;
        f.post(one);
        f.roundTrip();
        QCOMPARE(f.status, NotificationStatus::Denied);
        f.startServer();
        f.server->setMood(Mood::Refusing);
        f.post(one);
        f.roundTrip();
        QCOMPARE(f.status, NotificationStatus::Denied);
        f.server->setMood(Mood::Serving);
        f.post(two);
        f.roundTrip();
        QCOMPARE(f.shown(), two);
        QCOMPARE(f.status, NotificationStatus::Authorized);
    }

    // It wakes up; it dies and is replaced; it hangs on and is replaced.
    void hangingServerIsNotWaitedFor()
    {
        for (const auto &[dies, isReplaced] :
            {std::pair(false, false), std::pair(true, true), std::pair(false, true)}) {
            Fixture f;
            f.startServer();
            f.roundTrip();
            f.server->setMood(Mood::Hanging);
            const int calls = f.server->calls();
            QElapsedTimer took;
            took.start();
            for (int i = 0; i < 100; ++i)
                f.post(QString::number(i));
            QVERIFY(took.elapsed() < 200);
            QTRY_COMPARE(f.server->calls(), calls + 1);
            std::unique_ptr<NotificationServer> hanging;
            if (!isReplaced) {
                f.server->wakeUp();
            } else if (!dies) {
                f.server->loseName();
                hanging = std::move(f.server);
            }
            if (isReplaced)
                f.startServer();
            QTRY_COMPARE(f.server->notes().size(), 100);
        }
    }

    void withoutABusEverythingIsRefusedQuietly()
    {
        const QTemporaryDir folder;
        DesktopNotifier notifier(QDBusConnection(QStringLiteral("no such connection")),
            folder.filePath(QStringLiteral("ledger")), QString());
        notifier.install();
        notifier.post(one, one, one, true);
        notifier.retract({one});
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

ZEMRAK_TEST(notifier, NotifierTest, QCoreApplication)
#include "tst_notifier.moc"
