#include "support/flow.h"

#include "support/armed_timers.h"
#include "support/opened_urls.h"

#include <QDialogButtonBox>

#include <thread>

// Which widget leads where, told by what the slot writes or shows, and how the program ends.
class TestWindowShellConnections : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Flow> flow;

    void showPage(const char *page) { flow->find<QStackedWidget>("pager")->setCurrentWidget(flow->widget(page)); }

    // Closes the next modal dialog and keeps its title.
    void closeNextDialog(QString *title)
    {
        auto *timer = new QTimer(flow->window.get());
        connect(timer, &QTimer::timeout, timer, [timer, title] {
            QWidget *dialog = QApplication::activeModalWidget();
            if (!dialog || !dialog->isVisible())
                return;
            timer->deleteLater();
            *title = dialog->findChild<QLabel *>("lMainTitle")->text();
            dialog->findChild<QDialogButtonBox *>("buttonBox")->button(QDialogButtonBox::Ok)->click();
        });
        timer->start(20);
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<Flow>(); }
    void cleanup() { flow.reset(); }

    void backAndCancelButtonsOfThePinPagesLeadHome()
    {
        QVERIFY(flow->showCard("anna"));
        const struct {
            const char *button;
            const char *page;
        } rows[] = {
            { "bWrocPin", "pageCorrectChange" },
            { "bWrocPuk", "pageBlockedPuk_2" },
            { "bCancel", "pageChangePin" },
            { "bCancel_2", "pageUnblockPin" },
        };
        for (const auto &row : rows) {
            showPage(row.page);
            LogCatcher log;

            flow->button(row.button)->click();

            QVERIFY2(log.count("Move to home page") == 1, row.button);
            QVERIFY2(flow->page() == "pageHome", row.button);
        }
    }

    void buttonsCallTheirSlots()
    {
        QVERIFY(flow->showCard("anna"));
        const struct {
            const char *button;
            const char *line;
        } rows[] = {
            { "bChangePin", "\nChange pin" },           { "bChangePinPuk", "\nUnblock pin" },
            { "bUpdate", "Update Kzr clicked" },        { "bUpdateArrow", "Update Kzr clicked" },
            { "bIntegrationFinnish", "show settings" },
        };
        for (const auto &row : rows) {
            LogCatcher log;

            emit flow->button(row.button)->clicked(false);

            QVERIFY2(log.count(row.line) == 1, row.button);
        }
        QCOMPARE(flow->page(), QString("pageSettings"));
        // Not opened on its own, so there is a way back.
        QVERIFY(!flow->widget("bWroc")->isHidden());
    }

    void bothWarningButtonsOpenTheDialog()
    {
        flow->openWindow();
        for (const char *name : { "bWarningIcon", "bReaderWarning" }) {
            QString title;
            closeNextDialog(&title);

            emit flow->find<QAbstractButton>(name)->clicked(false);

            QVERIFY2(title == "velmor", name);
        }
    }

    void reportButtonOpensTheHelpSite()
    {
        flow->openWindow();
        const OpenedUrls opened("https");

        emit flow->find<QAbstractButton>("bRaport")->clicked(false);

        QCOMPARE(opened.urls, QList<QUrl> { QUrl("https://pomoc.velmor.example/") });
    }

    void readerPickedWithTheKeyboardIsRead()
    {
        flow->world.insertCard("Czytnik Alfa", "anna");
        flow->world.insertCard("Czytnik Beta", "jan");
        flow->openWindow();
        flow->window->loadedReaders({ "Czytnik Alfa", "Czytnik Beta" });
        QVERIFY(flow->waitForCard());
        QVERIFY(flow->readersBox()->isEnabled());
        LogCatcher log;

        QTest::keyClick(flow->readersBox(), Qt::Key_Down);

        QCOMPARE(log.count("Reader changed to:  Czytnik Beta"), 1);
        QVERIFY(flow->waitForCard());
        QCOMPARE(flow->readersBox()->currentText(), QString("Czytnik Beta"));
    }

    void doubleClickOnEachTileActsAsItsArrow()
    {
        QVERIFY(flow->showCard("anna"));
        const struct {
            const char *tile;
            const char *arrow;
        } rows[] = {
            { "icao", "bArrowICAO" },
            { "authenticationCert", "bArrowAuthenCert" },
            { "authorizationCert", "bArrowAuthorCert" },
            { "presenceCert", "bArrowPresenceCert" },
            { "qualifiedCert", "bArrowQualifiedCert" },
        };
        for (const auto &row : rows) {
            QSignalSpy arrow(flow->button(row.arrow), &QPushButton::clicked);

            QTest::mouseDClick(flow->widget(row.tile), Qt::LeftButton, {}, QPoint(5, 5));

            QVERIFY2(arrow.count() == 1, row.tile);
        }
    }

    void windowThatGoesWithoutQuittingStopsItsThread()
    {
        LogCatcher log;
        flow->openWindow();
        QVERIFY(!log.has("Monitor is running"));

        flow->window.reset();

        QCOMPARE(log.count("closeTheards()"), 1);
        QVERIFY(!log.has("terminateTheards()"));
        QCOMPARE(log.count("threads closed"), 1);
    }

    void workerIsLookedForAgainAfterHalfASecond()
    {
        flow->openWindow();
        QCOMPARE(waitsArmedBy([this] { flow->window->closeWithTheards(); }), QList<int> { 500 });
    }

    // By the window itself: nobody else does anything about it.
    void changesOfTheWindowsStateAreTaken_data()
    {
        QTest::addColumn<bool>("minimised");
        QTest::newRow("minimised") << true;
        QTest::newRow("as it was") << false;
    }
    void changesOfTheWindowsStateAreTaken()
    {
        QFETCH(bool, minimised);
        flow->openWindow();
        if (minimised)
            flow->window->showMinimized();
        QWindowStateChangeEvent change(minimised ? Qt::WindowNoState : Qt::WindowMinimized);
        LogCatcher log;

        QVERIFY(QCoreApplication::sendEvent(flow->window.get(), &change));

        QCOMPARE(log.count("Unminimalize()"), minimised ? 0 : 1);
        // Of the rest the toolkit says what it makes of it.
        QEvent own(QEvent::User);
        QVERIFY(QCoreApplication::sendEvent(flow->window.get(), &own));
    }

    // It looks once a second whether the thread has ended; all its patience without a pause would be none.
    void windowThatGoesWaitsForACallUnderWay()
    {
        QVERIFY(flow->showCard("anna"));
        flow->world.block("C_GetSlotList");
        flow->window->loadAll();
        QTRY_COMPARE(flow->world.waitingCalls(), 1);
        LogCatcher log;
        std::thread card([this, &log] {
            while (!log.has("closeTheards()"))
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            flow->world.release();
        });

        flow->window.reset();

        card.join();
        QVERIFY(!log.has("terminateTheards()"));
        QCOMPARE(log.count("threads closed"), 1);
    }

    void quitOnTheHomePageWithAPinpadAsksNothing()
    {
        flow->world.addReader("Klawiatura", true);
        QVERIFY(flow->showCard("anna", "Klawiatura"));
        QCOMPARE(flow->page(), QString("pageHome"));

        bool asked = false;
        QTimer::singleShot(200, flow->window.get(), [this, &asked] {
            asked = QApplication::activeModalWidget() != nullptr;
            emit flow->window->closePopups();
        });

        flow->button("bClose")->click();

        QVERIFY(flow->loaderShown());
        QTRY_VERIFY(!flow->window->isVisible());
        QVERIFY(!asked);
    }

    void quitEndsAnOpenDialog()
    {
        flow->openWindow();
        LogCatcher log;
        bool dialogWasOpen = false, told = false;
        QTimer::singleShot(300, flow->window.get(), [this, &log, &dialogWasOpen, &told] {
            dialogWasOpen = QApplication::activeModalWidget() != nullptr;
            flow->window->quitClicked();
            // At once, not at the next attempt to stop the worker.
            told = log.has("Close popup signal received");
        });

        flow->button("bReaderWarning")->click();

        QVERIFY(dialogWasOpen);
        QVERIFY(told);
        QVERIFY(!QApplication::activeModalWidget());
        QTRY_VERIFY(!flow->window->isVisible());
    }
};

VELMOR_TEST(TestWindowShellConnections)
#include "tst_window_shell_connections.moc"
