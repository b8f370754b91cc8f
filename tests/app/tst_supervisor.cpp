#include "app/servicesupervisor.h"
#include "platform/platform.h"
#include "support/fakebundle.h"
#include "support/manualclock.h"

#include <QElapsedTimer>
#include <QFile>
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

    [[nodiscard]] qsizetype runs() const { return files.runs(); }
    [[nodiscard]] bool overlapped() const { return files.launches().contains(QStringLiteral("OVERLAP")); }
};

bool isAlive(qint64 processId)
{
    return QFile::exists(QStringLiteral("/proc/%1").arg(processId));
}

} // namespace

// Gives processes and events their time, while the clock of the supervisor stands still.
#define SETTLE() QTest::qWait(150)

class SupervisorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void launchesWithItsCommandLineAndEnvironment()
    {
        qputenv("ZEMRAK_LP_NO_OS_NOTIFY", "inherited");
        qputenv("A_VARIABLE_OF_THE_SHOP", "kept");
        Fixture f;
        f.files.setService(QStringLiteral("env > \"$ENVIRONMENT.part\"; mv \"$ENVIRONMENT.part\" \"$ENVIRONMENT\"; "
                                          "echo out; echo err >&2; exec sleep 60"));
        QSignalSpy running(&f.supervisor, &ServiceSupervisor::runningChanged);
        f.supervisor.start();
        QTRY_VERIFY(!f.files.environment().isEmpty());
        QTRY_VERIFY(f.log.text().contains(QLatin1String("out")) && f.log.text().contains(QLatin1String("err")));
        QVERIFY(f.supervisor.isRunning());
        QCOMPARE(running.count(), 1);
        QCOMPARE(f.files.launches(), QStringList{QStringLiteral("run")});

        const QStringList environment = f.files.environment();
        const ApplicationBundle bundle = f.files.bundle();
        QVERIFY(environment.contains(QStringLiteral("ZEMRAK_LP_EXIT_WITH_PARENT=1")));
        QVERIFY(environment.contains(QStringLiteral("ZEMRAK_LP_NO_OS_NOTIFY=1")));
        QVERIFY(environment.contains(QStringLiteral("A_VARIABLE_OF_THE_SHOP=kept")));
        QVERIFY(environment.contains(
            QStringLiteral("ZEMRAK_LP_PDFRENDER=") + bundle.path() + QStringLiteral("/resources/pdfrender")));
        QVERIFY(environment.contains(
            QStringLiteral("ZEMRAK_LP_TEXTRENDER=") + bundle.path() + QStringLiteral("/resources/textrender")));
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
        QTRY_VERIFY(f.supervisor.isRunning());
        QTRY_COMPARE(f.files.launches(), (QStringList{QStringLiteral("init-tls"), QStringLiteral("run")}));
        f.supervisor.restart();
        QTRY_VERIFY(!f.supervisor.isRunning());
        f.clock.advance(1s);
        QTRY_COMPARE(f.runs(), 2);
        QCOMPARE(f.files.launches().count(QStringLiteral("init-tls")), 1);
    }

    void hangingCertificateDoesNotHoldTheServiceForEver()
    {
        Fixture f;
        f.files.setCertificate(false);
        f.files.setInitTls(QStringLiteral("exec sleep 60"));
        f.files.setLastingService();
        f.supervisor.start();
        QTRY_COMPARE(f.files.launches().size(), 1);
        f.clock.advance(60s);
        QTRY_VERIFY(f.supervisor.isRunning());
        f.supervisor.stop();
        QTRY_VERIFY(!f.supervisor.isRunning());
    }

    void stopAndStartWhileTheCertificateIsMadeStillMakesIt()
    {
        Fixture f;
        f.files.setCertificate(false);
        f.files.setInitTls(QStringLiteral("exec sleep 60"));
        f.files.setLastingService();
        f.supervisor.start();
        QTRY_COMPARE(f.files.launches().size(), 1);
        f.supervisor.stop();
        f.files.setInitTls(QStringLiteral("exit 0"));
        f.files.setLastingService();
        f.supervisor.start();
        const QString initTls = QStringLiteral("init-tls");
        QTRY_COMPARE(f.files.launches(), (QStringList{initTls, initTls, QStringLiteral("run")}));
    }

    void stopWhileTheCertificateIsMadeLaunchesNothing()
    {
        Fixture f;
        f.files.setCertificate(false);
        f.files.setInitTls(QStringLiteral("exec sleep 60"));
        f.files.setLastingService();
        f.supervisor.start();
        QTRY_COMPARE(f.files.launches().size(), 1);
        f.supervisor.stop();
        SETTLE();
        f.clock.advance(120s);
        SETTLE();
        QCOMPARE(f.runs(), 0);
    }

    void relaunchesAfterItsDelay_data()
    {
        QTest::addColumn<QString>("end");
        QTest::addColumn<int>("delayMs");
        QTest::addColumn<bool>("conflict");
        QTest::newRow("status 0") << QStringLiteral("exit 0") << 2000 << false;
        QTest::newRow("status 1") << QStringLiteral("exit 1") << 2000 << false;
        QTest::newRow("port taken") << QStringLiteral("exit 78") << 15000 << true;
        QTest::newRow("killed") << QStringLiteral("kill -KILL $$") << 2000 << false;
        QTest::newRow("aborted") << QStringLiteral("kill -ABRT $$") << 2000 << false;
    }
    void relaunchesAfterItsDelay()
    {
        QFETCH(QString, end);
        QFETCH(int, delayMs);
        QFETCH(bool, conflict);
        Fixture f;
        f.files.setService(end);
        f.supervisor.start();
        for (int launch = 1; launch <= 3; ++launch) {
            QTRY_COMPARE(f.clock.pending(), 1); // the launch to come, and nothing else
            QCOMPARE(f.runs(), launch);
            QVERIFY(!f.supervisor.isRunning());
            QCOMPARE(f.supervisor.portConflict(), conflict);
            f.clock.advance(std::chrono::milliseconds(delayMs - 1));
            QCOMPARE(f.clock.pending(), 1);
            f.clock.advance(1ms);
            QCOMPARE(f.clock.pending(), 0);
        }
        f.supervisor.clearPortConflict();
        QVERIFY(!f.supervisor.portConflict());
    }

    void hundredDeathsInARow()
    {
        Fixture f;
        f.files.setService(QStringLiteral("exit 1"));
        QSignalSpy running(&f.supervisor, &ServiceSupervisor::runningChanged);
        f.supervisor.start();
        for (int launch = 1; launch <= 100; ++launch) {
            QTRY_COMPARE(f.clock.pending(), 1);
            f.clock.advance(2s);
        }
        QTRY_COMPARE(f.runs(), 101);
        QTRY_COMPARE(running.count(), 202);
        QVERIFY(!f.overlapped());
    }

    void launchFailureIsToldAndNotRetried_data()
    {
        QTest::addColumn<bool>("missing");
        QTest::newRow("missing") << true;
        QTest::newRow("not executable") << false;
    }
    void launchFailureIsToldAndNotRetried()
    {
        QFETCH(bool, missing);
        Fixture f;
        if (missing)
            f.files.removeNode();
        else
            f.files.makeNodeUnusable();
        QSignalSpy startRequested(&f.supervisor, &ServiceSupervisor::startRequested);
        f.log.append(QStringLiteral("old"));
        f.supervisor.start();
        QTRY_VERIFY(f.log.text().startsWith(QStringLiteral("تعذر تشغيل الخدمة: ")));
        QVERIFY(f.log.text().size() > 20);
        QVERIFY(!f.supervisor.isRunning());
        QCOMPARE(f.clock.pending(), 0);
        QCOMPARE(startRequested.count(), 1);
    }

    void restartLaunchesExactlyOnceMore()
    {
        Fixture f;
        f.supervisor.start();
        QTRY_COMPARE(f.runs(), 1);
        f.supervisor.restart();
        f.supervisor.restart();
        QTRY_VERIFY(!f.supervisor.isRunning());
        f.clock.advance(999ms);
        SETTLE();
        QCOMPARE(f.runs(), 1);
        f.clock.advance(1ms);
        QTRY_COMPARE(f.runs(), 2);
        f.clock.advance(60s);
        SETTLE();
        QCOMPARE(f.runs(), 2);
        QVERIFY(f.supervisor.isRunning() && !f.overlapped());
    }

    // A crash has a relaunch waiting; a restart within that time must not lead to two.
    void restartReplacesTheWaitingRelaunch()
    {
        Fixture f;
        f.files.setService(QStringLiteral("exit 1"));
        f.supervisor.start();
        QTRY_COMPARE(f.clock.pending(), 1);
        f.files.setLastingService();
        f.clock.advance(1500ms);
        f.supervisor.restart();
        f.clock.advance(1s);
        QTRY_COMPARE(f.runs(), 2);
        f.clock.advance(60s);
        SETTLE();
        QCOMPARE(f.runs(), 2);
        QVERIFY(!f.overlapped());
    }

    // The service does not listen to the polite request: the next one waits until it has been killed.
    void stubbornServiceIsNeverJoinedByASecond()
    {
        Fixture f;
        f.files.setService(QStringLiteral("trap '' TERM; echo up; exec sleep 60"));
        f.supervisor.start();
        QTRY_VERIFY(f.log.text().contains(QLatin1String("up")));
        const qint64 stubborn = f.supervisor.processId();
        f.supervisor.restart();
        f.clock.advance(1s);
        SETTLE();
        QCOMPARE(f.runs(), 1);
        QVERIFY(isAlive(stubborn));
        f.clock.advance(2s);
        QTRY_COMPARE(f.runs(), 2);
        QVERIFY(!isAlive(stubborn));
        QVERIFY(!f.overlapped());
        QVERIFY(!f.supervisor.portConflict());
        QCOMPARE(f.clock.pending(), 0);
    }

    void startReplacesALivingService()
    {
        Fixture f;
        f.supervisor.start();
        QTRY_COMPARE(f.runs(), 1);
        f.supervisor.start();
        f.supervisor.start();
        QTRY_COMPARE(f.runs(), 2);
        QTRY_VERIFY(f.supervisor.isRunning());
        SETTLE();
        QCOMPARE(f.runs(), 2);
        QVERIFY(!f.overlapped());
        QCOMPARE(f.clock.pending(), 0);
    }

    // However the old process takes it to be replaced, its end is no news: no flag, no second launch.
    void endOfAReplacedServiceChangesNothing()
    {
        Fixture f;
        f.files.setService(QStringLiteral("trap 'kill $!; exit 78' TERM; echo up; sleep 60 9>&- & wait"));
        QSignalSpy conflict(&f.supervisor, &ServiceSupervisor::portConflictChanged);
        f.supervisor.start();
        QTRY_VERIFY(f.log.text().contains(QLatin1String("up")));
        f.files.setLastingService();
        f.supervisor.start();
        QTRY_COMPARE(f.runs(), 2);
        QTRY_VERIFY(f.supervisor.isRunning());
        QCOMPARE(conflict.count(), 0);
        QCOMPARE(f.clock.pending(), 0);
        f.clock.advance(60s);
        SETTLE();
        QCOMPARE(f.runs(), 2);
        QVERIFY(!f.overlapped());
    }

    // Whoever is told of a change may answer with a command, from within.
    void slotsMayCallBack()
    {
        Fixture f;
        f.files.setService(QStringLiteral("exit 78"));
        bool once = true;
        const auto startOnce = [&] {
            if (!f.supervisor.isRunning() && std::exchange(once, false)) {
                f.files.setLastingService();
                f.supervisor.start();
            }
        };
        connect(&f.supervisor, &ServiceSupervisor::runningChanged, &f.supervisor, startOnce);
        f.supervisor.start();
        QTRY_COMPARE(f.runs(), 2);
        QTRY_VERIFY(f.supervisor.isRunning());
        f.clock.advance(60s);
        SETTLE();
        QCOMPARE(f.runs(), 2);

        once = true;
        f.supervisor.start(); // the slot starts as well, in the middle of the replacement
        QTRY_COMPARE(f.runs(), 3);
        SETTLE();
        QCOMPARE(f.runs(), 3);

        connect(&f.supervisor, &ServiceSupervisor::startRequested, &f.supervisor, &ServiceSupervisor::stop);
        f.supervisor.start();
        QTRY_VERIFY(!f.supervisor.isRunning());
        f.clock.advance(60s);
        SETTLE();
        QVERIFY(!f.supervisor.isRunning() && !f.overlapped());
    }

    void stopIsFinalAndHarmlessTwice()
    {
        Fixture f;
        f.supervisor.stop();
        f.supervisor.start();
        QTRY_COMPARE(f.runs(), 1);
        f.supervisor.stop();
        f.supervisor.stop();
        QTRY_VERIFY(!f.supervisor.isRunning());
        f.clock.advance(60s);
        SETTLE();
        QCOMPARE(f.runs(), 1);
    }

    // Three seconds of real time: the way out of the application never hangs on the service.
    void shutDownKillsAStubbornService()
    {
        Fixture f;
        f.files.setService(QStringLiteral("trap '' TERM; echo up; exec sleep 60"));
        f.supervisor.start();
        QTRY_VERIFY(f.log.text().contains(QLatin1String("up")));
        const qint64 stubborn = f.supervisor.processId();
        QElapsedTimer took;
        took.start();
        f.supervisor.shutDown();
        QVERIFY(!isAlive(stubborn));
        QVERIFY2(took.elapsed() >= 2900 && took.elapsed() < 5000, qPrintable(QString::number(took.elapsed())));
        QVERIFY(!f.supervisor.isRunning());
    }

    void outputIsDecodedAcrossPieces()
    {
        Fixture f;
        f.files.setService(QStringLiteral(R"(printf '\xd8'; sleep 0.2; printf '\xb9|\xff|'; exec sleep 60)"));
        f.supervisor.start();
        QTRY_COMPARE(f.log.text(), QStringLiteral("ع|\ufffd|"));
    }

    void burstOfOutputLeavesItsEnd()
    {
        Fixture f;
        f.files.setService(
            QStringLiteral("head -c 10000000 /dev/zero | tr '\\0' x; echo; echo the end; exec sleep 60"));
        f.supervisor.start();
        QTRY_VERIFY_WITH_TIMEOUT(f.log.text().endsWith(QLatin1String("the end\n")), 20'000);
        QCOMPARE(f.log.text().size(), 4000);
    }

    void lastWordsOfADyingServiceAreKept()
    {
        Fixture f;
        f.files.setService(QStringLiteral("echo why; exit 1"));
        f.supervisor.start();
        QTRY_COMPARE(f.clock.pending(), 1);
        QCOMPARE(f.log.text(), QStringLiteral("why\n"));
    }
};

QTEST_GUILESS_MAIN(SupervisorTest)
#include "tst_supervisor.moc"
