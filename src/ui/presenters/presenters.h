#pragma once

#include "app/agent.h"
#include "ui/presenters/alertspresenter.h"
#include "ui/presenters/docspresenter.h"
#include "ui/presenters/hostcalls.h"
#include "ui/presenters/joblistmodel.h"
#include "ui/presenters/overview.h"
#include "ui/presenters/printerfinder.h"
#include "ui/presenters/printerlistmodel.h"
#include "ui/presenters/profileeditor.h"
#include "ui/presenters/relativeclock.h"
#include "ui/presenters/searchmodel.h"
#include "ui/presenters/settingspresenter.h"
#include "ui/presenters/sitespresenter.h"
#include "ui/presenters/wizard.h"

#include <QObject>

#include <memory>

namespace zemrak {

/// What stands behind the pages and sheets of one window: made with it, fed by the agent, gone with it. Its destruction
/// sends what an open sheet has not sent yet. Main thread only.
class Presenters : public QObject
{
    Q_OBJECT
    Q_PROPERTY(zemrak::RelativeClock *clock READ clock CONSTANT)
    Q_PROPERTY(zemrak::Overview *overview READ overview CONSTANT)
    Q_PROPERTY(zemrak::SearchModel *printers READ printers CONSTANT)
    Q_PROPERTY(zemrak::SitesPresenter *sites READ sites CONSTANT)
    Q_PROPERTY(zemrak::SearchModel *jobs READ jobs CONSTANT)
    Q_PROPERTY(zemrak::AlertsPresenter *alerts READ alerts CONSTANT)
    Q_PROPERTY(zemrak::DocsPresenter *docs READ docs CONSTANT)
    Q_PROPERTY(zemrak::SettingsPresenter *settings READ settings CONSTANT)
    Q_PROPERTY(zemrak::ProfileEditor *editor READ editor NOTIFY editorChanged)
    Q_PROPERTY(zemrak::PrinterFinder *finder READ finder NOTIFY finderChanged)
    Q_PROPERTY(zemrak::Wizard *wizard READ wizard NOTIFY wizardChanged)

public:
    /// `agent` and `clock` outlive this object.
    Presenters(Agent &agent, Clock &clock, HostCalls host, QObject *parent = nullptr);
    ~Presenters() override;

    [[nodiscard]] RelativeClock *clock() { return &m_hands; }
    [[nodiscard]] Overview *overview() { return &m_overview; }
    [[nodiscard]] SearchModel *printers() { return &m_foundPrinters; }
    [[nodiscard]] SitesPresenter *sites() { return &m_sites; }
    [[nodiscard]] SearchModel *jobs() { return &m_foundJobs; }
    [[nodiscard]] AlertsPresenter *alerts() { return &m_alerts; }
    [[nodiscard]] DocsPresenter *docs() { return &m_docs; }
    [[nodiscard]] SettingsPresenter *settings() { return &m_settings; }

    /// The open sheet's, else null.
    [[nodiscard]] ProfileEditor *editor() const { return m_editor.get(); }
    [[nodiscard]] PrinterFinder *finder() const { return m_finder.get(); }
    [[nodiscard]] Wizard *wizard() const { return m_wizard.get(); }
    /// Opens the settings of that printer, afresh; none closes them.
    void setEdited(const std::optional<PrinterInfo> &printer);
    void setAdding(bool adding);
    void setWizardShown(bool shown);

    /// Sends what an open sheet has not sent, and waits until the service has it all, but no longer than `limit`. For
    /// the application's end, before the service is stopped; it lets events through, except the person's.
    void finishSaving(std::chrono::milliseconds limit);

    // What buttons ask for that is nothing but the asking.
    Q_INVOKABLE void testPrint(const QString &printerId) { m_agent.commands().testPrint(printerId); }
    Q_INVOKABLE void removePrinter(const QString &printerId) { m_agent.commands().remove(printerId); }
    Q_INVOKABLE void runScan() { callIf(m_host.runScan); }
    Q_INVOKABLE void setLaunchAtLogin(bool on) { callIf(m_host.setLaunchAtLogin, on); }
    Q_INVOKABLE void reRegisterLogin() { callIf(m_host.reRegisterLogin); }
    Q_INVOKABLE void openLoginSettings() { callIf(m_host.openLoginSettings); }
    Q_INVOKABLE void requestNotifications() { m_agent.requestNotifications(); }
    Q_INVOKABLE void testNotification() { m_agent.testNotification(); }
    Q_INVOKABLE void openNotificationSettings() { callIf(m_host.openNotificationSettings); }
    Q_INVOKABLE void openLocalNetworkSettings() { callIf(m_host.openLocalNetworkSettings); }
    Q_INVOKABLE void setKeepAwake(bool on) { callIf(m_host.setKeepAwake, on); }
    Q_INVOKABLE void setAutoApprove(bool on) { m_agent.commands().setAutoApprove(on); }
    Q_INVOKABLE void trustForSafari() { callIf(m_host.trustForSafari, nullptr); }
    Q_INVOKABLE void restartService() { m_agent.restart(); }
    Q_INVOKABLE void exportDiagnostics() { callIf(m_host.exportDiagnostics); }
    Q_INVOKABLE void checkUpdate() { callIf(m_host.checkUpdate); }
    Q_INVOKABLE void installUpdate() { callIf(m_host.installUpdate); }

Q_SIGNALS:
    void editorChanged();
    void finderChanged();
    void wizardChanged();

private:
    void listen();
    void takeState();
    void takeAlerts();
    void showOverview();
    void showSettings();
    void moveOn(qint64 now);
    [[nodiscard]] PrinterInfo withNewest(PrinterInfo printer) const;
    [[nodiscard]] AlertsActions alertsActions();
    [[nodiscard]] WizardActions wizardActions();

    // A sheet's object goes in a later turn, when nothing of the sheet looks at it any more.
    struct Later
    {
        void operator()(QObject *object) const { object->deleteLater(); }
    };

    Agent &m_agent;
    Clock &m_clock;
    HostCalls m_host;
    RelativeClock m_hands;
    PrinterListModel m_printers;
    SearchModel m_foundPrinters;
    JobListModel m_jobs;
    SearchModel m_foundJobs;
    SitesPresenter m_sites;
    AlertsPresenter m_alerts;
    Overview m_overview;
    DocsPresenter m_docs;
    SettingsPresenter m_settings;
    ProfileSaver m_saver;
    std::unique_ptr<ProfileEditor, Later> m_editor;
    std::unique_ptr<PrinterFinder, Later> m_finder;
    std::unique_ptr<Wizard, Later> m_wizard;
};

} // namespace zemrak
