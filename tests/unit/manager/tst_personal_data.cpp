#include "personal_data.h"

#include "card/card-parser.h"
#include "support/dg_builder.h"
#include "support/testmain.h"

using namespace PersonalData;

// The table behind the page of personal data, and the arithmetic of its blocks.
class TestPersonalData : public QObject {
    Q_OBJECT

private:
    static DGParser wholeCard(const QByteArray &sex = "F")
    {
        DgBuilder::Dg1 dg1;
        dg1.sex = sex;
        DGParser parser;
        parser.loadDg("DG1", dg1.file());
        parser.loadDg("DG11", DgBuilder::Dg11().file());
        parser.loadDg("DG12", DgBuilder::Dg12().file());
        parser.loadDg("DG13", DgBuilder::Dg13().file());
        return parser;
    }

    static Row rowOf(const DGParser &parser, const char *frame)
    {
        for (const Row &row : rows(parser, {})) {
            if (QByteArray(row.frame) == frame)
                return row;
        }
        return { First, "", "", {}, false, "no such row" };
    }

private slots:
    void rowsStandInTheirOrder_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("block");
        QTest::addColumn<QString>("label");
        QTest::addColumn<QString>("value");
        QTest::addColumn<bool>("elided");
        QTest::addColumn<QString>("accessibleName");
        int index = 0;
        const auto row = [&index](const char *frame, const char *label, Block block, const char *value, bool elided,
                                  const char *accessibleName) {
            QTest::newRow(frame) << index++ << int(block) << label << value << elided << accessibleName;
        };
        row("nameFrame_2", "lnameVal_2", First, "ANNA ŁUCJA", true, "Imiona: ANNA ŁUCJA");
        row("surnameFrame_2", "lsurnameVal_2", First, "ŻÓŁĆ", true, "Nazwisko: ŻÓŁĆ");
        row("familyNameFrame", "lfamilyNameVal", First, "WĄS", true, "Nazwisko rodowe: WĄS");
        row("fatherNameFrame", "lfatherNameVal", First, "JAN", true, "Imię ojca: JAN");
        row("motherNameFrame", "lmotherNameVal", First, "EWA", true, "Imię matki: EWA");
        row("brthDateFrame", "lbrthDateVal", Second, "23.05.1984", false, "Data urodzenia: 23.05.1984");
        row("birthPlaceFrame", "lbirthPlaceVal", Second, "ZIELONA GÓRA", true, "Miejsce urodzenia: ZIELONA GÓRA");
        // Shown and spoken differ, which is meant.
        row("sexFrame", "lsexVal", Second, "KOBIETA", false, "Płeć: mężczyzna");
        row("peselFrame", "lpeselVal", Second, "84052312345", false, "Pesel: 84052312345");
        row("nationalityFrame", "lnationalityVal", Second, "POLSKIE", true, "Obywatelstwo: POLSKIE");
        row("numIdFrame_2", "lnumIdVal_2", Third, "ABC123456", false, "Seria i numer dowodu: ABC123456");
        row("expDateFrame_2", "lexpDateVal_2", Third, "17.10.2033", false, "Data ważności: 17.10.2033");
        row("issueDateFrame", "lissueDateVal", Third, "17.10.2023", false, "Data wydania: 17.10.2023");
        row("issuingAuthorityFrame", "lissuingAuthVal", Third, "PREZYDENT MIASTA ŁODZI", true,
            "Organ wydający: PREZYDENT MIASTA ŁODZI");
    }
    void rowsStandInTheirOrder()
    {
        QFETCH(int, index);
        const QVector<Row> all = rows(wholeCard(), { "ANNA ŁUCJA", "ŻÓŁĆ", "ABC123456" });

        QCOMPARE(all.size(), 14);
        const Row &row = all[index];
        QCOMPARE(row.frame, QTest::currentDataTag());
        QTEST(int(row.block), "block");
        QTEST(QString(row.label), "label");
        QTEST(row.value, "value");
        QTEST(row.elided, "elided");
        QTEST(row.accessibleName(), "accessibleName");
    }

    void sexIsShownByWordAndSpokenByLetter_data()
    {
        QTest::addColumn<QByteArray>("letter");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("spoken");
        QTest::newRow("F") << QByteArray("F") << "KOBIETA"
                           << "Płeć: mężczyzna";
        QTest::newRow("M") << QByteArray("M") << "MĘŻCZYZNA"
                           << "Płeć: mężczyzna";
        QTest::newRow("K") << QByteArray("K") << "K"
                           << "Płeć: kobieta";
        QTest::newRow("X") << QByteArray("X") << "X"
                           << "Płeć: mężczyzna";
        QTest::newRow("<") << QByteArray("<") << "<"
                           << "Płeć: mężczyzna";
    }
    void sexIsShownByWordAndSpokenByLetter()
    {
        QFETCH(QByteArray, letter);

        const Row row = rowOf(wholeCard(letter), "sexFrame");

        QTEST(row.value, "shown");
        QTEST(row.accessibleName(), "spoken");
    }

    void letterOfAWomanIsSpokenAsAWomanIfItCameUnchanged()
    {
        QCOMPARE(spokenSex("F"), QString("kobieta"));
        QCOMPARE(spokenSex("K"), QString("kobieta"));
        QCOMPARE(spokenSex("KOBIETA"), QString("mężczyzna"));
    }

    void datesAreNeverEmptyAndEverythingElseCanBe()
    {
        QStringList filled;
        for (const Row &row : rows(DGParser(), {})) {
            if (!row.value.isEmpty())
                filled << QString("%1 %2").arg(row.frame, row.value);
        }

        QCOMPARE(filled, (QStringList { "brthDateFrame ..00", "expDateFrame_2 ..20", "issueDateFrame .." }));
    }

    void blocksCloseUp()
    {
        QCOMPARE(topOfPage, 30);
        QCOMPARE(blockHeight(0), 0);
        QCOMPARE(blockHeight(1), 30);
        QCOMPARE(blockHeight(5), 150);
        // The first block stands at the top: its line is its height and 40.
        QCOMPARE(lineBelowBlock(topOfPage, blockHeight(5)), 190);
        QCOMPARE(topBelowLine(190), 200);
        QCOMPARE(lineBelowBlock(200, blockHeight(4)), 330);
        QCOMPARE(topBelowLine(330), 340);
    }
};

VELMOR_TEST(TestPersonalData)
#include "tst_personal_data.moc"
