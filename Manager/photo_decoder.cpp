#include "photo_decoder.h"

#include <QBuffer>
#include <QImageReader>

namespace {

// Far beyond any photo of a card, of some hundred pixels a side.
constexpr int largestSide = 8000;
constexpr int largestRatio = 8;

bool isSensible(QSize size)
{
    if (size.isEmpty() || size.width() > largestSide || size.height() > largestSide)
        return false;
    return size.width() <= largestRatio * size.height() && size.height() <= largestRatio * size.width();
}

} // namespace

QImage decodedPhoto(const QByteArray &bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer);
    return isSensible(reader.size()) ? reader.read() : QImage();
}
