#include "twin/paper/escpos.h"

#include <algorithm>

namespace zemrak::paper {

namespace {

constexpr qsizetype longestSymbol = 7089; // digits in the largest QR code

struct Coded
{
    int code; ///< of the newer form; the older one counts the first seven from 0
    SymbolType type;
};

// GS k: ESC/POS command reference.
constexpr Coded barcodes[] = {{65, SymbolType::UpcA}, {66, SymbolType::UpcE}, {67, SymbolType::Ean13},
    {68, SymbolType::Ean8}, {69, SymbolType::Code39}, {70, SymbolType::Itf}, {71, SymbolType::Codabar},
    {72, SymbolType::Code93}, {73, SymbolType::Code128}, {75, SymbolType::Gs1DataBar},
    {77, SymbolType::Gs1DataBarLimited}, {78, SymbolType::Gs1DataBarExpanded}, {79, SymbolType::Code128}};

/// The data of a Code 128 as it is to be read: "{A", "{B" and "{C" choose how it is written, "{{" is a brace, and after
/// "{C" each byte is a pair of digits.
/// @returns false when it asks for a function character
bool spellCode128(QByteArrayView data, SymbolRequest *request)
{
    bool pairs = false;
    bool onlyB = true;
    bool function = false;
    for (qsizetype i = 0; i < data.size(); ++i) {
        const char byte = data[i];
        const char next = i + 1 < data.size() ? data[i + 1] : '\0';
        if (byte == '{' && next != '\0') {
            ++i;
            if (next == '{')
                request->data.append('{');
            else if (next >= 'A' && next <= 'C') {
                pairs = next == 'C';
                onlyB = onlyB && next == 'B';
            } else {
                function = true;
            }
        } else if (pairs) {
            request->data.append(QByteArray::number(static_cast<uchar>(byte)).rightJustified(2, '0'));
        } else {
            request->data.append(byte);
        }
    }
    request->subsetB = onlyB;
    return !function;
}

/// Without the start and stop characters of Code 39, which the library adds by itself.
QByteArray withoutStars(QByteArrayView data)
{
    if (data.size() >= 2 && data.front() == '*' && data.back() == '*')
        return data.sliced(1, data.size() - 2).toByteArray();
    return data.toByteArray();
}

/// What function 80 stores, after its mode.
QByteArray stored(QByteArrayView parameters)
{
    const QByteArrayView data = parameters.isEmpty() ? parameters : parameters.sliced(1);
    return data.first(std::min(longestSymbol, data.size())).toByteArray();
}

} // namespace

void EscPos::symbolHeight(Bytes parameters)
{
    m_barcode.height = std::max(1, byteAt(parameters, 0));
}

void EscPos::symbolModule(Bytes parameters)
{
    const int module = byteAt(parameters, 0);
    if (module < 1 || module > 8)
        problem(QStringLiteral("unknown width of a barcode's bars"));
    else
        m_barcode.module = module;
}

void EscPos::captionPlace(Bytes parameters)
{
    const int place = digitAt(parameters, 0);
    if (place > 3)
        problem(QStringLiteral("unknown place of a barcode's letters"));
    else
        m_barcode.caption = static_cast<Caption>(place);
}

void EscPos::captionFont(Bytes parameters)
{
    m_barcode.captionFontB = digitAt(parameters, 0) == 1;
}

void EscPos::barcode(Bytes parameters)
{
    const int given = byteAt(parameters, 0);
    const int code = given <= 6 ? given + 65 : given;
    Bytes data = given <= 6 ? parameters.sliced(1) : parameters.sliced(2);
    if (given <= 6 && data.endsWith('\0'))
        data.chop(1);
    const auto *found = std::find_if(
        std::begin(barcodes), std::end(barcodes), [code](const Coded &each) { return each.code == code; });
    if (found == std::end(barcodes)) {
        problem(QStringLiteral("this printer does not have this barcode"));
        return;
    }
    SymbolRequest request = m_barcode;
    request.type = found->type;
    request.data.clear();
    if (code == 73 && data.startsWith('{')) {
        if (!spellCode128(data, &request)) {
            problem(QStringLiteral("this printer does not draw function characters"));
            return;
        }
    } else if (code == 73) {
        problem(QStringLiteral("Code 128 begins with a brace and the name of its set"));
        return;
    } else {
        request.data = found->type == SymbolType::Code39 ? withoutStars(data) : data.toByteArray();
    }
    symbol(request);
}

// GS ( k: ESC/POS command reference, the symbols by their numbers 48 to 54 and their functions.
void EscPos::matrixSymbol(Bytes parameters)
{
    const Bytes rest = parameters.sliced(2);
    if (rest.size() < 2) {
        problem(QStringLiteral("unknown function"));
        return;
    }
    const int function = byteAt(rest, 1);
    switch (byteAt(rest, 0)) {
    case 48:
        return pdf417(function, rest.sliced(2));
    case 49:
        return qr(function, rest.sliced(2));
    case 54:
        return dataMatrix(function, rest.sliced(2));
    default:
        problem(QStringLiteral("this printer does not have this symbol"));
    }
}

void EscPos::qr(int function, Bytes parameters)
{
    switch (function) {
    case 65:
        m_qr.type = byteAt(parameters, 0) == 51 ? SymbolType::MicroQr : SymbolType::Qr;
        break;
    case 67:
        m_qr.module = std::clamp(byteAt(parameters, 0), 1, 16);
        break;
    case 69:
        m_qr.level = std::clamp(byteAt(parameters, 0) - 47, 1, 4);
        break;
    case 80:
        m_qr.data = stored(parameters);
        break;
    case 81:
        symbol(m_qr);
        break;
    default:
        problem(QStringLiteral("unknown function"));
    }
}

void EscPos::pdf417(int function, Bytes parameters)
{
    switch (function) {
    case 65:
        m_pdf417.columns = std::min(30, byteAt(parameters, 0));
        break;
    case 66: // rows: the library chooses them
        break;
    case 67:
        m_pdf417.module = std::clamp(byteAt(parameters, 0), 2, 8);
        break;
    case 68:
        m_pdf417.height = std::clamp(byteAt(parameters, 0), 2, 8);
        break;
    case 69: // in levels, or in a share of the data
        m_pdf417.level = byteAt(parameters, 0) == 48 ? std::clamp(byteAt(parameters, 1) - 48, 0, 8) : -1;
        break;
    case 80:
        m_pdf417.data = stored(parameters);
        break;
    case 81:
        symbol(m_pdf417);
        break;
    default:
        problem(QStringLiteral("unknown function"));
    }
}

void EscPos::dataMatrix(int function, Bytes parameters)
{
    switch (function) {
    case 66: // its shape and size: square, and as it fits
        break;
    case 67:
        m_dataMatrix.module = std::clamp(byteAt(parameters, 0), 2, 16);
        break;
    case 80:
        m_dataMatrix.data = stored(parameters);
        break;
    case 81:
        symbol(m_dataMatrix);
        break;
    default:
        problem(QStringLiteral("unknown function"));
    }
}

} // namespace zemrak::paper
