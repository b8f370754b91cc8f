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

/// What stands behind the pages and sheets of the window: made by begin(), fed by the agent, gone with end(). An open
/// sheet that goes has sent what it held. Main thread only.
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

    /// A window is about to be built; the last one's end() has been.
    void begin();
    void end();

    // Null outside of a window's life.
    [[nodiscard]] RelativeClock *clock() { return part(&Pages::hands); }
    [[nodiscard]] Overview *overview() { return part(&Pages::overview); }
    [[nodiscard]] SearchModel *printers() { return part(&Pages::foundPrinters); }
    [[nodiscard]] SitesPresenter *sites() { return part(&Pages::sites); }
    [[nodiscard]] SearchModel *jobs() { return part(&Pages::foundJobs); }
    [[nodiscard]] AlertsPresenter *alerts() { return part(&Pages::alerts); }
    [[nodiscard]] DocsPresenter *docs() { return part(&Pages::docs); }
    [[nodiscard]] SettingsPresenter *settings() { return part(&Pages::settings); }

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
    struct Pages
    {
        Pages(Agent &agent, Clock &clock, AlertsActions alertsActions);

        RelativeClock hands;
        PrinterListModel printers;
        SearchModel foundPrinters;
        JobListModel jobs;
        SearchModel foundJobs;
        SitesPresenter sites;
        AlertsPresenter alerts;
        Overview overview;
        DocsPresenter docs;
        SettingsPresenter settings;
    };

    template <class T> [[nodiscard]] T *part(T Pages::*member) { return m_pages ? &(m_pages.get()->*member) : nullptr; }

    void listen();
    void dropSheets();
    void takeState();
    void takeAlerts();
    void showOverview();
    void showSettings();
    void moveOn(qint64 now);
    [[nodiscard]] PrinterInfo withNewest(PrinterInfo printer) const;
    [[nodiscard]] AlertsActions alertsActions();
    [[nodiscard]] WizardActions wizardActions();

    // While there is a scene, a sheet's object goes in a later turn, when nothing of the sheet looks at it any more.
    struct Later
    {
        void operator()(QObject *object) const { object->deleteLater(); }
    };

    Agent &m_agent;
    Clock &m_clock;
    HostCalls m_host;
    ProfileSaver m_saver;
    std::unique_ptr<Pages> m_pages;
    std::unique_ptr<ProfileEditor, Later> m_editor;
    std::unique_ptr<PrinterFinder, Later> m_finder;
    std::unique_ptr<Wizard, Later> m_wizard;
};

} // namespace zemrak
