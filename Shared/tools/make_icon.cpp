#include <QBuffer>
#include <QCoreApplication>
#include <QDataStream>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <QVector>

#include <algorithm>
#include <cstdio>
#include <iterator>

// Draws an SVG file in the sizes of a Windows icon and writes them as one .ico: small ones as bitmaps, which every
// reader knows, large ones as PNG, which keeps the file small (Windows Vista and later). Usage: velmor-make-icon IN.svg
// OUT.ico LARGEST-SIDE

namespace {

const QVector<int> allSizes { 16, 20, 24, 32, 40, 48, 64, 128, 256 };
constexpr int smallestPng = 128;
constexpr int headerSize = 6;
constexpr int entrySize = 16;

QImage draw(QSvgRenderer &renderer, int size)
{
    QImage image(size, size, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter);
    return image;
}

QByteArray png(const QImage &image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

// A device-independent bitmap without file header: its height counts the mask, which stays empty since the pixels carry
// their own opacity. Rows run from the bottom up.
QByteArray bitmap(const QImage &image)
{
    const int size = image.width();
    const int maskRow = (size + 31) / 32 * 4;
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setByteOrder(QDataStream::LittleEndian);
    out << quint32(40) << qint32(size) << qint32(2 * size) << quint16(1) << quint16(32) << quint32(0)
        << quint32(size * size * 4 + size * maskRow) << qint32(0) << qint32(0) << quint32(0) << quint32(0);
    for (int y = size - 1; y >= 0; --y) {
        for (int x = 0; x < size; ++x)
            out << quint32(image.pixel(x, y));
    }
    return bytes + QByteArray(size * maskRow, '\0');
}

QByteArray icon(QSvgRenderer &renderer, int largest)
{
    QVector<int> sizes;
    std::copy_if(allSizes.begin(), allSizes.end(), std::back_inserter(sizes),
                 [largest](int size) { return size <= largest; });
    QByteArray directory;
    QByteArray pictures;
    QDataStream out(&directory, QIODevice::WriteOnly);
    out.setByteOrder(QDataStream::LittleEndian);
    out << quint16(0) << quint16(1) << quint16(sizes.size());
    const int firstOffset = headerSize + sizes.size() * entrySize;
    for (const int size : sizes) {
        const QImage image = draw(renderer, size);
        const QByteArray picture = size < smallestPng ? bitmap(image) : png(image);
        const auto side = quint8(size); // 256 is written as 0
        out << side << side << quint8(0) << quint8(0) << quint16(1) << quint16(32) << quint32(picture.size())
            << quint32(firstOffset + pictures.size());
        pictures += picture;
    }
    return directory + pictures;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    if (argc != 4) {
        std::fputs("usage: velmor-make-icon IN.svg OUT.ico LARGEST-SIDE\n", stderr);
        return 2;
    }
    QSvgRenderer renderer(QString::fromLocal8Bit(argv[1]));
    QFile file(QString::fromLocal8Bit(argv[2]));
    const bool written = renderer.isValid() && file.open(QIODevice::WriteOnly)
        && file.write(icon(renderer, QByteArray(argv[3]).toInt())) > 0;
    if (!written)
        std::fputs("velmor-make-icon: the icon could not be written\n", stderr);
    return written ? 0 : 1;
}
