#include "gui/box_shadow.h"

#include "support/testmain.h"

#include <QFrame>
#include <QPainter>
#include <QWidget>

// The quick shadow of boxes: the same to the eye as the toolkit's own.
class TestBoxShadow : public QObject {
    Q_OBJECT

private:
    static constexpr int margin = 40;

    using MakeShadow = std::function<QGraphicsDropShadowEffect *(QWidget *)>;

    // A box of one colour in the middle of a white ground, with a shadow.
    static QImage picture(const MakeShadow &makeShadow, qreal ratio = 1, QSize size = { 220, 120 }, int radius = 0)
    {
        QWidget ground;
        fill(ground, Qt::white);
        ground.resize(size + QSize(2 * margin, 2 * margin));
        QFrame box(&ground);
        if (radius > 0)
            box.setStyleSheet(QString("background:rgb(236,237,238);border-radius:%1px").arg(radius));
        else
            fill(box, QColor(236, 237, 238));
        box.setGeometry(ground.rect().adjusted(margin, margin, -margin, -margin));
        QGraphicsDropShadowEffect *shadow = makeShadow(&box);
        shadow->setColor(QColor(186, 187, 188));
        shadow->setBlurRadius(20);
        shadow->setOffset(1, 1);
        box.setGraphicsEffect(shadow);
        return grab(ground, ratio);
    }

    struct WhiteBox {
        WhiteBox()
        {
            fill(ground, Qt::white);
            ground.resize(300, 200);
            fill(box, Qt::white);
            box.setGeometry(ground.rect().adjusted(margin, margin, -margin, -margin));
        }
        QWidget ground;
        QFrame box { &ground };
    };

    static void fill(QWidget &widget, const QColor &colour)
    {
        QPalette palette;
        palette.setColor(QPalette::Window, colour);
        widget.setPalette(palette);
        widget.setAutoFillBackground(true);
    }

    static QImage grab(QWidget &widget, qreal ratio)
    {
        QImage image(widget.size() * ratio, QImage::Format_RGB32);
        image.setDevicePixelRatio(ratio);
        image.fill(Qt::white);
        widget.render(&image);
        return image;
    }

    static QImage quick(qreal ratio = 1)
    {
        return picture([](QWidget *box) { return new BoxShadow(box); }, ratio);
    }

private slots:
    void looksLikeTheToolkitsOwnShadow_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<int>("radius");
        QTest::newRow("square corners") << QSize(220, 120) << 0;
        QTest::newRow("corners of a dialog") << QSize(220, 120) << 12;
        QTest::newRow("corners of a tile") << QSize(220, 120) << 6;
        QTest::newRow("just room for four corners") << QSize(66, 66) << 12;
        QTest::newRow("no room for four corners") << QSize(50, 40) << 0;
        QTest::newRow("no room for four round corners") << QSize(50, 40) << 12;
        QTest::newRow("no room below one another") << QSize(220, 30) << 12;
        QTest::newRow("tiny") << QSize(4, 3) << 0;
    }
    void looksLikeTheToolkitsOwnShadow()
    {
        QFETCH(QSize, size);
        QFETCH(int, radius);

        const QImage own = picture([radius](QWidget *box) { return new BoxShadow(box, radius); }, 1, size, radius);
        const QImage toolkit = picture([](QWidget *) { return new QGraphicsDropShadowEffect; }, 1, size, radius);

        QCOMPARE(own.size(), toolkit.size());
        int worst = 0;
        QPoint where;
        for (int y = 0; y < own.height(); ++y) {
            for (int x = 0; x < own.width(); ++x) {
                const int difference = qAbs(qGray(own.pixel(x, y)) - qGray(toolkit.pixel(x, y)));
                if (difference > worst) {
                    worst = difference;
                    where = { x, y };
                }
            }
        }
        // Five steps of 255 are beyond any eye.
        QVERIFY2(worst <= 5, qPrintable(QString("%1 at %2, %3").arg(worst).arg(where.x()).arg(where.y())));
    }

    // A ring round a button leaves a line of the ground open.
    void doesNotShineThroughTheBox()
    {
        QWidget ground;
        fill(ground, Qt::white);
        ground.resize(300, 124);
        QFrame box(&ground);
        box.setStyleSheet("border: 2px solid black; border-radius: 10px; padding: 2px; background-clip: content;"
                          "background: red;");
        box.setGeometry(ground.rect().adjusted(margin, margin, -margin, -margin));
        auto *shadow = new BoxShadow(&box, 12);
        shadow->setBlurRadius(10);
        shadow->setOffset(1, 1);
        box.setGraphicsEffect(shadow);

        const QImage image = grab(ground, 1);

        for (int i : { 2, 3 }) {
            QCOMPARE(image.pixelColor(margin + i, 62), QColor(Qt::white));
            QCOMPARE(image.pixelColor(150, 124 - margin - 1 - i), QColor(Qt::white));
        }
    }

    void fallsOnAllFourSides()
    {
        const QImage image = quick();
        const int middleX = image.width() / 2;
        const int middleY = image.height() / 2;
        constexpr int near = 4;

        for (const QPoint &beside : { QPoint(margin - near, middleY), QPoint(image.width() - margin + near, middleY),
                                      QPoint(middleX, margin - near), QPoint(middleX, image.height() - margin + near) })
            QVERIFY(qGray(image.pixel(beside)) < 250);
        QCOMPARE(qGray(image.pixel(2, 2)), 255);
    }

    // As a window that is moved to another screen.
    void isDrawnAnewForAnotherDensity()
    {
        WhiteBox scene;
        QWidget &ground = scene.ground;
        QFrame &box = scene.box;
        auto *shadow = new BoxShadow(&box);
        shadow->setBlurRadius(20);
        box.setGraphicsEffect(shadow);
        const QImage plain = grab(ground, 1);
        const QImage dense = grab(ground, 2);

        QCOMPARE(grab(ground, 1), plain);
        auto *fresh = new BoxShadow(&box);
        fresh->setBlurRadius(20);
        box.setGraphicsEffect(fresh);
        QCOMPARE(grab(ground, 2), dense);
    }

    void isDrawnAnewForAnotherColourOrBlur()
    {
        WhiteBox scene;
        QWidget &ground = scene.ground;
        QFrame &box = scene.box;
        const auto shadowOf = [&box](const QColor &colour, qreal blur) {
            auto *shadow = new BoxShadow(&box);
            shadow->setColor(colour);
            shadow->setBlurRadius(blur);
            box.setGraphicsEffect(shadow);
            return shadow;
        };
        shadowOf(Qt::red, 20);
        const QImage red = grab(ground, 1);
        shadowOf(Qt::red, 10);
        const QImage sharp = grab(ground, 1);
        QVERIFY(sharp != red);

        BoxShadow *shadow = shadowOf(Qt::blue, 20);
        QVERIFY(grab(ground, 1) != red);
        shadow->setColor(Qt::red);
        QCOMPARE(grab(ground, 1), red);
        shadow->setBlurRadius(10);
        QCOMPARE(grab(ground, 1), sharp);
    }

    void isAsWideInPointsOnADenseScreen()
    {
        const QImage plain = quick();
        const QImage dense = quick(2);
        const int middleY = plain.height() / 2;

        for (int x = margin - 16; x < margin - 1; x += 3) {
            const int difference = qGray(plain.pixel(x, middleY)) - qGray(dense.pixel(2 * x, 2 * middleY));
            QVERIFY2(qAbs(difference) <= 6, qPrintable(QString("%1: %2").arg(x).arg(difference)));
        }
    }

    void shadowsInsideAShadowedFrameAreWhole()
    {
        QWidget ground;
        fill(ground, Qt::white);
        ground.resize(400, 300);
        QWidget frame(&ground);
        fill(frame, Qt::white);
        // Off the origin, since that is where a clip of the inner shadow would go wrong.
        frame.setGeometry(30, 0, 340, 270);
        auto *outer = new BoxShadow(&frame);
        outer->setBlurRadius(20);
        frame.setGraphicsEffect(outer);
        QWidget tile(&frame);
        fill(tile, QColor(236, 237, 238));
        tile.setGeometry(50, 50, 200, 100);
        auto *inner = new BoxShadow(&tile);
        inner->setBlurRadius(20);
        inner->setColor(QColor(186, 187, 188));
        inner->setOffset(0, 0);
        tile.setGraphicsEffect(inner);

        const QImage image = grab(ground, 1);

        const int left = qGray(image.pixel(30 + 50 - 5, 100));
        const int right = qGray(image.pixel(30 + 250 + 4, 100));
        QVERIFY(left < 250);
        QVERIFY2(qAbs(left - right) <= 2, qPrintable(QString("%1 %2").arg(left).arg(right)));
    }

    void painterIsLeftAsItWas()
    {
        const LogCatcher log;

        picture([](QWidget *box) { return new BoxShadow(box); });

        // The toolkit would tell of states that were saved and not taken back.
        QCOMPARE(log.lines(), QStringList());
    }

    void widgetsInTheFrameArePaintedInFull()
    {
        QWidget ground;
        ground.resize(200, 200);
        QWidget frame(&ground);
        frame.setGeometry(20, 0, 160, 180);
        frame.setGraphicsEffect(new BoxShadow(&frame));
        QWidget child(&frame);
        fill(child, Qt::red);
        child.setGeometry(10, 10, 140, 160);

        const QImage image = grab(ground, 1);

        for (const QPoint &corner : { QPoint(30, 10), QPoint(169, 10), QPoint(30, 169), QPoint(169, 169) })
            QCOMPARE(QColor(image.pixel(corner)), QColor(Qt::red));
    }
};

VELMOR_TEST(TestBoxShadow)
#include "tst_box_shadow.moc"
