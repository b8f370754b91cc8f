#pragma once

#include <QQuickImageProvider>

namespace zemrak {

/// Draws "image://icon/SYMBOL?RRGGBB" in that colour at the size asked for; "&mirror" after it flips the drawing. An
/// unknown symbol is drawn as nothing, with a line in the log.
class IconProvider final : public QQuickImageProvider
{
public:
    IconProvider()
        : QQuickImageProvider(QQuickImageProvider::Image)
    {
    }

    [[nodiscard]] QImage requestImage(const QString &id, QSize *size, const QSize &requestedSize) override;
};

} // namespace zemrak
