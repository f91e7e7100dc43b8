#include <thread>

#include "devkit/sim_fixture.h"
#include "support/testmain.h"

// What happens at the keypad of a reader: an empty PIN makes the library ask there.
class TstSimPinpad : public QObject {
    Q_OBJECT

private slots:
    void changeIsAnsweredTwice();
    void unblockIsAnsweredTwice();
    void firstPinIsAnsweredOnce();
    void callWaitsForAnAnswer();
    void givenPinAsksNobody();
    void nullPinIsAllowedThere();
    void answers_data();
    void answers();
    void wrongPinOnThePadIsCounted();
    void differentRepetitionChangesNothing();
    void rejectedFirstPinLeavesTheContainerActivatedAndLocked_data();
    void rejectedFirstPinLeavesTheContainerActivatedAndLocked();
    void rejectedUnblockLeavesTheLock();
    void lockedPinIsRefusedBeforeAnyoneIsAsked();
    void removedCardEndsTheWait();
    void finalizeDuringTheWaitEndsTheCall();
    void waitingThreadCanBeEnded();

private:
    CK_RV answered(sim::PadAnswer::Kind kind, CK_SESSION_HANDLE session)
    {
        sim::PadAnswer answer;
        answer.kind = kind;
        answer.result = CKR_DEVICE_MEMORY;
        sim.world.pad(answer);
        return sim.login(session, CKU_USER, "");
    }

    SimFixture sim;
};

void TstSimPinpad::changeIsAnsweredTwice()
{
    sim.start("anna", true);
    const CK_SESSION_HANDLE session = sim.open("Authentication");
    sim.world.padChange("1234", "9876");

    COMPARE_RV(sim.login(session, CKU_USER, ""), CKR_OK);
    COMPARE_RV(sim.setPin(session, "", ""), CKR_OK);

    QVERIFY(sim.world.padAnswers().empty());
    QCOMPARE(sim.world.cardState("anna")->pins[sim::Authentication].pin, std::string("9876"));
    QCOMPARE(sim.traceTexts().last(), QString("C_SetPIN container=Authentication oldPin=empty newPin=empty -> 0x0"));
}

void TstSimPinpad::unblockIsAnsweredTwice()
{
    sim.start("locked-qualified", true);
    const CK_SESSION_HANDLE session = sim.open("Qualified");
    sim.world.padUnblock("87654321", "11112222");

    COMPARE_RV(sim.login(session, CKU_SO, ""), CKR_OK);
    COMPARE_RV(sim.initPin(session, ""), CKR_OK);

    sim.p11->C_Logout(session);
    COMPARE_RV(sim.login(session, CKU_USER, "11112222"), CKR_OK);
}

void TstSimPinpad::firstPinIsAnsweredOnce()
{
    sim.start("first-pin", true);
    const CK_SESSION_HANDLE session = sim.open("Qualified");
    sim.world.padFirstPin("87654321", "11112222");

    COMPARE_RV(sim.setPin(session, "", ""), CKR_OK);

    COMPARE_RV(sim.login(session, CKU_USER, "11112222"), CKR_OK);
}

void TstSimPinpad::callWaitsForAnAnswer()
{
    sim.start("anna", true);
    const CK_SESSION_HANDLE session = sim.open("Authentication");
    CK_RV result = 0x9999;
    std::thread thread([&] { result = sim.login(session, CKU_USER, ""); });
    QTRY_COMPARE(sim.world.waitingCalls(), 1);
    sim.world.release(); // is meant for blocked calls and changes nothing here
    QCOMPARE(sim.world.trace("C_Login").size(), std::size_t(0));
    CK_SLOT_INFO info = {};
    COMPARE_RV(sim.p11->C_GetSlotInfo(1, &info), CKR_OK); // others are not held up

    sim::PadAnswer answer;
    answer.secret = "1234";
    sim.world.pad(answer);

    thread.join();
    COMPARE_RV(result, CKR_OK);
    QCOMPARE(sim.world.waitingCalls(), 0);
}

void TstSimPinpad::givenPinAsksNobody()
{
    sim.start("anna", true);

    COMPARE_RV(sim.tryPin("Authentication", CKU_USER, "1234"), CKR_OK);
}

void TstSimPinpad::nullPinIsAllowedThere()
{
    sim.start("anna", true);
    const CK_SESSION_HANDLE session = sim.open("Authentication");
    sim.world.padChange("1234", "4321");

    COMPARE_RV(sim.p11->C_Login(session, CKU_USER, nullptr, 0), CKR_OK);
    COMPARE_RV(sim.p11->C_SetPIN(session, nullptr, 0, nullptr, 0), CKR_OK);
}

void TstSimPinpad::answers_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<qulonglong>("result");
    QTest::newRow("cancel") << int(sim::PadAnswer::Kind::Cancel) << 0x50ULL;
    QTest::newRow("mismatch") << int(sim::PadAnswer::Kind::Mismatch) << 7ULL;
    QTest::newRow("reject") << int(sim::PadAnswer::Kind::Reject) << 0x200ULL;
    QTest::newRow("result") << int(sim::PadAnswer::Kind::Result) << qulonglong(CKR_DEVICE_MEMORY);
}

void TstSimPinpad::answers()
{
    QFETCH(int, kind);
    QFETCH(qulonglong, result);
    sim.start("anna", true);
    const CK_SESSION_HANDLE session = sim.open("Authentication");

    COMPARE_RV(answered(sim::PadAnswer::Kind(kind), session), result);

    QCOMPARE(sim.world.cardState("anna")->pins[sim::Authentication].tries, 3);
    COMPARE_RV(sim.p11->C_Logout(session), CKR_USER_NOT_LOGGED_IN);
}

void TstSimPinpad::wrongPinOnThePadIsCounted()
{
    sim.start("anna", true);
    sim.world.padChange("9999", "4321");

    COMPARE_RV(sim.tryPin("Authentication", CKU_USER, ""), CKR_PIN_INCORRECT);

    QVERIFY(sim.flagsOf("Authentication") & CKF_USER_PIN_COUNT_LOW);
}

void TstSimPinpad::differentRepetitionChangesNothing()
{
    sim.start("anna", true);
    const CK_SESSION_HANDLE session = sim.open("Authentication");
    sim::PadAnswer answer;
    answer.secret = "1234";
    answer.newSecret = "4321";
    answer.repeat = "4322";
    sim.world.pad(answer);
    sim.login(session, CKU_USER, "1234");

    COMPARE_RV(sim.setPin(session, "", ""), CKR_ARGUMENTS_BAD);

    QCOMPARE(sim.world.cardState("anna")->pins[sim::Authentication].pin, std::string("1234"));
}

void TstSimPinpad::rejectedFirstPinLeavesTheContainerActivatedAndLocked_data()
{
    QTest::addColumn<QByteArray>("card");
    QTest::newRow("first use") << QByteArray("first-pin");
    QTest::newRow("not initialised") << QByteArray("not-initialized");
}

void TstSimPinpad::rejectedFirstPinLeavesTheContainerActivatedAndLocked()
{
    QFETCH(QByteArray, card);
    sim.start(card, true);
    const CK_SESSION_HANDLE session = sim.open("Qualified");
    sim::PadAnswer rejects;
    rejects.kind = sim::PadAnswer::Kind::Reject;
    sim.world.pad(rejects);

    if (card == "first-pin") {
        COMPARE_RV(sim.setPin(session, "", ""), CKR_FUNCTION_REJECTED);
    } else {
        COMPARE_RV(sim.login(session, CKU_SO, "87654321"), CKR_OK);
        COMPARE_RV(sim.initPin(session, ""), CKR_FUNCTION_REJECTED);
    }

    const CK_FLAGS state = CKF_USER_PIN_INITIALIZED | CKF_USER_PIN_TO_BE_CHANGED | CKF_USER_PIN_LOCKED;
    QCOMPARE(qulonglong(sim.flagsOf("Qualified") & state), qulonglong(CKF_USER_PIN_INITIALIZED | CKF_USER_PIN_LOCKED));
}

void TstSimPinpad::rejectedUnblockLeavesTheLock()
{
    sim.start("locked-authentication", true);
    const CK_SESSION_HANDLE session = sim.open("Authentication");
    sim::PadAnswer rejects;
    rejects.kind = sim::PadAnswer::Kind::Reject;
    sim.world.pad(rejects);
    sim.login(session, CKU_SO, "87654321");

    COMPARE_RV(sim.initPin(session, ""), CKR_FUNCTION_REJECTED);

    QVERIFY(sim.flagsOf("Authentication") & CKF_USER_PIN_LOCKED);
}

void TstSimPinpad::lockedPinIsRefusedBeforeAnyoneIsAsked()
{
    sim.start("locked-puk", true);

    COMPARE_RV(sim.tryPin("Authentication", CKU_USER, ""), CKR_PIN_LOCKED);
    COMPARE_RV(sim.tryPin("Authentication", CKU_SO, ""), CKR_PIN_LOCKED);
}

void TstSimPinpad::removedCardEndsTheWait()
{
    sim.start("anna", true);
    const CK_SESSION_HANDLE session = sim.open("Authentication");
    CK_RV result = CKR_OK;
    std::thread thread([&] { result = sim.login(session, CKU_USER, ""); });
    QTRY_COMPARE(sim.world.waitingCalls(), 1);

    sim.world.removeCard("R");
    sim.world.insertCard("R", "jan");

    thread.join();
    COMPARE_RV(result, CKR_DEVICE_REMOVED);
}

void TstSimPinpad::finalizeDuringTheWaitEndsTheCall()
{
    sim.start("anna", true);
    const CK_SESSION_HANDLE session = sim.open("Authentication");
    CK_RV result = CKR_OK;
    std::thread thread([&] { result = sim.login(session, CKU_USER, ""); });
    QTRY_COMPARE(sim.world.waitingCalls(), 1);

    COMPARE_RV(sim.p11->C_Finalize(nullptr), CKR_OK);

    thread.join();
    COMPARE_RV(result, CKR_CRYPTOKI_NOT_INITIALIZED);
}

void TstSimPinpad::waitingThreadCanBeEnded()
{
    sim.start("anna", true);
    struct AtThePad : QThread {
        void run() override { sim->login(session, CKU_USER, ""); }
        SimFixture *sim = nullptr;
        CK_SESSION_HANDLE session = 0;
    } thread;
    thread.sim = &sim;
    thread.session = sim.open("Authentication");
    thread.start();
    QTRY_COMPARE(sim.world.waitingCalls(), 1);

    thread.terminate();

    QVERIFY(thread.wait(3000));
    COMPARE_RV(sim.login(thread.session, CKU_USER, "1234"), CKR_OK);
}

VELMOR_TEST(TstSimPinpad)
#include "tst_sim_pinpad.moc"
