#include "devkit/sim_fixture.h"
#include "support/testmain.h"

// Slots and tokens of the simulated library: what is there, how it is called, which flags it has.
class TstSimSlots : public QObject {
    Q_OBJECT

private slots:
    void aCardHasFiveSlotsInItsReader();
    void anEmptyReaderHasOneSlotWithoutToken();
    void aCardOfAnotherKindIsPresentButNotRecognised();
    void slotsFollowTheOrderOfReaders();
    void slotIdsStayWhenAnotherReaderGoes();
    void textsAreFilledWithBlanks();
    void chipIsToldBySlotFlags_data();
    void chipIsToldBySlotFlags();
    void slotFlagsOfTheReader_data();
    void slotFlagsOfTheReader();
    void tokenFlagsPerState_data();
    void tokenFlagsPerState();
    void pukCounterShowsOnQualifiedOnly();
    void tokensWithoutPinAskForNone();
    void pinpadGivesProtectedPath();
    void flagsCanBeForced();
    void labelCanBeReplaced();
    void cardWaitingForItsCanCannotBeOpened();
    void unknownSlotIsRefused();
    void shortListIsRefusedWithTheCount();
    void onlySlotsWithACardAreListedOnDemand();

private:
    SimFixture sim;
};

void TstSimSlots::aCardHasFiveSlotsInItsReader()
{
    sim.start("anna");

    const auto ids = sim.slotIds();

    const char *const labels[] = { "Authentication", "Presence", "Authorization", "Qualified", "eMRTD" };
    QCOMPARE(ids.size(), std::size_t(5));
    for (int at = 0; at < 5; ++at) {
        QVERIFY(ids[at] > 0);
        QCOMPARE(sim.text(sim.slotInfo(ids[at]).slotDescription).trimmed(),
                 QByteArray("R #") + QByteArray::number(at + 1));
        QCOMPARE(sim.text(sim.tokenInfo(ids[at]).label).trimmed(), QByteArray(labels[at]));
    }
}

void TstSimSlots::anEmptyReaderHasOneSlotWithoutToken()
{
    sim.start("anna");
    sim.world.removeCard("R");

    const auto ids = sim.slotIds();

    CK_TOKEN_INFO token = {};
    QCOMPARE(ids.size(), std::size_t(1));
    QCOMPARE(sim.text(sim.slotInfo(ids[0]).slotDescription).trimmed(), QByteArray("R"));
    QVERIFY(!(sim.slotInfo(ids[0]).flags & CKF_TOKEN_PRESENT));
    COMPARE_RV(sim.p11->C_GetTokenInfo(ids[0], &token), CKR_TOKEN_NOT_PRESENT);
}

void TstSimSlots::aCardOfAnotherKindIsPresentButNotRecognised()
{
    sim.start("foreign");

    const auto ids = sim.slotIds();

    CK_TOKEN_INFO token = {};
    QCOMPARE(ids.size(), std::size_t(1));
    QVERIFY(sim.slotInfo(ids[0]).flags & CKF_TOKEN_PRESENT);
    COMPARE_RV(sim.p11->C_GetTokenInfo(ids[0], &token), CKR_TOKEN_NOT_RECOGNIZED);
    QVERIFY(!sim.world.readers()[0].supported);
}

void TstSimSlots::slotsFollowTheOrderOfReaders()
{
    sim.start("anna");
    sim.world.addReader("A reader that sorts before R");

    const auto ids = sim.slotIds();

    QCOMPARE(ids.size(), std::size_t(6));
    QCOMPARE(sim.text(sim.slotInfo(ids[5]).slotDescription).trimmed(), QByteArray("A reader that sorts before R"));
}

void TstSimSlots::slotIdsStayWhenAnotherReaderGoes()
{
    sim.start("anna");
    sim.world.addReader("Q");
    sim.world.insertCard("Q", "jan");
    const auto before = sim.slotIds();

    sim.world.removeReader("R");

    QCOMPARE(sim.slotIds(), std::vector<CK_SLOT_ID>(before.begin() + 5, before.end()));
}

void TstSimSlots::textsAreFilledWithBlanks()
{
    sim.start("anna");
    sim.world.addReader("Żółty czytnik");

    const auto ids = sim.slotIds();

    QCOMPARE(sim.text(sim.slotInfo(ids[0]).slotDescription), QByteArray("R #1").leftJustified(64, ' '));
    QCOMPARE(sim.text(sim.tokenInfo(ids[4]).label), QByteArray("eMRTD").leftJustified(32, ' '));
    QCOMPARE(sim.text(sim.slotInfo(ids[5]).slotDescription), QByteArray("Żółty czytnik").leftJustified(64, ' '));
}

void TstSimSlots::chipIsToldBySlotFlags_data()
{
    QTest::addColumn<QByteArray>("card");
    QTest::addColumn<qulonglong>("chipBit");
    QTest::newRow("VELMOR_1_0") << QByteArray("halina") << 0x2000ULL;
    QTest::newRow("VELMOR_2_0") << QByteArray("ewa") << 0x40000ULL;
    QTest::newRow("VELMOR_2_1") << QByteArray("jan") << 0x80000ULL;
    QTest::newRow("VELMOR_2_2_TEST") << QByteArray("bartlomiej") << 0x100000ULL;
    QTest::newRow("VELMOR_2_2") << QByteArray("anna") << 0x200000ULL;
}

void TstSimSlots::chipIsToldBySlotFlags()
{
    QFETCH(QByteArray, card);
    QFETCH(qulonglong, chipBit);

    sim.start(card);

    const qulonglong allChips = 0x2000 | 0x40000 | 0x80000 | 0x100000 | 0x200000;
    for (const CK_SLOT_ID slot : sim.slotIds()) {
        QCOMPARE(qulonglong(sim.slotInfo(slot).flags) & allChips, chipBit);
        QCOMPARE(qulonglong(sim.slotInfo(slot).flags) & 0x88000000ULL, 0x88000000ULL);
    }
}

void TstSimSlots::slotFlagsOfTheReader_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<qulonglong>("bit");
    QTest::newRow("waits for the CAN") << "waitCan" << 0x80ULL;
    QTest::newRow("not read by the Monitor") << "unread" << 0x100ULL;
    QTest::newRow("pinpad") << "pinpad" << 0x200ULL;
}

void TstSimSlots::slotFlagsOfTheReader()
{
    QFETCH(QString, what);
    QFETCH(qulonglong, bit);
    sim.start("anna");
    const auto ids = sim.slotIds();
    const qulonglong before = sim.slotInfo(ids[0]).flags;

    const bool ok = what == "waitCan" ? sim.world.setWaitCan("R", true)
        : what == "unread"            ? sim.world.setNotReadByTheMonitor("R", true)
                                      : sim.world.setPinpad("R", true);

    QVERIFY(ok);
    QCOMPARE(before & 0x380ULL, 0ULL);
    for (const CK_SLOT_ID slot : ids)
        QCOMPARE(qulonglong(sim.slotInfo(slot).flags), before | bit);
}

void TstSimSlots::tokenFlagsPerState_data()
{
    QTest::addColumn<int>("tries");
    QTest::addColumn<int>("unset"); // 0 no, 1 first use, 2 not initialised
    QTest::addColumn<qulonglong>("flags");
    const qulonglong always = CKF_TOKEN_INITIALIZED | CKF_LOGIN_REQUIRED;
    QTest::newRow("three tries") << 3 << 0 << (always | 0x8);
    QTest::newRow("two tries") << 2 << 0 << (always | 0x8 | 0x10000);
    QTest::newRow("one try") << 1 << 0 << (always | 0x8 | 0x10000 | 0x20000);
    QTest::newRow("locked") << 0 << 0 << (always | 0x8 | 0x40000);
    QTest::newRow("first use") << 3 << 1 << (always | 0x8 | 0x80000);
    QTest::newRow("not initialised") << 3 << 2 << always;
}

void TstSimSlots::tokenFlagsPerState()
{
    QFETCH(int, tries);
    QFETCH(int, unset);
    QFETCH(qulonglong, flags);
    sim.start("anna");

    if (unset)
        sim.world.unsetPin("anna", sim::Qualified,
                           unset == 1 ? sim::SimWorld::Unset::FirstUse : sim::SimWorld::Unset::NotInitialized);
    else
        sim.world.setTries("anna", sim::Qualified, tries);

    QCOMPARE(qulonglong(sim.flagsOf("Qualified")), flags);
}

void TstSimSlots::pukCounterShowsOnQualifiedOnly()
{
    const struct {
        int tries;
        qulonglong flags;
    } rows[] = { { 3, 0 }, { 2, 0x100000 }, { 1, 0x300000 }, { 0, 0x400000 } };
    sim.start("anna");
    for (const auto &row : rows) {
        sim.world.setPukTries("anna", row.tries);

        QCOMPARE(qulonglong(sim.flagsOf("Qualified")) & 0xF00000ULL, row.flags);
        QCOMPARE(qulonglong(sim.flagsOf("Authentication")) & 0xF00000ULL, 0ULL);
    }
}

void TstSimSlots::tokensWithoutPinAskForNone()
{
    sim.start("anna");

    for (const char *label : { "Presence", "eMRTD" })
        QCOMPARE(qulonglong(sim.flagsOf(label)), qulonglong(CKF_TOKEN_INITIALIZED));
}

void TstSimSlots::pinpadGivesProtectedPath()
{
    sim.start("anna", true);

    QVERIFY(sim.flagsOf("Authentication") & CKF_PROTECTED_AUTHENTICATION_PATH);
    QVERIFY(!(sim.flagsOf("Presence") & CKF_PROTECTED_AUTHENTICATION_PATH));
}

void TstSimSlots::flagsCanBeForced()
{
    sim.start("anna");

    sim.world.setTokenFlags("anna", sim::Authentication, 0xC0000, 0x8);

    const qulonglong flags = sim.flagsOf("Authentication");
    QCOMPARE(flags & 0xC0008ULL, 0xC0000ULL);
}

void TstSimSlots::labelCanBeReplaced()
{
    sim.start("anna");

    sim.world.setLabel("anna", sim::Qualified, "velmor (Qualified) ąęśćżźółń of many words");

    // 32 bytes, cut between two characters.
    const QByteArray label = sim.text(sim.tokenInfo(sim.slotIds()[3]).label);
    QCOMPARE(QString::fromUtf8(label).trimmed(), QString("velmor (Qualified) ąęśćżź"));
}

void TstSimSlots::cardWaitingForItsCanCannotBeOpened()
{
    sim.start("anna");

    sim.world.setWaitCan("R", true);

    QVERIFY(sim.flagsOf("Authentication") & 0x80);
    sim.open("Authentication");
    COMPARE_RV(sim.openResult, CKR_TOKEN_NOT_RECOGNIZED);
}

void TstSimSlots::unknownSlotIsRefused()
{
    sim.start("anna");
    CK_SLOT_INFO slot = {};
    CK_TOKEN_INFO token = {};
    CK_SESSION_HANDLE session = 0;

    COMPARE_RV(sim.p11->C_GetSlotInfo(99, &slot), CKR_SLOT_ID_INVALID);
    COMPARE_RV(sim.p11->C_GetTokenInfo(0, &token), CKR_SLOT_ID_INVALID);
    COMPARE_RV(sim.p11->C_OpenSession(6, 6, nullptr, nullptr, &session), CKR_SLOT_ID_INVALID);
}

void TstSimSlots::shortListIsRefusedWithTheCount()
{
    sim.start("anna");
    CK_SLOT_ID list[4] = { 77, 77, 77, 77 };
    CK_ULONG count = 4;

    COMPARE_RV(sim.p11->C_GetSlotList(CK_FALSE, list, &count), CKR_BUFFER_TOO_SMALL);

    QCOMPARE(count, CK_ULONG(5));
    QCOMPARE(list[0], CK_SLOT_ID(77));
}

void TstSimSlots::onlySlotsWithACardAreListedOnDemand()
{
    sim.start("anna");
    sim.world.addReader("empty");

    QCOMPARE(sim.slotIds(false).size(), std::size_t(6));
    QCOMPARE(sim.slotIds(true).size(), std::size_t(5));
}

VELMOR_TEST(TstSimSlots)
#include "tst_sim_slots.moc"
