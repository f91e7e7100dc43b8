#include "support/armed_timers.h"
#include "support/pin_flow.h"

#include <QElapsedTimer>

// PIN operations on a reader with a keypad: asked for at once or after a second, answered at the reader.
class TestWindowPinPad : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<PinFlow> flow;

    QWidget *shownIn(const char *pager) const { return flow->find<QStackedWidget>(pager)->currentWidget(); }
    bool on(const char *button) const { return flow->button(button)->isEnabled(); }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<PinFlow>(); }
    void cleanup()
    {
        // Whoever still waits at the keypad goes away from it.
        for (int i = 0; i < 3; ++i)
            flow->answerAtPad(sim::PadAnswer::Kind::Cancel);
        flow.reset();
    }

    void changeIsAskedForAtOnceWithoutALoader()
    {
        QVERIFY(flow->start("anna", true));
        flow->world.clearTrace();
        flow->widget("bWroc")->show();
        flow->readersBox()->setEnabled(true);
        QSignalSpy sent(flow->window.get(), &Window::changePinSig);
        LogCatcher log;

        flow->openPinPage(sim::Authentication);

        QCOMPARE(sent.size(), 1);
        QCOMPARE(sent.first(), (QVariantList { "Czytnik Alfa", "Authentication", "", "" }));
        QCOMPARE(flow->page(), QString("pageChangePin"));
        QCOMPARE(shownIn("pagerPinPadOrApp"), flow->widget("pagePinPad"));
        QVERIFY(!flow->loaderShown());
        QVERIFY(!on("bSettings") && !on("bHelp"));
        QVERIFY(!flow->widget("bWroc")->isVisible());
        QVERIFY(!flow->readersBox()->isEnabled());
        QCOMPARE(flow->label("lTryNumDescpinpad")->text(), QString("Pozostało prób: 3"));
        QCOMPARE(QApplication::focusWidget(), flow->widget("lTryNumDesc_2"));
        QVERIFY(log.has("Using PINPAD for changing PIN [moveToPinPage() ]"));
        QVERIFY(flow->waitForPad());
        // Only who keys in nothing has entered nothing: the library is told so by empty PINs.
        QCOMPARE(flow->pinCalls(), QStringList());

        QVERIFY(flow->world.padChange("1234", "4826"));
        QVERIFY(flow->waitForPage("pageCorrectChange"));
        QVERIFY(flow->showsChange(CardResult::done));
        QVERIFY(on("bSettings") && on("bHelp"));
        QCOMPARE(flow->pinCalls(),
                 (QStringList { "C_Login container=Authentication user=USER pin=empty -> 0x0",
                                "C_SetPIN container=Authentication oldPin=empty newPin=empty -> 0x0",
                                "C_Logout container=Authentication -> 0x0" }));
        QCOMPARE(flow->state().pins[sim::Authentication].pin, std::string("4826"));
    }

    void screenReaderIsToldTheSteps_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QString>("word");
        QTest::newRow("Authentication") << QByteArray("Authentication") << "cztero";
        QTest::newRow("Authorization") << QByteArray("Authorization") << "sześcio";
        QTest::newRow("Qualified") << QByteArray("Qualified") << "ośmio";
    }
    void screenReaderIsToldTheSteps()
    {
        QFETCH(QByteArray, name);
        QFETCH(QString, word);
        QVERIFY(flow->start("anna", true));

        flow->openPinPage(name);

        QCOMPARE(flow->label("lpinpad")->accessibleName(), QString("Używasz czytnika z pinpadem (klawiaturą)"));
        QCOMPARE(flow->label("lTryNumDesc_2")->accessibleName(),
                 "Zmiana PIN-u" + flow->subtitle()
                     + "Postępuj zgodnie z komunikatami na czytniku:\n1. Podaj aktualny PIN\n2. Powtórz aktualny "
                       "PIN\n3. Podaj nowy PIN\n4. Powtórz nowy PIN, Pozostało prób: 3, postępuj zgodnie z "
                       "komunikatami na czytniku, podaj aktualny "
                     + word + "cyfrowy PIN następnie powtórz aktualny PIN następnie podaj nowy " + word
                     + "cyfrowy PIN następnie powtórz nowy PIN, Jeśli chcesz anulować operację zmiany PIN-u, naciśnij "
                       "czerwony przycisk C na klawiaturze czytnika.");
    }

    void bracketsOfTheStepsBecomeBlanks()
    {
        QVERIFY(flow->start("anna", true));
        flow->label("lTryNumDesc_2")->setText("Podaj (krok) PIN <b>tu</b>");

        flow->openPinPage(sim::Authentication);

        QVERIFY(flow->label("lTryNumDesc_2")->accessibleName().contains("Podaj  krok  PIN tu, Pozostało"));
    }

    void answersOfTheKeypadInAChange_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("result");
        using Kind = sim::PadAnswer::Kind;
        QTest::newRow("cancelled") << int(Kind::Cancel) << CardResult::cancelled;
        QTest::newRow("PINs differ") << int(Kind::Mismatch) << CardResult::pinsDiffer;
        // Has no code of its own in a change.
        QTest::newRow("rejected") << int(Kind::Reject) << CardResult::failed;
    }
    void answersOfTheKeypadInAChange()
    {
        QFETCH(int, kind);
        QFETCH(int, result);
        QVERIFY(flow->start("anna", true));
        flow->openPinPage(sim::Authentication);
        QVERIFY(flow->waitForPad());

        flow->answerAtPad(sim::PadAnswer::Kind(kind));

        QVERIFY(flow->waitForPage("pageCorrectChange"));
        QVERIFY(flow->showsChange(result));
        QCOMPARE(flow->state().pins[sim::Authentication].tries, 3);
        // Asked once, and not again by itself.
        QVERIFY(flow->waitForWorker());
        QCOMPARE(flow->world.waitingCalls(), 0);
    }

    void wrongPinOnThePadShowsTheTriesLeftAndLocksInTheEnd()
    {
        QVERIFY(flow->start("anna", true));
        for (const int left : { 2, 1 }) {
            flow->openPinPage(sim::Authentication);
            QVERIFY(flow->world.padChange("9999", "4826"));
            QVERIFY(flow->waitForPage("pageCorrectChange"));
            QCOMPARE(flow->label("lTryNumDescpinpad")->text(), "Pozostało prób: " + QString::number(left));
            QVERIFY(flow->world.clearPad());
            flow->click("bWrocPin");
        }
        flow->openPinPage(sim::Authentication);
        QVERIFY(flow->world.padChange("9999", "4826"));
        QVERIFY(flow->waitForPage("pageUnblockPin"));
        QVERIFY(flow->world.clearPad());

        // And a second later the PUK is asked for.
        QCOMPARE(shownIn("pagerPinOrPinPadPuk"), flow->widget("pagePinPadUnblock"));
        QVERIFY(flow->waitForPad());
        QVERIFY(flow->world.padUnblock(PinFlow::puk, "7777"));
        QVERIFY(flow->waitForPage("pageCorrectChange"));
        QVERIFY(flow->showsUnblock(CardResult::done));
        QCOMPARE(flow->state().pins[sim::Authentication].pin, std::string("7777"));
    }

    void unblockIsAskedForAfterASecond()
    {
        QVERIFY(flow->start("locked-authorization", true));
        flow->world.clearTrace();
        QSignalSpy sent(flow->window.get(), &Window::unblockPinSig);
        QElapsedTimer clock;
        clock.start();
        LogCatcher log;

        QCOMPARE(waitsArmedBy([this] { flow->openPinPage(sim::Authorization); }), QList<int> { 1000 });

        QCOMPARE(flow->page(), QString("pageUnblockPin"));
        QCOMPARE(shownIn("pagerPinOrPinPadPuk"), flow->widget("pagePinPadUnblock"));
        QCOMPARE(flow->label("lPukInfoPinPad_4")->text(), QString("PIN musi mieć 6 cyfr"));
        QVERIFY(log.has("Using PINPAD for unblocking PIN [ moveToUnblockPinPage() ]"));
        QCOMPARE(QApplication::focusWidget(), flow->widget("lUnblockPinDetails"));
        QVERIFY(sent.isEmpty());
        QVERIFY(on("bSettings") && on("bHelp"));
        QVERIFY(flow->waitForPad());
        QVERIFY2(clock.elapsed() >= 950, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(sent.first(), (QVariantList { "Czytnik Alfa", "Authorization", "", "" }));
        QVERIFY(!on("bSettings") && !on("bHelp"));
        QVERIFY(!flow->loaderShown());

        QVERIFY(flow->world.padUnblock(PinFlow::puk, "482615"));
        QVERIFY(flow->waitForPage("pageCorrectChange"));
        QVERIFY(flow->showsUnblock(CardResult::done));
        QVERIFY(on("bSettings") && on("bHelp"));
        QCOMPARE(flow->pinCalls(),
                 (QStringList { "C_Login container=Authorization user=SO pin=empty -> 0x0",
                                "C_InitPIN container=Authorization newPin=empty -> 0x0",
                                "C_Logout container=Authorization -> 0x0" }));
    }

    void firstPinIsKeyedInOnThePad()
    {
        QVERIFY(flow->start("first-pin", true));
        flow->world.clearTrace();
        flow->openPinPage(sim::Qualified);
        QCOMPARE(flow->label("lPukInfoPinPad_3")->text(), QString("2. Podaj PIN"));
        QCOMPARE(flow->label("lPukInfoPinPad_5")->text(), QString("3. Powtórz PIN"));
        QVERIFY(flow->waitForPad());

        QVERIFY(flow->world.padFirstPin(PinFlow::puk, "48261537"));

        QVERIFY(flow->waitForPage("pageCorrectChange"));
        QVERIFY(flow->showsFirstPin(CardResult::done));
        QCOMPARE(flow->pinCalls(), QStringList("C_SetPIN container=Qualified oldPin=empty newPin=empty -> 0x0"));
    }

    void answersOfTheKeypadWithThePuk_data()
    {
        QTest::addColumn<QString>("card");
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("result");
        using Kind = sim::PadAnswer::Kind;
        for (const char *card : { "locked-qualified", "first-pin" }) {
            QTest::addRow("%s, cancelled", card) << card << int(Kind::Cancel) << CardResult::cancelled;
            QTest::addRow("%s, PINs differ", card) << card << int(Kind::Mismatch) << CardResult::pinsDiffer;
        }
        QTest::newRow("first-pin, rejected") << "first-pin" << int(Kind::Reject) << CardResult::aborted;
    }
    void answersOfTheKeypadWithThePuk()
    {
        QFETCH(QString, card);
        QFETCH(int, kind);
        QFETCH(int, result);
        QVERIFY(flow->start(card.toStdString(), true));
        flow->openPinPage(sim::Qualified);
        QVERIFY(flow->waitForPad());

        flow->answerAtPad(sim::PadAnswer::Kind(kind));

        QVERIFY(flow->waitForPage("pageCorrectChange"));
        QVERIFY(card == "first-pin" ? flow->showsFirstPin(result) : flow->showsUnblock(result));
    }

    void unblockRejectedAfterThePukIsNeutral()
    {
        QVERIFY(flow->start("locked-qualified", true));
        flow->openPinPage(sim::Qualified);
        QVERIFY(flow->waitForPad());
        sim::PadAnswer known;
        known.secret = PinFlow::puk;
        QVERIFY(flow->world.pad(known));

        flow->answerAtPad(sim::PadAnswer::Kind::Reject);

        QVERIFY(flow->waitForPage("pageCorrectChange"));
        QVERIFY(flow->showsUnblock(CardResult::aborted));
    }

    void rejectedFirstPinMustBeUnblockedAfterwards()
    {
        QVERIFY(flow->start("first-pin", true));
        flow->openPinPage(sim::Qualified);
        QVERIFY(flow->waitForPad());
        flow->answerAtPad(sim::PadAnswer::Kind::Reject);
        QVERIFY(flow->waitForPage("pageCorrectChange"));

        flow->click("bWrocPin");
        QCOMPARE(flow->button("bChangePinQualifiedCert")->text().trimmed(), QString("Odblokuj PIN"));
        flow->openPinPage(sim::Qualified);
        QCOMPARE(flow->title(), QString("Odblokowanie PIN-u"));
    }

    void chipAndTriesDecideWhetherThePukGoesThroughThePad_data()
    {
        QTest::addColumn<bool>("pinpad");
        QTest::addColumn<int>("chip");
        QTest::addColumn<int>("pukTries");
        QTest::addColumn<bool>("pad");
        for (const int tries : { 1, 2, 3 }) {
            QTest::addRow("chip 16, tries %d", tries) << true << 16 << tries << false;
            QTest::addRow("chip 4, tries %d", tries) << true << 4 << tries << (tries != 1);
            QTest::addRow("chip 64, tries %d", tries) << true << 64 << tries << true;
            QTest::addRow("no pinpad, tries %d", tries) << false << 64 << tries << false;
        }
    }
    void chipAndTriesDecideWhetherThePukGoesThroughThePad()
    {
        QFETCH(bool, pinpad);
        QFETCH(int, chip);
        QFETCH(int, pukTries);
        QFETCH(bool, pad);
        QVERIFY(flow->start("locked-pins", pinpad));
        flow->world.setPukTries("locked-pins", pukTries);
        flow->window->loadedConteinersAndICAO("Odblokuj PIN", "Odblokuj PIN", "Odblokuj PIN", 0, 0, pukTries, 0, pinpad,
                                              chip, {}, {}, {}, {});
        QVERIFY(flow->waitForWorker());
        QVERIFY(flow->waitForEnd());

        flow->openPinPage(sim::Authentication);

        QCOMPARE(flow->page(), QString("pageUnblockPin"));
        QCOMPARE(shownIn("pagerPinOrPinPadPuk"), flow->widget(pad ? "pagePinPadUnblock" : "pageAppUnblock"));
        QCOMPARE(shownIn("pagerPinPadOrApp"), flow->widget(pinpad ? "pagePinPad" : "pageApp"));
        if (pad) {
            QVERIFY(flow->waitForPad());
            return;
        }
        // Typed, also on this reader.
        flow->typeUnblock(PinFlow::puk, "4826", "4826");
        flow->click("bChangePinPuk");
        QVERIFY(flow->waitForPage("pageCorrectChange"));
        QVERIFY(flow->showsUnblock(CardResult::done));
    }

    // The chip decides for the PUK alone.
    void changeGoesThroughThePadWhateverTheChip()
    {
        QVERIFY(flow->start("jan", true));
        QSignalSpy sent(flow->window.get(), &Window::changePinSig);

        flow->openPinPage(sim::Authentication);

        QCOMPARE(sent.size(), 1);
        QCOMPARE(shownIn("pagerPinPadOrApp"), flow->widget("pagePinPad"));
        QCOMPARE(shownIn("pagerPinOrPinPadPuk"), flow->widget("pageAppUnblock"));
    }

    void chipsOfTheSpecimenCardsAreTheOnesMeant_data()
    {
        QTest::addColumn<QString>("card");
        QTest::addColumn<bool>("pad");
        QTest::newRow("VELMOR_2_1") << "jan" << false;
        QTest::newRow("VELMOR_2_0") << "ewa" << true;
        QTest::newRow("VELMOR_2_2") << "anna" << true;
    }
    void chipsOfTheSpecimenCardsAreTheOnesMeant()
    {
        QFETCH(QString, card);
        QFETCH(bool, pad);
        QVERIFY(flow->start(card.toStdString(), true));
        flow->world.setTries(card.toStdString(), sim::Authentication, 0);
        flow->window->loadAll();
        QVERIFY(flow->waitForCard());

        flow->openPinPage(sim::Authentication);

        QCOMPARE(shownIn("pagerPinOrPinPadPuk"), flow->widget(pad ? "pagePinPadUnblock" : "pageAppUnblock"));
        // The PIN itself is changed on the pad, whatever the chip.
        QCOMPARE(shownIn("pagerPinPadOrApp"), flow->widget("pagePinPad"));
        if (pad)
            QVERIFY(flow->waitForPad());
    }
};

VELMOR_TEST(TestWindowPinPad)
#include "tst_window_pin_pad.moc"
