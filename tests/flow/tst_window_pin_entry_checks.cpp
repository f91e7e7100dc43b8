#include "support/pin_flow.h"

// New PIN and repetition are looked at before anything is sent, on the page of the change and on the one for the PUK.
// The fields' validators let little of this in; it comes from whoever calls the slot.
class TestWindowPinEntryChecks : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<PinFlow> flow;

    struct Page {
        const char *card;
        const char *newField;
        const char *repeatField;
        const char *newHint;
        const char *repeatHint;
        const char *otherPagesNewHint;
        const char *operation;
        void (Window::*send)();
    };
    static Page page(bool unblocking)
    {
        if (unblocking)
            return { "locked-pins",       "lineNewPinPuk", "lineRepeatPinPuk", "lNewPinInfoPuk",
                     "lRepeatPinInfoPuk", "lNewPinInfo",   "unblock",          &Window::unblockPin };
        return { "anna",           "lineNewPin",     "lineRepeatPin", "lNewPinInfo",
                 "lRepeatPinInfo", "lNewPinInfoPuk", "change",        &Window::changePin };
    }

    static void addPages()
    {
        QTest::addColumn<bool>("unblocking");
        QTest::newRow("change") << false;
        QTest::newRow("unblock") << true;
    }

    // The page with this entry; answers how many requests its button's slot has sent.
    int send(const Page &shown, const QString &fresh, const QString &repeat)
    {
        flow->field(shown.newField)->setText(fresh);
        flow->field(shown.repeatField)->setText(repeat);
        QSignalSpy changes(flow->window.get(), &Window::changePinSig);
        QSignalSpy unblocks(flow->window.get(), &Window::unblockPinSig);
        (flow->window.get()->*shown.send)();
        return changes.size() + unblocks.size();
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<PinFlow>(); }
    void cleanup() { flow.reset(); }

    void entryThatIsNoPinIsRefused_data()
    {
        QTest::addColumn<bool>("unblocking");
        QTest::addColumn<QString>("fresh");
        QTest::addColumn<QString>("repeat");
        QTest::addColumn<QString>("log");
        QTest::addColumn<bool>("newHint");
        QTest::addColumn<bool>("repeatHint");
        for (const bool unblocking : { false, true }) {
            const char *name = page(unblocking).operation;
            QTest::addRow("%s, nothing", name) << unblocking << QString() << QString() << QString() << false << true;
            QTest::addRow("%s, letters", name) << unblocking << "abcd"
                                               << "abcd"
                                               << "New and repeat pins match" << true << false;
            QTest::addRow("%s, different letters", name) << unblocking << "abcd"
                                                         << "abce"
                                                         << "New and repeat pins dont match" << true << true;
            QTest::addRow("%s, different digits", name) << unblocking << "4826"
                                                        << "4827"
                                                        << "New and repeat pins dont match" << false << true;
        }
    }
    void entryThatIsNoPinIsRefused()
    {
        QFETCH(bool, unblocking);
        QFETCH(QString, fresh);
        QFETCH(QString, repeat);
        QFETCH(QString, log);
        QFETCH(bool, newHint);
        QFETCH(bool, repeatHint);
        const Page shown = page(unblocking);
        QVERIFY(flow->start(shown.card));
        flow->openPinPage(sim::Authentication);
        for (const char *name : { shown.newHint, shown.repeatHint, shown.otherPagesNewHint })
            flow->label(name)->hide();
        LogCatcher catcher;

        QCOMPARE(send(shown, fresh, repeat), 0);

        QCOMPARE(catcher.count("New and repeat pins"), log.isEmpty() ? 0 : 1);
        QVERIFY(catcher.has(log));
        QVERIFY(catcher.has(QString("Wrong validation of new and repeat pins (%1 PIN)").arg(shown.operation)));
        QCOMPARE(flow->label(shown.newHint)->isVisible(), newHint);
        QCOMPARE(flow->label(shown.repeatHint)->isVisible(), repeatHint);
        QVERIFY(flow->label(shown.otherPagesNewHint)->isHidden());
    }

    void digitsTakeAwayTheHintsOfBothPages_data() { addPages(); }
    void digitsTakeAwayTheHintsOfBothPages()
    {
        QFETCH(bool, unblocking);
        const Page shown = page(unblocking);
        QVERIFY(flow->start(shown.card));
        flow->openPinPage(sim::Authentication);
        for (const char *name : { shown.newHint, shown.otherPagesNewHint })
            flow->label(name)->show();

        QCOMPARE(send(shown, "4826", "4827"), 0);

        QVERIFY(flow->label(shown.newHint)->isHidden());
        QVERIFY(flow->label(shown.otherPagesNewHint)->isHidden());
    }

    // Those of the other page stay.
    void leavingTheChangeTakesItsHintsAway()
    {
        QVERIFY(flow->start("anna"));
        flow->openPinPage(sim::Authentication);
        const char *own[] = { "lActualPinInfo", "lNewPinInfo", "lRepeatPinInfo" };
        const char *others[] = { "lPinInfoPuk", "lNewPinInfoPuk", "lRepeatPinInfoPuk" };
        for (const auto &page : { own, others }) {
            for (int i = 0; i < 3; ++i)
                flow->label(page[i])->show();
        }

        flow->click("bCancel");

        for (const char *name : own)
            QVERIFY2(flow->label(name)->isHidden(), name);
        for (const char *name : others)
            QVERIFY2(!flow->label(name)->isHidden(), name);
    }

    // Also where the entry is refused for another reason.
    void equalRepetitionLooksGoodAgain_data() { addPages(); }
    void equalRepetitionLooksGoodAgain()
    {
        QFETCH(bool, unblocking);
        const Page shown = page(unblocking);
        QVERIFY(flow->start(shown.card));
        flow->openPinPage(sim::Authentication);
        flow->field(shown.repeatField)->setStyleSheet("color: red;");

        QCOMPARE(send(shown, "abcd", "abcd"), 0);

        QCOMPARE(flow->field(shown.repeatField)->styleSheet(),
                 QString("border-style: none;\nborder-radius:10px;padding: 10px;font-size: 16px;font-family: Poppins;"
                         "background: rgba(212, 214, 215, 70%);"));
    }

    // Whichever of them is filled in last.
    void buttonOfThePinPageIsToldOfEachField()
    {
        QVERIFY(flow->showCard("anna"));
        flow->window->chooseAuthenticationCertPIN();
        for (const QByteArray name :
             { "lineActualPin", "lineNewPin", "lineRepeatPin", "lineInsertPuk", "lineNewPinPuk", "lineRepeatPinPuk" }) {
            const bool unblocking = name.endsWith("Puk");
            QPushButton *button = flow->button(unblocking ? "bChangePinPuk" : "bChangePin");
            button->setEnabled(true);
            QVERIFY2(button->isEnabled(), name.constData());

            emit flow->find<QLineEdit>(name.constData())->textEdited({});

            QVERIFY2(!button->isEnabled(), name.constData());
        }
    }
};

VELMOR_TEST(TestWindowPinEntryChecks)
#include "tst_window_pin_entry_checks.moc"
