#pragma once

#include <QQuickImageProvider>

namespace zemrak {

/// Draws "image://gradient/RRGGBB-RRGGBB?RADIUS": a rounded tile from the first colour at the top to the second at the
/// bottom, at the size asked for; the radius is in pixels of the picture. The software renderer leaves the corners of a
/// rectangle with a gradient jagged; these are smooth.
class GradientProvider final : public QQuickImageProvider
{
public:
    GradientProvider()
        : QQuickImageProvider(QQuickImageProvider::Image)
    {
    }

    [[nodiscard]] QImage requestImage(const QString &id, QSize *size, const QSize &requestedSize) override;
};

} // namespace zemrak
