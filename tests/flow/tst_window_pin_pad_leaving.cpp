#include "support/pin_flow.h"

#include "base/ipc_msg.h"

#include <QDialogButtonBox>
#include <QTimer>

// The ways out of a PIN operation at the keypad: the delay before it that nothing cancels, and the closing of the
// program, which is refused.
class TestWindowPinPadLeaving : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<PinFlow> flow;

    bool on(const char *button) const { return flow->button(button)->isEnabled(); }

    // Presses the dialog's only button, and notes what it said.
    void closeNextDialog()
    {
        QTimer::singleShot(0, flow->window.get(), [this] {
            QWidget *dialog = QApplication::activeModalWidget();
            if (!dialog) {
                closeNextDialog();
                return;
            }
            dialogTitle = dialog->findChild<QLabel *>("lMainTitle")->text();
            dialogText = dialog->findChild<QLabel *>("lText")->text();
            dialogButtons = dialog->findChild<QDialogButtonBox *>("buttonBox")->standardButtons();
            QTest::mouseClick(dialog->findChild<QDialogButtonBox *>("buttonBox")->button(QDialogButtonBox::Close),
                              Qt::LeftButton);
        });
    }
    QString dialogTitle;
    QString dialogText;
    QDialogButtonBox::StandardButtons dialogButtons;

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init()
    {
        flow = std::make_unique<PinFlow>();
        dialogTitle.clear();
    }
    void cleanup()
    {
        // Whoever still waits at the keypad goes away from it.
        for (int i = 0; i < 3; ++i)
            flow->answerAtPad(sim::PadAnswer::Kind::Cancel);
        flow.reset();
    }

    // Messages are not held up by the keypad: they change what is shown, and the answer still comes.
    void messageDuringTheWaitIsFollowed_data()
    {
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<QString>("page");
        QTest::newRow("readers") << QByteArray("readers") << QByteArray("0:Czytnik Alfa||1:Czytnik Beta||")
                                 << "pageChangePin";
        QTest::newRow("settings") << QByteArray("settings") << QByteArray("1") << "pageSettings";
        QTest::newRow("help") << QByteArray("help") << QByteArray("1") << "pageHelp";
    }
    void messageDuringTheWaitIsFollowed()
    {
        QFETCH(QByteArray, command);
        QFETCH(QByteArray, value);
        QVERIFY(flow->start("anna", true));
        flow->openPinPage(sim::Authentication);
        QVERIFY(flow->waitForPad());

        flow->window->recvIpcMsg(IpcMsg { { "to", "velmor_manager" }, { command, value } });

        QTEST(flow->page(), "page");
        QVERIFY(flow->widget("bWroc")->isVisible());
        QCOMPARE(flow->world.waitingCalls(), 1);
        flow->answerAtPad(sim::PadAnswer::Kind::Cancel);
        QVERIFY(flow->waitForPage("pageCorrectChange"));
        QVERIFY(flow->showsChange(CardResult::cancelled));
    }

    void nothingCancelsTheDelay()
    {
        QVERIFY(flow->start("locked-authorization", true));
        QSignalSpy sent(flow->window.get(), &Window::unblockPinSig);
        flow->openPinPage(sim::Authorization);

        flow->window->moveToHomePage();

        QTRY_COMPARE_WITH_TIMEOUT(sent.size(), 1, 3000);
        QCOMPARE(flow->page(), QString("pageHome"));
        QVERIFY(!on("bSettings"));
    }

    // What lets the user away from the reader comes back during the delay, and goes at its end.
    void endOfTheDelayClosesTheWaysOut()
    {
        QVERIFY(flow->start("locked-authorization", true));
        QVERIFY(flow->world.addReader("Czytnik Beta"));
        flow->window->loadedReaders({ "Czytnik Alfa", "Czytnik Beta" });
        QSignalSpy sent(flow->window.get(), &Window::unblockPinSig);
        flow->openPinPage(sim::Authorization);
        flow->window->recvIpcMsg(
            IpcMsg { { "to", "velmor_manager" }, { "readers", "0:Czytnik Alfa||1:Czytnik Beta||2:Czytnik Gamma||" } });
        flow->readersBox()->setEnabled(true);
        QCOMPARE(flow->page(), QString("pageUnblockPin"));
        QVERIFY(flow->widget("bWroc")->isVisible());
        QVERIFY(on("bSettings") && on("bHelp"));
        QCOMPARE(sent.size(), 0);

        QTRY_COMPARE_WITH_TIMEOUT(sent.size(), 1, 3000);

        QVERIFY(flow->widget("bWroc")->isHidden());
        QVERIFY(!flow->readersBox()->isEnabled());
        QVERIFY(!on("bSettings") && !on("bHelp"));
    }

    void pukBlockedDuringTheDelayIsNotAskedFor_data()
    {
        QTest::addColumn<int>("pukTries");
        QTest::newRow("no tries") << 0;
        QTest::newRow("without a counter") << 4;
    }
    void pukBlockedDuringTheDelayIsNotAskedFor()
    {
        QFETCH(int, pukTries);
        QVERIFY(flow->start("locked-authorization", true));
        QSignalSpy sent(flow->window.get(), &Window::unblockPinSig);
        flow->openPinPage(sim::Authorization);
        flow->window->refreshCertsStatus("Zmień PIN", "Odblokuj PIN", "Zmień PIN", 3, 0, pukTries, 3);
        LogCatcher log;

        QTRY_COMPARE_WITH_TIMEOUT(flow->page(), QString("pageBlockedPuk_2"), 3000);

        QCOMPARE(sent.size(), 0);
        QVERIFY(log.lines().contains("PUK is blocked! tries left= " + QString::number(pukTries)));
        flow->click("bWrocPuk");
        QVERIFY(on("bSettings") && on("bHelp"));
    }

    void bothNamesOfTheDelaysEndDoTheSame()
    {
        QVERIFY(flow->start("locked-authorization", true));
        flow->openPinPage(sim::Authorization);
        QVERIFY(flow->waitForPad());
        QSignalSpy sent(flow->window.get(), &Window::unblockPinSig);
        flow->window->waitToUnblockPin();
        flow->window->unblockPinPad();
        QCOMPARE(sent.size(), 2);
        QCOMPARE(sent.at(0), sent.at(1));
        for (int i = 0; i < 3; ++i)
            flow->answerAtPad(sim::PadAnswer::Kind::Cancel);
        QVERIFY(flow->waitForWorker());
    }

    void closingIsRefusedWhileThePadIsInUse_data()
    {
        QTest::addColumn<QString>("card");
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("change") << "anna" << QByteArray("Authentication");
        QTest::newRow("unblock") << "locked-authorization" << QByteArray("Authorization");
        QTest::newRow("first PIN") << "first-pin" << QByteArray("Qualified");
    }
    void closingIsRefusedWhileThePadIsInUse()
    {
        QFETCH(QString, card);
        QFETCH(QByteArray, name);
        QVERIFY(flow->start(card.toStdString(), true));
        flow->openPinPage(name);
        QVERIFY(flow->waitForPad());
        closeNextDialog();

        flow->click("bClose");

        QCOMPARE(dialogTitle, QString("Zamykanie aplikacji"));
        QCOMPARE(dialogText,
                 QString("<p style='line-height:18px'><br/><nobr>Zakończ najpierw operację na czytniku z "
                         "pinpadem.</nobr><br/></p>"));
        QCOMPARE(dialogButtons, QDialogButtonBox::StandardButtons(QDialogButtonBox::Close));
        QVERIFY(flow->window->isVisible());
        QVERIFY(!flow->loaderShown());
        QCOMPARE(flow->world.waitingCalls(), 1);

        // The operation goes on as if nothing had been.
        flow->answerAtPad(sim::PadAnswer::Kind::Cancel);
        QVERIFY(flow->waitForPage("pageCorrectChange"));
    }

    void closingWithoutAPinpadIsNotRefused()
    {
        QVERIFY(flow->start("anna"));
        flow->openPinPage(sim::Authentication);

        flow->click("bClose");

        QTRY_VERIFY_WITH_TIMEOUT(!flow->window->isVisible(), 5000);
        QVERIFY(dialogTitle.isEmpty());
        flow->window.reset();
    }
};

VELMOR_TEST(TestWindowPinPadLeaving)
#include "tst_window_pin_pad_leaving.moc"
