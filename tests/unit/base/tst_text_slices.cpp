#include "support/testmain.h"

#include "base/common.h"

// sliceText and sliceTextChain: the part of a text beside a mark.
class TstTextSlices : public QObject {
    Q_OBJECT

private slots:
    void slice_data();
    void slice();
    void fallbackIsEmptyUnlessGiven();
    void chain_data();
    void chain();
};

void TstTextSlices::slice_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("expected");
    const struct {
        const char *text;
        const char *pattern;
        const char *expected;
    } rows[] = {
        // The patterns in use.
        { "a:b:c", "^:$", "b:c" },
        { "/opt/velmor/bin", "$/^", "/opt/velmor" },
        { "reader=x=E", "$=^", "reader=x" },
        { "reader=x=E", "$=$", "E" },
        { "velmor.so.1", "^.^", "velmor" },
        { "a,b,c", "^,$", "b,c" },
        { "a)b)c", "^)^", "a" },
        // The first character says where to search, and only "^" means the first occurrence.
        { "a=b=c", "$=^", "a=b" },
        { "a=b=c", "^=^", "a" },
        { "a=b=c", "x=^", "a=b" },
        { "a=b=c", "==^", "a=b" },
        // The last character says what to keep, and only "$" means what follows.
        { "a=b=c", "^=x", "a" },
        { "a=b=c", "$=x", "a=b" },
        { "a=b=c", "x=x", "a=b" },
        { "a=b=c", "x=$", "c" },
        // Marks of more characters, also of "^" and "$" themselves.
        { "one, two, three", "^, $", "two, three" },
        { "a::b::c", "$::^", "a::b" },
        { "a^b$c", "^^^", "a" },
        { "a^b$c", "^$$", "c" },
        { "a^$b", "$^$$", "b" },
        // Marks at the ends.
        { "=b", "^=^", "" },
        { "=b", "^=$", "b" },
        { "a=", "^=$", "" },
        { "a=", "$=^", "a" },
        { "=", "^=$", "" },
        { "ŻÓŁĆ=WĄS", "^=$", "WĄS" },
        // Not found: the search is case sensitive and knows no wild card.
        { "abc", "^=$", "fallback" },
        { "aXb", "^x^", "fallback" },
        { "abc", "^.^", "fallback" },
        { "ab", "^abc^", "fallback" },
        { "", "^=$", "fallback" },
        // Patterns without a mark.
        { "a^$b", "^$", "fallback" },
        { "a^b", "^", "fallback" },
        { "abc", "", "fallback" },
    };
    for (const auto &row : rows)
        QTest::addRow("%s in %s", row.pattern, row.text) << row.text << row.pattern << row.expected;
}

void TstTextSlices::slice()
{
    QFETCH(QString, text);
    QFETCH(QString, pattern);

    QTEST(sliceText(text, pattern, "fallback"), "expected");
}

void TstTextSlices::fallbackIsEmptyUnlessGiven()
{
    QCOMPARE(sliceText("abc", "^=$"), QString());
    QCOMPARE(sliceText("abc", "^="), QString());
    QCOMPARE(sliceTextChain("abc", { "^=$" }), QString());
}

void TstTextSlices::chain_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("patterns");
    QTest::addColumn<QString>("expected");
    using List = QStringList;
    QTest::newRow("one") << "a=b" << List { "^=$" } << "b";
    QTest::newRow("two") << "name=value, rest" << List { "^=$", "^,^" } << "value";
    QTest::newRow("three") << "115.0(x)_1,2/3" << List { "^)$", "^,$", "$/^" } << "2";
    QTest::newRow("order counts") << "a,b=c,d" << List { "^,$", "$=^" } << "b";
    QTest::newRow("none") << "a=b" << List {} << "a=b";
    QTest::newRow("none, of nothing") << "" << List {} << "fallback";
    QTest::newRow("first fails") << "a=b" << List { "^:$", "^=$" } << "fallback";
    QTest::newRow("the fallback is not sliced") << "a=b" << List { "^:$", "^l^" } << "fallback";
    QTest::newRow("last fails") << "a=b" << List { "^=$", "^:$" } << "fallback";
    QTest::newRow("a result that is empty") << "a=" << List { "^=$" } << "fallback";
    QTest::newRow("empty on the way") << "=b" << List { "^=^", "^b$" } << "fallback";
    QTest::newRow("pattern too short") << "a=b" << List { "^=" } << "fallback";
}

void TstTextSlices::chain()
{
    QFETCH(QString, text);
    QFETCH(QStringList, patterns);

    QTEST(sliceTextChain(text, patterns, "fallback"), "expected");
}

VELMOR_TEST(TstTextSlices)
#include "tst_text_slices.moc"
