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
#include <optional>

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

/// The child of `parent` that serves; a command of the service, such as "trust-status", may be a child as well. 0: none
qint64 serviceOf(qint64 parent)
{
    for (const qint64 child : childrenOf(parent)) {
        QFile commandLine(QStringLiteral("/proc/%1/cmdline").arg(child));
        if (commandLine.open(QIODevice::ReadOnly) && commandLine.readAll().contains(QByteArray("\0run", 4)))
            return child;
    }
    return 0;
}

/// The program in a home and on a bus of its own.
struct Running
{
    const QTemporaryDir home;
    const PrivateBus bus;
    std::optional<Program> program;
    qint64 service = 0; ///< process id

    /// False: its service does not serve.
    [[nodiscard]] bool start(const QStringList &arguments = {}, const QString &bundle = builtBundle())
    {
        program.emplace(home, bus, arguments, bundle);
        const bool serves = QTest::qWaitFor(servicePortTaken, 15'000);
        service = serviceOf(program->processId());
        return serves && service != 0;
    }
};

} // namespace

class LifecycleTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QVERIFY2(!servicePortTaken(), "Port 17731 is in use on this machine"); }

    void runsItsServiceAndEndsWithIt()
    {
        for (const int signal : {SIGTERM, SIGINT}) {
            Running r;
            QVERIFY(r.start());
            Program second(r.home, r.bus);
            QTRY_VERIFY(second.endedWith(0));
            QVERIFY2(!second.output().contains("Warn") && !second.output().contains("zemrak.service"),
                second.output().constData());
            QTRY_VERIFY(r.program->output().contains("Asked to show the main window"));
            QTRY_COMPARE(childrenOf(r.program->processId()), QList<qint64>{r.service});

            QFile token(r.home.filePath(QStringLiteral("Library/Application Support/Zemrak Local Print/admin.token")));
            QVERIFY(token.open(QIODevice::ReadOnly));
            const QByteArray secret = token.readAll();
            QVERIFY(secret.size() >= 32);
            r.program->signal(signal);
            QTRY_VERIFY(r.program->endedWith(0));
            const QByteArray output = r.program->output();
            QVERIFY2(output.contains("The print service ended; status 0"), output.constData()); // it was not killed
            QVERIFY(!exists(r.service));
            QVERIFY(!output.contains(secret)); // with every log message switched on
        }
    }

    // What only the window needs is not in memory before somebody asks for it.
    void windowIsLoadedWhenItIsAskedFor()
    {
        Running r;
        TrayPanel panel(r.bus.address()); // without one the window would come by itself after a while
        panel.appear();
        writeSettings(r.home);
        QVERIFY(r.start({QStringLiteral("--automatic-start")}));
        QTRY_VERIFY(r.program->output().contains("There is a tray"));
        for (const char *library : {"libQt6Qml", "libQt6Quick", "libQt6Svg", "libzemrak-window"})
            QVERIFY2(!r.program->maps(library), library);
        QVERIFY(!r.program->output().contains("Asked to show"));
        const Program second(r.home, r.bus);
        QTRY_VERIFY(r.program->maps("libQt6Quick"));
        QTRY_VERIFY(!second.isAlive());
    }

    // One that works, and one that stands still for a while.
    void killedProgramLeavesNoService()
    {
        for (const bool frozen : {false, true}) {
            Running r;
            QVERIFY(r.start());
            QCOMPARE(childrenOf(r.program->processId()).size(), 1);
            const auto service = static_cast<pid_t>(r.service);
            if (frozen)
                ::kill(service, SIGSTOP);
            r.program->signal(SIGKILL);
            if (frozen) {
                const bool isTold = QTest::qWaitFor([&] { return isToldToEnd(service); });
                ::kill(service, SIGCONT); // before anything may fail: it holds the port for whatever is tested next
                QVERIFY(isTold);
            }
            QTRY_VERIFY(!exists(service));
            QVERIFY(r.start());
        }
    }

    // Started anew while the old copy still waits for its frozen service, three seconds at most: the new one takes
    // over.
    void relaunchDuringTheEndTakesOver()
    {
        Running r;
        QVERIFY(r.start());
        ::kill(static_cast<pid_t>(r.service), SIGSTOP);
        r.program->signal(SIGTERM);
        QTRY_VERIFY(isToldToEnd(r.service));
        QVERIFY(r.program->isAlive());
        const Program next(r.home, r.bus);
        QTRY_VERIFY_WITH_TIMEOUT(r.program->endedWith(0), 6000);
        QVERIFY(!exists(r.service));
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

    void modesEndAtOnceWithoutAService()
    {
        for (const auto &[arguments, status] : {std::pair("--render-menubar /proc/none", 0),
                 std::pair("--notif-check", 0), std::pair("--export-docs /proc/none/guide.md", 0),
                 std::pair("--login-item=neither", 0), std::pair("--help", 0), std::pair("--version", 0),
                 std::pair("--status", 2), std::pair("--status --json", 2)}) {
            const InRow row(arguments);
            const QTemporaryDir home;
            const PrivateBus bus;
            // No display is needed.
            Program program(home, bus, QString::fromLatin1(arguments).split(u' '), builtBundle(),
                {{QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("no-such-screen")}});
            QTRY_VERIFY(program.endedWith(status));
            const bool cannotWrite = QByteArray(arguments).contains("/proc/none");
            QVERIFY(program.output().count('\n') >= (cannotWrite ? 0 : 1));
            QVERIFY(!QDir(home.filePath(QStringLiteral("Library"))).exists());
        }
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
        Running r;
        const QString moved = r.home.filePath(QStringLiteral("bundle"));
        QCOMPARE(QProcess::execute(QStringLiteral("cp"), {QStringLiteral("-a"), builtBundle(), moved}), 0);
        TrayPanel panel(r.bus.address());
        panel.appear();
        writeSettings(r.home);
        QVERIFY(r.start({QStringLiteral("--automatic-start")}, moved));
        Program &program = *r.program;
        QTRY_VERIFY(program.output().contains("There is a tray"));
        const auto windowIsLoaded = [&program] { return program.maps("libzemrak-window.so (deleted)"); };
        QFile plugin(moved + QStringLiteral("/lib/libzemrak-window.so"));
        QVERIFY(plugin.remove() && plugin.open(QIODevice::WriteOnly) && plugin.write("of another version") > 0);
        plugin.close();
        QVERIFY(!windowIsLoaded() && !program.output().contains("Asked to show"));
        Program second(r.home, r.bus, {}, moved);
        QTRY_VERIFY(second.endedWith(0));
        QTRY_VERIFY_WITH_TIMEOUT(windowIsLoaded(), 15'000);
        QVERIFY2(program.isAlive() && !program.output().contains("cannot be shown"), program.output().constData());
    }

    // Moved anywhere, the bundle uses what lies in it; one without its service says so and ends.
    void bundleStandsOnItsOwn()
    {
        Running r;
        const QString moved = r.home.filePath(QStringLiteral("متجر 'الزاوية' %1"));
        QVERIFY(QDir().mkpath(moved));
        QCOMPARE(QProcess::execute(
                     QStringLiteral("cp"), {QStringLiteral("-a"), builtBundle() + QStringLiteral("/."), moved}),
            0);
        QVERIFY(r.start({}, moved));
        QFile command(QStringLiteral("/proc/%1/cmdline").arg(r.service));
        QVERIFY(command.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(command.readAll()).split(QChar(0)).value(1),
            moved + QStringLiteral("/resources/agent/bin/zemrak-local-print.mjs"));
        r.program.reset();
        QVERIFY(QDir(moved + QStringLiteral("/resources/agent")).removeRecursively());
        Program broken(r.home, r.bus, {}, moved);
        QTRY_VERIFY(broken.endedWith(1));
        QVERIFY(broken.output().contains("lacks the print service"));
    }
};

ZEMRAK_TEST(lifecycle, LifecycleTest, QCoreApplication)
#include "tst_lifecycle.moc"
