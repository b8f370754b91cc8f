#pragma once

#include "app/commands.h"
#include "app/notifications.h"
#include "app/servicesupervisor.h"
#include "app/systemsettings.h"
#include "host/diagnosticsreport.h"
#include "host/httpstrust.h"
#include "host/keepawake.h"
#include "host/launchatlogin.h"
#include "host/updates.h"
#include "model/agentstate.h"

#include <QDateTime>
#include <QObject>
#include <QString>

namespace zemrak {

/// What the page of settings is computed from.
struct SettingsFacts
{
    bool loginNeedsApproval = false;
    bool launchAtLogin = false;
    QDateTime lastSystemStart; ///< invalid: no automatic start was seen
    NotificationStatus notifications = NotificationStatus::NotDetermined;
    bool keepAwake = false;
    const AgentState *state = nullptr; ///< null: the service does not answer
    bool caTrusted = false;
    QString availableUpdate; ///< empty: none is known
    bool updating = false;
    qint64 now = 0; ///< milliseconds since 1970-01-01 UTC
};

/// What the page of settings asks of the application, a part for each of its rows. All of it outlives the page.
struct SettingsParts
{
    LaunchAtLogin &login;
    Notifications &notifications;
    KeepAwake &keepAwake;
    Commands &commands;
    HttpsTrust &trust;
    ServiceSupervisor &supervisor;
    DiagnosticsReport &diagnostics;
    Updates &updates;
    SystemSettings &systemSettings;
};

/// The page of settings. Main thread only.
class SettingsPresenter : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool launchAtLogin READ launchAtLogin NOTIFY changed)
    Q_PROPERTY(QString loginStatus READ loginStatus NOTIFY changed)
    Q_PROPERTY(bool offersLoginSettings READ offersLoginSettings NOTIFY changed)
    Q_PROPERTY(QString notificationStatus READ notificationStatus NOTIFY changed)
    Q_PROPERTY(bool offersNotificationRequest READ offersNotificationRequest NOTIFY changed)
    Q_PROPERTY(bool offersNotificationTest READ offersNotificationTest NOTIFY changed)
    Q_PROPERTY(bool offersNotificationSettings READ offersNotificationSettings NOTIFY changed)
    Q_PROPERTY(bool keepAwake READ keepAwake NOTIFY changed)
    Q_PROPERTY(bool autoApprove READ autoApprove NOTIFY changed)
    Q_PROPERTY(bool serviceAnswers READ serviceAnswers NOTIFY changed)
    Q_PROPERTY(bool caTrusted READ isCaTrusted NOTIFY changed)
    Q_PROPERTY(QString trustStatus READ trustStatus NOTIFY changed)
    Q_PROPERTY(QString versionTitle READ versionTitle CONSTANT)
    Q_PROPERTY(QString updateStatus READ updateStatus NOTIFY changed)
    Q_PROPERTY(bool offersInstall READ offersInstall NOTIFY changed)
    Q_PROPERTY(bool updating READ isUpdating NOTIFY changed)

public:
    /// `version` is the application's.
    SettingsPresenter(const SettingsParts &parts, QString version, QObject *parent = nullptr);

    /// Tells of a change only when something shown is not what it was.
    void show(const SettingsFacts &facts);

    [[nodiscard]] bool launchAtLogin() const { return m_shown.launchAtLogin; }
    [[nodiscard]] QString loginStatus() const { return m_shown.loginStatus; }
    [[nodiscard]] bool offersLoginSettings() const { return m_shown.loginNeedsApproval; }
    [[nodiscard]] QString notificationStatus() const;
    /// The person has not been asked yet.
    [[nodiscard]] bool offersNotificationRequest() const;
    [[nodiscard]] bool offersNotificationTest() const;
    /// Only the system's own settings can help.
    [[nodiscard]] bool offersNotificationSettings() const;
    [[nodiscard]] bool keepAwake() const { return m_shown.keepAwake; }
    /// As the service has it; off while it does not answer.
    [[nodiscard]] bool autoApprove() const { return m_shown.autoApprove; }
    [[nodiscard]] bool serviceAnswers() const { return m_shown.serviceAnswers; }
    [[nodiscard]] bool isCaTrusted() const { return m_shown.caTrusted; }
    [[nodiscard]] QString trustStatus() const;
    [[nodiscard]] QString versionTitle() const;
    [[nodiscard]] QString updateStatus() const; ///< empty: no update is known
    [[nodiscard]] bool offersInstall() const { return !m_shown.availableUpdate.isEmpty(); }
    [[nodiscard]] bool isUpdating() const { return m_shown.updating; }

    Q_INVOKABLE void setLaunchAtLogin(bool on) { m_parts.login.setLaunchAtLogin(on); }
    Q_INVOKABLE void reRegisterLogin() { m_parts.login.reRegisterLogin(); }
    Q_INVOKABLE void openLoginSettings() { m_parts.systemSettings.open(Desktop::SettingsPane::LoginItems); }
    Q_INVOKABLE void requestNotifications() { m_parts.notifications.request(); }
    Q_INVOKABLE void testNotification() { m_parts.notifications.postTest(); }
    Q_INVOKABLE void openNotificationSettings() { m_parts.systemSettings.open(Desktop::SettingsPane::Notifications); }
    Q_INVOKABLE void openLocalNetworkSettings() { m_parts.systemSettings.open(Desktop::SettingsPane::Network); }
    Q_INVOKABLE void setKeepAwake(bool on) { m_parts.keepAwake.set(on); }
    Q_INVOKABLE void setAutoApprove(bool on) { m_parts.commands.setAutoApprove(on); }
    Q_INVOKABLE void trustForSafari() { m_parts.trust.trustForSafari(); }
    Q_INVOKABLE void restartService() { m_parts.supervisor.restart(); }
    Q_INVOKABLE void exportDiagnostics() { m_parts.diagnostics.exportDiagnostics(); }
    Q_INVOKABLE void checkUpdate() { m_parts.updates.checkUpdate(); }
    Q_INVOKABLE void installUpdate() { m_parts.updates.installUpdate(); }

Q_SIGNALS:
    void changed();

private:
    struct Shown
    {
        QString loginStatus;
        QString availableUpdate;
        NotificationStatus notifications = NotificationStatus::NotDetermined;
        bool launchAtLogin = false;
        bool loginNeedsApproval = false;
        bool keepAwake = false;
        bool autoApprove = false;
        bool serviceAnswers = false;
        bool caTrusted = false;
        bool updating = false;

        bool operator==(const Shown &) const = default;
    };

    SettingsParts m_parts;
    QString m_version;
    Shown m_shown;
};

} // namespace zemrak
