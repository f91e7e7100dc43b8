#include "support/own_memory.h"
#include "support/pin_flow.h"

// What was typed on the PIN pages stands nowhere in the program's memory once it has done its work or is left: not in
// the fields, not in their history of edits, not on the way to the worker.
class TestPinMemory : public QObject, private PinFlow {
    Q_OBJECT

private:
    const HiddenDigits oldPin { "62059384" };
    const HiddenDigits newPin { "83714206" };
    const HiddenDigits puk { "18493750" };

    void type(const char *name, const HiddenDigits &digits) const
    {
        field(name)->setFocus();
        for (int i = 0; i < digits.size(); ++i)
            QTest::keyClick(field(name), digits.at(i));
    }
    // In text and history together.
    static int copies(const HiddenDigits &digits) { return digits.places(2) + digits.places(HiddenDigits::editStep); }

    // `anna` with these words, on the page that opens from the tile of Qualified.
    void open(bool pinLocked)
    {
        QVERIFY(world.addReader("Czytnik Alfa"));
        QVERIFY(world.setPin("anna", sim::Qualified, oldPin.bytes()));
        sim::CardState state = *world.cardState("anna");
        state.puk = puk.bytes();
        state.pins[sim::Qualified].tries = pinLocked ? 0 : 3;
        QVERIFY(world.setCardState("anna", state));
        QVERIFY(showCard("anna"));
        openPinPage(sim::Qualified);
        QCOMPARE(page(), QString(pinLocked ? "pageUnblockPin" : "pageChangePin"));
    }
    void typeAll(bool pinLocked)
    {
        type(pinLocked ? "lineInsertPuk" : "lineActualPin", pinLocked ? puk : oldPin);
        type(pinLocked ? "lineNewPinPuk" : "lineNewPin", newPin);
        type(pinLocked ? "lineRepeatPinPuk" : "lineRepeatPin", newPin);
    }

private slots:
    void initTestCase()
    {
#ifdef __SANITIZE_ADDRESS__
        QSKIP("The sanitizer keeps what was freed, and what the toolkit has freed on the way with it");
#endif
        Flow::setUpApplication();
    }
    void init()
    {
        QVERIFY(world.reset());
        openWindow();
    }
    void cleanup()
    {
        closeWindow();
    }

    void nothingStays_data()
    {
        QTest::addColumn<bool>("pinLocked");
        QTest::addColumn<QString>("end");
        for (const bool pinLocked : { false, true }) {
            // A refused PUK stays in its field: the hints of the next visit go by it.
            for (const char *end : { "sent", "refused, home, visited", "cancelled", "settings", "no card" })
                QTest::addRow("%s, %s", pinLocked ? "unblock" : "change", end) << pinLocked << end;
        }
    }
    void nothingStays()
    {
        QFETCH(bool, pinLocked);
        QFETCH(QString, end);
        open(pinLocked);
        typeAll(pinLocked);
        QVERIFY(copies(newPin) > 0);

        if (end == "sent") {
            click(pinLocked ? "bChangePinPuk" : "bChangePin");
            QVERIFY(waitForPage("pageCorrectChange"));
            QVERIFY(pinLocked ? showsUnblock(CardResult::done) : showsChange(CardResult::done));
        } else if (end.startsWith("refused")) {
            // The card has others by now.
            sim::CardState state = *world.cardState("anna");
            state.puk = "00000000";
            state.pins[sim::Qualified].pin = "00000000";
            QVERIFY(world.setCardState("anna", state));
            click(pinLocked ? "bChangePinPuk" : "bChangePin");
            QVERIFY(waitForPage("pageCorrectChange"));
            click("bWrocPin");
            QVERIFY(waitForPage("pageHome"));
            openPinPage(sim::Qualified);
        } else if (end == "cancelled") {
            click(pinLocked ? "bCancel_2" : "bCancel");
        } else if (end == "settings") {
            click("bSettings");
        } else {
            window->loadedReaders({}, "NO_CARD");
        }

        QCOMPARE(copies(pinLocked ? puk : oldPin), 0);
        QCOMPARE(copies(newPin), 0);
    }
};

VELMOR_TEST(TestPinMemory)
#include "tst_pin_memory.moc"
