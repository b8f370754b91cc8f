// zemrak-soak [--quick | --minutes N] BUNDLE: a week of a shop in an hour. Exit status 0: every aim was met; 1: not.

#include "platform/platform.h"
#include "soak/soak.h"
#include "soak/wait.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTcpServer>

#include <cstdio>
#include <cstdlib>

namespace {

using namespace zemrak;
using namespace zemrak::soak;
using namespace std::chrono_literals;

constexpr int usageStatus = 64;
constexpr int wholeWeek = 30; ///< minutes in which all of it can be lived through; given less time, less happens

Plan planFor(int minutes)
{
    Plan plan;
    plan.rounds = std::max(4, plan.rounds * std::min(minutes, wholeWeek) / wholeWeek);
    plan.rest = std::chrono::milliseconds(std::chrono::minutes(minutes)) / plan.rounds;
    return plan;
}

Plan quickPlan()
{
    return {.rounds = 2, .openings = 2, .kills = 2, .suspendEvery = 2, .suspend = 1s, .rest = 0ms, .calm = 1s};
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Lives through a week of a shop and tells what it cost."));
    parser.addHelpOption();
    const QCommandLineOption quick(QStringLiteral("quick"), QStringLiteral("Less than a minute of it."));
    const QCommandLineOption minutes(QStringLiteral("minutes"), QStringLiteral("How long it takes, about."),
        QStringLiteral("N"), QStringLiteral("60"));
    parser.addOptions({quick, minutes});
    parser.addPositionalArgument(QStringLiteral("BUNDLE"), QStringLiteral("The application's folder."));
    parser.process(application);
    const int length = parser.value(minutes).toInt();
    if (parser.positionalArguments().size() != 1 || length < 1) {
        std::fputs(qUtf8Printable(parser.helpText()), stderr);
        return usageStatus;
    }
    if (QTcpServer probe; !probe.listen(QHostAddress::LocalHost, 17731)) {
        std::fputs("Port 17731 is in use on this machine.\n", stderr);
        return EXIT_FAILURE;
    }
    const auto requests = platform::makeTerminationSignals();
    requests->onRequested(askToEnd);
    Report report;
    try {
        Soak(parser.positionalArguments().constFirst(), parser.isSet(quick) ? quickPlan() : planFor(length))
            .run(report);
    } catch (const Ended &) {
        std::puts("Ended before its time.");
        return EXIT_FAILURE;
    }
    std::puts(report.isMet() ? "\nEvery aim was met." : "\nAn aim was missed.");
    return report.isMet() ? EXIT_SUCCESS : EXIT_FAILURE;
}
