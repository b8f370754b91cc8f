#include "ui/presenters/presenters.h"

#include <QEventLoop>

namespace zemrak {

using namespace std::chrono_literals;

Presenters::Pages::Pages(Agent &agent, Clock &clock, AlertsActions alertsActions)
    : hands(clock)
    , foundPrinters(printers,
          {PrinterListModel::NameRole, PrinterListModel::DeviceNameRole, PrinterListModel::TypeTextRole,
              PrinterListModel::DetailRole, PrinterListModel::StateTextRole})
    , jobs(clock.wallTime())
    , foundJobs(jobs,
          {JobListModel::PrinterNameRole, JobListModel::KindTextRole, JobListModel::StatusTextRole,
              JobListModel::ErrorTextRole, JobListModel::ErrorCodeRole, JobListModel::IdRole})
    , sites(agent.commands(), clock.wallTime())
    , alerts(std::move(alertsActions), clock)
    , docs(agent.desktop(), [&agent](const QString &text) { agent.flash(text); })
    , settings(QStringLiteral(ZEMRAK_VERSION))
{
}

Presenters::Presenters(Agent &agent, Clock &clock, HostCalls host, QObject *parent)
    : QObject(parent)
    , m_agent(agent)
    , m_clock(clock)
    , m_host(std::move(host))
    , m_saver(agent.commands())
{
    connect(&m_saver, &ProfileSaver::lost, this, [this] { m_agent.flash(ProfileEditor::notSaved()); });
}

void Presenters::begin()
{
    m_pages = std::make_unique<Pages>(m_agent, m_clock, alertsActions());
    listen();
    takeState();
    takeAlerts();
}

void Presenters::end()
{
    m_agent.disconnect(this);
    dropSheets();
    m_pages.reset();
}

Presenters::~Presenters()
{
    dropSheets(); // while there is a saver: the editor hands it what is left
}

void Presenters::dropSheets()
{
    delete m_editor.release();
    delete m_finder.release();
    delete m_wizard.release();
}

void Presenters::listen()
{
    connect(&m_pages->hands, &RelativeClock::moved, this, &Presenters::moveOn);
    connect(&m_agent, &Agent::stateChanged, this, &Presenters::takeState);
    connect(&m_agent, &Agent::alertsChanged, this, &Presenters::takeAlerts);
    for (const auto changed : {&Agent::scanningChanged, &Agent::scanStepChanged, &Agent::scanResultChanged})
        connect(&m_agent, changed, this, &Presenters::showOverview);
    for (const auto changed : {&Agent::launchAtLoginChanged, &Agent::loginNeedsApprovalChanged,
             &Agent::lastSystemStartChanged, &Agent::notifStatusChanged, &Agent::keepAwakeChanged,
             &Agent::caTrustedChanged, &Agent::availableUpdateChanged, &Agent::updatingChanged})
        connect(&m_agent, changed, this, &Presenters::showSettings);
}

void Presenters::takeState()
{
    m_pages->hands.catchUp();
    const AgentState *state = m_agent.state();
    m_pages->printers.setRows(state == nullptr ? QList<PrinterInfo>() : state->printers);
    m_pages->jobs.setRows(state == nullptr ? QList<JobInfo>() : state->recentJobs);
    m_pages->sites.show(state);
    showOverview();
    showSettings();
}

void Presenters::takeAlerts()
{
    m_pages->hands.catchUp();
    m_pages->alerts.show(m_agent.allAlerts(), m_agent.alerts());
}

void Presenters::showOverview()
{
    m_pages->overview.show({.state = m_agent.state(),
        .scanning = m_agent.isScanning(),
        .scanStep = m_agent.scanStep(),
        .scanResult = m_agent.scanResult(),
        .now = m_pages->hands.now()});
}

void Presenters::showSettings()
{
    m_pages->settings.show({.loginNeedsApproval = m_agent.loginNeedsApproval(),
        .launchAtLogin = m_agent.launchAtLogin(),
        .lastSystemStart = m_agent.lastSystemStart(),
        .notifications = m_agent.notifStatus(),
        .keepAwake = m_agent.keepAwake(),
        .state = m_agent.state(),
        .caTrusted = m_agent.caTrusted(),
        .availableUpdate = m_agent.availableUpdate(),
        .updating = m_agent.isUpdating(),
        .now = m_pages->hands.now()});
}

void Presenters::moveOn(qint64 now)
{
    m_pages->jobs.setNow(now);
    m_pages->sites.setNow(now);
    m_pages->alerts.alerts()->setNow(now);
    showOverview();
    showSettings();
}

// The state read last may be older than what the person changed last.
PrinterInfo Presenters::withNewest(PrinterInfo printer) const
{
    if (const std::optional<QJsonObject> fields = m_saver.underWay(printer.id))
        printer.profile = Profile::decode(*fields);
    return printer;
}

void Presenters::setEdited(const std::optional<PrinterInfo> &printer)
{
    if (m_editor)
        m_editor->close();
    else if (!printer)
        return;
    m_editor.reset(printer ? new ProfileEditor(withNewest(*printer), m_clock, m_agent.commands(), m_saver) : nullptr);
    Q_EMIT editorChanged();
}

void Presenters::setAdding(bool adding)
{
    if (adding == (m_finder != nullptr))
        return;
    m_finder.reset(adding ? new PrinterFinder(m_agent.commands()) : nullptr);
    Q_EMIT finderChanged();
}

void Presenters::setWizardShown(bool shown)
{
    if (shown == (m_wizard != nullptr))
        return;
    m_wizard.reset(shown ? new Wizard(wizardActions()) : nullptr);
    Q_EMIT wizardChanged();
}

void Presenters::finishSaving(std::chrono::milliseconds limit)
{
    if (m_editor)
        m_editor->close();
    if (m_saver.isIdle())
        return;
    QEventLoop loop;
    connect(&m_saver, &ProfileSaver::idleChanged, &loop, &QEventLoop::quit);
    const std::unique_ptr<Timer> timer = m_clock.makeTimer(Clock::Repeat::Once, [&loop] { loop.quit(); });
    timer->start(limit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}

AlertsActions Presenters::alertsActions()
{
    return {.markRead = [this] { m_agent.markAlertsRead(); },
        .clearHistory = [this] { m_agent.clearAlertHistory(); },
        .runScan = m_host.runScan,
        .installUpdate = m_host.installUpdate,
        .openLocalNetworkSettings = m_host.openLocalNetworkSettings};
}

WizardActions Presenters::wizardActions()
{
    return {.enableLaunchAtLogin =
                [this] {
                    callIf(m_host.setLaunchAtLogin, true);
                    return m_agent.launchAtLogin();
                },
        .requestNotifications = [this](auto done) { m_agent.requestNotifications(std::move(done)); },
        .trustForSafari =
            [this](auto done) {
                if (m_host.trustForSafari)
                    m_host.trustForSafari(std::move(done));
                else
                    done(false);
            },
        .browseNetwork =
            [this](auto done) {
                m_agent.adminChannel().post(QStringLiteral("/admin/discover/bonjour"), QJsonObject(), 20s, this,
                    [done = std::move(done)](const PrintService::Answer &) { done(); });
            }};
}

} // namespace zemrak
