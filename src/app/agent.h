#pragma once

#include "app/adminchannel.h"
#include "app/alertfeed.h"
#include "app/commands.h"
#include "app/notifications.h"
#include "app/page.h"
#include "app/servicelog.h"
#include "app/servicerunner.h"
#include "app/servicesupervisor.h"
#include "app/statepoll.h"
#include "app/systemsettings.h"
#include "app/toast.h"
#include "base/clock.h"
#include "health/alertdelivery.h"
#include "health/healthsummary.h"
#include "health/notifier.h"
#include "host/applicationbundle.h"
#include "host/childguard.h"
#include "host/connectioncheck.h"
#include "host/desktop.h"
#include "host/diagnosticsreport.h"
#include "host/httpstrust.h"
#include "host/keepawake.h"
#include "host/launchatlogin.h"
#include "host/loginitem.h"
#include "host/portconflictreport.h"
#include "host/portholders.h"
#include "host/processactivities.h"
#include "host/updates.h"
#include "host/userdefaults.h"
#include "model/agentstate.h"
#include "model/alertitem.h"
#include "model/scanresult.h"

#include <QDateTime>
#include <QObject>

#include <optional>

namespace zemrak {

/// Where an Agent finds its service.
struct AgentPlaces
{
    ApplicationBundle bundle;
    QString configDir; ///< where the service keeps its files
    quint16 port = AdminChannel::defaultPort; ///< until the service names another
};

/// The computer's side of what an Agent does. All of it outlives the Agent.
struct AgentHost
{
    ChildGuard &childGuard;
    Notifier &notifier;
    LoginItem &loginItem;
    ProcessActivities &activities;
    Desktop &desktop;
    const PortHolders &portHolders;
    Updates::Handover handover;
};

/// The one object that pages, status item and notifications look at: what is known of the service and of the host, and
/// what can be asked of them. Made once by the composition root. It composes and publishes; the rules are in its parts.
/// Every published value has its change signal; those without a form of their own in QML (snapshot, alerts, results,
/// enumerations) have a getter in place of a property, and models and presenters stand before them. Main thread only.
class Agent : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool running READ isRunning NOTIFY runningChanged)
    Q_PROPERTY(QString log READ log NOTIFY logChanged)
    Q_PROPERTY(QString toast READ toast NOTIFY toastChanged)
    Q_PROPERTY(bool portConflict READ portConflict NOTIFY portConflictChanged)
    Q_PROPERTY(qint64 alertsBadge READ alertsBadge NOTIFY alertsChanged)
    Q_PROPERTY(bool updating READ isUpdating NOTIFY updatingChanged)
    Q_PROPERTY(bool keepAwake READ keepAwake NOTIFY keepAwakeChanged)
    Q_PROPERTY(bool scanning READ isScanning NOTIFY scanningChanged)
    Q_PROPERTY(double scanProgress READ scanProgress NOTIFY scanProgressChanged)
    Q_PROPERTY(bool launchAtLogin READ launchAtLogin NOTIFY launchAtLoginChanged)
    Q_PROPERTY(QDateTime lastSystemStart READ lastSystemStart NOTIFY lastSystemStartChanged)
    Q_PROPERTY(bool caTrusted READ caTrusted NOTIFY caTrustedChanged)

public:
    Agent(const AgentPlaces &places, UserDefaults &defaults, Clock &clock, const AgentHost &host);

    /// A launched service process exists; it need not answer yet.
    [[nodiscard]] bool isRunning() const { return m_supervisor.isRunning(); }
    /// The service's latest snapshot; null while it does not answer. Valid until stateChanged().
    [[nodiscard]] const AgentState *state() const { return m_poll.state(); }
    /// The last 4000 characters the service printed, or why it could not be launched.
    [[nodiscard]] QString log() const { return m_log.text(); }
    /// The transient message; null while there is none.
    [[nodiscard]] QString toast() const { return m_toast.text(); }
    [[nodiscard]] bool portConflict() const { return m_supervisor.portConflict(); }
    [[nodiscard]] HealthSummary health() const { return summarise(state(), portConflict()); }

    /// The service's alerts, in its order.
    [[nodiscard]] const QList<AlertItem> &alerts() const { return m_alertFeed.alerts(); }
    /// The application's own alert, while there is one, and then the service's.
    [[nodiscard]] QList<AlertItem> allAlerts() const { return m_alertFeed.all(); }
    [[nodiscard]] qint64 alertsBadge() const { return m_alertFeed.badge(); }
    /// The page the main window is asked to show; none when nothing is asked.
    [[nodiscard]] std::optional<Page> requestedPage() const { return m_requestedPage; }
    void setRequestedPage(std::optional<Page> page);

    [[nodiscard]] QString availableUpdate() const { return m_updates.availableUpdate(); }
    [[nodiscard]] bool isUpdating() const { return m_updates.isUpdating(); }
    [[nodiscard]] NotificationStatus notifStatus() const { return m_notifications.status(); }
    [[nodiscard]] bool keepAwake() const { return m_keepAwake.isOn(); }
    [[nodiscard]] bool isScanning() const { return m_check.isScanning(); }
    /// From 0 to 1.
    [[nodiscard]] double scanProgress() const { return m_check.scanProgress(); }
    [[nodiscard]] QString scanStep() const { return m_check.scanStep(); }
    [[nodiscard]] const std::optional<ScanResult> &scanResult() const { return m_check.scanResult(); }
    [[nodiscard]] bool launchAtLogin() const { return m_login.launchAtLogin(); }
    [[nodiscard]] bool loginNeedsApproval() const { return m_login.loginNeedsApproval(); }
    /// Invalid when no automatic start was ever seen.
    [[nodiscard]] QDateTime lastSystemStart() const { return m_login.lastSystemStart(); }
    [[nodiscard]] bool caTrusted() const { return m_trust.caTrusted(); }

    // The parts, for those that use only some of them.
    [[nodiscard]] ServiceSupervisor &supervisor() { return m_supervisor; }
    [[nodiscard]] Commands &commands() { return m_commands; }
    [[nodiscard]] AlertFeed &alertFeed() { return m_alertFeed; }
    [[nodiscard]] Notifications &notifications() { return m_notifications; }
    [[nodiscard]] LaunchAtLogin &loginLaunch() { return m_login; }
    [[nodiscard]] KeepAwake &awakeKeeper() { return m_keepAwake; }
    [[nodiscard]] HttpsTrust &trust() { return m_trust; }
    [[nodiscard]] Updates &updates() { return m_updates; }
    [[nodiscard]] ConnectionCheck &connectionCheck() { return m_check; }
    [[nodiscard]] DiagnosticsReport &diagnostics() { return m_report; }
    [[nodiscard]] SystemSettings &systemSettings() { return m_systemSettings; }
    [[nodiscard]] Desktop &desktop() { return m_desktop; }
    /// The transient messages; toast() is the one that is shown.
    [[nodiscard]] Toast &messages() { return m_toast; }

    void start() { m_supervisor.start(); }
    void stop() { m_supervisor.stop(); }
    void restart() { m_supervisor.restart(); }
    /// stop(), and waits for the service to be gone, for a few seconds at most.
    void shutDown() { m_supervisor.shutDown(); }
    void refresh() { m_poll.refresh(); }
    /// Whether a person can see the window at present; see StatePoll.
    void setWindowShown(bool shown) { m_poll.setWindowShown(shown); }
    void flash(const QString &text) { m_toast.flash(text); }

    void refreshNotifStatus() { m_notifications.refresh(); }
    void setLaunchAtLogin(bool on) { m_login.setLaunchAtLogin(on); }
    void healLoginItemIfNeeded() { m_login.healLoginItemIfNeeded(); }
    /// Notes that this launch was an automatic one.
    void recordSystemStart() { m_login.recordSystemStart(); }
    /// Takes up the wish of an earlier run.
    void restoreKeepAwake() { m_keepAwake.restore(); }
    /// Whether browsers accept the service's HTTPS port; looked up apart from the main thread.
    void refreshTrust() { m_trust.refreshTrust(); }
    /// The connection check, told stage by stage.
    void runScan() { m_check.runScan(); }

Q_SIGNALS:
    void runningChanged();
    void stateChanged();
    void logChanged();
    void toastChanged();
    void portConflictChanged();
    void alertsChanged();
    void requestedPageChanged();
    void availableUpdateChanged();
    void updatingChanged();
    void notifStatusChanged();
    void keepAwakeChanged();
    void scanningChanged();
    void scanProgressChanged();
    void scanStepChanged();
    void scanResultChanged();
    void launchAtLoginChanged();
    void loginNeedsApprovalChanged();
    void lastSystemStartChanged();
    void caTrustedChanged();

private:
    void onServiceSeen();

    Desktop &m_desktop;
    ServiceLog m_log;
    Toast m_toast;
    SystemSettings m_systemSettings;
    Notifications m_notifications;
    ServiceSupervisor m_supervisor;
    AdminChannel m_channel;
    StatePoll m_poll;
    Commands m_commands;
    AlertDelivery m_alertDelivery;
    AlertFeed m_alertFeed;
    ServiceRunner m_commandRunner; ///< before m_trust, which uses it
    LaunchAtLogin m_login;
    KeepAwake m_keepAwake;
    HttpsTrust m_trust;
    Updates m_updates;
    ConnectionCheck m_check;
    DiagnosticsReport m_report;
    PortConflictReport m_conflictReport;

    std::optional<Page> m_requestedPage;
};

} // namespace zemrak
