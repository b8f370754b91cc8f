#include "app/agent.h"

namespace zemrak {

namespace {

constexpr QLatin1String notifiedKey("notifiedAlerts");

} // namespace

Agent::Agent(const AgentPlaces &places, UserDefaults &defaults, Clock &clock, const AgentHost &host)
    : m_desktop(host.desktop)
    , m_toast(clock)
    , m_systemSettings(host.desktop, m_toast)
    , m_notifications(host.notifier)
    , m_supervisor(places.bundle, places.configDir, clock, host.childGuard, m_log)
    , m_channel(places.configDir + QStringLiteral("/admin.token"), clock, places.port)
    , m_poll(m_channel, clock)
    , m_commands(m_channel, m_poll, m_toast, clock)
    , m_alertDelivery(host.notifier, clock, defaults.strings(notifiedKey),
          [&defaults](const QStringList &ids) { defaults.setStrings(notifiedKey, ids); })
    , m_alertFeed(
          m_channel, [this] { return m_channel.hasToken(); }, m_alertDelivery, clock)
    , m_commandRunner(places.bundle, host.childGuard)
    , m_login(host.loginItem, defaults, clock, places.bundle.path())
    , m_keepAwake(host.activities, defaults)
    , m_trust(m_commandRunner)
    , m_updates(m_channel, clock, places.bundle, host.handover)
    , m_check(m_channel, clock)
    , m_report(m_channel, host.desktop, clock)
    , m_conflictReport(host.portHolders, clock, places.configDir + QStringLiteral("/port-conflict.json"))
{
    connect(&m_log, &ServiceLog::changed, this, &Agent::logChanged);
    connect(&m_toast, &Toast::changed, this, &Agent::toastChanged);
    connect(&m_supervisor, &ServiceSupervisor::runningChanged, this, &Agent::runningChanged);
    connect(&m_supervisor, &ServiceSupervisor::portConflictChanged, this, &Agent::portConflictChanged);
    connect(&m_supervisor, &ServiceSupervisor::startRequested, &m_poll, &StatePoll::arm);
    connect(&m_supervisor, &ServiceSupervisor::stopRequested, &m_poll, &StatePoll::disarm);
    connect(&m_supervisor, &ServiceSupervisor::portTaken, this, [this, port = places.port] {
        constexpr quint16 httpsPort = 17732;
        m_conflictReport.report({port, httpsPort});
    });
    // First of all: what other listeners send goes to the port that the new state names.
    connect(&m_poll, &StatePoll::stateChanged, this,
        [this] { m_channel.setPort(state() != nullptr ? std::optional(state()->httpPort) : std::nullopt); });
    connect(&m_poll, &StatePoll::stateChanged, this, &Agent::stateChanged);
    connect(&m_poll, &StatePoll::answered, &m_supervisor, &ServiceSupervisor::clearPortConflict);

    connect(&m_poll, &StatePoll::aboutToRefresh, &m_login, &LaunchAtLogin::refreshLoginState);
    connect(&m_poll, &StatePoll::aboutToRefresh, &m_alertFeed, &AlertFeed::refresh);
    connect(&m_poll, &StatePoll::stateChanged, this, &Agent::onServiceSeen);
    connect(&m_supervisor, &ServiceSupervisor::portConflictChanged, this, &Agent::onServiceSeen);
    connect(&m_alertFeed, &AlertFeed::changed, this, &Agent::alertsChanged);

    connect(&m_notifications, &Notifications::statusChanged, this, &Agent::notifStatusChanged);
    connect(&m_login, &LaunchAtLogin::launchAtLoginChanged, this, &Agent::launchAtLoginChanged);
    connect(&m_login, &LaunchAtLogin::loginNeedsApprovalChanged, this, &Agent::loginNeedsApprovalChanged);
    connect(&m_login, &LaunchAtLogin::lastSystemStartChanged, this, &Agent::lastSystemStartChanged);
    connect(&m_keepAwake, &KeepAwake::changed, this, &Agent::keepAwakeChanged);
    connect(&m_trust, &HttpsTrust::caTrustedChanged, this, &Agent::caTrustedChanged);
    connect(&m_updates, &Updates::availableUpdateChanged, this, &Agent::availableUpdateChanged);
    connect(&m_updates, &Updates::updatingChanged, this, &Agent::updatingChanged);
    connect(&m_check, &ConnectionCheck::scanningChanged, this, &Agent::scanningChanged);
    connect(&m_check, &ConnectionCheck::scanProgressChanged, this, &Agent::scanProgressChanged);
    connect(&m_check, &ConnectionCheck::scanStepChanged, this, &Agent::scanStepChanged);
    connect(&m_check, &ConnectionCheck::scanResultChanged, this, &Agent::scanResultChanged);

    connect(&m_login, &LaunchAtLogin::notice, &m_toast, &Toast::flash);
    connect(&m_trust, &HttpsTrust::notice, &m_toast, &Toast::flash);
    connect(&m_updates, &Updates::notice, &m_toast, &Toast::flash);
    connect(&m_report, &DiagnosticsReport::notice, &m_toast, &Toast::flash);
    connect(&m_login, &LaunchAtLogin::logged, &m_log, &ServiceLog::append);
    connect(&m_conflictReport, &PortConflictReport::logged, &m_log, &ServiceLog::append);
    connect(&m_check, &ConnectionCheck::finished, &m_poll, &StatePoll::refresh);
}

void Agent::onServiceSeen()
{
    m_alertFeed.setService(state() != nullptr, portConflict());
}

void Agent::setRequestedPage(std::optional<Page> page)
{
    if (m_requestedPage == page)
        return;
    m_requestedPage = page;
    Q_EMIT requestedPageChanged();
}

} // namespace zemrak
