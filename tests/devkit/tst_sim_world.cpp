#include <thread>

#include "devkit/sim_fixture.h"
#include "support/testmain.h"

// The world itself: readers, cards, events, and what happens when several change it at once.
class TstSimWorld : public QObject {
    Q_OBJECT

private slots:
    void init();
    void readersComeInTheOrderInWhichTheyWereAdded();
    void badReadersAreRefused();
    void aCardIsInOneReaderAtMost();
    void unknownThingsAreRefusedWithTheirName();
    void everyChangeOfReadersIsAnEvent();
    void whatChangesNothingIsNoEvent();
    void resetForgetsAllButGoesOnCounting();
    void aWorldIsTheSameForAnotherObject();
    void textsSurviveTheFile_data();
    void textsSurviveTheFile();
    void ownCardIsDefinedAndInserted();
    void redefinedCardLosesItsOldState();
    void cardsOfAnotherFolder();
    void cardIsInsertedByItsPath();
    void scenarioSetsAWholeWorld();
    void scenarioWithAnErrorChangesNothing();
    void shippedScenariosAllWork_data();
    void shippedScenariosAllWork();
    void setCardStateIsTakenAsItIs();
    void changesFromManyThreadsAllArrive();
    void worldFolderFollowsTheEnvironment();
    void secretsOfTheWorldAreNotForOthers();

private:
    sim::SimWorld world;
};

void TstSimWorld::init()
{
    QVERIFY2(world.reset(), world.error().c_str());
}

void TstSimWorld::readersComeInTheOrderInWhichTheyWereAdded()
{
    for (const char *name : { "C", "A", "B" })
        QVERIFY(world.addReader(name));
    world.removeReader("A");
    world.addReader("D", true);

    QStringList names;
    for (const sim::Reader &reader : world.readers())
        names << QString::fromStdString(reader.name) + ":" + QString::number(reader.id);
    QCOMPARE(names, QStringList({ "C:1", "B:3", "D:2" }));
    QVERIFY(world.readers()[2].pinpad);
}

void TstSimWorld::badReadersAreRefused()
{
    QVERIFY(world.addReader("A"));

    QVERIFY(!world.addReader("A"));
    QVERIFY(world.error().find("\"A\"") != std::string::npos);
    QVERIFY(!world.addReader(""));
    QVERIFY(!world.addReader(std::string(62, 'x')));
    QVERIFY(world.addReader(std::string(61, 'x')));
    QCOMPARE(world.readers().size(), std::size_t(2));
}

void TstSimWorld::aCardIsInOneReaderAtMost()
{
    QVERIFY(world.insertCard("A", "anna"));
    QVERIFY(world.addReader("B"));

    QVERIFY(!world.insertCard("B", "anna"));
    QVERIFY(!world.insertCard("A", "jan"));
    QVERIFY(world.removeCard("A"));
    QVERIFY(world.insertCard("B", "anna"));
    QVERIFY(world.readers()[1].insertion == 2);
}

void TstSimWorld::unknownThingsAreRefusedWithTheirName()
{
    const auto names = [&](const char *part) { return world.error().find(part) != std::string::npos; };

    QVERIFY(!world.removeReader("Z") && names("\"Z\""));
    QVERIFY(!world.insertCard("Z", "nobody") && names("\"nobody\""));
    QVERIFY(!world.removeCard("Z") && names("\"Z\""));
    QVERIFY(!world.setTries("nobody", sim::Qualified, 1) && names("\"nobody\""));
    QVERIFY(!world.setTries("anna", "Nothing", 1) && names("\"Nothing\""));
    QVERIFY(!world.setTries("anna", sim::Presence, 1) && names("Presence"));
    QVERIFY(!world.setTries("anna", sim::Qualified, 4));
    QVERIFY(!world.setPukTries("anna", -1));
    QVERIFY(!world.setPin("anna", sim::Authentication, "12345"));
    QVERIFY(!world.setCardsDirectory("no/such/folder"));
    QVERIFY(!world.cardState("nobody"));
    QVERIFY(world.readers().empty());
}

void TstSimWorld::everyChangeOfReadersIsAnEvent()
{
    const long before = world.lastReaderEvent();

    world.addReader("A");
    world.insertCard("A", "anna");
    world.setPinpad("A", true);
    world.removeCard("A");
    world.insertCard("B", "jan");
    world.removeReader("A");

    QStringList seen;
    for (const sim::ReaderEvent &event : world.readerEvents(before)) {
        QString line = QString::fromStdString(event.what + " " + event.reader + ":");
        for (const sim::Reader &reader : event.readers)
            line += QString::fromStdString(" " + reader.name + "=" + reader.card) + (reader.pinpad ? "+" : "");
        seen << line;
    }
    QCOMPARE(seen,
             QStringList({ "added A: A=", "inserted A: A=anna", "changed A: A=anna+", "ejected A: A=+",
                           "added B: A=+ B=", "inserted B: A=+ B=jan", "removed A: B=jan" }));
    QCOMPARE(world.lastReaderEvent(), before + 7);
    QCOMPARE(world.readerEvents(before + 6).size(), std::size_t(1));
}

void TstSimWorld::whatChangesNothingIsNoEvent()
{
    world.insertCard("A", "anna");
    const long before = world.lastReaderEvent();

    world.setPinpad("A", false);
    world.setTries("anna", sim::Qualified, 1);
    world.setDelay(0);
    world.removeReader("Z");

    QCOMPARE(world.lastReaderEvent(), before);
}

void TstSimWorld::resetForgetsAllButGoesOnCounting()
{
    world.insertCard("A", "anna");
    world.setTries("anna", sim::Qualified, 0);
    world.setDelay(1);
    world.setTraceOn(false);
    world.padChange("1234", "4321");
    sim::Fault fault;
    fault.function = "C_Login";
    world.addFault(fault);
    const long generation = world.generation();
    const long event = world.lastReaderEvent();

    QVERIFY(world.reset());

    QVERIFY(world.readers().empty() && world.faults().empty() && world.padAnswers().empty() && world.trace().empty());
    QCOMPARE(world.cardState("anna")->pins[sim::Qualified].tries, 3);
    QVERIFY(world.generation() > generation);
    QCOMPARE(world.readerEvents(event).size(), std::size_t(1));
    QCOMPARE(world.readerEvents(event)[0].what, std::string("reset"));
    world.insertCard("A", "anna");
    QCOMPARE(world.readers()[0].insertion > 1, true);
}

void TstSimWorld::aWorldIsTheSameForAnotherObject()
{
    sim::SimWorld other(world.directory());

    world.insertCard("A", "anna");
    other.setPin("anna", sim::Authentication, "5678");

    QCOMPARE(other.readers()[0].card, std::string("anna"));
    QCOMPARE(world.cardState("anna")->pins[sim::Authentication].pin, std::string("5678"));
}

void TstSimWorld::textsSurviveTheFile_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : { "Czytnik Żółć #1", " blanks at the ends ", "back\\slash \\n", "# hash", "[brackets]",
                              "a = b", "\"quotes\"", "tab\tand\nline" })
        QTest::newRow(name) << QString(name);
}

void TstSimWorld::textsSurviveTheFile()
{
    QFETCH(QString, name);

    QVERIFY(world.insertCard(name.toStdString(), "anna"));
    QVERIFY(world.setLabel("anna", sim::Qualified, name.toStdString()));

    QCOMPARE(QString::fromStdString(world.readers().at(0).name), name);
    QCOMPARE(QString::fromStdString(world.readerEvents().back().readers.at(0).name), name);
    QCOMPARE(QString::fromStdString(world.cardState("anna")->pins[sim::Qualified].label), name);
}

void TstSimWorld::ownCardIsDefinedAndInserted()
{
    sim::Card card = *world.card("anna");
    card.name = "mine";
    card.chip = "VELMOR_1_0";
    card.state.pins[sim::Authentication].pin = "0000";
    card.objects[sim::Emrtd].resize(1);
    card.objects[sim::Emrtd][0].label = "DG1";
    card.objects[sim::Emrtd][0].file.clear();
    card.objects[sim::Emrtd][0].value = std::string("a\0b", 3);
    SimFixture library;

    QVERIFY2(world.defineCard(card), world.error().c_str());
    library.start("mine");

    QCOMPARE(library.labels("eMRTD"), QStringList({ "DG1" }));
    const CK_SESSION_HANDLE session = library.open("eMRTD");
    QCOMPARE(library.attribute(session, library.find(session).at(0), CKA_VALUE), QByteArray("a\0b", 3));
    COMPARE_RV(library.tryPin("Authentication", CKU_USER, "0000"), CKR_OK);
    QVERIFY(library.slotInfo(1).flags & 0x2000);
    card.name = "../mine";
    QVERIFY(!world.defineCard(card));
}

void TstSimWorld::redefinedCardLosesItsOldState()
{
    sim::Card card = *world.card("anna");
    card.name = "mine";
    world.defineCard(card);
    world.setTries("mine", sim::Qualified, 0);

    world.defineCard(card);

    QCOMPARE(world.cardState("mine")->pins[sim::Qualified].tries, 3);
}

void TstSimWorld::cardsOfAnotherFolder()
{
    const QDir home(TestHome::path());
    home.mkpath("my cards/zenon");
    QFile manifest(home.filePath("my cards/zenon/card.conf"));
    QVERIFY(manifest.open(QIODevice::WriteOnly));
    manifest.write("chip = VELMOR_2_0\nholder = Zenon\n");
    manifest.close();

    QVERIFY2(world.setCardsDirectory(home.filePath("my cards").toStdString()), world.error().c_str());

    QVERIFY2(world.insertCard("A", "zenon"), world.error().c_str());
    QVERIFY(world.card("anna")); // those beside the library are still there
    bool listed = false;
    for (const sim::Card &card : world.cards())
        listed = listed || (card.name == "zenon" && card.holder == "Zenon");
    QVERIFY(listed);
    world.setCardsDirectory("");
}

void TstSimWorld::cardIsInsertedByItsPath()
{
    const QString folder = TestHome::path() + "/apart/ludmila";
    QDir().mkpath(folder);
    QFile manifest(folder + "/card.conf");
    QVERIFY(manifest.open(QIODevice::WriteOnly));
    manifest.write("chip = VELMOR_2_0\nAuthentication.pin = 7777\n");
    manifest.close();
    SimFixture library;
    library.start("anna");

    QVERIFY2(world.insertCard("B", folder.toStdString()), world.error().c_str());

    world.removeReader("R");
    QCOMPARE(world.readers()[0].card, std::string("ludmila"));
    COMPARE_RV(library.tryPin("Authentication", CKU_USER, "0000"), CKR_PIN_INCORRECT);
    COMPARE_RV(library.tryPin("Authentication", CKU_USER, "7777"), CKR_OK);
}

void TstSimWorld::scenarioSetsAWholeWorld()
{
    QVERIFY2(world.applyScenario("# a comment\n"
                                 "reset\n"
                                 "readers add \"Klawiatura Beta\" pinpad\n"
                                 "\n"
                                 "insert anna \"Klawiatura Beta\"\n"
                                 "tries Authentication 1\n"
                                 "lock anna PUK\n"
                                 "unset Qualified first-use\n"
                                 "fault C_Login nth=2 result=CKR_DEVICE_ERROR\n"
                                 "pad change 1234 4321"),
             world.error().c_str());

    QCOMPARE(world.readers().at(0).name, std::string("Klawiatura Beta"));
    QVERIFY(world.readers().at(0).pinpad);
    const auto state = world.cardState("anna");
    QCOMPARE(state->pins.at(sim::Authentication).tries, 1);
    QCOMPARE(state->pukTries, 0);
    QVERIFY(state->pins.at(sim::Qualified).toBeChanged);
    QCOMPARE(*world.faults().at(0).result, 0x30UL);
    QCOMPARE(world.padAnswers().size(), std::size_t(2));
}

void TstSimWorld::scenarioWithAnErrorChangesNothing()
{
    world.insertCard("A", "anna");
    const long generation = world.generation();

    QVERIFY(!world.applyScenario("reset\ninsert jan\n\ntries Qualified nine\n"));

    QVERIFY2(world.error().find("line 4") != std::string::npos, world.error().c_str());
    QCOMPARE(world.generation(), generation);
    QCOMPARE(world.readers().at(0).card, std::string("anna"));
    QVERIFY(!world.applyScenario("readers add \"not closed"));
    QVERIFY(!world.applyScenario("dance"));
    QVERIFY2(world.error().find("dance") != std::string::npos, world.error().c_str());
}

void TstSimWorld::shippedScenariosAllWork_data()
{
    QTest::addColumn<QString>("file");
    const QDir folder(QString(VELMOR_TEST_SOURCE_DIR) + "/devkit/scenarios");
    for (const QString &name : folder.entryList({ "*.sim" }))
        QTest::newRow(qPrintable(name)) << folder.filePath(name);
}

void TstSimWorld::shippedScenariosAllWork()
{
    QFETCH(QString, file);
    QFile scenario(file);
    QVERIFY(scenario.open(QIODevice::ReadOnly));

    QVERIFY2(world.applyScenario(scenario.readAll().toStdString()), world.error().c_str());

    QVERIFY(!world.readers().empty());
}

void TstSimWorld::setCardStateIsTakenAsItIs()
{
    sim::CardState state = *world.cardState("anna");
    state.puk = "11110000";
    state.pukTries = 2;
    state.pins[sim::Authentication].initialized = false;
    state.pins[sim::Authentication].toBeChanged = true;

    QVERIFY(world.setCardState("anna", state));

    const auto read = world.cardState("anna");
    QCOMPARE(read->puk, state.puk);
    QCOMPARE(read->pukTries, 2);
    QVERIFY(!read->pins.at(sim::Authentication).initialized && read->pins.at(sim::Authentication).toBeChanged);
    QVERIFY(read->pins.at(sim::Qualified).initialized);
}

void TstSimWorld::changesFromManyThreadsAllArrive()
{
    std::vector<std::thread> threads;
    const long before = world.lastReaderEvent();
    threads.reserve(4);

    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            sim::SimWorld mine(world.directory());
            for (int at = 0; at < 10; ++at)
                mine.addReader(std::to_string(thread) + "-" + std::to_string(at));
        });
    }
    for (std::thread &thread : threads)
        thread.join();

    QCOMPARE(world.readers().size(), std::size_t(40));
    QCOMPARE(world.readerEvents(before).size(), std::size_t(40));
    QCOMPARE(world.lastReaderEvent(), before + 40);
}

void TstSimWorld::worldFolderFollowsTheEnvironment()
{
    const QByteArray configured = qgetenv("VELMOR_SIM_WORLD");
    QCOMPARE(QDir::fromNativeSeparators(QString::fromLocal8Bit(configured)), QString::fromStdString(world.directory()));

    qunsetenv("VELMOR_SIM_WORLD");
#ifdef Q_OS_WIN
    const QString expected = QDir::fromNativeSeparators(qEnvironmentVariable("APPDATA")) + "/velmor-sim";
#else
    const QString expected = qEnvironmentVariable("XDG_STATE_HOME") + "/velmor-sim";
#endif
    const std::string usual = sim::SimWorld::defaultDirectory();
    qputenv("VELMOR_SIM_WORLD", configured);

    QCOMPARE(QString::fromStdString(usual), expected);
}

void TstSimWorld::secretsOfTheWorldAreNotForOthers()
{
#ifdef Q_OS_WIN
    QSKIP("the user's own folder guards the files there");
#endif
    world.insertCard("A", "anna");
    world.setPin("anna", sim::Authentication, "5678");

    const QFile::Permissions others = QFile::permissions(QString::fromStdString(world.directory()) + "/world.conf")
        & (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther);

    QCOMPARE(int(others), 0);
}

VELMOR_TEST(TstSimWorld)
#include "tst_sim_world.moc"
