#include "ui/window/shell/windowsession.h"

#include "app/agent.h"

namespace zemrak {

namespace {

// The state read last may be older than what the person changed last.
PrinterInfo withNewestProfile(PrinterInfo printer, const ProfileSaver &saver)
{
    if (const std::optional<QJsonObject> fields = saver.underWay(printer.id))
        printer.profile = Profile::decode(*fields);
    return printer;
}

} // namespace

WindowSession::WindowSession(const MainWindowServices &services, Appearance &appearance, ProfileSaver &saver)
    : m_agent(services.agent)
    , m_clock(services.clock)
    , m_saver(saver)
    , m_view(services.agent, services.defaults, appearance)
    , m_now(services.clock)
    , m_printers(m_agent.commands(), m_agent.connectionCheck())
    , m_sites(m_agent.commands(), m_now.now())
    , m_jobs(m_now.now())
    , m_foundJobs(m_jobs,
          {JobListModel::PrinterNameRole, JobListModel::KindTextRole, JobListModel::StatusTextRole,
              JobListModel::ErrorTextRole, JobListModel::WaitingTextRole, JobListModel::ErrorCodeRole,
              JobListModel::IdRole})
    , m_alerts({.feed = m_agent.alertFeed(),
                   .check = m_agent.connectionCheck(),
                   .updates = m_agent.updates(),
                   .systemSettings = m_agent.systemSettings()},
          m_clock)
    , m_docs(m_agent.desktop(), m_agent.messages())
    , m_settings({.login = m_agent.loginLaunch(),
                     .notifications = m_agent.notifications(),
                     .keepAwake = m_agent.awakeKeeper(),
                     .commands = m_agent.commands(),
                     .trust = m_agent.trust(),
                     .supervisor = m_agent.supervisor(),
                     .diagnostics = m_agent.diagnostics(),
                     .updates = m_agent.updates(),
                     .systemSettings = m_agent.systemSettings()},
          QStringLiteral(ZEMRAK_VERSION))
{
    followAgent();
    followView();
    takeState();
    takeAlerts();
    openWizard();
}

// Deleted at once: there is no scene any more. The profile's presenter passes what it has not sent on to the saver.
// Those of sheets that were closed in this turn of the event loop go as children.
WindowSession::~WindowSession()
{
    delete m_profile.release();
    delete m_addPrinter.release();
    delete m_wizard.release();
}

void WindowSession::followAgent()
{
    connect(&m_now, &RelativeClock::moved, this, &WindowSession::showTimes);
    connect(&m_agent, &Agent::stateChanged, this, &WindowSession::takeState);
    connect(&m_agent, &Agent::alertsChanged, this, &WindowSession::takeAlerts);
    for (const auto changed : {&Agent::scanningChanged, &Agent::scanStepChanged, &Agent::scanResultChanged})
        connect(&m_agent, changed, this, &WindowSession::showOverview);
    for (const auto changed : {&Agent::launchAtLoginChanged, &Agent::loginNeedsApprovalChanged,
             &Agent::lastSystemStartChanged, &Agent::notifStatusChanged, &Agent::keepAwakeChanged,
             &Agent::caTrustedChanged, &Agent::availableUpdateChanged, &Agent::updatingChanged})
        connect(&m_agent, changed, this, &WindowSession::showSettings);
}

// Before the scene connects to the view: a sheet is made when its presenter is there.
void WindowSession::followView()
{
    connect(&m_view, &MainView::editingChanged, this, &WindowSession::openProfile);
    connect(&m_view, &MainView::addingChanged, this, &WindowSession::openAddPrinter);
    connect(&m_view, &MainView::showOnboardingChanged, this, &WindowSession::openWizard);
}

void WindowSession::takeState()
{
    m_now.catchUp();
    const AgentState *state = m_agent.state();
    m_printers.show(state);
    m_jobs.setRows(state == nullptr ? QList<JobInfo>() : state->recentJobs);
    m_sites.show(state);
    showOverview();
    showSettings();
}

void WindowSession::takeAlerts()
{
    m_now.catchUp();
    m_alerts.show(m_agent.allAlerts(), m_agent.alerts());
}

void WindowSession::showOverview()
{
    m_overview.show({.state = m_agent.state(),
        .scanning = m_agent.isScanning(),
        .scanStep = m_agent.scanStep(),
        .scanResult = m_agent.scanResult(),
        .now = m_now.now()});
}

void WindowSession::showSettings()
{
    m_settings.show({.loginNeedsApproval = m_agent.loginNeedsApproval(),
        .launchAtLogin = m_agent.launchAtLogin(),
        .lastSystemStart = m_agent.lastSystemStart(),
        .notifications = m_agent.notifStatus(),
        .keepAwake = m_agent.keepAwake(),
        .state = m_agent.state(),
        .caTrusted = m_agent.caTrusted(),
        .availableUpdate = m_agent.availableUpdate(),
        .updating = m_agent.isUpdating(),
        .now = m_now.now()});
}

void WindowSession::showTimes(qint64 now)
{
    m_jobs.setNow(now);
    m_sites.setNow(now);
    m_alerts.alerts()->setNow(now);
    showOverview();
    showSettings();
}

void WindowSession::openProfile()
{
    if (m_profile)
        m_profile->close();
    else if (!m_view.editedPrinter())
        return;
    m_profile.reset(m_view.editedPrinter() ? new ProfilePresenter(
                        withNewestProfile(*m_view.editedPrinter(), m_saver), m_clock, m_agent.commands(), m_saver, this)
                                           : nullptr);
    Q_EMIT profileChanged();
}

void WindowSession::openAddPrinter()
{
    m_addPrinter.reset(m_view.isAdding() ? new AddPrinterPresenter(m_agent.commands(), this) : nullptr);
    Q_EMIT addPrinterChanged();
}

void WindowSession::openWizard()
{
    if (m_view.showsOnboarding() == (m_wizard != nullptr))
        return;
    const WizardParts parts{.login = m_agent.loginLaunch(),
        .notifications = m_agent.notifications(),
        .trust = m_agent.trust(),
        .commands = m_agent.commands()};
    m_wizard.reset(m_view.showsOnboarding() ? new WizardPresenter(parts, this) : nullptr);
    Q_EMIT wizardChanged();
}

} // namespace zemrak
