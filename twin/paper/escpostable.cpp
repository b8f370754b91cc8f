// ESC/POS command reference, the commands by their codes. Those that change only how well or how fast a printer prints
// have no effect here; those marked notDrawn would change the paper, and are reported.

#include "twin/paper/escpos.h"

namespace zemrak::paper {

namespace {

/// ESC *: mode, columns, and their dots.
qint64 bitImageLength(QByteArrayView after)
{
    return after.size() < 3 ? -1 : 3 + qint64{wordAt(after, 1)} * (byteAt(after, 0) >= 32 ? 3 : 1);
}

/// GS v 0: mode, bytes across, rows, and their dots.
qint64 rasterLength(QByteArrayView after)
{
    return after.size() < 5 ? -1 : 5 + qint64{wordAt(after, 1)} * wordAt(after, 3);
}

/// GS *: bytes across, bytes down, and their dots.
qint64 downloadLength(QByteArrayView after)
{
    return after.size() < 2 ? -1 : 2 + qint64{byteAt(after, 0)} * byteAt(after, 1) * 8;
}

/// GS 8 L: a number of four bytes, and as many bytes.
qint64 longLength(QByteArrayView after)
{
    return after.size() < 4 ? -1 : 4 + wordAt(after, 0) + (qint64{wordAt(after, 2)} << 16);
}

/// GS k: up to NUL in its older form, a number of bytes in the newer one.
qint64 barcodeLength(QByteArrayView after)
{
    if (after.isEmpty())
        return -1;
    if (byteAt(after, 0) >= 65)
        return after.size() < 2 ? -1 : 2 + byteAt(after, 1);
    const qint64 data = length::until<'\0', 256>(after.sliced(1));
    return data < 0 ? -1 : 1 + data;
}

/// ESC &: bytes down, first and last letter, and for each its columns and their dots.
qint64 lettersLength(QByteArrayView after)
{
    if (after.size() < 3)
        return -1;
    qint64 size = 3;
    for (int letter = byteAt(after, 1); letter <= byteAt(after, 2); ++letter) {
        if (size >= after.size())
            return -1;
        size += 1 + byteAt(after, size) * byteAt(after, 0);
    }
    return size;
}

/// FS q: how many pictures, and for each its bytes across and down and their dots.
qint64 storedLength(QByteArrayView after)
{
    if (after.isEmpty())
        return -1;
    qint64 size = 1;
    for (int picture = 0; picture < byteAt(after, 0); ++picture) {
        if (size > limits::commandBytes)
            return size;
        if (size + 4 > after.size())
            return -1;
        size += 4 + qint64{wordAt(after, size)} * wordAt(after, size + 2) * 8;
    }
    return size;
}

/// GS V: one byte, and a second one where it feeds before it cuts.
qint64 cutLength(QByteArrayView after)
{
    return after.isEmpty() ? -1 : byteAt(after, 0) >= 65 ? 2 : 1;
}

/// DLE DC4: its functions have different lengths.
qint64 realTimeLength(QByteArrayView after)
{
    if (after.isEmpty())
        return -1;
    return byteAt(after, 0) == 8 ? 8 : byteAt(after, 0) == 3 ? 6 : 3;
}

template <int n> constexpr LengthOf fixed = length::fixed<n>;
template <int n> constexpr LengthOf counted = length::counted<n>;

} // namespace

#define BYTES(text) QByteArrayView(text, sizeof(text) - 1)

std::span<const EscPos::Entry> EscPos::table()
{
    static const Entry entries[] = {
        // text
        {BYTES("\x0a"), fixed<0>, &EscPos::lineFeed},
        {BYTES("\x0d"), fixed<0>, &EscPos::carriageReturn},
        {BYTES("\x09"), fixed<0>, &EscPos::tab},
        {BYTES("\x0c"), fixed<0>, &EscPos::notDrawn}, // the end of a page in page mode
        {BYTES("\x18"), fixed<0>, &EscPos::nothing}, // forgets a page in page mode
        {BYTES("\x00"), fixed<0>, &EscPos::nothing}, // fills time on serial lines
        {BYTES("\x1b@"), fixed<0>, &EscPos::reset},
        {BYTES("\x1b!"), fixed<1>, &EscPos::printMode},
        {BYTES("\x1d!"), fixed<1>, &EscPos::size},
        {BYTES("\x1b"
               "E"),
            fixed<1>, &EscPos::bold},
        {BYTES("\x1bG"), fixed<1>, &EscPos::bold},
        {BYTES("\x1b-"), fixed<1>, &EscPos::underline},
        {BYTES("\x1d"
               "B"),
            fixed<1>, &EscPos::reverse},
        {BYTES("\x1bV"), fixed<1>, &EscPos::turn},
        {BYTES("\x1b{"), fixed<1>, &EscPos::upsideDown},
        {BYTES("\x1bM"), fixed<1>, &EscPos::font},
        {BYTES("\x1b "), fixed<1>, &EscPos::letterSpacing},
        {BYTES("\x1b"
               "3"),
            fixed<1>, &EscPos::lineSpacing},
        {BYTES("\x1b"
               "2"),
            fixed<0>, &EscPos::standardSpacing},
        {BYTES("\x1b"
               "a"),
            fixed<1>, &EscPos::align},
        {BYTES("\x1dL"), fixed<2>, &EscPos::leftMargin},
        {BYTES("\x1dW"), fixed<2>, &EscPos::area},
        {BYTES("\x1dP"), fixed<2>, &EscPos::units},
        {BYTES("\x1b$"), fixed<2>, &EscPos::absolutePosition},
        {BYTES("\x1b\\"), fixed<2>, &EscPos::relativePosition},
        {BYTES("\x1b"
               "D"),
            length::until<'\0', 33>, &EscPos::tabStops},
        {BYTES("\x1bJ"), fixed<1>, &EscPos::feedDots},
        {BYTES("\x1b"
               "d"),
            fixed<1>, &EscPos::feedLines},
        {BYTES("\x1bK"), fixed<1>, &EscPos::feedBackDots},
        {BYTES("\x1b"
               "e"),
            fixed<1>, &EscPos::feedBackLines},
        {BYTES("\x1bt"), fixed<1>, &EscPos::codePage},
        {BYTES("\x1bR"), fixed<1>, &EscPos::country},
        {BYTES("\x1b&"), lettersLength, &EscPos::defineLetters},
        {BYTES("\x1b%"), fixed<1>, &EscPos::useOwnLetters},
        {BYTES("\x1b?"), fixed<1>, &EscPos::forgetLetter},
        // the device
        {BYTES("\x1dV"), cutLength, &EscPos::cutPaper},
        {BYTES("\x1bi"), fixed<0>, &EscPos::cutFull},
        {BYTES("\x1bm"), fixed<0>, &EscPos::cutPartial},
        {BYTES("\x1bp"), fixed<3>, &EscPos::pulsePin},
        {BYTES("\x1b(A"), counted<0>, &EscPos::buzzer},
        {BYTES("\x1b"
               "B"),
            fixed<2>, &EscPos::buzzerByTime},
        {BYTES("\x1dr"), fixed<1>, &EscPos::status},
        {BYTES("\x1bv"), fixed<0>, &EscPos::paperSensor},
        {BYTES("\x1bu"), fixed<1>, &EscPos::peripheral},
        {BYTES("\x1dI"), fixed<1>, &EscPos::identify},
        {BYTES("\x1d"
               "a"),
            fixed<1>, &EscPos::automaticStatus},
        {BYTES("\x1d(H"), counted<0>, &EscPos::responses},
        // answered when they arrive, wherever they stand
        {BYTES("\x10\x04"), fixed<1>, &EscPos::nothing},
        {BYTES("\x10\x05"), fixed<1>, &EscPos::nothing},
        {BYTES("\x10\x14"), realTimeLength, &EscPos::nothing},
        // pictures
        {BYTES("\x1b*"), bitImageLength, &EscPos::bitImage},
        {BYTES("\x1dv0"), rasterLength, &EscPos::raster},
        {BYTES("\x1d(L"), counted<0>, &EscPos::graphics},
        {BYTES("\x1d"
               "8L"),
            longLength, &EscPos::longGraphics},
        {BYTES("\x1d*"), downloadLength, &EscPos::defineDownloaded},
        {BYTES("\x1d/"), fixed<1>, &EscPos::printDownloaded},
        {BYTES("\x1cq"), storedLength, &EscPos::defineStored},
        {BYTES("\x1cp"), fixed<2>, &EscPos::printStored},
        // symbols
        {BYTES("\x1dh"), fixed<1>, &EscPos::symbolHeight},
        {BYTES("\x1dw"), fixed<1>, &EscPos::symbolModule},
        {BYTES("\x1dH"), fixed<1>, &EscPos::captionPlace},
        {BYTES("\x1d"
               "f"),
            fixed<1>, &EscPos::captionFont},
        {BYTES("\x1dk"), barcodeLength, &EscPos::barcode},
        {BYTES("\x1d(k"), counted<0>, &EscPos::matrixSymbol},
        // of no effect on the paper
        {BYTES("\x1b="), fixed<1>, &EscPos::nothing}, // the device that listens
        {BYTES("\x1bU"), fixed<1>, &EscPos::nothing}, // one direction
        {BYTES("\x1b"
               "c3"),
            fixed<1>, &EscPos::nothing}, // which sensor tells of the paper's end
        {BYTES("\x1b"
               "c4"),
            fixed<1>, &EscPos::nothing}, // which sensor stops printing
        {BYTES("\x1b"
               "c5"),
            fixed<1>, &EscPos::nothing}, // the feed button
        {BYTES("\x1br"), fixed<1>, &EscPos::nothing}, // the colour
        {BYTES("\x1bS"), fixed<0>, &EscPos::nothing}, // standard mode, in which it is
        {BYTES("\x1d(D"), counted<0>, &EscPos::nothing}, // which real-time commands count
        {BYTES("\x1d(E"), counted<0>, &EscPos::nothing}, // settings
        {BYTES("\x1d(K"), counted<0>, &EscPos::nothing}, // density and speed
        {BYTES("\x1d(M"), counted<0>, &EscPos::nothing}, // settings kept and loaded
        {BYTES("\x1d"
               "b"),
            fixed<1>, &EscPos::nothing}, // smoothing
        {BYTES("\x1dT"), fixed<1>, &EscPos::nothing}, // to the line's start
        {BYTES("\x1c."), fixed<0>, &EscPos::nothing}, // no letters of two bytes
        {BYTES("\x1c!"), fixed<1>, &EscPos::nothing}, // the looks of letters of two bytes
        {BYTES("\x1c-"), fixed<1>, &EscPos::nothing},
        {BYTES("\x1c"
               "C"),
            fixed<1>, &EscPos::nothing}, // how such letters are coded
        {BYTES("\x1c(A"), counted<0>, &EscPos::nothing}, // and their font
        {BYTES("\x1cS"), fixed<2>, &EscPos::nothing},
        {BYTES("\x1cW"), fixed<1>, &EscPos::nothing},
        // known, and beyond this printer
        {BYTES("\x1bL"), fixed<0>, &EscPos::notDrawn}, // page mode
        {BYTES("\x1b\x0c"), fixed<0>, &EscPos::notDrawn},
        {BYTES("\x1bT"), fixed<1>, &EscPos::notDrawn},
        {BYTES("\x1bW"), fixed<8>, &EscPos::notDrawn},
        {BYTES("\x1d$"), fixed<2>, &EscPos::notDrawn},
        {BYTES("\x1d\\"), fixed<2>, &EscPos::notDrawn},
        {BYTES("\x1d:"), fixed<0>, &EscPos::notDrawn}, // macros
        {BYTES("\x1d^"), fixed<3>, &EscPos::notDrawn},
        {BYTES("\x1c&"), fixed<0>, &EscPos::notDrawn}, // letters of two bytes
        {BYTES("\x1c"
               "2"),
            fixed<74>, &EscPos::notDrawn},
        {BYTES("\x1c?"), fixed<2>, &EscPos::notDrawn},
        {BYTES("\x1c("), counted<1>, &EscPos::unknownFunction},
        {BYTES("\x1d("), counted<1>, &EscPos::unknownFunction},
        {BYTES("\x1b("), counted<1>, &EscPos::unknownFunction},
    };
    return entries;
}

#undef BYTES

} // namespace zemrak::paper
