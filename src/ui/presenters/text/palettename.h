#pragma once

#include "health/vocabulary.h"

#include <QString>

namespace zemrak {

// Colours as the window's theme takes them: the name of a palette colour, which the theme resolves for the light or the
// dark appearance, or "#rrggbb" ("#aarrggbb") for one that is the same in both.
[[nodiscard]] inline QString paletteName(Tone tone)
{
    switch (tone) {
    case Tone::Green:
        return QStringLiteral("gGreen");
    case Tone::Red:
        return QStringLiteral("gRed");
    case Tone::Amber:
        return QStringLiteral("gAmber");
    case Tone::Muted:
        break;
    }
    return QStringLiteral("gMuted");
}

} // namespace zemrak
