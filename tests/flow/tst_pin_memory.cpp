#include "support/hidden_pins.h"

// What was typed on the PIN pages stands nowhere in the program's memory once it has done its work or is left: not in
// the fields, not in their history of edits, not on the way to the worker.
class TestPinMemory : public QObject, private HiddenPins {
    Q_OBJECT

private:
    // In text and history together.
    static int copies(const HiddenDigits &digits) { return digits.places(2) + digits.places(HiddenDigits::editStep); }

    // `anna` with these words, on the page that opens from the tile of Qualified.
    void open(bool pinLocked)
    {
        teachCard(pinLocked);
        QVERIFY(showCard("anna"));
        openPinPage(sim::Qualified);
        QCOMPARE(page(), QString(pinLocked ? "pageUnblockPin" : "pageChangePin"));
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
            send(pinLocked);
            QVERIFY(waitForPage("pageCorrectChange"));
            QVERIFY(pinLocked ? showsUnblock(CardResult::done) : showsChange(CardResult::done));
        } else if (end.startsWith("refused")) {
            teachCardOthers();
            send(pinLocked);
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

        QCOMPARE(copies(pinLocked ? hiddenPuk : oldPin), 0);
        QCOMPARE(copies(newPin), 0);
    }
};

VELMOR_TEST(TestPinMemory)
#include "tst_pin_memory.moc"
