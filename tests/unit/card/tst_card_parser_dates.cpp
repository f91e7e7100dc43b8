#include "support/dg_builder.h"
#include "support/testmain.h"

#include "card/card-parser.h"

#include <QProcess>

#include <cstdio>

// Dates of birth, issue and expiry.
class TstCardParserDates : public QObject {
    Q_OBJECT

private slots:
    void expiryDateInFigures_data();
    void expiryDateInFigures();
    void expiryDateInWords_data();
    void expiryDateInWords();
    void expiryMonthFollowsTheLanguageOfTheMachine_data();
    void expiryMonthFollowsTheLanguageOfTheMachine();
    void absentDg1GivesPointsOrNothing();
    void shortDg1GivesAPartialExpiryDate();

    void birthDateComesFromDg11_data();
    void birthDateComesFromDg11();
    void centuryStandsInTheMonth_data();
    void centuryStandsInTheMonth();
    void birthDateIsMadeOfSixBytes();
    void everyOtherCharacterGivesCentury00();
    void absentGroupsGivePointsAnd00();
    void shortDg1GivesAPartialBirthDate_data();
    void shortDg1GivesAPartialBirthDate();

    void issueDateIsNotChecked_data();
    void issueDateIsNotChecked();
};

namespace {

using namespace DgBuilder;

DGParser withExpiry(const QByteArray &expiry)
{
    Dg1 dg1;
    dg1.expiry = expiry;
    DGParser parser;
    parser.loadDg("DG1", dg1.file());
    return parser;
}

DGParser withPersonalNumber(const QByteArray &number)
{
    Dg1 dg1;
    dg1.personalNumber = number;
    DGParser parser;
    parser.loadDg("DG1", dg1.file());
    return parser;
}

constexpr char printExpiry[] = "--print-expiry";

} // namespace

void TstCardParserDates::expiryDateInFigures_data()
{
    QTest::addColumn<QByteArray>("expiry");
    QTest::addColumn<QString>("expected");
    QTest::newRow("plain") << QByteArray("331017") << "17.10.2033";
    QTest::newRow("century is always 20: before 2000") << QByteArray("991231") << "31.12.2099";
    QTest::newRow("century is always 20: beyond 2099") << QByteArray("010101") << "01.01.2001";
    QTest::newRow("no such date") << QByteArray("339940") << "40.99.2033";
    QTest::newRow("no figures") << QByteArray("<<ABCD") << "CD.AB.20<<";
    QTest::newRow("six bytes, fewer characters") << QByteArray("3310Ż") << QString("Ż.10.2033");
}

void TstCardParserDates::expiryDateInFigures()
{
    QFETCH(QByteArray, expiry);

    const DGParser parser = withExpiry(expiry);

    QTEST(parser.expiryDate(false), "expected");
}

void TstCardParserDates::expiryDateInWords_data()
{
    QTest::addColumn<QByteArray>("expiry");
    QTest::addColumn<QString>("expected");
    const struct {
        const char *expiry;
        const char *expected;
    } rows[] = {
        { "330105", "05 stycznia 2033" },
        { "330205", "05 lutego 2033" },
        { "330305", "05 marca 2033" },
        { "330405", "05 kwietnia 2033" },
        { "330505", "05 maja 2033" },
        { "330605", "05 czerwca 2033" },
        { "330705", "05 lipca 2033" },
        { "330805", "05 sierpnia 2033" },
        { "330905", "05 września 2033" },
        { "331017", "17 października 2033" },
        { "331105", "05 listopada 2033" },
        { "331231", "31 grudnia 2033" },
        { "990228", "28 lutego 2099" },
        { "280229", "29 lutego 2028" },
        { "330229", "" },
        { "331301", "" },
        { "330001", "" },
        { "330100", "" },
        { "<<<<<<", "" },
        { "33AB17", "" },
    };
    for (const auto &row : rows)
        QTest::newRow(row.expiry) << QByteArray(row.expiry) << QString::fromUtf8(row.expected);
}

void TstCardParserDates::expiryDateInWords()
{
    QFETCH(QByteArray, expiry);

    const DGParser parser = withExpiry(expiry);

    QTEST(parser.expiryDate(true), "expected");
}

void TstCardParserDates::expiryMonthFollowsTheLanguageOfTheMachine_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("expected");
    QTest::newRow("Polish") << "pl_PL.UTF-8" << QString("17 października 2033");
    QTest::newRow("English") << "en_GB.UTF-8"
                             << "17 October 2033";
    QTest::newRow("German") << "de_DE.UTF-8"
                            << "17 Oktober 2033";
}

void TstCardParserDates::expiryMonthFollowsTheLanguageOfTheMachine()
{
#ifdef Q_OS_WIN
    QSKIP("The language of the machine is no environment variable here");
#endif
    QFETCH(QString, language);
    QProcess machine;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LC_ALL", language);
    machine.setProcessEnvironment(environment);

    machine.start(QCoreApplication::applicationFilePath(), { printExpiry });
    QVERIFY(machine.waitForFinished());

    QTEST(QString::fromUtf8(machine.readAllStandardOutput()), "expected");
}

void TstCardParserDates::absentDg1GivesPointsOrNothing()
{
    const DGParser parser;

    QCOMPARE(parser.expiryDate(false), QString("..20"));
    QCOMPARE(parser.expiryDate(true), QString());
}

void TstCardParserDates::shortDg1GivesAPartialExpiryDate()
{
    const auto expiry = [](int size, bool longForm) {
        DGParser parser;
        parser.loadDg("DG1", Dg1().file().left(size));
        return parser.expiryDate(longForm);
    };

    QCOMPARE(expiry(43, false), QString("..20"));
    QCOMPARE(expiry(44, false), QString("..203"));
    QCOMPARE(expiry(46, false), QString(".1.2033"));
    QCOMPARE(expiry(48, false), QString("1.10.2033"));
    QCOMPARE(expiry(49, false), QString("17.10.2033"));
    QCOMPARE(expiry(47, true), QString());
    QCOMPARE(expiry(48, true), QString("01 października 2033"));
    QCOMPARE(expiry(49, true), QString("17 października 2033"));
}

void TstCardParserDates::birthDateComesFromDg11_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QString>("expected");
    // The personal number in DG1 says 14.07.2002.
    QTest::newRow("eight figures") << QByteArray("19840523") << "23.05.1984";
    QTest::newRow("eight characters of any kind") << QByteArray("ABCDEFGH") << "GH.EF.ABCD";
    QTest::newRow("eight characters, more bytes") << QByteArray("198405ŻŻ") << QString("ŻŻ.05.1984");
    QTest::newRow("seven") << QByteArray("1984052") << "14.07.2002";
    QTest::newRow("nine") << QByteArray("198405230") << "14.07.2002";
    QTest::newRow("ten, with points") << QByteArray("23.05.1984") << "14.07.2002";
    QTest::newRow("eight bytes, fewer characters") << QByteArray("1984ŻŻ") << "14.07.2002";
    QTest::newRow("eight bytes, cut by a zero") << QByteArray("1984") + '\0' + "523"
                                                << "14.07.2002";
    QTest::newRow("none") << QByteArray() << "14.07.2002";
}

void TstCardParserDates::birthDateComesFromDg11()
{
    QFETCH(QByteArray, value);
    DGParser parser = withPersonalNumber("02271409862");
    Dg11 dg11;
    dg11.birthDate = value;

    parser.loadDg("DG11", dg11.file());

    QTEST(parser.birthDate(), "expected");
}

void TstCardParserDates::centuryStandsInTheMonth_data()
{
    QTest::addColumn<QByteArray>("number");
    QTest::addColumn<QString>("expected");
    const struct {
        const char *number;
        const char *expected;
    } rows[] = {
        { "84852312345", "23.05.1884" }, { "84912312345", "23.11.1884" }, { "84052312345", "23.05.1984" },
        { "84112312345", "23.11.1984" }, { "02271409862", "14.07.2002" }, { "02321409862", "14.12.2002" },
        { "02471409862", "14.07.2102" }, { "02521409862", "14.12.2102" }, { "02671409862", "14.07.2202" },
        { "02721409862", "14.12.2202" },
    };
    for (const auto &row : rows)
        QTest::newRow(row.number) << QByteArray(row.number) << row.expected;
}

void TstCardParserDates::centuryStandsInTheMonth()
{
    QFETCH(QByteArray, number);

    const DGParser parser = withPersonalNumber(number);

    QTEST(parser.birthDate(), "expected");
}

void TstCardParserDates::birthDateIsMadeOfSixBytes()
{
    // Of two of them one character is made, and no seventh byte takes the place of what is missing.
    QCOMPARE(withPersonalNumber("8405Ż12345").birthDate(), QString("Ż.05.1984"));
}

void TstCardParserDates::everyOtherCharacterGivesCentury00()
{
    for (int character = 1; character < 0x80; ++character) {
        if (character >= '0' && character <= '9')
            continue;
        QByteArray number = "84052312345";
        number[2] = static_cast<char>(character);

        const DGParser parser = withPersonalNumber(number);

        QCOMPARE(parser.birthDate(), QString("23.") + QChar(character) + "5.0084");
    }
}

void TstCardParserDates::absentGroupsGivePointsAnd00()
{
    const DGParser parser;

    QCOMPARE(parser.birthDate(), QString("..00"));
}

void TstCardParserDates::shortDg1GivesAPartialBirthDate_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<QString>("expected");
    QTest::newRow("none of the number") << 53 << "..00";
    QTest::newRow("a year's digit") << 54 << "..008";
    QTest::newRow("the year") << 55 << "..0084";
    QTest::newRow("the month's tens") << 56 << ".0.1984";
    QTest::newRow("the month") << 57 << ".05.1984";
    QTest::newRow("a day's digit") << 58 << "2.05.1984";
    QTest::newRow("all") << 59 << "23.05.1984";
}

void TstCardParserDates::shortDg1GivesAPartialBirthDate()
{
    QFETCH(int, size);
    DGParser parser;

    parser.loadDg("DG1", Dg1().file().left(size));

    QTEST(parser.birthDate(), "expected");
}

void TstCardParserDates::issueDateIsNotChecked_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QString>("expected");
    QTest::newRow("plain") << QByteArray("20231017") << "17.10.2023";
    QTest::newRow("longer") << QByteArray("20231017xyz") << "17.10.2023";
    QTest::newRow("seven") << QByteArray("2023101") << "1.10.2023";
    QTest::newRow("five") << QByteArray("20231") << ".1.2023";
    QTest::newRow("year") << QByteArray("2023") << "..2023";
    QTest::newRow("two") << QByteArray("20") << "..20";
    QTest::newRow("no date") << QByteArray("ABCDEFGH") << "GH.EF.ABCD";
    QTest::newRow("empty") << QByteArray() << "..";
}

void TstCardParserDates::issueDateIsNotChecked()
{
    QFETCH(QByteArray, value);
    DGParser parser;
    Dg12 dg12;
    dg12.issueDate = value;

    QCOMPARE(parser.issueDate(), QString("..")); // without a DG12
    parser.loadDg("DG12", dg12.file());

    QTEST(parser.issueDate(), "expected");
}

// The language of a process is fixed before its first QLocale, hence a main of its own; called with --print-expiry the
// program only says what its machine's language makes of a date.
int main(int argc, char *argv[])
{
    if (argc == 2 && qstrcmp(argv[1], printExpiry) == 0) {
        const QByteArray text = withExpiry("331017").expiryDate(true).toUtf8();
        std::fwrite(text.constData(), 1, static_cast<size_t>(text.size()), stdout);
        return 0;
    }
    qputenv("LC_ALL", "pl_PL.UTF-8");
    TestHome home;
    QApplication application(argc, argv);
    TstCardParserDates test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_card_parser_dates.moc"
