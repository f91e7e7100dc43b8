#include "gui/box_shadow.h"

#include "support/picture_difference.h"
#include "support/testmain.h"

#include <QFrame>
#include <QPainter>
#include <QWidget>

#include <vector>

namespace {

struct Look {
    QColor colour { 186, 187, 188 };
    qreal blur = 20;
    QPointF offset { 1, 1 };
};

// Counts how often a widget is asked to paint itself.
class Paints : public QObject {
public:
    explicit Paints(QWidget *widget) { widget->installEventFilter(this); }
    int count = 0;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == QEvent::Paint;
        return false;
    }
};

} // namespace

// The quick shadow of boxes: the same to the eye as the toolkit's own.
class TestBoxShadow : public QObject {
    Q_OBJECT

private:
    static constexpr int margin = 40;

    using MakeShadow = std::function<QGraphicsDropShadowEffect *(QWidget *)>;

    // A box of one colour in the middle of a white ground, with a shadow.
    static QImage picture(const MakeShadow &makeShadow, qreal ratio = 1, QSize size = { 220, 120 }, int radius = 0,
                          const Look &look = {})
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
        shadow->setColor(look.colour);
        shadow->setBlurRadius(look.blur);
        shadow->setOffset(look.offset);
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
        // Five steps of 255 are beyond any eye.
        QCOMPARE(differenceInGrey(own, toolkit, 5), QString());
    }

    // Black and hardly blurred, so that a pixel too far to any side is no shade but most of what there is.
    void liesToThePixelWhereTheToolkitsLies_data()
    {
        QTest::addColumn<QPointF>("offset");
        QTest::newRow("down to the right") << QPointF(2, 2);
        QTest::newRow("up to the left") << QPointF(-2, -2);
    }
    void liesToThePixelWhereTheToolkitsLies()
    {
        QFETCH(QPointF, offset);
        const Look look { Qt::black, 3, offset };

        const QImage own = picture([](QWidget *box) { return new BoxShadow(box); }, 1, { 220, 120 }, 0, look);
        const QImage toolkit =
            picture([](QWidget *) { return new QGraphicsDropShadowEffect; }, 1, { 220, 120 }, 0, look);

        QCOMPARE(differenceInGrey(own, toolkit, 25), QString());
    }

    // A ring round a button leaves a line of the ground open.
    void doesNotShineThroughTheBox_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<int>("ring");
        // Four corners of the shadow, each 32 pixels, reach 10 pixels out of a box of 44.
        QTest::newRow("just as high as two corners") << QSize(220, 44) << 2;
        QTest::newRow("just as wide as two corners") << QSize(44, 120) << 2;
        QTest::newRow("thin ring") << QSize(220, 44) << 1;
    }
    void doesNotShineThroughTheBox()
    {
        QFETCH(QSize, size);
        QFETCH(int, ring);
        QWidget ground;
        fill(ground, Qt::white);
        ground.resize(size + QSize(2 * margin, 2 * margin));
        QFrame box(&ground);
        box.setStyleSheet(QString("border: %1px solid black; border-radius: 10px; padding: 2px;"
                                  "background-clip: content; background: red;")
                              .arg(ring));
        box.setGeometry(ground.rect().adjusted(margin, margin, -margin, -margin));
        auto *shadow = new BoxShadow(&box, 12);
        shadow->setBlurRadius(10);
        shadow->setOffset(1, 1);
        box.setGraphicsEffect(shadow);

        const QImage image = grab(ground, 1);

        for (int i : { ring, ring + 1 }) {
            QCOMPARE(image.pixelColor(margin + i, image.height() / 2), QColor(Qt::white));
            QCOMPARE(image.pixelColor(image.width() / 2, image.height() - margin - 1 - i), QColor(Qt::white));
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

    void isBlurredOnce_data()
    {
        QTest::addColumn<qreal>("ratio");
        QTest::newRow("plain screen") << 1.0;
        QTest::newRow("dense screen") << 2.0;
    }
    void isBlurredOnce()
    {
        QFETCH(qreal, ratio);
        WhiteBox scene;
        grab(scene.ground, ratio);
        auto *shadow = new BoxShadow(&scene.box);
        shadow->setBlurRadius(20);
        scene.box.setGraphicsEffect(shadow);
        // The toolkit counts its pictures.
        const auto picturesMade = [&scene, ratio] {
            const auto count = [] { return QImage(1, 1, QImage::Format_RGB32).cacheKey() >> 32; };
            const qint64 before = count();
            grab(scene.ground, ratio);
            return count() - before;
        };

        const qint64 first = picturesMade();

        QVERIFY(picturesMade() < first);
    }

    void isMadeOnCleanGround()
    {
        // given: memory in which others have left something red, for each picture that is made
        std::vector<QImage> left(60, QImage());
        for (QImage &image : left) {
            image = QImage(81, 81, QImage::Format_ARGB32_Premultiplied);
            image.fill(Qt::red);
        }
        // The last one stays, so that the memory of the others is not given back to the system.
        left.erase(left.begin(), left.end() - 1);

        const QImage image = quick();

        // There is hardly any shadow left there.
        QVERIFY(qGreen(image.pixel(margin - 18, image.height() / 2)) > 240);
        QVERIFY(qGreen(image.pixel(image.width() / 2, image.height() - margin + 18)) > 240);
    }

    void onlyWhatIsExposedIsPainted_data()
    {
        QTest::addColumn<QRect>("exposed");
        QTest::addColumn<bool>("nearIsPainted");
        QTest::addColumn<bool>("farIsPainted");
        QTest::newRow("a child") << QRect(55, 55, 10, 10) << true << false;
        QTest::newRow("the shadow alone") << QRect(25, 100, 10, 10) << false << false;
        QTest::newRow("all") << QRect(0, 0, 300, 200) << true << true;
    }
    void onlyWhatIsExposedIsPainted()
    {
        QFETCH(QRect, exposed);
        WhiteBox scene;
        auto *shadow = new BoxShadow(&scene.box);
        shadow->setBlurRadius(20);
        shadow->setOffset(0, 0);
        scene.box.setGraphicsEffect(shadow);
        QWidget nearChild(&scene.box);
        nearChild.setGeometry(10, 10, 40, 40);
        QWidget farChild(&scene.box);
        farChild.setGeometry(150, 60, 40, 40);
        Paints nearPaints(&nearChild);
        Paints farPaints(&farChild);
        QImage image(exposed.size(), QImage::Format_RGB32);

        scene.ground.render(&image, QPoint(), exposed);

        QTEST(nearPaints.count > 0, "nearIsPainted");
        QTEST(farPaints.count > 0, "farIsPainted");
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
