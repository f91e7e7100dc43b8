#include "base/common.h"
#include "gui/gui_base.h"
#include "gui/gui_scaler.h"
#include "shared.h"
#include "support/testmain.h"

#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QTemporaryDir>
#include <QVBoxLayout>

namespace {

QByteArray square(const QByteArray &colour)
{
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 10 10\"><rect width=\"10\" height=\"10\" fill=\""
        + colour + "\"/></svg>";
}

QColor middle(const QPixmap &pixmap)
{
    return pixmap.toImage().pixelColor(pixmap.width() / 2, pixmap.height() / 2);
}

QLabel *pixelLabel(QWidget *parent, int pixels)
{
    auto *label = new QLabel("Tekst", parent);
    label->setStyleSheet(QString(".QLabel{font-size:%1px}").arg(pixels));
    return label;
}

} // namespace

class TestGuiScaler : public QObject {
    Q_OBJECT

    QTemporaryDir folder;
    QString theme() const { return folder.path() + "/"; }
    void writeTheme(const QString &name, const QByteArray &bytes) { QVERIFY(writeFileBytes(theme() + name, bytes)); }

private slots:
    void initTestCase()
    {
        Shared::loadResources();
        writeTheme("red.svg", square("#ff0000"));
        writeTheme("Go.svg", square("#0000ff"));
        writeTheme("Go_hover.svg", square("#00ff00"));
        writeTheme("warning.svg", square("#ff0000"));
    }

    void startsWithTheDensityOfTheScreen()
    {
        QCOMPARE(GuiScaler().scale(), QGuiApplication::primaryScreen()->logicalDotsPerInch() / 96.0);
    }

    void dpiBecomesAFactorInSinglePrecision_data()
    {
        QTest::addColumn<double>("dpi");
        QTest::addColumn<double>("expected");

        QTest::newRow("96") << 96.0 << 1.0;
        QTest::newRow("144") << 144.0 << 1.5;
        QTest::newRow("192") << 192.0 << 2.0;
        QTest::newRow("100, cut to 24 bits") << 100.0 << 1.0416666269302368;
        QTest::newRow("one") << 1.0 << 0.010416666977107525;
        QTest::newRow("none") << 0.0 << 1.25;
        QTest::newRow("negative") << -96.0 << 1.25;
    }

    void dpiBecomesAFactorInSinglePrecision()
    {
        QFETCH(double, dpi);
        GuiScaler scaler;
        scaler.setFactor(1.25);

        scaler.setDpi(dpi);

        QTEST(scaler.scale(), "expected");
    }

    void factorMustBeAboveZero()
    {
        GuiScaler scaler;
        scaler.setFactor(1.7);
        scaler.setFactor(0);
        scaler.setFactor(-2);

        QCOMPARE(scaler.scale(), 1.7);
    }

    // 15 * 1.25 = 18.75 tells cutting from rounding.
    void fontsAndHeightsAreCut()
    {
        QWidget window;
        QLabel *label = pixelLabel(&window, 15);
        QWidget bar(&window);
        bar.resize(50, 15);
        GuiScaler scaler;
        scaler.setFactor(1.25);

        scaler.font(".QLabel", { label });
        scaler.height({ &bar });

        QVERIFY(label->styleSheet().endsWith("\n.QLabel{font-size:18px}"));
        label->ensurePolished();
        QCOMPARE(label->font().pixelSize(), 18);
        QCOMPARE(bar.minimumHeight(), 18);
        QCOMPARE(bar.maximumHeight(), 18);
        QCOMPARE(bar.width(), 50);
    }

    void sizesMarginsAndPicturesAreRounded()
    {
        QWidget window;
        QWidget box(&window);
        box.resize(15, 9);
        QVBoxLayout layout(&box);
        layout.setContentsMargins(15, 9, 3, 1);
        QLabel label(&window);
        label.setPixmap(QPixmap(15, 9));
        GuiScaler scaler(theme());
        scaler.setFactor(1.25);

        scaler.size({ &box });
        scaler.margins({ &box });
        scaler.svgOne(&label, "red.svg");

        QCOMPARE(box.minimumSize(), QSize(19, 11));
        QCOMPARE(box.maximumSize(), QSize(19, 11));
        QCOMPARE(layout.contentsMargins(), QMargins(19, 11, 4, 1));
        QCOMPARE(label.pixmap(Qt::ReturnByValue).size(), QSize(19, 11));
    }

    void scalingAgainStartsFromTheUnscaledValues_data()
    {
        QTest::addColumn<double>("second");
        QTest::addColumn<int>("expected");

        QTest::newRow("same factor") << 2.0 << 40;
        QTest::newRow("smaller") << 1.5 << 30;
        QTest::newRow("back to 1") << 1.0 << 20;
    }

    void scalingAgainStartsFromTheUnscaledValues()
    {
        QFETCH(double, second);
        QFETCH(int, expected);
        QWidget window;
        QLabel *label = pixelLabel(&window, 20);
        QWidget bar(&window);
        bar.resize(50, 20);
        QWidget box(&window);
        box.resize(20, 20);
        QVBoxLayout layout(&box);
        layout.setContentsMargins(20, 20, 20, 20);
        QLabel picture(&window);
        picture.setPixmap(QPixmap(20, 20));
        GuiScaler scaler(theme());

        for (double factor : { 2.0, second }) {
            scaler.setFactor(factor);
            scaler.font(".QLabel", { label });
            scaler.height({ &bar });
            scaler.size({ &box });
            scaler.margins({ &box });
            scaler.svgOne(&picture, "red.svg");
        }

        label->ensurePolished();
        QCOMPARE(label->font().pixelSize(), expected);
        QCOMPARE(bar.height(), expected);
        QCOMPARE(box.size(), QSize(expected, expected));
        QCOMPARE(layout.contentsMargins(), QMargins(expected, expected, expected, expected));
        QCOMPARE(picture.pixmap(Qt::ReturnByValue).size(), QSize(expected, expected));
    }

    void unscaledValuesStayOnTheWidgets()
    {
        QWidget window;
        QLabel *label = pixelLabel(&window, 20);
        QWidget box(&window);
        box.resize(50, 30);
        QVBoxLayout layout(&box);
        layout.setContentsMargins(1, 2, 3, 4);
        QLabel picture(&window);
        picture.setPixmap(QPixmap(20, 10));
        GuiScaler scaler(theme());
        scaler.setFactor(3);

        scaler.font(".QLabel", { label });
        scaler.margins({ &box });
        scaler.height({ &box });
        scaler.svgOne(&picture, "red.svg");

        QCOMPARE(label->property("fontSizeBeforeScaling"), QVariant(20));
        QCOMPARE(box.property("marginsBeforeScaling"), QVariant(QRect(1, 2, 3, 4)));
        QCOMPARE(box.property("heightBeforeScaling"), QVariant(30));
        QCOMPARE(picture.property("pixmapSize"), QVariant(QSize(20, 10)));
        scaler.size({ &picture });
        QCOMPARE(picture.property("sizeBeforeScaling").toSize() * 3, picture.size());
    }

    void rememberedValuesGoBeforePresentOnes()
    {
        QWidget box;
        box.resize(10, 10);
        box.setProperty("sizeBeforeScaling", QSize(100, 50));
        GuiScaler scaler;
        scaler.setFactor(2);

        scaler.size({ &box });

        QCOMPARE(box.size(), QSize(200, 100));
    }

    void fontIsReadAfterPolishing()
    {
        // given: a size that only the window's style sheet knows
        QWidget window;
        window.setStyleSheet("QLabel{font-size:14px}");
        QLabel label(&window);
        GuiScaler scaler;
        scaler.setFactor(2);

        scaler.font(".QLabel", { &label });

        QCOMPARE(label.property("fontSizeBeforeScaling"), QVariant(14));
        QCOMPARE(label.styleSheet(), QString("\n.QLabel{font-size:28px}"));
    }

    void everyScalingAppendsOneRule()
    {
        QWidget window;
        QLabel *label = pixelLabel(&window, 10);
        GuiScaler scaler;

        for (double factor : { 1.0, 2.0, 3.0 }) {
            scaler.setFactor(factor);
            scaler.font(".QLabel", { label });
        }

        QCOMPARE(label->styleSheet(),
                 QString(".QLabel{font-size:10px}\n.QLabel{font-size:10px}\n.QLabel{font-size:20px}"
                         "\n.QLabel{font-size:30px}"));
    }

    void aPointSizedFontEndsTheList()
    {
        QWidget window;
        QLabel *first = pixelLabel(&window, 10);
        QLabel points(&window);
        points.setObjectName("lPoints");
        QFont font;
        font.setPointSize(12);
        points.setFont(font);
        QLabel *last = pixelLabel(&window, 10);
        GuiScaler scaler;
        scaler.setFactor(2);
        LogCatcher log;

        scaler.font(".QLabel", { first, &points, last });

        first->ensurePolished();
        last->ensurePolished();
        QCOMPARE(first->font().pixelSize(), 20);
        QCOMPARE(last->font().pixelSize(), 10);
        QVERIFY(!last->property("fontSizeBeforeScaling").isValid());
        QVERIFY(points.styleSheet().isEmpty());
        QCOMPARE(log.lines().size(), 1);
        QVERIFY(log.text().startsWith("scale skipped, "));
        QVERIFY(log.text().contains("lPoints"));
        QVERIFY(log.text().endsWith("has font.pixelSize=-1"));
    }

    void aWidgetWithoutLayoutHasNoMargins()
    {
        QWidget bare;
        QWidget box;
        QVBoxLayout layout(&box);
        layout.setContentsMargins(5, 5, 5, 5);
        GuiScaler scaler;
        scaler.setFactor(2);

        scaler.margins({ &bare, &box });

        QCOMPARE(layout.contentsMargins(), QMargins(10, 10, 10, 10));
    }

    void pictureNameIsTheObjectNameWithoutItsFirstLetter()
    {
        QPushButton button;
        button.setObjectName("bGo");
        button.setIconSize(QSize(16, 16));
        QLabel label;
        label.setObjectName("lred");
        label.setPixmap(QPixmap(8, 8));
        GuiScaler scaler(theme());
        scaler.setFactor(2);

        scaler.svg({ &button, &label });

        QCOMPARE(button.iconSize(), QSize(32, 32));
        QCOMPARE(middle(button.icon().pixmap(32, 32)), QColor(0, 0, 255));
        QCOMPARE(middle(label.pixmap(Qt::ReturnByValue)), QColor(255, 0, 0));
    }

    void resourcePicturesGoBeforeTheThemes()
    {
        QVERIFY(QFile::exists(":/images/warning.svg"));
        QLabel label;
        label.setPixmap(QPixmap(20, 20));
        GuiScaler scaler(theme());
        scaler.setFactor(1);

        scaler.svgOne(&label, "warning.svg");

        const QByteArray svg = readFileText(":/images/warning.svg").toLatin1();
        QCOMPARE(label.pixmap(Qt::ReturnByValue).toImage(), GuiBase::renderSvg(svg, QSize(20, 20)).toImage());
    }

    void aButtonTakesTheHoverPictureBesideIt()
    {
        QPushButton button;
        button.setIconSize(QSize(16, 16));
        GuiScaler scaler(theme());
        scaler.setFactor(1);

        scaler.svgOne(&button, "Go.svg");

        QCOMPARE(middle(button.icon().pixmap(QSize(16, 16), QIcon::Normal)), QColor(0, 0, 255));
        QCOMPARE(middle(button.icon().pixmap(QSize(16, 16), QIcon::Active)), QColor(0, 255, 0));
    }

    void aButtonWithoutHoverPictureKeepsOne()
    {
        QPushButton button;
        button.setIconSize(QSize(16, 16));
        GuiScaler scaler(theme());
        scaler.setFactor(1);

        scaler.svgOne(&button, "red.svg");

        QCOMPARE(middle(button.icon().pixmap(QSize(16, 16), QIcon::Active)), QColor(255, 0, 0));
    }

    void anEmptyPictureIsLoggedAndLeft()
    {
        QLabel label;
        label.setObjectName("lred");
        GuiScaler scaler(theme());
        LogCatcher log;

        scaler.svgOne(&label);

        QCOMPARE(log.lines(), QStringList("svg scale failed,  lred pixmap is empty"));
        QVERIFY(!label.property("pixmapSize").isValid());
        QVERIFY(label.pixmap(Qt::ReturnByValue).isNull());
    }

    void aMissingFileLeavesThePicture()
    {
        QPixmap before(9, 9);
        before.fill(Qt::yellow);
        QLabel label;
        label.setPixmap(before);
        GuiScaler scaler(theme());
        scaler.setFactor(2);

        scaler.svgOne(&label, "no-such-picture.svg");

        QCOMPARE(label.pixmap(Qt::ReturnByValue).toImage(), before.toImage());
    }
};

VELMOR_TEST(TestGuiScaler)
#include "tst_gui_scaler.moc"
