#include "ui/kit/kitengine.h"

#include "ui/kit/appearance.h"
#include "ui/kit/gradientprovider.h"
#include "ui/kit/iconprovider.h"

#include <QFontDatabase>
#include <QQmlEngine>

namespace zemrak {

namespace {

constexpr const char *appearanceProperty = "zemrakAppearance";

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

void installKit(QQmlEngine &engine, Appearance &appearance)
{
    loadTypefaceOnce();
    QQmlEngine::setObjectOwnership(&appearance, QQmlEngine::CppOwnership);
    engine.setProperty(appearanceProperty, QVariant::fromValue(&appearance));
    engine.addImageProvider(QStringLiteral("icon"), new IconProvider); // the engine owns it, as the next
    engine.addImageProvider(QStringLiteral("gradient"), new GradientProvider);
}

Appearance *appearanceOf(const QQmlEngine &engine)
{
    return engine.property(appearanceProperty).value<Appearance *>();
}

} // namespace zemrak
