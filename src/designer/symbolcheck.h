#pragma once

#include <QSize>
#include <QString>

namespace zemrak {

/// Characters a QR code of a receipt may hold.
inline constexpr qsizetype qrMaximumLength = 600;

// What a person should know of a symbol before printing, as one Arabic line; empty when there is nothing to tell.
// This only informs: the service decides what it prints.

/// @param format "code128", "code39", "ean13", "ean8", "upca" or "itf"; of others nothing is known
/// @param paperWidthMm 58, 72 or 80: a barcode wider than the paper is not printed by printers
[[nodiscard]] QString barcodeProblem(const QString &format, const QString &data, int paperWidthMm);

[[nodiscard]] QString qrProblem(const QString &data);

// What a symbol takes up on paper, in dots of 1/8 mm.

/// What printers put in a line of this paper.
[[nodiscard]] int dotsOfPaper(int paperWidthMm);

/// @param size width of a module; a code that would be wider than the paper is printed with smaller ones
[[nodiscard]] QSize qrDots(const QString &data, int size, int paperWidthMm);

/// Of an unknown format the size of a common barcode. Never wider than the paper.
[[nodiscard]] QSize barcodeDots(const QString &format, const QString &data, int paperWidthMm);

} // namespace zemrak
