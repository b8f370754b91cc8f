// rendericons PICTURE.svg FILE-WITH-%1.png: draws the picture in every size of the icon theme, %1 standing for the
// size.
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

int main(int argc, char *argv[])
{
    if (argc != 3)
        return 64;
    QSvgRenderer picture(QString::fromLocal8Bit(argv[1]));
    if (!picture.isValid())
        return 1;
    for (const int size : {16, 22, 24, 32, 48, 64, 128, 256, 512}) {
        QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        picture.render(&painter, QRectF(0, 0, size, size));
        painter.end();
        const QString file = QString::fromLocal8Bit(argv[2]).arg(size);
        if (!QDir().mkpath(QFileInfo(file).path()) || !image.save(file, "PNG")) {
            std::fprintf(stderr, "%s cannot be written\n", qUtf8Printable(file));
            return 1;
        }
    }
    return 0;
}
