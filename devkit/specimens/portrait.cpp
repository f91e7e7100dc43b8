#include "specimens/portrait.h"

#include <QBuffer>
#include <QPainter>

#include "specimens/portrait_painter.h"

namespace specimen {

QImage drawPortrait(const Look &look)
{
    QImage image(portraitWidth, portraitHeight, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    PortraitPainter(painter, look).draw();
    return image;
}

QByteArray toJpeg(const QImage &image)
{
    constexpr int quality = 88;
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPEG", quality);
    return bytes;
}

} // namespace specimen
