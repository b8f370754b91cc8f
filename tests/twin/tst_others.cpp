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
    void symbolsAreRead_data()
    {
        QTest::addColumn<Language>("language");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("text");
        const auto row = [](const char *name, const QByteArray &bytes, const char *format, const QString &text) {
            QTest::newRow(name) << Language::EscPos << bytes << QString::fromLatin1(format) << text;
        };
        const QByteArray set("\x1dh\x50\x1dw\x02\x1dH\x02\x1b"
                             "a\x01");
        row("UPC-A",
            set
                + QByteArray("\x1dk\x00"
                             "03600029145\x00",
                    15),
            "UPC-A", QStringLiteral("036000291452"));
        row("UPC-E",
            set
                + QByteArray("\x1dk\x42\x07"
                             "0123456"),
            "UPC-E", QStringLiteral("01234565"));
        row("EAN-13",
            set
                + QByteArray("\x1dk\x43\x0c"
                             "400638133393"),
            "EAN-13", QStringLiteral("4006381333931"));
        row("EAN-8",
            set
                + QByteArray("\x1dk\x03"
                             "5512345\x00",
                    11),
            "EAN-8", QStringLiteral("55123457"));
        row("Code 39", set + QByteArray("\x1dk\x45\x07*AB-12*"), "Code39", QStringLiteral("AB-12"));
        row("ITF",
            set
                + QByteArray("\x1dk\x46\x08"
                             "12345678"),
            "ITF", QStringLiteral("12345678"));
        row("Codabar",
            set
                + QByteArray("\x1dk\x47\x08"
                             "A123456B"),
            "Codabar", QStringLiteral("123456"));
        row("Code 93",
            set
                + QByteArray("\x1dk\x48\x06"
                             "CODE93"),
            "Code93", QStringLiteral("CODE93"));
        row("Code 128", set + QByteArray("\x1dk\x49\x09{BAb-12{{"), "Code128", QStringLiteral("Ab-12{"));
        row("Code 128, pairs", set + QByteArray("\x1dk\x49\x05{C\x0c\x22\x38"), "Code128", QStringLiteral("123456"));
        row("QR", matrix('1', "\x1d(k" + QByteArray("\x03\x00", 2) + "1C\x04", "https://example.com/?q=قهوة"), "QRCode",
            QStringLiteral("https://example.com/?q=قهوة"));
        row("PDF417", matrix('0', {}, "receipt 42, 19.90"), "PDF417", QStringLiteral("receipt 42, 19.90"));
        row("Data Matrix", matrix('6', {}, "receipt 42"), "DataMatrix", QStringLiteral("receipt 42"));
        const auto star = [](const char *name, const QByteArray &bytes, const char *format, const QString &text) {
            QTest::newRow(name) << Language::StarLine << bytes << QString::fromLatin1(format) << text;
        };
        star("Star: EAN-13",
            "\x1b"
            "b321P400638133393\x1e",
            "EAN-13", QStringLiteral("4006381333931"));
        star("Star: Code 128",
            "\x1b"
            "b621PAb-12\x1e",
            "Code128", QStringLiteral("Ab-12"));
        star("Star: QR", QByteArray("\x1b\x1dyS2\x05\x1b\x1dyD1\x00\x06\x00hello!\x1b\x1dyP", 24), "QRCode",
            QStringLiteral("hello!"));
        star("Star: PDF417", QByteArray("\x1b\x1dxD\x06\x00hello!\x1b\x1dxP", 16), "PDF417", QStringLiteral("hello!"));
    }
    void symbolsAreRead()
    {
        QFETCH(const Language, language);
        QFETCH(const QByteArray, bytes);
        QFETCH(const QString, format);
        QFETCH(const QString, text);
        const Sheet sheet = Sheet(bytes, language);
        QVERIFY2(sheet.receipt().problems.isEmpty(), qPrintable(sheet.receipt().problems.value(0).what));
        QCOMPARE(readSymbols(sheet.receipt().paper), (QStringList{format, text}));
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
        QCOMPARE(runs("\x1dw\x03\x1dk\x43\x0c"
                      "400638133393"),
            (QList<int>{3, 3, 3, 9, 6}));
        QCOMPARE(runs("\x1dw\x03\x1dk\x45\x01"
                      "A"),
            (QList<int>{3, 8, 3, 3, 8}));
    }

    void otherEncoders_data()
    {
        QTest::addColumn<Language>("language");
        QTest::addColumn<int>("problems"); // that the encoder's bytes really have
        QTest::addColumn<QStringList>("said"); // some of it
        QTest::newRow("point-of-sale-escpos")
            << Language::EscPos << 0 << QStringList{QStringLiteral("Café crème 3,20 €"), QStringLiteral("TOTAL")};
        QTest::newRow("point-of-sale-star")
            << Language::StarLine << 0 << QStringList{QStringLiteral("Café crème 3,20 €"), QStringLiteral("TOTAL")};
        QTest::newRow("receiptline-escpos") << Language::EscPos << 0 << QStringList{QStringLiteral("RECEIPT")};
        QTest::newRow("receiptline-star") << Language::StarLine << 0 << QStringList{QStringLiteral("RECEIPT")};
        // Its drawer command lacks two of its three bytes.
        QTest::newRow("thermal-printer-escpos") << Language::EscPos << 1 << QStringList{QStringLiteral("Prodejna")};
    }
    /// The stored pictures were looked at before they were stored. A new one is written beside the test's program.
    void otherEncoders()
    {
        QFETCH(const Language, language);
        QFETCH(const int, problems);
        QFETCH(const QStringList, said);
        const QString name = QString::fromLatin1(QTest::currentDataTag());
        const QByteArray bytes = file(name + QStringLiteral(".bin"));
        QVERIFY(!bytes.isEmpty());
        const Sheet sheet = Sheet(bytes, language);
        int found = 0;
        for (const Receipt &receipt : sheet.receipts)
            found += static_cast<int>(receipt.problems.size());
        QCOMPARE(found, problems);
        for (const QString &line : said)
            QVERIFY2(sheet.lines().join(u'\n').contains(line), qPrintable(line));
        const QImage drawn = sheet.receipt().paper.toImage();
        const QImage stored = QImage::fromData(file(name + QStringLiteral(".png")));
        if (drawn.convertToFormat(QImage::Format_RGB32) != stored.convertToFormat(QImage::Format_RGB32)) {
            const QString path = QCoreApplication::applicationDirPath() + u'/' + name + QStringLiteral(".png");
            drawn.save(path);
            QFAIL(qPrintable(QStringLiteral("another picture, now in %1").arg(path)));
        }
    }
};

ZEMRAK_TEST(others, OthersTest, QCoreApplication)
#include "tst_others.moc"
