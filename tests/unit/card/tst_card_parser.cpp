#include "support/dg_builder.h"
#include "support/testmain.h"

#include "card/card-parser.h"

using Accessor = QString (*)(DGParser &);
Q_DECLARE_METATYPE(Accessor)

// The store of the groups, and the fields of DG1.
class TstCardParser : public QObject {
    Q_OBJECT

private slots:
    void everyFieldOfAWellFormedCard_data();
    void everyFieldOfAWellFormedCard();
    void emptyFileKeepsTheEarlierContent();
    void laterFileReplacesTheEarlierOne();
    void clearForgetsEveryGroup();
    void namesOfGroupsAreExact();
    void loadingAndClearingAreLogged();
    void emptyLoadIsLoggedToo();

    void sexBecomesAWord_data();
    void sexBecomesAWord();
    void onlyPolBecomesAWord_data();
    void onlyPolBecomesAWord();
    void documentNumberLosesItsFill_data();
    void documentNumberLosesItsFill();
    void documentNumberOfAShortFileIsItsLastNineCharacters();
    void headerOfDg1IsNotChecked();
    void absentDg1GivesEmptyTexts();
    void personalNumberFallsBackToDg1_data();
    void personalNumberFallsBackToDg1();
    void badGroupDoesNotDisturbTheOthers();
};

namespace {

using namespace DgBuilder;

DGParser card()
{
    DGParser parser;
    parser.loadDg("DG1", Dg1().file());
    parser.loadDg("DG2", Dg2().file());
    parser.loadDg("DG11", Dg11().file());
    parser.loadDg("DG12", Dg12().file());
    parser.loadDg("DG13", Dg13().file());
    return parser;
}

DGParser withGroup(const QString &name, const QByteArray &file)
{
    DGParser parser;
    parser.loadDg(name, file);
    return parser;
}

} // namespace

void TstCardParser::everyFieldOfAWellFormedCard_data()
{
    QTest::addColumn<Accessor>("accessor");
    QTest::addColumn<QString>("expected");
    const struct {
        const char *name;
        Accessor accessor;
        const char *expected;
    } rows[] = {
        { "documentNumber", [](DGParser &parser) { return parser.documentNumber(); }, "ABC123456" },
        { "expiryDate", [](DGParser &parser) { return parser.expiryDate(false); }, "17.10.2033" },
        { "sex", [](DGParser &parser) { return parser.sex(); }, "KOBIETA" },
        { "nationality", [](DGParser &parser) { return parser.nationality(); }, "POLSKIE" },
        { "personalNumber", [](DGParser &parser) { return parser.personalNumber(); }, "84052312345" },
        { "birthDate", [](DGParser &parser) { return parser.birthDate(); }, "23.05.1984" },
        { "birthPlace", [](DGParser &parser) { return parser.birthPlace(); }, "ZIELONA GÓRA" },
        { "issueDate", [](DGParser &parser) { return parser.issueDate(); }, "17.10.2023" },
        { "issuingAuthority", [](DGParser &parser) { return parser.issuingAuthority(); }, "PREZYDENT MIASTA ŁODZI" },
        { "familyName", [](DGParser &parser) { return parser.familyName(); }, "WĄS" },
        { "fatherName", [](DGParser &parser) { return parser.fatherName(); }, "JAN" },
        { "motherName", [](DGParser &parser) { return parser.motherName(); }, "EWA" },
        { "surname", [](DGParser &parser) { return parser.surname(); }, "ŻÓŁĆ" },
        { "firstName", [](DGParser &parser) { return parser.firstName(); }, "ANNA" },
        { "secondName", [](DGParser &parser) { return parser.secondName(); }, "ŁUCJA" },
        { "firstNames", [](DGParser &parser) { return parser.firstNames(); }, "ANNA ŁUCJA" },
    };
    for (const auto &row : rows)
        QTest::newRow(row.name) << row.accessor << QString::fromUtf8(row.expected);
}

void TstCardParser::everyFieldOfAWellFormedCard()
{
    QFETCH(Accessor, accessor);
    QFETCH(QString, expected);
    DGParser parser = card();

    const QString value = accessor(parser);

    QCOMPARE(value, expected);
}

void TstCardParser::emptyFileKeepsTheEarlierContent()
{
    DGParser parser = card();

    for (const char *name : { "DG1", "DG2", "DG11", "DG12", "DG13" })
        parser.loadDg(name, QByteArray());

    QCOMPARE(parser.documentNumber(), QString("ABC123456"));
    QCOMPARE(parser.photo(), jpeg());
    QCOMPARE(parser.birthDate(), QString("23.05.1984"));
    QCOMPARE(parser.issueDate(), QString("17.10.2023"));
    QCOMPARE(parser.firstName(), QString("ANNA"));
}

void TstCardParser::laterFileReplacesTheEarlierOne()
{
    DGParser parser = card();
    Dg1 other;
    other.documentNumber = "XYZ987654";

    parser.loadDg("DG1", other.file());

    QCOMPARE(parser.documentNumber(), QString("XYZ987654"));
}

void TstCardParser::clearForgetsEveryGroup()
{
    DGParser parser = card();
    QCOMPARE(parser.surname(), QString("ŻÓŁĆ"));

    parser.clearDg();

    QCOMPARE(parser.documentNumber(), QString());
    QCOMPARE(parser.photo(), QByteArray());
    QCOMPARE(parser.birthPlace(), QString());
    QCOMPARE(parser.issuingAuthority(), QString());
    QCOMPARE(parser.familyName(), QString());
    QCOMPARE(parser.surname() + parser.firstName() + parser.secondName(), QString());
}

void TstCardParser::namesOfGroupsAreExact()
{
    DGParser parser;

    for (const char *name : { "dg1", "DG01", "DG1 ", "EF.DG1", "DG" })
        parser.loadDg(name, Dg1().file());

    QCOMPARE(parser.documentNumber(), QString());
}

void TstCardParser::loadingAndClearingAreLogged()
{
    DGParser parser;
    const LogCatcher log;

    parser.loadDg("DG12", QByteArray(17, 'x'));
    parser.clearDg();

    // The blank in the text "size: " stands beside the one that the log puts between two elements.
    QCOMPARE(log.lines(), QStringList({ "loadDG: DG12 size:  17", "clear DG data" }));
}

void TstCardParser::emptyLoadIsLoggedToo()
{
    DGParser parser;
    const LogCatcher log;

    parser.loadDg("DG2", QByteArray());

    QCOMPARE(log.lines(), QStringList({ "loadDG: DG2 size:  0" }));
}

void TstCardParser::sexBecomesAWord_data()
{
    QTest::addColumn<QByteArray>("letter");
    QTest::addColumn<QString>("expected");
    QTest::newRow("F") << QByteArray("F") << "KOBIETA";
    QTest::newRow("M") << QByteArray("M") << QString("MĘŻCZYZNA");
    QTest::newRow("X stays") << QByteArray("X") << "X";
    QTest::newRow("blank stays") << QByteArray(" ") << " ";
    QTest::newRow("fill stays") << QByteArray("<") << "<";
    QTest::newRow("K stays") << QByteArray("K") << "K";
    QTest::newRow("small letters are no word") << QByteArray("f") << "f";
    QTest::newRow("a zero byte is no text") << QByteArray(1, '\0') << "";
}

void TstCardParser::sexBecomesAWord()
{
    QFETCH(QByteArray, letter);
    Dg1 dg1;
    dg1.sex = letter;

    const DGParser parser = withGroup("DG1", dg1.file());

    QTEST(parser.sex(), "expected");
}

void TstCardParser::onlyPolBecomesAWord_data()
{
    QTest::addColumn<QByteArray>("country");
    QTest::addColumn<QString>("expected");
    QTest::newRow("POL") << QByteArray("POL") << "POLSKIE";
    QTest::newRow("UKR") << QByteArray("UKR") << "UKR";
    QTest::newRow("pol") << QByteArray("pol") << "pol";
    QTest::newRow("D with fill") << QByteArray("D<<") << "D<<";
}

void TstCardParser::onlyPolBecomesAWord()
{
    QFETCH(QByteArray, country);
    Dg1 dg1;
    dg1.nationality = country;

    const DGParser parser = withGroup("DG1", dg1.file());

    QTEST(parser.nationality(), "expected");
}

void TstCardParser::documentNumberLosesItsFill_data()
{
    QTest::addColumn<QByteArray>("number");
    QTest::addColumn<QString>("expected");
    QTest::newRow("full") << QByteArray("ABC123456") << "ABC123456";
    QTest::newRow("fill at the end") << QByteArray("ABC123<<<") << "ABC123";
    QTest::newRow("fill inside") << QByteArray("<AB<C12<3") << "ABC123";
    QTest::newRow("fill only") << QByteArray("<<<<<<<<<") << "";
}

void TstCardParser::documentNumberLosesItsFill()
{
    QFETCH(QByteArray, number);
    Dg1 dg1;
    dg1.documentNumber = number;

    const DGParser parser = withGroup("DG1", dg1.file());

    QTEST(parser.documentNumber(), "expected");
}

void TstCardParser::documentNumberOfAShortFileIsItsLastNineCharacters()
{
    const QByteArray file = Dg1().file();

    QCOMPARE(withGroup("DG1", file.left(19)).documentNumber(), QString("ABC123456"));
    // "a]_?ZI<POLABC": the 13 characters there are, of which the right nine are taken.
    QCOMPARE(withGroup("DG1", file.left(13)).documentNumber(), QString("ZIPOLABC"));
    QCOMPARE(withGroup("DG1", file.left(2)).documentNumber(), QString("a]"));
}

void TstCardParser::headerOfDg1IsNotChecked()
{
    QByteArray file = Dg1().file();
    file.replace(0, 5, "wrong");

    const DGParser parser = withGroup("DG1", file);

    QCOMPARE(parser.documentNumber(), QString("ABC123456"));
    QCOMPARE(parser.sex(), QString("KOBIETA"));
}

void TstCardParser::absentDg1GivesEmptyTexts()
{
    const DGParser parser;

    QCOMPARE(parser.documentNumber(), QString());
    QCOMPARE(parser.sex(), QString());
    QCOMPARE(parser.nationality(), QString());
    QCOMPARE(parser.personalNumber(), QString());
}

void TstCardParser::personalNumberFallsBackToDg1_data()
{
    QTest::addColumn<QByteArray>("dg11");
    QTest::addColumn<QString>("expected");
    QTest::newRow("DG11 wins") << tlv("6B", tlv("5F10", "02271409862")) << "02271409862";
    QTest::newRow("DG11 wins in any form") << tlv("6B", tlv("5F10", "<")) << "<";
    QTest::newRow("empty in DG11") << tlv("6B", tlv("5F10", "")) << "84052312345";
    QTest::newRow("not in DG11") << tlv("6B", tlv("5F11", "ŁÓDŹ")) << "84052312345";
    QTest::newRow("no DG11") << QByteArray() << "84052312345";
}

void TstCardParser::personalNumberFallsBackToDg1()
{
    QFETCH(QByteArray, dg11);
    DGParser parser = withGroup("DG1", Dg1().file());

    parser.loadDg("DG11", dg11);

    QTEST(parser.personalNumber(), "expected");
}

void TstCardParser::badGroupDoesNotDisturbTheOthers()
{
    for (const char *bad : { "DG1", "DG2", "DG11", "DG12", "DG13" }) {
        DGParser parser = card();

        parser.loadDg(bad, QByteArray(3, '\xFF'));

        QCOMPARE(parser.documentNumber() == "ABC123456", qstrcmp(bad, "DG1") != 0);
        QCOMPARE(parser.photo() == jpeg(), qstrcmp(bad, "DG2") != 0);
        QCOMPARE(parser.birthPlace() == "ZIELONA GÓRA", qstrcmp(bad, "DG11") != 0);
        QCOMPARE(parser.issueDate() == "17.10.2023", qstrcmp(bad, "DG12") != 0);
        QCOMPARE(parser.surname() == "ŻÓŁĆ", qstrcmp(bad, "DG13") != 0);
    }
}

VELMOR_TEST(TstCardParser)
#include "tst_card_parser.moc"
