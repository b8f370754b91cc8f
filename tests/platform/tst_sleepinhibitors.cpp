#include "platform/linux/sleepinhibitors.h"
#include "support/privatebus.h"
#include "support/testmain.h"

#include <QDBusContext>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusUnixFileDescriptor>
#include <QSignalSpy>
#include <QTest>

#include <poll.h>
#include <unistd.h>

using namespace zemrak;
using namespace zemrak::test;
using namespace zemrak::linux_;

namespace {

const QString reason = QStringLiteral("so that receipts come out");

} // namespace

/// The login manager: an inhibition lasts as long as somebody holds the other end of its pipe.
class Login : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")

public:
    explicit Login(const PrivateBus &bus)
        : m_client(bus.address())
    {
        m_client.provide(QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"), this);
    }
    ~Login() override
    {
        for (const int end : m_ends)
            ::close(end);
    }
    [[nodiscard]] int held() const
    {
        int count = 0;
        for (const int end : m_ends) {
            pollfd watched{end, POLLIN, 0};
            count += ::poll(&watched, 1, 0) == 0;
        }
        return count;
    }
    QStringList asked;

public Q_SLOTS:
    QDBusUnixFileDescriptor Inhibit(const QString &what, const QString &who, const QString &why, const QString &mode)
    {
        asked.append(QStringList({what, who, why, mode}).join(QLatin1Char('|')));
        int ends[2];
        if (::pipe(ends) != 0)
            return {};
        m_ends.append(ends[0]);
        QDBusUnixFileDescriptor held(ends[1]);
        ::close(ends[1]);
        return held;
    }

private:
    BusClient m_client;
    QList<int> m_ends;
};

/// A session manager that counts with cookies, and answers when it is told to.
class Session : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.gnome.SessionManager")

public:
    explicit Session(const PrivateBus &bus)
        : m_client(bus.address())
    {
        m_client.provide(QStringLiteral("org.gnome.SessionManager"), QStringLiteral("/org/gnome/SessionManager"), this);
    }
    void answerNow()
    {
        for (const QDBusMessage &call : std::exchange(m_waiting, {}))
            m_client.bus.send(call.createReply(++m_lastCookie));
    }
    QList<uint> flags;
    QList<uint> released;
    bool answersLate = false;

public Q_SLOTS:
    uint Inhibit(const QString &, uint, const QString &, uint what)
    {
        flags.append(what);
        if (!answersLate)
            return ++m_lastCookie;
        setDelayedReply(true);
        m_waiting.append(message());
        return 0;
    }
    void Uninhibit(uint cookie) { released.append(cookie); }

private:
    BusClient m_client;
    QList<QDBusMessage> m_waiting;
    uint m_lastCookie = 40;
};

class SleepInhibitorsTest : public QObject
{
    Q_OBJECT

private:
    PrivateBus m_system;
    PrivateBus m_session;
    SleepInhibitors m_inhibitors{
        [this] { return QDBusConnection::connectToBus(m_system.address(), QStringLiteral("system")); },
        [this] { return QDBusConnection::connectToBus(m_session.address(), QStringLiteral("session")); }};

    // A bus answers one connection in order: with this answer, those to all earlier questions are here.
    static void letBusAnswer(const PrivateBus &bus, const QString &connection)
    {
        const QString daemon = QStringLiteral("org.freedesktop.DBus");
        QDBusConnection::connectToBus(bus.address(), connection)
            .call(QDBusMessage::createMethodCall(daemon, QStringLiteral("/"), daemon, QStringLiteral("GetId")));
        QCoreApplication::processEvents();
    }
    std::unique_ptr<ProcessActivities::Activity> forbid()
    {
        return m_inhibitors.begin(ProcessActivities::IdleSleep::Forbidden, reason);
    }

private Q_SLOTS:
    void holdsEveryPlaceOnceAndLetsGo()
    {
        Login login(m_system);
        Session session(m_session);
        auto allowed = m_inhibitors.begin(ProcessActivities::IdleSleep::Allowed, reason);
        auto activity = forbid();
        QTRY_COMPARE(login.held(), 1);
        QTRY_COMPARE(session.flags, QList<uint>({4}));
        QCOMPARE(
            login.asked, QStringList({QStringLiteral("idle|Zemrak Printer|") + reason + QStringLiteral("|block")}));
        activity.reset();
        activity = forbid();
        QTRY_COMPARE(login.asked.size(), 2);
        QTRY_COMPARE(login.held(), 1);
        QTRY_COMPARE(session.released, QList<uint>({41}));
        activity.reset();
        QTRY_COMPARE(login.held(), 0);
        QTRY_COMPARE(session.released, QList<uint>({41, 42}));
    }

    void takesItWhenTheServiceAppearsOrComesBack()
    {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("until this service appears.*login1")));
        auto activity = forbid();
        letBusAnswer(m_system, QStringLiteral("system")); // nobody there to ask
        {
            Login login(m_system);
            QTRY_COMPARE(login.held(), 1);
        }
        Login login(m_system);
        Session session(m_session);
        QTRY_COMPARE(login.held(), 1);
        QTRY_COMPARE(session.flags.size(), 1);
    }

    void saysWhenThereIsNoBus()
    {
        const auto none = [] { return QDBusConnection(QStringLiteral("no such connection")); };
        SleepInhibitors inhibitors(none, none);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("until this service appears.*login1")));
        const auto activity = inhibitors.begin(ProcessActivities::IdleSleep::Forbidden, reason);
        // Refusals come in the order of their calls.
        QDBusPendingCallWatcher later(QDBusPendingCall::fromError(QDBusError(QDBusError::Disconnected, QString())));
        QVERIFY(QSignalSpy(&later, &QDBusPendingCallWatcher::finished).wait());
    }

    /// The person switches on and off again before the desktop has answered.
    void givesBackWhatComesTooLate()
    {
        Login login(m_system);
        Session session(m_session);
        session.answersLate = true;
        auto activity = forbid();
        QTRY_COMPARE(session.flags.size(), 1);
        activity.reset();
        session.answerNow();
        QTRY_COMPARE(session.released, QList<uint>({41}));
        QTRY_COMPARE(login.held(), 0);
    }
};

ZEMRAK_TEST(sleepinhibitors, SleepInhibitorsTest, QCoreApplication)
#include "tst_sleepinhibitors.moc"
