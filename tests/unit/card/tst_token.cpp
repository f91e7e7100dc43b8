#include "card/token.h"
#include "support/testmain.h"

// Slots and tokens: which are asked for, and what their flag words are told as.
class TstToken : public QObject {
    Q_OBJECT

private slots:
    void onlyTrailingSpaceIsCut();
    void tokenMatches_data();
    void tokenMatches();
    void slotWordsAscendByKey();
    void tokenWords_data();
    void tokenWords();
    void tokenMapHasNineEntries();
    void descriptionsPrintDecimalDigitsAfter0x();
    void pinStateFollowsFlags_data();
    void pinStateFollowsFlags();
    void pukTriesFollowFlags_data();
    void pukTriesFollowFlags();
};

void TstToken::onlyTrailingSpaceIsCut()
{
    QCOMPARE(cutTrailingSpace("  a b \t\r\n "), QString("  a b"));
    QCOMPARE(cutTrailingSpace("   "), QString());
    QCOMPARE(cutTrailingSpace(""), QString());
    QCOMPARE(cutTrailingSpace(QString("a ") + QChar(0)), QString("a ") + QChar(0));
}

void TstToken::tokenMatches_data()
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

void TstToken::tokenMatches()
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

void TstToken::slotWordsAscendByKey()
{
    QCOMPARE(slotStatusNames().keys(), (QList<quint32> { 0, 128, 256 }));
    QCOMPARE(slotStatusNames().values(), (QStringList { "present", "waitCan", "notReadByTheMonitor" }));
    QCOMPARE(statusWords(slotStatusNames(), 0x181), QString("waitCan notReadByTheMonitor"));
    QCOMPARE(statusWords(slotStatusNames(), 0x100), QString("notReadByTheMonitor"));
    QCOMPARE(statusWords(slotStatusNames(), 0xFFFFFFFF), QString("waitCan notReadByTheMonitor"));
    QCOMPARE(statusWords(slotStatusNames(), 0), QString());
}

void TstToken::tokenWords_data()
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

void TstToken::tokenWords()
{
    QFETCH(uint, flag);

    QTEST(statusWords(tokenStatusNames(), flag), "word");
}

void TstToken::tokenMapHasNineEntries()
{
    QCOMPARE(tokenStatusNames().size(), 9);
    QCOMPARE(statusWords(tokenStatusNames(), 0xFFFFFFFF),
             QString("initialized tries_low final_try pin_locked to_be_changed so_tries_low so_final_try so_pin_locked "
                     "so_to_be_changed"));
}

void TstToken::descriptionsPrintDecimalDigitsAfter0x()
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

void TstToken::pinStateFollowsFlags_data()
{
    QTest::addColumn<uint>("flags");
    QTest::addColumn<int>("tries");
    QTest::addColumn<QString>("status");
    const uint initialized = 0x8, toBeChanged = 0x80000, locked = 0x40000, finalTry = 0x20000, low = 0x10000;
    QTest::newRow("no flag") << 0u << 4 << "Nadaj PIN";
    QTest::newRow("initialized") << initialized << 3 << "Zmień PIN";
    QTest::newRow("initialized, and all that says nothing of a PIN") << (0xFF00FFF7u | initialized) << 3 << "Zmień PIN";
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

void TstToken::pinStateFollowsFlags()
{
    QFETCH(uint, flags);

    QTEST(pinState(flags).tries, "tries");
    QTEST(pinState(flags).status, "status");
}

void TstToken::pukTriesFollowFlags_data()
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
    QTest::newRow("all that says nothing of the PUK") << 0xFF0FFFFFu << 3;
}

void TstToken::pukTriesFollowFlags()
{
    QFETCH(uint, flags);

    QTEST(pinState(flags).triesSO, "tries");
}

VELMOR_TEST(TstToken)
#include "tst_token.moc"
