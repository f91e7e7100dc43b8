#include <functional>
#include <tuple>

#include "devkit/sim_fixture.h"
#include "support/testmain.h"

// Faults and answers at the keypad as the words in which world.conf keeps them, which are those of a command.
class TstSimWords : public QObject {
    Q_OBJECT

private slots:
    void init();
    void eachFieldOfAFaultSurvivesTheFile_data();
    void eachFieldOfAFaultSurvivesTheFile();
    void oddTextsSurviveTheFile_data();
    void oddTextsSurviveTheFile();
    void allFieldsOfAFaultSurviveTogether();
    void answersAtTheKeypadSurviveTheFile_data();
    void answersAtTheKeypadSurviveTheFile();
    void theFileHoldsWhatACommandTakes();
    void whatTheFileCouldNotGiveBackIsRefused_data();
    void whatTheFileCouldNotGiveBackIsRefused();
    void aWrongLineInTheFileIsNamed_data();
    void aWrongLineInTheFileIsNamed();
    void quotesInAScenario();

private:
    using Change = std::function<void(sim::Fault &fault)>;

    // A new field of the struct is a compile error here, so that nobody forgets it.
    static auto all(const sim::Fault &fault)
    {
        const auto &[function, nth, reader, container, attribute, buffer, delayMs, block, die, removeReader, removeCard,
                     result, afterWork, description, label, flags, count, length] = fault;
        return std::make_tuple(function, nth, reader, container, attribute, buffer, delayMs, block, die, removeReader,
                               removeCard, result, afterWork, description, label, flags, count, length);
    }
    static auto all(const sim::PadAnswer &answer)
    {
        const auto &[kind, secret, newSecret, repeat, result] = answer;
        return std::make_tuple(kind, secret, newSecret, repeat, result);
    }

    QByteArray confText() const
    {
        QFile file(confPath());
        return file.open(QIODevice::ReadOnly) ? file.readAll().replace("\r\n", "\n") : QByteArray();
    }
    QString confPath() const { return QString::fromStdString(world.directory()) + "/world.conf"; }

    sim::SimWorld world;
};

Q_DECLARE_METATYPE(std::function<void(sim::Fault &fault)>)
Q_DECLARE_METATYPE(sim::PadAnswer)

void TstSimWords::init()
{
    QVERIFY2(world.reset(), world.error().c_str());
}

void TstSimWords::eachFieldOfAFaultSurvivesTheFile_data()
{
    QTest::addColumn<Change>("change");
    const auto row = [](const char *name, const Change &change) { QTest::newRow(name) << change; };
    row("nothing", [](sim::Fault &) {});
    row("nth", [](sim::Fault &f) { f.nth = 4; });
    row("nth, every one", [](sim::Fault &f) { f.nth = 0; });
    row("reader", [](sim::Fault &f) { f.reader = "R"; });
    row("container", [](sim::Fault &f) { f.container = sim::Emrtd; });
    row("attribute", [](sim::Fault &f) { f.attribute = CKA_VALUE; });
    row("attribute CLASS, which is 0", [](sim::Fault &f) { f.attribute = CKA_CLASS; });
    row("attribute without a name", [](sim::Fault &f) { f.attribute = 0x80001234; });
    row("buffer null", [](sim::Fault &f) { f.buffer = sim::Fault::Buffer::Null; });
    row("buffer given", [](sim::Fault &f) { f.buffer = sim::Fault::Buffer::Given; });
    row("delay", [](sim::Fault &f) { f.delayMs = 600000; });
    row("block", [](sim::Fault &f) { f.block = true; });
    row("die", [](sim::Fault &f) { f.die = true; });
    row("remove-reader", [](sim::Fault &f) { f.removeReader = "R"; });
    row("remove-card", [](sim::Fault &f) { f.removeCard = "R"; });
    row("result", [](sim::Fault &f) { f.result = CKR_DEVICE_ERROR; });
    row("result CKR_OK, which is 0", [](sim::Fault &f) { f.result = CKR_OK; });
    row("result without a name", [](sim::Fault &f) { f.result = 0xFFFFFFFF; });
    row("after", [](sim::Fault &f) { f.afterWork = true; });
    row("description", [](sim::Fault &f) { f.description = std::string("\0\n\xFF \"", 5); });
    row("description, empty", [](sim::Fault &f) { f.description = ""; });
    row("label", [](sim::Fault &f) { f.label = "Ż"; });
    row("label, empty", [](sim::Fault &f) { f.label = ""; });
    row("flags", [](sim::Fault &f) { f.flags = 0xFFFFFFFF; });
    row("flags, none", [](sim::Fault &f) { f.flags = 0; });
    row("count", [](sim::Fault &f) { f.count = 400; });
    row("count, none", [](sim::Fault &f) { f.count = 0; });
    row("count, negative", [](sim::Fault &f) { f.count = -1; });
    row("length", [](sim::Fault &f) { f.length = 100000; });
    row("length, unknown", [](sim::Fault &f) { f.length = -1; });
    row("length, nonsense", [](sim::Fault &f) { f.length = -2; });
}

void TstSimWords::eachFieldOfAFaultSurvivesTheFile()
{
    QFETCH(Change, change);
    sim::Fault fault;
    fault.function = "*";
    change(fault);

    QVERIFY2(world.addFault(fault), world.error().c_str());

    QVERIFY2(all(sim::SimWorld().faults().at(0)) == all(fault), confText());
}

void TstSimWords::oddTextsSurviveTheFile_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text :
         { "two words", " ", " at the ends ", "\"", "\"\"", "\"all of it\"", "in the \"middle\"", "\"at the start",
           "at the end\"", "a=b", "block", "back\\slash\\", "\\n", "#hash", "[brackets]", "tab\tand\nline\r", "Żółć" })
        QTest::newRow(text) << text;
    QTest::newRow("empty") << "";
}

void TstSimWords::oddTextsSurviveTheFile()
{
    QFETCH(QString, text);
    sim::Fault fault;
    fault.function = "C_Login";
    fault.reader = fault.container = fault.removeReader = fault.removeCard = text.toStdString();
    fault.description = fault.label = text.toStdString();
    sim::PadAnswer answer;
    answer.secret = answer.newSecret = answer.repeat = text.toStdString();

    QVERIFY2(world.addFault(fault) && world.pad(answer), world.error().c_str());

    QVERIFY2(all(world.faults().at(0)) == all(fault), confText());
    QVERIFY2(all(world.padAnswers().at(0)) == all(answer), confText());
}

void TstSimWords::allFieldsOfAFaultSurviveTogether()
{
    const sim::Fault fault { "C_GetAttributeValue",
                             4,
                             "R x",
                             sim::Emrtd,
                             CKA_VALUE,
                             sim::Fault::Buffer::Null,
                             5,
                             true,
                             true,
                             "R",
                             "S y",
                             0xFFFFFFFF,
                             true,
                             "\n",
                             "",
                             0x88000000,
                             0,
                             -1 };
    sim::Fault other;
    other.function = "C_Login";

    QVERIFY2(world.addFault(fault) && world.addFault(other), world.error().c_str());

    QCOMPARE(world.faults().size(), std::size_t(2));
    QVERIFY2(all(world.faults().at(0)) == all(fault), confText());
    QVERIFY2(all(world.faults().at(1)) == all(other), confText());
}

void TstSimWords::answersAtTheKeypadSurviveTheFile_data()
{
    QTest::addColumn<sim::PadAnswer>("answer");
    using Kind = sim::PadAnswer::Kind;
    QTest::newRow("nothing") << sim::PadAnswer();
    QTest::newRow("PIN") << sim::PadAnswer { Kind::Enter, "1234", "", "", 0 };
    QTest::newRow("new PIN alone") << sim::PadAnswer { Kind::Enter, "", "4321", "", 0 };
    QTest::newRow("repeated alone") << sim::PadAnswer { Kind::Enter, "", "", "4321", 0 };
    QTest::newRow("all") << sim::PadAnswer { Kind::Enter, "1234", "4321", "4322", 0 };
    QTest::newRow("cancel") << sim::PadAnswer { Kind::Cancel, "", "", "", 0 };
    QTest::newRow("mismatch") << sim::PadAnswer { Kind::Mismatch, "", "", "", 0 };
    QTest::newRow("reject") << sim::PadAnswer { Kind::Reject, "", "", "", 0 };
    QTest::newRow("result") << sim::PadAnswer { Kind::Result, "", "", "", CKR_DEVICE_ERROR };
    QTest::newRow("result without a name") << sim::PadAnswer { Kind::Result, "", "", "", 0xFFFFFFFF };
}

void TstSimWords::answersAtTheKeypadSurviveTheFile()
{
    QFETCH(sim::PadAnswer, answer);

    QVERIFY2(world.padChange("1", "2") && world.pad(answer), world.error().c_str());

    QCOMPARE(world.padAnswers().size(), std::size_t(3));
    QVERIFY2(all(sim::SimWorld().padAnswers().at(2)) == all(answer), confText());
}

void TstSimWords::theFileHoldsWhatACommandTakes()
{
    sim::Fault fault;
    fault.function = "C_Login";
    fault.nth = 2;
    fault.reader = "a \"good\" reader";
    fault.result = CKR_DEVICE_ERROR;
    fault.label = "";
    sim::PadAnswer answer;
    answer.secret = "1234";
    world.addFault(fault);
    world.pad(answer);

    QByteArray faultLine;
    QByteArray padLine;
    for (const QByteArray &line : confText().split('\n')) {
        faultLine = line.startsWith("fault = ") ? line.mid(8) : faultLine;
        padLine = line.startsWith("pad = ") ? line.mid(6) : padLine;
    }

    QCOMPARE(faultLine,
             QByteArray("C_Login nth=2 reader=\"a \"\"good\"\" reader\" result=CKR_DEVICE_ERROR label=\"\""));
    world.reset();
    QVERIFY2(world.applyScenario("fault " + faultLine.toStdString() + "\npad " + padLine.toStdString()),
             world.error().c_str());
    QVERIFY(all(world.faults().at(0)) == all(fault));
    QVERIFY(all(world.padAnswers().at(0)) == all(answer));
}

void TstSimWords::whatTheFileCouldNotGiveBackIsRefused_data()
{
    QTest::addColumn<Change>("change");
    const auto row = [](const char *name, const Change &change) { QTest::newRow(name) << change; };
    row("negative call", [](sim::Fault &f) { f.nth = -1; });
    row("negative delay", [](sim::Fault &f) { f.delayMs = -1; });
    row("endless delay", [](sim::Fault &f) { f.delayMs = 600001; });
}

void TstSimWords::whatTheFileCouldNotGiveBackIsRefused()
{
    QFETCH(Change, change);
    sim::Fault fault;
    fault.function = "C_Login";
    change(fault);

    QVERIFY(!world.addFault(fault));

    QVERIFY(!world.error().empty());
    QVERIFY(world.faults().empty());
}

void TstSimWords::aWrongLineInTheFileIsNamed_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("named");
    QTest::newRow("no such word") << QByteArray("fault = C_Login colour=red") << QByteArray("colour");
    QTest::newRow("open quote") << QByteArray("fault = C_Login reader=\"R") << QByteArray("fault = ");
    QTest::newRow("no such answer") << QByteArray("pad = sing 1234") << QByteArray("pad = ");
}

void TstSimWords::aWrongLineInTheFileIsNamed()
{
    QFETCH(QByteArray, line);
    QFETCH(QByteArray, named);
    QFile file(confPath());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(line + '\n');
    file.close();

    QVERIFY(!world.setDelay(1));

    const QByteArray error = QByteArray::fromStdString(world.error());
    QVERIFY2(error.contains(named) && error.contains("world.conf"), error);
    QVERIFY2(!error.contains("1234"), "what a user types at a keypad is told to nobody");
}

void TstSimWords::quotesInAScenario()
{
    QVERIFY2(world.applyScenario("readers add \"C:\\a \"\"b\"\"\"\n"
                                 "readers add \"\"\"\"\n"
                                 "readers add one\" and \"the\"same\"\n"
                                 "pad enter \"\" 4321"),
             world.error().c_str());

    QStringList names;
    for (const sim::Reader &reader : world.readers())
        names << QString::fromStdString(reader.name);
    QCOMPARE(names, QStringList({ "C:\\a \"b\"", "\"", "one and thesame" }));
    QCOMPARE(world.padAnswers().at(0).secret, std::string());
    QCOMPARE(world.padAnswers().at(0).newSecret, std::string("4321"));
    QVERIFY(!world.applyScenario("readers add \"open\"\""));
}

VELMOR_TEST(TstSimWords)
#include "tst_sim_words.moc"
