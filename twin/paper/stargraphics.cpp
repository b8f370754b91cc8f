#include "twin/paper/starline.h"

#include <QJsonObject>

#include <algorithm>

namespace zemrak::paper {

namespace {

constexpr int bandRows = 24;
constexpr int mostRows = limits::rows / 4;

struct Coded
{
    int code;
    SymbolType type;
    int narrowest; ///< dots of a module in mode 1; each further mode has one more
};

// ESC b: Star Line Mode command reference.
constexpr Coded barcodes[] = {{0, SymbolType::UpcE, 2}, {1, SymbolType::UpcA, 2}, {2, SymbolType::Ean8, 2},
    {3, SymbolType::Ean13, 2}, {4, SymbolType::Code39, 2}, {5, SymbolType::Itf, 2}, {6, SymbolType::Code128, 2},
    {7, SymbolType::Code93, 2}, {8, SymbolType::Codabar, 2}};

QJsonObject commandFacts(const char *name)
{
    return {{QStringLiteral("command"), QString::fromLatin1(name)}};
}

} // namespace

// ESC K and ESC L print eight rows of a coarse and of a finer picture, ESC X 24 rows of dots.
void StarLine::columnImage(Bytes parameters)
{
    const bool fine = m_fixed == 3;
    const Dots image = Dots::fromColumns(parameters.sliced(2), fine ? 3 : 1, wordAt(parameters, 0));
    const Dots large = fine ? image : image.scaled(m_fixed, 3);
    if (large.width() > press().areaWidth() - press().pen())
        problem(QStringLiteral("the picture is %1 dots wide, and there is room for %2")
                    .arg(large.width())
                    .arg(press().areaWidth() - press().pen()));
    if (!large.isEmpty())
        press().inlinePicture(large, fine ? QStringLiteral("ESC X") : QStringLiteral("ESC K"));
}

void StarLine::rowImage(Bytes parameters)
{
    const Dots image = Dots::fromRows(parameters.sliced(2), wordAt(parameters, 0), bandRows);
    if (image.width() > press().areaWidth() - press().pen())
        problem(QStringLiteral("the picture is %1 dots wide, and there is room for %2")
                    .arg(image.width())
                    .arg(press().areaWidth() - press().pen()));
    if (!image.isEmpty())
        press().inlinePicture(image, QStringLiteral("ESC k"));
}

void StarLine::raster(Bytes parameters)
{
    const int stride = wordAt(parameters, 1);
    const int rows = wordAt(parameters, 3);
    if (stride == 0 || rows == 0 || 8 * stride > 2 * limits::maximumDots || rows > mostRows) {
        problem(QStringLiteral("a picture of %1 by %2 dots cannot be").arg(8 * stride).arg(rows));
        return;
    }
    const Dots image = Dots::fromRows(parameters.sliced(6), stride, rows);
    if (!press().picture(image, {QStringLiteral("image"), {}, commandFacts("ESC GS S")}))
        problem(QStringLiteral("the picture is %1 dots wide, and there is room for %2")
                    .arg(image.width())
                    .arg(press().areaWidth()));
}

void StarLine::rasterMode(Bytes)
{
    formFeed({});
    m_rasterMode = m_fixed != 0;
}

void StarLine::rasterRow(Bytes parameters)
{
    const Dots row = Dots::fromRows(parameters.sliced(2), wordAt(parameters, 0), 1);
    if (row.isEmpty()) {
        press().feed(m_fixed);
        return;
    }
    if (!press().picture(row, {QStringLiteral("image"), {}, commandFacts("b")}))
        problem(QStringLiteral("the row is %1 dots wide, and there is room for %2")
                    .arg(row.width())
                    .arg(press().areaWidth()));
    if (m_fixed == 0)
        press().feed(-1); // the next row is drawn over it
}

void StarLine::rasterFeed(Bytes parameters)
{
    press().feed(std::clamp(parameters.chopped(parameters.endsWith('\0') ? 1 : 0).toByteArray().toInt(), 0, mostRows));
}

void StarLine::rasterEnd(Bytes)
{
    formFeed({});
}

// ESC b: symbol, letters beside it (1 none, 2 below; 3 and 4 likewise without a line feed), width of its bars, height.
void StarLine::barcode(Bytes parameters)
{
    const int code = digitAt(parameters, 0);
    const int place = digitAt(parameters, 1);
    const int mode = digitAt(parameters, 2);
    const auto *found = std::find_if(
        std::begin(barcodes), std::end(barcodes), [code](const Coded &each) { return each.code == code; });
    if (found == std::end(barcodes) || place < 1 || place > 4 || mode < 1 || mode > 9) {
        problem(QStringLiteral("unknown barcode"));
        return;
    }
    Bytes data = parameters.sliced(4);
    if (data.endsWith('\x1e'))
        data.chop(1);
    SymbolRequest request{.type = found->type, .data = data.toByteArray()};
    request.module = found->narrowest + (mode - 1) % 3;
    request.height = std::max(1, byteAt(parameters, 3));
    request.caption = place % 2 == 0 ? Caption::Below : Caption::None;
    if (request.type == SymbolType::Code39 && data.size() >= 2 && data.front() == '*' && data.back() == '*')
        request.data = data.sliced(1, data.size() - 2).toByteArray();
    symbol(request);
    if (place <= 2)
        press().lineFeed();
}

void StarLine::qrModel(Bytes) { }

void StarLine::qrLevel(Bytes parameters)
{
    m_qr.level = std::clamp(digitAt(parameters, 0), 0, 3) + 1;
}

void StarLine::qrModule(Bytes parameters)
{
    m_qr.module = std::clamp(byteAt(parameters, 0), 1, 8);
}

void StarLine::qrData(Bytes parameters)
{
    m_qr.data = parameters.sliced(3).toByteArray();
}

void StarLine::qrPrint(Bytes)
{
    symbol(m_qr);
}

void StarLine::pdfSize(Bytes parameters)
{
    m_pdf417.columns = byteAt(parameters, 0) == 1 ? std::min(30, byteAt(parameters, 2)) : 0;
}

void StarLine::pdfLevel(Bytes parameters)
{
    m_pdf417.level = std::clamp(digitAt(parameters, 0), 0, 8);
}

void StarLine::pdfModule(Bytes parameters)
{
    m_pdf417.module = std::clamp(byteAt(parameters, 0), 1, 10);
}

void StarLine::pdfAspect(Bytes parameters)
{
    m_pdf417.height = std::clamp(byteAt(parameters, 0), 2, 8);
}

void StarLine::pdfData(Bytes parameters)
{
    m_pdf417.data = parameters.sliced(2).toByteArray();
}

void StarLine::pdfPrint(Bytes)
{
    symbol(m_pdf417);
}

void StarLine::cutPaper(Bytes parameters)
{
    const int mode = digitAt(parameters, 0);
    if (mode > 3)
        problem(QStringLiteral("unknown way to cut"));
    else
        cut(mode % 2 == 0 ? QStringLiteral("full") : QStringLiteral("partial"));
}

void StarLine::drawer(Bytes)
{
    pulse(m_fixed == 1 ? 2 : 5, 200);
}

void StarLine::buzzer(Bytes)
{
    press().note(QStringLiteral("buzzer"), {});
}

void StarLine::automaticStatus(Bytes parameters)
{
    ask(Request::AutomaticStatus, parameters);
}

void StarLine::endMark(Bytes)
{
    ask(Request::EndCounter);
}

void StarLine::resetEndMarks(Bytes parameters)
{
    ask(Request::ResetEndCounter, parameters);
}

} // namespace zemrak::paper
