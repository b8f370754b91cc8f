#include "support/program.h"
#include "support/receiptprinter.h"
#include "support/testmain.h"
#include "support/traypanel.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace zemrak::test;

namespace {

/// A process that is stopped has a SIGTERM waiting for it.
bool isToldToEnd(qint64 processId)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(processId));
    if (!status.open(QIODevice::ReadOnly))
        return false;
    const QByteArray text = status.readAll();
    const qsizetype at = text.indexOf("\nShdPnd:\t") + 9;
    return (text.mid(at, 16).toULongLong(nullptr, 16) & (1ULL << (SIGTERM - 1))) != 0;
}

} // namespace

class LifecycleTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QVERIFY2(!servicePortTaken(), "Port 17731 is in use on this machine"); }

    void runsItsServiceAndEndsWithIt_data()
    {
        QTest::addColumn<int>("signal");
        QTest::newRow("SIGTERM") << int(SIGTERM);
        QTest::newRow("SIGINT") << int(SIGINT);
    }
    void runsItsServiceAndEndsWithIt()
    {
        QFETCH(int, signal);
        const QTemporaryDir home;
        const PrivateBus bus;
        Program program(home, bus);
        QTRY_VERIFY_WITH_TIMEOUT(servicePortTaken(), 15'000);
        const QList<qint64> services = childrenOf(program.processId());
        QCOMPARE(services.size(), 1);

        Program second(home, bus);
        QTRY_VERIFY(second.endedWith(0));
        QVERIFY2(!second.output().contains("Warn") && !second.output().contains("zemrak.service"),
            second.output().constData());
        QTRY_VERIFY(program.output().contains("Asked to show the main window"));
        QCOMPARE(childrenOf(program.processId()), services);

        QFile token(home.filePath(QStringLiteral("Library/Application Support/Zemrak Local Print/admin.token")));
        QVERIFY(token.open(QIODevice::ReadOnly));
        const QByteArray secret = token.readAll();
        QVERIFY(secret.size() >= 32);
        program.signal(signal);
        QTRY_VERIFY(program.endedWith(0));
        const QByteArray output = program.output();
        QVERIFY2(output.contains("The print service ended; status 0"), output.constData()); // it was not killed
        QVERIFY(!exists(services.first()));
        QVERIFY(!output.contains(secret)); // with every log message switched on
    }

    // What only the window needs is not in memory before somebody asks for it.
    void windowIsLoadedWhenItIsAskedFor()
    {
        const QTemporaryDir home;
        const PrivateBus bus;
        TrayPanel panel(bus.address()); // without one the window would come by itself after a while
        panel.appear();
        writeSettings(home);
        Program program(home, bus, {QStringLiteral("--automatic-start")});
        QTRY_VERIFY_WITH_TIMEOUT(servicePortTaken(), 15'000);
        QTRY_VERIFY(program.output().contains("There is a tray"));
        for (const char *library : {"libQt6Qml", "libQt6Quick", "libQt6Svg", "libzemrak-window"})
            QVERIFY2(!program.maps(library), library);
        QVERIFY(!program.output().contains("Asked to show"));
        const Program second(home, bus);
        QTRY_VERIFY(program.maps("libQt6Quick"));
        QTRY_VERIFY(!second.isAlive());
    }

    void killedProgramLeavesNoService_data()
    {
        QTest::addColumn<bool>("frozen");
        QTest::newRow("a service that works") << false;
        QTest::newRow("a service that stands still for a while") << true;
    }
    void killedProgramLeavesNoService()
    {
        QFETCH(bool, frozen);
        const QTemporaryDir home;
        const PrivateBus bus;
        Program program(home, bus);
        QTRY_VERIFY_WITH_TIMEOUT(servicePortTaken(), 15'000);
        const QList<qint64> services = childrenOf(program.processId());
        QCOMPARE(services.size(), 1);
        const auto service = static_cast<pid_t>(services.first());
        if (frozen)
            ::kill(service, SIGSTOP);
        program.signal(SIGKILL);
        if (frozen) {
            const bool isTold = QTest::qWaitFor([&] { return isToldToEnd(service); });
            ::kill(service, SIGCONT); // before anything may fail: it holds the port for whatever is tested next
            QVERIFY(isTold);
        }
        QTRY_VERIFY(!exists(service));

        Program next(home, bus);
        QTRY_VERIFY_WITH_TIMEOUT(servicePortTaken(), 15'000);
    }

    // Started anew while the old copy still waits for its frozen service, three seconds at most: the new one takes
    // over.
    void relaunchDuringTheEndTakesOver()
    {
        const QTemporaryDir home;
        const PrivateBus bus;
        Program program(home, bus);
        QTRY_VERIFY_WITH_TIMEOUT(servicePortTaken(), 15'000);
        const QList<qint64> services = childrenOf(program.processId());
        ::kill(static_cast<pid_t>(services.value(0)), SIGSTOP);
        program.signal(SIGTERM);
        QTRY_VERIFY(isToldToEnd(services.value(0)));
        QVERIFY(program.isAlive());
        Program next(home, bus);
        QTRY_VERIFY_WITH_TIMEOUT(program.endedWith(0), 6000);
        QVERIFY(!exists(services.value(0)));
        QTRY_VERIFY_WITH_TIMEOUT(servicePortTaken(), 15'000);
        QVERIFY(next.isAlive());
    }

    void takenPortIsToldByTheServiceAndSurvived()
    {
        QTcpServer squatter;
        QVERIFY(squatter.listen(QHostAddress::LocalHost, 17731));
        const QTemporaryDir home;
        const PrivateBus bus;
        Program program(home, bus);
        QTRY_VERIFY_WITH_TIMEOUT(program.output().contains("status 78"), 15'000);
        QVERIFY(program.isAlive());
        const QDir config(home.filePath(QStringLiteral("Library/Application Support/Zemrak Local Print")));
        QVERIFY(!config.exists(QStringLiteral("admin.token")));
        QFile record(config.filePath(QStringLiteral("port-conflict.json")));
        QTRY_VERIFY(record.exists());
        QVERIFY(record.open(QIODevice::ReadOnly));
        const QByteArray own = "\"processId\":" + QByteArray::number(QCoreApplication::applicationPid());
        QVERIFY(record.readAll().contains(own));
    }

    void modesEndAtOnceWithoutAService_data()
    {
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<int>("status");
        const auto row = [](const char *arguments, int status) {
            QTest::newRow(arguments) << QString::fromLatin1(arguments) << status;
        };
        row("--render-menubar /proc/none", 0);
        row("--notif-check", 0);
        row("--export-docs /proc/none/guide.md", 0);
        row("--login-item=neither", 0);
        row("--help", 0);
        row("--version", 0);
        row("--status", 2);
        row("--status --json", 2);
    }
    void modesEndAtOnceWithoutAService()
    {
        QFETCH(QString, arguments);
        QFETCH(int, status);
        const QTemporaryDir home;
        const PrivateBus bus;
        const QByteArray screen = qgetenv("QT_QPA_PLATFORM");
        qputenv("QT_QPA_PLATFORM", "no-such-screen"); // and none is needed
        Program program(home, bus, arguments.split(QLatin1Char(' ')));
        qputenv("QT_QPA_PLATFORM", screen);
        QTRY_VERIFY(program.endedWith(status));
        QVERIFY(program.output().count('\n') >= (arguments.contains(QLatin1String("/proc/none")) ? 0 : 1));
        QVERIFY(!QDir(home.filePath(QStringLiteral("Library"))).exists());
    }

    void tellsItsStatus()
    {
        const QTemporaryDir home;
        ReceiptPrinter printer; // without one there would be a problem to tell
        QVERIFY(printer.switchOn());
        printer.plant(home, "Kitchen");
        const PrivateBus bus;
        Program program(home, bus);
        const auto answer = [&](int status) {
            Program asking(home, bus, {QStringLiteral("--status"), QStringLiteral("--json")});
            const bool ended = QTest::qWaitFor([&] { return asking.endedWith(status); });
            return ended ? asking.output() : QByteArray();
        };
        QTRY_VERIFY_WITH_TIMEOUT(answer(0).contains(R"("answers":true)"), 20'000);
        program.signal(SIGSTOP);
        QVERIFY(answer(1).contains("does not answer"));
        program.signal(SIGCONT);
    }

    // An upgrade puts other files under the same names while the program runs and has not shown its window yet.
    void replacedFilesDoNotReachTheRunningCopy()
    {
        const QTemporaryDir home;
        const PrivateBus bus;
        const QString moved = home.filePath(QStringLiteral("bundle"));
        QCOMPARE(QProcess::execute(QStringLiteral("cp"), {QStringLiteral("-a"), builtBundle(), moved}), 0);
        TrayPanel panel(bus.address());
        panel.appear();
        writeSettings(home);
        Program program(home, bus, {QStringLiteral("--automatic-start")}, moved);
        QTRY_VERIFY_WITH_TIMEOUT(servicePortTaken(), 15'000);
        QTRY_VERIFY(program.output().contains("There is a tray"));
        const auto windowIsLoaded = [&program] { return program.maps("libzemrak-window.so (deleted)"); };
        QFile plugin(moved + QStringLiteral("/lib/libzemrak-window.so"));
        QVERIFY(plugin.remove() && plugin.open(QIODevice::WriteOnly) && plugin.write("of another version") > 0);
        plugin.close();
        QVERIFY(!windowIsLoaded() && !program.output().contains("Asked to show"));
        Program second(home, bus, {}, moved);
        QTRY_VERIFY(second.endedWith(0));
        QTRY_VERIFY_WITH_TIMEOUT(windowIsLoaded(), 15'000);
        QVERIFY2(program.isAlive() && !program.output().contains("cannot be shown"), program.output().constData());
    }

    // Moved anywhere, the bundle uses what lies in it; one without its service says so and ends.
    void bundleStandsOnItsOwn()
    {
        const QTemporaryDir home;
        const PrivateBus bus;
        const QString moved = home.filePath(QStringLiteral("متجر 'الزاوية' %1"));
        QVERIFY(QDir().mkpath(moved));
        QCOMPARE(QProcess::execute(
                     QStringLiteral("cp"), {QStringLiteral("-a"), builtBundle() + QStringLiteral("/."), moved}),
            0);
        {
            Program program(home, bus, {}, moved);
            QTRY_VERIFY_WITH_TIMEOUT(servicePortTaken(), 15'000);
            QFile command(QStringLiteral("/proc/%1/cmdline").arg(childrenOf(program.processId()).value(0)));
            QVERIFY(command.open(QIODevice::ReadOnly));
            QCOMPARE(QString::fromUtf8(command.readAll()).split(QChar(0)).value(1),
                moved + QStringLiteral("/resources/agent/bin/zemrak-local-print.mjs"));
        }
        QVERIFY(QDir(moved + QStringLiteral("/resources/agent")).removeRecursively());
        Program broken(home, bus, {}, moved);
        QTRY_VERIFY(broken.endedWith(1));
        QVERIFY(broken.output().contains("lacks the print service"));
    }
};

ZEMRAK_TEST(lifecycle, LifecycleTest, QCoreApplication)
#include "tst_lifecycle.moc"
