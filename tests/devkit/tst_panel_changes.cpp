#include "devkit/panel_fixture.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>

namespace {

const char *const anna = "readers add \"Czytnik Alfa\"\ninsert anna";
const char *const annaAtTheKeypad = "readers add \"Czytnik Alfa\" pinpad\ninsert anna";
const char *const twoReaders = "readers add Alfa\nreaders add Beta pinpad\ninsert anna Alfa\ninsert jan Beta";

QPoint placeOf(QListWidget *list, const QString &card)
{
    for (int row = 0; row < list->count(); ++row) {
        if (list->item(row)->data(Qt::UserRole).toString() != card)
            continue;
        list->scrollToItem(list->item(row));
        return list->visualItemRect(list->item(row)).center();
    }
    qFatal("no card %s in the list", qPrintable(card));
}

void choose(QComboBox *box, int index)
{
    box->setFocus();
    while (box->currentIndex() != index)
        QTest::keyClick(box, box->currentIndex() < index ? Qt::Key_Down : Qt::Key_Up);
}

} // namespace

// Everything that can be clicked changes the world as velmor-sim would: the two worlds are compared as a whole.
class TestPanelChanges : public QObject, private PanelFixture {
    Q_OBJECT

private:
    using Work = std::function<void(TestPanelChanges &)>;
    struct Row {
        const char *name;
        const char *scenario;
        Page page;
        Work work;
        QList<QStringList> commands;
    };
    static QVector<Row> table();

    void clickCard(const QString &card)
    {
        auto *list = find<QListWidget>("listCards");
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, placeOf(list, card));
    }
    // As the keyboard's user comes to it.
    void pressOnCard(const QString &card, Qt::Key key)
    {
        auto *list = find<QListWidget>("listCards");
        list->setCurrentRow(list->indexAt(placeOf(list, card)).row());
        QTest::keyClick(list, key);
    }
    static Work clicks(const QString &button)
    {
        return [button](TestPanelChanges &test) { test.click(button); };
    }
    static Work chooses(const QString &box, int index)
    {
        return [box, index](TestPanelChanges &test) { choose(test.find<QComboBox>(box), index); };
    }
    static Work answers(const QString &button, int container, const char *newPin)
    {
        return [=](TestPanelChanges &test) {
            choose(test.find<QComboBox>("cContainer"), container);
            auto *line = test.find<QLineEdit>("lineNewPin");
            line->selectAll();
            QTest::keyClicks(line, newPin);
            test.click(button);
        };
    }
    static Work lesson(int index)
    {
        return [index](TestPanelChanges &test) {
            test.find<QListWidget>("listLessons")->setCurrentRow(index);
            test.click("bPrepare");
        };
    }
    static QStringList scenarioFile(const char *name)
    {
        return { "scenario", QString(VELMOR_TEST_SOURCE_DIR "/devkit/scenarios/%1.sim").arg(name) };
    }

private slots:
    void initTestCase() { loadLook(); }
    void cleanup() { window.reset(); }

    void worldIsAsTheToolWouldLeaveIt_data();
    void worldIsAsTheToolWouldLeaveIt();

    void lookingChangesNothing()
    {
        begin(anna, Pins);
        const QString before = ours();

        click("cbShow");
        for (int page = 0; page < 4; ++page)
            find<QTabWidget>("pages")->setCurrentIndex(page);
        find<QListWidget>("listLessons")->setCurrentRow(2);

        QCOMPARE(ours(), before);
    }

    void changesAreThoseOfTheChosenReader()
    {
        begin(twoReaders, ReaderAndKeypad);

        choose(find<QComboBox>("cReader"), 1);
        find<QTabWidget>("pages")->setCurrentIndex(Pins);
        click("bLockPUK");
        find<QTabWidget>("pages")->setCurrentIndex(Cards);
        clickCard("ewa");

        tool({ "lock", "jan", "PUK" });
        tool({ "remove", "Beta" });
        tool({ "insert", "ewa", "Beta" });
        QCOMPARE(ours(), theirs());
    }

    void refusedChangeIsTold()
    {
        begin(anna, Cards);
        QFile file(QString::fromStdString(world.directory()) + "/world.conf");
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("no world\n");
        file.close();

        clickCard("ewa");

        QTRY_VERIFY2(find<QLabel>("lStatus")->text().startsWith("Nie udało się: "),
                     qPrintable(find<QLabel>("lStatus")->text()));
    }
};

QVector<TestPanelChanges::Row> TestPanelChanges::table()
{
    using Test = TestPanelChanges;
    QVector<Row> rows {
        { "a click puts in", "readers add A", Cards, [](Test &t) { t.clickCard("ewa"); }, { { "insert", "ewa" } } },
        { "into no reader", "", Cards, [](Test &t) { t.clickCard("ewa"); }, { { "insert", "ewa" } } },
        { "a click takes out", anna, Cards, [](Test &t) { t.clickCard("anna"); }, { { "remove" } } },
        { "one for another", anna, Cards, [](Test &t) { t.clickCard("jan"); }, { { "remove" }, { "insert", "jan" } } },
        { "out of another reader", twoReaders, Cards, [](Test &t) { t.clickCard("jan"); }, { { "remove", "Beta" } } },
        { "foreign card", "", Cards, [](Test &t) { t.clickCard("foreign"); }, { { "insert", "foreign" } } },
        { "space bar", anna, Cards, [](Test &t) { t.pressOnCard("anna", Qt::Key_Space); }, { { "remove" } } },
        { "return", "", Cards, [](Test &t) { t.pressOnCard("zaneta", Qt::Key_Return); }, { { "insert", "zaneta" } } },
        { "as new", "insert anna\nlock PUK\npin Qualified 11112222", Pins, clicks("bRestore"), { { "restore" } } },
        { "keypad on", anna, ReaderAndKeypad, clicks("cbPinpad"), { { "pinpad", "on" } } },
        { "keypad off", annaAtTheKeypad, ReaderAndKeypad, clicks("cbPinpad"), { { "pinpad", "off" } } },
        { "slow", anna, ReaderAndKeypad, chooses("cSpeed", 2), { { "delay", "300" } } },
        { "not slow", "insert anna\ndelay 1000", ReaderAndKeypad, chooses("cSpeed", 0), { { "delay", "0" } } },
        { "change at the keypad",
          annaAtTheKeypad,
          ReaderAndKeypad,
          answers("bPadChange", 0, "7531"),
          { { "pad", "change", "1234", "7531" } } },
        { "unblock at the keypad",
          annaAtTheKeypad,
          ReaderAndKeypad,
          answers("bPadUnblock", 1, "753197"),
          { { "pad", "unblock", "87654321", "753197" } } },
        { "first PIN at the keypad",
          annaAtTheKeypad,
          ReaderAndKeypad,
          answers("bPadFirst", 2, "75319753"),
          { { "pad", "first", "87654321", "75319753" } } },
        { "wrong code at the keypad",
          annaAtTheKeypad,
          ReaderAndKeypad,
          clicks("bPadWrong"),
          { { "pad", "enter", "0000" } } },
        { "wrong code, not the right one",
          "readers add A pinpad\ninsert anna\npin Authentication 0000",
          ReaderAndKeypad,
          clicks("bPadWrong"),
          { { "pad", "enter", "1111" } } },
        { "two PINs at the keypad",
          annaAtTheKeypad,
          ReaderAndKeypad,
          clicks("bPadMismatch"),
          { { "pad", "mismatch" } } },
        { "red key", annaAtTheKeypad, ReaderAndKeypad, clicks("bPadCancel"), { { "pad", "cancel" } } },
        { "forget the keys",
          "readers add A pinpad\ninsert anna\npad cancel",
          ReaderAndKeypad,
          clicks("bPadClear"),
          { { "pad", "clear" } } },
        { "lesson of the lost PIN", anna, Lessons, lesson(0), { scenarioFile("lesson-1-lost-pin") } },
        { "lesson of the first PIN", twoReaders, Lessons, lesson(1), { scenarioFile("lesson-2-first-pin") } },
        { "lesson of the blocked PUK", "", Lessons, lesson(2), { scenarioFile("lesson-3-blocked-puk") } },
        { "lesson of the plain card", anna, Lessons, lesson(3), { scenarioFile("lesson-4-no-electronic-layer") } },
    };
    for (const char *word : { "Authentication", "Authorization", "Qualified", "PUK" }) {
        rows.append({ word, anna, Pins, clicks(QString("bLock") + word), { { "lock", word } } });
        for (int tries = 0; tries < 3; ++tries)
            rows.append({ word,
                          anna,
                          Pins,
                          chooses(QString("cTries") + word, 3 - tries),
                          { { "tries", word, QString::number(tries) } } });
    }
    return rows;
}

void TestPanelChanges::worldIsAsTheToolWouldLeaveIt_data()
{
    QTest::addColumn<int>("index");
    const QVector<Row> rows = table();
    for (int i = 0; i < rows.size(); ++i)
        QTest::addRow("%d %s", i, rows[i].name) << i;
}

void TestPanelChanges::worldIsAsTheToolWouldLeaveIt()
{
    QFETCH(int, index);
    const Row row = table().at(index);
    begin(row.scenario, row.page);
    const QString before = ours();

    row.work(*this);

    QVERIFY(ours() != before);
    for (const QStringList &command : row.commands)
        tool(command);
    QCOMPARE(ours(), theirs());
}

VELMOR_TEST(TestPanelChanges)
#include "tst_panel_changes.moc"
