#include "support/pin_flow.h"

// The card or its reader goes in the middle of a PIN operation, with and without the list of readers that tells so.
class TestPinCardGone : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<PinFlow> flow;

    struct Row {
        const char *name;
        const char *card;
        QByteArray container;
        const char *function;
        bool (PinFlow::*shows)(int result) const;
    };
    static QList<Row> rows()
    {
        return {
            { "login of a change", "anna", sim::Authentication, "C_Login", &PinFlow::showsChange },
            { "setting of a change", "anna", sim::Authentication, "C_SetPIN", &PinFlow::showsChange },
            { "logout of a change", "anna", sim::Authentication, "C_Logout", &PinFlow::showsChange },
            { "login of an unblock", "locked-authorization", sim::Authorization, "C_Login", &PinFlow::showsUnblock },
            { "setting of an unblock", "locked-authorization", sim::Authorization, "C_InitPIN",
              &PinFlow::showsUnblock },
            { "logout of an unblock", "locked-authorization", sim::Authorization, "C_Logout", &PinFlow::showsUnblock },
            { "setting of a first PIN", "first-pin", sim::Qualified, "C_SetPIN", &PinFlow::showsFirstPin }
        };
    }
    static void places()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<bool>("reader");
        for (int i = 0; i < rows().size(); ++i) {
            QTest::addRow("%s, card", rows()[i].name) << i << false;
            QTest::addRow("%s, reader", rows()[i].name) << i << true;
        }
    }

    // Up to the press of the button, with the fault in place.
    void startOperation(const Row &row, sim::Fault fault)
    {
        fault.function = row.function;
        const PinFlow::Container &container = PinFlow::container(row.container);
        QVERIFY(flow->start(row.card));
        QVERIFY(flow->world.addFault(fault));
        flow->openPinPage(row.container);
        const bool changing = flow->page() == "pageChangePin";
        if (changing)
            flow->typeChange(container.pin, container.newPin, container.newPin);
        else
            flow->typeUnblock(PinFlow::puk, container.newPin, container.newPin);
        flow->click(changing ? "bChangePin" : "bChangePinPuk");
    }
    static sim::Fault removal(bool reader)
    {
        sim::Fault fault;
        (reader ? fault.removeReader : fault.removeCard) = "Czytnik Alfa";
        return fault;
    }
    void cardComesBack(const Row &row)
    {
        flow->world.addReader("Czytnik Alfa");
        QVERIFY(flow->world.insertCard("Czytnik Alfa", row.card));
        flow->window->loadedReaders({ "Czytnik Alfa" });
        QVERIFY(flow->waitForCard());
        QCOMPARE(flow->page(), QString("pageHome"));
        flow->openPinPage(row.container);
        QVERIFY(flow->page() != "pageHome");
        QVERIFY(flow->field("lineActualPin")->text().isEmpty());
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<PinFlow>(); }
    void cleanup() { flow.reset(); }

    void answerIsToldAsTheTablesSay_data() { places(); }
    void answerIsToldAsTheTablesSay()
    {
        QFETCH(int, row);
        QFETCH(bool, reader);
        startOperation(rows()[row], removal(reader));

        QVERIFY(flow->waitForEnd());

        QCOMPARE(flow->page(), QString("pageCorrectChange"));
        QVERIFY((flow.get()->*rows()[row].shows)(CardResult::failed));
        QCOMPARE(flow->calls().filter(rows()[row].function).size(), 1);

        // The list of readers that comes late.
        flow->window->loadedReaders({}, reader ? "NO_READER" : "NO_CARD");
        QCOMPARE(flow->page(), QString("pageDisconected"));
        QCOMPARE(flow->label("lNumIdVal")->text(), QString());
        cardComesBack(rows()[row]);
    }

    // The list of readers can be quicker than the answer; the answer is told all the same.
    void answerAfterTheCardHasGoneIsToldAsTheTablesSay_data() { places(); }
    void answerAfterTheCardHasGoneIsToldAsTheTablesSay()
    {
        QFETCH(int, row);
        QFETCH(bool, reader);
        sim::Fault fault = removal(reader);
        fault.block = true;
        startOperation(rows()[row], fault);
        QVERIFY(flow->waitForPad());
        QVERIFY(flow->loaderShown());

        flow->window->loadedReaders({}, reader ? "NO_READER" : "NO_CARD");
        QCOMPARE(flow->page(), QString("pageDisconected"));
        QVERIFY(!flow->loaderShown());
        flow->world.release();
        QVERIFY(flow->waitForWorker());

        QCOMPARE(flow->page(), QString("pageCorrectChange"));
        // The title tells a first PIN from an unblock, and that of the page without a card is neither.
        const bool changing = rows()[row].shows == &PinFlow::showsChange;
        QVERIFY(changing ? flow->showsChange(CardResult::failed) : flow->showsUnblock(CardResult::failed));
        QVERIFY(!flow->loaderShown());
        cardComesBack(rows()[row]);
    }

    void successIsToldAlthoughTheCardHasGoneSince()
    {
        sim::Fault fault;
        fault.block = true;
        startOperation({ "", "anna", sim::Authentication, "C_Logout", nullptr }, fault);
        QVERIFY(flow->waitForPad());

        flow->window->loadedReaders({}, "NO_CARD");
        flow->world.release();
        QVERIFY(flow->waitForWorker());

        QCOMPARE(flow->page(), QString("pageCorrectChange"));
        QVERIFY(flow->showsChange(CardResult::done));
    }

    void cardThatGoesFromTheKeypadEndsTheWait_data()
    {
        QTest::addColumn<QString>("card");
        QTest::addColumn<QByteArray>("container");
        QTest::addColumn<bool>("reader");
        for (const bool reader : { false, true }) {
            QTest::addRow("change, %d", reader) << "anna" << QByteArray("Authentication") << reader;
            QTest::addRow("unblock, %d", reader) << "locked-authorization" << QByteArray("Authorization") << reader;
            QTest::addRow("first PIN, %d", reader) << "first-pin" << QByteArray("Qualified") << reader;
        }
    }
    void cardThatGoesFromTheKeypadEndsTheWait()
    {
        QFETCH(QString, card);
        QFETCH(QByteArray, container);
        QFETCH(bool, reader);
        QVERIFY(flow->start(card.toStdString(), true));
        flow->openPinPage(container);
        QVERIFY(flow->waitForPad());

        QVERIFY(reader ? flow->world.removeReader("Czytnik Alfa") : flow->world.removeCard("Czytnik Alfa"));

        QVERIFY(flow->waitForPage("pageCorrectChange"));
        QVERIFY(flow->button("bSettings")->isEnabled());
        flow->window->loadedReaders({}, reader ? "NO_READER" : "NO_CARD");
        QCOMPARE(flow->page(), QString("pageDisconected"));
    }

    // Gone before the request: no card is an answer that shows nothing, and the page stands.
    void cardThatWasPulledBeforeThePressLeavesThePage()
    {
        QVERIFY(flow->start("anna"));
        flow->openPinPage(sim::Authentication);
        flow->typeChange("1234", "4826", "4826");
        // A scan of the readers by someone else forgets the tokens.
        QVERIFY(flow->world.removeReader("Czytnik Alfa"));
        emit flow->window->selectDriverReader("Czytnik Alfa");
        QVERIFY(flow->waitForWorker());
        flow->find<QStackedWidget>("pager")->setCurrentWidget(flow->widget("pageChangePin"));
        LogCatcher log;

        flow->click("bChangePin");
        QVERIFY(flow->waitForEnd());

        QCOMPARE(flow->page(), QString("pageChangePin"));
        QVERIFY(log.has("changePIN: Brak karty!"));
        flow->click("bCancel");
        QCOMPARE(flow->page(), QString("pageHome"));
    }
};

VELMOR_TEST(TestPinCardGone)
#include "tst_pin_card_gone.moc"
