#include "base/ipc_msg.h"

#include "support/flow.h"
#include "support/raw_inbox.h"

// The reader lists that the Monitor pushes: when the card is read anew, when only the list is, and when the user is
// left alone until the way home.
class TestWindowMessagesReaders : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Flow> flow;

    void receiveReaders(const QByteArray &value)
    {
        flow->window->recvIpcMsg(IpcMsg { { "to", "velmor_manager" }, { "readers", value } });
    }
    void goTo(const QByteArray &page)
    {
        flow->find<QStackedWidget>("pager")->setCurrentWidget(flow->widget(page.constData()));
    }
    bool backShown() const { return !flow->widget("bWroc")->isHidden(); }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<Flow>(); }
    void cleanup() { flow.reset(); }

    // With a card of "Czytnik Alfa" on the screen.
    void listDecidesByPage_data()
    {
        QTest::addColumn<QByteArray>("page");
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<QString>("outcome");
        const QString reload = "load new readers";
        const QString later = "New reders detected | current page: ";
        const QString apply = "Loading readers from ipc:";
        const struct {
            const char *name;
            const char *page;
            const char *value;
            QString outcome;
        } rows[] = {
            { "same list at home", "pageHome", "0:Czytnik Alfa||", apply },
            { "same list, cut at its mark", "pageHome", "12:Czytnik Alfa #1||", apply },
            { "one more reader at home", "pageHome", "0:Czytnik Alfa||1:Czytnik Beta||", apply },
            { "another reader at home", "pageHome", "0:Czytnik Beta||", reload },
            { "empty list at home", "pageHome", "||", reload },
            { "no value at home", "pageHome", "", reload },
            { "error at home", "pageHome", "NO_CARD", apply },
            { "one reader and no mark is an error word", "pageHome", "0:Czytnik Alfa", apply },
            { "same list on the data page", "pageAllData", "0:Czytnik Alfa||", later },
            { "one more reader on the data page", "pageAllData", "0:Czytnik Alfa||1:Czytnik Beta||", later },
            { "reader gone on the data page", "pageAllData", "0:Czytnik Beta||", reload },
            { "error on the data page", "pageAllData", "NO_CARD", apply },
            { "same list on a PIN page", "pageChangePin", "0:Czytnik Alfa||", later },
            { "another reader on the settings page", "pageSettings", "0:Czytnik Beta||", later },
            { "another reader on the help page", "pageHelp", "0:Czytnik Beta||", later },
            { "error on the settings page", "pageSettings", "NO_CARD", apply },
            { "error on the help page", "pageHelp", "NO_CARD", apply },
            { "same list without electronic layer", "pageNoElectricLayer", "0:Czytnik Alfa||", reload },
            { "error without electronic layer", "pageNoElectricLayer", "NO_CARD", apply },
            { "same list on the page without connection", "pageDisconected", "0:Czytnik Alfa||", apply },
        };
        for (const auto &row : rows)
            QTest::newRow(row.name) << QByteArray(row.page) << QByteArray(row.value) << row.outcome;
    }
    void listDecidesByPage()
    {
        QFETCH(QByteArray, page);
        QFETCH(QByteArray, value);
        QFETCH(QString, outcome);
        QVERIFY(flow->showCard("anna"));
        goTo(page);
        LogCatcher log;

        receiveReaders(value);

        QVERIFY2(log.lines().first().startsWith(outcome), qPrintable(log.text()));
    }

    // Without any reader in the box.
    void firstListDecidesByPage_data()
    {
        QTest::addColumn<QByteArray>("page");
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<QString>("outcome");
        QTest::newRow("opening page") << QByteArray("pageSettings") << QByteArray("0:Czytnik Alfa||")
                                      << "New reders detected | current page: ";
        QTest::newRow("no connection") << QByteArray("pageDisconected") << QByteArray("0:Czytnik Alfa||")
                                       << "load new readers";
        QTest::newRow("no connection, no value")
            << QByteArray("pageDisconected") << QByteArray() << "Loading readers from ipc:";
        QTest::newRow("no connection, error")
            << QByteArray("pageDisconected") << QByteArray("NO_READER") << "Loading readers from ipc:";
    }
    void firstListDecidesByPage()
    {
        QFETCH(QByteArray, page);
        QFETCH(QByteArray, value);
        QFETCH(QString, outcome);
        flow->openWindow();
        goTo(page);
        LogCatcher log;
        receiveReaders(value);
        QVERIFY2(log.lines().first().startsWith(outcome), qPrintable(log.text()));
    }

    // Such a name stands for no reader in the box, so the list brings the first one each time.
    void readerNamedLikeAMissingOneIsLookedForAgain()
    {
        flow->openWindow();
        flow->window->loadedReaders({ "Brak" });
        goTo("pageHome");
        QCOMPARE(flow->readersBox()->currentText(), QString("Brak"));
        LogCatcher log;

        receiveReaders("0:Brak||");

        // The worker may have a word in between.
        QVERIFY2(log.has("load new readers"), qPrintable(log.text()));
    }

    void reloadReadsTheCardFromTheStart()
    {
        QVERIFY(flow->showCard("anna"));
        flow->world.insertCard("Czytnik Beta", "jan");
        flow->world.removeReader("Czytnik Alfa");
        const QString before = flow->label("lsurnameVal")->text();

        receiveReaders("0:Czytnik Beta||");

        QVERIFY(flow->waitForCard());
        QCOMPARE(flow->readersBox()->currentText(), QString("Czytnik Beta"));
        QVERIFY(flow->label("lsurnameVal")->text() != before);
        QVERIFY(!backShown());
    }

    void sameListAtHomeDoesNotReadTheCardAgain()
    {
        QVERIFY(flow->showCard("anna"));
        flow->world.clearTrace();
        receiveReaders("0:Czytnik Alfa||");
        QTest::qWait(50);
        QCOMPARE(flow->calls(), QStringList());
    }

    void changeDuringOtherWorkShowsTheWayBackAndAsksOnIt()
    {
        RawInbox monitor("velmor_monitor", 500);
        QVERIFY(flow->showCard("anna"));
        monitor.clear();
        goTo("pageAllData");
        QVERIFY(!backShown());

        receiveReaders("0:Czytnik Alfa||1:Czytnik Beta||");

        QVERIFY(backShown());
        QCOMPARE(flow->page(), QString("pageAllData"));
        QCOMPARE(flow->readersBox()->count(), 1);
        flow->world.clearTrace();
        flow->button("bWroc")->click();
        QCOMPARE(flow->page(), QString("pageHome"));
        QVERIFY(monitor.text().contains("getReadersWithPace"));
        // The answer refreshes the list and leaves the card alone.
        receiveReaders("0:Czytnik Alfa||1:Czytnik Beta||");
        QCOMPARE(flow->readersBox()->count(), 2);
        QTest::qWait(50);
        QCOMPARE(flow->calls(), QStringList());
        // Once is enough.
        monitor.clear();
        flow->window->moveToHomePage();
        QVERIFY(monitor.isFree());
    }

    void changeDuringOtherWorkIsLoggedWithTheTitlesOfThePage()
    {
        QVERIFY(flow->showCard("anna"));
        flow->button("bArrowAuthenCert")->click();
        QCOMPARE(flow->page(), QString("pageCertInfo"));
        LogCatcher log;
        receiveReaders("0:Czytnik Alfa||");
        QCOMPARE(log.lines(),
                 QStringList { "New reders detected | current page:  Szczegóły Certyfikat do identyfikacji i "
                               "uwierzytelniania" });
    }

    void openingPageIsKeptUntilTheUserLeavesIt()
    {
        flow->world.insertCard("Czytnik Alfa", "anna");
        flow->openWindow();
        flow->window->getReadersFromMonitor();

        receiveReaders("0:Czytnik Alfa||");

        QCOMPARE(flow->page(), QString("pageSettings"));
        QVERIFY(backShown());
        flow->button("bWroc")->click();
        QVERIFY(flow->waitForCard());
        QCOMPARE(flow->page(), QString("pageHome"));
    }

    // An empty list empties the box; the text behind the last "||" of a list is empty too, and no reader.
    void emptyBoxIsInNoList()
    {
        flow->openWindow();
        goTo("pageHome");
        flow->window->loadedReaders({});
        QCOMPARE(flow->readersBox()->currentText(), QString());
        flow->world.insertCard("Czytnik Alfa", "anna");
        LogCatcher log;

        receiveReaders("0:Czytnik Alfa||");

        // The worker may have a word in between.
        QVERIFY2(log.has("load new readers"), qPrintable(log.text()));
        QVERIFY(flow->waitForCard());
        QCOMPARE(flow->readersBox()->currentText(), QString("Czytnik Alfa"));
    }

    // One failure of the library, and a Monitor that answers at once, each time.
    void cardIsReadAfterTheLibraryFailedOnce()
    {
        flow->world.insertCard("Czytnik Alfa", "anna");
        sim::Fault once;
        once.function = "C_Initialize";
        once.nth = 1;
        once.result = 0x30;
        QVERIFY(flow->world.addFault(once));
        flow->openWindow();
        goTo("pageHome");
        RawInbox monitor("velmor_monitor", 500);
        flow->window->loadAll();
        const auto answered = [&] {
            if (monitor.text().contains("getReadersWithPace")) {
                monitor.clear();
                receiveReaders("0:Czytnik Alfa||");
            }
            return flow->photoArrived();
        };
        QVERIFY(QTest::qWaitFor(answered, 10000));
        QVERIFY(!flow->loaderShown());
    }

    void errorOnTheHelpPageChangesTheBoxAlone()
    {
        QVERIFY(flow->showCard("anna"));
        goTo("pageHelp");
        receiveReaders("NO_CARD");
        QCOMPARE(flow->page(), QString("pageHelp"));
        QCOMPARE(flow->readersBox()->currentText(), QString("brak karty w czytniku"));
    }

    void readerNamesKeepTheirPolishLetters()
    {
        flow->openWindow();
        goTo("pageHome");
        flow->window->loadedReaders({ "Czytnik Żółw" });
        receiveReaders("0:Czytnik Żółw||1:Łącze||");
        QCOMPARE(flow->readersBox()->itemText(1), QString("Łącze"));
    }
};

VELMOR_TEST(TestWindowMessagesReaders)
#include "tst_window_messages_readers.moc"
