#include "support/pin_flow.h"

#include <QValidator>

// The page on which a PIN is changed on the keyboard: how it is entered, what it says, what it lets through.
class TestPinChange : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<PinFlow> flow;

    static void containers()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<int>("digits");
        QTest::addColumn<QString>("word");
        QTest::addColumn<QString>("hint");
        QTest::addColumn<QString>("subtitle");
        QTest::newRow("4 digits") << QByteArray("Authentication") << 4 << "cztero"
                                  << "PIN musi mieć 4 cyfry"
                                  << "Certyfikat do identyfikacji i uwierzytelniania";
        QTest::newRow("6 digits") << QByteArray("Authorization") << 6 << "sześcio"
                                  << "PIN musi mieć 6 cyfr"
                                  << "Certyfikat do podpisu osobistego";
        QTest::newRow("8 digits") << QByteArray("Qualified") << 8 << "ośmio"
                                  << "PIN musi mieć 8 cyfr"
                                  << "Certyfikat kwalifikowany";
    }

    bool canChange() const { return flow->button("bChangePin")->isEnabled(); }
    static QStringList hints() { return { "lActualPinInfo", "lNewPinInfo", "lRepeatPinInfo" }; }
    static QStringList fields() { return { "lineActualPin", "lineNewPin", "lineRepeatPin" }; }
    QLabel *hint(const QString &name) const { return flow->label(name.toLatin1().constData()); }
    QLineEdit *field(const QString &name) const { return flow->field(name.toLatin1().constData()); }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<PinFlow>(); }
    void cleanup() { flow.reset(); }

    void pageTellsTitleTriesAndLength_data() { containers(); }
    void pageTellsTitleTriesAndLength()
    {
        QFETCH(QByteArray, name);
        QFETCH(QString, hint);
        QVERIFY(flow->start("anna"));
        flow->widget("lTryNumDesc")->hide();
        QMap<QString, int> rules;
        for (const QString &label : hints())
            rules[label] = this->hint(label)->styleSheet().count(" color:");

        flow->openPinPage(name);

        QCOMPARE(flow->page(), QString("pageChangePin"));
        QVERIFY(flow->widget("lTryNumDesc")->isVisible());
        QCOMPARE(flow->find<QStackedWidget>("pagerPinPadOrApp")->currentWidget(), flow->widget("pageApp"));
        QCOMPARE(flow->find<QStackedWidget>("pagerPinOrPinPadPuk")->currentWidget(), flow->widget("pageAppUnblock"));
        QCOMPARE(flow->title(), QString("Zmiana PIN-u"));
        QTEST(flow->subtitle(), "subtitle");
        for (const char *tries : { "lTryNumDesc", "lTryNumDescpinpad" })
            QCOMPARE(flow->label(tries)->text(), QString("Pozostało prób: 3"));
        for (const QString &label : hints()) {
            QCOMPARE(this->hint(label)->text(), hint);
            QVERIFY(this->hint(label)->isVisible());
            QVERIFY(PinFlow::hintIs(this->hint(label), blueHint));
            // Told by the check of the empty field and by the page; the style sheet grows each time.
            QCOMPARE(this->hint(label)->styleSheet().count(" color:"), rules[label] + 2);
        }
        QVERIFY(!canChange());
        QVERIFY(!flow->readersBox()->isEnabled());
        QVERIFY(flow->button("bSettings")->isEnabled());
        QCOMPARE(QApplication::focusWidget(), flow->widget("lineActualPin"));
        QVERIFY(flow->widget("fieldActualPin")->property("FocusInside").toBool());
    }

    void screenReaderIsToldWhatToEnter_data() { containers(); }
    void screenReaderIsToldWhatToEnter()
    {
        QFETCH(QByteArray, name);
        QFETCH(QString, word);
        QFETCH(QString, subtitle);
        QVERIFY(flow->start("anna"));
        flow->world.setTries("anna", name.toStdString(), 2);
        flow->window->loadAll();
        QVERIFY(flow->waitForCard());

        flow->openPinPage(name);

        QCOMPARE(field("lineActualPin")->accessibleName(),
                 "Zmiana PIN-u" + subtitle + " Wprowadź aktualny " + word + " cyfrowy PIN.");
        QCOMPARE(field("lineActualPin")->accessibleDescription(), QString("Pozostało prób: 2"));
        QCOMPARE(field("lineNewPin")->accessibleDescription(), "Wprowadź nowy " + word + "cyfrowy PIN.");
        QCOMPARE(field("lineRepeatPin")->accessibleName(), QString());
        QCOMPARE(field("lineRepeatPin")->accessibleDescription(), QString("Powtórz nowy PIN."));
    }

    void lastTryIsToldAndLeadsOnAsUsual()
    {
        QVERIFY(flow->start("anna"));
        flow->world.setTries("anna", sim::Authentication, 1);
        flow->window->loadAll();
        QVERIFY(flow->waitForCard());

        flow->openPinPage(sim::Authentication);

        QCOMPARE(flow->page(), QString("pageChangePin"));
        QCOMPARE(flow->label("lTryNumDesc")->text(), QString("Pozostało prób: 1"));
    }

    void fieldsTakeTheDigitsOfTheContainer_data() { containers(); }
    void fieldsTakeTheDigitsOfTheContainer()
    {
        QFETCH(QByteArray, name);
        QFETCH(int, digits);
        QVERIFY(flow->start("anna"));
        // From another container before, so that the pattern is seen to change.
        flow->openPinPage(name == sim::Qualified ? sim::Authentication : sim::Qualified);
        flow->click("bCancel");

        flow->openPinPage(name);

        for (const QString &line : fields()) {
            QCOMPARE(field(line)->echoMode(), QLineEdit::Password);
            flow->type(line.toLatin1().constData(), "a1b2c3d4e5f6g7h8i9");
            QCOMPARE(field(line)->text(), QString("123456789").left(digits));
            QVERIFY(field(line)->inputMethodHints() & Qt::ImhDigitsOnly);
        }
        QVERIFY(canChange());
    }

    void buttonWaitsForTheLastDigitOfEachField_data() { containers(); }
    void buttonWaitsForTheLastDigitOfEachField()
    {
        QFETCH(QByteArray, name);
        QFETCH(int, digits);
        QFETCH(QString, hint);
        const QString full = QString("12345678").left(digits);
        QVERIFY(flow->start("anna"));
        flow->openPinPage(name);
        for (int missing = 0; missing < 3; ++missing) {
            flow->window->moveToHomePage();
            flow->openPinPage(name);
            for (int i = 0; i < 3; ++i)
                flow->type(fields()[i].toLatin1().constData(), i == missing ? full.left(digits - 1) : full);

            QVERIFY(!canChange());
            for (int i = 0; i < 3; ++i)
                QCOMPARE(this->hint(hints()[i])->isVisible(), i == missing);
            QCOMPARE(this->hint(hints()[missing])->text(), hint);

            flow->type(fields()[missing].toLatin1().constData(), "9");
            QVERIFY(canChange());
            QVERIFY(!this->hint(hints()[missing])->isVisible());

            QTest::keyClick(field(fields()[missing]), Qt::Key_Backspace);
            QVERIFY(!canChange());
            QVERIFY(this->hint(hints()[missing])->isVisible());
        }
    }

    void onlyTheNewPinKeepsItsLookWhileTyping()
    {
        QVERIFY(flow->start("anna"));
        flow->openPinPage(sim::Authentication);
        for (const QString &line : fields())
            field(line)->setStyleSheet("color: red;");

        flow->type("lineNewPin", "1");

        QVERIFY(field("lineActualPin")->styleSheet().contains("rgba(212, 214, 215, 70%)"));
        QVERIFY(field("lineRepeatPin")->styleSheet().contains("rgba(212, 214, 215, 70%)"));
        QCOMPARE(field("lineNewPin")->styleSheet(), QString("color: red;"));
    }

    void differentRepetitionIsRefusedAndNothingIsSent()
    {
        QVERIFY(flow->start("anna"));
        flow->openPinPage(sim::Authentication);
        flow->typeChange("1234", "4826", "4827");
        flow->world.clearTrace();
        LogCatcher log;

        flow->click("bChangePin");

        QCOMPARE(flow->page(), QString("pageChangePin"));
        QVERIFY(!flow->loaderShown());
        QCOMPARE(hint("lRepeatPinInfo")->text(), QString("Niepoprawny PIN. Popraw PIN."));
        QVERIFY(PinFlow::hintIs(hint("lRepeatPinInfo"), redHint));
        QVERIFY(hint("lRepeatPinInfo")->isVisible());
        QVERIFY(field("lineRepeatPin")->styleSheet().contains("background:rgb(234,4,73,30%); color: rgb(234,4,73);"));
        QCOMPARE(field("lineRepeatPin")->accessibleName(), QString("Powtórzony nowy PIN różni się"));
        QCOMPARE(QApplication::focusWidget(), flow->widget("lineRepeatPin"));
        QVERIFY(log.has("New and repeat pins dont match"));
        QVERIFY(log.has("Wrong validation of new and repeat pins (change PIN)"));
        QVERIFY(flow->waitForWorker());
        QCOMPARE(flow->calls(), QStringList());

        // Not busy any more: the corrected entry goes through.
        flow->type("lineRepeatPin", QString());
        field("lineRepeatPin")->selectAll();
        QTest::keyClicks(field("lineRepeatPin"), "4826");
        flow->click("bChangePin");
        QVERIFY(flow->waitForPage("pageCorrectChange"));
        QVERIFY(flow->showsChange(CardResult::done));
    }

    void nextVisitForgetsTheWrongRepetition()
    {
        QVERIFY(flow->start("anna"));
        flow->openPinPage(sim::Authentication);
        flow->typeChange("1234", "4826", "4827");
        flow->click("bChangePin");

        flow->click("bCancel");
        flow->openPinPage(sim::Authentication);

        QCOMPARE(field("lineRepeatPin")->accessibleName(), QString());
        QVERIFY(!field("lineRepeatPin")->styleSheet().contains("234,4,73"));
        QVERIFY(PinFlow::hintIs(hint("lRepeatPinInfo"), blueHint));
        for (const QString &line : fields())
            QCOMPARE(field(line)->text(), QString());
    }

    // What was cancelled at the card leaves its entry in the hidden fields.
    void visitAfterACancelledChangeStartsAnew()
    {
        QVERIFY(flow->start("anna"));
        flow->openPinPage(sim::Authentication);
        flow->typeChange("1234", "4826", "4826");
        flow->window->changePinFin(CardResult::cancelled);
        flow->click("bWrocPin");
        QVERIFY(canChange());

        flow->openPinPage(sim::Authentication);

        for (const QString &line : fields())
            QCOMPARE(field(line)->text(), QString());
        QVERIFY(!canChange());
    }

    void successLeavesThePageAsNewAndTheOtherEmpty()
    {
        QVERIFY(flow->start("anna"));
        flow->openPinPage(sim::Authentication);
        flow->typeChange("1234", "4826", "4826");
        for (const QString &line : fields())
            field(line)->setStyleSheet("color: red;");
        for (const QString &label : hints())
            hint(label)->show();
        for (const char *line : { "lineInsertPuk", "lineNewPinPuk", "lineRepeatPinPuk" })
            flow->field(line)->setText("4826");
        flow->readersBox()->setEnabled(true);

        flow->window->changePinFin(CardResult::done);

        QVERIFY(!flow->readersBox()->isEnabled());
        for (const QString &line : fields()) {
            QCOMPARE(field(line)->text(), QString());
            QVERIFY(field(line)->styleSheet().contains("rgba(212, 214, 215, 70%)"));
        }
        for (const QString &label : hints())
            QVERIFY(hint(label)->isHidden());
        for (const char *line : { "lineInsertPuk", "lineNewPinPuk", "lineRepeatPinPuk" })
            QCOMPARE(flow->field(line)->text(), QString());
    }

    void wrongPinMarksItsFieldWhereverTheUserIs()
    {
        QVERIFY(flow->start("anna"));
        flow->openPinPage(sim::Authentication);
        flow->window->moveToSettingsPage(false);

        flow->window->changePinFin(CardResult::wrongPin);

        QVERIFY(field("lineActualPin")->styleSheet().contains("color: rgb(234,4,73);"));
    }

    void cancelGoesHomeAndForgetsTheEntry()
    {
        QVERIFY(flow->start("anna"));
        flow->openPinPage(sim::Authentication);
        flow->typeChange("1234", "4826", "4826");

        flow->click("bCancel");

        QCOMPARE(flow->page(), QString("pageHome"));
        QCOMPARE(flow->title(), QString("velmor Menedżer"));
        for (const QString &line : fields())
            QCOMPARE(field(line)->text(), QString());
        QCOMPARE(QApplication::focusWidget(), flow->widget("widgetBlurICAO"));
    }

    void loaderCoversThePageAndTheRepetitionGoesAtOnce()
    {
        QVERIFY(flow->start("anna"));
        flow->openPinPage(sim::Authentication);
        flow->typeChange("1234", "4826", "4826");
        QVERIFY(flow->world.block("C_SetPIN"));
        LogCatcher log;

        flow->click("bChangePin");
        QVERIFY(flow->waitForPad());

        QVERIFY(log.lines().contains("New and repeat pins meet criterias (change PIN) "));
        QVERIFY(flow->loaderShown());
        QVERIFY(flow->widget("pager")->isHidden());
        QCOMPARE(flow->label("loadingDesc")->text(), QString("Zmiana PIN-u \n Proszę czekać"));
        QCOMPARE(flow->label("loadingDesc")->accessibleName(), QString("Zmiana PIN-u \n Proszę czekać"));
        QCOMPARE(QApplication::focusWidget(), flow->widget("loadingDesc"));
        QCOMPARE(field("lineRepeatPin")->text(), QString());
        // Not even looked at.
        flow->window->changePin();
        QVERIFY(!log.has("Wrong validation"));
        flow->world.release();
        QVERIFY(flow->waitForPage("pageCorrectChange"));
    }

    void lockedPinLeadsToThePageForThePuk_data()
    {
        QTest::addColumn<int>("pukTries");
        QTest::addColumn<QString>("page");
        QTest::newRow("PUK good") << 3 << "pageUnblockPin";
        QTest::newRow("last try of the PUK") << 1 << "pageUnblockPin";
        QTest::newRow("PUK blocked") << 0 << "pageBlockedPuk_2";
        QTest::newRow("PUK without a counter") << 4 << "pageBlockedPuk_2";
    }
    void lockedPinLeadsToThePageForThePuk()
    {
        QFETCH(int, pukTries);
        QVERIFY(flow->start("anna"));
        for (const int tries : { 0, 4 }) {
            flow->window->refreshCertsStatus("Odblokuj PIN", "Zmień PIN", "Zmień PIN", tries, 3, pukTries, 3);
            flow->readersBox()->setEnabled(true);
            LogCatcher log;

            flow->openPinPage(sim::Authentication);

            QTEST(flow->page(), "page");
            QVERIFY(!flow->readersBox()->isEnabled());
            // On the straight way to the blocked page nothing is said of it.
            QCOMPARE(log.lines().contains(" No more tries left :  Authentication  [ moveToPinPage() ]"), pukTries != 0);
            QCOMPARE(log.has("No more tries left"), pukTries != 0);
            flow->window->moveToHomePage();
        }
    }

    void nothingHappensWhileBusy()
    {
        QVERIFY(flow->start("anna"));
        flow->window->loadAll();
        QVERIFY(flow->loaderShown());

        flow->window->chooseAuthenticationCertPIN();
        flow->window->chooseAuthorizationCertPIN();
        flow->window->chooseQualifiedCertPIN();
        flow->window->changePin();
        flow->window->unblockPin();

        QCOMPARE(flow->page(), QString("pageHome"));
        QVERIFY(flow->waitForCard());
    }

    void pinButtonsGoOnAndOffTogether()
    {
        QVERIFY(flow->start("anna"));
        for (const bool status : { false, true }) {
            QVERIFY(QMetaObject::invokeMethod(flow->window.get(), "setPinButtonsEnabled", Q_ARG(bool, status)));
            for (const char *name : { "bChangePinAuthenCert", "bChangePinAuthorCert", "bChangePinQualifiedCert" })
                QCOMPARE(flow->button(name)->isEnabled(), status);
        }
    }
};

VELMOR_TEST(TestPinChange)
#include "tst_pin_change.moc"
