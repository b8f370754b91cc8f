#pragma once

#include "app/mainwindow.h"
#include "ui/presenters/addprinter/addprinterpresenter.h"
#include "ui/presenters/alerts/alertspresenter.h"
#include "ui/presenters/docs/docspresenter.h"
#include "ui/presenters/jobs/joblistmodel.h"
#include "ui/presenters/overview/overviewpresenter.h"
#include "ui/presenters/printers/printerspresenter.h"
#include "ui/presenters/profile/profilepresenter.h"
#include "ui/presenters/settings/settingspresenter.h"
#include "ui/presenters/sites/sitespresenter.h"
#include "ui/presenters/text/relativeclock.h"
#include "ui/presenters/text/searchmodel.h"
#include "ui/presenters/wizard/wizardpresenter.h"
#include "ui/window/shell/mainview.h"

#include <QObject>

#include <memory>

namespace zemrak {

/// All that lives as long as one window: what it shows, and the presenters of its pages and of its open sheets. Made
/// before the scene and destroyed after it. It feeds the pages with what the agent publishes. Main thread only.
class WindowSession : public QObject
{
    Q_OBJECT
    Q_PROPERTY(zemrak::MainView *view READ view CONSTANT)
    Q_PROPERTY(zemrak::OverviewPresenter *overview READ overview CONSTANT)
    Q_PROPERTY(zemrak::PrintersPresenter *printers READ printers CONSTANT)
    Q_PROPERTY(zemrak::SitesPresenter *sites READ sites CONSTANT)
    Q_PROPERTY(zemrak::SearchModel *jobs READ jobs CONSTANT)
    Q_PROPERTY(zemrak::AlertsPresenter *alerts READ alerts CONSTANT)
    Q_PROPERTY(zemrak::DocsPresenter *docs READ docs CONSTANT)
    Q_PROPERTY(zemrak::SettingsPresenter *settings READ settings CONSTANT)
    Q_PROPERTY(zemrak::ProfilePresenter *profile READ profile NOTIFY profileChanged)
    Q_PROPERTY(zemrak::AddPrinterPresenter *addPrinter READ addPrinter NOTIFY addPrinterChanged)
    Q_PROPERTY(zemrak::WizardPresenter *wizard READ wizard NOTIFY wizardChanged)

public:
    /// What it is given outlives it. An open sheet that goes with it has handed its last changes to `saver`.
    WindowSession(const MainWindowServices &services, Appearance &appearance, ProfileSaver &saver);
    ~WindowSession() override;

    [[nodiscard]] MainView *view() { return &m_view; }
    [[nodiscard]] RelativeClock *clock() { return &m_now; }
    [[nodiscard]] OverviewPresenter *overview() { return &m_overview; }
    [[nodiscard]] PrintersPresenter *printers() { return &m_printers; }
    [[nodiscard]] SitesPresenter *sites() { return &m_sites; }
    [[nodiscard]] SearchModel *jobs() { return &m_foundJobs; }
    [[nodiscard]] AlertsPresenter *alerts() { return &m_alerts; }
    [[nodiscard]] DocsPresenter *docs() { return &m_docs; }
    [[nodiscard]] SettingsPresenter *settings() { return &m_settings; }

    /// That of the open sheet, which the view decides on; else null.
    [[nodiscard]] ProfilePresenter *profile() const { return m_profile.get(); }
    [[nodiscard]] AddPrinterPresenter *addPrinter() const { return m_addPrinter.get(); }
    [[nodiscard]] WizardPresenter *wizard() const { return m_wizard.get(); }

Q_SIGNALS:
    void profileChanged();
    void addPrinterChanged();
    void wizardChanged();

private:
    void followAgent();
    void followView();
    void takeState();
    void takeAlerts();
    void showOverview();
    void showSettings();
    void showTimes(qint64 now);
    void openProfile();
    void openAddPrinter();
    void openWizard();

    // The QML of a sheet on its way out may still read its presenter in this turn of the event loop.
    struct DeleteLater
    {
        void operator()(QObject *object) const { object->deleteLater(); }
    };

    Agent &m_agent;
    Clock &m_clock;
    ProfileSaver &m_saver;
    MainView m_view;
    RelativeClock m_now;
    OverviewPresenter m_overview;
    PrintersPresenter m_printers;
    SitesPresenter m_sites;
    JobListModel m_jobs;
    SearchModel m_foundJobs;
    AlertsPresenter m_alerts;
    DocsPresenter m_docs;
    SettingsPresenter m_settings;
    std::unique_ptr<ProfilePresenter, DeleteLater> m_profile;
    std::unique_ptr<AddPrinterPresenter, DeleteLater> m_addPrinter;
    std::unique_ptr<WizardPresenter, DeleteLater> m_wizard;
};

} // namespace zemrak
