#pragma once

#include "twin/paper/language.h"

namespace zemrak::paper {

/// Star Line Mode. Facts: Star Line Mode command reference. The head has 8 dots for a millimetre.
class StarLine : public PrinterLanguage
{
public:
    StarLine(int dots, Listener &listener);
    void initialise() override;

protected:
    [[nodiscard]] std::span<const Command> commands() const override;
    void run(int id, QByteArrayView parameters, qint64 offset) override;
    [[nodiscard]] bool isText(uchar byte) const override;

private:
    using Bytes = QByteArrayView;
    struct Entry
    {
        Bytes prefix;
        LengthOf length;
        void (StarLine::*action)(Bytes parameters);
        int fixed = 0; ///< what the action is to do, where several commands share one
    };
    static std::span<const Entry> table();

    // starline.cpp: letters and lines
    void nothing(Bytes) { }
    void notDrawn(Bytes);
    void lineFeed(Bytes);
    void formFeed(Bytes);
    void tab(Bytes);
    void tabStops(Bytes);
    void reset(Bytes);
    void wide(Bytes);
    void tall(Bytes);
    void fixedWide(Bytes);
    void fixedTall(Bytes);
    void size(Bytes);
    void bold(Bytes);
    void underline(Bytes);
    void overline(Bytes);
    void reverse(Bytes);
    void upsideDown(Bytes);
    void font(Bytes);
    void fontPitch(Bytes);
    void letterSpacing(Bytes);
    void lineSpacing(Bytes);
    void narrowSpacing(Bytes);
    void align(Bytes);
    void leftMargin(Bytes);
    void rightMargin(Bytes);
    void absolutePosition(Bytes);
    void relativePosition(Bytes);
    void feedLines(Bytes);
    void feedQuarters(Bytes);
    void feedEighths(Bytes);
    void codePage(Bytes);
    void country(Bytes);

    // stargraphics.cpp: pictures, symbols and the device
    void columnImage(Bytes);
    void rowImage(Bytes);
    void raster(Bytes);
    void rasterMode(Bytes);
    void rasterRow(Bytes);
    void rasterFeed(Bytes);
    void rasterEnd(Bytes);
    void barcode(Bytes);
    void qrModel(Bytes);
    void qrLevel(Bytes);
    void qrModule(Bytes);
    void qrData(Bytes);
    void qrPrint(Bytes);
    void pdfLevel(Bytes);
    void pdfModule(Bytes);
    void pdfSize(Bytes);
    void pdfAspect(Bytes);
    void pdfData(Bytes);
    void pdfPrint(Bytes);
    void cutPaper(Bytes);
    void drawer(Bytes);
    void buzzer(Bytes);
    void automaticStatus(Bytes);
    void endMark(Bytes);
    void resetEndMarks(Bytes);

    int m_fixed = 0; ///< of the command that runs
    bool m_rasterMode = false; ///< rows of dots come, each a command of its own
    SymbolRequest m_qr;
    SymbolRequest m_pdf417;
};

} // namespace zemrak::paper
