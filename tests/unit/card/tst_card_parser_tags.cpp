#include "support/dg_builder.h"
#include "support/testmain.h"

#include "card/card-parser.h"

using Accessor = QString (*)(DGParser &);
Q_DECLARE_METATYPE(Accessor)

// The fields that are found by a search for their tag, in DG11, DG12 and DG13.
class TstCardParserTags : public QObject {
    Q_OBJECT

private slots:
    void taggedFieldIsFound_data();
    void taggedFieldIsFound();
    void lastOccurrenceOfATagWins();
    void tagInsideALaterValueShadowsTheField();
    void taggedValueMustEndInsideTheFile_data();
    void taggedValueMustEndInsideTheFile();
    void taggedTextEndsAtAZeroByte();
    void longestShortFormIsRead();
    void lengthsFrom80UpGiveAnEmptyText();
    void everyFillOfThePlaceOfBirthBecomesABlank();
    void onlyThePlaceOfBirthLosesItsFill();
};

namespace {

using namespace DgBuilder;

DGParser withGroup(const QString &name, const QByteArray &file)
{
    DGParser parser;
    parser.loadDg(name, file);
    return parser;
}

struct TaggedField {
    const char *name;
    const char *group;
    const char *tagHex;
    Accessor accessor;
};

const TaggedField taggedFields[] = {
    { "personal number", "DG11", "5F10", [](DGParser &parser) { return parser.personalNumber(); } },
    { "place of birth", "DG11", "5F11", [](DGParser &parser) { return parser.birthPlace(); } },
    { "issuing authority", "DG12", "5F19", [](DGParser &parser) { return parser.issuingAuthority(); } },
    { "family name", "DG13", "5F63", [](DGParser &parser) { return parser.familyName(); } },
    { "father's name", "DG13", "5F64", [](DGParser &parser) { return parser.fatherName(); } },
    { "mother's name", "DG13", "5F65", [](DGParser &parser) { return parser.motherName(); } },
};

} // namespace

void TstCardParserTags::taggedFieldIsFound_data()
{
    QTest::addColumn<QString>("group");
    QTest::addColumn<QByteArray>("tag");
    QTest::addColumn<Accessor>("accessor");
    for (const TaggedField &field : taggedFields)
        QTest::newRow(field.name) << QString(field.group) << QByteArray::fromHex(field.tagHex) << field.accessor;
}

void TstCardParserTags::taggedFieldIsFound()
{
    QFETCH(QString, group);
    QFETCH(QByteArray, tag);
    QFETCH(Accessor, accessor);
    const auto read = [&](const QByteArray &file) {
        DGParser parser = withGroup(group, file);
        return accessor(parser);
    };

    // The field is found wherever it stands and whatever stands around it, but in its own group only.
    QCOMPARE(read(tlv(tag, "ŻABA")), QString("ŻABA"));
    QCOMPARE(read("junk" + tlv(tag, "ŻABA") + "junk"), QString("ŻABA"));
    QCOMPARE(read("no tag at all"), QString());
    QCOMPARE(read(tlv(tag, "")), QString());
    QCOMPARE(read(tag.left(1)), QString());
    QCOMPARE(read(tag), QString());
    for (const char *other : { "DG1", "DG2", "DG11", "DG12", "DG13" }) {
        if (group != other) {
            DGParser parser = withGroup(other, tlv(tag, "ŻABA"));
            QCOMPARE(accessor(parser), QString());
        }
    }
}

void TstCardParserTags::lastOccurrenceOfATagWins()
{
    const DGParser parser = withGroup("DG13", tlv("5F64", "PIERWSZY") + tlv("5F65", "EWA") + tlv("5F64", "DRUGI"));

    QCOMPARE(parser.fatherName(), QString("DRUGI"));
}

void TstCardParserTags::tagInsideALaterValueShadowsTheField()
{
    // "_c" is 5F 63: the two bytes further on hide the field, and what follows them is read as a length and a value.
    const DGParser shadowed = withGroup("DG13", tlv("5F63", "WĄS") + tlv("5F65", QByteArray("E_c\x02WA!")));
    const DGParser hidden = withGroup("DG13", tlv("5F63", "WĄS") + tlv("5F65", QByteArray("E_cWA")));

    QCOMPARE(shadowed.familyName(), QString("WA"));
    QCOMPARE(hidden.familyName(), QString());
}

void TstCardParserTags::taggedValueMustEndInsideTheFile_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("expected");
    const QByteArray tag = QByteArray::fromHex("5F63");
    QTest::newRow("no length byte") << tag << "";
    QTest::newRow("length 0 at the end") << tag + QByteArray(1, '\0') << "";
    QTest::newRow("length 0 before more") << tag + QByteArray(1, '\0') + "ABC"
                                          << "";
    QTest::newRow("value ends with the file") << tag + "\x03" + "ABC"
                                              << "ABC";
    QTest::newRow("one byte missing") << tag + "\x04" + "ABC"
                                      << "";
    QTest::newRow("all bytes missing") << tag + "\x01"
                                       << "";
    QTest::newRow("one byte more") << tag + "\x02" + "ABC"
                                   << "AB";
    QTest::newRow("127 of 3") << tag + "\x7F" + "ABC"
                              << "";
}

void TstCardParserTags::taggedValueMustEndInsideTheFile()
{
    QFETCH(QByteArray, file);

    const DGParser parser = withGroup("DG13", file);

    QTEST(parser.familyName(), "expected");
}

void TstCardParserTags::taggedTextEndsAtAZeroByte()
{
    const DGParser parser = withGroup("DG13", tlv("5F63", QByteArray("AB\0CD", 5)));

    QCOMPARE(parser.familyName(), QString("AB"));
}

void TstCardParserTags::longestShortFormIsRead()
{
    const QByteArray name(127, 'N');

    const DGParser parser = withGroup("DG13", tlv("5F63", name));

    QCOMPARE(parser.familyName(), QString(name));
}

void TstCardParserTags::lengthsFrom80UpGiveAnEmptyText()
{
    for (int length = 0x80; length <= 0xFF; ++length) {
        const QByteArray file =
            QByteArray(200, 'A') + QByteArray::fromHex("5F63") + static_cast<char>(length) + QByteArray(300, 'B');

        const DGParser parser = withGroup("DG13", file);

        QCOMPARE(parser.familyName(), QString());
    }
}

void TstCardParserTags::everyFillOfThePlaceOfBirthBecomesABlank()
{
    const DGParser parser = withGroup("DG11", tlv("5F11", "<NOWY<<SĄCZ<"));

    QCOMPARE(parser.birthPlace(), QString(" NOWY  SĄCZ "));
}

void TstCardParserTags::onlyThePlaceOfBirthLosesItsFill()
{
    DGParser parser = withGroup("DG12", tlv("5F19", "URZĄD<MIASTA"));
    parser.loadDg("DG13", tlv("5F63", "A<B"));

    QCOMPARE(parser.issuingAuthority(), QString("URZĄD<MIASTA"));
    QCOMPARE(parser.familyName(), QString("A<B"));
}

VELMOR_TEST(TstCardParserTags)
#include "tst_card_parser_tags.moc"
