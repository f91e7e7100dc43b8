#include "support/pin_flow.h"

#include "base/ipc_msg.h"

#include <QAccessible>

// No PIN and no PUK is ever in the log, the trace, an accessible name or a visible text, nor in a field for longer than
// the page that asked for it.
class TestPinSecrets : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<PinFlow> flow;

    // Digits that stand nowhere else.
    static constexpr const char *wrongPin = "7391";
    static constexpr const char *newPin = "5827";
    static constexpr const char *puk = PinFlow::puk;

    static QStringList fields()
    {
        return { "lineActualPin", "lineNewPin", "lineRepeatPin", "lineInsertPuk", "lineNewPinPuk", "lineRepeatPinPuk" };
    }
    QString typed() const
    {
        QString all;
        for (const QString &name : fields())
            all += flow->field(name.toLatin1().constData())->text();
        return all;
    }

    // All that a screen reader or a person with eyes gets of the window.
    QString shownAndSpoken() const
    {
        QStringList texts;
        for (QWidget *widget : flow->window->findChildren<QWidget *>()) {
            texts << widget->accessibleName() << widget->accessibleDescription() << widget->toolTip()
                  << widget->whatsThis() << widget->statusTip() << widget->windowTitle();
            if (auto *label = qobject_cast<QLabel *>(widget))
                texts << label->text();
            if (auto *button = qobject_cast<QAbstractButton *>(widget))
                texts << button->text();
            QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(widget);
            if (!interface)
                continue;
            for (const QAccessible::Text text :
                 { QAccessible::Name, QAccessible::Description, QAccessible::Value, QAccessible::Help })
                texts << interface->text(text);
            if (QAccessibleTextInterface *content = interface->textInterface())
                texts << content->text(0, content->characterCount());
        }
        return texts.join('\n');
    }

    void lookForSecretsIn(const QString &text, const char *place) const
    {
        for (const QString &secret : { QString("1234"), QString(wrongPin), QString(newPin), QString(puk) })
            QVERIFY2(!text.contains(secret), qPrintable(QString("%1 in the %2:\n%3").arg(secret, place, text)));
    }
    void lookForSecretsInTheWindow() const { lookForSecretsIn(shownAndSpoken(), "window"); }

    void press(const char *button)
    {
        lookForSecretsInTheWindow();
        flow->click(button);
        lookForSecretsInTheWindow();
        QVERIFY(flow->waitForEnd());
        lookForSecretsInTheWindow();
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<PinFlow>(); }
    void cleanup() { flow.reset(); }

    // A text that grows moves, and leaves what it was behind.
    void everyFieldHasRoomForItsEntry()
    {
        flow->openWindow();
        for (const char *name :
             { "lineActualPin", "lineNewPin", "lineRepeatPin", "lineInsertPuk", "lineNewPinPuk", "lineRepeatPinPuk" }) {
            // With the first event that can bring a text.
            QFocusEvent focus(QEvent::FocusIn);
            QCoreApplication::sendEvent(flow->field(name), &focus);
            QVERIFY2(flow->field(name)->text().capacity() >= 32, name);
        }
    }

    void wholeLifeOfACardLeavesNoSecretBehind()
    {
        LogCatcher log;
        QVERIFY(flow->start("anna"));
        for (int i = 0; i < 3; ++i) {
            flow->openPinPage(sim::Authentication);
            flow->typeChange(wrongPin, newPin, i == 0 ? wrongPin : newPin);
            press("bChangePin");
            if (i == 0) {
                flow->field("lineRepeatPin")->selectAll();
                QTest::keyClicks(flow->field("lineRepeatPin"), newPin);
                press("bChangePin");
            }
            if (flow->page() == "pageCorrectChange")
                flow->click("bWrocPin");
        }
        QCOMPARE(flow->page(), QString("pageUnblockPin"));
        flow->typeUnblock("70614923", newPin, newPin);
        press("bChangePinPuk");
        flow->click("bWrocPin");
        flow->openPinPage(sim::Authentication);
        flow->typeUnblock(puk, "1234", "1234");
        press("bChangePinPuk");
        QVERIFY(flow->showsUnblock(CardResult::done));
        flow->click("bWrocPin");
        flow->openPinPage(sim::Authentication);
        flow->typeChange("1234", newPin, newPin);
        press("bChangePin");
        QVERIFY(flow->showsChange(CardResult::done));

        lookForSecretsIn(log.text(), "log");
        QFile trace(QString::fromStdString(flow->world.directory()) + "/trace.log");
        QVERIFY(trace.open(QIODevice::ReadOnly));
        const QByteArray lines = trace.readAll();
        QVERIFY(lines.contains("C_SetPIN") && lines.contains("C_InitPIN"));
        // Times and process numbers are digits too.
        for (const sim::TraceEntry &entry : flow->world.trace()) {
            for (const auto &argument : entry.arguments)
                lookForSecretsIn(QString::fromStdString(argument.second), "trace");
        }
    }

    void fieldsAreHiddenAndCannotBeCopied()
    {
        QVERIFY(flow->start("anna"));
        for (const QString &name : fields()) {
            const QLineEdit *field = flow->field(name.toLatin1().constData());
            QCOMPARE(field->echoMode(), QLineEdit::Password);
            QVERIFY(field->inputMethodHints() & Qt::ImhSensitiveData);
            QVERIFY(field->inputMethodHints() & Qt::ImhHiddenText);
        }
    }

    void repetitionGoesWhenTheRequestIsSent()
    {
        QVERIFY(flow->start("anna"));
        flow->openPinPage(sim::Authentication);
        flow->typeChange("1234", newPin, newPin);
        flow->click("bChangePin");
        QCOMPARE(flow->field("lineRepeatPin")->text(), QString());
        QVERIFY(flow->waitForEnd());
        QCOMPARE(typed(), QString());
    }

    void leavingThePageEmptiesIt_data()
    {
        QTest::addColumn<QString>("card");
        QTest::addColumn<QByteArray>("button");
        QTest::newRow("change") << "anna" << QByteArray("bCancel");
        QTest::newRow("unblock") << "locked-pins" << QByteArray("bCancel_2");
        for (const char *button : { "bSettings", "bHelp" }) {
            QTest::addRow("change, %s", button) << "anna" << QByteArray(button);
            QTest::addRow("unblock, %s", button) << "locked-pins" << QByteArray(button);
        }
    }
    void leavingThePageEmptiesIt()
    {
        QFETCH(QString, card);
        QFETCH(QByteArray, button);
        QVERIFY(flow->start(card.toStdString()));
        flow->openPinPage(sim::Authentication);
        if (card == "anna")
            flow->typeChange("1234", newPin, newPin);
        else
            flow->typeUnblock(puk, newPin, newPin);
        QVERIFY(!typed().isEmpty());

        flow->click(button.constData());

        QCOMPARE(typed(), QString());
    }

    // What a message has moved out of sight goes as well.
    void messageDuringTheOperationEmptiesThePage_data()
    {
        QTest::addColumn<QString>("card");
        QTest::addColumn<QByteArray>("command");
        for (const char *card : { "anna", "locked-pins" }) {
            for (const char *command : { "settings", "help" })
                QTest::addRow("%s, %s", card, command) << card << QByteArray(command);
        }
    }
    void messageDuringTheOperationEmptiesThePage()
    {
        QFETCH(QString, card);
        QFETCH(QByteArray, command);
        const bool changing = card == "anna";
        QVERIFY(flow->start(card.toStdString()));
        flow->openPinPage(sim::Authentication);
        if (changing)
            flow->typeChange("1234", newPin, newPin);
        else
            flow->typeUnblock(puk, newPin, newPin);
        QVERIFY(flow->world.block(changing ? "C_SetPIN" : "C_InitPIN"));
        flow->click(changing ? "bChangePin" : "bChangePinPuk");
        QVERIFY(flow->waitForPad());

        flow->window->recvIpcMsg(IpcMsg { { "to", "velmor_manager" }, { command, "1" } });

        QCOMPARE(typed(), QString());
        flow->world.release();
        QVERIFY(flow->waitForPage("pageCorrectChange"));
        QVERIFY(changing ? flow->showsChange(CardResult::done) : flow->showsUnblock(CardResult::done));
        QCOMPARE(typed(), QString());
    }

    // Nothing is left to be used by anyone, also of what a cancelled operation has left on the other page.
    void successEmptiesBothPages_data()
    {
        QTest::addColumn<bool>("changing");
        QTest::newRow("change") << true;
        QTest::newRow("unblock") << false;
    }
    void successEmptiesBothPages()
    {
        QFETCH(bool, changing);
        QVERIFY(flow->start("locked-authorization"));
        flow->openPinPage(changing ? sim::Authorization : sim::Authentication);
        if (changing) {
            flow->typeUnblock(puk, "582713", "582713");
            flow->window->unblockPinFin(-8);
        } else {
            flow->typeChange("1234", newPin, newPin);
            flow->window->changePinFin(-8);
        }
        flow->click("bWrocPin");
        QVERIFY(!typed().isEmpty());

        flow->openPinPage(changing ? sim::Authentication : sim::Authorization);
        if (changing) {
            flow->typeChange("1234", newPin, newPin);
            flow->click("bChangePin");
        } else {
            flow->typeUnblock(puk, "582713", "582713");
            flow->click("bChangePinPuk");
        }
        QVERIFY(flow->waitForPage("pageCorrectChange"));

        QVERIFY(changing ? flow->showsChange(CardResult::done) : flow->showsUnblock(CardResult::done));
        QCOMPARE(typed(), QString());
    }

    // Those that a cancelled or failed operation leaves in the fields go at the next visit, or with the card.
    void leftoversGo_data()
    {
        QTest::addColumn<QString>("operation");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("end");
        for (const char *end : { "visit", "no card", "no reader", "CAN", "other reader" }) {
            for (const int code : { -3, -8, -9, -11 })
                QTest::addRow("change, %d, %s", code, end) << "change" << code << end;
            for (const int code : { -1, -3, -4, -8, -9, -11 })
                QTest::addRow("unblock, %d, %s", code, end) << "unblock" << code << end;
        }
    }
    void leftoversGo()
    {
        QFETCH(QString, operation);
        QFETCH(int, code);
        QFETCH(QString, end);
        const bool changing = operation == "change";
        QVERIFY(flow->start(changing ? "anna" : "locked-pins"));
        flow->openPinPage(sim::Authentication);
        if (changing) {
            flow->typeChange("1234", newPin, newPin);
            flow->window->changePinFin(code);
        } else {
            flow->typeUnblock(puk, newPin, newPin);
            flow->window->unblockPinFin(code);
        }
        QVERIFY(!typed().isEmpty());

        if (end == "visit") {
            flow->window->moveToHomePage();
            flow->openPinPage(sim::Authentication);
        } else if (end == "no card") {
            flow->window->loadedReaders({}, "NO_CARD");
        } else if (end == "no reader") {
            flow->window->loadedReaders({}, "NO_READER");
        } else if (end == "CAN") {
            flow->window->loadedReaders({}, "WAIT_CAN");
        } else {
            flow->window->loadedReaders({ "Czytnik Beta" });
        }

        QCOMPARE(typed(), QString());
        QVERIFY(flow->waitForWorker());
    }

    void entryGoesWithTheCardWhateverThePage_data()
    {
        QTest::addColumn<QString>("page");
        for (const char *page : { "pageChangePin", "pageUnblockPin", "pageCorrectChange", "pageHome", "pageSettings" })
            QTest::newRow(page) << page;
    }
    void entryGoesWithTheCardWhateverThePage()
    {
        QFETCH(QString, page);
        QVERIFY(flow->start("anna"));
        flow->find<QStackedWidget>("pager")->setCurrentWidget(flow->widget(page.toLatin1().constData()));
        for (const QString &name : fields())
            flow->field(name.toLatin1().constData())->setText("70614923");

        flow->window->loadedReaders({}, "NO_READER");

        QCOMPARE(typed(), QString());
    }
};

VELMOR_TEST(TestPinSecrets)
#include "tst_pin_secrets.moc"
