#include "base/common.h"
#include "gui/anim_widget.h"
#include "support/testmain.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QMovie>
#include <QPointer>
#include <QScreen>
#include <QSvgRenderer>
#include <QTemporaryDir>
#include <QTimer>

namespace {

constexpr int framesPerSecond = 20;
constexpr int frameTime = 1000 / framesPerSecond;

// A bar that turns once in two seconds, so that no two frames look alike.
const char turningSvg[] =
    "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"40\" height=\"40\" viewBox=\"0 0 40 40\">"
    "<rect x=\"2\" y=\"16\" width=\"36\" height=\"8\" fill=\"#0000ff\">"
    "<animateTransform attributeName=\"transform\" type=\"rotate\" from=\"0 20 20\" to=\"180 20 20\" begin=\"0s\""
    " dur=\"2s\" repeatCount=\"indefinite\"/></rect></svg>";
const char stillSvg[] = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"40\" height=\"40\" viewBox=\"0 0 40 40\">"
                        "<rect width=\"40\" height=\"40\" fill=\"#00ff00\"/></svg>";

// Two frames of one pixel, 50 ms each, for ever: the first colour, then the second.
QByteArray twoFrameGif(QRgb first, QRgb second)
{
    QByteArray gif("GIF89a\x01\x00\x01\x00\x80\x00\x00", 13);
    for (QRgb colour : { first, second }) {
        gif.append(char(qRed(colour)));
        gif.append(char(qGreen(colour)));
        gif.append(char(qBlue(colour)));
    }
    gif.append("\x21\xff\x0bNETSCAPE2.0\x03\x01\x00\x00\x00", 19);
    // Codes of three bits: clear (4), the pixel, end (5).
    for (char pixel : { '\x44', '\x4c' }) {
        gif.append("\x21\xf9\x04\x00\x05\x00\x00\x00", 8);
        gif.append("\x2c\x00\x00\x00\x00\x01\x00\x01\x00\x00", 10);
        gif.append("\x02\x02", 2);
        gif.append(pixel);
        gif.append("\x01\x00", 2);
    }
    gif.append('\x3b');
    return gif;
}

// Counts how often the picture's timer wakes the program up, whether or not anything comes of it.
class WakeUps : public QObject {
public:
    explicit WakeUps(const QSvgRenderer *renderer)
    {
        for (QTimer *timer : renderer->findChildren<QTimer *>())
            timer->installEventFilter(this);
    }
    int count = 0;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == QEvent::Timer;
        return false;
    }
};

bool timerRuns(const QSvgRenderer *renderer)
{
    for (const QTimer *timer : renderer->findChildren<QTimer *>()) {
        if (timer->isActive())
            return true;
    }
    return false;
}

} // namespace

class TestAnimWidget : public QObject {
    Q_OBJECT

    QTemporaryDir folder;
    std::unique_ptr<QLabel> label;

    QString path(const QString &name) const { return folder.filePath(name); }
    AnimSvgWidget *svg() const { return label->findChild<AnimSvgWidget *>(); }
    QSvgRenderer *renderer() const { return svg()->renderer(); }

private slots:
    void initTestCase()
    {
        QVERIFY(writeFileBytes(path("turning.svg"), turningSvg));
        QVERIFY(writeFileBytes(path("still.svg"), stillSvg));
        QVERIFY(writeFileBytes(path("redblue.gif"), twoFrameGif(0xffff0000, 0xff0000ff)));
        QVERIFY(writeFileBytes(path("green.gif"), twoFrameGif(0xff00ff00, 0xff00ff00)));
        QVERIFY(writeFileBytes(path("SHOUTED.GIF"), twoFrameGif(0xff00ff00, 0xff00ff00)));
    }

    void init()
    {
        label = std::make_unique<QLabel>();
        label->setFixedSize(60, 50);
    }

    void svgPlayerHasItsOwnClassName()
    {
        AnimWidget anim(label.get(), QString(), framesPerSecond);

        QCOMPARE(svg()->metaObject()->className(), "AnimSvgWidget");
        QVERIFY(qobject_cast<QSvgWidget *>(svg()));
    }

    void framesPerSecondGoToTheRenderer_data()
    {
        QTest::addColumn<int>("given");
        QTest::addColumn<int>("expected");

        const int own = QSvgRenderer().framesPerSecond();
        QTest::newRow("ten") << 10 << 10;
        QTest::newRow("one") << 1 << 1;
        QTest::newRow("none leaves the renderer's own") << 0 << own;
        QTest::newRow("negative leaves the renderer's own") << -5 << own;
    }

    void framesPerSecondGoToTheRenderer()
    {
        QFETCH(int, given);

        AnimWidget anim(label.get(), path("turning.svg"), given);

        QTEST(renderer()->framesPerSecond(), "expected");
    }

    void loadedSvgShowsItsFirstFrame()
    {
        AnimWidget anim(label.get(), path("turning.svg"), framesPerSecond);

        label->show();
        QVERIFY(QTest::qWaitForWindowExposed(label.get()));

        // The bar lies flat in the middle, but for the moment that showing it took: blue at the left edge, nothing
        // above.
        const QImage image = label->grab().toImage();
        QCOMPARE(svg()->size(), label->size());
        QCOMPARE(image.pixelColor(5, 25).blue(), 255);
        QVERIFY2(image.pixelColor(5, 25).red() < 64, qPrintable(image.pixelColor(5, 25).name()));
        QVERIFY(image.pixelColor(30, 3) != QColor(0, 0, 255));
    }

    void loadedSvgAsksForNothingUntilStart()
    {
        label->show();
        AnimWidget anim(label.get(), path("turning.svg"), framesPerSecond);
        QVERIFY(renderer()->animated());
        QSignalSpy repaints(renderer(), &QSvgRenderer::repaintNeeded);
        WakeUps wakeUps(renderer());

        QTest::qWait(2 * frameTime);

        QCOMPARE(repaints.size(), 0);
        QCOMPARE(wakeUps.count, 0);
        QVERIFY(!timerRuns(renderer()));
    }

    void startedSvgMovesAtItsPace()
    {
        label->show();
        AnimWidget anim(label.get(), path("turning.svg"), framesPerSecond);
        QSignalSpy repaints(renderer(), &QSvgRenderer::repaintNeeded);
        QElapsedTimer clock;
        clock.start();

        anim.start();

        QVERIFY(svg()->isVisible());
        QTRY_VERIFY(repaints.size() >= 4);
        QVERIFY2(clock.elapsed() >= static_cast<qint64>(frameTime) * 3, "faster than its frames per second");
    }

    void stoppedSvgHidesAndWakesNobody()
    {
        label->show();
        AnimWidget anim(label.get(), path("turning.svg"), framesPerSecond);
        anim.start();
        QSignalSpy repaints(renderer(), &QSvgRenderer::repaintNeeded);
        QTRY_VERIFY(repaints.size() >= 1);

        anim.stop();
        repaints.clear();
        WakeUps wakeUps(renderer());
        QTest::qWait(2 * frameTime);

        QVERIFY(!svg()->isVisible());
        QCOMPARE(repaints.size(), 0);
        QCOMPARE(wakeUps.count, 0);
        QVERIFY(!timerRuns(renderer()));
    }

    void svgStartsAgainAfterStop()
    {
        label->show();
        AnimWidget anim(label.get(), path("turning.svg"), framesPerSecond);
        anim.start();
        anim.stop();
        QSignalSpy repaints(renderer(), &QSvgRenderer::repaintNeeded);

        anim.start();

        QVERIFY(svg()->isVisible());
        QTRY_VERIFY(repaints.size() >= 2);
    }

    void anotherSvgIsFrozenTooWhileTheFirstRan()
    {
        label->show();
        AnimWidget anim(label.get(), path("turning.svg"), framesPerSecond);
        anim.start();
        QSignalSpy repaints(renderer(), &QSvgRenderer::repaintNeeded);

        anim.setSource(path("turning.svg"));
        QTest::qWait(2 * frameTime);

        QCOMPARE(repaints.size(), 0);
        QVERIFY(!timerRuns(renderer()));
    }

    void aStillPictureNeverRunsATimer()
    {
        label->show();
        AnimWidget anim(label.get(), path("turning.svg"), framesPerSecond);

        anim.setSource(path("still.svg"));
        anim.start();

        QVERIFY(!timerRuns(renderer()));
    }

    void theNextPictureIsSeenWithoutStart()
    {
        AnimWidget anim(label.get(), path("turning.svg"), framesPerSecond);
        label->show();
        QVERIFY(QTest::qWaitForWindowExposed(label.get()));
        QCoreApplication::processEvents();

        anim.setSource(path("still.svg"));

        // Through the window's own backing store: only what was really repainted counts.
        QTRY_COMPARE(label->screen()->grabWindow(label->winId()).toImage().pixelColor(30, 3), QColor(0, 255, 0));
    }

    void svgTakesTheLabelsSizeAtTheLoad()
    {
        AnimWidget anim(label.get(), path("still.svg"), framesPerSecond);
        QCOMPARE(svg()->minimumSize(), QSize(60, 50));
        QCOMPARE(svg()->maximumSize(), QSize(60, 50));

        anim.setSize(QSize(20, 10));
        QCOMPARE(svg()->minimumSize(), QSize(20, 10));
        QCOMPARE(svg()->maximumSize(), QSize(20, 10));

        anim.setSource(path("still.svg"));
        QCOMPARE(svg()->size(), QSize(60, 50));
    }

    void anSvgClearsTheLabelsOwnPicture()
    {
        label->setPixmap(QPixmap(5, 5));

        AnimWidget anim(label.get(), path("still.svg"), framesPerSecond);

        QVERIFY(label->pixmap(Qt::ReturnByValue).isNull());
    }

    void anEmptyNameChangesNothing()
    {
        AnimWidget anim(label.get(), path("still.svg"), framesPerSecond);
        label->setPixmap(QPixmap(5, 5));

        anim.setSource(QString());

        QVERIFY(!label->pixmap(Qt::ReturnByValue).isNull());
        QVERIFY(renderer()->isValid());
    }

    void gifMovesAtOnce()
    {
        AnimWidget anim(label.get(), path("redblue.gif"), framesPerSecond);

        QVERIFY(label->movie());
        QCOMPARE(label->movie()->state(), QMovie::Running);
        QSignalSpy frames(label->movie(), &QMovie::frameChanged);
        QTRY_VERIFY(frames.size() >= 2);
    }

    void gifEndingsInCapitalsAreNoGif()
    {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("SHOUTED.GIF"));

        AnimWidget anim(label.get(), path("SHOUTED.GIF"), framesPerSecond);

        QVERIFY(!label->movie());
    }

    void gifStopsAndStarts()
    {
        AnimWidget anim(label.get(), path("redblue.gif"), framesPerSecond);

        anim.stop();
        QCOMPARE(label->movie()->state(), QMovie::NotRunning);

        anim.start();
        QCOMPARE(label->movie()->state(), QMovie::Running);
    }

    void gifTakesTheSizeGiven()
    {
        AnimWidget anim(label.get(), path("redblue.gif"), framesPerSecond);

        anim.setSize(QSize(30, 20));

        QCOMPARE(label->movie()->scaledSize(), QSize(30, 20));
    }

    void aSecondGifReplacesAndDeletesTheFirst()
    {
        AnimWidget anim(label.get(), path("redblue.gif"), framesPerSecond);
        const QPointer<QMovie> first = label->movie();

        anim.setSource(path("green.gif"));

        QVERIFY(first.isNull());
        QVERIFY(label->movie());
        QCOMPARE(label->movie()->fileName(), path("green.gif"));
        QCOMPARE(label->movie()->state(), QMovie::Running);
    }

    void aGifIsNotCoveredByTheSvgBeforeIt()
    {
        label->show();
        AnimWidget anim(label.get(), path("turning.svg"), framesPerSecond);
        anim.start();

        anim.setSource(path("green.gif"));

        QVERIFY(!svg()->isVisible());
        QVERIFY(!timerRuns(renderer()));
        QCOMPARE(label->movie()->state(), QMovie::Running);
    }

    void anSvgAfterAGifIsSeenAndTheGifRests()
    {
        label->show();
        AnimWidget anim(label.get(), path("green.gif"), framesPerSecond);
        const QPointer<QMovie> movie = label->movie();

        anim.setSource(path("turning.svg"));

        QVERIFY(!label->movie());
        QVERIFY(svg()->isVisible());
        QVERIFY(!timerRuns(renderer()));
        QVERIFY(movie.isNull() || movie->state() == QMovie::NotRunning);
        anim.start();
        QVERIFY(timerRuns(renderer()));
    }

    void thePlayerTakesItsSvgWidgetAlong()
    {
        auto anim = std::make_unique<AnimWidget>(label.get(), path("still.svg"), framesPerSecond);
        QVERIFY(svg());

        anim.reset();

        QVERIFY(!svg());
    }

    void theLabelMayGoFirst()
    {
        AnimWidget svgAnim(label.get(), path("turning.svg"), framesPerSecond);
        AnimWidget gifAnim(label.get(), path("green.gif"), framesPerSecond);

        label.reset();

        for (AnimWidget *anim : { &svgAnim, &gifAnim }) {
            anim->start();
            anim->setSize(QSize(5, 5));
            anim->setSource(path("turning.svg"));
            anim->setSource(path("green.gif"));
            anim->stop();
        }
    }
};

VELMOR_TEST(TestAnimWidget)
#include "tst_anim_widget.moc"
