#include "support/flow.h"

#include "base/settings.h"
#include "gui/popup.h"

#include <QDialogButtonBox>

// The window itself: loader, minimising, quitting, and the dialogs it opens.
class TestWindowShell : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Flow> flow;

    // Runs `check` on the next modal dialog, then presses one of its buttons.
    void answerDialog(QDialogButtonBox::StandardButton button, const std::function<void(QWidget *)> &check = {})
    {
        auto *timer = new QTimer(flow->window.get());
        connect(timer, &QTimer::timeout, timer, [timer, button, check] {
            QWidget *dialog = QApplication::activeModalWidget();
            if (!dialog || !dialog->isVisible())
                return;
            timer->deleteLater();
            if (check)
                check(dialog);
            dialog->findChild<QDialogButtonBox *>("buttonBox")->button(button)->click();
        });
        timer->start(20);
    }

    void showPage(const char *page) { flow->find<QStackedWidget>("pager")->setCurrentWidget(flow->widget(page)); }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<Flow>(); }
    void cleanup()
    {
        flow.reset();
        Settings::instance()->setValue("updateAvailable", "");
        Settings::instance()->setValue("updateInProgress", "");
    }

    void standaloneSettingsPageLeavesTheBackButtonAlone()
    {
        QVERIFY(flow->showCard("anna"));
        flow->window->moveToSettingsPage(true);
        QVERIFY(flow->widget("bWroc")->isHidden());
        flow->window->moveToSettingsPage(false);
        QVERIFY(!flow->widget("bWroc")->isHidden());
    }

    void updateButtonsFollowTheStore_data()
    {
        QTest::addColumn<QString>("available");
        QTest::addColumn<QString>("inProgress");
        QTest::addColumn<bool>("shown");
        QTest::addColumn<bool>("enabled");
        QTest::newRow("nothing") << ""
                                 << "" << false << true;
        QTest::newRow("available") << "true"
                                   << "" << true << true;
        QTest::newRow("running") << "true"
                                 << "true" << true << false;
        QTest::newRow("other word") << "1"
                                    << "yes" << false << true;
    }
    void updateButtonsFollowTheStore()
    {
        QFETCH(QString, available);
        QFETCH(QString, inProgress);
        QFETCH(bool, shown);
        QFETCH(bool, enabled);
        flow->openWindow();
        Settings::instance()->setValue("updateAvailable", available);
        Settings::instance()->setValue("updateInProgress", inProgress);

        flow->window->checkForUpdate();

        for (const char *name : { "bUpdate", "bUpdateArrow" }) {
            QCOMPARE(!flow->widget(name)->isHidden(), shown);
            QCOMPARE(flow->widget(name)->isEnabled(), enabled);
        }
        QCOMPARE(flow->button("bUpdate")->text(), QString("Aktualizuj"));
    }

    void minimisingAndRestoringLeavesTheWindowWhereItStood()
    {
        flow->openWindow();
        // Away from the middle of the screen, where a window that was put there would be noticed.
        flow->window->move(37, 23);
        const QRect before = flow->window->geometry();
        QCOMPARE(before.topLeft(), QPoint(37, 23));
        LogCatcher log;

        flow->button("bMinimalize")->click();
        QVERIFY(log.has("minimizeClicked()"));
        QVERIFY(flow->window->isMinimized());
        QVERIFY(!log.has("Unminimalize()"));
        // Of the other changes none moves it either.
        QEvent change(QEvent::LanguageChange);
        QCoreApplication::sendEvent(flow->window.get(), &change);
        QCOMPARE(flow->window->geometry(), before);
        flow->window->showWndw();

        QVERIFY(log.has("Unminimalize()"));
        QVERIFY(log.has("Show window called"));
        QCOMPARE(flow->window->geometry(), before);
    }

    void loaderAnnouncesItsTitleWithoutMarkup()
    {
        QVERIFY(flow->showCard("anna"));
        flow->widget("bSettings")->setEnabled(false);
        flow->widget("bHelp")->setEnabled(false);

        flow->window->loadAll();

        QCOMPARE(flow->label("loadingDesc")->accessibleName(), QString("Trwa łączenie z czytnikami"));
        QCOMPARE(flow->window->focusWidget(), flow->label("loadingDesc"));
        QVERIFY(flow->waitForCard());
        QVERIFY(flow->widget("bSettings")->isEnabled());
        QVERIFY(flow->widget("bHelp")->isEnabled());
    }

    void quitIsRefusedWhileAPinpadOperationIsShown_data()
    {
        QTest::addColumn<QString>("page");
        QTest::newRow("change") << "pageChangePin";
        QTest::newRow("unblock") << "pageUnblockPin";
    }
    void quitIsRefusedWhileAPinpadOperationIsShown()
    {
        QFETCH(QString, page);
        flow->world.addReader("Klawiatura", true);
        QVERIFY(flow->showCard("anna", "Klawiatura"));
        showPage(page.toLatin1().constData());
        QString title, text;
        answerDialog(QDialogButtonBox::Close, [&](QWidget *dialog) {
            title = dialog->findChild<QLabel *>("lMainTitle")->text();
            text = dialog->findChild<QLabel *>("lText")->text();
        });

        flow->button("bClose")->click();

        QCOMPARE(title, QString("Zamykanie aplikacji"));
        QVERIFY(text.contains("<br/><nobr>Zakończ najpierw operację na czytniku z pinpadem.</nobr><br/>"));
        QVERIFY(flow->window->isVisible());
        QVERIFY(!flow->loaderShown());
    }

    void quitOnAPinPageWithoutPinpadCloses()
    {
        QVERIFY(flow->showCard("anna"));
        showPage("pageChangePin");
        LogCatcher log;

        flow->button("bClose")->click();

        QVERIFY(flow->loaderShown());
        QCOMPARE(flow->label("loadingDesc")->text(), QString("Zamykanie aplikacji"));
        QTRY_VERIFY(!flow->window->isVisible());
        QCOMPARE(log.count("closeTheards()"), 1);
        QVERIFY(!log.has("terminateTheards()"));
    }

    void blockedWorkerIsTerminatedAtTheFourthAttempt()
    {
        QVERIFY(flow->showCard("anna"));
        flow->world.block("C_GetSlotList");
        flow->window->loadAll();
        QTRY_COMPARE(flow->world.waitingCalls(), 1);
        LogCatcher log;
        QElapsedTimer sinceQuit;
        sinceQuit.start();

        flow->window->quitClicked();

        // The worker is asked at 0, 500 and 1000 ms; never is it ended before its time.
        QTRY_VERIFY_WITH_TIMEOUT(log.has("terminateTheards()"), 8000);
        QVERIFY2(sinceQuit.elapsed() >= 1500, qPrintable(QString::number(sinceQuit.elapsed())));
        QTRY_VERIFY_WITH_TIMEOUT(!flow->window->isVisible(), 8000);
        QCOMPARE(log.count("closeTheards()"), 3);
        QVERIFY(log.count("terminateTheards()") >= 1);
    }

    void closePopupsEndsAnOpenDialog()
    {
        flow->openWindow();
        QTimer::singleShot(300, flow->window.get(), &Window::closePopups);
        LogCatcher log;

        int ended = 0;
        QMetaObject::invokeMethod(flow->window.get(), "showReaderWarningPopup", Q_RETURN_ARG(int, ended));

        QVERIFY(log.has("Close popup signal received"));
        QCOMPARE(ended, int(QDialogButtonBox::Ignore));
    }

    void readerWarningExplainsWhatIsWrong()
    {
        flow->openWindow();
        QString title, text;
        QSize frame;
        answerDialog(QDialogButtonBox::Ok, [&](QWidget *dialog) {
            title = dialog->findChild<QLabel *>("lMainTitle")->text();
            text = dialog->findChild<QLabel *>("lText")->text();
            frame = dialog->findChild<QWidget *>("mainFrame")->size();
        });
        LogCatcher log;

        flow->button("bReaderWarning")->click();

        // What stands for an empty title.
        QCOMPARE(title, QString("velmor"));
        QVERIFY(text.contains(
            "Twój czytnik <b></b> nie działa w pełni prawidłowo.<br><b>Niektóre funkcje mogą działać bardzo wolno lub "
            "mogą być nie wspierane.</b><br><br>Upewnij się, czy masz zainstalowane poprawne sterowniki do obsługi "
            "czytnika oraz czy czytnik spełnia wymagania dla velmor (obsługa Extended APDU)."));
        QVERIFY(log.has("Reader:  does not support Extended APDU"));
        QCOMPARE(frame.width(), 530);
    }

    void titleMakesRoomForASubtitle()
    {
        QVERIFY(flow->showCard("anna"));
        QCOMPARE(flow->label("lMainTitle")->geometry(), QRect(35, 25, 422, 31));

        flow->button("bArrowAuthenCert")->click();

        QCOMPARE(flow->label("lMainTitle")->geometry(), QRect(30, 15, 421, 31));
        QCOMPARE(flow->label("lSubTitle")->text(), QString("Certyfikat do identyfikacji i uwierzytelniania"));
    }
};

VELMOR_TEST(TestWindowShell)
#include "tst_window_shell.moc"
