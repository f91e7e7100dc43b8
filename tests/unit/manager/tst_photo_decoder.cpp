#include "photo_decoder.h"

#include "support/testmain.h"

#include <QBuffer>

// The photo of a card as it comes: a picture, nothing, or bytes that only claim to be one.
class TestPhotoDecoder : public QObject {
    Q_OBJECT

private:
    static QByteArray picture(int width, int height, const char *format)
    {
        // One bit a pixel, so that the large ones fit into memory here too.
        QImage image(width, height, QImage::Format_Mono);
        image.fill(0);
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        return image.save(&buffer, format) ? bytes : QByteArray();
    }

private slots:
    void pictureOfASensibleSizeIsRead_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QByteArray>("format");
        QTest::newRow("JPEG of a card") << QSize(413, 531) << QByteArray("JPEG");
        QTest::newRow("PNG") << QSize(413, 531) << QByteArray("PNG");
        QTest::newRow("one pixel") << QSize(1, 1) << QByteArray("PNG");
        QTest::newRow("wide") << QSize(600, 100) << QByteArray("PNG");
        QTest::newRow("high") << QSize(100, 600) << QByteArray("PNG");
        // Eight to one, and 8000 pixels, are the most.
        QTest::newRow("widest") << QSize(8000, 1000) << QByteArray("PNG");
        QTest::newRow("highest") << QSize(1000, 8000) << QByteArray("PNG");
    }
    void pictureOfASensibleSizeIsRead()
    {
        QFETCH(QSize, size);
        QFETCH(QByteArray, format);

        QCOMPARE(decodedPhoto(picture(size.width(), size.height(), format.constData())).size(), size);
    }

    void pictureOfAnInsaneSizeCountsAsNone_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QByteArray>("format");
        QTest::newRow("one pixel wide") << QSize(1, 9000) << QByteArray("PNG");
        QTest::newRow("one pixel high") << QSize(9000, 1) << QByteArray("PNG");
        QTest::newRow("narrow and short") << QSize(1, 100) << QByteArray("PNG");
        QTest::newRow("narrow JPEG") << QSize(1, 65000) << QByteArray("JPEG");
        QTest::newRow("flat JPEG") << QSize(65000, 1) << QByteArray("JPEG");
        QTest::newRow("a little too wide for its height") << QSize(801, 100) << QByteArray("PNG");
        QTest::newRow("a little too high for its width") << QSize(100, 801) << QByteArray("PNG");
        QTest::newRow("too wide") << QSize(8001, 6000) << QByteArray("PNG");
        QTest::newRow("too high") << QSize(6000, 8001) << QByteArray("PNG");
        QTest::newRow("large") << QSize(9000, 9000) << QByteArray("PNG");
    }
    void pictureOfAnInsaneSizeCountsAsNone()
    {
        QFETCH(QSize, size);
        QFETCH(QByteArray, format);
        const QByteArray bytes = picture(size.width(), size.height(), format.constData());
        QVERIFY(QImage::fromData(bytes).size() == size);

        QVERIFY(decodedPhoto(bytes).isNull());
    }

    void bytesThatAreNoPictureCountAsNone_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("one byte") << QByteArray("\xFF");
        QTest::newRow("words") << QByteArray("to nie jest zdjęcie");
        QTest::newRow("zeros") << QByteArray(5000, '\0');
        QTest::newRow("JPEG marks around nothing") << QByteArray::fromHex("FFD8FFD9");
        const QByteArray png = picture(413, 531, "PNG");
        QTest::newRow("signature only") << png.left(8);
        QTest::newRow("cut inside the header") << png.left(20);
        QTest::newRow("header only") << png.left(33);
    }
    void bytesThatAreNoPictureCountAsNone()
    {
        QFETCH(QByteArray, bytes);

        QVERIFY(decodedPhoto(bytes).isNull());
    }
};

VELMOR_TEST(TestPhotoDecoder)
#include "tst_photo_decoder.moc"
