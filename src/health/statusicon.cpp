#include "health/statusicon.h"

#include <QDir>
#include <QImageReader>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

#include <array>

namespace zemrak {

namespace {

// All lengths are points, measured from the bottom left.
constexpr qreal side = 22;
constexpr QRectF logoPlace(2.5, 2.0, 17, 17);
constexpr QRectF gapPlace(12.3, 12.3, 9.2, 9.2);
constexpr QRectF dotPlace(13.6, 13.6, 6.6, 6.6);
constexpr QColor dotColour(0xff, 0x3b, 0x30);
constexpr QColor symbolColour(0x9d, 0x4e, 0xdd); // of middle lightness: stands out from light and dark panels

constexpr qreal largestScale = 3;
// The last is the largest square that trays are handed over D-Bus.
constexpr std::array scales{1.0, 1.5, 2.0, largestScale, 64.0 / side};

// Everything is drawn this many times too large and averaged down: edges and the gap come out exact where they fall
// between pixels, which matters the more the fewer pixels there are.
constexpr int oversampling(qreal scale)
{
    return scale < 2 ? 4 : 2;
}

/// From the bottom-left origin to the painter's top-left one.
QRectF placed(const QRectF &place)
{
    return {place.x(), side - place.y() - place.height(), place.width(), place.height()};
}

/// A printer, front view, filled: paper above, body, and the sheet that comes out below.
void drawPrinterSymbol(QPainter &painter, const QRectF &place)
{
    painter.save();
    painter.translate(place.topLeft());
    painter.scale(place.width() / 17, place.height() / 17);
    painter.setBrush(symbolColour);
    painter.drawRoundedRect(QRectF(4.5, 1, 8, 5), 1, 1);
    QPainterPath body;
    body.addRoundedRect(QRectF(0.5, 5, 16, 8), 2, 2);
    QPainterPath mouth;
    mouth.addRect(QRectF(3.5, 9, 10, 4));
    painter.drawPath(body - mouth);
    painter.drawRoundedRect(QRectF(4.5, 10, 8, 6), 1, 1);
    painter.restore();
}

void drawLogo(QPainter &painter, const QRectF &place, const QImage &logo)
{
    const QSize pixels = painter.transform().mapRect(place).size().toSize();
    painter.drawImage(place, logo.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
}

void drawDot(QPainter &painter)
{
    painter.setBrush(dotColour);
    painter.setCompositionMode(QPainter::CompositionMode_Clear);
    painter.drawEllipse(placed(gapPlace));
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.drawEllipse(placed(dotPlace));
}

QImage emptyImage(const QSize &pixels)
{
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

struct Variant
{
    const char *name;
    bool problem;
    bool withLogo;
};
constexpr std::array variants{
    Variant{"fine", false, true}, Variant{"problem", true, true}, Variant{"nologo", true, false}};

QImage preview(const QImage &logo, bool problem)
{
    constexpr qreal scale = 2;
    constexpr QSizeF strip(176, 32);
    const QImage icon = drawStatusIcon(logo, problem, scale);
    QImage image = emptyImage((strip * scale).toSize());
    QPainter painter(&image);
    QRect panel(0, 0, image.width() / 2, image.height());
    for (const QColor &colour : {QColor(0xf6, 0xf6, 0xf6), QColor(0x1e, 0x1e, 0x1e)}) {
        painter.fillRect(panel, colour);
        QRect place = icon.rect();
        place.moveCenter(panel.center());
        painter.drawImage(place, icon);
        panel.translate(panel.width(), 0);
    }
    return image;
}

} // namespace

QImage readLogo(const QString &file)
{
    // Said to be what it is: to find out, the reader would load the plugin of every other kind of picture.
    QImageReader reader(file, "png");
    reader.setAutoDetectImageFormat(false);
    const QImage logo = reader.read();
    if (logo.isNull())
        return {};
    const int needed = qRound(logoPlace.width() * largestScale * oversampling(largestScale));
    return logo.convertToFormat(QImage::Format_ARGB32_Premultiplied)
        .scaled(needed, needed, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

QImage drawStatusIcon(const QImage &logo, bool problem, qreal scale)
{
    const int pixels = qRound(side * scale);
    QImage image = emptyImage(QSize(pixels, pixels) * oversampling(scale));
    {
        QPainter painter(&image);
        painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        painter.scale(image.width() / side, image.height() / side);
        painter.setPen(Qt::NoPen);
        if (logo.isNull())
            drawPrinterSymbol(painter, placed(logoPlace));
        else
            drawLogo(painter, placed(logoPlace), logo);
        if (problem)
            drawDot(painter);
    }
    return image.scaled(pixels, pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

QIcon statusIcon(const QImage &logo, bool problem)
{
    QIcon icon;
    for (const qreal scale : scales)
        icon.addPixmap(QPixmap::fromImage(drawStatusIcon(logo, problem, scale)));
    return icon;
}

bool renderPreviews(const QString &folder, const QImage &logo)
{
    bool written = QDir().mkpath(folder);
    for (const Variant &variant : variants) {
        const QString file
            = folder + QStringLiteral("/menubar-") + QLatin1String(variant.name) + QStringLiteral(".png");
        written = preview(variant.withLogo ? logo : QImage(), variant.problem).save(file, "PNG") && written;
    }
    return written;
}

} // namespace zemrak
