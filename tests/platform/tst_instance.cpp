#include "platform/linux/busrunningcopy.h"
#include "platform/linux/sessioninstance.h"
#include "support/privatebus.h"
#include "support/testmain.h"

#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

#include <unistd.h>

using namespace zemrak;
using namespace zemrak::linux_;
using namespace zemrak::test;

// This program is also each of the copies: with the argument "copy" it claims, says what came of it, and stays as
// long as it is the one. With "ask" it asks the running copy how things stand.
namespace {

int runCopy(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    SessionInstance instance;
    instance.onActivated([] {
        std::puts("shown");
        std::fflush(stdout);
    });
    instance.onAsked([] { return QByteArray("{\"by\":") + QByteArray::number(getpid()) + '}'; });
    if (!instance.claim()) {
        std::puts("second");
        return 0;
    }
    std::puts("first");
    std::fflush(stdout);
    return QCoreApplication::exec();
}

int ask(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const RunningCopyAnswer answer = BusRunningCopy().ask(std::chrono::milliseconds(1000));
    std::printf("%d %s%s\n", int(answer.kind), answer.report.constData(), qUtf8Printable(answer.reason));
    std::fflush(stdout);
    std::_Exit(0);
}

const QString nobody = QStringLiteral("unix:path=/nobody"); // no bus there

class Copy
{
public:
    Copy(const QString &runtimeDir, const QString &busAddress, const QString &what = QStringLiteral("copy"))
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtimeDir);
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), busAddress);
        m_process.setProcessEnvironment(environment);
        m_process.start(QCoreApplication::applicationFilePath(), {what});
    }
    ~Copy()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    [[nodiscard]] QByteArray said()
    {
        m_said += m_process.readAllStandardOutput();
        return m_said;
    }
    [[nodiscard]] qint64 processId() const { return m_process.processId(); }
    void freeze() { ::kill(static_cast<pid_t>(m_process.processId()), SIGSTOP); }
    [[nodiscard]] bool ended() const { return m_process.state() == QProcess::NotRunning; }
    [[nodiscard]] int status() const { return m_process.exitCode(); }

private:
    QProcess m_process;
    QByteArray m_said;
};

} // namespace

class InstanceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oneCopyRuns()
    {
        const QTemporaryDir runtime;
        const PrivateBus bus;
        const PrivateBus otherBus;
        // One session bus, two of one user, none, and a runtime folder that cannot be written.
        const std::tuple<QString, QString, QString> rows[]
            = {{runtime.path(), bus.address(), bus.address()}, {runtime.path(), bus.address(), otherBus.address()},
                {runtime.path(), nobody, nobody}, {QStringLiteral("/proc/nowhere"), bus.address(), bus.address()}};
        for (const auto &[folder, firstAddress, secondAddress] : rows) {
            auto first = std::make_unique<Copy>(folder, firstAddress);
            QTRY_COMPARE(first->said(), QByteArray("first\n"));
            Copy second(folder, secondAddress);
            QTRY_VERIFY(second.ended());
            QCOMPARE(second.said(), QByteArray("second\n"));
            QCOMPARE(second.status(), 0);
            QTRY_COMPARE(first->said(), QByteArray("first\nshown\n"));

            first.reset(); // a killed copy leaves nothing that keeps the next one out
            Copy third(folder, secondAddress);
            QTRY_COMPARE(third.said(), QByteArray("first\n"));
        }
    }

    void tellsHowThingsStand()
    {
        using Kind = RunningCopyAnswer::Kind;
        const PrivateBus bus;
        const PrivateBus otherBus;
        const QTemporaryDir runtime;
        const auto answerOn = [&](const QString &address, Kind kind) {
            Copy asking(runtime.path(), address, QStringLiteral("ask"));
            QElapsedTimer took;
            took.start();
            const bool ended = QTest::qWaitFor([&] { return asking.ended(); });
            const QByteArray said = asking.said();
            return ended && took.elapsed() < 3000 && said.startsWith(QByteArray::number(int(kind)) + ' ')
                ? said.mid(2)
                : "not " + said;
        };
        // Asking starts nothing and leaves nothing behind.
        for (const QString &address : {bus.address(), nobody, QString()})
            QCOMPARE(answerOn(address, Kind::NoCopy), QByteArray("\n"));
        QVERIFY(QDir(runtime.path()).isEmpty());

        auto copy = std::make_unique<Copy>(runtime.path(), bus.address());
        QTRY_COMPARE(copy->said(), QByteArray("first\n"));
        QCOMPARE(answerOn(bus.address(), Kind::Told), "{\"by\":" + QByteArray::number(copy->processId()) + "}\n");
        for (const QString &address : {otherBus.address(), nobody, QString()})
            QVERIFY(answerOn(address, Kind::Silent).startsWith("a copy runs, but not on this session's message bus"));
        copy->freeze();
        QCOMPARE(answerOn(bus.address(), Kind::Silent), QByteArray("the running copy does not answer\n"));
        QCOMPARE(copy->said(), QByteArray("first\n")); // and shows nothing

        copy.reset();
        bus.freeze();
        QCOMPARE(answerOn(bus.address(), Kind::Silent), QByteArray("the session's message bus does not answer\n"));
        bus.thaw();
        QCOMPARE(answerOn(bus.address(), Kind::NoCopy), QByteArray("\n"));
    }

    void startedInTheSameMoment()
    {
        const PrivateBus privateBus;
        for (int round = 0; round < 20; ++round) {
            const QTemporaryDir runtime;
            const QString address = round % 2 == 0 ? privateBus.address() : nobody;
            Copy one(runtime.path(), address);
            Copy two(runtime.path(), address);
            QTRY_VERIFY(one.ended() != two.ended());
            Copy &winner = one.ended() ? two : one;
            Copy &loser = one.ended() ? one : two;
            QCOMPARE(loser.said(), QByteArray("second\n"));
            QTRY_COMPARE(winner.said(), QByteArray("first\nshown\n"));
        }
    }

    // A copy that holds the claim but does not answer is waited for; when it goes, the new one takes over.
    void silentCopyIsOutlived()
    {
        const PrivateBus bus;
        const QTemporaryDir runtime;
        auto first = std::make_unique<Copy>(runtime.path(), bus.address());
        QTRY_COMPARE(first->said(), QByteArray("first\n"));
        first->freeze();
        const BusClient observer(bus.address());
        const auto clients = [&observer] { return observer.bus.interface()->registeredServiceNames().value().size(); };
        const qsizetype before = clients();
        Copy second(runtime.path(), bus.address());
        QTRY_COMPARE(clients(), before + 1);
        QVERIFY(!second.ended());
        first.reset();
        QTRY_COMPARE(second.said(), QByteArray("first\n"));
    }
};

ZEMRAK_TEST(instance, InstanceTest, QCoreApplication)
ZEMRAK_TEST_PROGRAM(copy, runCopy)
ZEMRAK_TEST_PROGRAM(ask, ask)

#include "tst_instance.moc"
