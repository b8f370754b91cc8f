// What others wrote judges the paper: a reader of symbols, and receipts by other encoders.

#include "sheet.h"
#include "support/testmain.h"

#include <QFile>

#include <ZXing/ReadBarcode.h>

using namespace zemrak;
using namespace zemrak::paper;
using namespace zemrak::test;

namespace {

/// Each symbol's format and content, from the top down.
QStringList readSymbols(const Dots &paper)
{
    // With the white beside the dots that paper has.
    constexpr int quiet = 40;
    QImage grey(paper.width() + 2 * quiet, paper.height() + 2 * quiet, QImage::Format_Grayscale8);
    grey.fill(255);
    for (int y = 0; y < paper.height(); ++y)
        for (int x = 0; x < paper.width(); ++x)
            if (paper.at(x, y))
                grey.scanLine(y + quiet)[x + quiet] = 0;
    const ZXing::ImageView view(
        grey.constBits(), grey.width(), grey.height(), ZXing::ImageFormat::Lum, static_cast<int>(grey.bytesPerLine()));
    const ZXing::Result result = ZXing::ReadBarcode(view, ZXing::DecodeHints().setTryHarder(true));
    if (!result.isValid())
        return {};
    return {QString::fromLatin1(ZXing::ToString(result.format())), QString::fromStdWString(result.text())};
}

QByteArray file(const QString &name)
{
    QFile stored(QStringLiteral(ZEMRAK_TWIN_DATA "/") + name);
    return stored.open(QIODevice::ReadOnly) ? stored.readAll() : QByteArray();
}

QByteArray matrix(char kind, const QByteArray &settings, const QByteArray &data)
{
    const auto size = static_cast<char>(data.size() + 3);
    const QByteArray open = QByteArray("\x1d(k");
    return settings + open + size + '\0' + kind + "P0" + data + open + QByteArray("\x03\x00", 2) + kind + "Q0";
}

} // namespace

class OthersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void symbolsAreRead()
    {
        // Height, width of a bar, letters below, centred; then GS k with its kind and the number of bytes that follow.
        const QByteArray set = hex("1d68501d77021d4802") + hex("1b6101");
        const auto bar
            = [&set](const char *kind, const QByteArray &data) { return set + hex("1d6b") + hex(kind) + data; };
        const QByteArray nought(1, '\0');
        const std::tuple<Language, QByteArray, const char *, const char *> rows[] = {
            {Language::EscPos, bar("00", "03600029145" + nought), "UPC-A", "036000291452"},
            {Language::EscPos, bar("4207", "0123456"), "UPC-E", "01234565"},
            {Language::EscPos, bar("430c", "400638133393"), "EAN-13", "4006381333931"},
            {Language::EscPos, bar("03", "5512345" + nought), "EAN-8", "55123457"},
            {Language::EscPos, bar("4507", "*AB-12*"), "Code39", "AB-12"},
            {Language::EscPos, bar("4608", "12345678"), "ITF", "12345678"},
            {Language::EscPos, bar("4708", "A123456B"), "Codabar", "123456"},
            {Language::EscPos, bar("4806", "CODE93"), "Code93", "CODE93"},
            {Language::EscPos, bar("4909", "{BAb-12{{"), "Code128", "Ab-12{"},
            {Language::EscPos, bar("4905", "{C\x0c\x22\x38"), "Code128", "123456"}, // pairs of digits
            {Language::EscPos, matrix('1', hex("1d286b0300314304"), "https://example.com/?q=قهوة"), "QRCode",
                "https://example.com/?q=قهوة"},
            {Language::EscPos, matrix('0', {}, "receipt 42, 19.90"), "PDF417", "receipt 42, 19.90"},
            {Language::EscPos, matrix('6', {}, "receipt 42"), "DataMatrix", "receipt 42"},
            {Language::StarLine, hex("1b62333231503430303633383133333339331e"), "EAN-13", "4006381333931"},
            {Language::StarLine, hex("1b623632315041622d31321e"), "Code128", "Ab-12"},
            {Language::StarLine, hex("1b1d795332051b1d794431000600") + "hello!" + hex("1b1d7950"), "QRCode", "hello!"},
            {Language::StarLine, hex("1b1d78440600") + "hello!" + hex("1b1d7850"), "PDF417", "hello!"}};
        for (const auto &[language, bytes, format, text] : rows) {
            const InRow row(format);
            const Sheet sheet(bytes, language);
            QVERIFY2(sheet.receipt().problems.isEmpty(), qPrintable(sheet.receipt().problems.value(0).what));
            const QStringList expected{QString::fromLatin1(format), QString::fromUtf8(text)};
            QCOMPARE(readSymbols(sheet.receipt().paper), expected);
        }
    }

    // Dots of a known barcode, to the dot: the first bars of EAN-13, and the wide bars of Code 39.
    void barsAreAsWideAsPrinted()
    {
        const auto runs = [](const QByteArray &bytes) {
            const Dots paper = Sheet(bytes).receipt().paper;
            QList<int> all;
            for (int x = 0; x < paper.width() && all.size() < 6; ++x) {
                if (x > 0 && paper.at(x, 10) == paper.at(x - 1, 10))
                    ++all.last();
                else
                    all.append(1);
            }
            return all.first(5);
        };
        QCOMPARE(runs(hex("1d77031d6b430c") + "400638133393"), (QList<int>{3, 3, 3, 9, 6}));
        QCOMPARE(runs(hex("1d77031d6b4501") + "A"), (QList<int>{3, 8, 3, 3, 8}));
    }

    /// The stored pictures were looked at before they were stored. A new one is written beside the test's program.
    void otherEncoders()
    {
        // With the problems that the encoder's bytes have: one drawer command lacks two of its three bytes.
        const std::tuple<const char *, Language, int, const char *> rows[]
            = {{"point-of-sale-escpos", Language::EscPos, 0, "Café crème 3,20 €"},
                {"point-of-sale-star", Language::StarLine, 0, "Café crème 3,20 €"},
                {"receiptline-escpos", Language::EscPos, 0, "RECEIPT"},
                {"receiptline-star", Language::StarLine, 0, "RECEIPT"},
                {"thermal-printer-escpos", Language::EscPos, 1, "Prodejna"}};
        for (const auto &[tag, language, problems, said] : rows) {
            const InRow row(tag);
            const QString name = QString::fromLatin1(tag);
            const QByteArray bytes = file(name + QStringLiteral(".bin"));
            QVERIFY(!bytes.isEmpty());
            const Sheet sheet(bytes, language);
            qsizetype found = 0;
            for (const Receipt &receipt : sheet.receipts)
                found += receipt.problems.size();
            QCOMPARE(found, problems);
            QVERIFY(sheet.lines().join(u'\n').contains(QString::fromUtf8(said)));
            const QImage drawn = sheet.receipt().paper.toImage();
            const QImage stored = QImage::fromData(file(name + QStringLiteral(".png")));
            if (drawn.convertToFormat(QImage::Format_RGB32) != stored.convertToFormat(QImage::Format_RGB32)) {
                const QString path = QCoreApplication::applicationDirPath() + u'/' + name + QStringLiteral(".png");
                drawn.save(path);
                QFAIL(qPrintable(QStringLiteral("another picture, now in %1").arg(path)));
            }
        }
    }
};

ZEMRAK_TEST(others, OthersTest, QCoreApplication)
#include "tst_others.moc"
