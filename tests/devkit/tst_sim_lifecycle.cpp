#include <algorithm>
#include <limits>
#include <thread>

#include "devkit/sim_fixture.h"
#include "support/testmain.h"

// Initialising and finalising, sessions, and what the trace tells of it all.
class TstSimLifecycle : public QObject {
    Q_OBJECT

private slots:
    void nothingWorksBeforeInitialize();
    void initializingTwiceIsRefused();
    void finalizeKillsSessionsForGood();
    void removedCardKillsItsSessions();
    void anotherCardInTheReaderIsNotReachedByOldSessions();
    void sessionNeedsTheSerialFlag();
    void closingAllSessionsTakesThoseOfOneSlot();
    void everyFunctionOfTheListIsThere();
    void infoNamesTheStandard();
    void callsFromManyThreadsAreAllCounted();
    void traceTellsTheCallsInTheirOrder();
    void traceNeverHoldsAPin();
    void traceCanBeSwitchedOff();
    void traceKnowsReaderAndHandles();
    void libraryWorksWithoutAnyWorld();
    void unreadableWorldIsAGeneralError();
    void cardReadCostsFewMilliseconds();

private:
    SimFixture sim;
};

void TstSimLifecycle::nothingWorksBeforeInitialize()
{
    sim.start("anna");
    sim.p11->C_Finalize(nullptr);
    CK_ULONG count = 0;
    CK_INFO info = {};

    COMPARE_RV(sim.p11->C_GetSlotList(CK_FALSE, nullptr, &count), CKR_CRYPTOKI_NOT_INITIALIZED);
    COMPARE_RV(sim.p11->C_GetInfo(&info), CKR_CRYPTOKI_NOT_INITIALIZED);
    COMPARE_RV(sim.p11->C_Logout(1), CKR_CRYPTOKI_NOT_INITIALIZED);
    COMPARE_RV(sim.p11->C_Finalize(nullptr), CKR_CRYPTOKI_NOT_INITIALIZED);
}

void TstSimLifecycle::initializingTwiceIsRefused()
{
    sim.start("anna");

    COMPARE_RV(sim.p11->C_Initialize(nullptr), CKR_CRYPTOKI_ALREADY_INITIALIZED);
}

void TstSimLifecycle::finalizeKillsSessionsForGood()
{
    sim.start("anna");
    const CK_SESSION_HANDLE old = sim.open("Authentication");
    sim.login(old, CKU_USER, "1234");

    sim.p11->C_Finalize(nullptr);
    COMPARE_RV(sim.p11->C_FindObjectsInit(old, nullptr, 0), CKR_CRYPTOKI_NOT_INITIALIZED);
    sim.p11->C_Initialize(nullptr);

    const CK_SESSION_HANDLE fresh = sim.open("Authentication");
    QVERIFY(fresh != old);
    COMPARE_RV(sim.p11->C_FindObjectsInit(old, nullptr, 0), CKR_SESSION_HANDLE_INVALID);
    COMPARE_RV(sim.login(old, CKU_USER, "1234"), CKR_SESSION_HANDLE_INVALID);
    COMPARE_RV(sim.p11->C_Logout(fresh), CKR_USER_NOT_LOGGED_IN);
}

void TstSimLifecycle::removedCardKillsItsSessions()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("eMRTD");

    sim.world.removeCard("R");

    COMPARE_RV(sim.p11->C_FindObjectsInit(session, nullptr, 0), CKR_SESSION_HANDLE_INVALID);
    COMPARE_RV(sim.p11->C_CloseSession(session), CKR_SESSION_HANDLE_INVALID);
}

void TstSimLifecycle::anotherCardInTheReaderIsNotReachedByOldSessions()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("Authentication");

    sim.world.removeCard("R");
    sim.world.insertCard("R", "jan");

    COMPARE_RV(sim.login(session, CKU_USER, "1234"), CKR_SESSION_HANDLE_INVALID);
    QCOMPARE(sim.text(sim.tokenInfo(sim.slotIds()[0]).serialNumber).trimmed(), QByteArray("jan"));
}

void TstSimLifecycle::sessionNeedsTheSerialFlag()
{
    sim.start("anna");

    sim.open("Authentication", CKF_RW_SESSION);

    COMPARE_RV(sim.openResult, CKR_SESSION_PARALLEL_NOT_SUPPORTED);
}

void TstSimLifecycle::closingAllSessionsTakesThoseOfOneSlot()
{
    sim.start("anna");
    const CK_SESSION_HANDLE one = sim.open("Authentication");
    const CK_SESSION_HANDLE other = sim.open("Presence");
    QCOMPARE(sim.tokenInfo(sim.slotOf("Authentication")).ulRwSessionCount, CK_ULONG(1));

    COMPARE_RV(sim.p11->C_CloseAllSessions(sim.slotOf("Authentication")), CKR_OK);

    COMPARE_RV(sim.p11->C_CloseSession(one), CKR_SESSION_HANDLE_INVALID);
    COMPARE_RV(sim.p11->C_CloseSession(other), CKR_OK);
}

void TstSimLifecycle::everyFunctionOfTheListIsThere()
{
    sim.start("anna");
    const auto *first = reinterpret_cast<void *const *>(&sim.p11->C_Initialize);
    const auto *end = reinterpret_cast<void *const *>(sim.p11 + 1);
    CK_SESSION_HANDLE session = sim.open("Authentication");
    CK_MECHANISM mechanism = {};
    CK_ULONG count = 9;

    QCOMPARE(end - first, std::ptrdiff_t(68));
    for (const auto *at = first; at < end; ++at)
        QVERIFY(*at != nullptr);
    COMPARE_RV(sim.p11->C_SignInit(session, &mechanism, 1), CKR_FUNCTION_NOT_SUPPORTED);
    COMPARE_RV(sim.p11->C_WaitForSlotEvent(0, nullptr, nullptr), CKR_FUNCTION_NOT_SUPPORTED);
    COMPARE_RV(sim.p11->C_GetFunctionStatus(session), CKR_FUNCTION_NOT_PARALLEL);
    COMPARE_RV(sim.p11->C_GetMechanismList(sim.slotOf("Authentication"), nullptr, &count), CKR_OK);
    QCOMPARE(count, CK_ULONG(0));
    QVERIFY(sim.traceTexts().contains("C_SignInit -> 0x54"));
}

void TstSimLifecycle::infoNamesTheStandard()
{
    sim.start("anna");
    CK_INFO info = {};

    COMPARE_RV(sim.p11->C_GetInfo(&info), CKR_OK);

    QCOMPARE(int(info.cryptokiVersion.major), 2);
    QCOMPARE(int(sim.p11->version.major), 2);
}

void TstSimLifecycle::callsFromManyThreadsAreAllCounted()
{
    sim.start("anna");
    std::vector<std::thread> threads;
    threads.reserve(4);

    for (int at = 0; at < 4; ++at) {
        threads.emplace_back([this] {
            for (int call = 0; call < 25; ++call) {
                CK_SESSION_HANDLE session = 0;
                sim.p11->C_OpenSession(1, 6, nullptr, nullptr, &session);
                sim.p11->C_CloseSession(session);
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();

    QCOMPARE(sim.world.trace("C_OpenSession").size(), std::size_t(100));
    for (const sim::TraceEntry &entry : sim.world.trace("C_CloseSession"))
        QCOMPARE(entry.result, 0UL);
}

void TstSimLifecycle::traceTellsTheCallsInTheirOrder()
{
    sim.start("anna");
    CK_SESSION_HANDLE session = 0;

    sim.p11->C_OpenSession(1, 6, nullptr, nullptr, &session);
    sim.login(session, CKU_SO, "00000000");
    sim.p11->C_FindObjectsInit(session, nullptr, 0);
    sim.objectClass(session, 1001);
    sim.p11->C_Finalize(nullptr);

    QCOMPARE(sim.traceTexts(),
             QStringList({ "C_OpenSession container=Authentication flags=6 -> 0x0",
                           "C_Login container=Authentication user=SO pin=set -> 0xa0",
                           "C_FindObjectsInit container=Authentication template=0 -> 0x0",
                           "C_GetAttributeValue container=Authentication attribute=CLASS buffer=given -> 0x0",
                           "C_Finalize -> 0x0" }));
}

void TstSimLifecycle::traceNeverHoldsAPin()
{
    sim.start("first-pin");
    const CK_SESSION_HANDLE session = sim.open("Authentication");
    const CK_SESSION_HANDLE qualified = sim.open("Qualified");

    sim.login(session, CKU_USER, "7391");
    sim.login(session, CKU_USER, "1234");
    sim.setPin(session, "1234", "7392");
    sim.p11->C_Logout(session);
    sim.login(session, CKU_SO, "87654321");
    sim.initPin(session, "7393");
    sim.setPin(qualified, "87654321", "73947394");

    QFile file(QString::fromStdString(sim.world.directory()) + "/trace.log");
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    QCOMPARE(text.count("C_Login"), 3);
    // In the time stamps in front of each line any digits may stand.
    QByteArray withoutTimes;
    for (const QByteArray &line : text.split('\n'))
        withoutTimes += line.mid(line.indexOf("C_")) + "\n";
    for (const char *secret : { "7391", "7392", "7393", "7394", "1234", "8765" })
        QVERIFY2(!withoutTimes.contains(secret), secret);
    QVERIFY(text.contains("oldPin=set newPin=set"));
}

void TstSimLifecycle::traceCanBeSwitchedOff()
{
    sim.start("anna");

    sim.world.setTraceOn(false);
    sim.slotIds();
    QCOMPARE(sim.traceTexts(), QStringList());
    sim.world.setTraceOn(true);
    sim.slotIds();

    QCOMPARE(sim.traceTexts(),
             QStringList({ "C_GetSlotList tokenPresent=no buffer=null count=5 -> 0x0",
                           "C_GetSlotList tokenPresent=no buffer=given count=5 -> 0x0" }));
}

void TstSimLifecycle::traceKnowsReaderAndHandles()
{
    sim.p11->C_Finalize(nullptr);
    sim.world.reset();
    sim.world.insertCard("A \"quoted\" \\ reader = #1", "anna");
    sim.p11->C_Initialize(nullptr);
    const CK_SESSION_HANDLE session = sim.open("Qualified");

    sim.p11->C_Logout(session);

    const sim::TraceEntry entry = sim.world.trace("C_Logout").at(0);
    QCOMPARE(entry.arguments.at("reader"), std::string("A \"quoted\" \\ reader = #1"));
    QCOMPARE(entry.arguments.at("container"), std::string("Qualified"));
    QCOMPARE(entry.arguments.at("session"), std::to_string(session));
    QCOMPARE(entry.result, static_cast<unsigned long>(CKR_USER_NOT_LOGGED_IN));
    QCOMPARE(entry.process, int(QCoreApplication::applicationPid()));
    QCOMPARE(sim.world.trace("C_OpenSession").at(0).arguments.at("session"), std::to_string(session));
}

void TstSimLifecycle::libraryWorksWithoutAnyWorld()
{
    const QByteArray before = qgetenv("VELMOR_SIM_WORLD");
    sim.p11->C_Finalize(nullptr);
    qputenv("VELMOR_SIM_WORLD", (TestHome::path() + "/no such folder").toUtf8());

    COMPARE_RV(sim.p11->C_Initialize(nullptr), CKR_OK);

    QCOMPARE(sim.slotIds().size(), std::size_t(0));
    sim.p11->C_Finalize(nullptr);
    qputenv("VELMOR_SIM_WORLD", before);
}

void TstSimLifecycle::unreadableWorldIsAGeneralError()
{
    sim.start("anna");
    QFile file(QString::fromStdString(sim.world.directory()) + "/world.conf");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("this is no world\n");
    file.close();
    CK_ULONG count = 0;

    COMPARE_RV(sim.p11->C_GetSlotList(CK_FALSE, nullptr, &count), CKR_GENERAL_ERROR);

    QVERIFY(!sim.world.addReader("S"));
    QVERIFY2(sim.world.error().find("line 1") != std::string::npos, sim.world.error().c_str());
    QVERIFY(sim.world.reset());
}

// About as many calls as the reading of a card takes; with the bound far above what is seen, since machines differ.
void TstSimLifecycle::cardReadCostsFewMilliseconds()
{
    sim.start("anna");

    // The quickest of five, as the machine may be busy with other tests.
    qint64 quickest = std::numeric_limits<qint64>::max();
    std::size_t calls = 0;
    for (int round = 0; round < 5; ++round) {
        const std::size_t before = sim.world.trace().size();
        QElapsedTimer timer;
        timer.start();
        for (const char *token : { "Presence", "Authentication", "Authorization", "Qualified", "eMRTD" })
            sim.labels(token);
        quickest = std::min(quickest, timer.nsecsElapsed() / 1000);
        calls = sim.world.trace().size() - before;
    }

    qInfo() << calls << "calls in" << quickest << "us";
    QVERIFY(calls > 80);
    QVERIFY(quickest < 200000);
}

VELMOR_TEST(TstSimLifecycle)
#include "tst_sim_lifecycle.moc"
