#include "support/testmain.h"

#include "base/common.h"
#include "base/common_c.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <cstring>

// The small text helpers, the install root and the guarded copy.
class TstCommon : public QObject {
    Q_OBJECT

private slots:
    void productIsNamed();
    void installRootIsAboveTheFolderOfTheProgram_data();
    void installRootIsAboveTheFolderOfTheProgram();
    void installRootOfThisProgram();
    void developmentModeIsOffWithoutAMakefile();
    void polishLettersFold_data();
    void polishLettersFold();
    void otherLettersDoNotFold();
    void plainText_data();
    void plainText();
    void suffixIsChopped_data();
    void suffixIsChopped();
    void printable_data();
    void printable();

    void copyOfEqualSizes();
    void copyIntoMoreRoomLeavesTheRest();
    void copyIntoLessRoomIsCutAndLogged();
    void copyOfNothingDoesNothing_data();
    void copyOfNothingDoesNothing();
    void copyWithANullPointerIsLogged_data();
    void copyWithANullPointerIsLogged();
    void copyMayOverlap();
};

void TstCommon::productIsNamed()
{
    QCOMPARE(Common::productName(), QString("velmor"));
}

void TstCommon::installRootIsAboveTheFolderOfTheProgram_data()
{
    QTest::addColumn<QString>("executable");
    QTest::addColumn<QString>("expected");
    const struct {
        const char *executable;
        const char *expected;
    } rows[] = {
        { "C:\\Program Files\\velmor\\64\\Manager.exe", "C:/Program Files/velmor" },
        { "C:\\velmor\\64/Manager.exe", "C:/velmor" },
        { "C:/velmor/64\\Manager.exe", "C:/velmor" },
        { "C:\\64\\Manager.exe", "C:" },
        { "C:\\Manager.exe", "C:" },
        { "/opt/velmor/bin/Manager", "/opt/velmor" },
        { "/opt/velmor/64.bin/Manager", "/opt/velmor" },
        { "/bin/Manager", "" },
        { "bin/Manager", "bin" },
        { "", "" },
    };
    for (const auto &row : rows)
        QTest::newRow(row.executable) << row.executable << row.expected;
}

void TstCommon::installRootIsAboveTheFolderOfTheProgram()
{
    QFETCH(QString, executable);

    QTEST(Common::installRootOf(executable), "expected");
}

void TstCommon::installRootOfThisProgram()
{
    const QString root = Common::installRoot();

    QCOMPARE(QFileInfo(root).canonicalFilePath(), QDir(QCoreApplication::applicationDirPath() + "/..").canonicalPath());
    QVERIFY(!root.contains('\\'));
}

void TstCommon::developmentModeIsOffWithoutAMakefile()
{
    QVERIFY(!QFileInfo::exists(Common::installRoot() + "/Makefile"));

    QVERIFY(!Common::isDev());
}

void TstCommon::polishLettersFold_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const char *const rows[][2] = {
        { "ę", "e" },
        { "Ę", "E" },
        { "ó", "o" },
        { "Ó", "O" },
        { "ą", "a" },
        { "Ą", "A" },
        { "ś", "s" },
        { "Ś", "S" },
        { "ł", "l" },
        { "Ł", "L" },
        { "ż", "z" },
        { "Ż", "Z" },
        { "ź", "z" },
        { "Ź", "Z" },
        { "ć", "c" },
        { "Ć", "C" },
        { "ń", "n" },
        { "Ń", "N" },
        { "Menedżer", "Menedzer" },
        { "zażółć gęślą jaźń", "zazolc gesla jazn" },
    };
    for (const auto &row : rows)
        QTest::newRow(row[0]) << QString::fromUtf8(row[0]) << QString::fromUtf8(row[1]);
}

void TstCommon::polishLettersFold()
{
    QFETCH(QString, text);

    QTEST(Common::foldPolish(text), "expected");
}

void TstCommon::otherLettersDoNotFold()
{
    QCOMPARE(Common::foldPolish("äÖß éñ 1_/."), QString("äÖß éñ 1_/."));
    QCOMPARE(Common::foldPolish(QString()), QString());
}

void TstCommon::plainText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("bold CAN") << "<b>CAN</b>"
                              << "kan";
    QTest::newRow("every CAN") << "CAN i CAN"
                               << "kan i kan";
    QTest::newRow("inside a word") << "SCANER"
                                   << "SkanER";
    QTest::newRow("other case") << "Can can"
                                << "Can can";
    QTest::newRow("markup goes first") << "C<i>A</i>N"
                                       << "kan";
    QTest::newRow("CAN inside markup") << "<a href=\"CAN\">x</a>"
                                       << "x";
    QTest::newRow("line break in markup") << "a<p\nclass=\"x\">b"
                                          << "ab";
    QTest::newRow("empty markup") << "a<>b"
                                  << "ab";
    QTest::newRow("open end") << "a < b"
                              << "a < b";
    QTest::newRow("shortest match") << "1 < 2 > 3 > 4"
                                    << "1  3 > 4";
    QTest::newRow("entities stay") << "a&nbsp;b"
                                   << "a&nbsp;b";
    QTest::newRow("empty") << ""
                           << "";
}

void TstCommon::plainText()
{
    QFETCH(QString, text);

    QTEST(Common::plainText(text), "expected");
}

void TstCommon::suffixIsChopped_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QString>("expected");
    QTest::newRow("at the end") << "velmor.dll"
                                << ".dll"
                                << "velmor";
    QTest::newRow("once only") << "a.x.x"
                               << ".x"
                               << "a.x";
    QTest::newRow("in front") << ".dllvelmor"
                              << ".dll"
                              << ".dllvelmor";
    QTest::newRow("other case") << "velmor.DLL"
                                << ".dll"
                                << "velmor.DLL";
    QTest::newRow("whole text") << ".dll"
                                << ".dll"
                                << "";
    QTest::newRow("longer than the text") << "l"
                                          << ".dll"
                                          << "l";
    QTest::newRow("no suffix") << "velmor"
                               << ""
                               << "velmor";
    QTest::newRow("no text") << ""
                             << ".dll"
                             << "";
}

void TstCommon::suffixIsChopped()
{
    QFETCH(QString, text);
    QFETCH(QString, suffix);

    QTEST(Common::chopSuffix(text, suffix), "expected");
}

void TstCommon::printable_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("expected");
    const auto row = [](const char *name, const QByteArray &bytes, bool expected) {
        QTest::newRow(name) << bytes << expected;
    };
    row("empty", "", true);
    row("plain", "velmor_manager 4.3.5", true);
    row("line break", "a\nb", false);
    row("line break in front", "\na", false);
    row("tabulator", "a\tb", false);
    row("zero byte", QByteArray("a\0b", 3), false);
    row("delete", "a\x7F", false);
    row("no UTF-8", "a\xFFz", false);
    row("half a letter in the middle", "\xC4z", false);
    row("bytes of a random kind", QByteArray::fromHex("80818283"), false);
    // The bytes are tested as characters, as many as the text has: of two letters C4 85 are seen, and 85 is a control.
    row("two letters with a control byte", "ąą", false);
    row("a letter and one behind", "ła", false);
    // Of one letter its first byte alone is seen, and C5 is printable.
    row("one letter", "ł", true);
    // The six bytes seen are 7A 61 C5 BC C3 B3; the control bytes of the last two letters stand behind them.
    row("a word whose control bytes stand last", "zażółć", true);
    row("control byte behind what is seen", "aą", true);
}

void TstCommon::printable()
{
    QFETCH(QByteArray, bytes);

    QTEST(Common::isPrintableUtf8(bytes), "expected");
}

void TstCommon::copyOfEqualSizes()
{
    char target[] = "......";
    const LogCatcher log;

    CommonC::memCopy(target, 6, "velmor", 6);

    QCOMPARE(QByteArray(target), QByteArray("velmor"));
    QCOMPARE(log.lines(), QStringList());
}

void TstCommon::copyIntoMoreRoomLeavesTheRest()
{
    char target[] = "......";
    const LogCatcher log;

    CommonC::memCopy(target, 6, "velmor", 3);

    QCOMPARE(QByteArray(target), QByteArray("vel..."));
    QCOMPARE(log.lines(), QStringList());
}

void TstCommon::copyIntoLessRoomIsCutAndLogged()
{
    char target[] = "......";
    const LogCatcher log;

    CommonC::memCopy(target, 3, "velmor", 6);

    QCOMPARE(QByteArray(target), QByteArray("vel..."));
    QCOMPARE(log.lines(),
             QStringList({ "memcpy error | _DestinationSize < _SourceSize | copied data length reduced to: "
                           "_DestinationSize" }));
}

void TstCommon::copyOfNothingDoesNothing_data()
{
    QTest::addColumn<int>("targetSize");
    QTest::addColumn<int>("sourceSize");
    QTest::addColumn<bool>("null");
    QTest::newRow("no room") << 0 << 6 << false;
    QTest::newRow("no source") << 6 << 0 << false;
    QTest::newRow("neither") << 0 << 0 << false;
    QTest::newRow("no room, null") << 0 << 6 << true;
    QTest::newRow("no source, null") << 6 << 0 << true;
}

void TstCommon::copyOfNothingDoesNothing()
{
    QFETCH(int, targetSize);
    QFETCH(int, sourceSize);
    QFETCH(bool, null);
    char target[] = "......";
    const LogCatcher log;

    CommonC::memCopy(null ? nullptr : target, targetSize, null ? nullptr : "velmor", sourceSize);

    QCOMPARE(QByteArray(target), QByteArray("......"));
    QCOMPARE(log.lines(), QStringList());
}

void TstCommon::copyWithANullPointerIsLogged_data()
{
    QTest::addColumn<bool>("nullTarget");
    QTest::addColumn<bool>("nullSource");
    QTest::newRow("target") << true << false;
    QTest::newRow("source") << false << true;
    QTest::newRow("both") << true << true;
}

void TstCommon::copyWithANullPointerIsLogged()
{
    QFETCH(bool, nullTarget);
    QFETCH(bool, nullSource);
    char target[] = "......";
    const LogCatcher log;

    // Also when the sizes would be logged by themselves.
    CommonC::memCopy(nullTarget ? nullptr : target, 3, nullSource ? nullptr : "velmor", 6);

    QCOMPARE(QByteArray(target), QByteArray("......"));
    QCOMPARE(log.lines(), QStringList({ "memcpy error | _DestinationSize or _SourceSize is null" }));
}

void TstCommon::copyMayOverlap()
{
    char up[] = "123456";
    char down[] = "123456";

    CommonC::memCopy(up + 2, 4, up, 4);
    CommonC::memCopy(down, 4, down + 2, 4);

    QCOMPARE(QByteArray(up), QByteArray("121234"));
    QCOMPARE(QByteArray(down), QByteArray("345656"));
}

VELMOR_TEST(TstCommon)
#include "tst_common.moc"
