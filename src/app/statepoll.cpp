#include "app/statepoll.h"

#include "model/wire.h"

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
    m_service.get(QStringLiteral("/admin/state"), PrintService::usualTimeout, this,
        [this](const PrintService::Answer &answer) { take(answer); });
}

void StatePoll::take(const PrintService::Answer &answer)
{
    if (m_state && answer == m_body) {
        Q_EMIT answered();
        return;
    }
    std::optional<AgentState> state = answer ? decodeBody<AgentState>(*answer) : std::nullopt;
    const bool good = state.has_value();
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
