#include "app/statepoll.h"

#include "model/wire.h"

#include <utility>

namespace zemrak {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds period = 2s;
constexpr std::chrono::milliseconds firstLook = 1s;

} // namespace

StatePoll::StatePoll(PrintService &service, Clock &clock, QObject *parent)
    : QObject(parent)
    , m_service(service)
    , m_clock(clock)
    , m_timer(clock.makeTimer(Clock::Repeat::Always, [this] { refresh(); }))
{
}

void StatePoll::arm()
{
    m_timer->start(period);
    m_clock.after(firstLook, this, [this] { refresh(); });
}

void StatePoll::disarm()
{
    m_timer->stop();
}

void StatePoll::refresh()
{
    Q_EMIT aboutToRefresh();
    ask(!m_windowShown);
}

void StatePoll::setWindowShown(bool shown)
{
    if (std::exchange(m_windowShown, shown) != shown && shown && m_timer->isActive())
        refresh();
}

void StatePoll::ask(bool tellsClosed)
{
    const QString path = tellsClosed ? QStringLiteral("/admin/state?window=closed") : QStringLiteral("/admin/state");
    m_service.get(path, PrintService::usualTimeout, this,
        [this, tellsClosed](const PrintService::Answer &answer) { take(answer, tellsClosed); });
}

void StatePoll::take(const PrintService::Answer &answer, bool toldClosed)
{
    if (m_state && answer == m_body) {
        Q_EMIT answered();
        return;
    }
    std::optional<AgentState> state = answer ? decodeBody<AgentState>(*answer) : std::nullopt;
    const bool good = state.has_value();
    // While another version is being installed over this one, the service may be one that does not know the query.
    if (!good && answer && toldClosed) {
        ask(false);
        return;
    }
    m_body = good ? *answer : QByteArray();
    publish(std::move(state));
    if (good)
        Q_EMIT answered();
}

void StatePoll::publish(std::optional<AgentState> state)
{
    if (m_state == state)
        return;
    m_state = std::move(state);
    Q_EMIT stateChanged();
}

} // namespace zemrak
