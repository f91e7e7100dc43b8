#include "gui/gui_base.h"
#include "gui/gui_scaler.h"
#include "support/testmain.h"

#include <QLabel>
#include <QScreen>
#include <QTemporaryDir>

// On a screen to which the toolkit applies a factor of its own: pictures have that many more pixels, sizes stay.
class TestGuiHidpi : public QObject {
    Q_OBJECT

    static QByteArray redSquare()
    {
        return "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 10 10\">"
               "<rect width=\"10\" height=\"10\" fill=\"#ff0000\"/></svg>";
    }

private slots:
    void theScreenHasTheFactor() { QCOMPARE(QGuiApplication::primaryScreen()->devicePixelRatio(), 1.5); }

    void scalerBeginsWithTheScreensDensity()
    {
        QCOMPARE(QGuiApplication::primaryScreen()->logicalDotsPerInch(), 144.0);
        QCOMPARE(GuiScaler().scale(), 1.5);
    }

    // But for Windows 7, which no machine of the tests is.
    void halfAStepOfTheRealScreenGoesUp()
    {
        GuiBase::calcScaleFactorEnv(QSize(10, 10));

        QCOMPARE(qgetenv("QT_SCREEN_SCALE_FACTORS"), QByteArray("2"));
    }

    void svgHasTheScreensPixelsRounded()
    {
        const QPixmap pixmap = GuiBase::renderSvg(redSquare(), QSize(31, 17));

        QCOMPARE(pixmap.size(), QSize(47, 26));
        QCOMPARE(pixmap.devicePixelRatio(), 1.5);
        QCOMPARE(pixmap.toImage().pixelColor(46, 25), QColor(255, 0, 0));
    }

    void scalingAgainDoesNotMultiplyThePixels()
    {
        QTemporaryDir folder;
        QFile file(folder.filePath("red.svg"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(redSquare());
        file.close();
        QLabel label;
        label.setPixmap(QPixmap(20, 10));
        GuiScaler scaler(folder.path() + "/");
        scaler.setFactor(2);

        scaler.svgOne(&label, "red.svg");
        scaler.svgOne(&label, "red.svg");

        QCOMPARE(label.pixmap(Qt::ReturnByValue).size(), QSize(60, 30));
        QCOMPARE(label.sizeHint(), QSize(40, 20));
    }
};

int main(int argc, char *argv[])
{
    TestHome home;
    qputenv("QT_SCREEN_SCALE_FACTORS", "1.5");
    qputenv("QT_FONT_DPI", "216"); // which the factor divides
    QApplication application(argc, argv);
    TestGuiHidpi test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_gui_hidpi.moc"
