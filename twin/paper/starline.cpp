#include "twin/paper/starline.h"

#include "twin/paper/glyphs.h"

#include <algorithm>
#include <array>
#include <vector>

namespace zemrak::paper {

namespace {

constexpr int dotsPerMillimetre = 8;
constexpr int usualSpacing = 4 * dotsPerMillimetre; // ESC z 1
constexpr int narrow = 3 * dotsPerMillimetre;

/// ESC K, ESC L: columns of eight dots.
qint64 columnsLength(QByteArrayView after)
{
    return after.size() < 2 ? -1 : 2 + wordAt(after, 0);
}

/// ESC X: columns of 24 dots.
qint64 tallColumnsLength(QByteArrayView after)
{
    return after.size() < 2 ? -1 : 2 + 3 * qint64{wordAt(after, 0)};
}

/// ESC k: 24 rows of so many bytes.
qint64 rowsLength(QByteArrayView after)
{
    return after.size() < 2 ? -1 : 2 + 24 * qint64{wordAt(after, 0)};
}

/// ESC GS S: mode, bytes across, rows, tone, and the dots.
qint64 rasterLength(QByteArrayView after)
{
    return after.size() < 6 ? -1 : 6 + qint64{wordAt(after, 1)} * wordAt(after, 3);
}

/// ESC b: four bytes, and the data up to RS.
qint64 barcodeLength(QByteArrayView after)
{
    if (after.size() < 4)
        return -1;
    const qint64 data = length::until<'\x1e', 256>(after.sliced(4));
    return data < 0 ? -1 : 4 + data;
}

template<int n> constexpr LengthOf fixed = length::fixed<n>;
template<int n> constexpr LengthOf counted = length::counted<n>;
constexpr LengthOf digits = length::until<'\0', 8>; // a number in ASCII and a NUL

} // namespace

#define BYTES(text) QByteArrayView(text, sizeof(text) - 1)

std::span<const StarLine::Entry> StarLine::table()
{
    using S = StarLine;
    static const Entry entries[] = {
        // letters and lines
        {BYTES("\x0a"), fixed<0>, &S::lineFeed},
        {BYTES("\x0d"), fixed<0>, &S::nothing},
        {BYTES("\x0c"), fixed<0>, &S::formFeed},
        {BYTES("\x09"), fixed<0>, &S::tab},
        {BYTES("\x00"), fixed<0>, &S::nothing},
        {BYTES("\x18"), fixed<0>, &S::reset},
        {BYTES("\x1b@"), fixed<0>, &S::reset},
        {BYTES("\x1b""D"), length::until<'\0', 17>, &S::tabStops},
        {BYTES("\x0e"), fixed<0>, &S::fixedWide, 2},
        {BYTES("\x14"), fixed<0>, &S::fixedWide, 1},
        {BYTES("\x1b\x0e"), fixed<0>, &S::fixedTall, 2},
        {BYTES("\x1b\x14"), fixed<0>, &S::fixedTall, 1},
        {BYTES("\x1bW"), fixed<1>, &S::wide},
        {BYTES("\x1bh"), fixed<1>, &S::tall},
        {BYTES("\x1bi"), fixed<2>, &S::size},
        {BYTES("\x1b""E"), fixed<0>, &S::bold, 1},
        {BYTES("\x1b""F"), fixed<0>, &S::bold, 0},
        {BYTES("\x1b-"), fixed<1>, &S::underline},
        {BYTES("\x1b_"), fixed<1>, &S::overline},
        {BYTES("\x1b""4"), fixed<0>, &S::reverse, 1},
        {BYTES("\x1b""5"), fixed<0>, &S::reverse, 0},
        {BYTES("\x0f"), fixed<0>, &S::upsideDown, 1},
        {BYTES("\x12"), fixed<0>, &S::upsideDown, 0},
        {BYTES("\x1b\x1e""F"), fixed<1>, &S::font},
        {BYTES("\x1bM"), fixed<0>, &S::fontPitch, 12},
        {BYTES("\x1bP"), fixed<0>, &S::fontPitch, 15},
        {BYTES("\x1b:"), fixed<0>, &S::fontPitch, 16},
        {BYTES("\x1b "), fixed<1>, &S::letterSpacing},
        {BYTES("\x1bz"), fixed<1>, &S::lineSpacing},
        {BYTES("\x1b""0"), fixed<0>, &S::narrowSpacing},
        {BYTES("\x1b\x1d""a"), fixed<1>, &S::align},
        {BYTES("\x1bl"), fixed<1>, &S::leftMargin},
        {BYTES("\x1bQ"), fixed<1>, &S::rightMargin},
        {BYTES("\x1b\x1d""A"), fixed<2>, &S::absolutePosition},
        {BYTES("\x1b\x1dR"), fixed<2>, &S::relativePosition},
        {BYTES("\x1b""a"), fixed<1>, &S::feedLines},
        {BYTES("\x1bJ"), fixed<1>, &S::feedQuarters},
        {BYTES("\x1bI"), fixed<1>, &S::feedEighths},
        {BYTES("\x1b\x1dt"), fixed<1>, &S::codePage},
        {BYTES("\x1bR"), fixed<1>, &S::country},
        // pictures
        {BYTES("\x1bK"), columnsLength, &S::columnImage, 2},
        {BYTES("\x1bL"), columnsLength, &S::columnImage, 1},
        {BYTES("\x1bX"), tallColumnsLength, &S::columnImage, 3},
        {BYTES("\x1bk"), rowsLength, &S::rowImage},
        {BYTES("\x1b\x1dS"), rasterLength, &S::raster},
        {BYTES("\x1b*rA"), fixed<0>, &S::rasterMode, 1},
        {BYTES("\x1b*rR"), fixed<0>, &S::nothing}, // its settings are as they were
        {BYTES("\x1b*rB"), fixed<0>, &S::rasterMode, 0},
        {BYTES("\x1b*rC"), fixed<0>, &S::nothing}, // rows are printed as they come: nothing waits
        {BYTES("\x1b*rY"), digits, &S::rasterFeed},
        {BYTES("\x1b*rE"), digits, &S::nothing},
        {BYTES("\x1b*rF"), digits, &S::nothing},
        {BYTES("\x1b*rP"), digits, &S::nothing},
        {BYTES("\x1b*rQ"), digits, &S::nothing},
        {BYTES("\x1b*rT"), digits, &S::nothing},
        {BYTES("\x1b*rK"), digits, &S::nothing},
        {BYTES("\x1b*rml"), digits, &S::notDrawn},
        {BYTES("\x1b*rmr"), digits, &S::notDrawn},
        {BYTES("\x1b*rD"), digits, &S::drawer, 1},
        {BYTES("b"), columnsLength, &S::rasterRow, 1}, // these two in raster mode only
        {BYTES("k"), columnsLength, &S::rasterRow, 0},
        {BYTES("\x1b\x0c\x00"), fixed<0>, &S::rasterEnd},
        {BYTES("\x1b\x0c\x04"), fixed<0>, &S::rasterEnd},
        // symbols
        {BYTES("\x1b""b"), barcodeLength, &S::barcode},
        {BYTES("\x1b\x1dyS0"), fixed<1>, &S::qrModel},
        {BYTES("\x1b\x1dyS1"), fixed<1>, &S::qrLevel},
        {BYTES("\x1b\x1dyS2"), fixed<1>, &S::qrModule},
        {BYTES("\x1b\x1dyD1"), counted<1>, &S::qrData},
        {BYTES("\x1b\x1dyP"), fixed<0>, &S::qrPrint},
        {BYTES("\x1b\x1dxS0"), fixed<3>, &S::pdfSize},
        {BYTES("\x1b\x1dxS1"), fixed<1>, &S::pdfLevel},
        {BYTES("\x1b\x1dxS2"), fixed<1>, &S::pdfModule},
        {BYTES("\x1b\x1dxS3"), fixed<1>, &S::pdfAspect},
        {BYTES("\x1b\x1dxD"), counted<0>, &S::pdfData},
        {BYTES("\x1b\x1dxP"), fixed<0>, &S::pdfPrint},
        // the device
        {BYTES("\x1b""d"), fixed<1>, &S::cutPaper},
        {BYTES("\x07"), fixed<0>, &S::drawer, 1},
        {BYTES("\x1c"), fixed<0>, &S::drawer, 1},
        {BYTES("\x1a"), fixed<0>, &S::drawer, 2},
        {BYTES("\x19"), fixed<0>, &S::drawer, 2},
        {BYTES("\x1b\x07"), fixed<2>, &S::nothing}, // how long drawer 1 is pulsed
        {BYTES("\x1b\x1d\x07"), fixed<3>, &S::buzzer},
        {BYTES("\x1b\x1d\x19\x11"), fixed<3>, &S::nothing}, // how long the buzzer sounds
        {BYTES("\x1b\x1d\x19\x12"), fixed<3>, &S::buzzer},
        {BYTES("\x1b\x1e""a"), fixed<1>, &S::automaticStatus},
        {BYTES("\x17"), fixed<0>, &S::endMark},
        {BYTES("\x1b\x1e""E"), fixed<1>, &S::resetEndMarks},
        {BYTES("\x1b\x06\x01"), fixed<0>, &S::nothing}, // answered when they arrive, wherever they stand
        {BYTES("\x1b\x06\x18"), fixed<0>, &S::nothing},
        // of no effect on the paper
        {BYTES("\x1b/"), fixed<1>, &S::nothing}, // a stroke through zero
        {BYTES("\x1b\x1e""d"), fixed<1>, &S::nothing}, // density
        {BYTES("\x1b\x1er"), fixed<1>, &S::nothing}, // speed
        {BYTES("\x1b\x1d\x03"), fixed<3>, &S::nothing}, // marks of a document
        // known, and beyond this printer
        {BYTES("\x05"), fixed<0>, &S::notDrawn}, // questions for one byte of status
        {BYTES("\x04"), fixed<0>, &S::notDrawn},
        {BYTES("\x0b"), fixed<0>, &S::notDrawn}, // vertical tabs
        {BYTES("\x1b""B"), length::until<'\0', 17>, &S::notDrawn},
        {BYTES("\x1b""C"), fixed<1>, &S::notDrawn}, // pages
        {BYTES("\x1bN"), fixed<1>, &S::notDrawn},
        {BYTES("\x1b\x1cp"), fixed<2>, &S::notDrawn}, // stored pictures
    };
    return entries;
}

#undef BYTES

StarLine::StarLine(int dots, Listener &listener)
    : PrinterLanguage(dots, listener)
{
}

std::span<const CommandReader::Command> StarLine::commands() const
{
    static const std::vector<Command> list = [] {
        std::vector<Command> all;
        for (std::size_t i = 0; i < table().size(); ++i)
            all.push_back({table()[i].prefix, table()[i].length, static_cast<int>(i)});
        return all;
    }();
    return list;
}

bool StarLine::isText(uchar byte) const
{
    return m_rasterMode ? byte != 'b' && byte != 'k' && CommandReader::isText(byte) : CommandReader::isText(byte);
}

void StarLine::run(int id, QByteArrayView parameters, qint64 offset)
{
    const Entry &entry = table()[static_cast<std::size_t>(id)];
    startCommand(entry.prefix, parameters, offset);
    m_fixed = entry.fixed;
    (this->*entry.action)(parameters);
}

void StarLine::initialise()
{
    PrinterLanguage::initialise();
    press().lineSpacing = usualSpacing;
    m_rasterMode = false;
    m_qr = {.type = SymbolType::Qr, .module = 3, .level = 1};
    m_pdf417 = {.type = SymbolType::Pdf417, .module = 2, .height = 3, .level = 1};
}

void StarLine::notDrawn(Bytes)
{
    problem(QStringLiteral("this printer does not have this command"));
}

void StarLine::lineFeed(Bytes)
{
    press().lineFeed();
}

void StarLine::formFeed(Bytes)
{
    if (!press().atLineStart())
        press().lineFeed();
}

void StarLine::tab(Bytes)
{
    press().tab();
}

void StarLine::tabStops(Bytes parameters)
{
    QList<int> columns;
    for (const char column : parameters)
        if (column != '\0')
            columns.append(static_cast<uchar>(column));
    press().setTabs(columns);
}

void StarLine::reset(Bytes)
{
    initialise();
    ask(Request::Initialise);
}

void StarLine::fixedWide(Bytes)
{
    press().style.across = m_fixed;
}

void StarLine::fixedTall(Bytes)
{
    press().style.down = m_fixed;
}

void StarLine::wide(Bytes parameters)
{
    press().style.across = std::min(6, digitAt(parameters, 0) + 1);
}

void StarLine::tall(Bytes parameters)
{
    press().style.down = std::min(6, digitAt(parameters, 0) + 1);
}

void StarLine::size(Bytes parameters)
{
    const int down = digitAt(parameters, 0);
    const int across = digitAt(parameters, 1);
    if (down > 5 || across > 5) {
        problem(QStringLiteral("letters are enlarged 6 times at most"));
        return;
    }
    press().style.down = down + 1;
    press().style.across = across + 1;
}

void StarLine::bold(Bytes)
{
    press().style.bold = m_fixed != 0;
}

void StarLine::underline(Bytes parameters)
{
    press().style.underline = digitAt(parameters, 0) != 0 ? 2 : 0;
}

void StarLine::overline(Bytes parameters)
{
    press().style.overline = digitAt(parameters, 0) != 0;
}

void StarLine::reverse(Bytes)
{
    press().style.reverse = m_fixed != 0;
}

void StarLine::upsideDown(Bytes)
{
    if (press().atLineStart())
        press().upsideDown = m_fixed != 0;
    else
        problem(QStringLiteral("only works at the start of a line"));
}

void StarLine::font(Bytes parameters)
{
    const int font = digitAt(parameters, 0);
    press().style.fontB = font == 1;
    if (font > 1)
        problem(QStringLiteral("this printer has the fonts A and B"));
}

void StarLine::fontPitch(Bytes)
{
    press().style.fontB = false;
    press().style.spacing = m_fixed - Glyphs::fontA().width();
}

void StarLine::letterSpacing(Bytes parameters)
{
    press().style.spacing = std::min(15, digitAt(parameters, 0));
}

void StarLine::lineSpacing(Bytes parameters)
{
    press().lineSpacing = digitAt(parameters, 0) == 0 ? narrow : usualSpacing;
}

void StarLine::narrowSpacing(Bytes)
{
    press().lineSpacing = narrow;
}

void StarLine::align(Bytes parameters)
{
    const int edge = digitAt(parameters, 0);
    if (edge > 2)
        problem(QStringLiteral("unknown alignment"));
    else
        press().edge = static_cast<Edge>(edge);
}

// Margins are set in letters of the font.
void StarLine::leftMargin(Bytes parameters)
{
    const int column = Glyphs::fontA().width();
    const int left = column * byteAt(parameters, 0);
    press().setArea(left, std::max(1, press().left() + press().areaWidth() - left));
}

void StarLine::rightMargin(Bytes parameters)
{
    const int column = Glyphs::fontA().width();
    press().setArea(press().left(), std::max(1, column * byteAt(parameters, 0) - press().left()));
}

void StarLine::absolutePosition(Bytes parameters)
{
    press().moveTo(wordAt(parameters, 0));
}

void StarLine::relativePosition(Bytes parameters)
{
    const int dots = wordAt(parameters, 0);
    press().moveTo(press().pen() + (dots >= 0x8000 ? dots - 0x10000 : dots));
}

void StarLine::feedLines(Bytes parameters)
{
    press().feed(byteAt(parameters, 0) * press().lineSpacing);
}

void StarLine::feedQuarters(Bytes parameters)
{
    press().feed(byteAt(parameters, 0) * dotsPerMillimetre / 4);
}

void StarLine::feedEighths(Bytes parameters)
{
    press().feed(byteAt(parameters, 0) * dotsPerMillimetre / 8);
}

void StarLine::codePage(Bytes parameters)
{
    const int number = byteAt(parameters, 0);
    selectPage(CodePage::ofStar(number), number);
}

void StarLine::country(Bytes parameters)
{
    selectCountry(digitAt(parameters, 0));
}

std::unique_ptr<PrinterLanguage> makeStarLine(int dots, Listener &listener)
{
    return std::make_unique<StarLine>(dots, listener);
}

} // namespace zemrak::paper
