#include "app/statepoll.h"

#include "model/wire.h"

namespace zemrak {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds period = 2s;
constexpr std::chrono::milliseconds firstLook = 1s;

} // namespace

StatePoll::StatePoll(AdminChannel &channel, Clock &clock, QObject *parent)
    : QObject(parent)
    , m_channel(channel)
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
    m_channel.request(
        {.path = QStringLiteral("/admin/state")}, this, [this](const AdminAnswer &answer) { take(answer); });
}

void StatePoll::take(const AdminAnswer &answer)
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
    m_channel.setPort(m_state ? std::optional(m_state->httpPort) : std::nullopt);
    Q_EMIT stateChanged();
}

} // namespace zemrak
