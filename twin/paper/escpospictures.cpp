#include "twin/paper/escpos.h"

#include <QJsonObject>

namespace zemrak::paper {

namespace {

constexpr qsizetype storedPictures = 64;
constexpr qsizetype graphicsHeader = 8; // of functions 112 and 113, before the dots

struct Density
{
    int mode;
    int stride; ///< bytes of a column
    int across; ///< dots for each of its dots
    int down;
};

// ESC *: ESC/POS command reference. The head has 8 dots for a millimetre in both directions.
constexpr Density densities[] = {{0, 1, 2, 3}, {1, 1, 1, 3}, {32, 3, 2, 1}, {33, 3, 1, 1}};

} // namespace

void EscPos::bitImage(Bytes parameters)
{
    for (const Density &density : densities) {
        if (density.mode != byteAt(parameters, 0))
            continue;
        const Dots image = Dots::fromColumns(parameters.sliced(3), density.stride, wordAt(parameters, 1));
        const int room = press().areaWidth() - press().pen();
        if (image.width() * density.across > room)
            problem(QStringLiteral("the picture is %1 dots wide, and there is room for %2")
                        .arg(image.width() * density.across)
                        .arg(room));
        if (!image.isEmpty())
            press().inlinePicture(image.scaled(density.across, density.down), QStringLiteral("ESC *"));
        return;
    }
    problem(QStringLiteral("unknown density"));
}

void EscPos::printEnlarged(const Dots &picture, int mode, const QString &command)
{
    if (mode > 3) {
        problem(QStringLiteral("unknown size"));
        return;
    }
    if (!press().atLineStart() && press().pen() > 0 && press().edge == Edge::Left && command == QLatin1String("GS v 0"))
        problem(QStringLiteral("a picture within a line"));
    if (picture.isEmpty())
        return;
    const Dots large = picture.scaled((mode & 1) != 0 ? 2 : 1, (mode & 2) != 0 ? 2 : 1);
    if (!press().picture(large, {QStringLiteral("image"), {}, {{QStringLiteral("command"), command}}}))
        problem(QStringLiteral("the picture is %1 dots wide, and there is room for %2")
                    .arg(large.width())
                    .arg(press().areaWidth()));
}

void EscPos::raster(Bytes parameters)
{
    const int stride = wordAt(parameters, 1);
    const int rows = wordAt(parameters, 3);
    if (stride == 0 || rows == 0) {
        problem(QStringLiteral("an empty picture"));
        return;
    }
    if (8 * stride > 2 * limits::maximumDots || rows > limits::rows) {
        problem(QStringLiteral("a picture of %1 by %2 dots is too large").arg(8 * stride).arg(rows));
        return;
    }
    printEnlarged(Dots::fromRows(parameters.sliced(5), stride, rows), digitAt(parameters, 0), QStringLiteral("GS v 0"));
}

void EscPos::graphics(Bytes parameters)
{
    graphicsFunction(parameters.sliced(2));
}

void EscPos::longGraphics(Bytes parameters)
{
    graphicsFunction(parameters.sliced(4));
}

// GS ( L and GS 8 L: ESC/POS command reference. A picture is put into a buffer and then printed, or stored under a name
// of two bytes and printed by it.
void EscPos::graphicsFunction(Bytes function)
{
    const int number = byteAt(function, 1);
    const int store = 67; // into memory that lasts
    const int download = 83;
    if (byteAt(function, 0) != 48) {
        problem(QStringLiteral("unknown function"));
        return;
    }
    if (number == 2 || number == 50) {
        printEnlarged(m_buffered, 0, QStringLiteral("GS ( L"));
        m_buffered = {};
        return;
    }
    if (number == 112 || number == 113) {
        const int across = byteAt(function, 3);
        const int down = byteAt(function, 4);
        const int width = wordAt(function, 6);
        const int height = wordAt(function, 8);
        if (function.size() < graphicsHeader + 2 || across < 1 || across > 2 || down < 1 || down > 2
            || width > 2 * limits::maximumDots || height > limits::rows / 2) {
            problem(QStringLiteral("a picture that cannot be"));
            return;
        }
        const QByteArrayView dots = function.sliced(graphicsHeader + 2);
        Dots picture(width, height);
        picture.stamp(number == 112 ? Dots::fromRows(dots, (width + 7) / 8, height)
                                    : Dots::fromColumns(dots, (height + 7) / 8, width),
            0, 0);
        m_buffered = picture.scaled(across, down);
        return;
    }
    if (number == store || number == download) {
        const int width = wordAt(function, 6);
        const int height = wordAt(function, 8);
        if (function.size() < 11 || width > limits::maximumDots || height > limits::maximumDots
            || m_pictures.size() >= storedPictures) {
            problem(QStringLiteral("a picture that cannot be stored"));
            return;
        }
        Dots picture(width, height);
        picture.stamp(Dots::fromRows(function.sliced(11), (width + 7) / 8, height), 0, 0);
        m_pictures.insert(number << 16 | wordAt(function, 3), picture);
        return;
    }
    if (number == store + 2 || number == download + 2) {
        const auto found = m_pictures.constFind((number - 2) << 16 | wordAt(function, 2));
        const int across = byteAt(function, 4);
        const int down = byteAt(function, 5);
        if (found == m_pictures.constEnd())
            problem(QStringLiteral("there is no such picture"));
        else
            printEnlarged(*found, (across == 2 ? 1 : 0) + (down == 2 ? 2 : 0), QStringLiteral("GS ( L"));
        return;
    }
    problem(QStringLiteral("unknown function"));
}

void EscPos::defineDownloaded(Bytes parameters)
{
    m_downloaded = Dots::fromColumns(parameters.sliced(2), byteAt(parameters, 1), 8 * byteAt(parameters, 0));
}

void EscPos::printDownloaded(Bytes parameters)
{
    if (m_downloaded.isEmpty())
        problem(QStringLiteral("there is no such picture"));
    else
        printEnlarged(m_downloaded, digitAt(parameters, 0), QStringLiteral("GS /"));
}

void EscPos::defineStored(Bytes parameters)
{
    qsizetype place = 1;
    for (int number = 1; number <= byteAt(parameters, 0); ++number) {
        const int width = 8 * wordAt(parameters, place);
        const int stride = wordAt(parameters, place + 2);
        const QByteArrayView dots = parameters.sliced(place + 4);
        if (width <= limits::maximumDots && 8 * stride <= limits::maximumDots && m_pictures.size() < storedPictures)
            m_pictures.insert(number, Dots::fromColumns(dots.first(qsizetype{width} * stride), stride, width));
        else
            problem(QStringLiteral("a picture that cannot be stored"));
        place += 4 + qsizetype{width} * stride;
    }
}

void EscPos::printStored(Bytes parameters)
{
    if (const auto found = m_pictures.constFind(byteAt(parameters, 0)); found != m_pictures.constEnd())
        printEnlarged(*found, digitAt(parameters, 1), QStringLiteral("FS p"));
    else
        problem(QStringLiteral("there is no such picture"));
}

} // namespace zemrak::paper
