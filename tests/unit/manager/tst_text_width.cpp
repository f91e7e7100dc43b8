#include "text_width.h"

#include "support/testmain.h"

// Texts that are wider than their place, and the tool tips that tell them whole.
class TestTextWidth : public QObject {
    Q_OBJECT

private slots:
    void textIsCutByAverageWidthOnlyWhenItLeavesLessThanTwentyPixels_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("textWidth");
        QTest::addColumn<int>("labelWidth");
        QTest::addColumn<QString>("shown");
        QTest::newRow("fits") << "abcdefghij" << 80 << 100 << "abcdefghij";
        // 10 characters, 81 pixels, room for 80: 80 / 8.1 = 9.87
        QTest::newRow("one pixel too wide") << "abcdefghij" << 81 << 100 << "abcdefghi...";
        QTest::newRow("half") << "abcdefghij" << 160 << 100 << "abcde...";
        QTest::newRow("fractional average") << "abcdefghij" << 105 << 64 << "abcd...";
        QTest::newRow("no room") << "abc" << 30 << 10 << "...";
        QTest::newRow("empty") << "" << 0 << 10 << "";
    }

    void textIsCutByAverageWidthOnlyWhenItLeavesLessThanTwentyPixels()
    {
        QFETCH(QString, text);
        QFETCH(int, textWidth);
        QFETCH(int, labelWidth);
        QTEST(elidedToWidth(text, textWidth, labelWidth), "shown");
    }

    void nameThatLooksLikeMarkupIsShownAsItIsInAToolTip()
    {
        QCOMPARE(plainToolTip("Anna & Łucja < Zając"), QString("Anna & Łucja < Zając"));
        QCOMPARE(plainToolTip("<b>Anna</b> & co"), QString("<qt>&lt;b&gt;Anna&lt;/b&gt; &amp; co</qt>"));
    }
};

VELMOR_TEST(TestTextWidth)
#include "tst_text_width.moc"
