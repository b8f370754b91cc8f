#include "app/appdelegate.h"
#include "app/commandline.h"
#include "app/notificationcheck.h"
#include "platform/platform.h"

#include <QGuiApplication>

#include <cstdio>
#include <cstdlib>

namespace {

using namespace zemrak;

void nameApplication()
{
    QCoreApplication::setApplicationName(QStringLiteral("zemrak-printer"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ZEMRAK_VERSION));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Zemrak Printer"));
    QGuiApplication::setDesktopFileName(QStringLiteral("com.zemrak.Printer"));
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
    QGuiApplication application(argc, argv);
    // The window is optional: the application stays until it is told to quit.
    QGuiApplication::setQuitOnLastWindowClosed(false);

    const ApplicationBundle bundle = ApplicationBundle::ofThisProcess();
    if (const QString fault = bundle.fault(); !fault.isEmpty()) {
        std::fprintf(stderr, "zemrak-printer: %s\n", qUtf8Printable(fault));
        return EXIT_FAILURE;
    }
    AppDelegate delegate(bundle);
    return delegate.finishLaunching() ? QGuiApplication::exec() : EXIT_SUCCESS;
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

} // namespace

int main(int argc, char *argv[])
{
    nameApplication();
    const LaunchMode mode = launchMode(textOf(argc, argv));
    if (mode.kind == LaunchMode::Kind::Interactive)
        return runInteractively(argc, argv);
    if (mode.kind == LaunchMode::Kind::NotificationCheck)
        return runNotificationCheck(argc, argv);
    return EXIT_SUCCESS;
}
