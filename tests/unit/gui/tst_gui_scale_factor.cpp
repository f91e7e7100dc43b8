#include "gui/gui_base.h"
#include "gui/scale_factor.h"
#include "support/testmain.h"

#include <QGuiApplication>
#include <QScreen>

namespace {

const QSize mainWindow(900, 697);

ScreenShape screen(int width, int height, double dpi)
{
    return { QSize(width, height), dpi };
}

} // namespace

class TestGuiScaleFactor : public QObject {
    Q_OBJECT

private slots:
    void cleanup() { qunsetenv("QT_SCREEN_SCALE_FACTORS"); }

    void factorIsTheGreatestUnderWhichTheWindowFits_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::addColumn<double>("dpi");
        QTest::addColumn<bool>("isWin7");
        QTest::addColumn<double>("expected");

        QTest::newRow("full HD at 96") << 1920 << 1080 << 96.0 << false << 1.0;
        QTest::newRow("full HD at 96, Windows 7") << 1920 << 1080 << 96.0 << true << 1.0;
        QTest::newRow("full HD at 144") << 1920 << 1080 << 144.0 << false << 1.0;
        QTest::newRow("full HD at 144, Windows 7") << 1920 << 1080 << 144.0 << true << 1.5;
        QTest::newRow("full HD at 192") << 1920 << 1080 << 192.0 << false << 1.0;
        QTest::newRow("UXGA at 192, Windows 7") << 1600 << 1200 << 192.0 << true << 1.5;
        QTest::newRow("4K at 192") << 3840 << 2160 << 192.0 << false << 2.0;
        QTest::newRow("4K at 192, Windows 7") << 3840 << 2160 << 192.0 << true << 2.0;
        QTest::newRow("4K at 288") << 3840 << 2160 << 288.0 << false << 3.0;
        QTest::newRow("4K at 288, Windows 7") << 3840 << 2160 << 288.0 << true << 3.0;
        QTest::newRow("QHD at 288") << 2560 << 1440 << 288.0 << false << 2.0;

        QTest::newRow("125 percent goes down") << 3840 << 2160 << 120.0 << false << 1.0;
        QTest::newRow("150 percent goes up") << 3840 << 2160 << 144.0 << false << 2.0;
        QTest::newRow("175 percent goes up") << 3840 << 2160 << 168.0 << false << 2.0;
        QTest::newRow("175 percent goes up on Windows 7 too") << 3840 << 2160 << 168.0 << true << 2.0;
        QTest::newRow("250 percent goes up") << 3840 << 2160 << 240.0 << false << 3.0;
        QTest::newRow("below 100 percent") << 3840 << 2160 << 72.0 << false << 1.0;
        QTest::newRow("far below 100 percent") << 3840 << 2160 << 30.0 << false << 1.0;
        QTest::newRow("no density") << 3840 << 2160 << 0.0 << false << 1.0;

        QTest::newRow("fits to the pixel") << 1800 << 1394 << 192.0 << false << 2.0;
        QTest::newRow("a column short") << 1799 << 1394 << 192.0 << false << 1.0;
        QTest::newRow("a line short") << 1800 << 1393 << 192.0 << false << 1.0;
        QTest::newRow("Windows 7 without room for 1.5") << 1280 << 1024 << 192.0 << true << 1.0;
        QTest::newRow("1.5 kept but without room") << 1280 << 1024 << 144.0 << true << 1.0;
        QTest::newRow("Windows 7 from 3 over 2 to 1.5") << 1600 << 1200 << 288.0 << true << 1.5;
        QTest::newRow("screen smaller than the window") << 800 << 600 << 192.0 << false << 1.0;
    }

    void factorIsTheGreatestUnderWhichTheWindowFits()
    {
        QFETCH(int, width);
        QFETCH(int, height);
        QFETCH(double, dpi);
        QFETCH(bool, isWin7);
        QFETCH(double, expected);

        QCOMPARE(scaleFactor(screen(width, height, dpi), mainWindow, isWin7), expected);
    }

    void oneScreenGivesOneNumber()
    {
        QCOMPARE(scaleFactorsText({ screen(3840, 2160, 192) }, mainWindow, false).value(), QString("2"));
    }

    void twoScreensAreJoinedInTheirOrder()
    {
        const QString text =
            scaleFactorsText({ screen(3840, 2160, 192), screen(1920, 1080, 144) }, mainWindow, true).value();

        QCOMPARE(text, QString("2;1.5"));
    }

    void everyScreenHasItsLogLine()
    {
        LogCatcher log;

        scaleFactorsText({ screen(3840, 2160, 192), screen(1920, 1080, 144) }, mainWindow, false);

        QCOMPARE(log.lines(),
                 QStringList({ "Screen: 3840 x 2160  scale: 2 | QT_SCALE_FACTOR: 2",
                               "Screen: 1920 x 1080  scale: 1.5 | QT_SCALE_FACTOR: 1" }));
    }

    void aMissingScreenEndsItWithoutResult()
    {
        LogCatcher log;

        const auto text =
            scaleFactorsText({ screen(3840, 2160, 192), std::nullopt, screen(3840, 2160, 192) }, mainWindow, false);

        QVERIFY(!text.has_value());
        QCOMPARE(log.lines().last(), QString("Screen: null"));
        QCOMPARE(log.lines().size(), 2);
    }

    void theEnvironmentGetsTheFactorsOfTheRealScreens()
    {
        // given: the one offscreen screen at 96 dots per inch
        QCOMPARE(QGuiApplication::screens().size(), 1);
        LogCatcher log;

        GuiBase::calcScaleFactorEnv(mainWindow);

        QCOMPARE(qgetenv("QT_SCREEN_SCALE_FACTORS"), QByteArray("1"));
        QVERIFY(log.has("Scale factors:   1"));
    }

    void aWindowThatFitsManyTimesFollowsTheDensity()
    {
        const double dpi = QGuiApplication::primaryScreen()->logicalDotsPerInch();

        GuiBase::calcScaleFactorEnv(QSize(10, 10));

        QCOMPARE(qgetenv("QT_SCREEN_SCALE_FACTORS").toDouble(), double(qRound(dpi / 96.0)));
    }
};

VELMOR_TEST(TestGuiScaleFactor)
#include "tst_gui_scale_factor.moc"
