#include "ui/kit/gradientprovider.h"

#include "ui/kit/colors.h"

#include <QLinearGradient>
#include <QPainter>

namespace zemrak {

QImage GradientProvider::requestImage(const QString &id, QSize *size, const QSize &requestedSize)
{
    const QStringList parts = id.split(u'?');
    const QStringList colors = parts.first().split(u'-');
    const QSize wanted = requestedSize.expandedTo({1, 1});
    if (size)
        *size = wanted;

    QImage image(wanted, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QLinearGradient gradient(0, 0, 0, wanted.height());
    gradient.setColorAt(0, colorFromHex(colors.first()));
    gradient.setColorAt(1, colorFromHex(colors.last()));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(gradient);
    const double radius = parts.value(1).toDouble();
    painter.drawRoundedRect(QRectF(QPointF(), wanted), radius, radius);
    return image;
}

} // namespace zemrak
