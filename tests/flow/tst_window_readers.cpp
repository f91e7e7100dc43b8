#include "support/flow.h"

#include "app/app_lock.h"

#include <QDir>
#include <QLineEdit>
#include <QTableWidget>

// Reader lists and the reading of a card, on the real window and the simulated library.
class TestWindowReaders : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Flow> flow;

private slots:
    void initTestCase() { Flow::setUpApplication(); }

    void init() { flow = std::make_unique<Flow>(); }
    void cleanup() { flow.reset(); }

    void windowOpensOnTheSettingsPageAndNamesNoReader()
    {
        flow->openWindow();

        QCOMPARE(flow->page(), QString("pageSettings"));
        QCOMPARE(flow->readersBox()->currentText(), QString("brak czytnika lub karty"));
        QCOMPARE(flow->readersBox()->count(), 1);
        QVERIFY(flow->widget("warningFrame")->isHidden());
        QVERIFY(flow->widget("bWroc")->isHidden());
    }

    void listAtTheStartLeadsToTheHomePageAndReadsTheCard()
    {
        flow->world.insertCard("Czytnik Alfa", "anna");
        flow->openWindow();
        QSignalSpy readers(flow->window.get(), &Window::getReaders);
        QSignalSpy select(flow->window.get(), &Window::selectDriverReader);

        flow->window->loadedReaders({ "Czytnik Alfa" });

        QCOMPARE(flow->page(), QString("pageHome"));
        QCOMPARE(readers.count(), 1);
        QCOMPARE(readers.first(), (QVariantList { 1, 256 }));
        QVERIFY(flow->waitForCard());
        QCOMPARE(select.count(), 1);
        QCOMPARE(select.first().first().toString(), QString("Czytnik Alfa"));
        QCOMPARE(flow->title(), QString("velmor Menedżer"));
        QCOMPARE(flow->label("lSubTitle")->text(), QString());
        QVERIFY(!flow->readersBox()->isEnabled());
    }

    void cardReadRunsThroughItsSteps()
    {
        flow->world.insertCard("Czytnik Alfa", "anna");
        flow->openWindow();
        LogCatcher log;

        flow->window->loadedReaders({ "Czytnik Alfa" });
        QVERIFY(flow->waitForCard());

        const QStringList wanted { "load All",
                                   "loader hide",
                                   "loader show, title:  Trwa łączenie z czytnikami",
                                   "load readers",
                                   "Current reader:  Czytnik Alfa",
                                   "Read data from Card",
                                   "loader show, title:  Trwa odczyt danych z karty",
                                   "certs counters loaded",
                                   "Refresh certs status",
                                   "all certs loaded",
                                   "loader hide" };
        int at = -1;
        const QStringList lines = log.lines();
        for (const QString &line : wanted) {
            at = lines.indexOf(line, at + 1);
            QVERIFY2(at >= 0, qPrintable("missing or out of order: " + line));
        }
    }

    void entriesAreCutAtTheNumberSignAndNamesOfOneLetterDropped()
    {
        flow->openWindow();

        flow->window->loadedReaders({ "Reader A #1", "X", "", "Reader B #2 #3", "XY" });

        QCOMPARE(flow->readersBox()->count(), 3);
        QCOMPARE(flow->readersBox()->itemText(0), QString("Reader A"));
        QCOMPARE(flow->readersBox()->itemText(1), QString("Reader B"));
        QCOMPARE(flow->readersBox()->itemText(2), QString("XY"));
        QCOMPARE(flow->label("lReaderDesc")->accessibleName(), QString("Czytnik: Reader A"));
    }

    void problemOnTheSettingsPageChangesOnlyTheBox_data() { problemRows(); }
    void problemOnTheSettingsPageChangesOnlyTheBox()
    {
        QFETCH(QString, error);
        flow->openWindow();
        LogCatcher log;

        flow->window->loadedReaders({}, error);

        QCOMPARE(flow->page(), QString("pageSettings"));
        QTEST(flow->readersBox()->currentText(), "item");
        QCOMPARE(flow->readersBox()->count(), 1);
        QVERIFY(log.has("move to disconnect page aborted because current page is: "));
    }

    void problemElsewhereShowsTheDisconnectPage_data() { problemRows(); }
    void problemElsewhereShowsTheDisconnectPage()
    {
        QFETCH(QString, error);
        QFETCH(QString, message);
        QFETCH(bool, hidden);
        QVERIFY(flow->showCard("anna"));

        flow->window->loadedReaders({}, error);

        QCOMPARE(flow->page(), QString("pageDisconected"));
        QTEST(flow->readersBox()->currentText(), "item");
        QCOMPARE(flow->label("lDisconnect")->text(), "Brak połączenia \n" + message);
        QCOMPARE(flow->label("lDisconnect")->accessibleName(),
                 QString("Brak połączenia \n" + message).replace("CAN", "kan"));
        QCOMPARE(flow->widget("frameReaders")->isHidden(), hidden);
        QVERIFY(!flow->readersBox()->isEnabled());
        // By themselves, since their tiles are off.
        for (const char *name : { "bChangePinAuthenCert", "bChangePinAuthorCert", "bChangePinQualifiedCert" })
            QVERIFY2(!flow->widget(name)->isEnabledTo(flow->widget(name)->parentWidget()), name);
        QCOMPARE(flow->title(), QString("velmor Menedżer"));
    }

    void disconnectMessageTakesTheFocusAfterASecond()
    {
        QVERIFY(flow->showCard("anna"));
        flow->window->activateWindow();
        QElapsedTimer clock;
        clock.start();

        flow->window->loadedReaders({}, "NO_CARD");

        flow->button("bSettings")->setFocus();
        QVERIFY(flow->window->focusWidget() != flow->label("lDisconnect"));
        QTRY_VERIFY_WITH_TIMEOUT(flow->window->focusWidget() == flow->label("lDisconnect"), 3000);
        // A timer of the toolkit may be early by a twentieth.
        QVERIFY2(clock.elapsed() >= 950, qPrintable(QString::number(clock.elapsed())));
    }

    void canIsAskedForWhileItsProgramRunsAndWasNotClosed()
    {
        QVERIFY(flow->showCard("anna"));
        CommonAppLock can("velmor_can", 500);
        QVERIFY(can.lock());

        flow->window->loadedReaders({}, "WAIT_CAN");
        QCOMPARE(flow->label("lDisconnect")->text(),
                 QString("Brak połączenia \nOczekiwanie na wprowadzenie numeru CAN"));

        flow->window->loadedReaders({}, "WAIT_CAN", "canClosed");
        QCOMPARE(flow->label("lDisconnect")->text(),
                 QString("Brak połączenia \nZdejmij i przyłóż ponownie velmor do czytnika"));
    }

    void nothingPersonalStaysWhenTheCardHasGone()
    {
        QVERIFY(flow->showCard("anna"));
        QVERIFY(!flow->label("lsurnameVal")->text().isEmpty());
        const QImage photo = flow->label("lPhoto")->pixmap(Qt::ReturnByValue).toImage();
        flow->find<QLineEdit>("lineActualPin")->setText("1234");
        flow->label("lnameVal_2")->setText("Anna");
        flow->label("lnameVal_2")->setToolTip("Anna");
        flow->widget("nameFrame_2")->setAccessibleName("Imiona: Anna");
        auto *table = flow->find<QTableWidget>("tableCert");
        table->setRowCount(1);
        table->setColumnCount(1);
        table->setCellWidget(0, 0, new QLabel("Anna"));
        flow->label("lPhotoLarge")->setPixmap(QPixmap::fromImage(photo));

        flow->window->loadedReaders({}, "NO_CARD");

        for (const char *name : { "lNumIdVal", "lCommonNameVal", "lsurnameVal", "lExpDateVal", "lnameVal_2" }) {
            QCOMPARE(flow->label(name)->text(), QString());
            QCOMPARE(flow->label(name)->toolTip(), QString());
        }
        QCOMPARE(flow->find<QLineEdit>("lineActualPin")->text(), QString());
        QCOMPARE(flow->widget("nameFrame_2")->accessibleName(), QString());
        QCOMPARE(flow->widget("widgetBlurICAO")->accessibleName(), QString());
        for (const char *name : { "lPhoto", "lPhotoLarge" }) {
            const QImage drawing = QIcon(":/images/no_photo.svg").pixmap(flow->label(name)->size()).toImage();
            QVERIFY(!drawing.isNull());
            QCOMPARE(flow->label(name)->pixmap(Qt::ReturnByValue).toImage(), drawing);
        }
        QVERIFY(!table->cellWidget(0, 0));
        QTRY_COMPARE(table->findChildren<QLabel *>().size(), 0);
    }

    void errorLeavesTheQuerySetSoThatTheNextListReadsTheCard()
    {
        flow->world.insertCard("Czytnik Alfa", "anna");
        flow->openWindow();
        QSignalSpy readers(flow->window.get(), &Window::getReaders);
        QSignalSpy select(flow->window.get(), &Window::selectDriverReader);
        flow->window->getReadersFromMonitor();
        flow->window->loadedReaders({}, "NO_CARD");

        flow->window->loadedReaders({ "Czytnik Alfa" });

        QCOMPARE(readers.count(), 0);
        QCOMPARE(select.count(), 1);
        QVERIFY(flow->loaderShown());
        QVERIFY(!flow->readersBox()->isHidden());
    }

    void sameListAgainDoesNotReadTheCardAgain()
    {
        QVERIFY(flow->showCard("anna"));
        flow->world.clearTrace();
        const QString surname = flow->label("lsurnameVal")->text();

        flow->window->loadedReaders({ "Czytnik Alfa" });

        QTest::qWait(50);
        QCOMPARE(flow->calls(), QStringList());
        QCOMPARE(flow->label("lsurnameVal")->text(), surname);
        QVERIFY(!flow->loaderShown());
    }

    void listWithoutTheReaderInUseReadsTheNewOne()
    {
        QVERIFY(flow->showCard("anna"));
        flow->world.insertCard("Czytnik Beta", "jan");
        flow->world.removeReader("Czytnik Alfa");
        const QString number = flow->label("lNumIdVal")->text();

        flow->window->loadedReaders({ "Czytnik Beta" });

        QCOMPARE(flow->label("lNumIdVal")->text(), QString());
        QVERIFY(flow->waitForCard());
        QCOMPARE(flow->readersBox()->currentText(), QString("Czytnik Beta"));
        QVERIFY(flow->label("lNumIdVal")->text() != number);
    }

    void readerInUseStaysChosenInALongerList()
    {
        QVERIFY(flow->showCard("anna"));
        flow->world.insertCard("Beta", "jan");

        flow->window->loadedReaders({ "Beta", "Czytnik Alfa" });

        QCOMPARE(flow->readersBox()->currentText(), QString("Czytnik Alfa"));
        QVERIFY(flow->readersBox()->isEnabled());
        QVERIFY(!flow->loaderShown());
    }

    void pickingAnotherReaderReadsItsCardAndTheSameOneNothing()
    {
        flow->world.insertCard("Czytnik Alfa", "anna");
        flow->world.insertCard("Czytnik Beta", "jan");
        flow->openWindow();
        flow->window->loadedReaders({ "Czytnik Alfa", "Czytnik Beta" });
        QVERIFY(flow->waitForCard());
        const QString number = flow->label("lNumIdVal")->text();
        QSignalSpy readers(flow->window.get(), &Window::getReaders);

        flow->window->selectReader();
        QCOMPARE(readers.count(), 0);

        LogCatcher log;
        flow->readersBox()->setCurrentIndex(1);
        flow->window->selectReader();
        QVERIFY(log.has("Reader changed to:  Czytnik Beta"));
        QCOMPARE(readers.count(), 1);
        QCOMPARE(flow->label("lNumIdVal")->text(), QString());
        QVERIFY(flow->waitForCard());
        QVERIFY(flow->label("lNumIdVal")->text() != number);
        QCOMPARE(flow->readersBox()->currentText(), QString("Czytnik Beta"));
    }

    void queryThatFailsShowsTheHomePageWithAnEmptyBox()
    {
        flow->openWindow();

        flow->window->getReadersFin(false, {});

        QCOMPARE(flow->page(), QString("pageHome"));
        QCOMPARE(flow->readersBox()->count(), 0);
        QCOMPARE(flow->readersBox()->currentText(), QString());
    }

    void queryThatFindsNobodyAsksTheMonitor()
    {
        flow->openWindow();
        LogCatcher log;

        flow->window->getReadersFin(true, {});

        QVERIFY(log.has("reader checked "));
        QCOMPARE(flow->page(), QString("pageSettings"));
    }

    void readerThatCannotBeSelectedAsksTheMonitor()
    {
        flow->openWindow();
        LogCatcher log;

        flow->window->loadedReaderSelected(false);

        QVERIFY(log.has("reader is not initialized"));
        QVERIFY(log.has("reader checked "));
    }

    void backFromSettingsReturnsToTheCardWithoutReadingIt()
    {
        QVERIFY(flow->showCard("anna"));
        flow->world.clearTrace();
        flow->button("bSettings")->click();
        QCOMPARE(flow->page(), QString("pageSettings"));
        QVERIFY(!flow->widget("bWroc")->isHidden());
        QVERIFY(flow->widget("frameReaders")->isHidden());

        flow->button("bWroc")->click();

        QCOMPARE(flow->page(), QString("pageHome"));
        QVERIFY(flow->widget("bWroc")->isHidden());
        QVERIFY(!flow->widget("frameReaders")->isHidden());
        QCOMPARE(flow->calls(), QStringList());
        QCOMPARE(flow->window->focusWidget(), flow->widget("widgetBlurICAO"));
    }

    void warningShowsForAReaderWithoutExtendedApdu_data()
    {
        QTest::addColumn<QByteArray>("conf");
        QTest::addColumn<bool>("shown");
        QTest::newRow("no file") << QByteArray() << true;
        QTest::newRow("named without E") << QByteArray("Alfa=255\r\n") << true;
        QTest::newRow("named with E") << QByteArray("Alfa=E65535\r\n") << false;
        QTest::newRow("other reader") << QByteArray("Gamma=E\r\n") << true;
    }
    void warningShowsForAReaderWithoutExtendedApdu()
    {
        QFETCH(QByteArray, conf);
        if (!conf.isEmpty())
            flow->writeReadersConf(conf);

        QVERIFY(flow->showCard("anna"));

        QTEST(!flow->widget("warningFrame")->isHidden(), "shown");
    }

private:
    void problemRows()
    {
        QTest::addColumn<QString>("error");
        QTest::addColumn<QString>("item");
        QTest::addColumn<QString>("message");
        QTest::addColumn<bool>("hidden");
        const QString place = "Umieść velmor na podłączonym czytniku";
        QTest::newRow("NO_READER") << "NO_READER"
                                   << "brak podłączonego czytnika"
                                   << "Podłącz poprawnie czytnik" << false;
        QTest::newRow("NO_CARD") << "NO_CARD"
                                 << "brak karty w czytniku" << place << false;
        QTest::newRow("NO_SUPPORTED_CARD") << "NO_SUPPORTED_CARD"
                                           << "brak wspieranej karty w czytniku" << place << false;
        QTest::newRow("any other") << "anything"
                                   << "brak połączenia z kartą"
                                   << "Zdejmij i przyłóż ponownie velmor do czytnika" << true;
    }
};

VELMOR_TEST(TestWindowReaders)
#include "tst_window_readers.moc"
