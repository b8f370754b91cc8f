#include "ui/uicontext.h"

#include "ui/gradientprovider.h"
#include "ui/iconprovider.h"
#include "ui/qmltypes.h"

#include <QFontDatabase>
#include <QQmlEngine>

void qml_register_types_Zemrak();

namespace zemrak {

namespace {

void loadTypefaceOnce()
{
    static const bool loaded = [] {
        for (const char *weight : {"Regular", "Medium", "Bold"})
            QFontDatabase::addApplicationFont(
                QStringLiteral(":/zemrak/fonts/Tajawal-%1.ttf").arg(QLatin1String(weight)));
        return true;
    }();
    Q_UNUSED(loaded)
}

// Qt keeps every registration, a repeated one as well.
void registerTypesOnce()
{
    static const bool registered = [] {
        qml_register_types_Zemrak(); // named here, so that the linker does not leave the registration out
        return true;
    }();
    Q_UNUSED(registered)
}

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

std::unique_ptr<QQmlEngine> makeEngine(
    const MainWindowServices &services, Appearance &appearance, DesignerView &designer)
{
    registerTypesOnce();
    loadTypefaceOnce();
    auto engine = std::make_unique<QQmlEngine>();
    engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
    engine->addImageProvider(QStringLiteral("icon"), new IconProvider); // the engine owns it, as the next
    engine->addImageProvider(QStringLiteral("gradient"), new GradientProvider);
    new UiContext(services, appearance, designer, *engine);
    return engine;
}

Agent *AgentForQml::create(QQmlEngine *engine, QJSEngine *)
{
    return UiContext::lend(&UiContext::of(engine).agent());
}

Presenters *PresentersForQml::create(QQmlEngine *engine, QJSEngine *)
{
    return UiContext::lend(&UiContext::of(engine).presenters());
}

DesignerView *DesignerViewForQml::create(QQmlEngine *engine, QJSEngine *)
{
    return UiContext::lend(&UiContext::of(engine).designer());
}

Appearance *Appearance::create(QQmlEngine *engine, QJSEngine *)
{
    return UiContext::lend(&UiContext::of(engine).appearance());
}

} // namespace zemrak
