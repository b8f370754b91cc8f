#pragma once

#include "twin/paper/language.h"

#include <QHash>

namespace zemrak::paper {

/// ESC/POS in its standard mode. Facts: ESC/POS command reference. A vertical or horizontal unit is a dot, at 8 dots
/// for a millimetre, unless GS P says otherwise.
class EscPos : public PrinterLanguage
{
public:
    EscPos(int dots, Listener &listener);
    void initialise() override;

protected:
    [[nodiscard]] std::span<const Command> commands() const override;
    void run(int id, QByteArrayView parameters, qint64 offset) override;
    [[nodiscard]] Dots ownLetter(uchar byte) const override;

private:
    using Bytes = QByteArrayView;
    struct Entry
    {
        Bytes prefix;
        LengthOf length;
        void (EscPos::*action)(Bytes parameters);
    };
    static std::span<const Entry> table();

    // escpostext.cpp
    void lineFeed(Bytes);
    void carriageReturn(Bytes) { }
    void tab(Bytes);
    void nothing(Bytes) { }
    void notDrawn(Bytes);
    void reset(Bytes);
    void printMode(Bytes);
    void size(Bytes);
    void bold(Bytes);
    void underline(Bytes);
    void reverse(Bytes);
    void turn(Bytes);
    void upsideDown(Bytes);
    void font(Bytes);
    void letterSpacing(Bytes);
    void lineSpacing(Bytes);
    void standardSpacing(Bytes);
    void align(Bytes);
    void leftMargin(Bytes);
    void area(Bytes);
    void units(Bytes);
    void absolutePosition(Bytes);
    void relativePosition(Bytes);
    void tabStops(Bytes);
    void feedDots(Bytes);
    void feedLines(Bytes);
    void feedBackDots(Bytes);
    void feedBackLines(Bytes);
    void codePage(Bytes);
    void country(Bytes);
    void defineLetters(Bytes);
    void useOwnLetters(Bytes);
    void forgetLetter(Bytes);

    // escposdevice.cpp
    void cutPaper(Bytes);
    void cutFull(Bytes);
    void cutPartial(Bytes);
    void pulsePin(Bytes);
    void buzzer(Bytes);
    void buzzerByTime(Bytes);
    void status(Bytes);
    void paperSensor(Bytes);
    void peripheral(Bytes);
    void identify(Bytes);
    void automaticStatus(Bytes);
    void responses(Bytes);
    void unknownFunction(Bytes);

    // escpospictures.cpp
    void bitImage(Bytes);
    void raster(Bytes);
    void graphics(Bytes);
    void longGraphics(Bytes);
    void defineDownloaded(Bytes);
    void printDownloaded(Bytes);
    void defineStored(Bytes);
    void printStored(Bytes);
    void graphicsFunction(Bytes function);
    void printEnlarged(const Dots &picture, int mode, const QString &command);

    // escpossymbols.cpp
    void symbolHeight(Bytes);
    void symbolModule(Bytes);
    void captionPlace(Bytes);
    void captionFont(Bytes);
    void barcode(Bytes);
    void matrixSymbol(Bytes);
    void qr(int function, Bytes parameters);
    void pdf417(int function, Bytes parameters);
    void dataMatrix(int function, Bytes parameters);

    int m_unitX = 0; ///< of GS P; 0 = a unit is a dot
    int m_unitY = 0;
    [[nodiscard]] int dotsAcross(int units) const;
    [[nodiscard]] int dotsDown(int units) const;

    QHash<uchar, Dots> m_letters;
    bool m_useLetters = false;
    QHash<int, Dots> m_pictures; ///< stored ones, by what they are asked for with
    Dots m_downloaded;
    Dots m_buffered; ///< by GS ( L, printed by its function 50
    SymbolRequest m_barcode;
    SymbolRequest m_qr;
    SymbolRequest m_pdf417;
    SymbolRequest m_dataMatrix;
};

} // namespace zemrak::paper
