#include <thread>

#include <QThread>

#include "devkit/sim_fixture.h"
#include "support/testmain.h"

// Every way in which a call of the simulated library can be made to go wrong.
class TstSimFaults : public QObject {
    Q_OBJECT

private slots:
    void resultReplacesTheWorkOnceAtTheNthCall();
    void everyCallFailsUntilCleared();
    void resultAfterTheWorkLeavesItDone();
    void anyFunctionCanFail_data();
    void anyFunctionCanFail();
    void starMeansEveryFunction();
    void faultIsMeantForOneToken();
    void faultIsMeantForOneReader();
    void faultIsMeantForOneAttribute();
    void faultIsMeantForSizeOrBuffer();
    void callIsDelayed();
    void everyCallIsDelayedByTheWorld();
    void blockedCallGoesOnWithRelease();
    void aLaterBlockNeedsAReleaseOfItsOwn();
    void blockedThreadCanBeEndedAndTheLibraryGoesOn();
    void resetReleasesWhatIsBlocked();
    void readerGoesInTheMiddleOfACall();
    void cardGoesInTheMiddleOfACall();
    void cardGoesWhileSomethingElseIsAsked();
    void badFaultsAreRefused();

private:
    CK_RV slotCount()
    {
        CK_ULONG count = 0;
        return sim.p11->C_GetSlotList(CK_FALSE, nullptr, &count);
    }

    SimFixture sim;
};

void TstSimFaults::resultReplacesTheWorkOnceAtTheNthCall()
{
    sim.start("anna");
    sim.fault("C_GetSlotList", [](sim::Fault &f) {
        f.nth = 3;
        f.result = CKR_DEVICE_ERROR;
    });

    QStringList results;
    for (int call = 0; call < 4; ++call)
        results << QString::number(slotCount(), 16);

    QCOMPARE(results, QStringList({ "0", "0", "30", "0" }));
    QVERIFY(sim.world.faults().empty());
    QCOMPARE(sim.world.trace().at(2).result, 0x30UL);
}

void TstSimFaults::everyCallFailsUntilCleared()
{
    sim.start("anna");
    sim.fault("C_GetSlotList", [](sim::Fault &f) {
        f.nth = 0;
        f.result = CKR_HOST_MEMORY;
    });

    for (int call = 0; call < 3; ++call)
        COMPARE_RV(slotCount(), CKR_HOST_MEMORY);
    sim.world.clearFaults();

    COMPARE_RV(slotCount(), CKR_OK);
}

void TstSimFaults::resultAfterTheWorkLeavesItDone()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("Authentication");
    sim.fault("C_SetPIN", [](sim::Fault &f) {
        f.result = CKR_DEVICE_ERROR;
        f.afterWork = true;
    });
    sim.login(session, CKU_USER, "1234");

    COMPARE_RV(sim.setPin(session, "1234", "4321"), CKR_DEVICE_ERROR);

    QCOMPARE(sim.world.cardState("anna")->pins[sim::Authentication].pin, std::string("4321"));
    sim.fault("C_SetPIN", [](sim::Fault &f) { f.result = CKR_DEVICE_ERROR; });
    COMPARE_RV(sim.setPin(session, "4321", "1111"), CKR_DEVICE_ERROR);
    QCOMPARE(sim.world.cardState("anna")->pins[sim::Authentication].pin, std::string("4321"));
}

void TstSimFaults::anyFunctionCanFail_data()
{
    QTest::addColumn<QString>("function");
    for (const char *function :
         { "C_GetFunctionList", "C_Initialize", "C_Finalize", "C_GetSlotList", "C_GetSlotInfo", "C_GetTokenInfo",
           "C_OpenSession", "C_CloseSession", "C_Login", "C_Logout", "C_SetPIN", "C_InitPIN", "C_FindObjectsInit",
           "C_FindObjects", "C_FindObjectsFinal", "C_GetAttributeValue", "C_GenerateRandom" })
        QTest::newRow(function) << function;
}

void TstSimFaults::anyFunctionCanFail()
{
    QFETCH(QString, function);
    sim.start("anna");
    const CK_SESSION_HANDLE s = sim.open("Authentication");
    sim.fault(function.toStdString(), [](sim::Fault &f) { f.result = 0x7777; });
    CK_FUNCTION_LIST_PTR list = nullptr;
    CK_SLOT_INFO slot = {};
    CK_TOKEN_INFO token = {};
    CK_SESSION_HANDLE session = 0;
    CK_OBJECT_HANDLE object = 0;
    CK_ULONG count = 0;
    CK_ATTRIBUTE attribute = { CKA_LABEL, nullptr, 0 };
    const auto getList = reinterpret_cast<CK_C_GetFunctionList>(sim.library.resolve("C_GetFunctionList"));

    const QMap<QString, std::function<CK_RV()>> calls {
        { "C_GetFunctionList", [&] { return getList(&list); } },
        { "C_Initialize", [&] { return sim.p11->C_Initialize(nullptr); } },
        { "C_Finalize", [&] { return sim.p11->C_Finalize(nullptr); } },
        { "C_GetSlotList", [&] { return slotCount(); } },
        { "C_GetSlotInfo", [&] { return sim.p11->C_GetSlotInfo(1, &slot); } },
        { "C_GetTokenInfo", [&] { return sim.p11->C_GetTokenInfo(1, &token); } },
        { "C_OpenSession", [&] { return sim.p11->C_OpenSession(1, 6, nullptr, nullptr, &session); } },
        { "C_CloseSession", [&] { return sim.p11->C_CloseSession(s); } },
        { "C_Login", [&] { return sim.login(s, CKU_USER, "1234"); } },
        { "C_Logout", [&] { return sim.p11->C_Logout(s); } },
        { "C_SetPIN", [&] { return sim.setPin(s, "1234", "4321"); } },
        { "C_InitPIN", [&] { return sim.initPin(s, "4321"); } },
        { "C_FindObjectsInit", [&] { return sim.p11->C_FindObjectsInit(s, nullptr, 0); } },
        { "C_FindObjects", [&] { return sim.p11->C_FindObjects(s, &object, 1, &count); } },
        { "C_FindObjectsFinal", [&] { return sim.p11->C_FindObjectsFinal(s); } },
        { "C_GetAttributeValue", [&] { return sim.p11->C_GetAttributeValue(s, 1001, &attribute, 1); } },
        { "C_GenerateRandom", [&] { return sim.p11->C_GenerateRandom(s, nullptr, 0); } },
    };

    COMPARE_RV(calls[function](), 0x7777);
    QVERIFY(sim.world.faults().empty());
    QVERIFY(calls[function]() != 0x7777);
}

void TstSimFaults::starMeansEveryFunction()
{
    sim.start("anna");
    sim.fault("*", [](sim::Fault &f) {
        f.nth = 2;
        f.result = CKR_FUNCTION_FAILED;
    });
    CK_SLOT_INFO info = {};

    COMPARE_RV(slotCount(), CKR_OK);
    COMPARE_RV(sim.p11->C_GetSlotInfo(1, &info), CKR_FUNCTION_FAILED);
}

void TstSimFaults::faultIsMeantForOneToken()
{
    sim.start("anna");
    sim.fault("C_GetTokenInfo", [](sim::Fault &f) {
        f.container = sim::Qualified;
        f.result = CKR_DEVICE_ERROR;
        f.nth = 0;
    });
    CK_TOKEN_INFO info = {};

    COMPARE_RV(sim.p11->C_GetTokenInfo(3, &info), CKR_OK);
    COMPARE_RV(sim.p11->C_GetTokenInfo(4, &info), CKR_DEVICE_ERROR);
    COMPARE_RV(sim.p11->C_GetTokenInfo(5, &info), CKR_OK);
}

void TstSimFaults::faultIsMeantForOneReader()
{
    sim.start("anna");
    sim.world.insertCard("S", "jan");
    sim.fault("C_GetSlotInfo", [](sim::Fault &f) {
        f.reader = "S";
        f.result = CKR_DEVICE_ERROR;
    });
    CK_SLOT_INFO info = {};

    COMPARE_RV(sim.p11->C_GetSlotInfo(1, &info), CKR_OK);
    COMPARE_RV(sim.p11->C_GetSlotInfo(9, &info), CKR_DEVICE_ERROR);
}

void TstSimFaults::faultIsMeantForOneAttribute()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("eMRTD");
    sim.fault("C_GetAttributeValue", [](sim::Fault &f) {
        f.attribute = CKA_VALUE;
        f.result = CKR_DEVICE_ERROR;
    });

    sim.attribute(session, 5002, CKA_LABEL);
    COMPARE_RV(sim.attributeResult, CKR_OK);
    sim.attribute(session, 5002, CKA_VALUE);
    COMPARE_RV(sim.attributeResult, CKR_DEVICE_ERROR);
}

void TstSimFaults::faultIsMeantForSizeOrBuffer()
{
    sim.start("anna");
    sim.fault("C_GetSlotList", [](sim::Fault &f) {
        f.buffer = sim::Fault::Buffer::Given;
        f.result = CKR_DEVICE_ERROR;
    });
    CK_SLOT_ID ids[5] = {};
    CK_ULONG count = 5;

    COMPARE_RV(slotCount(), CKR_OK);
    COMPARE_RV(sim.p11->C_GetSlotList(CK_FALSE, ids, &count), CKR_DEVICE_ERROR);
}

void TstSimFaults::callIsDelayed()
{
    sim.start("anna");
    sim.fault("C_GetSlotList", [](sim::Fault &f) { f.delayMs = 120; });
    QElapsedTimer timer;
    timer.start();

    COMPARE_RV(slotCount(), CKR_OK);

    QVERIFY(timer.elapsed() >= 120);
}

void TstSimFaults::everyCallIsDelayedByTheWorld()
{
    sim.start("anna");
    sim.world.setDelay(40);
    QElapsedTimer timer;
    timer.start();

    slotCount();
    slotCount();

    QVERIFY(timer.elapsed() >= 80);
}

void TstSimFaults::blockedCallGoesOnWithRelease()
{
    sim.start("anna");
    sim.fault("C_GetSlotList", [](sim::Fault &f) { f.block = true; });
    CK_RV result = 0x9999;
    std::thread thread([&] { result = slotCount(); });

    QTRY_COMPARE(sim.world.waitingCalls(), 1);
    QCOMPARE(sim.traceTexts(), QStringList());
    QCOMPARE(sim.world.fullTrace().size(), std::size_t(1));
    QVERIFY(sim.world.fullTrace()[0].waiting);
    CK_SLOT_INFO info = {};
    COMPARE_RV(sim.p11->C_GetSlotInfo(1, &info), CKR_OK); // others are not held up

    QVERIFY(sim.world.release());
    thread.join();
    COMPARE_RV(result, CKR_OK);
    QCOMPARE(sim.world.waitingCalls(), 0);
}

void TstSimFaults::aLaterBlockNeedsAReleaseOfItsOwn()
{
    sim.start("anna");
    sim.world.release();
    sim.fault("C_GetSlotList", [](sim::Fault &f) { f.block = true; });
    std::thread thread([&] { slotCount(); });

    QTRY_COMPARE(sim.world.waitingCalls(), 1);

    sim.world.release();
    thread.join();
}

void TstSimFaults::blockedThreadCanBeEndedAndTheLibraryGoesOn()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("eMRTD");
    sim.fault("C_FindObjectsInit", [](sim::Fault &f) { f.block = true; });
    struct Reading : QThread {
        void run() override { p11->C_FindObjectsInit(session, nullptr, 0); }
        CK_FUNCTION_LIST_PTR p11 = nullptr;
        CK_SESSION_HANDLE session = 0;
    } thread;
    thread.p11 = sim.p11;
    thread.session = session;
    thread.start();
    QTRY_COMPARE(sim.world.waitingCalls(), 1);

    thread.terminate();

    QVERIFY(thread.wait(3000));
    COMPARE_RV(sim.p11->C_FindObjectsInit(session, nullptr, 0), CKR_OK);
    COMPARE_RV(sim.p11->C_Finalize(nullptr), CKR_OK);
    COMPARE_RV(sim.p11->C_Initialize(nullptr), CKR_OK);
}

void TstSimFaults::resetReleasesWhatIsBlocked()
{
    sim.start("anna");
    sim.fault("C_GetSlotList", [](sim::Fault &f) { f.block = true; });
    std::thread thread([&] { slotCount(); });
    QTRY_COMPARE(sim.world.waitingCalls(), 1);

    sim.world.reset();

    thread.join();
}

void TstSimFaults::readerGoesInTheMiddleOfACall()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("eMRTD");
    sim.fault("C_FindObjects", [](sim::Fault &f) {
        f.nth = 2;
        f.removeReader = "R";
    });
    CK_OBJECT_HANDLE object = 0;
    CK_ULONG count = 0;
    sim.p11->C_FindObjectsInit(session, nullptr, 0);

    COMPARE_RV(sim.p11->C_FindObjects(session, &object, 1, &count), CKR_OK);
    COMPARE_RV(sim.p11->C_FindObjects(session, &object, 1, &count), CKR_DEVICE_REMOVED);

    COMPARE_RV(sim.p11->C_FindObjectsFinal(session), CKR_SESSION_HANDLE_INVALID);
    QCOMPARE(sim.slotIds().size(), std::size_t(0));
    QCOMPARE(sim.world.readerEvents().back().what, std::string("removed"));
}

void TstSimFaults::cardGoesInTheMiddleOfACall()
{
    sim.start("anna");
    sim.fault("C_GetTokenInfo", [](sim::Fault &f) {
        f.nth = 3;
        f.removeCard = "R";
    });
    CK_TOKEN_INFO info = {};

    COMPARE_RV(sim.p11->C_GetTokenInfo(1, &info), CKR_OK);
    COMPARE_RV(sim.p11->C_GetTokenInfo(2, &info), CKR_OK);
    COMPARE_RV(sim.p11->C_GetTokenInfo(3, &info), CKR_DEVICE_REMOVED);

    COMPARE_RV(sim.p11->C_GetTokenInfo(4, &info), CKR_SLOT_ID_INVALID);
    COMPARE_RV(sim.p11->C_GetTokenInfo(1, &info), CKR_TOKEN_NOT_PRESENT);
}

void TstSimFaults::cardGoesWhileSomethingElseIsAsked()
{
    sim.start("anna");
    sim.fault("C_GetSlotList", [](sim::Fault &f) { f.removeCard = "R"; });

    COMPARE_RV(slotCount(), CKR_OK);

    QVERIFY(sim.world.readers()[0].card.empty());
}

void TstSimFaults::badFaultsAreRefused()
{
    sim.start("anna");
    sim::Fault fault;

    fault.function = "C_Loggin";
    QVERIFY(!sim.world.addFault(fault));
    QVERIFY(sim.world.error().find("C_Loggin") != std::string::npos);
    fault.function = "C_Login";
    fault.nth = -1;
    QVERIFY(!sim.world.addFault(fault));
    QVERIFY(sim.world.faults().empty());
}

VELMOR_TEST(TstSimFaults)
#include "tst_sim_faults.moc"
