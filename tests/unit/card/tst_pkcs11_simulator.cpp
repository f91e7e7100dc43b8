#include "simulated_card.h"

// Pkcs11 on the simulated card library: cards are found and read, pulled out in the middle, and answer nonsense. Exact
// sequences and odd answers are the business of the other tests of this class.
class TestPkcs11Simulator : public QObject, private SimulatedCard {
    Q_OBJECT

private slots:
    void initTestCase() { setUpApplication(); }
    void init() { begin(); }
    void cleanup() { end(); }

    void cardIsReadFromBeginningToEnd();
    void chipsAreRecognised_data();
    void chipsAreRecognised();
    void unreadReadersAreNotListed();
    void cardThatWaitsForItsCanCannotBeSelected();
    void foreignCardCannotBeSelected();
    void pulledCardTakesItsTokensAlong();
    void rescanKillsSessionsAndSearchesRecover();
    void searchLeftOpenIsRefusedUntilTheNextScan();
    void handleThatMeansAnotherSessionAnswersForIt();
    void nonsenseAnswersAreSurvived_data();
    void nonsenseAnswersAreSurvived();
};

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

// After C_Finalize the handles of before are tried once, as they stand. That takes a library for granted which never
// gives an old handle to a new session; with one that does, a container can answer for another.
void TestPkcs11Simulator::handleThatMeansAnotherSessionAnswersForIt()
{
    QVERIFY(world.setSessionsAnew(true));
    QStringList found;
    QVERIFY(pkcs11->readers(found, 1, 256) && pkcs11->selectReader(reader));
    QCOMPARE(pkcs11->tokenCerts(reader, "Presence"), QByteArrayList { "P" });
    QCOMPARE(pkcs11->tokenCerts(reader, "Qualified"), QByteArrayList { "Q" });
    pkcs11->finalize();
    QVERIFY(pkcs11->readers(found, 1, 256) && pkcs11->selectReader(reader));

    // Its handle is dead, and the new one is that which the other has kept.
    QCOMPARE(pkcs11->tokenCerts(reader, "Qualified"), QByteArrayList { "Q" });
    QCOMPARE(pkcs11->tokenCerts(reader, "Presence"), QByteArrayList { "Q" });

    QVERIFY(world.setSessionsAnew(false));
    pkcs11->finalize();
    QVERIFY(pkcs11->readers(found, 1, 256) && pkcs11->selectReader(reader));
    QCOMPARE(pkcs11->tokenCerts(reader, "Qualified"), QByteArrayList { "Q" });
    QCOMPARE(pkcs11->tokenCerts(reader, "Presence"), QByteArrayList { "P" });
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

VELMOR_TEST(TestPkcs11Simulator)
#include "tst_pkcs11_simulator.moc"
