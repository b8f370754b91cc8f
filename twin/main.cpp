#include "twin/twin.h"
#include "twin/window/twinwindow.h"

#include <QApplication>
#include <QCoreApplication>
#include <QJsonDocument>
#include <QSocketNotifier>

#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <memory>

using namespace zemrak::twin;

namespace {

constexpr int statusUsage = 64;
constexpr int statusUnavailable = 69;

int fail(int status, const QString &reason)
{
    std::fprintf(stderr, "paper-twin: %s\n", qUtf8Printable(reason));
    return status;
}

void endWithInput(QSocketNotifier &input)
{
    QObject::connect(&input, &QSocketNotifier::activated, &input, [] {
        std::array<char, 256> bytes{};
        if (::read(STDIN_FILENO, bytes.data(), bytes.size()) <= 0)
            QCoreApplication::quit();
    });
}

} // namespace

int main(int argc, char **argv)
{
    std::signal(SIGPIPE, SIG_IGN);
    QCoreApplication::setApplicationName(QStringLiteral("paper-twin"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ZEMRAK_VERSION));
    const bool headless = wantsNoWindow(argc, argv);
    const std::unique_ptr<QCoreApplication> app(
        headless ? new QCoreApplication(argc, argv) : new QApplication(argc, argv));
    QString problem;
    const std::optional<Options> options = readOptions(QCoreApplication::arguments(), &problem);
    if (!options)
        return fail(statusUsage, problem);
    Twin twin(*options);
    problem = twin.open();
    if (!problem.isEmpty())
        return fail(statusUnavailable, problem);
    std::printf("%s\n", QJsonDocument(twin.places()).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    input.setEnabled(options->untilInputEnds);
    endWithInput(input);
    std::unique_ptr<TwinWindow> window;
    if (!headless) {
        QApplication::setStyle(QStringLiteral("Fusion")); // one that follows colours and direction everywhere
        Look::loadTypeface();
        const Look look = options->dark ? Look(true) : Look::ofDesktop();
        QApplication::setPalette(look.palette()); // lists that open are windows of their own
        const QJsonObject places = twin.places();
        const int port = places.value(QStringLiteral("port")).toInt();
        window = std::make_unique<TwinWindow>(twin.printer(),
            port == 0 ? QString()
                      : QStringLiteral("%1:%2").arg(places.value(QStringLiteral("address")).toString()).arg(port),
            look);
        window->show();
    }
    return QCoreApplication::exec();
}
