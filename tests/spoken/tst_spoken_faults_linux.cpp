#include "spoken/story_test.h"

#include "gui/spoken_focus.h"

#include <QApplication>
#include <QLabel>

// That the stories tell what is wrong: each fault is made in the window, and the home page read.
class TestSpokenFaults : public QObject {
    Q_OBJECT

private:
    StoryTeller teller;

    static void hideName(Driver &driver) { driver.find("bMinimalize")->setAccessibleName({}); }
    static void showSilentText(Driver &driver)
    {
        auto *label = new QLabel("Tylko dla oka", driver.find("pageHome"));
        label->show();
    }
    static void tellOldText(Driver &driver) { driver.find("bHelp")->setAccessibleName("Dawny napis"); }
    static void makeStopWithoutRole(Driver &driver)
    {
        auto *stop = new QWidget(driver.find("pageHome"));
        stop->setAccessibleName("Pomoc");
        stop->setFocusPolicy(Qt::TabFocus);
        stop->resize(10, 10);
        stop->show();
    }
    static void tellTwice(Driver &driver)
    {
        QWidget *help = driver.find("bHelp");
        connect(qApp, &QApplication::focusChanged, help, [help](const QWidget *, const QWidget *now) {
            if (now == help)
                focusAloud(help);
        });
    }

private slots:
    void initTestCase() { QVERIFY(teller.start()); }
    void cleanup() { teller.close(); }

    void faultIsFound_data()
    {
        QTest::addColumn<QString>("happening");
        QTest::addColumn<QString>("fault");
        QTest::newRow("name") << "hideName"
                              << "a stop without a name";
        QTest::newRow("text") << "showSilentText"
                              << "shown and not heard: Tylko dla oka";
        QTest::newRow("old text") << "tellOldText"
                                  << "heard and not shown: \"dawnynapis\"";
        QTest::newRow("role") << "makeStopWithoutRole"
                              << "a stop without a role";
        QTest::newRow("twice") << "tellTwice"
                               << "a stop twice: Pomoc";
    }
    void faultIsFound()
    {
        QFETCH(QString, happening);
        QFETCH(QString, fault);
        const Happenings happenings {
            { "hideName", hideName },       { "showSilentText", showSilentText },
            { "tellOldText", tellOldText }, { "makeStopWithoutRole", makeStopWithoutRole },
            { "tellTwice", tellTwice },
        };
        const Story story { "faults", happening, "anna", nullptr, { "!" + happening, "read" } };

        teller.open(story);
        teller.play(story, happenings);

        QVERIFY2(!teller.faults().filter(fault).isEmpty(), qPrintable(teller.faults().join('\n')));
    }
};

VELMOR_TEST(TestSpokenFaults)
#include "tst_spoken_faults_linux.moc"
