#include "app/servicesupervisor.h"
#include "platform/platform.h"
#include "support/fakebundle.h"
#include "support/manualclock.h"
#include "support/program.h"
#include "support/testmain.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

struct Fixture
{
    FakeBundle files;
    ManualClock clock;
    std::unique_ptr<ChildGuard> guard = platform::makeChildGuard();
    ServiceLog log;
    ServiceSupervisor supervisor{files.bundle(), files.configDir(), clock, *guard, log};

    explicit Fixture(const QString &service = QStringLiteral("exec sleep 60")) { files.setService(service); }

    [[nodiscard]] qsizetype runs() const { return files.runs(); }
    /// So many launches, the last of which runs. The child writes its line before or after QProcess::started() comes.
    [[nodiscard]] bool runsAfter(qsizetype launches)
    {
        return QTest::qWaitFor([&] { return runs() == launches && supervisor.isRunning(); });
    }
    /// The process that was asked to end is gone. isRunning() alone is false for one that has yet to start, too.
    [[nodiscard]] bool ends()
    {
        return QTest::qWaitFor([this] { return supervisor.processId() == 0; });
    }
    /// Whatever was planned comes, and it is no further child; there were so many launches in all, and never two
    /// services at once. A child that was killed may need a moment to go.
    [[nodiscard]] bool staysAt(qsizetype launches)
    {
        const qint64 service = supervisor.processId();
        const QList<qint64> children = service != 0 ? QList<qint64>{service} : QList<qint64>();
        clock.advance(120s);
        return QTest::qWaitFor([&] {
            return childrenOf(QCoreApplication::applicationPid()) == children && runs() == launches;
        }) && !files.launches().contains(QStringLiteral("OVERLAP"));
    }
    [[nodiscard]] bool says(const QString &word)
    {
        return QTest::qWaitFor([&] { return log.text().contains(word); });
    }
};

const QString stubbornService = QStringLiteral("trap '' TERM; echo up; exec sleep 60");
const QString initTls = QStringLiteral("init-tls");
const QString run = QStringLiteral("run");

} // namespace

class SupervisorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void launchesWithItsCommandLineAndEnvironment()
    {
        qputenv("ZEMRAK_LP_NO_OS_NOTIFY", "inherited");
        qputenv("A_VARIABLE_OF_THE_SHOP", "kept");
        Fixture f(QStringLiteral("env > \"$ENVIRONMENT.part\"; mv \"$ENVIRONMENT.part\" \"$ENVIRONMENT\"; "
                                 "echo out; echo err >&2; exec sleep 60"));
        f.supervisor.start();
        QVERIFY(f.says(QStringLiteral("out")) && f.says(QStringLiteral("err")));
        QVERIFY(f.supervisor.isRunning());
        QCOMPARE(f.files.launches(), QStringList{run});
        const QString resources = f.files.bundle().path() + QStringLiteral("/resources/");
        for (const QString &line : {QStringLiteral("ZEMRAK_LP_EXIT_WITH_PARENT=1"),
                 QStringLiteral("ZEMRAK_LP_NO_OS_NOTIFY=1"), QStringLiteral("A_VARIABLE_OF_THE_SHOP=kept"),
                 QStringLiteral("ZEMRAK_LP_PDFRENDER=%1pdfrender").arg(resources),
                 QStringLiteral("ZEMRAK_LP_TEXTRENDER=%1textrender").arg(resources)})
            QVERIFY2(f.files.environment().contains(line), qPrintable(line));
    }

    void certificateComesFirstAndOnce()
    {
        Fixture f;
        f.files.setCertificate(false);
        f.files.setInitTls(
            QStringLiteral("sleep 0.1; mkdir -p '%1/tls'; touch '%1/tls/server.crt'; exit 3").arg(f.files.configDir()));
        f.files.setLastingService();
        f.supervisor.start();
        f.supervisor.start(); // while the certificate is being made
        QTRY_COMPARE(f.files.launches(), (QStringList{initTls, run}));
        f.supervisor.restart();
        QVERIFY(f.ends());
        f.clock.advance(1s);
        QTRY_COMPARE(f.files.launches(), (QStringList{initTls, run, run}));
    }

    // It is given up, or stopped, or stopped and begun anew.
    void certificateThatHangs()
    {
        for (const auto &[stops, startsAgain, launches] :
            {std::tuple(false, false, QStringList{initTls, run}), std::tuple(true, false, QStringList{initTls}),
                std::tuple(true, true, QStringList{initTls, initTls, run})}) {
            const InRow row(launches.join(u' ').toLatin1());
            Fixture f;
            f.files.setCertificate(false);
            f.files.setInitTls(QStringLiteral("exec sleep 60"));
            f.files.setLastingService();
            f.supervisor.start();
            QTRY_COMPARE(f.files.launches(), QStringList{initTls});
            if (stops)
                f.supervisor.stop();
            f.files.setInitTls(QStringLiteral("exit 0"));
            f.files.setLastingService();
            if (startsAgain)
                f.supervisor.start();
            else
                f.clock.advance(60s);
            QTRY_COMPARE(f.files.launches(), launches);
            QVERIFY(f.staysAt(launches.count(run)));
        }
    }

    void relaunchesAfterItsDelay()
    {
        for (const auto &[end, delay] :
            {std::pair("exit 0", 2000ms), std::pair("exit 1", 2000ms), std::pair("exit 78", 15000ms),
                std::pair("kill -KILL $$", 2000ms), std::pair("kill -ABRT $$", 2000ms)}) {
            const InRow row(end);
            const bool taken = delay == 15000ms;
            Fixture f(QString::fromLatin1(end));
            QSignalSpy running(&f.supervisor, &ServiceSupervisor::runningChanged);
            QSignalSpy portTaken(&f.supervisor, &ServiceSupervisor::portTaken);
            f.supervisor.start();
            constexpr int deaths = 10;
            for (int launch = 1; launch <= deaths; ++launch) {
                QTRY_COMPARE(f.clock.pending(), 1); // the launch to come, and nothing else
                QCOMPARE(f.runs(), launch);
                QVERIFY(!f.supervisor.isRunning());
                QCOMPARE(f.supervisor.portConflict(), taken);
                f.clock.advance(delay - 1ms);
                QCOMPARE(f.clock.pending(), 1);
                f.clock.advance(1ms);
                QCOMPARE(f.clock.pending(), 0);
            }
            QTRY_COMPARE(running.count(), 2 * deaths + 2);
            QCOMPARE(portTaken.count(), taken ? deaths + 1 : 0);
            f.supervisor.clearPortConflict();
            QVERIFY(!f.supervisor.portConflict());
        }
    }

    void launchFailureIsToldAndNotRetried()
    {
        for (const bool missing : {true, false}) {
            Fixture f;
            missing ? f.files.removeNode() : f.files.makeNodeUnusable();
            QSignalSpy startRequested(&f.supervisor, &ServiceSupervisor::startRequested);
            f.log.append(QStringLiteral("old"));
            f.supervisor.start();
            QTRY_VERIFY(f.log.text().startsWith(QStringLiteral("تعذر تشغيل الخدمة: ")));
            QVERIFY(f.log.text().size() > 20);
            QVERIFY(!f.supervisor.isRunning());
            QCOMPARE(f.clock.pending(), 0);
            QCOMPARE(startRequested.count(), 1);
        }
    }

    void restartLaunchesExactlyOnceMore()
    {
        Fixture f;
        f.supervisor.start();
        QVERIFY(f.runsAfter(1));
        f.supervisor.restart();
        f.supervisor.restart();
        QVERIFY(f.ends());
        f.clock.advance(999ms);
        QCOMPARE(f.supervisor.processId(), 0);
        f.clock.advance(1ms);
        QVERIFY(f.runsAfter(2) && f.staysAt(2));
    }

    // A crash has a relaunch waiting; a restart within that time must not lead to two.
    void restartReplacesTheWaitingRelaunch()
    {
        Fixture f(QStringLiteral("exit 1"));
        f.supervisor.start();
        QTRY_COMPARE(f.clock.pending(), 1);
        f.files.setLastingService();
        f.clock.advance(1500ms);
        f.supervisor.restart();
        f.clock.advance(1s);
        QVERIFY(f.runsAfter(2) && f.staysAt(2));
    }

    // The service does not listen to the polite request: the next one waits until it has been killed.
    void stubbornServiceIsNeverJoinedByASecond()
    {
        Fixture f(stubbornService);
        f.supervisor.start();
        QVERIFY(f.says(QStringLiteral("up")));
        const qint64 stubborn = f.supervisor.processId();
        f.supervisor.restart();
        f.clock.advance(1s);
        QCOMPARE(f.supervisor.processId(), stubborn);
        QVERIFY(exists(stubborn));
        f.clock.advance(2s);
        QVERIFY(f.runsAfter(2));
        QVERIFY(!exists(stubborn) && !f.supervisor.portConflict());
        QVERIFY(f.clock.pending() == 0 && f.staysAt(2));
    }

    // However the old process takes it to be replaced, its end is no news: no flag, no second launch.
    void startReplacesALivingService()
    {
        // It waits without a child of its own, which might outlive it with the lock by which an overlap is seen.
        Fixture f(QStringLiteral("mkfifo \"$JOURNAL.pipe\"; exec 8<>\"$JOURNAL.pipe\"; trap 'exit 78' TERM; echo up; "
                                 "read -rt 60 <&8"));
        QSignalSpy conflict(&f.supervisor, &ServiceSupervisor::portConflictChanged);
        f.supervisor.start();
        QVERIFY(f.says(QStringLiteral("up")));
        f.files.setLastingService();
        f.supervisor.start();
        f.supervisor.start();
        QVERIFY(f.runsAfter(2));
        QCOMPARE(conflict.count(), 0);
        QVERIFY(f.clock.pending() == 0 && f.staysAt(2));
    }

    // Whoever is told of a change may answer with a command, from within.
    void slotsMayCallBack()
    {
        Fixture f(QStringLiteral("exit 78"));
        bool once = true;
        connect(&f.supervisor, &ServiceSupervisor::runningChanged, &f.supervisor, [&] {
            if (!f.supervisor.isRunning() && std::exchange(once, false)) {
                f.files.setLastingService();
                f.supervisor.start();
            }
        });
        f.supervisor.start();
        QVERIFY(f.runsAfter(2) && f.staysAt(2));

        once = true;
        f.supervisor.start(); // the slot starts as well, in the middle of the replacement
        QVERIFY(f.runsAfter(3) && f.staysAt(3));

        connect(&f.supervisor, &ServiceSupervisor::startRequested, &f.supervisor, &ServiceSupervisor::stop);
        f.supervisor.start();
        QVERIFY(f.ends() && f.staysAt(3) && !f.supervisor.isRunning());
    }

    void stopIsFinalAndHarmlessTwice()
    {
        Fixture f;
        f.supervisor.stop();
        f.supervisor.start();
        QVERIFY(f.runsAfter(1));
        f.supervisor.stop();
        f.supervisor.stop();
        QVERIFY(f.ends() && f.staysAt(1));
    }

    // Three seconds of real time: the way out of the application never hangs on the service.
    void shutDownKillsAStubbornService()
    {
        Fixture f(stubbornService);
        f.supervisor.start();
        QVERIFY(f.says(QStringLiteral("up")));
        const qint64 stubborn = f.supervisor.processId();
        QElapsedTimer took;
        took.start();
        f.supervisor.shutDown();
        QVERIFY(!exists(stubborn) && !f.supervisor.isRunning());
        QVERIFY2(took.elapsed() >= 2900 && took.elapsed() < 5000, qPrintable(QString::number(took.elapsed())));
    }

    void oneShotCommandsEndWithTheirStatus()
    {
        Fixture f;
        ServiceRunner runner(f.files.bundle(), *f.guard);
        QList<int> ends;
        const auto note = [&ends](int status) { ends.append(status); };
        runner.runOnce({QStringLiteral("trust-status")}, this, note); // the bundle's says 1
        QVERIFY(ends.isEmpty());
        QTRY_COMPARE(ends, QList<int>{1});
        f.files.setInitTls(QStringLiteral("kill -KILL $$"));
        f.files.setLastingService();
        {
            QObject gone;
            runner.runOnce({QStringLiteral("trust-status")}, &gone, note);
        }
        runner.runOnce({initTls}, this, note);
        QTRY_COMPARE(ends, (QList<int>{1, -1}));
        QTRY_VERIFY(childrenOf(QCoreApplication::applicationPid()).isEmpty());
        f.files.removeNode();
        runner.runOnce({initTls}, this, note);
        QTRY_COMPARE(ends, (QList<int>{1, -1, -1}));
        QCOMPARE(ends.size(), 3);
    }

    // Letters that come in pieces, the end of more than is kept, and the last words of a process that ends.
    void outputIsKept()
    {
        const std::tuple<const char *, QString, qsizetype> rows[]
            = {{R"(printf '\xd8'; sleep 0.2; printf '\xb9|\xff|'; exec sleep 60)", QStringLiteral("ع|\ufffd|"), 4},
                {R"(head -c 10000000 /dev/zero | tr '\0' x; echo; echo the end; exec sleep 60)",
                    QStringLiteral("the end\n"), 4000},
                {"echo why; exit 1", QStringLiteral("why\n"), 4}};
        for (const auto &[service, end, size] : rows) {
            Fixture f(QString::fromLatin1(service));
            f.supervisor.start();
            QTRY_VERIFY_WITH_TIMEOUT(f.log.text().endsWith(end), 20'000);
            QCOMPARE(f.log.text().size(), size);
        }
    }
};

ZEMRAK_TEST(supervisor, SupervisorTest, QCoreApplication)
#include "tst_supervisor.moc"
