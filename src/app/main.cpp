#include "app/appdelegate.h"
#include "app/commandline.h"
#include "app/loginitemcommand.h"
#include "app/notificationcheck.h"
#include "app/platformhost.h"
#include "app/servicecommand.h"
#include "guide/guidefile.h"
#include "health/statusicon.h"
#include "platform/platform.h"

#include <QApplication>
#include <QImage>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include <cstdio>
#include <cstdlib>

namespace {

using namespace zemrak;

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
    QTranslator arabic; // Qt's own texts, such as those of its file dialog
    if (arabic.load(QLocale(QLocale::Arabic), QStringLiteral("qtbase"), QStringLiteral("_"),
            QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&arabic);
    // The window is optional: the application stays until it is told to quit.
    QApplication::setQuitOnLastWindowClosed(false);

    const ApplicationBundle bundle = ApplicationBundle::ofThisProcess();
    if (const QString fault = bundle.fault(); !fault.isEmpty()) {
        std::fprintf(stderr, "zemrak-printer: %s\n", qUtf8Printable(fault));
        return EXIT_FAILURE;
    }
    AppDelegate delegate(bundle);
    return delegate.finishLaunching() ? QApplication::exec() : EXIT_SUCCESS;
}

void drawPreviews(int &argc, char *argv[], const QString &folder)
{
    const QCoreApplication application(argc, argv);
    const QImage logo(ApplicationBundle::ofThisProcess().logo());
    if (!renderPreviews(folder, logo))
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

} // namespace

int main(int argc, char *argv[])
{
    nameApplication();
    const LaunchMode mode = launchMode(textOf(argc, argv));
    if (mode.kind == LaunchMode::Kind::Interactive)
        return runInteractively(argc, argv);
    if (mode.kind == LaunchMode::Kind::RenderMenubar)
        drawPreviews(argc, argv, mode.operand);
    if (mode.kind == LaunchMode::Kind::NotificationCheck)
        return runNotificationCheck(argc, argv);
    if (mode.kind == LaunchMode::Kind::ExportDocs)
        exportGuide(mode.operand);
    if (mode.kind == LaunchMode::Kind::LoginItem)
        switchLoginItem(argc, argv, mode.operand);
    return EXIT_SUCCESS;
}
