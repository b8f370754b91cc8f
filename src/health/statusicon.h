#pragma once

#include <QIcon>
#include <QImage>
#include <QString>

namespace zemrak {

/// The logo from a PNG file, as large as the status item needs it; null where there is none. Any thread.
[[nodiscard]] QImage readLogo(const QString &file);

/// The status item's image, 22 by 22 points at so many pixels a point: the logo, or a printer symbol where that is
/// null, and with a problem a red dot at its upper right, set off by a transparent gap. Any thread.
[[nodiscard]] QImage drawStatusIcon(const QImage &logo, bool problem, qreal scale);

/// The same, drawn afresh for each usual scale so that it is sharp on all of them. Main thread.
[[nodiscard]] QIcon statusIcon(const QImage &logo, bool problem);

/// Writes each variant into the folder, which is made where it is missing, as a strip that shows the icon on a light
/// and on a dark panel. False: one could not be written; the others are all the same.
[[nodiscard]] bool renderPreviews(const QString &folder, const QImage &logo);

} // namespace zemrak
