#include "support/pin_flow.h"

// What the window's thread and the worker's do at the same time, each request of the one and answer of the other: a
// card is read while lists come in, a PIN is changed and one unblocked, the worker is ended by force. Everyday flows
// once more, for what watches them: the thread sanitizer (./dev check threads), and in every build the watch on calls
// to widgets.
class TestThreads : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { Flow::setUpApplication(); }

    void cardIsReadWhileListsComeIn()
    {
        Flow flow;
        QVERIFY(flow.showCard("anna"));
        for (const char *card : { "jan", "anna" }) {
            QVERIFY(flow.world.removeCard("Czytnik Alfa"));
            flow.window->loadedReaders({}, "NO_CARD");
            QVERIFY(flow.world.insertCard("Czytnik Alfa", card));
            flow.window->loadAll();
            // The worker is at it.
            for (int i = 0; i < 5; ++i) {
                flow.window->loadedReaders({ "Czytnik Alfa" });
                QCoreApplication::processEvents();
            }
            // And has not answered when it is asked anew.
            flow.window->loadAll();
            QVERIFY(flow.waitForCard());
        }
        flow.window->moveToAllDataPage();
        flow.window->chooseQualifiedCertInfo();
        QCOMPARE(flow.page(), QString("pageCertInfo"));
    }

    void pinIsChanged()
    {
        PinFlow flow;
        QVERIFY(flow.start("anna"));
        const auto &container = PinFlow::container(sim::Authentication);
        flow.openPinPage(container.name);
        flow.typeChange(container.pin, container.newPin, container.newPin);
        flow.click("bChangePin");
        // Meanwhile the window goes on.
        flow.window->recvIpcMsg(IpcMsg { { "checkForUpdate", 1 } });
        QVERIFY(flow.waitForEnd());
        QVERIFY(flow.showsChange(CardResult::done));
    }

    void pinIsUnblocked()
    {
        PinFlow flow;
        QVERIFY(flow.start("locked-pins"));
        const auto &container = PinFlow::container(sim::Authentication);
        flow.openPinPage(container.name);
        flow.typeUnblock(PinFlow::puk, container.newPin, container.newPin);
        flow.click("bChangePinPuk");
        QVERIFY(flow.waitForEnd());
        QVERIFY(flow.showsUnblock(CardResult::done));
        QVERIFY(flow.waitForWorker());
    }

    void windowClosesWhileACardIsRead()
    {
        Flow flow;
        QVERIFY(flow.showCard("anna"));
        flow.window->loadAll();
        QCoreApplication::processEvents();
        flow.window->quitClicked();
        QVERIFY(Driver::waitFor([&] { return !flow.window->isVisible(); }));
    }

    void blockedWorkerIsEndedByForce()
    {
        LogCatcher log;
        Flow flow;
        QVERIFY(flow.showCard("anna"));
        flow.world.block("C_GetSlotList");
        flow.window->loadAll();
        QTRY_COMPARE(flow.world.waitingCalls(), 1);

        flow.window->quitClicked();

        QTRY_VERIFY_WITH_TIMEOUT(log.has("terminateTheards()"), 20000);
        QTRY_VERIFY_WITH_TIMEOUT(!flow.window->isVisible(), 20000);
    }
};

VELMOR_TEST(TestThreads)
#include "tst_threads.moc"
