// The tables of the card: containers, PIN lengths, chips, and the flag words they are looked up by.
#include "base/common.h"
#include "card/card_tables.h"
#include "card/pin_buffer.h"
#include "card/reader.h"
#include "support/testmain.h"

#include <QRegularExpression>

#include <new>

class TestCardTables : public QObject {
    Q_OBJECT

private slots:
    void containersHaveTheirRoles_data();
    void containersHaveTheirRoles();
    void pinsHaveTheirDigits_data();
    void pinsHaveTheirDigits();
    void noPinTableHoldsPresence();
    void titleAndDigitsFollowTheName_data();
    void titleAndDigitsFollowTheName();
    void pukHasEightDigits();
    void chipsStandInTheirOrder_data();
    void chipsStandInTheirOrder();
    void everyChipCarriesTheSameRemainder();
    void atrTellsTheNameOfItsChip_data();
    void atrTellsTheNameOfItsChip();
    void everyChipHasTheSameFourContainers_data();
    void everyChipHasTheSameFourContainers();
    void tableIsHandedOutAsACopy();
    void chipTypeFollowsFlags_data();
    void chipTypeFollowsFlags();
    void firstChipOfSeveralDecides();
    void readerNameEndsAtTheFirstMark_data();
    void readerNameEndsAtTheFirstMark();
    void pinBufferIsWipedWhenItGoes();
    void emptyPinIsNotNull();
};

void TestCardTables::containersHaveTheirRoles_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("role");
    QTest::newRow("auth") << 0 << "Authentication"
                          << "Certyfikat do identyfikacji i uwierzytelniania";
    QTest::newRow("author") << 1 << "Authorization"
                            << "Certyfikat do podpisu osobistego";
    QTest::newRow("pres") << 2 << "Presence"
                          << "Certyfikat do potwierdzania obecności";
    QTest::newRow("qual") << 3 << "Qualified"
                          << "Certyfikat kwalifikowany";
}

void TestCardTables::containersHaveTheirRoles()
{
    QFETCH(int, row);

    QCOMPARE(cardContainers().size(), std::size_t(4));
    QTEST(cardContainers().at(row).name, "name");
    QTEST(cardContainers().at(row).role, "role");
}

void TestCardTables::pinsHaveTheirDigits_data()
{
    QTest::addColumn<QString>("conteiner");
    QTest::addColumn<int>("digits");
    QTest::addColumn<QString>("pattern");
    QTest::newRow("auth") << "Authentication" << 4 << "\\d{4}";
    QTest::newRow("author") << "Authorization" << 6 << "\\d{6}";
    QTest::newRow("qual") << "Qualified" << 8 << "\\d{8}";
}

void TestCardTables::pinsHaveTheirDigits()
{
    QFETCH(QString, conteiner);

    const PinContainer *row = pinContainer(conteiner);

    QVERIFY(row);
    QTEST(row->digits, "digits");
    QTEST(row->pattern, "pattern");
}

void TestCardTables::noPinTableHoldsPresence()
{
    QVERIFY(!pinContainer("Presence"));
    QVERIFY(!pinContainer("eMRTD"));
    QVERIFY(!pinContainer("qualified"));
    QCOMPARE(pinContainers().size(), std::size_t(3));
}

void TestCardTables::titleAndDigitsFollowTheName_data()
{
    QTest::addColumn<QString>("conteiner");
    QTest::addColumn<QString>("title");
    QTest::addColumn<int>("digits");
    QTest::newRow("auth") << "Authentication"
                          << "Certyfikat do identyfikacji i uwierzytelniania" << 4;
    QTest::newRow("author") << "Authorization"
                            << "Certyfikat do podpisu osobistego" << 6;
    QTest::newRow("pres") << "Presence"
                          << "Certyfikat do potwierdzania obecności" << 0;
    QTest::newRow("qual") << "Qualified"
                          << "Certyfikat kwalifikowany" << 8;
    QTest::newRow("no container") << "eMRTD"
                                  << "" << 0;
}

void TestCardTables::titleAndDigitsFollowTheName()
{
    QFETCH(QString, conteiner);

    QTEST(containerTitle(conteiner), "title");
    QTEST(pinDigits(conteiner), "digits");
}

void TestCardTables::pukHasEightDigits()
{
    QCOMPARE(QString(pukPattern), QString("\\d{8}"));
}

void TestCardTables::chipsStandInTheirOrder_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("name");
    QTest::addColumn<uint>("slotFlag");
    QTest::addColumn<uint>("chipBit");
    QTest::addColumn<uint>("chipType");
    QTest::newRow("1.0") << 0 << "VELMOR_1_0" << 0x2000u << 2u << 2u;
    QTest::newRow("2.0") << 1 << "VELMOR_2_0" << 0x40000u << 64u << 4u;
    QTest::newRow("2.1") << 2 << "VELMOR_2_1" << 0x80000u << 128u << 16u;
    QTest::newRow("2.2 test") << 3 << "VELMOR_2_2_TEST" << 0x100000u << 256u << 8u;
    QTest::newRow("2.2") << 4 << "VELMOR_2_2" << 0x200000u << 512u << 8u;
}

void TestCardTables::chipsStandInTheirOrder()
{
    QFETCH(int, row);

    QCOMPARE(cardChips().size(), std::size_t(5));
    const CardChip chip = cardChips().at(row);

    QTEST(QString::fromStdString(chip.name), "name");
    QTEST(chip.slotFlag, "slotFlag");
    QTEST(chip.chipBit, "chipBit");
    QTEST(chip.chipType, "chipType");
}

void TestCardTables::everyChipCarriesTheSameRemainder()
{
    for (const CardChip &chip : cardChips()) {
        QCOMPARE(chip.aidLabel, std::string("AID.20_"));
        QCOMPARE(chip.flag1, true);
        QCOMPARE(chip.flag2, false);
        QCOMPARE(chip.flag3, true);
        QCOMPARE(chip.number1, -1);
        QCOMPARE(chip.number2, -1);
        QCOMPARE(chip.number3, -1);
        QCOMPARE(chip.qualifiedLabel, std::string("Qualified"));
        QVERIFY(!chip.atr.empty());
        QCOMPARE(chip.atrMask, std::vector<quint8>(chip.atr.size(), 0xFF));
    }
}

void TestCardTables::atrTellsTheNameOfItsChip_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("checkByte");
    // The exclusive or of all bytes before it but the first.
    QTest::newRow("1.0") << 0 << QByteArray("VELMOR_1_0") << QByteArray("85");
    QTest::newRow("2.0") << 1 << QByteArray("VELMOR_2_0") << QByteArray("86");
    QTest::newRow("2.1") << 2 << QByteArray("VELMOR_2_1") << QByteArray("87");
    QTest::newRow("2.2 test") << 3 << QByteArray("VELMOR_2_2_TEST") << QByteArray("c8");
    QTest::newRow("2.2") << 4 << QByteArray("VELMOR_2_2") << QByteArray("84");
}

void TestCardTables::atrTellsTheNameOfItsChip()
{
    QFETCH(int, row);
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, checkByte);

    const std::vector<quint8> atr = cardChips().at(row).atr;

    // Direct convention, as many historical bytes as the name is long, protocol T=1.
    const QByteArray length = QByteArray::number(name.size(), 16);
    const QByteArray expected = "3b8" + length + "01" + name.toHex() + checkByte;
    QCOMPARE(QByteArray(reinterpret_cast<const char *>(atr.data()), int(atr.size())).toHex(), expected);
}

void TestCardTables::everyChipHasTheSameFourContainers_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("id");
    QTest::addColumn<QString>("label");
    QTest::addColumn<int>("ordinal");
    QTest::addColumn<QString>("prompt");
    QTest::newRow("auth") << 0 << 1 << "Authentication" << 0
                          << "pl,Podaj PIN (4-cyfrowy) do identyfikacji i uwierzytelnienia;pl-PL,Podaj PIN "
                             "(4-cyfrowy) do identyfikacji i uwierzytelnienia";
    QTest::newRow("pres") << 1 << 2 << "Presence" << 7 << "";
    QTest::newRow("author")
        << 2 << 3 << "Authorization" << 1
        << "pl,Podaj PIN (6-cyfrowy) do podpisu osobistego;pl-PL,Podaj PIN (6-cyfrowy) do podpisu osobistego";
    QTest::newRow("qual") << 3 << 4 << "Qualified" << 3
                          << "pl,Podaj PIN (8-cyfrowy) do podpisu kwalifikowanego;pl-PL,Podaj PIN (8-cyfrowy) do "
                             "podpisu kwalifikowanego";
}

void TestCardTables::everyChipHasTheSameFourContainers()
{
    QFETCH(int, row);
    QFETCH(QString, prompt);

    for (const CardChip &chip : cardChips()) {
        QCOMPARE(chip.containers.size(), std::size_t(4));
        const ChipContainer &container = chip.containers.at(row);
        QTEST(container.id, "id");
        QTEST(QString::fromStdString(container.label), "label");
        QTEST(container.containerOrdinal, "ordinal");
        QCOMPARE(QString::fromStdString(container.pinPrompt), prompt);
        QVERIFY(container.unused.empty());
    }
}

void TestCardTables::tableIsHandedOutAsACopy()
{
    std::vector<CardChip> copy = cardChips();
    copy.clear();

    QCOMPARE(cardChips().size(), std::size_t(5));
}

void TestCardTables::chipTypeFollowsFlags_data()
{
    QTest::addColumn<quint64>("flags");
    QTest::addColumn<int>("type");
    const quint64 marker = 0x88000000u;
    QTest::newRow("1.0") << (marker | 0x2000) << 2;
    QTest::newRow("2.0") << (marker | 0x40000) << 4;
    QTest::newRow("2.1") << (marker | 0x80000) << 16;
    QTest::newRow("2.2 test") << (marker | 0x100000) << 8;
    QTest::newRow("2.2") << (marker | 0x200000) << 8;
    QTest::newRow("among other bits") << (marker | 0x80000 | 0x207) << 16;
    QTest::newRow("no marker") << quint64(0x2000) << 0;
    QTest::newRow("upper marker bit only") << quint64(0x80002000u) << 0;
    QTest::newRow("lower marker bit only") << quint64(0x08002000u) << 0;
    QTest::newRow("marker only") << marker << 0;
    QTest::newRow("nothing") << quint64(0) << 0;
}

void TestCardTables::chipTypeFollowsFlags()
{
    QFETCH(quint64, flags);
    QFETCH(int, type);
    LogCatcher log;

    QCOMPARE(Reader::cardChipType(static_cast<unsigned long>(flags)), type);
    QVERIFY(log.has(QString("CHIP TYPE= %1").arg(type)));
}

void TestCardTables::firstChipOfSeveralDecides()
{
    // VELMOR_2_0 stands before VELMOR_2_1, though 16 is the larger type.
    QCOMPARE(Reader::cardChipType(0x88000000u | 0x40000 | 0x80000), 4);
    QCOMPARE(Reader::cardChipType(0x88000000u | 0x80000 | 0x200000), 16);
}

void TestCardTables::readerNameEndsAtTheFirstMark_data()
{
    QTest::addColumn<QString>("slot");
    QTest::addColumn<QString>("reader");
    QTest::newRow("with a suffix") << "Reader A #2"
                                   << "Reader A";
    QTest::newRow("two marks") << "Reader A #2 #3"
                               << "Reader A";
    QTest::newRow("no mark") << "Reader A"
                             << "Reader A";
    QTest::newRow("hash without blank") << "Reader#1"
                                        << "Reader#1";
    QTest::newRow("nothing but a mark") << " #1"
                                        << "";
    QTest::newRow("empty") << ""
                           << "";
}

void TestCardTables::readerNameEndsAtTheFirstMark()
{
    QFETCH(QString, slot);

    QTEST(Common::readerName(slot), "reader");
}

void TestCardTables::pinBufferIsWipedWhenItGoes()
{
    // A PIN of this length lies inside the object itself, so the place stays ours after the buffer has gone.
    alignas(PinBuffer) unsigned char place[sizeof(PinBuffer)] = {};
    const QByteArray pin = "90817263";
    auto *buffer = new (place) PinBuffer(QString::fromLatin1(pin));
    const auto bytes = [&place] { return QByteArray(reinterpret_cast<const char *>(place), sizeof place); };
    QCOMPARE(QByteArray(reinterpret_cast<const char *>(buffer->data()), int(buffer->size())), pin);
    QVERIFY(bytes().contains(pin));

    buffer->~PinBuffer();

    QVERIFY(!bytes().contains(pin));
    QVERIFY(!bytes().contains(pin.mid(1, 4)));
}

void TestCardTables::emptyPinIsNotNull()
{
    PinBuffer buffer { QString() };

    QVERIFY(buffer.data());
    QCOMPARE(buffer.size(), 0ul);
}

VELMOR_TEST(TestCardTables)
#include "tst_card_tables.moc"
