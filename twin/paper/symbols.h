#pragma once

#include "twin/paper/dots.h"

#include <QString>

#include <optional>

namespace zemrak::paper {

enum class SymbolType
{
    UpcA,
    UpcE,
    Ean13,
    Ean8,
    Code39,
    Itf,
    Codabar,
    Code93,
    Code128,
    Gs1DataBar,
    Gs1DataBarLimited,
    Gs1DataBarExpanded,
    Qr,
    MicroQr,
    Pdf417,
    DataMatrix,
    Aztec,
};

/// Where the data stands in letters beside a barcode.
enum class Caption
{
    None = 0,
    Above = 1,
    Below = 2,
    Both = 3
};

struct SymbolRequest
{
    SymbolType type = SymbolType::Code128;
    QByteArray data; ///< as it is to be read back
    int module = 3; ///< dots of the narrowest element
    int height = 162; ///< dots of a barcode, or modules of a row of PDF417
    int level = 0; ///< of error correction: QR 1 to 4, PDF417 0 to 8, Aztec in per cent; -1 = the library's choice
    int columns = 0; ///< of PDF417; 0 = as they fit
    Caption caption = Caption::None;
    bool captionFontB = false;
    bool subsetB = false; ///< Code 128 without pairs of digits
};

/// The name it is listed by, as in "ean13".
[[nodiscard]] QString nameOf(SymbolType type);

/// @param widest dots across; a symbol wider than that is not printed, as printers do
/// @param problem receives why there is no picture
[[nodiscard]] Dots drawSymbol(const SymbolRequest &request, int widest, QString *problem);

} // namespace zemrak::paper
