#include "ui/kit/iconprovider.h"

#include "ui/kit/colors.h"
#include "ui/kit/icons.h"

#include <QFile>
#include <QLoggingCategory>
#include <QPainter>
#include <QSvgRenderer>

namespace zemrak {

namespace {

Q_LOGGING_CATEGORY(lcIcons, "zemrak.ui.icons")

constexpr QSize ownSize(24, 24);

QByteArray tinted(const IconEntry &icon, const QColor &color)
{
    QFile file(QStringLiteral(":/zemrak/icons/%1.svg").arg(icon.file));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll().replace("currentColor", color.name().toLatin1());
}

} // namespace

QImage IconProvider::requestImage(const QString &id, QSize *size, const QSize &requestedSize)
{
    const qsizetype mark = id.indexOf(u'?');
    const QString symbol = id.left(mark);
    const QStringList options = mark < 0 ? QStringList() : id.mid(mark + 1).split(u'&');
    const QSize wanted = requestedSize.isEmpty() ? ownSize : requestedSize;
    if (size)
        *size = wanted;

    QImage image(wanted, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    const IconEntry *icon = findIcon(symbol);
    if (!icon) {
        qCWarning(lcIcons) << "No drawing for the symbol" << symbol;
        return image;
    }
    QSvgRenderer renderer(tinted(*icon, colorFromHex(options.value(0))));
    QPainter painter(&image);
    renderer.render(&painter);
    painter.end();
    return options.contains(QLatin1String("mirror")) ? image.mirrored(true, false) : image;
}

} // namespace zemrak
