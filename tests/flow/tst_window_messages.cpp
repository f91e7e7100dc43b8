#include "base/ipc_msg.h"

#include "support/flow.h"
#include "support/raw_inbox.h"

#include <QTextBrowser>

// What the window does with the messages of its siblings, and the bytes of what it sends them.
class TestWindowMessages : public QObject {
    Q_OBJECT

private:
    static constexpr int segmentSize = 500;

    std::unique_ptr<Flow> flow;

    // Straight to the slot, without a transport.
    void receive(IpcMsg message)
    {
        message.setTo("velmor_manager");
        flow->window->recvIpcMsg(message);
    }

    bool backShown() const { return !flow->widget("bWroc")->isHidden(); }
    void goTo(const char *page) { flow->find<QStackedWidget>("pager")->setCurrentWidget(flow->widget(page)); }

private slots:
    void initTestCase() { Flow::setUpApplication(); }

    void init() { flow = std::make_unique<Flow>(); }
    void cleanup() { flow.reset(); }

    void messageForAnotherAddressDoesNothingAtAll_data()
    {
        QTest::addColumn<QByteArray>("to");
        QTest::newRow("another segment") << QByteArray("velmor_monitor");
        QTest::newRow("with a path") << QByteArray("velmor_manager/x");
        QTest::newRow("bare id") << QByteArray("Manager");
        QTest::newRow("none") << QByteArray();
    }
    void messageForAnotherAddressDoesNothingAtAll()
    {
        QFETCH(QByteArray, to);
        flow->openWindow();
        LogCatcher log;
        flow->window->recvIpcMsg(IpcMsg { { "to", to }, { "close", 1 }, { "nonsense", 1 }, { "readers", "NO_CARD" } });
        QVERIFY2(log.lines().isEmpty(), qPrintable(log.text()));
        QVERIFY(flow->window->isVisible());
    }

    void unknownKeysAreLoggedAndTheOthersTreated()
    {
        flow->openWindow();
        LogCatcher log;
        receive(IpcMsg { { "aaa", 1 }, { "readers", "NO_CARD" }, { "zzz", 2 } });
        QCOMPARE(log.lines().filter("unknown ipc"), (QStringList { "unknown ipc  aaa", "unknown ipc  zzz" }));
        QCOMPARE(flow->readersBox()->currentText(), QString("brak karty w czytniku"));
    }

    // Else a key could write lines of its own into the log.
    void unprintableKeyIsLoggedInHexadecimal()
    {
        flow->openWindow();
        LogCatcher log;
        receive(IpcMsg { { "a\nb", 1 } });
        QCOMPARE(log.lines().filter("unknown ipc"), QStringList("unknown ipc  610a62"));
    }

    void knownButUnusedKeysAreIgnoredWithoutAWord_data()
    {
        QTest::addColumn<QByteArray>("key");
        for (const char *key : { "canAppStatus", "isCard", "isPACE", "isr" })
            QTest::newRow(key) << QByteArray(key);
    }
    void knownButUnusedKeysAreIgnoredWithoutAWord()
    {
        QFETCH(QByteArray, key);
        flow->openWindow();
        LogCatcher log;
        receive(IpcMsg { { key, "canClosed" } });
        QVERIFY2(log.lines().isEmpty(), qPrintable(log.text()));
    }

    void canOfAMessageIsNotLogged()
    {
        flow->openWindow();
        LogCatcher log;
        receive(IpcMsg { { "checkCan", "274951" }, { "setCanToVerify", "274951" }, { "setCanVerified", "274951" } });
        QCOMPARE(log.count("unknown ipc"), 3);
        QVERIFY2(!log.has("274951"), qPrintable(log.text()));
    }

    void nothingIsEverAnswered()
    {
        RawInbox monitor("velmor_monitor", segmentSize);
        flow->openWindow();
        receive(IpcMsg { { "from", "velmor_monitor" }, { "isCard", 1 }, { "readers", "NO_CARD" }, { "reply", "1" } });
        QVERIFY(monitor.isFree());
    }

    void messageWithoutCommandsIsNeitherAnsweredNorLogged()
    {
        RawInbox monitor("velmor_monitor", segmentSize);
        flow->openWindow();
        LogCatcher log;
        receive(IpcMsg { { "from", "velmor_monitor" } });
        QVERIFY(monitor.isFree());
        QVERIFY2(log.lines().isEmpty(), qPrintable(log.text()));
    }

    // close

    void closeEndsTheWindowAndDropsTheOtherKeys()
    {
        flow->openWindow();
        LogCatcher log;
        QSignalSpy popups(flow->window.get(), &Window::closePopups);

        receive(IpcMsg { { "close", "whatever" }, { "readers", "NO_CARD" }, { "unknown", 1 } });

        QVERIFY(log.has("Close from ipc"));
        QVERIFY(popups.count() >= 1);
        QTRY_VERIFY(!flow->window->isVisible());
        QVERIFY(!log.has("unknown ipc"));
        QVERIFY(!log.has("Loading readers from ipc"));
        QCOMPARE(log.count("closeTheards()"), 1);
    }

    void closeTreatsTheKeysInFrontOfIt()
    {
        flow->openWindow();
        LogCatcher log;
        receive(IpcMsg { { "canAppStatus", "" }, { "checkForUpdate", 1 }, { "close", 1 } });
        QVERIFY(log.has("Checking for Kzr update"));
        QTRY_VERIFY(!flow->window->isVisible());
    }

    void closeAfterTheWorkersEndIsImmediate()
    {
        flow->openWindow();
        flow->window->closeTheards();
        LogCatcher log;
        receive(IpcMsg { { "close", 1 } });
        QVERIFY(!flow->window->isVisible());
        QVERIFY(!log.has("closeTheards()"));
    }

    // The pinpad's refusal is for the user alone.
    void closeIsNotRefusedDuringAPinpadOperation()
    {
        flow->world.addReader("Czytnik Alfa", true);
        QVERIFY(flow->showCard("anna"));
        goTo("pageChangePin");
        receive(IpcMsg { { "close", 1 } });
        QTRY_VERIFY(!flow->window->isVisible());
    }

    // windowFocus

    void focusOnAWorkingPageOnlyRaises_data()
    {
        QTest::addColumn<QByteArray>("page");
        for (const char *page : { "pageHome", "pageChangePin", "pageUnblockPin", "pageAllData", "pageCertInfo",
                                  "pageDisconected", "pageIntegration" })
            QTest::newRow(page) << QByteArray(page);
    }
    void focusOnAWorkingPageOnlyRaises()
    {
        QFETCH(QByteArray, page);
        flow->openWindow();
        goTo(page.constData());
        flow->window->showMinimized();
        LogCatcher log;
        receive(IpcMsg { { "windowFocus", 1 } });
        QCOMPARE(log.lines().last(), QString("Show window called"));
        QVERIFY(!log.has("Move to home page"));
        QVERIFY(!flow->window->isMinimized());
        QCOMPARE(flow->page().toUtf8(), page);
    }

    void focusMakesTheWindowTheActiveOne()
    {
        flow->openWindow();
        QWidget other;
        other.show();
        other.activateWindow();
        QTRY_VERIFY(other.isActiveWindow());

        receive(IpcMsg { { "windowFocus", 1 } });

        QTRY_VERIFY(flow->window->isActiveWindow());
    }

    void focusOnTheOpeningPageWithoutAReaderAsksForReaders()
    {
        RawInbox monitor("velmor_monitor", segmentSize);
        flow->openWindow();
        LogCatcher log;
        receive(IpcMsg { { "windowFocus", 1 } });
        QVERIFY(log.has("Move to home page"));
        QVERIFY(log.has("no reader go to disconnect page"));
        // That asks for them already.
        QVERIFY(!log.has("new readers page refresh"));
        QVERIFY(log.has("reader checked "));
        QVERIFY(log.has("Show window called"));
        QVERIFY(!monitor.isFree());
        QCOMPARE(flow->page(), QString("pageSettings"));
    }

    void focusOnSettingsOrHelpWithAReaderGoesHome_data()
    {
        QTest::addColumn<QByteArray>("page");
        QTest::newRow("settings") << QByteArray("pageSettings");
        QTest::newRow("help") << QByteArray("pageHelp");
    }
    void focusOnSettingsOrHelpWithAReaderGoesHome()
    {
        QFETCH(QByteArray, page);
        QVERIFY(flow->showCard("anna"));
        goTo(page.constData());
        LogCatcher log;
        receive(IpcMsg { { "windowFocus", 1 } });
        QVERIFY(log.has("new readers page refresh"));
        QCOMPARE(flow->page(), QString("pageHome"));
    }

    void focusLeavesAPageWithABackButton()
    {
        QVERIFY(flow->showCard("anna"));
        goTo("pageSettings");
        flow->widget("bWroc")->show();
        receive(IpcMsg { { "windowFocus", 1 } });
        QCOMPARE(flow->page(), QString("pageSettings"));
    }

    // settings, help

    void settingsOpensItsPageAndRaises()
    {
        QVERIFY(flow->showCard("anna"));
        flow->window->showMinimized();
        receive(IpcMsg { { "settings", "" } });
        QCOMPARE(flow->page(), QString("pageSettings"));
        QVERIFY(!flow->window->isMinimized());
        // As from the footer, not as at the start.
        QVERIFY(backShown());
    }

    void helpAsksTheMonitorOnceAndRaises()
    {
        RawInbox monitor("velmor_monitor", segmentSize);
        flow->openWindow();
        flow->window->showMinimized();
        LogCatcher log;
        receive(IpcMsg { { "help", "" } });
        QCOMPARE(log.count("show help"), 1);
        QVERIFY(!flow->window->isMinimized());
        // A second question would have waited for the first to be read.
        QVERIFY(!log.has("send failed"));
        QCOMPARE(monitor.text(),
                 QByteArray("<diagnoseReaders>1</diagnoseReaders><from>velmor_manager</from><to>velmor_monitor</to>"));
    }

    // Unasked and without end: what is shown is bounded, and says that there was more.
    void diagnosisIsBoundedAtEachVisit()
    {
        flow->openWindow();
        flow->window->moveToHelpPage();
        const auto *report = flow->find<QTextEdit>("tDiagnosticsRaport");
        const QString line = "Dalsza diagnostyka czytników została pominięta.";
        const int before = report->toPlainText().size();
        const QByteArray text(4000, 'x');
        for (int i = 0; i < 16; ++i)
            receive(IpcMsg { { "diagnoseReaders", text } });
        QVERIFY(!report->toPlainText().contains(line));

        for (int i = 0; i < 40; ++i)
            receive(IpcMsg { { "diagnoseReaders", text } });

        QCOMPARE(report->toPlainText().count(line), 1);
        QVERIFY(report->toPlainText().size() - before <= 64 * 1024 + 200);
        // The next visit shows it anew.
        flow->window->getSystemInfo();
        receive(IpcMsg { { "diagnoseReaders", "Czytnik Alfa" } });
        QVERIFY(!report->toPlainText().contains(line));
        QVERIFY(report->toPlainText().endsWith("Czytnik Alfa"));
    }

    // Each text counts with its line's end.
    void diagnosisUpToTheBoundIsShown()
    {
        flow->openWindow();
        flow->window->moveToHelpPage();
        const auto *report = flow->find<QTextEdit>("tDiagnosticsRaport");
        constexpr int bound = 64 * 1024;
        for (const int last : { bound - 1, bound }) {
            flow->window->getSystemInfo();
            receive(IpcMsg { { "diagnoseReaders", QByteArray(999, 'x') } });
            receive(IpcMsg { { "diagnoseReaders", QByteArray(last - 1000, 'y') } });
            QCOMPARE(report->toPlainText().contains("Dalsza diagnostyka"), last == bound);
        }
    }

    void diagnosisIsAppendedLineByLineAndEnablesTheButtons()
    {
        flow->openWindow();
        auto *report = flow->find<QTextBrowser>("tDiagnosticsRaport");
        report->setText("Raport");
        flow->button("bDiagnosticStart")->setEnabled(false);
        flow->button("bHelp")->setEnabled(false);
        receive(IpcMsg { { "diagnoseReaders", "Czytników: 2\n- Zażółć" } });
        QCOMPARE(report->toPlainText(), QString("Raport\n\nCzytników: 2\n- Zażółć"));
        QVERIFY(flow->button("bDiagnosticStart")->isEnabled());
        QVERIFY(flow->button("bHelp")->isEnabled());
    }

    // What is sent about readers and the CAN

    void readerQueryHasTheseBytes()
    {
        RawInbox monitor("velmor_monitor", segmentSize);
        flow->openWindow();
        flow->window->getReadersFromMonitor();
        QCOMPARE(monitor.text(),
                 QByteArray("<from>velmor_manager</from><getReadersWithPace>1</getReadersWithPace>"
                            "<to>velmor_monitor</to>"));
    }

    void canWordsFollowTheProgramThatAsksForIt_data()
    {
        QTest::addColumn<bool>("running");
        QTest::addColumn<QString>("status");
        QTest::addColumn<QString>("message");
        const QString waiting = "Oczekiwanie na wprowadzenie numeru CAN";
        const QString again = "Zdejmij i przyłóż ponownie velmor do czytnika";
        QTest::newRow("runs") << true << "" << waiting;
        QTest::newRow("runs, another word") << true << "canOpened" << waiting;
        QTest::newRow("closed by the user") << true << "canClosed" << again;
        QTest::newRow("does not run") << false << "" << again;
        QTest::newRow("does not run, another word") << false << "canOpened" << again;
    }
    void canWordsFollowTheProgramThatAsksForIt()
    {
        QFETCH(bool, running);
        QFETCH(QString, status);
        QFETCH(QString, message);
        std::unique_ptr<RawInbox> can;
        if (running)
            can = std::make_unique<RawInbox>("velmor_can", segmentSize);
        flow->openWindow();
        goTo("pageDisconected");

        receive(IpcMsg { { "readers", "WAIT_CAN" }, { "canAppStatus", status } });

        QCOMPARE(flow->label("lDisconnect")->text(), "Brak połączenia \n" + message);
        QCOMPARE(flow->readersBox()->currentText(), QString("brak połączenia z kartą"));
        QVERIFY(flow->widget("frameReaders")->isHidden());
        if (running)
            QCOMPARE(can->text(),
                     QByteArray("<closePopup>1</closePopup><from>velmor_manager</from><to>velmor_can</to>"
                                "<windowFocus>1</windowFocus>"));
    }

    void programThatAsksForTheCanComesToTheFrontEachTime()
    {
        RawInbox can("velmor_can", segmentSize);
        flow->openWindow();
        for (const char *page : { "pageDisconected", "pageDisconected", "pageHome" }) {
            goTo(page);
            can.clear();
            receive(IpcMsg { { "readers", "WAIT_CAN" } });
            QCOMPARE(can.text(),
                     QByteArray("<closePopup>1</closePopup><from>velmor_manager</from><to>velmor_can</to>"
                                "<windowFocus>1</windowFocus>"));
        }
    }

    void knownProblemsDoNotDisturbTheProgramThatAsksForTheCan()
    {
        RawInbox can("velmor_can", segmentSize);
        flow->openWindow();
        goTo("pageDisconected");
        for (const char *word : { "NO_READER", "NO_CARD", "NO_SUPPORTED_CARD" })
            receive(IpcMsg { { "readers", word } });
        QVERIFY(can.isFree());
    }
};

VELMOR_TEST(TestWindowMessages)
#include "tst_window_messages.moc"
