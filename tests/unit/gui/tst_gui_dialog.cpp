#include "gui/gui_dialog.h"
#include "support/testmain.h"

#include <QScreen>
#include <QStyle>

namespace {

// Shows what a press would do, without a window manager that would do it.
class Dialog : public GuiDialog {
public:
    using GuiDialog::GuiDialog;
    using GuiDialog::isDragging;
};

struct Framed {
    Dialog dialog;
    QWidget frame { &dialog };

    explicit Framed(QSize frameSize)
    {
        frame.setGeometry(QRect(QPoint(20, 20), frameSize));
        dialog.resize(frameSize + QSize(40, 40));
        dialog.setDragWidget(&frame);
    }
};

} // namespace

class TestGuiDialog : public QObject {
    Q_OBJECT

private slots:
    void standsInTheMiddleOfItsParent()
    {
        QWidget window;
        window.setGeometry(200, 100, 500, 400);
        GuiDialog dialog(&window);
        LogCatcher log;

        dialog.resizeAndCenter(300, 200);

        QCOMPARE(dialog.geometry(),
                 QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, QSize(300, 200), QRect(200, 100, 500, 400)));
        QCOMPARE(dialog.geometry().topLeft(), QPoint(300, 200));
        QVERIFY(log.has("Center in parent widget"));
    }

    void standsInTheMiddleOfTheScreenWithoutAParent()
    {
        GuiDialog dialog;
        LogCatcher log;

        dialog.resizeAndCenter(300, 200);

        const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
        QCOMPARE(dialog.size(), QSize(300, 200));
        QVERIFY((dialog.geometry().center() - available.center()).manhattanLength() <= 2);
        QVERIFY(!log.has("Center in parent widget"));
    }

    void standsInTheMiddleOfTheScreenWhenItsParentIsGone()
    {
        auto window = std::make_unique<QWidget>();
        window->setGeometry(0, 0, 10, 10);
        GuiDialog dialog(window.get());
        window.reset();

        dialog.resizeAndCenter(300, 200);

        const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
        QVERIFY((dialog.geometry().center() - available.center()).manhattanLength() <= 2);
    }

    void hasNoParentInTheToolkitsSense()
    {
        QWidget window;
        GuiDialog dialog(&window);

        QVERIFY(!static_cast<QObject &>(dialog).parent());
        QVERIFY(window.findChildren<QWidget *>().isEmpty());
    }

    void titleBarIsTheUpperEdgeOfTheFrame_data()
    {
        QTest::addColumn<QSize>("dialog");
        QTest::addColumn<QSize>("frame");
        QTest::addColumn<QPoint>("press");
        QTest::addColumn<bool>("expected");

        const QSize dialog(440, 340);
        const QSize frame(400, 300);
        QTest::newRow("inside") << dialog << frame << QPoint(100, 60) << true;
        QTest::newRow("on the left margin's edge") << dialog << frame << QPoint(20, 60) << false;
        QTest::newRow("right of the left edge") << dialog << frame << QPoint(21, 60) << true;
        QTest::newRow("on the upper edge") << dialog << frame << QPoint(100, 20) << false;
        QTest::newRow("below the upper edge") << dialog << frame << QPoint(100, 21) << true;
        QTest::newRow("last line") << dialog << frame << QPoint(100, 99) << true;
        QTest::newRow("80 pixels down") << dialog << frame << QPoint(100, 100) << false;
        QTest::newRow("right of a narrow frame") << dialog << frame << QPoint(435, 60) << true;
        QTest::newRow("last column of 900") << QSize(1240, 340) << QSize(1200, 300) << QPoint(919, 60) << true;
        QTest::newRow("900 across") << QSize(1240, 340) << QSize(1200, 300) << QPoint(920, 60) << false;
        QTest::newRow("frame larger than the dialog") << QSize(400, 300) << QSize(440, 340) << QPoint(20, 60) << false;
    }

    void titleBarIsTheUpperEdgeOfTheFrame()
    {
        QFETCH(QSize, dialog);
        QFETCH(QSize, frame);
        QFETCH(QPoint, press);

        QTEST(GuiDialog::isTitleBar(press, dialog, frame), "expected");
    }

    void aLeftPressOnTheTitleBarDragsUntilItIsReleased()
    {
        Framed framed(QSize(400, 300));
        QVERIFY(!framed.dialog.isDragging());

        QTest::mousePress(&framed.dialog, Qt::LeftButton, {}, QPoint(100, 60));
        QVERIFY(framed.dialog.isDragging());

        QTest::mouseRelease(&framed.dialog, Qt::RightButton, {}, QPoint(100, 60));
        QVERIFY(framed.dialog.isDragging());

        QTest::mouseRelease(&framed.dialog, Qt::LeftButton, {}, QPoint(100, 60));
        QVERIFY(!framed.dialog.isDragging());
    }

    void thePressCountsAndNotWhereThePointerIs()
    {
        Framed framed(QSize(400, 300));
        QTest::mousePress(&framed.dialog, Qt::LeftButton, {}, QPoint(100, 60));

        QTest::mouseMove(&framed.dialog, QPoint(100, 200));

        QVERIFY(framed.dialog.isDragging());
    }

    void aPressBelowTheTitleBarDoesNotDrag()
    {
        Framed framed(QSize(400, 300));
        QTest::mousePress(&framed.dialog, Qt::LeftButton, {}, QPoint(100, 100));

        QTest::mouseMove(&framed.dialog, QPoint(100, 60));

        QVERIFY(!framed.dialog.isDragging());
    }

    void otherButtonsDoNotDrag()
    {
        Framed framed(QSize(400, 300));

        QTest::mousePress(&framed.dialog, Qt::RightButton, {}, QPoint(100, 60));

        QVERIFY(!framed.dialog.isDragging());
    }

    void everyPressMovesTheStoredPlace()
    {
        Framed framed(QSize(400, 300));
        QTest::mousePress(&framed.dialog, Qt::LeftButton, {}, QPoint(100, 60));

        QTest::mousePress(&framed.dialog, Qt::RightButton, {}, QPoint(100, 200));

        QVERIFY(!framed.dialog.isDragging());
    }

    void withoutAFrameNothingDrags()
    {
        Dialog dialog;
        dialog.resize(400, 300);

        QTest::mousePress(&dialog, Qt::LeftButton, {}, QPoint(100, 40));

        QVERIFY(!dialog.isDragging());
    }

    void draggingAHiddenDialogDoesNothing()
    {
        Framed framed(QSize(400, 300));
        QTest::mousePress(&framed.dialog, Qt::LeftButton, {}, QPoint(100, 60));
        QMouseEvent move(QEvent::MouseMove, QPointF(110, 60), Qt::NoButton, Qt::LeftButton, {});

        QVERIFY(QCoreApplication::sendEvent(&framed.dialog, &move));
    }
};

VELMOR_TEST(TestGuiDialog)
#include "tst_gui_dialog.moc"
