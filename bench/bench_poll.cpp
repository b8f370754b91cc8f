// What one poll of the service's state costs the main thread: decoding, comparing, publishing.

#include "answerserver.h"
#include "measure.h"
#include "statebody.h"

#include "app/adminchannel.h"
#include "app/statepoll.h"
#include "model/wire.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QJsonDocument>
#include <QList>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <optional>
#include <vector>

namespace zemrak::bench {

namespace {

using namespace std::chrono_literals;

/// What was measured of one answer; microseconds of each sample.
struct Samples
{
    qsizetype bytes = 0;
    std::vector<double> trip = {}; ///< the same bytes, but nobody decodes them
    std::vector<double> same = {}; ///< from refresh() until the unchanged answer is dealt with
    std::vector<double> changed = {}; ///< from refresh() until the changed answer is published
    std::vector<double> sameHandling = {}; ///< same, less the trip right after it
    std::vector<double> changedHandling = {}; ///< changed, less the trip right after it
    std::vector<double> parse = {}; ///< QJsonDocument::fromJson() alone
    std::vector<double> decode = {}; ///< parse, and the records read from it
};

template <typename Work> double timeOf(Work work)
{
    const Stopwatch watch;
    const auto result = work();
    const double took = watch.microseconds();
    if (!result)
        qFatal("The body cannot be read");
    return took;
}

std::optional<QJsonDocument> bareParse(const QByteArray &body)
{
    QJsonDocument document = QJsonDocument::fromJson(body);
    return document.isObject() ? std::optional(std::move(document)) : std::nullopt;
}

class PollBench
{
public:
    PollBench()
    {
        QFile token(m_folder.filePath(QStringLiteral("admin.token")));
        if (!token.open(QIODevice::WriteOnly) || token.write("3f6c1d0e9b8a47525c1e4f0a9d273b8e\n") < 0)
            qFatal("Cannot write the token");
        QObject::connect(&m_poll, &StatePoll::answered, &m_loop, [this] { finish(); });
        QObject::connect(&m_poll, &StatePoll::stateChanged, &m_loop, [this] { ++m_changes; });
        m_patience.setSingleShot(true);
        QObject::connect(&m_patience, &QTimer::timeout, &m_loop, [] { qFatal("No good answer came"); });
    }

    // Everything is measured in turn, so that what else the computer does meanwhile weighs on all of it alike.
    Samples measure(StateSize size, const Effort &effort)
    {
        const QByteArray body = stateBody(size, m_server.port(), true);
        const QByteArray other = stateBody(size, m_server.port(), false);
        if (body == other || body.size() != other.size())
            qFatal("The two answers do not differ as they should");
        m_server.setAnswers({body, body, other, other});
        Samples samples;
        const auto sample = [&] {
            const double changed = measurePoll();
            const double afterChanged = measureTrip();
            const double same = measurePoll();
            const double afterSame = measureTrip();
            samples.changed.push_back(changed);
            samples.same.push_back(same);
            samples.trip.insert(samples.trip.end(), {afterChanged, afterSame});
            samples.changedHandling.push_back(changed - afterChanged);
            samples.sameHandling.push_back(same - afterSame);
            samples.parse.push_back(timeOf([&] { return bareParse(body); }));
            samples.decode.push_back(timeOf([&] { return decodeBody<AgentState>(body); }));
        };
        repeat({.least = 4, .most = 4, .time = 0ms}, sample); // past the connecting and the first answer
        samples = {.bytes = body.size()};
        m_changes = 0;
        repeat(effort, sample);
        if (m_changes != samples.changed.size())
            qFatal("%zu changed answers published %zu changes", samples.changed.size(), m_changes);
        return samples;
    }

private:
    double measurePoll()
    {
        settle();
        return exchange([this] { m_poll.refresh(); });
    }

    double measureTrip()
    {
        settle();
        return exchange([this] { requestUndecoded(QStringLiteral("/admin/undecoded")); });
    }

    // Whatever is measured follows an exchange of the same kind, not the decoding of another answer, which leaves the
    // caches and the heap in another condition.
    void settle()
    {
        exchange([this] { requestUndecoded(QStringLiteral("/admin/unmeasured")); });
    }

    void requestUndecoded(const QString &path)
    {
        m_channel.get(path, PrintService::usualTimeout, &m_loop, [this](const PrintService::Answer &) { finish(); });
    }

    template <typename Send> double exchange(Send send)
    {
        // The reply before this one is not to be cleared away within this one's time.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        m_patience.start(10s);
        m_watch = Stopwatch();
        send();
        m_loop.exec();
        return m_took;
    }

    void finish()
    {
        m_took = m_watch.microseconds();
        m_loop.quit();
    }

    QTemporaryDir m_folder;
    SystemClock m_clock;
    AnswerServer m_server;
    AdminChannel m_channel{m_folder.filePath(QStringLiteral("admin.token")), m_clock, m_server.port()};
    StatePoll m_poll{m_channel, m_clock};
    QEventLoop m_loop;
    QTimer m_patience;
    Stopwatch m_watch;
    double m_took = 0;
    std::size_t m_changes = 0;
};

void print(const Table &table, StateSize size, const Effort &effort, PollBench &bench)
{
    const Samples samples = bench.measure(size, effort);
    const double same = median(samples.sameHandling);
    const double changed = median(samples.changedHandling);
    const double parse = median(samples.parse);
    table.row({number(size.printers), number(size.jobs), number(static_cast<double>(samples.bytes)),
        number(median(samples.trip)), number(median(samples.same)), number(median(samples.changed)), number(parse),
        number(median(samples.decode)), number(same), number(changed), number(same / parse, 2),
        number(changed / parse, 2)});
}

} // namespace

} // namespace zemrak::bench

int main(int argc, char **argv)
{
    using namespace zemrak::bench;
    using namespace std::chrono_literals;

    const bool quick = isQuick(argc, argv);
    const QCoreApplication application(argc, argv);
    PollBench bench;
    std::puts("One poll, medians in microseconds\n");
    const Table table{"printers", "jobs", "  bytes", " trip", " same", "changed", "parse", "decode", "same-trip",
        "changed-trip", "same/parse", "changed/parse"};
    const Effort effort
        = quick ? Effort{.least = 5, .most = 5, .time = 0ms} : Effort{.least = 31, .most = 501, .time = 5s};
    for (const int printers : quick ? QList{1} : QList{1, 50, 500}) {
        for (const int jobs : quick ? QList{20} : QList{20, 500, 5000})
            print(table, {.printers = printers, .jobs = jobs}, effort, bench);
    }
    return 0;
}
