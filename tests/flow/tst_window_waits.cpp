#include "support/armed_timers.h"
#include "support/fake_programs.h"
#include "support/pin_flow.h"

// How long the window lets others come first: the screen reader, the painting, the keypad, the worker.
class TestWindowWaits : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<PinFlow> flow;

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<PinFlow>(); }
    void cleanup() { flow.reset(); }

    void pageWithoutCardGetsTheFocusASecondLater()
    {
        QVERIFY(flow->showCard("anna"));
        QCOMPARE(waitsArmedBy([this] { flow->window->loadedReaders({}, "NO_CARD"); }), QList<int> { 1000 });
    }

    void firstCertificateGetsTheFocusATenthOfASecondLater()
    {
        QVERIFY(flow->showCard("anna"));
        QCOMPARE(waitsArmedBy([this] { flow->button("bArrowAuthenCert")->click(); }), QList<int> { 100 });
    }

    void padIsAskedForThePukASecondLater()
    {
        QVERIFY(flow->start("locked-qualified", true));
        QCOMPARE(waitsArmedBy([this] { flow->button("bChangePinQualifiedCert")->click(); }), QList<int> { 1000 });
        QVERIFY(flow->waitForPad());
        flow->answerAtPad(sim::PadAnswer::Kind::Cancel);
        QVERIFY(flow->waitForPage("pageCorrectChange"));
    }

    void browsersAreConnectedHalfASecondLater()
    {
        FakePrograms programs;
        programs.installFirefox();
        flow->openWindow();
        flow->button("bSettings")->click();
        QCoreApplication::processEvents();
        QCOMPARE(waitsArmedBy([this] { flow->window->integrateApps(); }), QList<int> { 500 });
        QVERIFY(flow->waitForPage("pageIntegration"));
    }

    void workerIsAskedToEndEveryHalfSecond()
    {
        flow->openWindow();
        QCOMPARE(waitsArmedBy([this] { flow->window->closeWithTheards(); }), QList<int> { 500 });
        QTRY_VERIFY(flow->window->isHidden());
    }
};

VELMOR_TEST(TestWindowWaits)
#include "tst_window_waits.moc"
