#include "support/flow.h"

#include "base/ipc_msg.h"
#include "pin_fields.h"
#include "support/armed_timers.h"

#include <QDir>
#include <QLineEdit>
#include <QRegularExpression>

// Finer points of the reader flow: pages that are not disturbed, what the way home resets, and the warning of a reader.
class TestWindowReadersDetails : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Flow> flow;

    QStackedWidget *pager() const { return flow->find<QStackedWidget>("pager"); }
    void showPage(const char *page) { pager()->setCurrentWidget(flow->widget(page)); }
    bool hidden(const char *name) const { return flow->widget(name)->isHidden(); }
    QLineEdit *field(const char *name) const { return flow->find<QLineEdit>(name); }

    void fill(const QList<const char *> &fields)
    {
        for (const char *name : fields) {
            field(name)->setText("1234");
            setFieldStyle(field(name), false);
        }
    }
    void checkEmptied(const QList<const char *> &fields)
    {
        QLineEdit good;
        setFieldStyle(&good, true);
        for (const char *name : fields) {
            QVERIFY2(field(name)->text().isEmpty(), name);
            QCOMPARE(field(name)->styleSheet(), good.styleSheet());
        }
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<Flow>(); }
    void cleanup() { flow.reset(); }

    void cardThatGoesWhileTheSettingsAreShownIsForgottenAndThePageStays()
    {
        QVERIFY(flow->showCard("anna"));
        flow->button("bSettings")->click();
        QVERIFY(!hidden("bWroc"));

        flow->window->loadedReaders({}, "NO_CARD");

        QCOMPARE(flow->page(), QString("pageSettings"));
        QCOMPARE(flow->title(), QString("Ustawienia"));
        QCOMPARE(flow->readersBox()->currentText(), QString("brak karty w czytniku"));
        QVERIFY(hidden("bWroc"));
        for (const char *name : { "lNumIdVal", "lCommonNameVal", "lsurnameVal", "lExpDateVal" })
            QCOMPARE(flow->label(name)->text(), QString());
        QCOMPARE(flow->widget("widgetBlurICAO")->accessibleName(), QString());
        for (const char *name : { "lPhoto", "lPhotoLarge" })
            QCOMPARE(flow->label(name)->pixmap(Qt::ReturnByValue).toImage(),
                     QIcon(":/images/no_photo.svg").pixmap(flow->label(name)->size()).toImage());
    }

    void dataPageOfACardThatHasGoneIsEmpty()
    {
        QVERIFY(flow->showCard("long-names"));
        flow->window->moveToAllDataPage();
        QVERIFY(!flow->label("lsurnameVal")->toolTip().isEmpty());

        flow->window->loadedReaders({}, "NO_CARD");

        for (const char *name : { "lNumIdVal", "lCommonNameVal", "lsurnameVal", "lExpDateVal" })
            QCOMPARE(flow->label(name)->toolTip(), QString());
        const auto labels = flow->widget("pageAllData")->findChildren<QLabel *>(QRegularExpression("Val"));
        QCOMPARE(labels.size(), 14);
        for (const QLabel *label : labels) {
            QCOMPARE(label->text(), QString());
            QCOMPARE(label->toolTip(), QString());
        }
        QCOMPARE(flow->title(), QString("velmor Menedżer"));
        // Nor is anything left to fill it from, but the full stops of the dates.
        flow->window->moveToAllDataPage();
        for (const QLabel *label : labels)
            QVERIFY2(!label->text().contains(QRegularExpression("[^.02]")), qPrintable(label->objectName()));
    }

    void missingCardDoesNotDisturbTheHelpPage()
    {
        QVERIFY(flow->showCard("anna"));
        showPage("pageHelp");

        flow->window->loadedReaders({}, "NO_CARD");

        QCOMPARE(flow->page(), QString("pageHelp"));
        QCOMPARE(flow->readersBox()->currentText(), QString("brak karty w czytniku"));
    }

    void errorEndsTheLoaderOnPagesThatItDoesNotLeave()
    {
        flow->openWindow();
        for (const char *page : { "pageSettings", "pageHelp" }) {
            showPage(page);
            flow->window->loadAll();
            QVERIFY(flow->loaderShown());

            flow->window->loadedReaders({}, "NO_CARD");

            QVERIFY2(!flow->loaderShown(), page);
            QVERIFY2(!hidden("pager"), page);
            QVERIFY2(flow->page() == page, page);
        }
    }

    void errorEndsTheLoaderOnThePagesThatItLeaves()
    {
        flow->openWindow();
        for (const char *page : { "pageHome", "pageAllData", "pageDisconected" }) {
            showPage(page);
            flow->window->loadAll();
            flow->readersBox()->setEnabled(true);

            flow->window->loadedReaders({}, "NO_CARD");

            QVERIFY2(!flow->loaderShown(), page);
            QVERIFY2(!hidden("pager"), page);
            QVERIFY2(flow->page() == "pageDisconected", page);
            QVERIFY2(!flow->readersBox()->isEnabled(), page);
        }
    }

    void messageOfTheErrorIsToldASecondLater()
    {
        QVERIFY(flow->showCard("anna"));
        QCOMPARE(waitsArmedBy([this] { flow->window->loadedReaders({}, "NO_CARD"); }), QList<int> { 1000 });
    }

    void errorStandsAloneInTheBox()
    {
        flow->openWindow();

        flow->window->loadedReaders({ "Czytnik Alfa" }, "NO_CARD");

        QCOMPARE(flow->readersBox()->count(), 1);
        QCOMPARE(flow->readersBox()->currentText(), QString("brak karty w czytniku"));
    }

    void wayHomeEmptiesTheFieldsOfThePinPage()
    {
        QVERIFY(flow->showCard("anna"));
        const QList<const char *> fields { "lineNewPin", "lineActualPin", "lineRepeatPin" };
        const QList<const char *> hints { "lNewPinInfo", "lActualPinInfo", "lRepeatPinInfo" };
        showPage("pageChangePin");
        fill(fields);
        for (const char *hint : hints)
            flow->widget(hint)->show();

        flow->button("bCancel")->click();

        checkEmptied(fields);
        for (const char *hint : hints)
            QVERIFY2(hidden(hint), hint);
    }

    void wayHomeEmptiesTheFieldsOfTheUnblockPageAndLeavesItsHints()
    {
        QVERIFY(flow->showCard("anna"));
        const QList<const char *> fields { "lineNewPinPuk", "lineRepeatPinPuk", "lineInsertPuk" };
        const QList<const char *> hints { "lNewPinInfoPuk", "lPinInfoPuk" };
        showPage("pageUnblockPin");
        fill(fields);
        for (const char *hint : hints)
            flow->widget(hint)->show();

        flow->button("bCancel_2")->click();

        checkEmptied(fields);
        for (const char *hint : hints)
            QVERIFY2(!hidden(hint), hint);
    }

    void wayHomeShowsTheTilesAndSwitchesTheFooterOn()
    {
        QVERIFY(flow->showCard("anna"));
        showPage("pageCertInfo");
        auto *inner = flow->find<QStackedWidget>("pagerBlockedPuk");
        inner->setCurrentWidget(flow->widget("pageBlockedPuk"));
        flow->widget("bSettings")->setEnabled(false);
        flow->widget("bHelp")->setEnabled(false);
        const char *const shown[] = { "bClose", "cbReaders", "lReaderDesc", "frameReaders" };
        for (const char *name : shown)
            flow->widget(name)->hide();

        flow->window->moveToHomePage();

        QCOMPARE(inner->currentWidget()->objectName(), QString("pageValidPuk"));
        QVERIFY(flow->widget("bSettings")->isEnabled());
        QVERIFY(flow->widget("bHelp")->isEnabled());
        for (const char *name : shown)
            QVERIFY2(!hidden(name), name);
        QCOMPARE(flow->page(), QString("pageHome"));
    }

    void wayHomeLetsAnotherReaderBeChosenAgain()
    {
        QVERIFY(flow->showCard("anna"));
        flow->window->loadedReaders({ "Czytnik Alfa", "Czytnik Beta" });
        QVERIFY(flow->readersBox()->isEnabled());
        flow->button("bSettings")->click();
        QVERIFY(!flow->readersBox()->isEnabled());

        flow->button("bWroc")->click();

        QCOMPARE(flow->page(), QString("pageHome"));
        QVERIFY(flow->readersBox()->isEnabled());
    }

    void listWithoutTheReaderInUseClearsThePageEvenIfNothingElseDoes()
    {
        QVERIFY(flow->showCard("anna"));
        flow->world.insertCard("Czytnik Beta", "jan");
        flow->world.removeReader("Czytnik Alfa");
        // The list is an answer, so no new search clears the page, and the card of the new reader answers nothing yet.
        flow->window->getReadersFromMonitor();
        flow->world.block("*");
        QSignalSpy readers(flow->window.get(), &Window::getReaders);

        flow->window->loadedReaders({ "Czytnik Beta" });

        QCOMPARE(readers.count(), 0);
        QTRY_COMPARE(flow->world.waitingCalls(), 1);
        for (const char *name : { "lNumIdVal", "lCommonNameVal", "lsurnameVal", "lExpDateVal" })
            QCOMPARE(flow->label(name)->text(), QString());
        QCOMPARE(flow->widget("widgetBlurICAO")->accessibleName(), QString());
        QCOMPARE(flow->label("lPhoto")->pixmap(Qt::ReturnByValue).toImage(),
                 QIcon(":/images/no_photo.svg").pixmap(flow->label("lPhoto")->size()).toImage());
    }

    void boxIsAsWideAsItsTextAndThirty()
    {
        flow->openWindow();
        flow->window->loadedReaders({ "Czytnik z bardzo długą nazwą 2000" });

        const QFontMetrics metrics(flow->readersBox()->font());
        QCOMPARE(flow->readersBox()->width(), metrics.horizontalAdvance("Czytnik z bardzo długą nazwą 2000") + 30);
    }

    void boxIsAsWideAsTheReaderThatIsPicked()
    {
        flow->openWindow();
        flow->window->loadedReaders({ "Beta", "Czytnik z bardzo długą nazwą 2000" });
        const QFontMetrics metrics(flow->readersBox()->font());
        QCOMPARE(flow->readersBox()->width(), metrics.horizontalAdvance("Beta") + 30);

        flow->readersBox()->setCurrentIndex(1);
        flow->window->selectReader();

        QCOMPARE(flow->readersBox()->width(), metrics.horizontalAdvance("Czytnik z bardzo długą nazwą 2000") + 30);
    }

    void boxIsAsWideAsTheReaderOfTheNextList()
    {
        flow->openWindow();
        flow->window->loadedReaders({ "Beta" });
        QCOMPARE(flow->page(), QString("pageHome"));

        flow->window->loadedReaders({ "Czytnik z bardzo długą nazwą 2000" });

        const QFontMetrics metrics(flow->readersBox()->font());
        QCOMPARE(flow->readersBox()->width(), metrics.horizontalAdvance("Czytnik z bardzo długą nazwą 2000") + 30);
    }

    void boxIsAsWideAsTheReasonForNoCard()
    {
        flow->openWindow();
        flow->window->loadedReaders({ "Beta" });

        flow->window->loadedReaders({}, "NO_SUPPORTED_CARD");

        const QFontMetrics metrics(flow->readersBox()->font());
        QCOMPARE(flow->readersBox()->width(), metrics.horizontalAdvance("brak wspieranej karty w czytniku") + 30);
    }

    void homeWithoutAReaderAsksTheMonitor()
    {
        flow->openWindow();
        LogCatcher log;

        flow->window->moveToHomePage();

        QVERIFY(log.has("no reader go to disconnect page"));
        QVERIFY(log.has("reader checked "));
        QCOMPARE(flow->page(), QString("pageSettings"));
    }

    void backWithoutAReaderSearchesAgain()
    {
        flow->openWindow();
        QSignalSpy readers(flow->window.get(), &Window::getReaders);

        flow->window->checkAndMoveToHomePage();

        QCOMPARE(readers.count(), 1);
    }

    // The list that came meanwhile need not be asked for any more.
    void backWithoutAReaderForgetsTheListThatCameMeanwhile()
    {
        QVERIFY(flow->showCard("anna"));
        flow->button("bSettings")->click();
        flow->window->recvIpcMsg(IpcMsg { { "to", "velmor_manager" }, { "readers", "0:Czytnik Alfa||" } });
        flow->window->loadedReaders({}, "NO_CARD");
        flow->window->checkAndMoveToHomePage();
        QVERIFY(flow->waitForCard());
        LogCatcher log;

        flow->window->moveToHomePage();

        QVERIFY(log.has("Move to home page"));
        QVERIFY(!log.has("new readers page refresh"));
    }

    void readerIsTheSameOnlyInTheSameLetters()
    {
        QVERIFY(flow->showCard("anna"));
        QSignalSpy readers(flow->window.get(), &Window::getReaders);

        flow->window->loadedReaders({ "Czytnik Alfa" });
        QCOMPARE(readers.count(), 0);

        flow->window->loadedReaders({ "czytnik alfa" });
        QCOMPARE(readers.count(), 1);
    }

    void sameListAgainHidesTheWarning()
    {
        QVERIFY(flow->showCard("anna"));
        QVERIFY(!hidden("warningFrame"));

        flow->window->loadedReaders({ "Czytnik Alfa" });

        QVERIFY(hidden("warningFrame"));
        QVERIFY(!flow->loaderShown());
    }

    void warningIsThatOfTheReaderPicked()
    {
        flow->writeReadersConf("Beta=E65535\r\n");
        flow->openWindow();
        flow->window->loadedReaders({ "Czytnik Alfa", "Czytnik Beta" });

        flow->readersBox()->setCurrentIndex(0);
        flow->window->selectReader();
        QVERIFY(!hidden("warningFrame"));

        flow->readersBox()->setCurrentIndex(1);
        flow->window->selectReader();
        QVERIFY(hidden("warningFrame"));
    }
};

VELMOR_TEST(TestWindowReadersDetails)
#include "tst_window_readers_details.moc"
