#include "pin_fields.h"
#include "support/pin_flow.h"

// The answers of the card to a PIN operation, as the window shows them: result page, hints, what stays in the fields,
// and the answers that show nothing.
class TestWindowPinResults : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<PinFlow> flow;

    void resultPageIs(const QString &title, const QString &text, const QString &colour)
    {
        QCOMPARE(flow->page(), QString("pageCorrectChange"));
        QVERIFY(!flow->loaderShown());
        QCOMPARE(flow->title(), title);
        QCOMPARE(flow->resultText(), text);
        QCOMPARE(flow->label("lPinChanged")->accessibleName(), text);
        QVERIFY(flow->resultStyle().contains("QFrame#pinChangedFrame"));
        QVERIFY2(flow->resultStyle().contains("border: 2px solid " + colour), qPrintable(flow->resultStyle()));
        QCOMPARE(flow->label("lPinChanged")->palette().color(QPalette::WindowText), QColor(colour));
        QCOMPARE(QApplication::focusWidget(), flow->widget("lPinChanged"));
        QVERIFY(!flow->readersBox()->isEnabled());
    }

    // Locked, not set, or good.
    void tell(const QString &word, int tries, int pukTries)
    {
        flow->window->refreshCertsStatus("Zmień PIN", "Zmień PIN", word, 3, 3, pukTries, tries);
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init()
    {
        flow = std::make_unique<PinFlow>();
        QVERIFY(flow->start("anna"));
    }
    void cleanup() { flow.reset(); }

    void resultOfAChange_data()
    {
        QTest::addColumn<PinResult>("result");
        for (const PinResult &row : pin_results::ofAChange)
            QTest::newRow(row.name) << row;
    }
    void resultOfAChange()
    {
        QFETCH(PinResult, result);
        flow->openPinPage(sim::Qualified);
        flow->typeChange("12345678", "48261537", "48261537");
        tell("Zmień PIN", 2, 3);
        flow->readersBox()->setEnabled(true);
        LogCatcher catcher;

        flow->window->changePinFin(result.code);

        resultPageIs("Zmiana PIN-u", result.text, result.colour);
        QVERIFY(catcher.lines().contains("Change pin status:  " + QString::number(result.code)));
        QVERIFY(catcher.lines().contains(result.log));
        // What was typed stays in the hidden fields until the next visit, unless it was taken or told as a wrong PIN.
        const bool emptied = result.code == 0 || result.code == -6 || result.code == -1;
        for (const char *name : { "lineActualPin", "lineNewPin", "lineRepeatPin" })
            QCOMPARE(flow->field(name)->text().isEmpty(), emptied);
        flow->click("bWrocPin");
        QCOMPARE(flow->page(), QString("pageHome"));
        QVERIFY(flow->readersBox()->isEnabled() == (flow->readersBox()->count() >= 2));
    }

    void codeThatAChangeDoesNotKnowLeavesThePage_data()
    {
        QTest::addColumn<int>("code");
        for (const int code : { -3, -4, -2, -5, -7, -10, 1, 5 })
            QTest::newRow(QByteArray::number(code).constData()) << code;
    }
    void codeThatAChangeDoesNotKnowLeavesThePage()
    {
        QFETCH(int, code);
        flow->openPinPage(sim::Qualified);
        flow->typeChange("12345678", "48261537", "48261537");
        LogCatcher log;

        flow->window->changePinFin(code);

        QCOMPARE(flow->page(), QString("pageChangePin"));
        QVERIFY(!flow->loaderShown());
        QVERIFY(log.lines().contains("Change pin status:  " + QString::number(code)));
        QVERIFY(log.has("changePinFin() not supported return from changePIN"));
        QCOMPARE(flow->field("lineActualPin")->text(), QString("12345678"));
        // Not busy: the next press sends.
        QSignalSpy sent(flow->window.get(), &Window::changePinSig);
        flow->click("bChangePin");
        QCOMPARE(sent.size(), 1);
        QVERIFY(flow->waitForEnd());
    }

    // The emptying of the fields takes the bad look away again; the hint, shown last, stays.
    void wrongPinEmptiesTheFieldsAndKeepsTheRedHint()
    {
        flow->openPinPage(sim::Qualified);
        flow->typeChange("12345678", "48261537", "48261537");
        tell("Zmień PIN", 2, 3);

        flow->window->changePinFin(-6);

        const QLabel *hint = flow->label("lActualPinInfo");
        QCOMPARE(hint->text(), QString("Niepoprawny PIN. Popraw PIN"));
        QVERIFY(PinFlow::hintIs(hint, redHint));
        QVERIFY(!hint->isHidden());
        QVERIFY(!flow->field("lineActualPin")->styleSheet().contains("234,4,73"));
        for (const char *tries : { "lTryNumDesc", "lTryNumDescpinpad" })
            QCOMPARE(flow->label(tries)->text(), QString("Pozostało prób: 2"));
    }

    void nextVisitForgetsTheWrongPin()
    {
        flow->openPinPage(sim::Qualified);
        const QString rule = flow->label("lActualPinInfo")->text();
        flow->window->changePinFin(-6);
        QVERIFY(flow->label("lActualPinInfo")->text() != rule);
        flow->click("bWrocPin");

        flow->openPinPage(sim::Qualified);

        QCOMPARE(flow->label("lActualPinInfo")->text(), rule);
        QVERIFY(PinFlow::hintIs(flow->label("lActualPinInfo"), blueHint));
    }

    void lockingAttemptLeadsStraightToThePageForThePuk_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<int>("pukTries");
        QTest::addColumn<QString>("page");
        for (const int code : { -6, -1 }) {
            QTest::addRow("%d, PUK good", code) << code << 3 << "pageUnblockPin";
            QTest::addRow("%d, PUK blocked", code) << code << 0 << "pageBlockedPuk_2";
        }
    }
    void lockingAttemptLeadsStraightToThePageForThePuk()
    {
        QFETCH(int, code);
        QFETCH(int, pukTries);
        flow->openPinPage(sim::Qualified);
        tell("Odblokuj PIN", 0, pukTries);
        LogCatcher log;

        flow->window->changePinFin(code);

        QTEST(flow->page(), "page");
        QVERIFY(log.has("move to unblock PinPage"));
        QVERIFY(!flow->readersBox()->isEnabled());
        // Not busy.
        flow->window->moveToHomePage();
        flow->openPinPage(sim::Authentication);
        QCOMPARE(flow->page(), QString("pageChangePin"));
    }

    void resultOfAnUnblock_data()
    {
        QTest::addColumn<PinResult>("result");
        QTest::addColumn<bool>("firstPin");
        for (const PinResult &row : pin_results::ofAnUnblock) {
            QTest::addRow("unblock, %s", row.name) << row << false;
            QTest::addRow("first PIN, %s", row.name) << row << true;
        }
    }
    void resultOfAnUnblock()
    {
        QFETCH(PinResult, result);
        QFETCH(bool, firstPin);
        tell(firstPin ? "Nadaj PIN" : "Odblokuj PIN", firstPin ? 4 : 0, 3);
        flow->openPinPage(sim::Qualified);
        flow->typeUnblock(PinFlow::puk, "48261537", "48261537");
        tell("Zmień PIN", 3, 2);
        flow->readersBox()->setEnabled(true);
        LogCatcher catcher;

        flow->window->unblockPinFin(result.code);

        // The result page's titles end in a blank.
        resultPageIs(firstPin ? "Nadawanie PIN-u " : "Odblokowanie PIN-u ",
                     firstPin ? result.firstPinText : result.text, result.colour);
        QVERIFY(catcher.lines().contains("unblock Pin fin code:  " + QString::number(result.code)));
        QVERIFY(catcher.lines().contains(result.log));
        for (const char *name : { "lineInsertPuk", "lineNewPinPuk", "lineRepeatPinPuk" })
            QCOMPARE(flow->field(name)->text().isEmpty(), result.code == 0);
        for (const char *tries : { "lTryNumDescPUK", "lTryNumDescPUKpinpad" })
            QCOMPARE(flow->label(tries)->text(), QString("Pozostało prób: 2"));
    }

    // The title of the result page ends in a blank, and is no longer that of a first PIN.
    void secondAnswerToAFirstPinIsToldAsThatOfAnUnblock()
    {
        tell("Nadaj PIN", 4, 3);
        flow->openPinPage(sim::Qualified);
        flow->window->unblockPinFin(-8);
        resultPageIs("Nadawanie PIN-u ", "Nadawanie PIN-u anulowane", pin_results::blue);

        flow->window->unblockPinFin(-8);

        resultPageIs("Odblokowanie PIN-u ", "Odblokowanie PIN-u anulowane", pin_results::blue);
    }

    void successMarksThePukAsGoodWhereverTheUserIs()
    {
        tell("Odblokuj PIN", 0, 3);
        flow->openPinPage(sim::Qualified);
        setFieldStyle(flow->field("lineInsertPuk"), false);
        flow->window->moveToSettingsPage(false);

        flow->window->unblockPinFin(0);

        QLineEdit good;
        setFieldStyle(&good, true);
        QCOMPARE(flow->field("lineInsertPuk")->styleSheet(), good.styleSheet());
    }

    void onlyAnErrorRenewsTheTries_data()
    {
        QTest::addColumn<QString>("operation");
        QTest::addColumn<int>("code");
        QTest::addColumn<bool>("renewed");
        QTest::newRow("change, success") << "change" << 0 << false;
        QTest::newRow("change, neutral") << "change" << -8 << false;
        QTest::newRow("change, error") << "change" << -9 << true;
        QTest::newRow("unblock, success") << "Odblokuj PIN" << 0 << false;
        QTest::newRow("unblock, neutral") << "Odblokuj PIN" << -11 << false;
        QTest::newRow("unblock, error") << "Odblokuj PIN" << -9 << true;
        QTest::newRow("first PIN, neutral") << "Nadaj PIN" << -11 << false;
        QTest::newRow("first PIN, error") << "Nadaj PIN" << -9 << true;
    }
    void onlyAnErrorRenewsTheTries()
    {
        QFETCH(QString, operation);
        QFETCH(int, code);
        QFETCH(bool, renewed);
        const bool changing = operation == "change";
        if (changing)
            tell("Zmień PIN", 2, 3);
        else
            tell(operation, operation == "Nadaj PIN" ? 4 : 0, 1);
        flow->openPinPage(sim::Qualified);
        const QStringList pinTries { "lTryNumDesc", "lTryNumDescpinpad" };
        const QStringList pukTries { "lTryNumDescPUK", "lTryNumDescPUKpinpad" };
        for (const QString &name : pinTries + pukTries)
            flow->label(qPrintable(name))->setText("?");

        if (changing)
            flow->window->changePinFin(code);
        else
            flow->window->unblockPinFin(code);

        QCOMPARE(flow->page(), QString("pageCorrectChange"));
        for (const QString &name : pinTries)
            QCOMPARE(flow->label(qPrintable(name))->text(), QString(renewed && changing ? "Pozostało prób: 2" : "?"));
        for (const QString &name : pukTries)
            QCOMPARE(flow->label(qPrintable(name))->text(), QString(renewed && !changing ? "Pozostało prób: 1" : "?"));
    }

    void codeThatAnUnblockDoesNotKnowLeavesThePage_data()
    {
        QTest::addColumn<int>("code");
        for (const int code : { -3, -6, -2, -5, -7, -10, 1, 5 })
            QTest::newRow(QByteArray::number(code).constData()) << code;
    }
    void codeThatAnUnblockDoesNotKnowLeavesThePage()
    {
        QFETCH(int, code);
        tell("Odblokuj PIN", 0, 3);
        flow->openPinPage(sim::Qualified);
        LogCatcher log;

        flow->window->unblockPinFin(code);

        QCOMPARE(flow->page(), QString("pageUnblockPin"));
        QVERIFY(!flow->loaderShown());
        QVERIFY(log.lines().contains("unblock Pin fin code:  " + QString::number(code)));
        QVERIFY(log.has("changePinFin() not supported return from unblocking PIN"));
        flow->click("bCancel_2");
        QCOMPARE(flow->page(), QString("pageHome"));
    }

    void wrongPukIsToldInRed_data()
    {
        QTest::addColumn<int>("code");
        QTest::newRow("-4") << -4;
        QTest::newRow("-1") << -1;
    }
    void wrongPukIsToldInRed()
    {
        QFETCH(int, code);
        tell("Odblokuj PIN", 0, 3);
        flow->openPinPage(sim::Qualified);
        tell("Odblokuj PIN", 0, 1);

        flow->window->unblockPinFin(code);

        QCOMPARE(flow->label("lPinInfoPuk")->text(), QString("Niepoprawny PUK. Popraw PUK."));
        QVERIFY(PinFlow::hintIs(flow->label("lPinInfoPuk"), redHint));
        QCOMPARE(flow->page(), QString("pageCorrectChange"));
    }

    void lastWrongPukEndsOnTheBlockedPage_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<int>("pukTries");
        for (const int code : { -4, -1 }) {
            for (const int tries : { 0, 4 })
                QTest::addRow("%d, tries %d", code, tries) << code << tries;
        }
    }
    void lastWrongPukEndsOnTheBlockedPage()
    {
        QFETCH(int, code);
        QFETCH(int, pukTries);
        tell("Odblokuj PIN", 0, 1);
        flow->openPinPage(sim::Qualified);
        tell("Odblokuj PIN", 0, pukTries);
        LogCatcher log;

        flow->window->unblockPinFin(code);

        QCOMPARE(flow->page(), QString("pageBlockedPuk_2"));
        QVERIFY(log.has("PUK is blocked!"));
        QCOMPARE(flow->title(), QString("Odblokowanie PIN-u "));
        QCOMPARE(flow->subtitle(), QString("Certyfikat kwalifikowany"));
        QCOMPARE(flow->label("lPukBlocked_2")->accessibleName(),
                 QString("Odblokowanie PIN-u Certyfikat kwalifikowany, twój velmor został zablokowany, dowodu nie da "
                         "się odblokować, dowiedz się jak uzyskać nowy dowód osobisty"));
        QCOMPARE(QApplication::focusWidget(), flow->widget("lPukBlocked_2"));
        QVERIFY(flow->label("lPukBlocked_2")->text().contains("https://www.velmor.example/nowy-dowod"));
        flow->click("bWrocPuk");
        QCOMPARE(flow->page(), QString("pageHome"));
    }
};

VELMOR_TEST(TestWindowPinResults)
#include "tst_window_pin_results.moc"
