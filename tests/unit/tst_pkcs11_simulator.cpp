// Pkcs11 on the simulated card library: a card that remembers what was done to it, counters that fall and rise,
// pinpads, cards pulled out in the middle. Exact sequences and odd answers are the business of the other tests of this
// class.
#include "card/pkcs11.h"

#include "app/app.h"
#include "simworld/sim_world.h"
#include "support/testmain.h"

#include <memory>

namespace {

const QString reader = "Czytnik Żółty";
const std::string readerName = reader.toStdString();
const std::string cardName = "próbna";
const QString authentication = "Authentication";
const QString qualified = "Qualified";
const QString pin = "12345678";
const QString otherPin = "90817263";
const QString puk = "24681357";

sim::Card specimen()
{
    sim::Card card;
    card.name = cardName;
    card.chip = "VELMOR_2_1";
    card.state.puk = puk.toStdString();
    card.state.pins[sim::Authentication].pin = "1234";
    card.state.pins[sim::Authorization].pin = "123456";
    card.state.pins[sim::Qualified].pin = pin.toStdString();
    const auto object = [](unsigned long type, const char *label, const char *value) {
        sim::Object made;
        made.objectClass = type;
        made.label = label;
        made.value = value;
        return made;
    };
    card.objects[sim::Authentication] = { object(1, "cert", "A1"), object(1, "cert", "A2") };
    card.objects[sim::Presence] = { object(1, "cert", "P") };
    card.objects[sim::Qualified] = { object(3, "key", "k"), object(1, "cert", "Q") };
    card.objects[sim::Emrtd] = { object(0, "DG1", "one"), object(0, "DG2", "photo"), object(0, "DG13", "thirteen") };
    return card;
}

} // namespace

class TestPkcs11Simulator : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void cardIsReadFromBeginningToEnd();
    void chipsAreRecognised_data();
    void chipsAreRecognised();
    void unreadReadersAreNotListed();
    void cardThatWaitsForItsCanCannotBeSelected();
    void foreignCardCannotBeSelected();
    void pulledCardTakesItsTokensAlong();

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

    void rescanKillsSessionsAndSearchesRecover();
    void searchLeftOpenIsRefusedUntilTheNextScan();
    void nonsenseAnswersAreSurvived_data();
    void nonsenseAnswersAreSurvived();

private:
    void insert();
    int tries(const QString &conteiner) { return pkcs11->tokenInfo(reader, conteiner).value("tries", -1).toInt(); }
    int pukTries() { return pkcs11->tokenInfo(reader, qualified).value("triesSO", -1).toInt(); }
    QString status(const QString &conteiner) { return pkcs11->tokenInfo(reader, conteiner).value("status").toString(); }

    sim::SimWorld world;
    std::unique_ptr<Pkcs11> pkcs11;
    std::unique_ptr<LogCatcher> log;
};

void TestPkcs11Simulator::initTestCase()
{
    App::instance()->init("Manager", VELMOR_TEST_ROOT, "x86_64", "Manager");
}

void TestPkcs11Simulator::init()
{
    QVERIFY2(world.reset(), world.error().c_str());
    QVERIFY2(world.defineCard(specimen()), world.error().c_str());
    QVERIFY2(world.restoreCard(cardName), world.error().c_str());
    QVERIFY2(world.insertCard(readerName, cardName), world.error().c_str());
    log = std::make_unique<LogCatcher>();
    pkcs11 = std::make_unique<Pkcs11>();
}

void TestPkcs11Simulator::cleanup()
{
    pkcs11.reset();
    QString told = log->text();
    for (const std::string &line : world.traceTexts())
        told += QString::fromStdString(line) + '\n';
    for (const QString &secret : { pin, otherPin, puk })
        QVERIFY2(!told.contains(secret), qPrintable(told));
    log.reset();
}

// What the program does with a card before anything else: list, select, count.
void TestPkcs11Simulator::insert()
{
    QStringList found;
    pkcs11->finalize();
    QVERIFY(pkcs11->readers(found, 1, 256));
    QCOMPARE(found, QStringList { reader });
    QVERIFY(pkcs11->selectReader(reader));
    for (const char *conteiner : { "Presence", "Authentication", "Authorization", "Qualified" })
        pkcs11->certsCount(reader, conteiner);
    world.clearTrace();
    log->clear();
}

void TestPkcs11Simulator::cardIsReadFromBeginningToEnd()
{
    QStringList found;
    QVERIFY(pkcs11->readers(found, 1, 256));
    QCOMPARE(found, QStringList { reader });
    QVERIFY(pkcs11->selectReader(reader));

    QCOMPARE(pkcs11->certsCount(reader, "Presence"), 1);
    QCOMPARE(pkcs11->certsCount(reader, "Authentication"), 2);
    QCOMPARE(pkcs11->certsCount(reader, "Authorization"), 0);
    QCOMPARE(pkcs11->certsCount(reader, "Qualified"), 1);
    for (const char *conteiner : { "Authentication", "Authorization", "Qualified" }) {
        QCOMPARE(tries(conteiner), 3);
        QCOMPARE(status(conteiner), QString("Zmień PIN"));
    }
    QCOMPARE(pukTries(), 3);
    QCOMPARE(pkcs11->isPinPad(reader), 0);
    QCOMPARE(pkcs11->typeOfChip(reader), 16);
    QCOMPARE(pkcs11->tokenDataMap(reader, "eMRTD", { "DG1", "DG11", "DG12", "DG13" }),
             (QMap<QString, QByteArray> { { "DG1", "one" }, { "DG13", "thirteen" } }));
    QCOMPARE(pkcs11->tokenCerts(reader, "Authentication"), (QByteArrayList { "A1", "A2" }));
    QCOMPARE(pkcs11->tokenCerts(reader, "Qualified"), QByteArrayList { "Q" });
}

void TestPkcs11Simulator::chipsAreRecognised_data()
{
    QTest::addColumn<QString>("chip");
    QTest::addColumn<int>("type");
    QTest::newRow("1.0") << "VELMOR_1_0" << 2;
    QTest::newRow("2.0") << "VELMOR_2_0" << 4;
    QTest::newRow("2.1") << "VELMOR_2_1" << 16;
    QTest::newRow("2.2 test") << "VELMOR_2_2_TEST" << 8;
    QTest::newRow("2.2") << "VELMOR_2_2" << 8;
    QTest::newRow("none") << "" << 0;
}

void TestPkcs11Simulator::chipsAreRecognised()
{
    QFETCH(QString, chip);
    sim::Card card = specimen();
    card.chip = chip.toStdString();
    QVERIFY(world.removeCard(readerName));
    QVERIFY(world.defineCard(card));
    QVERIFY(world.insertCard(readerName, cardName));
    insert();

    QTEST(pkcs11->typeOfChip(reader), "type");
}

void TestPkcs11Simulator::unreadReadersAreNotListed()
{
    QVERIFY(world.addReader("Pusty"));
    QVERIFY(world.setNotReadByTheMonitor(readerName, true));
    QStringList found;

    QVERIFY(pkcs11->readers(found, 1, 256));
    QCOMPARE(found, QStringList());
    QVERIFY(world.setNotReadByTheMonitor(readerName, false));
    QVERIFY(pkcs11->readers(found, 1, 256));

    QCOMPARE(found, QStringList { reader });
}

void TestPkcs11Simulator::cardThatWaitsForItsCanCannotBeSelected()
{
    QVERIFY(world.setWaitCan(readerName, true));
    QStringList found;
    pkcs11->readers(found, 1, 256);

    QVERIFY(!pkcs11->selectReader(reader));

    QVERIFY(world.setWaitCan(readerName, false));
    pkcs11->finalize();
    pkcs11->readers(found, 1, 256);
    QVERIFY(pkcs11->selectReader(reader));
}

void TestPkcs11Simulator::foreignCardCannotBeSelected()
{
    sim::Card card = specimen();
    card.supported = false;
    QVERIFY(world.removeCard(readerName));
    QVERIFY(world.defineCard(card));
    QVERIFY(world.insertCard(readerName, cardName));
    QStringList found;
    QVERIFY(pkcs11->readers(found, 1, 256));
    QCOMPARE(found, QStringList { reader });

    QVERIFY(!pkcs11->selectReader(reader));
}

void TestPkcs11Simulator::pulledCardTakesItsTokensAlong()
{
    insert();
    QVERIFY(world.removeCard(readerName));

    QStringList found;
    pkcs11->finalize();
    QVERIFY(pkcs11->readers(found, 1, 256));
    QCOMPARE(found, QStringList());
    pkcs11->detectTokens();

    QVERIFY(pkcs11->tokenInfo(reader, qualified).isEmpty());
    QCOMPARE(pkcs11->certsCount(reader, qualified), 0);
    QCOMPARE(pkcs11->changePIN(reader, qualified, pin, otherPin), -3);
    QCOMPARE(pkcs11->unblockPIN(reader, qualified, puk, otherPin), -3);
}

void TestPkcs11Simulator::changedPinStays()
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

void TestPkcs11Simulator::wrongPinsLockAndThePukUnlocks()
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

void TestPkcs11Simulator::wrongPuksLockThePuk()
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

void TestPkcs11Simulator::firstPinIsSet_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QStringList>("calls");
    QTest::newRow("first use") << int(sim::SimWorld::Unset::FirstUse) << QStringList { "C_SetPIN" };
    QTest::newRow("not initialized") << int(sim::SimWorld::Unset::NotInitialized)
                                     << QStringList { "C_Login", "C_InitPIN", "C_Logout" };
}

void TestPkcs11Simulator::firstPinIsSet()
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

void TestPkcs11Simulator::firstPinWithAWrongPukCostsATry()
{
    QVERIFY(world.unsetPin(cardName, sim::Qualified, sim::SimWorld::Unset::FirstUse));
    insert();

    QCOMPARE(pkcs11->unblockPIN(reader, qualified, "11111111", otherPin), -1);

    QCOMPARE(pukTries(), 2);
    QCOMPARE(tries(qualified), 4);
}

void TestPkcs11Simulator::cardPulledDuringALogin()
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

void TestPkcs11Simulator::pinpadTakesEmptyPins()
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

void TestPkcs11Simulator::pinpadAnswers_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("change");
    QTest::addColumn<int>("unblockLogin");
    QTest::addColumn<int>("unblock");
    QTest::newRow("cancelled") << int(sim::PadAnswer::Kind::Cancel) << -8 << -8 << -8;
    QTest::newRow("two PINs differ") << int(sim::PadAnswer::Kind::Mismatch) << -9 << -9 << -9;
    QTest::newRow("rejected") << int(sim::PadAnswer::Kind::Reject) << -1 << -1 << -11;
}

void TestPkcs11Simulator::pinpadAnswers()
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

void TestPkcs11Simulator::rescanKillsSessionsAndSearchesRecover()
{
    insert();
    QStringList found;
    pkcs11->finalize();
    QVERIFY(pkcs11->readers(found, 1, 256));
    QVERIFY(pkcs11->selectReader(reader));

    // No search has come before, so the handle is dead ...
    QCOMPARE(pkcs11->login(reader, qualified, pin, 1), -1);
    // ... and after a search it is good again.
    QCOMPARE(pkcs11->certsCount(reader, qualified), 1);
    QCOMPARE(pkcs11->changePIN(reader, qualified, pin, otherPin), 0);
    QVERIFY(log->has("sessionRestore()"));
}

void TestPkcs11Simulator::searchLeftOpenIsRefusedUntilTheNextScan()
{
    insert();
    sim::Fault fault;
    fault.function = "C_FindObjects";
    fault.container = sim::Emrtd;
    fault.nth = 2;
    fault.result = 0x30;
    QVERIFY(world.addFault(fault));
    QCOMPARE(pkcs11->tokenDataMap(reader, "eMRTD", {}).size(), 1);

    QVERIFY(pkcs11->tokenDataMap(reader, "eMRTD", {}).isEmpty());
    QVERIFY(log->has("C_FindObjectsInit error:  90"));

    insert();
    QCOMPARE(pkcs11->tokenDataMap(reader, "eMRTD", {}).size(), 3);
}

void TestPkcs11Simulator::nonsenseAnswersAreSurvived_data()
{
    QTest::addColumn<QString>("function");
    QTest::addColumn<qint64>("number");
    for (const char *function : { "C_GetSlotList", "C_GetAttributeValue" }) {
        for (const qint64 number : { -1LL, 0LL, 1LL, 3LL, 100000LL, 0x7fffffffLL, 0xffffffffLL }) {
            QTest::newRow(QString("%1 %2").arg(function).arg(number).toLatin1()) << QString(function) << number;
        }
    }
    QTest::newRow("C_FindObjects 1000") << "C_FindObjects" << qint64(0);
    QTest::newRow("C_GetSlotInfo") << "C_GetSlotInfo" << qint64(0);
    QTest::newRow("C_GetTokenInfo") << "C_GetTokenInfo" << qint64(0);
}

void TestPkcs11Simulator::nonsenseAnswersAreSurvived()
{
    QFETCH(QString, function);
    QFETCH(qint64, number);
    for (const auto buffer : { sim::Fault::Buffer::Null, sim::Fault::Buffer::Given }) {
        sim::Fault fault;
        fault.function = function.toStdString();
        fault.nth = 0;
        fault.buffer = buffer;
        if (function == "C_GetAttributeValue")
            fault.length = number;
        else if (function == "C_GetSlotList" || function == "C_FindObjects")
            fault.count = number;
        else
            fault.description = fault.label = std::string(64, '\0');
        QVERIFY2(world.addFault(fault), world.error().c_str());
        QStringList found;
        pkcs11->finalize();
        pkcs11->readers(found, 1, 256);
        pkcs11->selectReader(reader);
        for (const char *conteiner : { "Presence", "Qualified", "eMRTD" }) {
            pkcs11->certsCount(reader, conteiner);
            pkcs11->tokenInfo(reader, conteiner);
            pkcs11->tokenObjects(reader, conteiner, -1, {});
        }
        world.clearFaults();
    }

    // The next scan is as good as the first.
    insert();
    QCOMPARE(pkcs11->certsCount(reader, qualified), 1);
    QCOMPARE(pkcs11->tokenDataMap(reader, "eMRTD", {}).size(), 3);
}

VELMOR_TEST_MAIN(TestPkcs11Simulator)
#include "tst_pkcs11_simulator.moc"
