#include "header_drag.h"

#include "support/testmain.h"

// Where the frameless window can be taken.
class TestHeaderDrag : public QObject {
    Q_OBJECT

private slots:
    void onlyAPressOnTheHeaderMovesTheWindow_data()
    {
        QTest::addColumn<QPoint>("press");
        QTest::addColumn<bool>("moves");
        // Window 940 by 717, frame 900 by 697: margins 20 and 10.
        QTest::newRow("middle of the header") << QPoint(400, 40) << true;
        QTest::newRow("left of the frame") << QPoint(20, 40) << false;
        QTest::newRow("first column") << QPoint(21, 40) << true;
        QTest::newRow("last column") << QPoint(919, 40) << true;
        QTest::newRow("right of the frame") << QPoint(920, 40) << false;
        QTest::newRow("top row") << QPoint(400, 0) << false;
        QTest::newRow("second row") << QPoint(400, 1) << true;
        QTest::newRow("last row") << QPoint(400, 89) << true;
        QTest::newRow("below") << QPoint(400, 90) << false;
        QTest::newRow("on the pages") << QPoint(400, 300) << false;
    }

    void onlyAPressOnTheHeaderMovesTheWindow()
    {
        QFETCH(QPoint, press);
        QTEST(isOnHeader(press, QSize(940, 717), QSize(900, 697)), "moves");
    }

    void marginsAreAbsolute()
    {
        // A frame larger than the window gives the same margins as a smaller one.
        QVERIFY(!isOnHeader(QPoint(20, 40), QSize(860, 677), QSize(900, 697)));
        QVERIFY(isOnHeader(QPoint(21, 40), QSize(860, 677), QSize(900, 697)));
    }
};

VELMOR_TEST(TestHeaderDrag)
#include "tst_header_drag.moc"
