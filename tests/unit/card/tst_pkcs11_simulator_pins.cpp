#include "simulated_card.h"

// PINs and the PUK on the simulated card library: counters that fall and rise, on the keyboard and on a pinpad.
class TestPkcs11SimulatorPins : public QObject, private SimulatedCard {
    Q_OBJECT

private slots:
    void initTestCase() { setUpApplication(); }
    void init() { begin(); }
    void cleanup() { end(); }

    void changedPinStays();
    void wrongPinsLockAndThePukUnlocks();
    void wrongPuksLockThePuk();
    void firstPinIsSet_data();
    void firstPinIsSet();
    void firstPinWithAWrongPukCostsATry();
    void cardPulledDuringALogin();
    void pinpadTakesEmptyPins();
    void pinpadAnswers_data();
    void pinpadAnswers();
};

void TestPkcs11SimulatorPins::changedPinStays()
{
    insert();

    QCOMPARE(pkcs11->changePIN(reader, qualified, pin, otherPin), 0);

    // Also for another process, or a program started anew.
    pkcs11 = std::make_unique<Pkcs11>();
    insert();
    QCOMPARE(pkcs11->changePIN(reader, qualified, pin, otherPin), -6);
    QCOMPARE(tries(qualified), 2);
    QCOMPARE(pkcs11->changePIN(reader, qualified, otherPin, pin), 0);
    QCOMPARE(tries(qualified), 3);
}

void TestPkcs11SimulatorPins::wrongPinsLockAndThePukUnlocks()
{
    insert();
    const int left[] = { 2, 1, 0 };
    for (const int expected : left) {
        QCOMPARE(pkcs11->changePIN(reader, qualified, "11111111", otherPin), -6);
        QCOMPARE(tries(qualified), expected);
    }
    QCOMPARE(status(qualified), QString("Odblokuj PIN"));
    // Locked for the right PIN too, and that is no wrong PIN.
    QCOMPARE(pkcs11->changePIN(reader, qualified, pin, otherPin), -1);

    QCOMPARE(pkcs11->unblockPIN(reader, qualified, puk, otherPin), 0);

    QCOMPARE(tries(qualified), 3);
    QCOMPARE(status(qualified), QString("Zmień PIN"));
    QCOMPARE(pkcs11->changePIN(reader, qualified, otherPin, pin), 0);
}

void TestPkcs11SimulatorPins::wrongPuksLockThePuk()
{
    QVERIFY(world.setTries(cardName, sim::Qualified, 0));
    insert();
    const int left[] = { 2, 1, 0 };
    for (const int expected : left) {
        QCOMPARE(pkcs11->unblockPIN(reader, qualified, "11111111", otherPin), -4);
        QCOMPARE(pukTries(), expected);
    }

    QCOMPARE(pkcs11->unblockPIN(reader, qualified, puk, otherPin), -1);

    QVERIFY(world.trace("C_InitPIN").empty());
    QVERIFY(world.trace("C_Logout").empty());
}

void TestPkcs11SimulatorPins::firstPinIsSet_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QStringList>("calls");
    QTest::newRow("first use") << int(sim::SimWorld::Unset::FirstUse) << QStringList { "C_SetPIN" };
    QTest::newRow("not initialized") << int(sim::SimWorld::Unset::NotInitialized)
                                     << QStringList { "C_Login", "C_InitPIN", "C_Logout" };
}

void TestPkcs11SimulatorPins::firstPinIsSet()
{
    QFETCH(int, kind);
    QFETCH(QStringList, calls);
    QVERIFY(world.unsetPin(cardName, sim::Qualified, static_cast<sim::SimWorld::Unset>(kind)));
    insert();
    QCOMPARE(tries(qualified), 4);
    QCOMPARE(status(qualified), QString("Nadaj PIN"));
    world.clearTrace();

    QCOMPARE(pkcs11->unblockPIN(reader, qualified, puk, otherPin), 0);

    QStringList made;
    for (const sim::TraceEntry &entry : world.trace())
        made << QString::fromStdString(entry.function);
    QCOMPARE(made, calls);
    QCOMPARE(tries(qualified), 3);
    QCOMPARE(pkcs11->changePIN(reader, qualified, otherPin, pin), 0);
}

void TestPkcs11SimulatorPins::firstPinWithAWrongPukCostsATry()
{
    QVERIFY(world.unsetPin(cardName, sim::Qualified, sim::SimWorld::Unset::FirstUse));
    insert();

    QCOMPARE(pkcs11->unblockPIN(reader, qualified, "11111111", otherPin), -1);

    QCOMPARE(pukTries(), 2);
    QCOMPARE(tries(qualified), 4);
}

void TestPkcs11SimulatorPins::cardPulledDuringALogin()
{
    insert();
    sim::Fault fault;
    fault.function = "C_Login";
    fault.removeCard = readerName;
    QVERIFY(world.addFault(fault));

    QCOMPARE(pkcs11->changePIN(reader, qualified, pin, otherPin), -1);

    QVERIFY(world.trace("C_SetPIN").empty());
    QCOMPARE(world.trace("C_Logout").size(), std::size_t(1));
}

void TestPkcs11SimulatorPins::pinpadTakesEmptyPins()
{
    QVERIFY(world.setPinpad(readerName, true));
    insert();
    QCOMPARE(pkcs11->isPinPad(reader), 1);
    QVERIFY(world.padChange(pin.toStdString(), otherPin.toStdString()));

    QCOMPARE(pkcs11->changePIN(reader, qualified, {}, {}), 0);

    QVERIFY(world.setTries(cardName, sim::Qualified, 0));
    pkcs11->tokenInfo(reader, qualified);
    QVERIFY(world.padUnblock(puk.toStdString(), pin.toStdString()));
    QCOMPARE(pkcs11->unblockPIN(reader, qualified, {}, {}), 0);
    QVERIFY(world.unsetPin(cardName, sim::Qualified, sim::SimWorld::Unset::FirstUse));
    pkcs11->tokenInfo(reader, qualified);
    QVERIFY(world.padFirstPin(puk.toStdString(), otherPin.toStdString()));
    QCOMPARE(pkcs11->unblockPIN(reader, qualified, {}, {}), 0);
    QCOMPARE(QString::fromStdString(world.cardState(cardName)->pins[sim::Qualified].pin), otherPin);
    for (const sim::TraceEntry &entry : world.trace()) {
        for (const char *argument : { "pin", "newPin" }) {
            const auto given = entry.arguments.find(argument);
            if (given != entry.arguments.end())
                QCOMPARE(given->second, std::string("empty"));
        }
    }
}

void TestPkcs11SimulatorPins::pinpadAnswers_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("change");
    QTest::addColumn<int>("unblockLogin");
    QTest::addColumn<int>("unblock");
    QTest::newRow("cancelled") << int(sim::PadAnswer::Kind::Cancel) << -8 << -8 << -8;
    QTest::newRow("two PINs differ") << int(sim::PadAnswer::Kind::Mismatch) << -9 << -9 << -9;
    QTest::newRow("rejected") << int(sim::PadAnswer::Kind::Reject) << -1 << -1 << -11;
}

void TestPkcs11SimulatorPins::pinpadAnswers()
{
    QFETCH(int, kind);
    sim::PadAnswer answer;
    answer.kind = static_cast<sim::PadAnswer::Kind>(kind);
    sim::PadAnswer good;
    good.secret = pin.toStdString();
    QVERIFY(world.setPinpad(readerName, true));
    insert();

    // At the change itself, the login having gone well.
    QVERIFY(world.pad(good));
    QVERIFY(world.pad(answer));
    QTEST(pkcs11->changePIN(reader, qualified, {}, {}), "change");

    QVERIFY(world.setTries(cardName, sim::Qualified, 0));
    pkcs11->tokenInfo(reader, qualified);
    QVERIFY(world.pad(answer));
    QTEST(pkcs11->unblockPIN(reader, qualified, {}, {}), "unblockLogin");

    good.secret = puk.toStdString();
    QVERIFY(world.pad(good));
    QVERIFY(world.pad(answer));
    QTEST(pkcs11->unblockPIN(reader, qualified, {}, {}), "unblock");
}

VELMOR_TEST(TestPkcs11SimulatorPins)
#include "tst_pkcs11_simulator_pins.moc"
