#include "support/pin_flow.h"
#include "support/watched_free.h"

// The window sends copies of what was typed. Where the worker is done with them before the window is, the window is the
// one who overwrites them.
class TestPinChangeUnblockWiped : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<PinFlow> flow;

private slots:
    void initTestCase()
    {
        if (!VELMOR_FREE_IS_WATCHED)
            QSKIP("The sanitizer has a free() of its own");
        Flow::setUpApplication();
    }
    void init() { flow = std::make_unique<PinFlow>(); }
    void cleanup()
    {
        flow.reset();
        WatchedFree::forgetAll();
    }

    void copiesThatNobodyElseHasAreOverwritten_data()
    {
        QTest::addColumn<bool>("unblocking");
        QTest::newRow("change") << false;
        QTest::newRow("unblock") << true;
    }
    void copiesThatNobodyElseHasAreOverwritten()
    {
        QFETCH(bool, unblocking);
        QVERIFY(flow->start(unblocking ? "locked-pins" : "anna"));
        flow->openPinPage(sim::Authentication);
        if (unblocking)
            flow->typeUnblock(PinFlow::puk, "4826", "4826");
        else
            flow->typeChange("1234", "4826", "4826");
        const auto request = unblocking ? &Window::unblockPinSig : &Window::changePinSig;
        disconnect(flow->window.get(), request, nullptr, nullptr);
        connect(flow->window.get(), request, this,
                [](const QString &, const QString &, const QString &secret, const QString &fresh) {
                    WatchedFree::watch(secret);
                    WatchedFree::watch(fresh);
                });

        flow->click(unblocking ? "bChangePinPuk" : "bChangePin");

        QCOMPARE(WatchedFree::watched(), 2);
        QCOMPARE(WatchedFree::freed(), 2);
        QCOMPARE(WatchedFree::overwritten(), 2);
        // Nobody else answers.
        if (unblocking)
            flow->window->unblockPinFin(CardResult::cancelled);
        else
            flow->window->changePinFin(CardResult::cancelled);
    }
};

// A program of its own, for the free() in it.
int main(int argc, char *argv[])
{
    TestHome home;
    QApplication application(argc, argv);
    TestPinChangeUnblockWiped test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_pin_change_unblock_wiped_linux.moc"
