#include "app/appdelegate.h"
#include "app/commandline.h"
#include "app/loginitemcommand.h"
#include "app/notificationcheck.h"
#include "app/platformhost.h"
#include "app/servicecommand.h"
#include "app/statusreport.h"
#include "guide/guidefile.h"
#include "health/statusicon.h"
#include "platform/platform.h"

#include <QApplication>
#include <QLoggingCategory>
#include <QThreadPool>

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace {

using namespace zemrak;

constexpr std::chrono::seconds filePatience(5);

void nameApplication()
{
    QCoreApplication::setApplicationName(QStringLiteral("zemrak-printer"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ZEMRAK_VERSION));
    QApplication::setApplicationDisplayName(QStringLiteral("Zemrak Printer"));
    QApplication::setDesktopFileName(QStringLiteral("com.zemrak.Printer"));
}

// The arguments as text, before any application object exists: which object that is depends on them.
QStringList textOf(int argc, char *argv[])
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    return arguments;
}

int runInteractively(int &argc, char *argv[])
{
    QApplication application(argc, argv);
    QApplication::setLayoutDirection(Qt::RightToLeft);
    // The window is optional: the application stays until it is told to quit.
    QApplication::setQuitOnLastWindowClosed(false);

    const ApplicationBundle bundle = ApplicationBundle::ofThisProcess();
    if (const QString fault = bundle.fault(); !fault.isEmpty()) {
        std::fprintf(stderr, "zemrak-printer: %s\n", qUtf8Printable(fault));
        return EXIT_FAILURE;
    }
    int status = EXIT_SUCCESS;
    {
        AppDelegate delegate(bundle);
        if (delegate.finishLaunching())
            status = QApplication::exec();
    }
    // A worker may still be writing to a network share that hangs, and Qt would wait for it without limit.
    if (!QThreadPool::globalInstance()->waitForDone(std::chrono::milliseconds(filePatience).count()))
        std::_Exit(status);
    return status;
}

void drawPreviews(int &argc, char *argv[], const QString &folder)
{
    const QCoreApplication application(argc, argv);
    if (!renderPreviews(folder, readLogo(ApplicationBundle::ofThisProcess().logo())))
        std::fprintf(stderr, "zemrak-printer: the previews were not written to %s\n", qUtf8Printable(folder));
}

void exportGuide(const QString &path)
{
    if (const QString fault = writeGuide(path); !fault.isEmpty())
        std::fprintf(stderr, "zemrak-printer: the guide was not written to %s: %s\n", qUtf8Printable(path),
            qUtf8Printable(fault));
}

int runNotificationCheck(int &argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const std::unique_ptr<Notifier> notifier = platform::makeNotifier({});
    SystemClock clock;
    checkNotifications(*notifier, clock, [](const QString &line) {
        std::printf("%s\n", qUtf8Printable(line));
        std::fflush(stdout);
    });
    return QCoreApplication::exec();
}

void switchLoginItem(int &argc, char *argv[], const QString &value)
{
    const QCoreApplication application(argc, argv);
    const ApplicationBundle bundle = ApplicationBundle::ofThisProcess();
    UserDefaults defaults;
    SystemClock clock;
    PlatformHost host(bundle);
    Agent agent({.bundle = bundle, .configDir = serviceConfigDir()}, defaults, clock, host.forAgent());
    const QString status = setLoginItem(value, agent, host.loginItem());
    if (!agent.log().isEmpty())
        std::fprintf(stderr, "%s\n", qUtf8Printable(agent.log().trimmed()));
    std::printf("%s\n", qUtf8Printable(status));
}

int printText(const QString &text)
{
    std::fputs(qUtf8Printable(text), stdout);
    return EXIT_SUCCESS;
}

int tellStatus(int &argc, char *argv[], bool asJson)
{
    const QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("*=false")); // scripts read what is printed
    const RunningCopyAnswer answer = platform::makeRunningCopy()->ask(std::chrono::seconds(3));
    const StatusOutcome outcome = statusOutcome(answer, asJson);
    std::fputs(qUtf8Printable(outcome.output), stdout);
    std::fputs(qUtf8Printable(outcome.error), stderr);
    std::fflush(stdout);
    std::_Exit(outcome.exitStatus); // without destructors: they would wait for a request that hangs
}

} // namespace

int main(int argc, char *argv[])
{
    nameApplication();
    const LaunchMode mode = launchMode(textOf(argc, argv));
    switch (mode.kind) {
    case LaunchMode::Kind::Interactive:
        return runInteractively(argc, argv);
    case LaunchMode::Kind::RenderMenubar:
        drawPreviews(argc, argv, mode.operand);
        break;
    case LaunchMode::Kind::NotificationCheck:
        return runNotificationCheck(argc, argv);
    case LaunchMode::Kind::ExportDocs:
        exportGuide(mode.operand);
        break;
    case LaunchMode::Kind::LoginItem:
        switchLoginItem(argc, argv, mode.operand);
        break;
    case LaunchMode::Kind::Help:
        return printText(helpText());
    case LaunchMode::Kind::Version:
        return printText(QStringLiteral("zemrak-printer " ZEMRAK_VERSION "\n"));
    case LaunchMode::Kind::Status:
    case LaunchMode::Kind::StatusJson:
        return tellStatus(argc, argv, mode.kind == LaunchMode::Kind::StatusJson);
    }
    return EXIT_SUCCESS;
}
