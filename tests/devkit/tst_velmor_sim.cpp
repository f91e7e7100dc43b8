#include "devkit/sim_fixture.h"
#include "support/testmain.h"

// The command line, as a shell sees it: what it changes, what it prints, how it ends.
class TstVelmorSim : public QObject {
    Q_OBJECT

private slots:
    void init();
    void insertMakesAReaderIfThereIsNone();
    void listShowsReadersCardsAndTries();
    void messageNamesReadersWithAReadableCardOrTheReasonForNone();
    void commandsChangeTheWorld_data();
    void commandsChangeTheWorld();
    void whatCannotBeDoneEndsWithOneAndAReason_data();
    void whatCannotBeDoneEndsWithOneAndAReason();
    void whatIsNotUnderstoodEndsWithTwo_data();
    void whatIsNotUnderstoodEndsWithTwo();
    void faultWordsGiveTheFault();
    void padWordsGiveTheAnswers();
    void cardsListsWhoIsThere();
    void traceAndEventsArePrinted();
    void scenarioFileIsApplied();
    void worldOption();
    void helpNamesEveryCommand();
    void resetCuresABrokenWorld();

private:
    int run(const QStringList &words)
    {
        QProcess process;
        process.start(SimFixture::velmorSim(), words);
        if (!process.waitForFinished(20000))
            return -1;
        output = QString::fromUtf8(process.readAllStandardOutput()).remove('\r');
        errors = QString::fromUtf8(process.readAllStandardError());
        return process.exitCode();
    }

    sim::SimWorld world;
    QString output;
    QString errors;
};

void TstVelmorSim::init()
{
    QCOMPARE(run({ "reset" }), 0);
}

void TstVelmorSim::insertMakesAReaderIfThereIsNone()
{
    QCOMPARE(run({ "insert", "anna" }), 0);

    QCOMPARE(world.readers().at(0).name, std::string("Czytnik Alfa"));
    QCOMPARE(world.readers().at(0).card, std::string("anna"));
    QVERIFY(output.isEmpty() && errors.isEmpty());
}

void TstVelmorSim::messageNamesReadersWithAReadableCardOrTheReasonForNone()
{
    const auto message = [this](const QStringList &change) {
        if (!change.isEmpty())
            run(change);
        run({ "message" });
        return output.trimmed();
    };

    QCOMPARE(message({}), QString("NO_READER"));
    QCOMPARE(message({ "readers", "add", "Czytnik Łódź" }), QString("NO_CARD"));
    QCOMPARE(message({ "insert", "foreign", "Czytnik Łódź" }), QString("NO_SUPPORTED_CARD"));
    QCOMPARE(message({ "insert", "anna", "Beta" }), QString("0:Beta||"));
    QCOMPARE(message({ "insert", "jan", "Gamma" }), QString("0:Beta||1:Gamma||"));
    QCOMPARE(message({ "unread", "on", "Beta" }), QString("0:Gamma||"));
    QCOMPARE(message({ "wait-can", "on", "Gamma" }), QString("WAIT_CAN"));
}

void TstVelmorSim::listShowsReadersCardsAndTries()
{
    run({ "insert", "zaneta" });
    run({ "tries", "PUK", "1" });
    run({ "readers", "add", "Żółty", "pinpad" });
    run({ "fault", "C_Login", "result=CKR_DEVICE_ERROR" });

    QCOMPARE(run({ "list" }), 0);

    QCOMPARE(output.section('\n', 1),
             QString("  reader \"Czytnik Alfa\"\n"
                     "    card zaneta\n"
                     "      Authentication: 3 tries\n"
                     "      Authorization: locked\n"
                     "      Qualified: not set (first use)\n"
                     "      PUK: 1 try\n"
                     "  reader \"Żółty\" (pinpad)\n"
                     "    empty\n"
                     "  fault C_Login nth=1 result=CKR_DEVICE_ERROR\n"));
}

void TstVelmorSim::commandsChangeTheWorld_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<QString>("seen"); // in the list
    QTest::newRow("remove") << QStringList({ "remove" }) << "    empty";
    QTest::newRow("remove from a reader") << QStringList({ "remove", "R" }) << "    empty";
    QTest::newRow("pinpad on") << QStringList({ "pinpad", "on" }) << "reader \"R\" (pinpad)";
    QTest::newRow("wait-can on") << QStringList({ "wait-can", "on", "R" }) << "(waits for the CAN)";
    QTest::newRow("unread on") << QStringList({ "unread", "on" }) << "(not read by the Monitor)";
    QTest::newRow("lock") << QStringList({ "lock", "Authorization" }) << "Authorization: locked";
    QTest::newRow("lock of a card") << QStringList({ "lock", "anna", "Qualified" }) << "Qualified: locked";
    QTest::newRow("lock PUK") << QStringList({ "lock", "PUK" }) << "PUK: locked";
    QTest::newRow("tries") << QStringList({ "tries", "Authentication", "2" }) << "Authentication: 2 tries";
    QTest::newRow("unset, first use") << QStringList({ "unset", "Qualified", "first-use" }) << "not set (first use)";
    QTest::newRow("unset, not initialized")
        << QStringList({ "unset", "anna", "Qualified", "not-initialized" }) << "not set (not initialized)";
}

void TstVelmorSim::commandsChangeTheWorld()
{
    QFETCH(QStringList, words);
    QFETCH(QString, seen);
    run({ "insert", "anna", "R" });
    run({ "list" });
    QVERIFY(!output.contains(seen));

    QVERIFY2(run(words) == 0, qPrintable(errors));

    run({ "list" });
    QVERIFY2(output.contains(seen), qPrintable(output));
}

void TstVelmorSim::whatCannotBeDoneEndsWithOneAndAReason_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<QString>("reason");
    QTest::newRow("no such card") << QStringList({ "insert", "nobody" }) << "there is no card \"nobody\"";
    QTest::newRow("no reader to take a card from") << QStringList({ "remove" }) << "there is no reader with a card";
    QTest::newRow("no card to lock") << QStringList({ "lock", "Qualified" }) << "there is no card in a reader";
    QTest::newRow("no such reader") << QStringList({ "pinpad", "on", "Z" }) << "there is no reader \"Z\"";
    QTest::newRow("five tries") << QStringList({ "tries", "anna", "Qualified", "5" }) << "tries are 0 to 3";
    QTest::newRow("short PIN") << QStringList({ "pin", "anna", "Qualified", "123" }) << "8 digits";
    QTest::newRow("no such function") << QStringList({ "fault", "C_Loggin", "block" }) << "C_Loggin";
    QTest::newRow("no such scenario") << QStringList({ "scenario", "nowhere.sim" }) << "nowhere.sim";
}

void TstVelmorSim::whatCannotBeDoneEndsWithOneAndAReason()
{
    QFETCH(QStringList, words);
    QFETCH(QString, reason);

    QCOMPARE(run(words), 1);

    QVERIFY2(errors.startsWith("velmor-sim: ") && errors.contains(reason), qPrintable(errors));
    QVERIFY(output.isEmpty());
}

void TstVelmorSim::whatIsNotUnderstoodEndsWithTwo_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::newRow("nothing") << QStringList();
    QTest::newRow("no such command") << QStringList({ "dance" });
    QTest::newRow("too few words") << QStringList({ "insert" });
    QTest::newRow("too many words") << QStringList({ "delay", "1", "2" });
    QTest::newRow("no number") << QStringList({ "delay", "long" });
    QTest::newRow("no switch") << QStringList({ "pinpad", "maybe" });
    QTest::newRow("no such fault word") << QStringList({ "fault", "C_Login", "colour=red" });
    QTest::newRow("bad fault value") << QStringList({ "fault", "C_Login", "result=CKR_NONSENSE" });
    QTest::newRow("no such pad word") << QStringList({ "pad", "sing" });
    QTest::newRow("scenario without file") << QStringList({ "scenario" });
    QTest::newRow("trace of nothing") << QStringList({ "trace", "perhaps" });
}

void TstVelmorSim::whatIsNotUnderstoodEndsWithTwo()
{
    QFETCH(QStringList, words);

    QCOMPARE(run(words), 2);

    QVERIFY2(errors.contains("velmor-sim help"), qPrintable(errors));
}

void TstVelmorSim::faultWordsGiveTheFault()
{
    QCOMPARE(
        run({ "fault", "C_GetAttributeValue", "nth=every", "container=eMRTD", "reader=My reader", "attribute=CKA_VALUE",
              "buffer=given", "delay=20", "block", "remove-card=My reader", "result=0x30", "after", "length=-1" }),
        0);
    QCOMPARE(run({ "fault", "C_GetSlotInfo", "nth=2", "description=41c500", "flags=0x88000000", "count=3" }), 0);

    const auto faults = world.faults();
    QCOMPARE(faults.size(), std::size_t(2));
    QCOMPARE(faults[0].nth, 0);
    QCOMPARE(faults[0].container, std::string("eMRTD"));
    QCOMPARE(faults[0].reader, std::string("My reader"));
    QCOMPARE(*faults[0].attribute, 0x11UL);
    QVERIFY(faults[0].buffer == sim::Fault::Buffer::Given);
    QCOMPARE(faults[0].delayMs, 20);
    QVERIFY(faults[0].block && faults[0].afterWork);
    QCOMPARE(faults[0].removeCard, std::string("My reader"));
    QCOMPARE(*faults[0].result, 0x30UL);
    QCOMPARE(*faults[0].length, -1LL);
    QCOMPARE(faults[1].nth, 2);
    QCOMPARE(*faults[1].description, std::string("A\xC5\0", 3));
    QCOMPARE(*faults[1].flags, 0x88000000U);
    QCOMPARE(*faults[1].count, 3LL);
    QCOMPARE(run({ "fault", "clear" }), 0);
    QVERIFY(world.faults().empty());
}

void TstVelmorSim::padWordsGiveTheAnswers()
{
    const QStringList lines { "pad change 1234 4321",
                              "pad unblock 87654321 1111",
                              "pad first 87654321 12341234",
                              "pad cancel",
                              "pad mismatch",
                              "pad reject",
                              "pad result 0x30",
                              "pad enter 1 2 3" };
    for (const QString &line : lines)
        QCOMPARE(run(line.split(' ')), 0);

    QStringList seen;
    for (const sim::PadAnswer &answer : world.padAnswers())
        seen << QString("%1 %2/%3/%4")
                    .arg(int(answer.kind))
                    .arg(answer.secret.c_str(), answer.newSecret.c_str(), answer.repeat.c_str());
    QCOMPARE(seen,
             QStringList({ "0 1234//", "0 1234/4321/", "0 87654321//", "0 /1111/", "0 87654321/12341234/", "1 //",
                           "2 //", "3 //", "4 //", "0 1/2/3" }));
}

void TstVelmorSim::cardsListsWhoIsThere()
{
    QCOMPARE(run({ "cards" }), 0);

    QVERIFY2(output.contains("Żaneta Józefina Święcicka-Łącka"), qPrintable(output));
    QVERIFY(output.contains(QRegularExpression("(?m)^jan +VELMOR_2_1 +Jan Stanisław Dąbrowski$")));
    QVERIFY(output.contains(QRegularExpression("(?m)^foreign +not supported")));
}

void TstVelmorSim::traceAndEventsArePrinted()
{
    SimFixture library;
    library.start("anna");
    library.tryPin("Qualified", CKU_USER, "11111111");

    QCOMPARE(run({ "trace", "C_Login" }), 0);
    QCOMPARE(output, QString("C_Login container=Qualified user=USER pin=set -> 0xa0\n"));
    QCOMPARE(run({ "events" }), 0);
    QVERIFY2(output.endsWith("inserted \"R\": [R: anna]\n"), qPrintable(output));
    QCOMPARE(run({ "trace", "clear" }), 0);
    QCOMPARE(run({ "trace" }), 0);
    QCOMPARE(output, QString());
}

void TstVelmorSim::scenarioFileIsApplied()
{
    const QString file = QString(VELMOR_TEST_SOURCE_DIR) + "/devkit/scenarios/two-readers.sim";

    QVERIFY2(run({ "scenario", file }) == 0, qPrintable(errors));

    QCOMPARE(world.readers().size(), std::size_t(2));
    QCOMPARE(world.readers().at(1).card, std::string("jan"));
}

void TstVelmorSim::worldOption()
{
    const QString other = TestHome::path() + "/other world";

    QCOMPARE(run({ "--world", other, "insert", "anna" }), 0);

    QVERIFY(world.readers().empty());
    QCOMPARE(sim::SimWorld(other.toStdString()).readers().at(0).card, std::string("anna"));
}

void TstVelmorSim::helpNamesEveryCommand()
{
    QCOMPARE(run({ "help" }), 0);

    for (const char *command : { "reset", "readers", "insert", "remove", "pinpad", "wait-can", "unread",  "lock",
                                 "tries", "pin",     "unset",  "flags",  "label",  "restore",  "pad",     "delay",
                                 "fault", "release", "trace",  "cards",  "list",   "events",   "scenario" })
        QVERIFY2(output.contains(QString("\n  %1").arg(command)), command);
    QCOMPARE(run({ "help", "fault" }), 0);
    QVERIFY(output.contains("remove-reader=NAME"));
}

void TstVelmorSim::resetCuresABrokenWorld()
{
    QFile file(QString::fromStdString(world.directory()) + "/world.conf");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("nonsense\n");
    file.close();

    QCOMPARE(run({ "insert", "anna" }), 1);
    QVERIFY(errors.contains("line 1"));
    QCOMPARE(run({ "reset" }), 0);
    QCOMPARE(run({ "insert", "anna" }), 0);
}

VELMOR_TEST(TstVelmorSim)
#include "tst_velmor_sim.moc"
