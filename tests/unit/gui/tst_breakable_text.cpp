#include "gui/breakable_text.h"

#include "support/testmain.h"

// Where a text may break though it has no blank.
class TestBreakableText : public QObject {
    Q_OBJECT

private slots:
    void breaksStandBetweenLettersOnly()
    {
        const QString mark(QChar(0x200B));
        QCOMPARE(breakableText("a/b\\c", 9), "a/" + mark + "b\\" + mark + "c");
        QCOMPARE(breakableText("<a href='x/y'>abcd</a>", 2), "<a href='x/y'>ab" + mark + "cd" + mark + "</a>");
        QCOMPARE(breakableText("&amp;&amp;ab c", 2), "&amp;&amp;ab" + mark + " c");
    }
};

VELMOR_TEST(TestBreakableText)
#include "tst_breakable_text.moc"
