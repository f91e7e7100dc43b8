#include "support/pin_flow.h"

#include <QAccessible>

// A second after the page for the PUK the keypad takes over and the ways out go off, the focus with them if it is
// there. It is told where it has gone, and nothing is told if it stays.
class TestPinUnblockSpeech : public QObject {
    Q_OBJECT

private:
    static QStringList *told;

    std::unique_ptr<PinFlow> flow;
    std::unique_ptr<QSignalSpy> sent;
    QStringList heard;

    static void note(QAccessibleEvent *event)
    {
        if (event->type() == QAccessible::Focus)
            told->append(event->object()->objectName());
    }

    // On the page, and before the keypad.
    void openPage()
    {
        QVERIFY(flow->start("locked-authorization", true));
        flow->window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(flow->window.get()));
        sent = std::make_unique<QSignalSpy>(flow->window.get(), &Window::unblockPinSig);
        flow->openPinPage(sim::Authorization);
        QCOMPARE(QApplication::focusWidget(), flow->widget("lUnblockPinDetails"));
    }
    void keypadTakesOver()
    {
        heard.clear();
        const QAccessible::UpdateHandler before = QAccessible::installUpdateHandler(note);
        flow->window->waitToUnblockPin();
        QAccessible::installUpdateHandler(before);
    }

private slots:
    void initTestCase()
    {
        QAccessible::setActive(true);
        told = &heard;
    }
    void init() { flow = std::make_unique<PinFlow>(); }
    void cleanup()
    {
        // The delay of the page asks once more. Nobody is left at the keypad.
        if (sent) {
            QTRY_COMPARE(sent->size(), 2);
            for (int i = 0; i < 2; ++i)
                flow->answerAtPad(sim::PadAnswer::Kind::Cancel);
            QVERIFY(flow->waitForPage("pageCorrectChange"));
            QVERIFY(flow->waitForWorker());
        }
        sent.reset();
        flow.reset();
    }

    void focusThatGoesWithItsButtonIsToldWhereItIsNow()
    {
        openPage();
        flow->button("bSettings")->setFocus();

        keypadTakesOver();

        QVERIFY(!flow->button("bSettings")->isEnabled());
        QVERIFY(QApplication::focusWidget());
        QCOMPARE(heard, QStringList { QApplication::focusWidget()->objectName() });
    }

    void focusThatStaysIsNotToldAgain()
    {
        openPage();

        keypadTakesOver();

        QCOMPARE(QApplication::focusWidget(), flow->widget("lUnblockPinDetails"));
        QCOMPARE(heard, QStringList());
    }
};

QStringList *TestPinUnblockSpeech::told = nullptr;

VELMOR_TEST(TestPinUnblockSpeech)
#include "tst_pin_unblock_speech_linux.moc"
