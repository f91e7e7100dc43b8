#include "system/family_runs.h"

// A card that waits for its CAN, among real processes: the Monitor, the program that asks for it, and Manager.
class TestFamilyCan : public QObject, private FamilyRuns {
    Q_OBJECT

private:
    void startBesideTheMonitor()
    {
        startWithCard("Antena Gamma");
        QTRY_VERIFY_WITH_TIMEOUT(runs("Monitor"), patience);
    }

private slots:
    void init() { beginFamily(); }
    void cleanup() { endFamily(); }

    void cardThatWaitsForItsCanBringsUpTheProgramThatAsks()
    {
        startBesideTheMonitor();

        QVERIFY(world.setWaitCan("Antena Gamma", true));

        QTRY_VERIFY_WITH_TIMEOUT(logHas("recv canAppStatus:canOpened"), patience);
        QVERIFY(runs("Can"));
        // As the program itself does it once the CAN is right.
        QVERIFY(world.setWaitCan("Antena Gamma", false));
        QTRY_COMPARE_WITH_TIMEOUT(countInLog("all certs loaded"), 2, patience);
        QTRY_VERIFY_WITH_TIMEOUT(!runs("Can"), patience);
    }

    void userWhoClosesTheQuestionIsNotAskedAgain()
    {
        const QString told = "recv canAppStatus:canClosed, from:velmor_monitor, readers:WAIT_CAN, to:velmor_manager";
        startBesideTheMonitor();
        QVERIFY(world.setWaitCan("Antena Gamma", true));
        QTRY_VERIFY_WITH_TIMEOUT(logHas("recv canAppStatus:canOpened"), patience);

        QVERIFY(tell("velmor_can", "cancel"));

        QTRY_COMPARE_WITH_TIMEOUT(countInLog(told), 1, patience);
        QTRY_VERIFY_WITH_TIMEOUT(!runs("Can"), patience);
        // Nor when the readers are asked for once more.
        QVERIFY(tell("velmor_monitor", "getReadersWithPace"));
        QTRY_COMPARE_WITH_TIMEOUT(countInLog(told), 2, patience);
        QVERIFY(!QTest::qWaitFor([] { return runs("Can"); }, 1000));
        QCOMPARE(countInLog("recv canAppStatus:canOpened"), 1);
    }
};

VELMOR_TEST(TestFamilyCan)
#include "tst_family_can.moc"
