#include "base/settings.h"
#include "gui/gui_base.h"
#include "shared.h"
#include "support/testmain.h"

#include <QFile>
#include <QGraphicsDropShadowEffect>
#include <QLabel>
#include <QMainWindow>
#include <QScreen>
#include <QStyle>
#include <QVBoxLayout>

namespace {

QByteArray redSquare()
{
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"10\" height=\"10\" viewBox=\"0 0 10 10\">"
           "<rect width=\"10\" height=\"10\" fill=\"#ff0000\"/></svg>";
}

const QGraphicsDropShadowEffect *shadowOf(const QWidget &widget)
{
    return qobject_cast<QGraphicsDropShadowEffect *>(widget.graphicsEffect());
}

QRect centredOnScreen(QSize size)
{
    return QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, size,
                               QGuiApplication::primaryScreen()->availableGeometry());
}

} // namespace

class TestGuiBase : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        Shared::loadResources();
        // The object is not there yet, and takes the theme as it is made.
        Settings::instance()->setValue("theme", "dark");
        QCOMPARE(GuiBase::instance()->theme(), QString("dark"));
    }

    void init() { Settings::instance()->setValue("theme", QVariant()); }

    void themeComesFromTheSettings_data()
    {
        QTest::addColumn<QVariant>("setting");
        QTest::addColumn<QString>("expected");

        QTest::newRow("none") << QVariant() << "light";
        QTest::newRow("empty") << QVariant("") << "light";
        QTest::newRow("light") << QVariant("light") << "light";
        QTest::newRow("dark") << QVariant("dark") << "dark";
        QTest::newRow("hc") << QVariant("hc") << "hc";
        QTest::newRow("highContrast is the folder hc") << QVariant("highContrast") << "hc";
        QTest::newRow("unknown") << QVariant("sepia") << "light";
        QTest::newRow("unknown with highContrast in it") << QVariant("highContrast2") << "light";
        QTest::newRow("a file is no theme") << QVariant("light/styles-popup.css") << "light";
    }

    void themeComesFromTheSettings()
    {
        QFETCH(QVariant, setting);
        Settings::instance()->setValue("theme", setting);

        GuiBase::instance()->load();

        QTEST(GuiBase::instance()->theme(), "expected");
    }

    void aThemeThatGoesAwayGivesWayToTheDefault()
    {
        Settings::instance()->setValue("theme", "dark");
        GuiBase::instance()->load();
        Settings::instance()->setValue("theme", "sepia");

        GuiBase::instance()->load();

        QCOMPARE(GuiBase::instance()->theme(), QString("light"));
    }

    void activatedWidgetComesToTheFront()
    {
        QWidget parent;
        auto *first = new QWidget(&parent);
        auto *second = new QWidget(&parent);
        QCOMPARE(parent.children().last(), second);

        GuiBase::instance()->activate(first);

        QCOMPARE(parent.children().last(), first);
    }

    void filesAreThoseOfTheTheme()
    {
        Settings::instance()->setValue("theme", "dark");
        GuiBase::instance()->load();
        GuiBase *base = GuiBase::instance();

        QCOMPARE(base->path("styles-popup.css"), QString(":/themes/dark/styles-popup.css"));
        QFile file(":/themes/dark/styles-popup.css");
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(base->file("styles-popup.css"), QString::fromUtf8(file.readAll()));
        QVERIFY(!base->file("styles-popup.css").isEmpty());
        QCOMPARE(base->file("no-such-file.css"), QString());
    }

    void drawingsAreTheThemesOwnWhereItHasThem_data()
    {
        QTest::addColumn<QString>("theme");
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("expected");

        QTest::newRow("own") << "dark"
                             << "no_photo.svg"
                             << ":/themes/dark/no_photo.svg";
        QTest::newRow("none of its own") << "dark"
                                         << "warning.svg"
                                         << ":/images/warning.svg";
        QTest::newRow("none in the light theme") << "light"
                                                 << "no_photo.svg"
                                                 << ":/images/no_photo.svg";
    }

    void drawingsAreTheThemesOwnWhereItHasThem()
    {
        QFETCH(QString, theme);
        QFETCH(QString, file);
        QFETCH(QString, expected);
        Settings::instance()->setValue("theme", theme);
        GuiBase::instance()->load();

        QCOMPARE(GuiBase::instance()->picture(file), expected);
        QVERIFY(QFile::exists(expected));
    }

    void coloursAreTheThemes()
    {
        Settings::instance()->setValue("theme", "dark");
        GuiBase::instance()->load();

        QCOMPARE(GuiBase::instance()->colour("link"), QColor("#4DB2F5"));
        QVERIFY(!GuiBase::instance()->colour("no such role").isValid());
    }

    void oneObjectForTheProcess() { QCOMPARE(GuiBase::instance(), GuiBase::instance()); }

    void frameGetsItsMarginsInACentredWindow()
    {
        QMainWindow window;
        window.setCentralWidget(new QWidget);
        QWidget frame(&window);

        GuiBase::frameSetup(&window, &frame, QSize(300, 200));

        QCOMPARE(window.geometry(), centredOnScreen(QSize(340, 220)));
        QCOMPARE(frame.geometry(), QRect(20, 0, 300, 200));
        QVERIFY(window.contentsMargins().isNull());
    }

    void aSizeWithoutHeightMeansThePresentOne()
    {
        QMainWindow window;
        window.resize(500, 400);
        QWidget frame(&window);

        GuiBase::frameSetup(&window, &frame, QSize(300, 0));

        QCOMPARE(window.size(), QSize(540, 420));
        QCOMPARE(frame.geometry(), QRect(20, 0, 500, 400));
    }

    void aSizeOfOneLineIsTakenAsItIs()
    {
        QMainWindow window;
        window.resize(500, 400);
        QWidget frame(&window);

        GuiBase::frameSetup(&window, &frame, QSize(300, 1));

        QCOMPARE(frame.geometry(), QRect(20, 0, 300, 1));
    }

    void aLaidOutWindowGetsTheMarginsItself()
    {
        QMainWindow window;
        window.setCentralWidget(new QWidget);
        auto *layout = new QVBoxLayout(window.centralWidget());
        auto *frame = new QWidget;
        layout->addWidget(frame);
        frame->setGeometry(1, 2, 3, 4);

        GuiBase::frameSetup(&window, frame, QSize(300, 200));

        QCOMPARE(window.contentsMargins(), QMargins(20, 0, 20, 20));
        QCOMPARE(frame->geometry(), QRect(1, 2, 3, 4));
        QCOMPARE(window.geometry(), centredOnScreen(QSize(340, 220)));
    }

    void frameCastsAShadow()
    {
        QMainWindow window;
        QWidget frame(&window);

        GuiBase::frameSetup(&window, &frame, QSize(300, 200));

        QVERIFY(shadowOf(frame));
        QCOMPARE(shadowOf(frame)->blurRadius(), 20.0);
        QCOMPARE(shadowOf(frame)->offset(), QPointF(3, 3));
    }

    void framelessWindowHasTheseFlags()
    {
        QMainWindow window;
        QWidget frame(&window);

        GuiBase::frameInit(&window, &frame, QSize(300, 200));

        QCOMPARE(int(window.windowFlags()), 0x4901);
        QVERIFY(window.testAttribute(Qt::WA_TranslucentBackground));
        window.show();
        QCOMPARE(window.geometry(), centredOnScreen(QSize(340, 220)));
    }

    void shadowNeedsABlur_data()
    {
        QTest::addColumn<int>("blur");
        QTest::addColumn<bool>("expected");

        QTest::newRow("negative") << -1 << false;
        QTest::newRow("none") << 0 << false;
        QTest::newRow("one") << 1 << true;
        QTest::newRow("forty") << 40 << true;
    }

    void shadowNeedsABlur()
    {
        QFETCH(int, blur);
        QFETCH(bool, expected);
        QWidget widget;

        GuiBase::shadowSet(&widget, blur);

        QCOMPARE(shadowOf(widget) != nullptr, expected);
        if (expected) {
            QCOMPARE(shadowOf(widget)->blurRadius(), double(blur));
            QCOMPARE(shadowOf(widget)->offset(), QPointF(3, 3));
        }
    }

    void svgFillsThePictureInTheScreensResolution()
    {
        const qreal ratio = QGuiApplication::primaryScreen()->devicePixelRatio();

        const QPixmap pixmap = GuiBase::renderSvg(redSquare(), QSize(31, 17));

        QCOMPARE(pixmap.size(), QSize(qRound(31 * ratio), qRound(17 * ratio)));
        QCOMPARE(pixmap.devicePixelRatio(), ratio);
        const QImage image = pixmap.toImage();
        QCOMPARE(image.pixelColor(0, 0), QColor(255, 0, 0));
        QCOMPARE(image.pixelColor(image.width() - 1, image.height() - 1), QColor(255, 0, 0));
    }

    void brokenSvgGivesATransparentPicture()
    {
        const QPixmap pixmap = GuiBase::renderSvg("no picture", QSize(8, 8));

        QCOMPARE(pixmap.size(), QSize(8, 8));
        QCOMPARE(pixmap.toImage().pixelColor(4, 4).alpha(), 0);
    }

    void svgWithoutSizeGivesNoPicture() { QVERIFY(GuiBase::renderSvg(redSquare(), QSize(0, 5)).isNull()); }

    void activateBringsAWindowToTheFront()
    {
        QWidget first;
        QWidget second;
        first.show();
        second.show();
        QVERIFY(QTest::qWaitForWindowActive(&second));

        GuiBase::activate(&first);

        QVERIFY(QTest::qWaitForWindowActive(&first));
    }
};

VELMOR_TEST(TestGuiBase)
#include "tst_gui_base.moc"
