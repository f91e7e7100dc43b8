#include "support/pin_flow.h"

// One wish, one operation: double clicks, Enter held down, clicks while busy, and answers that come when nobody waits.
class TestPinOnce : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<PinFlow> flow;

    int logins() const { return flow->calls().filter("C_Login").size(); }

    void readyToChange()
    {
        flow->openPinPage(sim::Authentication);
        flow->typeChange("1234", "4826", "4826");
        flow->world.clearTrace();
    }
    void readyToUnblock()
    {
        flow->openPinPage(sim::Authorization);
        flow->typeUnblock(PinFlow::puk, "482615", "482615");
        flow->world.clearTrace();
    }
    void ready(const QString &operation)
    {
        QVERIFY(flow->start(operation == "change" ? "anna" : "locked-authorization"));
        if (operation == "change")
            readyToChange();
        else
            readyToUnblock();
    }

    static void operations()
    {
        QTest::addColumn<QString>("operation");
        QTest::addColumn<QByteArray>("button");
        QTest::newRow("change") << "change" << QByteArray("bChangePin");
        QTest::newRow("unblock") << "unblock" << QByteArray("bChangePinPuk");
    }

    // As the window system delivers them: to whatever lies under the pointer, or has the focus, by then.
    void pressWhereItWas(QWidget *button, QEvent::Type type)
    {
        const QPoint place = button->mapTo(flow->window.get(), button->rect().center());
        QWidget *under = flow->window->childAt(place);
        if (!under)
            return;
        const QPoint inside = under->mapFrom(flow->window.get(), place);
        for (const QEvent::Type each : { type, QEvent::MouseButtonRelease }) {
            QMouseEvent event(each, inside, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(under, &event);
        }
    }
    static void holdKey(int key, int repeats)
    {
        for (int i = 0; i < repeats; ++i) {
            QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, key == Qt::Key_Space ? " " : "\r", i > 0);
            QCoreApplication::sendEvent(QApplication::focusWidget(), &press);
            QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, {}, i + 1 < repeats);
            if (QApplication::focusWidget())
                QCoreApplication::sendEvent(QApplication::focusWidget(), &release);
            QCoreApplication::processEvents();
        }
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<PinFlow>(); }
    void cleanup() { flow.reset(); }

    void doubleClick_data() { operations(); }
    void doubleClick()
    {
        QFETCH(QByteArray, button);
        QFETCH(QString, operation);
        ready(operation);
        QPushButton *pressed = flow->button(button.constData());

        pressWhereItWas(pressed, QEvent::MouseButtonPress);
        pressWhereItWas(pressed, QEvent::MouseButtonDblClick);
        pressWhereItWas(pressed, QEvent::MouseButtonPress);

        QVERIFY(flow->waitForPage("pageCorrectChange"));
        QVERIFY(flow->waitForWorker());
        QCOMPARE(logins(), 1);
        QCOMPARE(flow->page(), QString("pageCorrectChange"));
    }

    void keyHeldDown_data()
    {
        QTest::addColumn<QString>("operation");
        QTest::addColumn<QByteArray>("button");
        QTest::addColumn<int>("key");
        QTest::newRow("change, Enter") << "change" << QByteArray("bChangePin") << int(Qt::Key_Return);
        QTest::newRow("change, Enter of the digits") << "change" << QByteArray("bChangePin") << int(Qt::Key_Enter);
        QTest::newRow("change, blank") << "change" << QByteArray("bChangePin") << int(Qt::Key_Space);
        QTest::newRow("unblock, Enter") << "unblock" << QByteArray("bChangePinPuk") << int(Qt::Key_Return);
        QTest::newRow("unblock, blank") << "unblock" << QByteArray("bChangePinPuk") << int(Qt::Key_Space);
    }
    void keyHeldDown()
    {
        QFETCH(QByteArray, button);
        QFETCH(QString, operation);
        QFETCH(int, key);
        ready(operation);
        flow->button(button.constData())->setFocus();

        holdKey(key, 40);

        QVERIFY(flow->waitForPage("pageCorrectChange"));
        holdKey(key, 40);
        QVERIFY(flow->waitForWorker());
        QCOMPARE(logins(), 1);
        QCOMPARE(flow->page(), QString("pageCorrectChange"));
    }

    void enterHeldDownFromTheHomePageOpensThePageAndNoMore()
    {
        QVERIFY(flow->start("anna"));
        flow->world.clearTrace();
        flow->button("bChangePinAuthenCert")->setFocus();

        holdKey(Qt::Key_Return, 40);

        QCOMPARE(flow->page(), QString("pageChangePin"));
        QCOMPARE(QApplication::focusWidget(), flow->widget("lineActualPin"));
        QCOMPARE(logins(), 0);
    }

    void slotsAreDeafWhileAnOperationRuns_data() { operations(); }
    void slotsAreDeafWhileAnOperationRuns()
    {
        QFETCH(QByteArray, button);
        QFETCH(QString, operation);
        ready(operation);
        QVERIFY(flow->world.block("C_Login"));
        QSignalSpy changes(flow->window.get(), &Window::changePinSig);
        QSignalSpy unblocks(flow->window.get(), &Window::unblockPinSig);
        flow->click(button.constData());
        QVERIFY(flow->waitForPad());

        for (int i = 0; i < 5; ++i) {
            flow->window->changePin();
            flow->window->unblockPin();
            flow->window->chooseAuthenticationCertPIN();
            flow->window->chooseQualifiedCertPIN();
        }

        flow->world.release();
        QVERIFY(flow->waitForPage("pageCorrectChange"));
        QCOMPARE(changes.size() + unblocks.size(), 1);
        QVERIFY(flow->waitForWorker());
        QCOMPARE(logins(), 1);
    }

    // Whoever presses again on a page that stands after an answer without a meaning sends nothing: the repetition went
    // with the first press.
    void pressAfterAnAnswerWithoutMeaningIsRefused()
    {
        QVERIFY(flow->start("anna"));
        readyToChange();
        sim::Fault gone;
        gone.function = "C_Login";
        gone.result = 0x200;
        QVERIFY(flow->world.addFault(gone));
        QSignalSpy sent(flow->window.get(), &Window::changePinSig);
        flow->button("bChangePin")->click();
        flow->window->changePinFin(-3);

        flow->click("bChangePin");

        QCOMPARE(sent.size(), 1);
        QCOMPARE(QApplication::focusWidget(), flow->widget("lineRepeatPin"));
        QVERIFY(flow->waitForPage("pageCorrectChange"));
    }

    // The delay is the exception: nothing cancels it, so what starts it twice asks twice.
    void delayBeforeTheKeypadIsNotGuarded()
    {
        QVERIFY(flow->start("locked-authorization", true));
        QSignalSpy sent(flow->window.get(), &Window::unblockPinSig);
        flow->openPinPage(sim::Authorization);
        flow->window->moveToHomePage();
        flow->openPinPage(sim::Authorization);

        QTRY_COMPARE_WITH_TIMEOUT(sent.size(), 2, 4000);

        flow->answerAtPad(sim::PadAnswer::Kind::Cancel);
        flow->answerAtPad(sim::PadAnswer::Kind::Cancel);
        QVERIFY(flow->waitForWorker());
    }
};

VELMOR_TEST(TestPinOnce)
#include "tst_pin_once.moc"
