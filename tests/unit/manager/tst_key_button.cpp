#include "key_button.h"

#include "support/testmain.h"

#include <QImage>

// Where the key stands on a button, to the pixel. How it looks in the themes is another test's.
class TestKeyButton : public QObject {
    Q_OBJECT

private:
    const QString word = "       Zmień PIN";
    std::unique_ptr<KeyButton> button;

    // Of a key that is a red square.
    QRect placeOfTheKey() const
    {
        const QImage image = button->grab().toImage();
        QRect place;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (QColor(image.pixel(x, y)) == Qt::red)
                    place |= QRect(x, y, 1, 1);
            }
        }
        return place;
    }
    int darkPixels() const
    {
        const QImage image = button->grab().toImage();
        int dark = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                dark += qGray(image.pixel(x, y)) < 40 ? 1 : 0;
        }
        return dark;
    }

private slots:
    void init()
    {
        QImage key(16, 16, QImage::Format_RGB32);
        key.fill(Qt::red);
        QVERIFY(key.save(TestHome::path() + "/key.png"));
        button = std::make_unique<KeyButton>();
        button->setStyleSheet("border: none; padding: 0; background: white; color: black;");
        button->setProperty("pictures", TestHome::path() + "/key%1.png");
    }

    void keyAndWordTogetherStandInTheMiddle_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("small") << QSize(200, 34);
        QTest::newRow("large") << QSize(300, 60);
    }
    void keyAndWordTogetherStandInTheMiddle()
    {
        QFETCH(QSize, size);
        button->setText(word);
        button->resize(size);
        button->ensurePolished();

        const QRect place = placeOfTheKey();

        // The word brings seven blanks, over which the key stands.
        const int advance = button->fontMetrics().horizontalAdvance(word);
        QCOMPARE(place, QRect((size.width() - advance) / 2, (size.height() - 16) / 2, 16, 16));
        QVERIFY(darkPixels() > 0);
    }

    void keyKeepsInsideThePadding()
    {
        button->setStyleSheet("border: none; padding: 10px 20px 4px 60px; background: white; color: black;");
        button->setText(word);
        button->resize(300, 60);
        button->ensurePolished();

        const QRect place = placeOfTheKey();

        const int advance = button->fontMetrics().horizontalAdvance(word);
        QCOMPARE(place.topLeft(), QPoint(60 + (300 - 80 - advance) / 2, 10 + (60 - 14 - 16) / 2));
    }

    void buttonWithoutAWordHasNoKey()
    {
        button->setText("       ");
        button->resize(140, 34);
        QVERIFY(placeOfTheKey().isEmpty());
    }

    void buttonWithoutPicturesIsAnOrdinaryOne()
    {
        button->setProperty("pictures", QString());
        button->setText(word);
        button->resize(140, 34);
        const LogCatcher log;

        QVERIFY(placeOfTheKey().isEmpty());

        QVERIFY(darkPixels() > 0);
        QVERIFY2(!log.has("QString::arg"), qPrintable(log.text()));
    }
};

VELMOR_TEST(TestKeyButton)
#include "tst_key_button.moc"
