#include "ui/uicontext.h"

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

} // namespace

UiContext::UiContext(const MainWindowServices &services, Appearance &appearance, QQmlEngine &engine)
    : QObject(&engine)
    , m_services(services)
    , m_appearance(appearance)
    , m_mainView(services.agent, services.defaults, appearance)
{
}

UiContext &UiContext::of(const QQmlEngine *engine)
{
    auto *context = engine->findChild<UiContext *>(QString(), Qt::FindDirectChildrenOnly);
    Q_ASSERT(context);
    return *context;
}

std::unique_ptr<QQmlEngine> makeEngine(const MainWindowServices &services, Appearance &appearance)
{
    qml_register_types_Zemrak(); // named here, so that the linker does not leave the registration out
    loadTypefaceOnce();
    auto engine = std::make_unique<QQmlEngine>();
    engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
    engine->addImageProvider(QStringLiteral("icon"), new IconProvider); // the engine owns it
    new UiContext(services, appearance, *engine);
    return engine;
}

Agent *AgentForQml::create(QQmlEngine *engine, QJSEngine *)
{
    return UiContext::lend(&UiContext::of(engine).agent());
}

Appearance *Appearance::create(QQmlEngine *engine, QJSEngine *)
{
    return UiContext::lend(&UiContext::of(engine).appearance());
}

} // namespace zemrak
