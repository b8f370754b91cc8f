#pragma once

#include <QColor>
#include <QStringView>

namespace zemrak {

/// An opaque colour from the hexadecimal number `hex`, red in bits 16 to 23, green in 8 to 15, blue in 0 to 7. A
/// leading "+" may stand before the digits. Anything that is not such a number of at most 32 bits, also with "#" before
/// it, is black.
[[nodiscard]] QColor colorFromHex(QStringView hex);

/// How far apart two opaque colours are in lightness, from 1 (same) to 21 (black on white), as accessibility
/// guidelines count it.
[[nodiscard]] double contrast(const QColor &one, const QColor &other);

/// `color` itself where it can be read on `ground`, else the nearest to it that can, moved towards `ink`.
[[nodiscard]] QColor readable(const QColor &color, const QColor &ground, const QColor &ink);

} // namespace zemrak
