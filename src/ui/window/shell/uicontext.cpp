#include "ui/window/shell/uicontext.h"


#include <QQmlEngine>

namespace zemrak {

namespace {

HostCalls hostCalls(Agent &agent)
{
    using Pane = Desktop::SettingsPane;
    return {.setLaunchAtLogin = [&agent](bool on) { agent.setLaunchAtLogin(on); },
        .reRegisterLogin = [&agent] { agent.reRegisterLogin(); },
        .trustForSafari = [&agent](auto done) { agent.trustForSafari(std::move(done)); },
        .setKeepAwake = [&agent](bool on) { agent.setKeepAwake(on); },
        .checkUpdate = [&agent] { agent.checkUpdate(); },
        .installUpdate = [&agent] { agent.installUpdate(); },
        .runScan = [&agent] { agent.runScan(); },
        .exportDiagnostics = [&agent] { agent.exportDiagnostics(); },
        .openLoginSettings = [&agent] { agent.openSettings(Pane::LoginItems); },
        .openNotificationSettings = [&agent] { agent.openSettings(Pane::Notifications); },
        .openLocalNetworkSettings = [&agent] { agent.openSettings(Pane::Network); }};
}

} // namespace

UiContext::UiContext(
    const MainWindowServices &services, Appearance &appearance, DesignerView &designer, QQmlEngine &engine)
    : QObject(&engine)
    , m_services(services)
    , m_appearance(appearance)
    , m_designer(designer)
    , m_mainView(services.agent, services.defaults, appearance)
    , m_presenters(services.agent, services.clock, hostCalls(services.agent))
{
    // Connected before any scene is, so that what stands behind a sheet is there before the sheet.
    connect(&m_mainView, &MainView::editingChanged, &m_presenters,
        [this] { m_presenters.setEdited(m_mainView.editedPrinter()); });
    connect(&m_mainView, &MainView::addingChanged, &m_presenters,
        [this] { m_presenters.setAdding(m_mainView.isAdding()); });
    connect(&m_mainView, &MainView::showOnboardingChanged, &m_presenters,
        [this] { m_presenters.setWizardShown(m_mainView.showsOnboarding()); });
}

void UiContext::begin()
{
    m_presenters.begin();
    connect(m_presenters.clock(), &RelativeClock::moved, &m_designer, &DesignerView::setNow);
    m_mainView.begin();
}

void UiContext::end()
{
    m_presenters.end();
    m_mainView.end();
}

UiContext &UiContext::of(const QQmlEngine *engine)
{
    auto *context = engine->findChild<UiContext *>(QString(), Qt::FindDirectChildrenOnly);
    Q_ASSERT(context);
    return *context;
}

} // namespace zemrak
