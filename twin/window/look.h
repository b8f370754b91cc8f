#pragma once

#include <QColor>
#include <QPalette>
#include <QString>

namespace zemrak::twin {

/// The house's colours in one of its two appearances, and the style sheet made of them. Sizes are device-independent
/// pixels on a grid of 4.
struct Look
{
    explicit Look(bool dark);
    /// As the desktop's palette is.
    static Look ofDesktop();
    /// Makes the house's typeface known, once.
    static void loadTypeface();

    QColor ground, card, border, muted, text, accent, track, green, red, amber;

    [[nodiscard]] QPalette palette() const;
    [[nodiscard]] QString sheet() const;
};

} // namespace zemrak::twin
