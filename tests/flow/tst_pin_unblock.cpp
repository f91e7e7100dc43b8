#include "support/pin_flow.h"

// The page for the PUK: the words of a locked and of a first PIN, and what it lets through.
class TestPinUnblock : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<PinFlow> flow;

    bool canUnblock() const { return flow->button("bChangePinPuk")->isEnabled(); }
    static QStringList fields() { return { "lineInsertPuk", "lineNewPinPuk", "lineRepeatPinPuk" }; }
    static QStringList hints() { return { "lPinInfoPuk", "lNewPinInfoPuk", "lRepeatPinInfoPuk" }; }
    QLabel *hint(const QString &name) const { return flow->label(name.toLatin1().constData()); }
    QLineEdit *field(const QString &name) const { return flow->field(name.toLatin1().constData()); }

    void wordsAre(const QString &details, const char *colour, const QString &button) const
    {
        QCOMPARE(flow->label("lUnblockPinDetails")->text(), details);
        QVERIFY(PinFlow::hintIs(flow->label("lUnblockPinDetails"), colour));
        QCOMPARE(flow->button("bChangePinPuk")->text(), button);
    }
    void labelsAre(const QStringList &texts) const
    {
        QStringList shown;
        for (const char *name : { "lNewPin_2", "lRepeatPin_2", "lPukInfoPinPad_3", "lPukInfoPinPad_5" })
            shown << flow->label(name)->text();
        QCOMPARE(shown, texts);
    }
    static QStringList unblockLabels()
    {
        return { "Nowy PIN", "Powtórz nowy PIN", "2. Podaj nowy PIN", "3. Powtórz nowy PIN" };
    }
    static QStringList firstPinLabels() { return { "PIN", "Powtórz PIN", "2. Podaj PIN", "3. Powtórz PIN" }; }
    static QString lockedText() { return "PIN jest zablokowany. Użyj numeru PUK do nadania nowego PIN-u."; }
    static QString firstPinText() { return "Twój dowód nie ma nadanego PIN-u. Wpisz PUK i nadaj PIN."; }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<PinFlow>(); }
    void cleanup() { flow.reset(); }

    void lockedPinIsToldInRed_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QString>("subtitle");
        QTest::newRow("Authentication") << QByteArray("Authentication")
                                        << "Certyfikat do identyfikacji i uwierzytelniania";
        QTest::newRow("Authorization") << QByteArray("Authorization") << "Certyfikat do podpisu osobistego";
        QTest::newRow("Qualified") << QByteArray("Qualified") << "Certyfikat kwalifikowany";
    }
    void lockedPinIsToldInRed()
    {
        QFETCH(QByteArray, name);
        QVERIFY(flow->start("locked-pins"));
        const QStringList triesLabels { "lTryNumDescPUK", "lTryNumDescPUKpinpad" };
        for (const QString &tries : triesLabels)
            flow->label(tries.toLatin1())->clear();
        LogCatcher log;

        flow->openPinPage(name);

        for (const QString &tries : triesLabels)
            QCOMPARE(flow->label(tries.toLatin1())->text(), QString("Pozostało prób: 3"));
        QCOMPARE(flow->page(), QString("pageUnblockPin"));
        QCOMPARE(flow->find<QStackedWidget>("pagerPinOrPinPadPuk")->currentWidget(), flow->widget("pageAppUnblock"));
        QCOMPARE(flow->title(), QString("Odblokowanie PIN-u"));
        QTEST(flow->subtitle(), "subtitle");
        wordsAre(lockedText(), redHint, "Zmień PIN");
        labelsAre(unblockLabels());
        QVERIFY(!canUnblock());
        QVERIFY(!flow->readersBox()->isEnabled());
        QVERIFY(log.has(" [ moveToUnblockPinPage() ]"));
        QVERIFY(log.lines().contains("UnblockPinPage Container:  " + QString(name) + "  status:  0"));
        QVERIFY(log.has(" [ moveToPinPage() ]"));
        QCOMPARE(QApplication::focusWidget(), flow->widget("lUnblockPinDetails"));
    }

    void firstPinOfQualifiedIsToldInBlue_data()
    {
        QTest::addColumn<QString>("card");
        QTest::newRow("to be changed") << "first-pin";
        QTest::newRow("not initialised") << "not-initialized";
        QTest::newRow("without a certificate") << "zaneta";
    }
    void firstPinOfQualifiedIsToldInBlue()
    {
        QFETCH(QString, card);
        QVERIFY(flow->start(card.toStdString()));
        LogCatcher log;

        flow->openPinPage(sim::Qualified);

        QCOMPARE(flow->page(), QString("pageUnblockPin"));
        QCOMPARE(flow->title(), QString("Nadawanie PIN-u"));
        QCOMPARE(flow->subtitle(), QString("Certyfikat kwalifikowany"));
        wordsAre(firstPinText(), blueHint, "Nadaj PIN");
        labelsAre(firstPinLabels());
        QVERIFY(log.lines().contains("UnblockPinPage Container:  Qualified  status:  4"));
        QCOMPARE(flow->label("lUnblockPinDetails")->accessibleName(),
                 QString("Nadawanie PIN-u Certyfikat kwalifikowany, Twój dowód nie ma nadanego PIN-u,  Wpisz PUK i "
                         "nadaj PIN, Masz 3 próby na prawidłowe wpisanie, trzykrotne wpisanie nieprawidłowego PUK-u "
                         "zablokuje dowód, numer PUK znajdziesz w dokumentach które dostałeś/aś w urzędzie podczas "
                         "odbierania dowodu osobistego"));
    }

    void otherContainerThatIsNotSetIsCalledLocked()
    {
        QVERIFY(flow->start("anna"));
        for (const char *name : { sim::Authentication, sim::Authorization }) {
            flow->window->refreshCertsStatus("Nadaj PIN", "Nadaj PIN", "Zmień PIN", 4, 4, 3, 3);
            flow->button(PinFlow::container(name).button)->setEnabled(true);

            flow->openPinPage(name);

            QCOMPARE(flow->title(), QString("Odblokowanie PIN-u"));
            wordsAre(lockedText(), redHint, "Zmień PIN");
            labelsAre(unblockLabels());
            flow->window->moveToHomePage();
        }
    }

    void lockedQualifiedKeepsTheLabelsOfTheVisitBefore()
    {
        QVERIFY(flow->start("first-pin"));
        flow->openPinPage(sim::Qualified);
        flow->window->moveToHomePage();
        flow->window->refreshCertsStatus("Odblokuj PIN", "Zmień PIN", "Odblokuj PIN", 0, 3, 3, 0);

        flow->openPinPage(sim::Qualified);

        QCOMPARE(flow->title(), QString("Odblokowanie PIN-u"));
        wordsAre(lockedText(), redHint, "Zmień PIN");
        labelsAre(firstPinLabels());

        flow->window->moveToHomePage();
        flow->openPinPage(sim::Authentication);
        labelsAre(unblockLabels());
    }

    void healthyPinGetsTheWordsButNoPage()
    {
        QVERIFY(flow->start("anna"));
        flow->window->refreshCertsStatus("Odblokuj PIN", "Zmień PIN", "Zmień PIN", 0, 3, 3, 3);
        flow->openPinPage(sim::Authentication);
        flow->label("lNewPin_2")->setText("?");
        flow->window->moveToHomePage();

        // The tries come back between the look at them and the page.
        flow->window->refreshCertsStatus("Zmień PIN", "Zmień PIN", "Zmień PIN", 2, 3, 3, 3);
        flow->readersBox()->setEnabled(true);
        flow->window->moveToUnblockPinPage();

        QCOMPARE(flow->page(), QString("pageHome"));
        QVERIFY(!flow->readersBox()->isEnabled());
        QCOMPARE(flow->label("lNewPin_2")->text(), QString("Nowy PIN"));
    }

    void screenReaderIsToldWhatToEnter_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QString>("word");
        QTest::newRow("Authentication") << QByteArray("Authentication") << "cztero";
        QTest::newRow("Authorization") << QByteArray("Authorization") << "sześcio";
        QTest::newRow("Qualified") << QByteArray("Qualified") << "ośmio";
    }
    void screenReaderIsToldWhatToEnter()
    {
        QFETCH(QByteArray, name);
        QFETCH(QString, word);
        QVERIFY(flow->start("locked-pins"));
        flow->world.setPukTries("locked-pins", 2);
        flow->window->loadAll();
        QVERIFY(flow->waitForCard());

        flow->openPinPage(name);

        QCOMPARE(field("lineInsertPuk")->accessibleName(), QString("Wprowadź ośmiocyfrowy PUK"));
        QCOMPARE(field("lineInsertPuk")->accessibleDescription(), QString("Pozostało prób: 2"));
        QCOMPARE(field("lineNewPinPuk")->accessibleName(), flow->label("lNewPin_2")->text());
        QCOMPARE(field("lineNewPinPuk")->accessibleDescription(), "Wprowadź nowy " + word + "cyfrowy PIN.");
        QCOMPARE(field("lineRepeatPinPuk")->accessibleDescription(), QString("Powtórz nowy PIN."));
        QCOMPARE(flow->label("lUnblockPinDetails")->accessibleName(),
                 "Odblokowanie PIN-u " + flow->subtitle()
                     + ", PIN jest zablokowany,  Użyj numeru PUK do nadania nowego PIN-u, Masz 2 próby na prawidłowe "
                       "wpisanie, trzykrotne wpisanie nieprawidłowego PUK-u zablokuje dowód, numer PUK znajdziesz w "
                       "dokumentach które dostałeś/aś w urzędzie podczas odbierania dowodu osobistego");
    }

    void informationSaysThreeTriesWhateverIsLeft()
    {
        QVERIFY(flow->start("locked-pins"));
        flow->world.setPukTries("locked-pins", 1);
        flow->window->loadAll();
        QVERIFY(flow->waitForCard());

        flow->openPinPage(sim::Authorization);

        QCOMPARE(flow->label("lPukInfo")->text(),
                 QString("Masz 3 próby na prawidłowe wpisanie. <b> 3-krotne wpisanie nieprawidłowego PUK-u zablokuje "
                         "dowód.</b><br> Numer PUK znajdziesz w dokumentach, które dostałeś/aś w urzędzie podczas "
                         "odbierania dowodu osobistego."));
        QVERIFY(PinFlow::hintIs(flow->label("lPukInfo"), blueHint));
        QCOMPARE(flow->label("lTryNumDescPUK")->text(), QString("Pozostało prób: 1"));
        QCOMPARE(flow->label("lTryNumDescPUKpinpad")->text(), QString("Pozostało prób: 1"));
    }

    void buttonWaitsForTheLastDigitOfEachField_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<int>("digits");
        QTest::addColumn<QString>("text");
        QTest::newRow("Authentication") << QByteArray("Authentication") << 4 << "PIN musi mieć 4 cyfry";
        QTest::newRow("Authorization") << QByteArray("Authorization") << 6 << "PIN musi mieć 6 cyfr";
        QTest::newRow("Qualified") << QByteArray("Qualified") << 8 << "PIN musi mieć 8 cyfr";
    }
    void buttonWaitsForTheLastDigitOfEachField()
    {
        QFETCH(QByteArray, name);
        QFETCH(int, digits);
        QFETCH(QString, text);
        QVERIFY(flow->start("locked-pins"));
        const int lengths[] = { 8, digits, digits };
        const QStringList texts { "PUK musi mieć 8 cyfr", text, text };
        for (int missing = 0; missing < 3; ++missing) {
            flow->window->moveToHomePage();
            flow->openPinPage(name);
            for (int i = 0; i < 3; ++i) {
                // More than the field takes, and what it does not.
                const QString full = QString("1a2 345678").left(i == missing ? lengths[i] + 1 : 10);
                flow->type(fields()[i].toLatin1().constData(), full);
            }

            QCOMPARE(field(fields()[missing])->text(), QString("12345678").left(lengths[missing] - 1));
            QVERIFY(!canUnblock());
            for (int i = 0; i < 3; ++i)
                QCOMPARE(hint(hints()[i])->isVisible(), i == missing);
            QCOMPARE(hint(hints()[missing])->text(), texts[missing]);
            QVERIFY(PinFlow::hintIs(hint(hints()[missing]), blueHint));

            flow->type(fields()[missing].toLatin1().constData(), "9");
            QVERIFY(canUnblock());
        }
    }

    void onlyTheNewPinKeepsItsLookWhileTyping()
    {
        QVERIFY(flow->start("locked-pins"));
        flow->openPinPage(sim::Authentication);
        for (const QString &line : fields())
            field(line)->setStyleSheet("color: red;");

        flow->type("lineNewPinPuk", "1");

        QVERIFY(field("lineInsertPuk")->styleSheet().contains("rgba(212, 214, 215, 70%)"));
        QVERIFY(field("lineRepeatPinPuk")->styleSheet().contains("rgba(212, 214, 215, 70%)"));
        QCOMPARE(field("lineNewPinPuk")->styleSheet(), QString("color: red;"));
    }

    // The page's emptying hides no hint, so those of the empty fields stay, unlike the hints of the change, which are
    // shown after it.
    void hintsShowOnEntry()
    {
        QVERIFY(flow->start("locked-pins"));
        flow->openPinPage(sim::Authentication);
        for (const QString &name : hints())
            QVERIFY(hint(name)->isVisible());
    }

    // The hints are made before the fields are emptied, so they go by what the visit before has left there.
    void hintsOfTheNextVisitGoByWhatWasLeft()
    {
        QVERIFY(flow->start("locked-pins"));
        flow->openPinPage(sim::Authentication);
        flow->typeUnblock(PinFlow::puk, "4826", "4826");
        sim::Fault cancelled;
        cancelled.function = "C_InitPIN";
        cancelled.result = 0x50;
        QVERIFY(flow->world.addFault(cancelled));
        flow->click("bChangePinPuk");
        QVERIFY(flow->waitForPage("pageCorrectChange"));
        flow->click("bWrocPin");

        flow->openPinPage(sim::Authentication);

        for (const QString &line : fields())
            QCOMPARE(field(line)->text(), QString());
        QVERIFY(!hint("lPinInfoPuk")->isVisible());
        QVERIFY(!hint("lNewPinInfoPuk")->isVisible());
        QVERIFY(hint("lRepeatPinInfoPuk")->isVisible());
        QVERIFY(!canUnblock());
    }

    // The way over the settings has left nothing, so nothing of it shows.
    void hintsAndButtonStartAnewAfterTheSettings()
    {
        QVERIFY(flow->start("locked-pins"));
        flow->openPinPage(sim::Authentication);
        flow->typeUnblock(PinFlow::puk, "4826", "4826");
        flow->click("bSettings");
        flow->window->moveToHomePage();

        flow->openPinPage(sim::Authentication);

        QVERIFY(!canUnblock());
        for (const QString &name : hints())
            QVERIFY(hint(name)->isVisible());
    }

    void differentRepetitionIsRefusedAndNothingIsSent()
    {
        QVERIFY(flow->start("locked-pins"));
        flow->openPinPage(sim::Authentication);
        flow->typeUnblock(PinFlow::puk, "4826", "4827");
        flow->world.clearTrace();
        LogCatcher log;

        flow->click("bChangePinPuk");

        QCOMPARE(flow->page(), QString("pageUnblockPin"));
        QCOMPARE(hint("lRepeatPinInfoPuk")->text(), QString("Niepoprawny PIN. Popraw PIN."));
        QVERIFY(PinFlow::hintIs(hint("lRepeatPinInfoPuk"), redHint));
        QVERIFY(field("lineRepeatPinPuk")->styleSheet().contains("color: rgb(234,4,73);"));
        QCOMPARE(field("lineRepeatPinPuk")->accessibleName(), QString("Powtórzony nowy PIN różni się"));
        QCOMPARE(QApplication::focusWidget(), flow->widget("lineRepeatPinPuk"));
        QVERIFY(log.has("Wrong validation of new and repeat pins (unblock PIN)"));
        QVERIFY(flow->waitForWorker());
        QCOMPARE(flow->calls(), QStringList());

        // The next visit does not name the field so.
        flow->click("bCancel_2");
        flow->openPinPage(sim::Authentication);
        QCOMPARE(field("lineRepeatPinPuk")->accessibleName(), QString("Powtórz nowy PIN"));
        for (const QString &line : fields())
            QCOMPARE(field(line)->text(), QString());
    }

    void successLeavesThePageAsNewAndTheOtherEmpty()
    {
        QVERIFY(flow->start("locked-pins"));
        flow->openPinPage(sim::Authentication);
        flow->typeUnblock(PinFlow::puk, "4826", "4826");
        for (const QString &line : fields())
            field(line)->setStyleSheet("color: red;");
        for (const char *line : { "lineActualPin", "lineNewPin", "lineRepeatPin" })
            flow->field(line)->setText("4826");

        flow->window->unblockPinFin(CardResult::done);

        for (const QString &line : fields()) {
            QCOMPARE(field(line)->text(), QString());
            QVERIFY(field(line)->styleSheet().contains("rgba(212, 214, 215, 70%)"));
        }
        for (const char *line : { "lineActualPin", "lineNewPin", "lineRepeatPin" })
            QCOMPARE(flow->field(line)->text(), QString());
    }

    void loaderSpeaksOfTheOperation_data()
    {
        QTest::addColumn<QString>("card");
        QTest::addColumn<QString>("text");
        QTest::newRow("unblock") << "locked-qualified"
                                 << "Odblokowywanie PIN-u \n Proszę czekać";
        QTest::newRow("first PIN") << "first-pin"
                                   << "Nadawanie PIN-u \n Proszę czekać";
    }
    void loaderSpeaksOfTheOperation()
    {
        QFETCH(QString, card);
        QFETCH(QString, text);
        QVERIFY(flow->start(card.toStdString()));
        flow->openPinPage(sim::Qualified);
        flow->typeUnblock(PinFlow::puk, "48261537", "48261537");
        LogCatcher log;

        flow->click("bChangePinPuk");

        QVERIFY(log.lines().contains("New and repeat pins meet criterias (unblock PIN) "));
        QVERIFY(flow->loaderShown());
        QCOMPARE(flow->label("loadingDesc")->text(), text);
        QCOMPARE(field("lineRepeatPinPuk")->text(), QString());
        // Not even looked at.
        flow->window->unblockPin();
        QVERIFY(!log.has("Wrong validation"));
        QVERIFY(flow->waitForPage("pageCorrectChange"));
    }
};

VELMOR_TEST(TestPinUnblock)
#include "tst_pin_unblock.moc"
