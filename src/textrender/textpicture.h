#pragma once

#include "textrender/lineofpaper.h"

#include <QImage>

namespace zemrak {

/// Rows a picture may have; a text that would need more is not drawn.
inline constexpr int maximumPictureRows = 16384;

/// Loads the typeface's regular and bold weight from a folder. Without it pictures are drawn in the system's own.
/// @returns whether it was there
bool loadTypeface(const QString &folder);

/// Draws on white. Needs a QGuiApplication; no display.
/// @param line one that has no problem()
/// @returns one bit for each dot, `line.width` wide; null when it would be too tall
[[nodiscard]] QImage drawTextPicture(const LineOfPaper &line);

} // namespace zemrak
