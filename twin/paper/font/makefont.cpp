// Makes the built-in font's two strikes out of a fixed-width typeface: makefont TYPEFACE.ttf FOLDER. Run by hand, when
// the repertoire changes; the strikes it writes are part of the sources, so that paper looks the same everywhere.

#include <QFile>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QRawFont>
#include <QtEndian>

#include <array>
#include <cstdio>

namespace {

struct Strike
{
    int width;
    int height;
    int pixelSize;
    int baseline;
    const char *name;
};

constexpr std::array strikes{Strike{12, 24, 20, 19, "receipt-12x24.psf"}, Strike{9, 17, 15, 13, "receipt-9x17.psf"}};

// Unicode's blocks that the code pages of receipt printers draw from.
constexpr std::array<std::array<char32_t, 2>, 15> blocks{{{0x20, 0x7e}, {0xa0, 0x17f}, {0x192, 0x192}, {0x218, 0x21b},
    {0x2c6, 0x2dd}, {0x384, 0x45f}, {0x490, 0x491}, {0x60c, 0x6ff}, {0x2013, 0x2044}, {0x207f, 0x20bf},
    {0x2116, 0x2126}, {0x2190, 0x21ff}, {0x2205, 0x22ff}, {0x2310, 0x266f}, {0xfb50, 0xfefc}}};

QByteArray bitsOf(const QFont &font, char32_t character, const Strike &strike)
{
    QImage cell(strike.width, strike.height, QImage::Format_RGB32);
    cell.fill(Qt::white);
    QPainter painter(&cell);
    painter.setFont(font);
    painter.setRenderHint(QPainter::TextAntialiasing, false);
    painter.drawText(QPoint(0, strike.baseline), QString::fromUcs4(&character, 1));
    painter.end();
    const int stride = (strike.width + 7) / 8;
    QByteArray bits(stride * strike.height, '\0');
    for (int y = 0; y < strike.height; ++y)
        for (int x = 0; x < strike.width; ++x)
            if (qGray(cell.pixel(x, y)) < 128)
                bits[y * stride + x / 8] = static_cast<char>(bits.at(y * stride + x / 8) | 0x80 >> x % 8);
    return bits;
}

bool write(const QString &path, const Strike &strike, const QByteArray &glyphs, const QByteArray &names, quint32 count)
{
    const std::array<quint32, 8> header{0x864ab572, 0, 32, 1, count, static_cast<quint32>(glyphs.size()) / count,
        static_cast<quint32>(strike.height), static_cast<quint32>(strike.width)};
    QByteArray bytes(32, '\0');
    for (std::size_t i = 0; i < header.size(); ++i)
        qToLittleEndian(header[i], bytes.data() + 4 * i);
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes + glyphs + names) > 0;
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication app(argc, argv);
    if (argc != 3)
        return 64;
    const int id = QFontDatabase::addApplicationFont(QString::fromLocal8Bit(argv[1]));
    QFont font(QFontDatabase::applicationFontFamilies(id).value(0));
    font.setStyleStrategy(static_cast<QFont::StyleStrategy>(QFont::NoAntialias | QFont::NoFontMerging));
    font.setHintingPreference(QFont::PreferFullHinting);
    for (const Strike &strike : strikes) {
        font.setPixelSize(strike.pixelSize);
        const QRawFont raw = QRawFont::fromFont(font);
        QByteArray glyphs;
        QByteArray names;
        quint32 count = 0;
        for (const auto &[first, last] : blocks) {
            for (char32_t character = first; character <= last; ++character) {
                if (!raw.supportsCharacter(character))
                    continue;
                glyphs += bitsOf(font, character, strike);
                names += QString::fromUcs4(&character, 1).toUtf8() + '\xff';
                ++count;
            }
        }
        const QString path = QString::fromLocal8Bit(argv[2]) + u'/' + QLatin1String(strike.name);
        if (count == 0 || !write(path, strike, glyphs, names, count))
            return 1;
        std::printf("%s: %u characters\n", strike.name, count);
    }
}
