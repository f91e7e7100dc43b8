// The tables of the card: containers, PIN lengths, chips, and the flag words they are looked up by.
#include "base/common.h"
#include "card/card_tables.h"
#include "card/pin_buffer.h"
#include "card/reader.h"
#include "card/token.h"
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
    void pukHasEightDigits();
    void chipsStandInTheirOrder_data();
    void chipsStandInTheirOrder();
    void everyChipCarriesTheSameRemainder();
    void everyChipHasTheSameFourContainers_data();
    void everyChipHasTheSameFourContainers();
    void tableIsHandedOutAsACopy();
    void chipTypeFollowsFlags_data();
    void chipTypeFollowsFlags();
    void firstChipOfSeveralDecides();
    void slotWordsAscendByKey();
    void tokenWords_data();
    void tokenWords();
    void tokenMapHasNineEntries();
    void pinStateFollowsFlags_data();
    void pinStateFollowsFlags();
    void pukTriesFollowFlags_data();
    void pukTriesFollowFlags();
    void tokenMatches_data();
    void tokenMatches();
    void readerNameEndsAtTheFirstMark_data();
    void readerNameEndsAtTheFirstMark();
    void onlyTrailingSpaceIsCut();
    void descriptionsPrintDecimalDigitsAfter0x();
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

void TestCardTables::slotWordsAscendByKey()
{
    QCOMPARE(slotStatusNames().keys(), (QList<quint32> { 0, 128, 256 }));
    QCOMPARE(slotStatusNames().values(), (QStringList { "present", "waitCan", "notReadByTheMonitor" }));
    QCOMPARE(statusWords(slotStatusNames(), 0x181), QString("waitCan notReadByTheMonitor"));
    QCOMPARE(statusWords(slotStatusNames(), 0x100), QString("notReadByTheMonitor"));
    QCOMPARE(statusWords(slotStatusNames(), 0xFFFFFFFF), QString("waitCan notReadByTheMonitor"));
    QCOMPARE(statusWords(slotStatusNames(), 0), QString());
}

void TestCardTables::tokenWords_data()
{
    QTest::addColumn<uint>("flag");
    QTest::addColumn<QString>("word");
    QTest::newRow("0x400") << 0x400u << "initialized";
    QTest::newRow("0x100000") << 0x100000u << "so_tries_low";
    QTest::newRow("0x200000") << 0x200000u << "so_final_try";
    QTest::newRow("0x400000") << 0x400000u << "so_pin_locked";
    QTest::newRow("0x800000") << 0x800000u << "so_to_be_changed";
    QTest::newRow("0x10000") << 0x10000u << "tries_low";
    QTest::newRow("0x20000") << 0x20000u << "final_try";
    QTest::newRow("0x40000") << 0x40000u << "pin_locked";
    QTest::newRow("0x80000") << 0x80000u << "to_be_changed";
}

void TestCardTables::tokenWords()
{
    QFETCH(uint, flag);

    QTEST(statusWords(tokenStatusNames(), flag), "word");
}

void TestCardTables::tokenMapHasNineEntries()
{
    QCOMPARE(tokenStatusNames().size(), 9);
    QCOMPARE(statusWords(tokenStatusNames(), 0xFFFFFFFF),
             QString("initialized tries_low final_try pin_locked to_be_changed so_tries_low so_final_try so_pin_locked "
                     "so_to_be_changed"));
}

void TestCardTables::pinStateFollowsFlags_data()
{
    QTest::addColumn<uint>("flags");
    QTest::addColumn<int>("tries");
    QTest::addColumn<QString>("status");
    const uint initialized = 0x8, toBeChanged = 0x80000, locked = 0x40000, finalTry = 0x20000, low = 0x10000;
    QTest::newRow("no flag") << 0u << 4 << "Nadaj PIN";
    QTest::newRow("initialized") << initialized << 3 << "Zmień PIN";
    QTest::newRow("low") << (initialized | low) << 2 << "Zmień PIN";
    QTest::newRow("final try") << (initialized | finalTry) << 1 << "Zmień PIN";
    QTest::newRow("final try and low") << (initialized | finalTry | low) << 1 << "Zmień PIN";
    QTest::newRow("locked") << (initialized | locked) << 0 << "Odblokuj PIN";
    QTest::newRow("locked, final try, low") << (initialized | locked | finalTry | low) << 0 << "Odblokuj PIN";
    QTest::newRow("to be changed") << (initialized | toBeChanged) << 4 << "Nadaj PIN";
    QTest::newRow("to be changed, locked") << (initialized | toBeChanged | locked) << 4 << "Nadaj PIN";
    QTest::newRow("locked, not initialized") << locked << 4 << "Nadaj PIN";
    QTest::newRow("low, not initialized") << low << 4 << "Nadaj PIN";
}

void TestCardTables::pinStateFollowsFlags()
{
    QFETCH(uint, flags);

    QTEST(pinState(flags).tries, "tries");
    QTEST(pinState(flags).status, "status");
}

void TestCardTables::pukTriesFollowFlags_data()
{
    QTest::addColumn<uint>("flags");
    QTest::addColumn<int>("tries");
    QTest::newRow("no flag") << 0u << 3;
    QTest::newRow("low") << 0x100000u << 2;
    QTest::newRow("final try") << 0x200000u << 1;
    QTest::newRow("final try and low") << 0x300000u << 1;
    QTest::newRow("locked") << 0x400000u << 0;
    QTest::newRow("locked, final try, low") << 0x700000u << 0;
    QTest::newRow("to be changed") << 0x800000u << 4;
    QTest::newRow("to be changed, locked, final try, low") << 0xF00000u << 4;
    QTest::newRow("only user bits") << 0xF0008u << 3;
}

void TestCardTables::pukTriesFollowFlags()
{
    QFETCH(uint, flags);

    QTEST(pinState(flags).triesSO, "tries");
}

void TestCardTables::tokenMatches_data()
{
    QTest::addColumn<QString>("tokenLabel");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("label");
    QTest::addColumn<int>("slotId");
    QTest::addColumn<int>("session");
    QTest::addColumn<uint>("slotFlags");
    QTest::addColumn<bool>("hit");
    const QString full = "Card Qualified 1";
    QTest::newRow("all conditions off") << full << "Reader A"
                                        << "_noset" << -1 << -1 << 0u << true;
    QTest::newRow("part of the label") << full << "Reader A"
                                       << "Qualified" << -1 << -1 << 0u << true;
    QTest::newRow("label in other case") << full << "Reader A"
                                         << "qualified" << -1 << -1 << 0u << false;
    QTest::newRow("more than the label") << "Qualified"
                                         << "Reader A" << full << -1 << -1 << 0u << false;
    QTest::newRow("empty label, labelled token") << full << "Reader A"
                                                 << "" << -1 << -1 << 0u << false;
    QTest::newRow("empty label, empty token") << ""
                                              << "Reader A"
                                              << "" << -1 << -1 << 0u << true;
    QTest::newRow("any label, empty token") << ""
                                            << "Reader A"
                                            << "_noset" << -1 << -1 << 0u << true;
    QTest::newRow("some label, empty token") << ""
                                             << "Reader A"
                                             << "Qualified" << -1 << -1 << 0u << false;
    QTest::newRow("name in other case") << full << "reader a"
                                        << "_noset" << -1 << -1 << 0u << false;
    QTest::newRow("part of the name") << full << "Reader"
                                      << "_noset" << -1 << -1 << 0u << false;
    QTest::newRow("longer name") << full << "Reader AB"
                                 << "_noset" << -1 << -1 << 0u << false;
    QTest::newRow("its slot") << full << "Reader A"
                              << "_noset" << 7 << -1 << 0u << true;
    QTest::newRow("another slot") << full << "Reader A"
                                  << "_noset" << 8 << -1 << 0u << false;
    QTest::newRow("its session") << full << "Reader A"
                                 << "_noset" << -1 << 3 << 0u << true;
    QTest::newRow("another session") << full << "Reader A"
                                     << "_noset" << -1 << 4 << 0u << false;
    QTest::newRow("one common flag") << full << "Reader A"
                                     << "_noset" << -1 << -1 << 0x201u << true;
    QTest::newRow("highest flag") << full << "Reader A"
                                  << "_noset" << -1 << -1 << 0x80000000u << true;
    QTest::newRow("no common flag") << full << "Reader A"
                                    << "_noset" << -1 << -1 << 0x200u << false;
}

void TestCardTables::tokenMatches()
{
    QFETCH(QString, tokenLabel);
    QFETCH(QString, name);
    QFETCH(QString, label);
    QFETCH(int, slotId);
    QFETCH(int, session);
    QFETCH(uint, slotFlags);
    Token token;
    token.name = "Reader A";
    token.label = tokenLabel;
    token.slotId = 7;
    token.session = 3;
    token.slotFlags = 0x80000001u;

    QTEST(matches(token, name, label, slotId, session, slotFlags), "hit");
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

void TestCardTables::onlyTrailingSpaceIsCut()
{
    QCOMPARE(cutTrailingSpace("  a b \t\r\n "), QString("  a b"));
    QCOMPARE(cutTrailingSpace("   "), QString());
    QCOMPARE(cutTrailingSpace(""), QString());
    QCOMPARE(cutTrailingSpace(QString("a ") + QChar(0)), QString("a ") + QChar(0));
}

void TestCardTables::descriptionsPrintDecimalDigitsAfter0x()
{
    Slot slot;
    slot.name = " Reader A #1 ";
    slot.id = 17;
    slot.flags = 0x81;
    Token token;
    token.slotId = 17;
    token.label = "Qualified";
    token.tokenFlags = 0x40400;

    QCOMPARE(describeSlot(slot, true, true), QString("Slot 0x17: Reader A #1 waitCan"));
    QCOMPARE(describeSlot(slot, false, false), QString("Slot 0x17"));
    QCOMPARE(describeSlot(slot, true, false), QString("Slot 0x17: Reader A #1"));
    QCOMPARE(describeSlot(slot, false, true), QString("Slot 0x17 waitCan"));
    QCOMPARE(describeToken(token, true, true), QString("Token 0x17: Qualified initialized pin_locked"));
    QCOMPARE(describeToken(token, false, false), QString("Token 0x17"));
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
