#include "app/agent.h"

namespace zemrak {

Agent::Agent(const AgentPlaces &places, const UserDefaults &defaults, Clock &clock, ChildGuard &guard)
    : m_toast(clock)
    , m_supervisor(places.bundle, places.configDir, clock, guard, m_log)
    , m_channel(places.configDir + QStringLiteral("/admin.token"), clock, places.port)
    , m_poll(m_channel, clock)
    , m_commands(m_channel, m_poll, m_toast)
    , m_keepAwake(defaults.boolean(QLatin1String("keepAwake")))
{
    connect(&m_log, &ServiceLog::changed, this, &Agent::logChanged);
    connect(&m_toast, &Toast::changed, this, &Agent::toastChanged);
    connect(&m_supervisor, &ServiceSupervisor::runningChanged, this, &Agent::runningChanged);
    connect(&m_supervisor, &ServiceSupervisor::portConflictChanged, this, &Agent::portConflictChanged);
    connect(&m_supervisor, &ServiceSupervisor::startRequested, &m_poll, &StatePoll::arm);
    connect(&m_supervisor, &ServiceSupervisor::stopRequested, &m_poll, &StatePoll::disarm);
    connect(&m_poll, &StatePoll::stateChanged, this, &Agent::stateChanged);
    connect(&m_poll, &StatePoll::answered, &m_supervisor, &ServiceSupervisor::clearPortConflict);
}

void Agent::setRequestedPage(std::optional<Page> page)
{
    if (m_requestedPage == page)
        return;
    m_requestedPage = page;
    Q_EMIT requestedPageChanged();
}

} // namespace zemrak
