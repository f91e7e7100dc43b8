#include "support/flow.h"

#include "gui/anim_widget.h"

// What the loader covers, leaves, shows and brings back, page by page.
class TestWindowShellLoader : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Flow> flow;

    void showPage(const char *page) { flow->find<QStackedWidget>("pager")->setCurrentWidget(flow->widget(page)); }
    bool hidden(const char *name) const { return flow->widget(name)->isHidden(); }
    bool plays(const char *label) const { return !flow->label(label)->findChild<AnimSvgWidget *>()->isHidden(); }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<Flow>(); }
    void cleanup() { flow.reset(); }

    void readerInUseStandsThereWhileItsCardIsRead()
    {
        flow->world.insertCard("Czytnik Alfa", "anna");
        flow->world.insertCard("Czytnik Beta", "jan");
        flow->openWindow();
        QVERIFY(flow->world.block("C_GetTokenInfo"));

        flow->window->loadedReaders({ "Czytnik Alfa", "Czytnik Beta" });
        QTRY_COMPARE_WITH_TIMEOUT(flow->world.waitingCalls(), 1, 10000);
        QTRY_COMPARE(flow->label("loadingDesc")->text(), QString("Trwa odczyt danych z karty"));

        QVERIFY(flow->loaderShown());
        QVERIFY(!hidden("cbReaders"));
        QVERIFY(!hidden("lReaderDesc"));
        QVERIFY(!flow->readersBox()->isEnabled());
        flow->world.release();
        QVERIFY(flow->waitForCard());
        QVERIFY(flow->readersBox()->isEnabled());
    }

    void loaderHidesTheReaderRowWhileReadersAreSearched()
    {
        QVERIFY(flow->showCard("anna"));
        flow->widget("loading")->resize(900, 300);

        flow->window->loadAll();

        QVERIFY(flow->loaderShown());
        QVERIFY(flow->widget("pager")->isHidden());
        QVERIFY(flow->readersBox()->isHidden());
        QVERIFY(flow->widget("lReaderDesc")->isHidden());
        QCOMPARE(flow->widget("loading")->height(), 547);
        QCOMPARE(flow->label("loadingDesc")->text(), QString("Trwa łączenie z czytnikami"));
        QVERIFY(!flow->widget("authenticationCert")->isEnabled());
        QCOMPARE(flow->label("lsurnameVal")->text(), QString());
        QVERIFY(flow->waitForCard());
    }

    void pinButtonsAnswerAgainOnceItHasGone()
    {
        QVERIFY(flow->showCard("anna"));
        flow->window->loadAll();
        flow->window->chooseAuthenticationCertPIN();
        QCOMPARE(flow->page(), QString("pageHome"));
        QVERIFY(flow->waitForCard());

        flow->window->chooseAuthenticationCertPIN();

        QCOMPARE(flow->page(), QString("pageChangePin"));
    }

    void titleChangesWhenTheDataGroupsAreRead()
    {
        flow->world.insertCard("Czytnik Alfa", "anna");
        flow->openWindow();
        QVERIFY(flow->world.block("C_FindObjectsInit", sim::Emrtd));

        flow->window->loadedReaders({ "Czytnik Alfa" });
        QTRY_COMPARE_WITH_TIMEOUT(flow->world.waitingCalls(), 1, 10000);

        QCOMPARE(flow->label("loadingDesc")->text(), QString("Trwa odczyt danych ICAO"));
        QCOMPARE(flow->label("loadingDesc")->accessibleName(), QString("Trwa odczyt danych ICAO"));
        QCOMPARE(flow->window->focusWidget(), flow->label("loadingDesc"));
    }

    void certificatePageLosesTheReaderRowAndGetsItBackSwitchedOff()
    {
        flow->openWindow();
        flow->window->loadedReaders({ "Czytnik Alfa", "Czytnik Beta" });
        flow->readersBox()->setEnabled(true);
        showPage("pageCertInfo");

        flow->window->loadAll();
        QVERIFY(hidden("cbReaders"));
        QVERIFY(hidden("lReaderDesc"));
        QVERIFY(hidden("bWroc"));

        showPage("pageCertInfo");
        flow->window->changePinFin(-3);
        QVERIFY(!hidden("bWroc"));
        QVERIFY(!hidden("cbReaders"));
        QVERIFY(!hidden("lReaderDesc"));
        QVERIFY(!flow->readersBox()->isEnabled());
    }

    void loaderHidesTheWayBackAndReturnsPagesAndReaders()
    {
        QVERIFY(flow->showCard("anna"));
        flow->button("bSettings")->click();
        QVERIFY(!hidden("bWroc"));

        flow->window->loadAll();
        QVERIFY(hidden("bWroc"));
        QVERIFY(hidden("pager"));

        QVERIFY(flow->waitForCard());
        for (const char *name : { "pager", "cbReaders", "lReaderDesc" })
            QVERIFY2(!hidden(name), name);
        QVERIFY(hidden("loading"));
    }

    void choiceOfReadersIsOnAfterTheLoaderOnTheHomePageAndWithoutElectronicLayer_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<int>("readers");
        QTest::addColumn<bool>("enabled");
        QTest::newRow("home, one") << "pageHome" << 1 << false;
        QTest::newRow("home, two") << "pageHome" << 2 << true;
        QTest::newRow("no layer, one") << "pageNoElectricLayer" << 1 << false;
        QTest::newRow("no layer, two") << "pageNoElectricLayer" << 2 << true;
    }
    void choiceOfReadersIsOnAfterTheLoaderOnTheHomePageAndWithoutElectronicLayer()
    {
        QFETCH(QString, page);
        QFETCH(int, readers);
        QFETCH(bool, enabled);
        flow->openWindow();
        flow->window->loadedReaders(QStringList { "Czytnik Alfa", "Czytnik Beta" }.mid(0, readers));
        showPage(page.toLatin1().constData());
        flow->readersBox()->setEnabled(!enabled);
        flow->readersBox()->hide();

        flow->window->changePinFin(-3);

        QCOMPARE(flow->readersBox()->isEnabled(), enabled);
        QVERIFY(!hidden("cbReaders"));
    }

    void eachAnimationPlaysOnlyInItsTime()
    {
        QVERIFY(flow->showCard("anna"));
        QVERIFY(!plays("loadingGif"));
        QVERIFY(!plays("lPhoto"));
        QVERIFY(flow->world.block("C_FindObjectsInit", sim::Emrtd, 2));

        flow->window->loadAll();
        QVERIFY(plays("loadingGif"));
        QVERIFY(!plays("lPhoto"));

        // The certificates have come, the photo has not.
        QTRY_COMPARE_WITH_TIMEOUT(flow->world.waitingCalls(), 1, 10000);
        QVERIFY(!plays("loadingGif"));
        QVERIFY(plays("lPhoto"));
        QVERIFY(!flow->photoArrived());

        flow->world.release();
        QTRY_VERIFY(flow->photoArrived());
        QVERIFY(!plays("lPhoto"));
    }
};

VELMOR_TEST(TestWindowShellLoader)
#include "tst_window_shell_loader.moc"
