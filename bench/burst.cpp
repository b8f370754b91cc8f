#include "burst.h"

#include "measure.h"
#include "processmemory.h"

#include "app/servicesupervisor.h"

#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>

namespace zemrak::bench {

namespace {

using namespace std::chrono_literals;

const QByteArray lastWord = "all printed";

class NoGuard final : public ChildGuard
{
public:
    void guard(QProcess &) override { }
};

/// A bundle whose service is a shell script.
class BurstBundle
{
public:
    explicit BurstBundle(int bytes)
    {
        const QDir root(m_folder.path());
        if (!root.mkpath(QStringLiteral("resources/agent/bin")) || !root.mkpath(QStringLiteral("config/tls"))
            || !QFile::link(QStringLiteral("/bin/bash"), bundle().node()))
            qFatal("Cannot make the bundle");
        write(configDir() + QStringLiteral("/tls/server.crt"), "certificate");
        write(bundle().serviceScript(),
            "head -c " + QByteArray::number(bytes) + " /dev/zero | tr '\\0' x\nprintf '" + lastWord
                + "'\nexec sleep 60\n");
    }

    [[nodiscard]] ApplicationBundle bundle() const { return ApplicationBundle(m_folder.path()); }
    [[nodiscard]] QString configDir() const { return m_folder.filePath(QStringLiteral("config")); }

private:
    static void write(const QString &name, const QByteArray &content)
    {
        QFile file(name);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("Cannot write %s", qUtf8Printable(name));
    }

    QTemporaryDir m_folder;
};

/// A main loop that is watched: a timer is due every millisecond, and a longer gap is time in which nothing of the
/// window could have been served.
class WatchedLoop
{
public:
    WatchedLoop()
    {
        m_pulse.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_pulse, &QTimer::timeout, &m_loop, [this] { beat(); });
        m_patience.setSingleShot(true);
        QObject::connect(&m_patience, &QTimer::timeout, &m_loop, [] { qFatal("The output did not end in time"); });
    }

    /// Runs until quit().
    void run()
    {
        m_longest = 0;
        m_gap = Stopwatch();
        m_pulse.start(1ms);
        m_patience.start(60s);
        m_loop.exec();
        beat();
        m_pulse.stop();
        m_patience.stop();
    }

    void quit() { m_loop.quit(); }
    [[nodiscard]] QObject *context() { return &m_loop; }
    [[nodiscard]] double longestGap() const { return m_longest; }

private:
    void beat()
    {
        m_longest = std::max(m_longest, m_gap.microseconds());
        m_gap = Stopwatch();
    }

    QEventLoop m_loop;
    QTimer m_pulse;
    QTimer m_patience;
    Stopwatch m_gap;
    double m_longest = 0;
};

/// Milliseconds and MB (1,000,000 bytes).
struct Outcome
{
    double time;
    double pieces; ///< the output came in; of a supervised service each one is a change of the log
    double before;
    double peak;
    double after;
    double gap;
};

double megabytes(qint64 bytes)
{
    return static_cast<double>(bytes) / 1e6;
}

// From `start` until it says that a piece was the last one.
template <typename Start, typename Stop> Outcome watched(Start start, Stop stop)
{
    WatchedLoop loop;
    Outcome outcome{};
    outcome.before = megabytes(residentBytes());
    const MemoryWatch memory;
    const Stopwatch watch;
    QTimer::singleShot(0, loop.context(), [&] {
        start(loop.context(), [&](bool isLast) {
            ++outcome.pieces;
            if (!isLast)
                return;
            outcome.time = watch.microseconds() / 1000;
            loop.quit();
        });
    });
    loop.run();
    outcome.gap = loop.longestGap() / 1000;
    outcome.peak = megabytes(memory.peak());
    stop();
    outcome.after = megabytes(residentBytes());
    return outcome;
}

Outcome supervised(const BurstBundle &burst)
{
    SystemClock clock;
    NoGuard guard;
    ServiceLog log;
    ServiceSupervisor supervisor(burst.bundle(), burst.configDir(), clock, guard, log);
    return watched(
        [&](QObject *context, auto came) {
            QObject::connect(&log, &ServiceLog::changed, context,
                [&log, came] { came(log.text().endsWith(QLatin1String(lastWord))); });
            supervisor.start();
        },
        [&] { supervisor.shutDown(); });
}

// The same child, read into nowhere: what of the time is the child's and the pipe's.
Outcome discarded(const BurstBundle &burst)
{
    QProcess process;
    return watched(
        [&](QObject *context, auto came) {
            QObject::connect(&process, &QProcess::readyReadStandardOutput, context,
                [&process, came] { came(process.readAllStandardOutput().endsWith(lastWord)); });
            process.start(burst.bundle().node(), {burst.bundle().serviceScript()}, QIODevice::ReadOnly);
        },
        [&] {
            process.terminate();
            process.waitForFinished();
        });
}

Outcome idle(std::chrono::milliseconds duration)
{
    Outcome outcome = watched(
        [&](QObject *context, auto came) { QTimer::singleShot(duration, context, [came] { came(true); }); }, [] {});
    outcome.pieces = 0; // the end of the time is no output
    return outcome;
}

void print(const Table &table, const std::string &what, const Outcome &outcome)
{
    table.row({what, number(outcome.time, 1), number(outcome.pieces), number(outcome.before, 2),
        number(outcome.peak, 2), number(outcome.after, 2), number(outcome.gap, 2)});
}

Outcome medians(const std::vector<Outcome> &outcomes)
{
    const auto of = [&](double Outcome::*field) {
        std::vector<double> values;
        for (const Outcome &outcome : outcomes)
            values.push_back(outcome.*field);
        return median(values);
    };
    return {.time = of(&Outcome::time),
        .pieces = of(&Outcome::pieces),
        .before = of(&Outcome::before),
        .peak = of(&Outcome::peak),
        .after = of(&Outcome::after),
        .gap = of(&Outcome::gap)};
}

} // namespace

void measureBurst(bool quick)
{
    QLoggingCategory::setFilterRules(QStringLiteral("zemrak.service.info=false"));
    const int runs = quick ? 1 : 7;
    const BurstBundle burst(quick ? 1'000'000 : 10'000'000);
    std::printf("A service that prints %d MB at once; milliseconds, MB\n\n", quick ? 1 : 10);
    const Table table{"                   ", "all read", "pieces", "before", " peak", "after", "longest gap"};
    std::vector<Outcome> outcomes;
    for (int i = 0; i < runs; ++i) {
        outcomes.push_back(supervised(burst));
        print(table, "supervised, run " + number(i + 1), outcomes.back());
    }
    print(table, "supervised, median", medians(outcomes));
    outcomes.clear();
    for (int i = 0; i < runs; ++i)
        outcomes.push_back(discarded(burst));
    print(table, "read into nowhere", medians(outcomes));
    outcomes.clear();
    for (int i = 0; i < runs; ++i)
        outcomes.push_back(idle(quick ? 20ms : 100ms));
    print(table, "nothing to read", medians(outcomes));
    std::puts("");
}

} // namespace zemrak::bench
