#include "twin/paper/symbols.h"

#include "twin/paper/glyphs.h"

#include <QRect>

#include <zint.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

namespace zemrak::paper {

namespace {

struct Symbology
{
    SymbolType type;
    const char *name;
    int number; ///< the library's
    bool wideBars; ///< elements are of two widths, of which the wider is no multiple of the narrow one
    bool stacked; ///< of rows of modules, drawn as they are
};

constexpr Symbology symbologies[] = {
    {SymbolType::UpcA, "upca", BARCODE_UPCA, false, false},
    {SymbolType::UpcE, "upce", BARCODE_UPCE, false, false},
    {SymbolType::Ean13, "ean13", BARCODE_EANX, false, false},
    {SymbolType::Ean8, "ean8", BARCODE_EANX, false, false},
    {SymbolType::Code39, "code39", BARCODE_CODE39, true, false},
    {SymbolType::Itf, "itf", BARCODE_C25INTER, true, false},
    {SymbolType::Codabar, "codabar", BARCODE_CODABAR, true, false},
    {SymbolType::Code93, "code93", BARCODE_CODE93, false, false},
    {SymbolType::Code128, "code128", BARCODE_CODE128, false, false},
    {SymbolType::Gs1DataBar, "gs1-databar", BARCODE_DBAR_OMN, false, false},
    {SymbolType::Gs1DataBarLimited, "gs1-databar-limited", BARCODE_DBAR_LTD, false, false},
    {SymbolType::Gs1DataBarExpanded, "gs1-databar-expanded", BARCODE_DBAR_EXP, false, false},
    {SymbolType::Qr, "qr", BARCODE_QRCODE, false, true},
    {SymbolType::MicroQr, "micro-qr", BARCODE_MICROQR, false, true},
    {SymbolType::Pdf417, "pdf417", BARCODE_PDF417, false, true},
    {SymbolType::DataMatrix, "datamatrix", BARCODE_DATAMATRIX, false, true},
    {SymbolType::Aztec, "aztec", BARCODE_AZTEC, false, true},
};

// Dots of a wide element for each module width, at 8 dots for a millimetre (ESC/POS command reference, GS w).
constexpr std::array wideDots{3, 3, 5, 8, 10, 13, 15, 18, 20};

using Encoded = std::unique_ptr<zint_symbol, decltype([](zint_symbol *symbol) { ZBarcode_Delete(symbol); })>;

const Symbology &symbologyOf(SymbolType type)
{
    return *std::find_if(
        std::begin(symbologies), std::end(symbologies), [type](const Symbology &each) { return each.type == type; });
}

Encoded encode(const SymbolRequest &request, const Symbology &symbology, QString *problem)
{
    Encoded symbol(ZBarcode_Create());
    if (!symbol)
        return symbol;
    symbol->symbology = request.subsetB && request.type == SymbolType::Code128 ? BARCODE_CODE128B : symbology.number;
    symbol->input_mode = DATA_MODE;
    if (request.type == SymbolType::Qr || request.type == SymbolType::MicroQr || request.type == SymbolType::Pdf417
        || request.type == SymbolType::Aztec)
        symbol->option_1 = request.level;
    if (request.type == SymbolType::Pdf417)
        symbol->option_2 = request.columns;
    if (request.type == SymbolType::DataMatrix)
        symbol->option_3 = DM_SQUARE;
    const int status = ZBarcode_Encode(symbol.get(), reinterpret_cast<const unsigned char *>(request.data.constData()),
        static_cast<int>(request.data.size()));
    if (status >= ZINT_ERROR) {
        *problem = QStringLiteral("%1 cannot hold this data: %2")
                       .arg(QLatin1String(symbology.name), QString::fromUtf8(symbol->errtxt));
        symbol.reset();
    }
    return symbol;
}

bool moduleAt(const zint_symbol &symbol, int x, int row)
{
    return (symbol.encoded_data[row][x / 8] & 1 << x % 8) != 0;
}

Dots bars(const zint_symbol &symbol, const SymbolRequest &request, bool wideBars)
{
    const int module = std::clamp(request.module, 1, 8);
    const auto dotsOf = [&](int run) { return wideBars && run > 1 ? wideDots[module] : run * module; };
    Dots picture(symbol.width * std::max(module, wideBars ? wideDots[module] : 0), request.height);
    int x = 0;
    for (int first = 0; first < symbol.width;) {
        int end = first;
        while (end < symbol.width && moduleAt(symbol, end, 0) == moduleAt(symbol, first, 0))
            ++end;
        const int dots = dotsOf(end - first);
        if (moduleAt(symbol, first, 0))
            picture.fill({x, 0, dots, request.height});
        x += dots;
        first = end;
    }
    Dots cut(x, request.height);
    cut.stamp(picture, 0, 0);
    return cut;
}

Dots modules(const zint_symbol &symbol, const SymbolRequest &request)
{
    const bool tall = request.type == SymbolType::Pdf417;
    const int module = std::clamp(request.module, 1, 16);
    const int down = tall ? module * std::clamp(request.height, 2, 8) : module;
    Dots picture(symbol.width, symbol.rows);
    for (int y = 0; y < symbol.rows; ++y)
        for (int x = 0; x < symbol.width; ++x)
            if (moduleAt(symbol, x, y))
                picture.set(x, y);
    return picture.scaled(module, down);
}

Dots captionOf(const QString &text, bool fontB)
{
    const Glyphs &font = fontB ? Glyphs::fontB() : Glyphs::fontA();
    const QList<uint> letters = text.toUcs4();
    Dots line(font.width() * static_cast<int>(letters.size()), font.height());
    for (qsizetype i = 0; i < letters.size(); ++i)
        line.stamp(font.cell(letters.at(i)), font.width() * static_cast<int>(i), 0);
    return line;
}

/// The barcode with its data in letters, both in the middle of what they need together.
Dots captioned(const Dots &barcode, const Dots &letters, Caption caption)
{
    constexpr int gap = 4;
    const int line = letters.height() + gap;
    const bool above = caption == Caption::Above || caption == Caption::Both;
    const bool below = caption == Caption::Below || caption == Caption::Both;
    Dots whole(std::max(barcode.width(), letters.width()), barcode.height() + (above ? line : 0) + (below ? line : 0));
    const int top = above ? line : 0;
    const int left = (whole.width() - letters.width()) / 2;
    whole.stamp(barcode, (whole.width() - barcode.width()) / 2, top);
    if (above)
        whole.stamp(letters, left, 0);
    if (below)
        whole.stamp(letters, left, top + barcode.height() + gap);
    return whole;
}

} // namespace

QString nameOf(SymbolType type)
{
    return QString::fromLatin1(symbologyOf(type).name);
}

Dots drawSymbol(const SymbolRequest &request, int widest, QString *problem)
{
    const Symbology &symbology = symbologyOf(request.type);
    const Encoded symbol = encode(request, symbology, problem);
    if (!symbol)
        return {};
    Dots picture = symbology.stacked ? modules(*symbol, request) : bars(*symbol, request, symbology.wideBars);
    if (picture.width() > widest) {
        *problem = QStringLiteral("%1 is %2 dots wide and does not fit into %3")
                       .arg(QLatin1String(symbology.name))
                       .arg(picture.width())
                       .arg(widest);
        return {};
    }
    if (symbology.stacked || request.caption == Caption::None)
        return picture;
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(symbol->text));
    return captioned(picture,
        captionOf(text.isEmpty() ? QString::fromLatin1(request.data) : text, request.captionFontB), request.caption);
}

} // namespace zemrak::paper
