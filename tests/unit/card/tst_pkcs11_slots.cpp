// Slots and tokens: what is asked of the library, and which tokens are kept with their sessions.
#include "support/scripted_pkcs11/pkcs11_world.h"

class TestPkcs11Slots : public QObject, private Pkcs11World {
    Q_OBJECT

private slots:
    void init() { startUp(); }
    void cleanup() { tearDown(); }

    void slotListIsAskedTwiceThenEverySlot();
    void slotsAreLoggedWithBothOptions();
    void failedSlotListEndsDetection_data();
    void failedSlotListEndsDetection();
    void failedInitializeEndsDetection();
    void failedDetectionForgetsTheSlots();
    void listOfAbsurdLengthIsNotAskedFor_data();
    void listOfAbsurdLengthIsNotAskedFor();
    void slotThatCannotBeReadStandsWithoutNameAndFlags();

    void tokensAreReadOfTheSelectedReaderOnly();
    void unusableSlotsMakeNoToken_data();
    void unusableSlotsMakeNoToken();
    void absentOrUnknownTokenIsKeptWithoutLabel_data();
    void absentOrUnknownTokenIsKeptWithoutLabel();
    void otherTokenInfoFailureDropsTheSlot_data();
    void otherTokenInfoFailureDropsTheSlot();
    void failedTokenInfoRemovesAKnownTokenAndClosesItsSession();
    void knownTokensKeepTheirSessions();
    void knownTokensTakeTheNewFlags();
    void tokenWithAnotherLabelIsANewOne();
    void tokenOfAnotherSlotIsANewOne();
    void tokensAreLoggedWithBothOptions();
    void removedTokenWithoutSessionClosesNothing();
    void failedCloseSessionIsNotLoggedAsClosed();
    void tokensOfAnotherReaderVanish();
    void sessionsSurviveFinalizeInTheList();
    void labelIsSearchedAsAPart();
    void searchedNameIsCutAtItsEnd();
    void emptyNameFindsNothing();
};

void TestPkcs11Slots::slotListIsAskedTwiceThenEverySlot()
{
    card->card = { slot(4, "Reader A #1"), slot(2, "Reader A #2") };

    QVERIFY(pkcs11->detectSlots());

    QCOMPARE(card->calls(),
             (QStringList { "C_GetFunctionList", "C_Initialize", "C_GetSlotList all null", "C_GetSlotList all given",
                            "C_GetSlotInfo 4", "C_GetSlotInfo 2" }));
}

void TestPkcs11Slots::slotsAreLoggedWithBothOptions()
{
    card->card = { slot(17, "Reader A #1", 0x181) };

    pkcs11->detectSlots();

    QVERIFY(log->has("C_GetSLotList()"));
    QVERIFY(log->has("Found slots:  1"));
    QVERIFY(log->has("Slot 0x17: Reader A #1 waitCan notReadByTheMonitor"));
}

void TestPkcs11Slots::failedSlotListEndsDetection_data()
{
    QTest::addColumn<int>("nth");
    QTest::newRow("when asked for the count") << 1;
    QTest::newRow("when asked for the slots") << 2;
}

void TestPkcs11Slots::failedSlotListEndsDetection()
{
    QFETCH(int, nth);
    card->card = { slot(1, "Reader A #1") };
    card->fail("C_GetSlotList", CKR_DEVICE_ERROR, nth);

    QVERIFY(!pkcs11->detectSlots());

    QCOMPARE(card->count("C_GetSlotList"), nth);
    QCOMPARE(card->count("C_GetSlotInfo"), 0);
    QVERIFY(log->has("Błąd podczas pobierania listy slotów."));
}

void TestPkcs11Slots::failedInitializeEndsDetection()
{
    card->fail("C_Initialize", CKR_GENERAL_ERROR);

    QVERIFY(!pkcs11->detectSlots());

    QCOMPARE(card->calls(), (QStringList { "C_GetFunctionList", "C_Initialize" }));
}

void TestPkcs11Slots::failedDetectionForgetsTheSlots()
{
    card->card = { slot(1, "Reader A #1") };
    pkcs11->detectSlots();
    card->fail("C_GetSlotList", CKR_DEVICE_ERROR);
    pkcs11->detectSlots();
    card->clearCalls();

    pkcs11->detectTokens();

    QVERIFY(card->calls().isEmpty());
}

void TestPkcs11Slots::listOfAbsurdLengthIsNotAskedFor_data()
{
    QTest::addColumn<uint>("length");
    QTest::addColumn<bool>("asked");
    QTest::newRow("longest") << 0x10000u << true;
    QTest::newRow("one more") << 0x10001u << false;
}

void TestPkcs11Slots::listOfAbsurdLengthIsNotAskedFor()
{
    QFETCH(uint, length);
    QFETCH(bool, asked);
    // Only one is left when the list itself is given.
    card->onSlotList = [length](CK_SLOT_ID *ids, CK_ULONG *count) -> CK_RV {
        *count = ids ? 1 : length;
        return CKR_OK;
    };

    QCOMPARE(pkcs11->detectSlots(), asked);

    QCOMPARE(card->count("C_GetSlotList"), asked ? 2 : 1);
}

void TestPkcs11Slots::slotThatCannotBeReadStandsWithoutNameAndFlags()
{
    card->card = { slot(1, "Reader A #1", 0x101), slot(2, "Reader B #1") };
    card->card[0].slotInfo = CKR_DEVICE_ERROR;

    QVERIFY(pkcs11->detectSlots());
    pkcs11->detectTokens();

    // It still counts as a slot, and no reader is selected, so its token is asked for too.
    QVERIFY(log->lines().contains("Slot 0x1:  "));
    QCOMPARE(card->calls().mid(4),
             (QStringList { "C_GetSlotInfo 1", "C_GetSlotInfo 2", "C_GetTokenInfo 1", "C_GetTokenInfo 2" }));
}

void TestPkcs11Slots::tokensAreReadOfTheSelectedReaderOnly()
{
    card->card = { slot(1, "Reader A #1"), slot(2, "Reader B #1"), slot(3, "Reader A #2"), slot(4, "Reader AB #1") };
    pkcs11->detectSlots();
    card->clearCalls();

    pkcs11->selectReader("Reader A");

    // By part of the name, so the reader with the longer name is asked as well.
    QCOMPARE(card->calls(), (QStringList { "C_GetTokenInfo 1", "C_GetTokenInfo 3", "C_GetTokenInfo 4" }));
}

void TestPkcs11Slots::unusableSlotsMakeNoToken_data()
{
    QTest::addColumn<quint64>("id");
    QTest::addColumn<QByteArray>("description");
    QTest::newRow("no slot id") << quint64(0xFFFFFFFFu) << QByteArray("Reader A #1");
    QTest::newRow("hotplug") << quint64(1) << QByteArray("Reader A Virtual hotplug slot");
    QTest::newRow("another reader") << quint64(1) << QByteArray("Reader B #1");
}

void TestPkcs11Slots::unusableSlotsMakeNoToken()
{
    QFETCH(quint64, id);
    QFETCH(QByteArray, description);
    card->card = { slot(static_cast<CK_SLOT_ID>(id), description) };
    pkcs11->detectSlots();

    pkcs11->selectReader("Reader A");

    QCOMPARE(card->count("C_GetTokenInfo"), 0);
}

void TestPkcs11Slots::absentOrUnknownTokenIsKeptWithoutLabel_data()
{
    QTest::addColumn<uint>("rv");
    QTest::newRow("not present") << 0xE0u;
    QTest::newRow("not recognized") << 0xE1u;
}

void TestPkcs11Slots::absentOrUnknownTokenIsKeptWithoutLabel()
{
    QFETCH(uint, rv);
    card->card = { slot(1, "Reader A #1"), slot(2, "Reader A #2") };
    card->card[0].tokenInfo = rv;
    listAndSelect();

    // An empty label finds that token and no other; a label finds the other only; any label finds the first.
    pkcs11->tokenInfo("Reader A", "");
    pkcs11->tokenInfo("Reader A", "Qualified");
    QCOMPARE(card->calls(), (QStringList { "C_GetTokenInfo 1", "C_GetTokenInfo 2" }));
    card->clearCalls();
    pkcs11->isPinPad("Reader A");
    QCOMPARE(card->calls(), QStringList { "C_GetSlotInfo 1" });
}

void TestPkcs11Slots::otherTokenInfoFailureDropsTheSlot_data()
{
    QTest::addColumn<uint>("rv");
    QTest::newRow("device error") << 0x30u;
    QTest::newRow("device removed") << 0x32u;
    QTest::newRow("slot id invalid") << 3u;
    QTest::newRow("write protected, next to the two") << 0xE2u;
}

void TestPkcs11Slots::otherTokenInfoFailureDropsTheSlot()
{
    QFETCH(uint, rv);
    card->card = { slot(1, "Reader A #1") };
    card->card[0].tokenInfo = rv;
    listAndSelect();

    QCOMPARE(pkcs11->isPinPad("Reader A"), -3);

    QVERIFY(card->calls().isEmpty());
}

void TestPkcs11Slots::failedTokenInfoRemovesAKnownTokenAndClosesItsSession()
{
    card->card = { slot(1, "Reader A #1"), slot(2, "Reader A #2", 1, "velmor Presence") };
    listAndSelect();
    pkcs11->certsCount("Reader A", "Qualified");
    card->card[0].tokenInfo = CKR_DEVICE_ERROR;
    card->clearCalls();

    pkcs11->detectTokens();

    QCOMPARE(card->calls(), (QStringList { "C_GetTokenInfo 1", "C_GetTokenInfo 2", "C_CloseSession 1" }));
    QVERIFY(log->has("remove token  Token 0x1"));
    QVERIFY(log->has("closing session  Token 0x1"));
    QVERIFY(log->has("session closed"));
    QVERIFY(pkcs11->tokenInfo("Reader A", "Qualified").isEmpty());
    QVERIFY(!pkcs11->tokenInfo("Reader A", "Presence").isEmpty());
}

void TestPkcs11Slots::knownTokensKeepTheirSessions()
{
    // Also that of a slot without any flag.
    card->card = { slot(1, "Reader A #1"), slot(2, "Reader A #2", 0, "velmor Presence") };
    listAndSelect();
    const auto count = [this] {
        pkcs11->certsCount("Reader A", "Qualified");
        pkcs11->certsCount("Reader A", "Presence");
    };
    count();
    QCOMPARE(card->count("C_OpenSession"), 2);

    pkcs11->detectSlots();
    pkcs11->detectTokens();
    count();

    QCOMPARE(card->count("C_OpenSession"), 2);
    QCOMPARE(card->count("C_CloseSession"), 0);
}

void TestPkcs11Slots::knownTokensTakeTheNewFlags()
{
    // Not locked at first: the card refuses to unblock. The flags that decide are those of the last detection.
    card->card = { slot(1, "Reader A #1") };
    listAndSelect();
    QCOMPARE(pkcs11->unblockPIN("Reader A", "Qualified", "87654321", "11111111"), -1);
    QCOMPARE(card->count("C_Login"), 0);
    card->card[0].tokenFlags |= CKF_USER_PIN_LOCKED;

    pkcs11->detectTokens();

    QCOMPARE(pkcs11->unblockPIN("Reader A", "Qualified", "87654321", "11111111"), 0);
    QCOMPARE(card->count("C_Login"), 1);
}

void TestPkcs11Slots::tokenWithAnotherLabelIsANewOne()
{
    card->card = { slot(1, "Reader A #1") };
    listAndSelect();
    pkcs11->certsCount("Reader A", "Qualified");
    card->card[0].label = "velmor Presence";
    card->clearCalls();

    pkcs11->detectTokens();

    QCOMPARE(card->calls(), (QStringList { "C_GetTokenInfo 1", "C_CloseSession 1" }));
}

void TestPkcs11Slots::tokenOfAnotherSlotIsANewOne()
{
    card->card = { slot(1, "Reader A #1") };
    listAndSelect();
    pkcs11->certsCount("Reader A", "Qualified");
    card->card[0].id = 2;
    pkcs11->detectSlots();
    card->clearCalls();

    pkcs11->detectTokens();

    QCOMPARE(card->calls(), (QStringList { "C_GetTokenInfo 2", "C_CloseSession 1" }));
}

void TestPkcs11Slots::tokensAreLoggedWithBothOptions()
{
    card->card = { slot(17, "Reader A #1") };

    pkcs11->detectSlots();
    pkcs11->detectTokens();

    QVERIFY(log->lines().contains("Token 0x17: velmor Qualified initialized"));
}

void TestPkcs11Slots::removedTokenWithoutSessionClosesNothing()
{
    card->card = { slot(1, "Reader A #1") };
    listAndSelect();
    card->card.clear();
    pkcs11->detectSlots();
    card->clearCalls();

    pkcs11->detectTokens();

    QVERIFY(card->calls().isEmpty());
    QVERIFY(log->has("remove token  Token 0x1"));
    QVERIFY(log->has("sessionClose abort  Token 0x1"));
}

void TestPkcs11Slots::failedCloseSessionIsNotLoggedAsClosed()
{
    card->card = { slot(1, "Reader A #1") };
    listAndSelect();
    pkcs11->certsCount("Reader A", "Qualified");
    card->card[0].tokenInfo = CKR_DEVICE_ERROR;
    card->fail("C_CloseSession", CKR_DEVICE_REMOVED);

    pkcs11->detectTokens();

    QCOMPARE(card->count("C_CloseSession"), 1);
    QVERIFY(log->has("closing session  Token 0x1"));
    QVERIFY(!log->has("session closed"));
    QVERIFY(pkcs11->tokenInfo("Reader A", "Qualified").isEmpty());
}

void TestPkcs11Slots::tokensOfAnotherReaderVanish()
{
    card->addReader("Reader A", 1);
    card->addReader("Reader B", 9);
    listAndSelect("Reader A");
    pkcs11->certsCount("Reader A", "Qualified");
    card->clearCalls();

    QVERIFY(pkcs11->selectReader("Reader B"));

    QCOMPARE(card->count("C_CloseSession"), 1);
    QCOMPARE(log->count("remove token "), 5);
    QCOMPARE(pkcs11->isPinPad("Reader A"), -3);
    QCOMPARE(pkcs11->isPinPad("Reader B"), 0);
}

void TestPkcs11Slots::sessionsSurviveFinalizeInTheList()
{
    card->card = { slot(1, "Reader A #1") };
    listAndSelect();
    pkcs11->certsCount("Reader A", "Qualified");
    pkcs11->finalize();
    pkcs11->initialize();
    pkcs11->detectSlots();
    pkcs11->detectTokens();
    card->clearCalls();

    // A PIN operation takes the dead handle as it stands.
    QCOMPARE(pkcs11->login("Reader A", "Qualified", "12345678", 1), -1);

    QCOMPARE(card->calls(), QStringList { "C_Login 1 user=1 pin=8" });
}

void TestPkcs11Slots::labelIsSearchedAsAPart()
{
    card->card = { slot(3, "Reader A #1", 1, "old Qualified 2.2") };
    listAndSelect();

    QVERIFY(!pkcs11->tokenInfo("Reader A", "Qualified").isEmpty());
    QVERIFY(pkcs11->tokenInfo("Reader A", "qualified").isEmpty());
    QVERIFY(pkcs11->tokenInfo("Reader A", "Qualified 2.2 new").isEmpty());
    QVERIFY(pkcs11->tokenInfo("Reader A", "").isEmpty());
}

void TestPkcs11Slots::searchedNameIsCutAtItsEnd()
{
    card->card = { slot(1, "Reader A #1") };
    listAndSelect();

    QVERIFY(!pkcs11->tokenInfo("Reader A \t", "Qualified").isEmpty());
    QVERIFY(pkcs11->tokenInfo(" Reader A", "Qualified").isEmpty());
    QVERIFY(pkcs11->tokenInfo("reader a", "Qualified").isEmpty());
}

void TestPkcs11Slots::emptyNameFindsNothing()
{
    card->card = { slot(1, "") };
    card->card[0].slotInfo = CKR_DEVICE_ERROR;
    pkcs11->detectSlots();
    pkcs11->detectTokens();

    QVERIFY(pkcs11->tokenInfo("", "Qualified").isEmpty());
    QVERIFY(pkcs11->tokenInfo("  ", "Qualified").isEmpty());
}

VELMOR_TEST(TestPkcs11Slots)
#include "tst_pkcs11_slots.moc"
