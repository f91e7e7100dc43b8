#include "support/dg_builder.h"
#include "support/testmain.h"

#include "card/card-parser.h"

// The names in DG13: the run of checks over 5F60, 5F61 and 5F62, each as strict as it is meant to be.
class TstCardParserNames : public QObject {
    Q_OBJECT

private slots:
    void namesOf_data();
    void namesOf();
    void outerLengthFrom80UpIsRefusedYetTheSearchedNamesAreFound_data();
    void outerLengthFrom80UpIsRefusedYetTheSearchedNamesAreFound();
    void firstByteIsForgiven();
    void thirdByteIsForgiven();
    void outerLengthIsNotCompared();
    void contentOfTheTagListIsSkipped();
    void tagListOfEveryShortLength();
    void eitherByteOfTheFirstTwoTagsIsEnough_data();
    void eitherByteOfTheFirstTwoTagsIsEnough();
    void thirdTagNeedsBothBytes();
    void nameFromAnEarlierRunIsForgotten();
    void negativeNameLengthEndsTheRun_data();
    void negativeNameLengthEndsTheRun();
    void nameOf127BytesIsRead();
    void namesKeepZeroBytesAndBadUtf8();
    void emptyNamesAreReadOver();
};

namespace {

using namespace DgBuilder;

QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

QStringList namesIn(const QByteArray &file)
{
    DGParser parser;
    parser.loadDg("DG13", file);
    return { parser.surname(), parser.firstName(), parser.secondName() };
}

// Header with a tag list of two bytes; the outer length is right for no particular body, as nothing compares it.
const QByteArray head = hex("6D405C02AAAA");

// Header with a tag list of one byte.
const QByteArray oddHead = hex("6D405C01AA");

} // namespace

void TstCardParserNames::namesOf_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *name, const QByteArray &file, const QStringList &expected = { "", "", "" }) {
        QTest::newRow(name) << file << expected;
    };
    const QByteArray surname = tlv("5F60", "NOWAK");
    const QByteArray first = tlv("5F61", "EWA");
    const QByteArray second = tlv("5F62", "ZOFIA");

    row("well formed", Dg13().file(), { QString("ŻÓŁĆ"), "ANNA", QString("ŁUCJA") });
    row("all three, nothing behind", head + surname + first + second, { "NOWAK", "EWA", "ZOFIA" });

    row("1: empty", "");
    row("1: one byte, right", hex("6D"));
    row("1: one byte, wrong", hex("6E"));
    row("2: outer length 0", hex("6D005C02AAAA") + surname);
    row("3: three bytes, right", hex("6D405C"));
    row("3: three bytes, wrong", hex("6D405D"));
    row("3: tag list of 0", hex("6D405C00") + surname);
    row("3: tag list of 80", hex("6D405C80") + surname);
    row("3: tag list of FF", hex("6D405CFF") + surname);
    row("3: tag list longer than the file", hex("6D405C7FAAAA") + surname);
    row("4: odd tag list, ends before the length", oddHead + hex("5F60"));
    row("4: odd tag list, ends with the length", oddHead + hex("5F6000"));
    row("4: odd tag list, surname", oddHead + surname, { "NOWAK", "", "" });
    row("4: even tag list, nothing behind", head);
    row("4: even tag list, half a tag", head + hex("5F"));
    row("4: even tag list, a tag", head + hex("5F60"));
    row("4: both bytes of the tag wrong", head + hex("6F61") + "\x01" + "A");
    row("4: bytes of the tag swapped", head + hex("605F") + "\x01" + "A");

    row("5: surname alone, ends with the file", head + surname, { "NOWAK", "", "" });
    row("5: surname one byte short", head + surname.chopped(1));
    // Its length and first letter could be the tag of a first name: "a" is 61.
    row("5: surname cut short, going on like a first name", head + hex("5F6005") + "a\x02XY");
    row("5: surname with a tag only", head + hex("5F6001"));
    row("6: one byte behind the surname", head + surname + hex("5F"), { "NOWAK", "", "" });
    row("6: tag without length", head + surname + hex("5F61"), { "NOWAK", "", "" });
    row("6: both bytes of the tag wrong", head + surname + hex("6F62") + "\x01" + "A" + second, { "NOWAK", "", "" });
    row("6: first name one byte short", head + surname + first.chopped(1), { "NOWAK", "", "" });
    // The same for the second name, whose tag is 5F62: a length of 95, and "b".
    row("6: first name cut short, going on like a second name", head + surname + hex("5F615F") + "b\x02XY",
        { "NOWAK", "", "" });
    row("6: first name ends with the file", head + surname + first, { "NOWAK", "EWA", "" });
    row("7: tag without length", head + surname + first + hex("5F62"), { "NOWAK", "EWA", "" });
    row("8: second name one byte short", head + surname + first + second.chopped(1), { "NOWAK", "EWA", "" });
    row("8: more behind", head + surname + first + second + "more", { "NOWAK", "EWA", "ZOFIA" });
    row("first two in the other order", head + first + surname + second, { "EWA", "NOWAK", "ZOFIA" });
    row("something between", head + surname + "x" + first, { "NOWAK", "", "" });
}

void TstCardParserNames::namesOf()
{
    QFETCH(QByteArray, file);

    const QStringList names = namesIn(file);

    QTEST(names, "expected");
}

void TstCardParserNames::outerLengthFrom80UpIsRefusedYetTheSearchedNamesAreFound_data()
{
    QTest::addColumn<QByteArray>("file");
    const QByteArray body = Dg13().body();
    QTest::newRow("81") << hex("6D81") + static_cast<char>(body.size()) + body;
    QTest::newRow("82") << hex("6D8200") + static_cast<char>(body.size()) + body;
    QTest::newRow("80") << hex("6D80") + body;
    QTest::newRow("FF") << hex("6DFF") + body;
    Dg13 longNames;
    longNames.surname = QByteArray(100, 'A');
    longNames.firstName = QByteArray(100, 'B');
    QTest::newRow("as long names bring it") << longNames.file();
}

void TstCardParserNames::outerLengthFrom80UpIsRefusedYetTheSearchedNamesAreFound()
{
    QFETCH(QByteArray, file);
    DGParser parser;

    parser.loadDg("DG13", file);

    QCOMPARE(parser.surname(), QString());
    QCOMPARE(parser.firstName(), QString());
    QCOMPARE(parser.secondName(), QString());
    QCOMPARE(parser.familyName(), QString("WĄS"));
    QCOMPARE(parser.fatherName(), QString("JAN"));
    QCOMPARE(parser.motherName(), QString("EWA"));
}

void TstCardParserNames::firstByteIsForgiven()
{
    QByteArray file = Dg13().file();
    for (int value = 0; value <= 0xFF; ++value) {
        file[0] = static_cast<char>(value);

        QCOMPARE(namesIn(file), QStringList({ "ŻÓŁĆ", "ANNA", "ŁUCJA" }));
    }
}

void TstCardParserNames::thirdByteIsForgiven()
{
    QByteArray file = Dg13().file();
    for (int value = 0; value <= 0xFF; ++value) {
        file[2] = static_cast<char>(value);

        QCOMPARE(namesIn(file), QStringList({ "ŻÓŁĆ", "ANNA", "ŁUCJA" }));
    }
}

void TstCardParserNames::outerLengthIsNotCompared()
{
    QByteArray file = Dg13().file();
    for (int value = 0; value <= 0xFF; ++value) {
        file[1] = static_cast<char>(value);
        const bool aboveZero = value > 0 && value < 0x80;

        QCOMPARE(namesIn(file), aboveZero ? QStringList({ "ŻÓŁĆ", "ANNA", "ŁUCJA" }) : QStringList({ "", "", "" }));
    }
}

void TstCardParserNames::contentOfTheTagListIsSkipped()
{
    Dg13 dg13;
    dg13.tagList = hex("5F60015F6001");

    QCOMPARE(namesIn(dg13.file()), QStringList({ "ŻÓŁĆ", "ANNA", "ŁUCJA" }));
}

void TstCardParserNames::tagListOfEveryShortLength()
{
    for (int length = 1; length < 0x80; ++length) {
        const QByteArray file =
            hex("6D405C") + static_cast<char>(length) + QByteArray(length, '\x60') + tlv("5F60", "NOWAK");

        QCOMPARE(namesIn(file), QStringList({ "NOWAK", "", "" }));
    }
}

void TstCardParserNames::eitherByteOfTheFirstTwoTagsIsEnough_data()
{
    QTest::addColumn<QByteArray>("surnameTag");
    QTest::addColumn<QByteArray>("firstNameTag");
    QTest::newRow("both bytes") << hex("5F60") << hex("5F61");
    QTest::newRow("first bytes") << hex("5F00") << hex("5FFF");
    QTest::newRow("second bytes") << hex("0060") << hex("FF61");
    QTest::newRow("one of each") << hex("5F61") << hex("6061");
}

void TstCardParserNames::eitherByteOfTheFirstTwoTagsIsEnough()
{
    QFETCH(QByteArray, surnameTag);
    QFETCH(QByteArray, firstNameTag);

    const QByteArray file = head + tlv(surnameTag, "NOWAK") + tlv(firstNameTag, "EWA") + tlv("5F62", "ZOFIA");

    QCOMPARE(namesIn(file), QStringList({ "NOWAK", "EWA", "ZOFIA" }));
}

void TstCardParserNames::thirdTagNeedsBothBytes()
{
    for (const char *tag : { "5F61", "5F00", "0062", "5E62", "625F" }) {
        const QByteArray file = head + tlv("5F60", "NOWAK") + tlv("5F61", "EWA") + tlv(tag, "ZOFIA");

        QCOMPARE(namesIn(file), QStringList({ "NOWAK", "EWA", "" }));
    }
}

void TstCardParserNames::nameFromAnEarlierRunIsForgotten()
{
    DGParser parser;
    parser.loadDg("DG13", Dg13().file());
    QCOMPARE(parser.secondName(), QString("ŁUCJA"));

    parser.loadDg("DG13", head + tlv("5F60", "NOWAK"));

    QCOMPARE(parser.surname(), QString("NOWAK"));
    QCOMPARE(parser.firstName(), QString());
    QCOMPARE(parser.secondName(), QString());
    parser.loadDg("DG13", "x");
    QCOMPARE(parser.surname(), QString());
}

void TstCardParserNames::negativeNameLengthEndsTheRun_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("surname") << head + hex("5F60") << QStringList({ "", "", "" });
    QTest::newRow("first name") << head + tlv("5F60", "NOWAK") + hex("5F61") << QStringList({ "NOWAK", "", "" });
    QTest::newRow("second name") << head + tlv("5F60", "NOWAK") + tlv("5F61", "EWA") + hex("5F62")
                                 << QStringList({ "NOWAK", "EWA", "" });
}

void TstCardParserNames::negativeNameLengthEndsTheRun()
{
    QFETCH(QByteArray, before);
    QFETCH(QStringList, expected);
    for (int length = 0x80; length <= 0xFF; ++length) {
        // What follows could be taken for the rest of a name, or for the next one.
        const QByteArray file =
            before + static_cast<char>(length) + tlv("5F61", "ANNA") + tlv("5F62", "ŁUCJA") + QByteArray(300, 'B');

        QCOMPARE(namesIn(file), expected);
    }
}

void TstCardParserNames::nameOf127BytesIsRead()
{
    const QByteArray name(127, 'N');

    QCOMPARE(namesIn(head + tlv("5F60", name) + tlv("5F61", name) + tlv("5F62", name)),
             QStringList({ name, name, name }));
}

void TstCardParserNames::namesKeepZeroBytesAndBadUtf8()
{
    // Other than the searched texts, these names go through the codec with their count.
    const QByteArray withZero = QByteArray("A") + '\0' + "B";

    const QStringList names = namesIn(head + tlv("5F60", withZero)
                                      + tlv("5F61",
                                            "\xFF"
                                            "A"));

    QCOMPARE(names.at(0), QString("A") + QChar(0) + "B");
    QCOMPARE(names.at(1), QString(QChar(QChar::ReplacementCharacter)) + "A");
}

void TstCardParserNames::emptyNamesAreReadOver()
{
    QCOMPARE(namesIn(head + tlv("5F60", "") + tlv("5F61", "") + tlv("5F62", "ZOFIA")),
             QStringList({ "", "", "ZOFIA" }));
    QCOMPARE(namesIn(head + tlv("5F60", "NOWAK") + tlv("5F61", "") + tlv("5F62", "")),
             QStringList({ "NOWAK", "", "" }));
}

VELMOR_TEST(TstCardParserNames)
#include "tst_card_parser_names.moc"
