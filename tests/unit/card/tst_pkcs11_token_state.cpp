// What is asked of a card without reading it: PIN state, pinpad, chip.
#include "support/scripted_pkcs11/pkcs11_world.h"

class TestPkcs11TokenState : public QObject, private Pkcs11World {
    Q_OBJECT

private slots:
    void init()
    {
        startUp();
        card->addReader(reader);
    }
    void cleanup() { tearDown(); }

    void tokenInfoReadsTheFlagsAnew();
    void tokenInfoFollowsTheTables_data();
    void tokenInfoFollowsTheTables();
    void failedTokenInfoReadsAsNoFlags();
    void tokenInfoWithoutTokenIsEmpty();
    void tokenInfoLogsItsLine();

    void pinPadFollowsItsBit_data();
    void pinPadFollowsItsBit();
    void pinPadIsAskedAnew();
    void pinPadWithoutCard();
    void pinPadOfSlotZero();
    void pinPadWithANegativeSlot();
    void pinPadOfAnUnreadableSlot();
    void pinPadTakesAnyToken();

    void chipIsThatOfTheSlot_data();
    void chipIsThatOfTheSlot();
    void firstSlotOfTheReaderDecides();
    void chipOfAnUnknownReader();
    void chipIsFoundByPartOfTheName();
    void chipAsksNothing();
};

void TestPkcs11TokenState::tokenInfoReadsTheFlagsAnew()
{
    listAndSelect();
    card->slotOf(4)->tokenFlags |= CKF_USER_PIN_LOCKED;

    const auto info = pkcs11->tokenInfo(reader, "Qualified");

    QCOMPARE(card->calls(), QStringList { "C_GetTokenInfo 4" });
    QCOMPARE(info.value("status").toString(), QString("Odblokuj PIN"));
}

void TestPkcs11TokenState::tokenInfoFollowsTheTables_data()
{
    QTest::addColumn<uint>("flags");
    QTest::addColumn<int>("tries");
    QTest::addColumn<int>("triesSO");
    QTest::addColumn<QString>("status");
    QTest::newRow("no flag") << 0u << 4 << 3 << "Nadaj PIN";
    QTest::newRow("all good") << 0x8u << 3 << 3 << "Zmień PIN";
    QTest::newRow("PIN low, PUK final") << 0x210008u << 2 << 1 << "Zmień PIN";
    QTest::newRow("PIN final and low") << 0x30008u << 1 << 3 << "Zmień PIN";
    QTest::newRow("PIN locked, PUK low") << 0x140008u << 0 << 2 << "Odblokuj PIN";
    QTest::newRow("first use, even if locked") << 0xC0008u << 4 << 3 << "Nadaj PIN";
    QTest::newRow("locked, not initialized") << 0x40000u << 4 << 3 << "Nadaj PIN";
    QTest::newRow("PUK locked") << 0x400008u << 3 << 0 << "Zmień PIN";
    QTest::newRow("PUK to be changed") << 0xC00008u << 3 << 4 << "Zmień PIN";
}

void TestPkcs11TokenState::tokenInfoFollowsTheTables()
{
    QFETCH(uint, flags);
    listAndSelect();
    card->slotOf(1)->tokenFlags = flags;

    const auto info = pkcs11->tokenInfo(reader, "Authentication");

    QCOMPARE(info.keys(), (QStringList { "status", "tries", "triesSO" }));
    QTEST(info.value("tries").toInt(), "tries");
    QTEST(info.value("triesSO").toInt(), "triesSO");
    QTEST(info.value("status").toString(), "status");
    QCOMPARE(info.value("tries").type(), QVariant::Int);
    QCOMPARE(info.value("triesSO").type(), QVariant::Int);
}

void TestPkcs11TokenState::failedTokenInfoReadsAsNoFlags()
{
    card->slotOf(4)->tokenFlags |= CKF_USER_PIN_LOCKED;
    listAndSelect();
    // The structure is filled all the same, which must not count.
    card->slotOf(4)->tokenInfo = CKR_DEVICE_ERROR;

    const auto info = pkcs11->tokenInfo(reader, "Qualified");

    QCOMPARE(info.value("tries").toInt(), 4);
    QCOMPARE(info.value("triesSO").toInt(), 3);
    QCOMPARE(info.value("status").toString(), QString("Nadaj PIN"));
    // Stored as well: without any flag the PIN counts as not initialised, and the officer's path is taken.
    card->clearCalls();
    pkcs11->unblockPIN(reader, "Qualified", "12345678", "87654321");
    QCOMPARE(card->functions(), (QStringList { "C_OpenSession", "C_Login", "C_InitPIN", "C_Logout" }));
}

void TestPkcs11TokenState::tokenInfoWithoutTokenIsEmpty()
{
    listAndSelect();

    QVERIFY(pkcs11->tokenInfo("Reader C", "Qualified").isEmpty());
    QVERIFY(pkcs11->tokenInfo(reader, "Unknown").isEmpty());

    QVERIFY(card->calls().isEmpty());
    QVERIFY(log->has("TokenInfo, token  Unknown  not found"));
}

void TestPkcs11TokenState::tokenInfoLogsItsLine()
{
    listAndSelect();

    pkcs11->tokenInfo(reader, "Authorization");

    QVERIFY(log->has("Token: Authorization Zmień PIN  tries: 3  triesSO: 3"));
}

void TestPkcs11TokenState::pinPadFollowsItsBit_data()
{
    QTest::addColumn<uint>("flags");
    QTest::addColumn<int>("answer");
    QTest::newRow("pinpad") << 0x201u << 1;
    QTest::newRow("none") << 0x1u << 0;
    QTest::newRow("all other bits") << ~0x200u << 0;
}

void TestPkcs11TokenState::pinPadFollowsItsBit()
{
    QFETCH(uint, flags);
    for (ScriptedSlot &slot : card->card)
        slot.flags = flags;
    // This bit of the token says the same by the standard, and is not looked at.
    card->slotOf(1)->tokenFlags |= CKF_PROTECTED_AUTHENTICATION_PATH;
    listAndSelect();

    QTEST(pkcs11->isPinPad(reader), "answer");
}

void TestPkcs11TokenState::pinPadIsAskedAnew()
{
    listAndSelect();
    card->slotOf(1)->flags = 0x201;

    QCOMPARE(pkcs11->isPinPad(reader), 1);

    QCOMPARE(card->calls(), QStringList { "C_GetSlotInfo 1" });
}

void TestPkcs11TokenState::pinPadWithoutCard()
{
    listAndSelect();

    QCOMPARE(pkcs11->isPinPad("Reader C"), -3);

    QVERIFY(log->has("Pkcs11 err:  isPinPad1: Brak karty!"));
    QVERIFY(card->calls().isEmpty());
}

void TestPkcs11TokenState::pinPadOfSlotZero()
{
    card->card.resize(1);
    card->card[0].id = 0;
    card->card[0].flags = 0x201;
    listAndSelect();

    QCOMPARE(pkcs11->isPinPad(reader), 1);

    QCOMPARE(card->calls(), QStringList { "C_GetSlotInfo 0" });
}

void TestPkcs11TokenState::pinPadWithANegativeSlot()
{
    card->card.resize(1);
    card->card[0].id = 0x80000001u;
    listAndSelect();

    QCOMPARE(pkcs11->isPinPad(reader), -3);

    QVERIFY(card->calls().isEmpty());
}

void TestPkcs11TokenState::pinPadOfAnUnreadableSlot()
{
    listAndSelect();
    card->fail("C_GetSlotInfo", CKR_DEVICE_REMOVED);

    QCOMPARE(pkcs11->isPinPad(reader), -1);

    QVERIFY(log->has("Pkcs11 err:  isPinPad2: Brak karty!"));
}

void TestPkcs11TokenState::pinPadTakesAnyToken()
{
    for (ScriptedSlot &slot : card->card)
        slot.tokenInfo = CKR_TOKEN_NOT_PRESENT;
    listAndSelect();
    pkcs11->detectTokens();
    QCOMPARE(pkcs11->isPinPad(reader), -3); // no token proves the reader, so the selection failed

    for (ScriptedSlot &slot : card->card)
        slot.tokenInfo = CKR_OK;
    card->slotOf(1)->tokenInfo = CKR_TOKEN_NOT_PRESENT;
    pkcs11->selectReader(reader);
    card->clearCalls();
    QCOMPARE(pkcs11->isPinPad(reader), 0);
    QCOMPARE(card->calls(), QStringList { "C_GetSlotInfo 1" });
}

void TestPkcs11TokenState::chipIsThatOfTheSlot_data()
{
    QTest::addColumn<uint>("flags");
    QTest::addColumn<int>("type");
    QTest::newRow("VELMOR_1_0") << 0x88002001u << 2;
    QTest::newRow("VELMOR_2_0") << 0x88040001u << 4;
    QTest::newRow("VELMOR_2_1") << 0x88080001u << 16;
    QTest::newRow("VELMOR_2_2_TEST") << 0x88100001u << 8;
    QTest::newRow("VELMOR_2_2, pinpad") << 0x88200201u << 8;
    QTest::newRow("no chip bit") << 0x88000001u << 0;
    QTest::newRow("no marker") << 0x00200001u << 0;
}

void TestPkcs11TokenState::chipIsThatOfTheSlot()
{
    QFETCH(uint, flags);
    for (ScriptedSlot &slot : card->card)
        slot.flags = flags;
    listAndSelect();

    QTEST(pkcs11->typeOfChip(reader), "type");
}

void TestPkcs11TokenState::firstSlotOfTheReaderDecides()
{
    card->slotOf(2)->flags = 0x88200001u;
    listAndSelect();

    QCOMPARE(pkcs11->typeOfChip(reader), 0);

    QVERIFY(log->has("CHIP TYPE= 0"));
    QVERIFY(!log->has("Can not recognize chip type"));
}

void TestPkcs11TokenState::chipOfAnUnknownReader()
{
    listAndSelect();

    QCOMPARE(pkcs11->typeOfChip("Reader C"), 0);

    QVERIFY(log->has("Can not recognize chip type"));
    QVERIFY(!log->has("CHIP TYPE="));
}

void TestPkcs11TokenState::chipIsFoundByPartOfTheName()
{
    card->card.clear();
    card->addReader("Reader AB");
    card->slotOf(1)->flags = 0x88200001u;
    listAndSelect();

    QCOMPARE(pkcs11->typeOfChip("Reader A"), 8);
}

void TestPkcs11TokenState::chipAsksNothing()
{
    listAndSelect();

    pkcs11->typeOfChip(reader);

    QVERIFY(card->calls().isEmpty());
}

VELMOR_TEST(TestPkcs11TokenState)
#include "tst_pkcs11_token_state.moc"
