#include "ui/window/shell/windowengine.h"

#include "ui/kit/kitengine.h"
#include "ui/window/shell/uicontext.h"

#include <QQmlEngine>

void qml_register_types_Zemrak_Kit();
void qml_register_types_Zemrak_Window();

namespace zemrak {

namespace {

// Qt keeps every registration, a repeated one as well.
void registerTypesOnce()
{
    static const bool registered = [] {
        qml_register_types_Zemrak_Kit(); // named here, so that the linker does not leave the registrations out
        qml_register_types_Zemrak_Window();
        return true;
    }();
    Q_UNUSED(registered)
}

} // namespace

std::unique_ptr<QQmlEngine> makeWindowEngine(
    const MainWindowServices &services, Appearance &appearance, DesignerPresenter &designer)
{
    registerTypesOnce();
    auto engine = std::make_unique<QQmlEngine>();
    engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
    installKit(*engine, appearance);
    new UiContext(services, appearance, designer, *engine);
    return engine;
}

} // namespace zemrak
