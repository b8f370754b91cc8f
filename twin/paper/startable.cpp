// Star Line Mode command reference, the commands by their codes. Those that change only how well or how fast a
// printer prints have no effect here; those marked notDrawn would change the paper, and are reported.

#include "twin/paper/starline.h"

namespace zemrak::paper {

namespace {

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

template <int n> constexpr LengthOf fixed = length::fixed<n>;
template <int n> constexpr LengthOf counted = length::counted<n>;
constexpr LengthOf digits = length::until<'\0', 8>; // a number in ASCII and a NUL

} // namespace

#define BYTES(text) QByteArrayView(text, sizeof(text) - 1)

std::span<const StarLine::Entry> StarLine::table()
{
    using S = StarLine;
    static const Entry entries[] = {
        // letters and lines
        {BYTES("\x0a"), fixed<0>, &S::lineFeed}, {BYTES("\x0d"), fixed<0>, &S::nothing},
        {BYTES("\x0c"), fixed<0>, &S::formFeed}, {BYTES("\x09"), fixed<0>, &S::tab},
        {BYTES("\x00"), fixed<0>, &S::nothing}, {BYTES("\x18"), fixed<0>, &S::reset},
        {BYTES("\x1b@"), fixed<0>, &S::reset},
        {BYTES("\x1b"
               "D"),
            length::until<'\0', 17>, &S::tabStops},
        {BYTES("\x0e"), fixed<0>, &S::fixedWide, 2}, {BYTES("\x14"), fixed<0>, &S::fixedWide, 1},
        {BYTES("\x1b\x0e"), fixed<0>, &S::fixedTall, 2}, {BYTES("\x1b\x14"), fixed<0>, &S::fixedTall, 1},
        {BYTES("\x1bW"), fixed<1>, &S::wide}, {BYTES("\x1bh"), fixed<1>, &S::tall},
        {BYTES("\x1bi"), fixed<2>, &S::size},
        {BYTES("\x1b"
               "E"),
            fixed<0>, &S::bold, 1},
        {BYTES("\x1b"
               "F"),
            fixed<0>, &S::bold, 0},
        {BYTES("\x1b-"), fixed<1>, &S::underline}, {BYTES("\x1b_"), fixed<1>, &S::overline},
        {BYTES("\x1b"
               "4"),
            fixed<0>, &S::reverse, 1},
        {BYTES("\x1b"
               "5"),
            fixed<0>, &S::reverse, 0},
        {BYTES("\x0f"), fixed<0>, &S::upsideDown, 1}, {BYTES("\x12"), fixed<0>, &S::upsideDown, 0},
        {BYTES("\x1b\x1e"
               "F"),
            fixed<1>, &S::font},
        {BYTES("\x1bM"), fixed<0>, &S::fontPitch, 12}, {BYTES("\x1bP"), fixed<0>, &S::fontPitch, 15},
        {BYTES("\x1b:"), fixed<0>, &S::fontPitch, 16}, {BYTES("\x1b "), fixed<1>, &S::letterSpacing},
        {BYTES("\x1bz"), fixed<1>, &S::lineSpacing},
        {BYTES("\x1b"
               "0"),
            fixed<0>, &S::narrowSpacing},
        {BYTES("\x1b\x1d"
               "a"),
            fixed<1>, &S::align},
        {BYTES("\x1bl"), fixed<1>, &S::leftMargin}, {BYTES("\x1bQ"), fixed<1>, &S::rightMargin},
        {BYTES("\x1b\x1d"
               "A"),
            fixed<2>, &S::absolutePosition},
        {BYTES("\x1b\x1dR"), fixed<2>, &S::relativePosition},
        {BYTES("\x1b"
               "a"),
            fixed<1>, &S::feedLines},
        {BYTES("\x1bJ"), fixed<1>, &S::feedQuarters}, {BYTES("\x1bI"), fixed<1>, &S::feedEighths},
        {BYTES("\x1b\x1dt"), fixed<1>, &S::codePage}, {BYTES("\x1bR"), fixed<1>, &S::country},
        // pictures
        {BYTES("\x1bK"), columnsLength, &S::columnImage, 2}, {BYTES("\x1bL"), columnsLength, &S::columnImage, 1},
        {BYTES("\x1bX"), tallColumnsLength, &S::columnImage, 3}, {BYTES("\x1bk"), rowsLength, &S::rowImage},
        {BYTES("\x1b\x1dS"), rasterLength, &S::raster}, {BYTES("\x1b*rA"), fixed<0>, &S::rasterMode, 1},
        {BYTES("\x1b*rR"), fixed<0>, &S::nothing}, // its settings are as they were
        {BYTES("\x1b*rB"), fixed<0>, &S::rasterMode, 0},
        {BYTES("\x1b*rC"), fixed<0>, &S::nothing}, // rows are printed as they come: nothing waits
        {BYTES("\x1b*rY"), digits, &S::rasterFeed}, {BYTES("\x1b*rE"), digits, &S::nothing},
        {BYTES("\x1b*rF"), digits, &S::nothing}, {BYTES("\x1b*rP"), digits, &S::nothing},
        {BYTES("\x1b*rQ"), digits, &S::nothing}, {BYTES("\x1b*rT"), digits, &S::nothing},
        {BYTES("\x1b*rK"), digits, &S::nothing}, {BYTES("\x1b*rml"), digits, &S::notDrawn},
        {BYTES("\x1b*rmr"), digits, &S::notDrawn}, {BYTES("\x1b*rD"), digits, &S::drawer, 1},
        {BYTES("b"), columnsLength, &S::rasterRow, 1}, // these two in raster mode only
        {BYTES("k"), columnsLength, &S::rasterRow, 0}, {BYTES("\x1b\x0c\x00"), fixed<0>, &S::rasterEnd},
        {BYTES("\x1b\x0c\x04"), fixed<0>, &S::rasterEnd},
        // symbols
        {BYTES("\x1b"
               "b"),
            barcodeLength, &S::barcode},
        {BYTES("\x1b\x1dyS0"), fixed<1>, &S::qrModel}, {BYTES("\x1b\x1dyS1"), fixed<1>, &S::qrLevel},
        {BYTES("\x1b\x1dyS2"), fixed<1>, &S::qrModule}, {BYTES("\x1b\x1dyD1"), counted<1>, &S::qrData},
        {BYTES("\x1b\x1dyP"), fixed<0>, &S::qrPrint}, {BYTES("\x1b\x1dxS0"), fixed<3>, &S::pdfSize},
        {BYTES("\x1b\x1dxS1"), fixed<1>, &S::pdfLevel}, {BYTES("\x1b\x1dxS2"), fixed<1>, &S::pdfModule},
        {BYTES("\x1b\x1dxS3"), fixed<1>, &S::pdfAspect}, {BYTES("\x1b\x1dxD"), counted<0>, &S::pdfData},
        {BYTES("\x1b\x1dxP"), fixed<0>, &S::pdfPrint},
        // the device
        {BYTES("\x1b"
               "d"),
            fixed<1>, &S::cutPaper},
        {BYTES("\x07"), fixed<0>, &S::drawer, 1}, {BYTES("\x1c"), fixed<0>, &S::drawer, 1},
        {BYTES("\x1a"), fixed<0>, &S::drawer, 2}, {BYTES("\x19"), fixed<0>, &S::drawer, 2},
        {BYTES("\x1b\x07"), fixed<2>, &S::nothing}, // how long drawer 1 is pulsed
        {BYTES("\x1b\x1d\x07"), fixed<3>, &S::buzzer},
        {BYTES("\x1b\x1d\x19\x11"), fixed<3>, &S::nothing}, // how long the buzzer sounds
        {BYTES("\x1b\x1d\x19\x12"), fixed<3>, &S::buzzer},
        {BYTES("\x1b\x1e"
               "a"),
            fixed<1>, &S::automaticStatus},
        {BYTES("\x17"), fixed<0>, &S::endMark},
        {BYTES("\x1b\x1e"
               "E"),
            fixed<1>, &S::resetEndMarks},
        {BYTES("\x1b\x06\x01"), fixed<0>, &S::nothing}, // answered when they arrive, wherever they stand
        {BYTES("\x1b\x06\x18"), fixed<0>, &S::nothing},
        // of no effect on the paper
        {BYTES("\x1b/"), fixed<1>, &S::nothing}, // a stroke through zero
        {BYTES("\x1b\x1e"
               "d"),
            fixed<1>, &S::nothing}, // density
        {BYTES("\x1b\x1er"), fixed<1>, &S::nothing}, // speed
        {BYTES("\x1b\x1d\x03"), fixed<3>, &S::nothing}, // marks of a document
        {BYTES("\x1bs"), fixed<2>, &S::nothing}, // the space beside letters of two bytes
        {BYTES("\x1bt"), fixed<2>, &S::nothing},
        // known, and beyond this printer
        {BYTES("\x1bp"), fixed<0>, &S::notDrawn}, // letters of two bytes
        {BYTES("\x05"), fixed<0>, &S::notDrawn}, // questions for one byte of status
        {BYTES("\x04"), fixed<0>, &S::notDrawn}, {BYTES("\x0b"), fixed<0>, &S::notDrawn}, // vertical tabs
        {BYTES("\x1b"
               "B"),
            length::until<'\0', 17>, &S::notDrawn},
        {BYTES("\x1b"
               "C"),
            fixed<1>, &S::notDrawn}, // pages
        {BYTES("\x1bN"), fixed<1>, &S::notDrawn}, {BYTES("\x1b\x1cp"), fixed<2>, &S::notDrawn}, // stored pictures
    };
    return entries;
}

#undef BYTES

} // namespace zemrak::paper
