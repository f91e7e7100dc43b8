#include "system/family_runs.h"

// The trainer's panel as a process: one of it runs, it hears the family, and it changes the world that it is shown.
class TestPanelProgram : public QObject, private FamilyRuns {
    Q_OBJECT

private:
    static QString panel() { return VELMOR_TEST_ROOT "/devkit/velmor-panel"; }
    QProcess *startPanel()
    {
        QProcess *process = startProgram({}, {}, panel());
        return QTest::qWaitFor([] { return runs("Panel"); }, patience) ? process : nullptr;
    }

private slots:
    void init() { beginFamily(); }
    void cleanup()
    {
        endFamily();
        CommonAppLock left("velmor_panel");
        left.isHeld();
    }

    void secondStartEndsAndTheFirstStays()
    {
        QProcess *first = startPanel();
        QVERIFY(first);

        QCOMPARE(runToEnd({}, {}, panel()).code, 1);

        QCOMPARE(first->state(), QProcess::Running);
    }

    void closeEndsIt()
    {
        QProcess *process = startPanel();
        QVERIFY(process);

        // Until it listens.
        const bool ended = QTest::qWaitFor(
            [process] {
                tell("velmor_panel", "close");
                return process->state() == QProcess::NotRunning;
            },
            patience);

        QVERIFY(ended);
        QCOMPARE(process->exitCode(), 0);
    }

    void worldThatGoesEndsIt()
    {
        QProcess *process = startPanel();
        QVERIFY(process);
        QVERIFY(world.insertCard("Czytnik Alfa", "anna"));

        // Again and again: the panel may not look yet, and what it reads comes back.
        const bool ended = QTest::qWaitFor(
            [this, process] {
                QDir(QString::fromStdString(world.directory())).removeRecursively();
                return process->state() == QProcess::NotRunning;
            },
            patience);

        QVERIFY(ended);
    }

    void installationHoldsItForTheDemonstrationAlone()
    {
        QVERIFY(QFile::exists(panel()));
        for (const char *place : { "/bin/velmor-panel", "/velmor-panel" })
            QVERIFY2(!QFile::exists(QString(VELMOR_TEST_ROOT) + place), place);
    }
};

VELMOR_TEST(TestPanelProgram)
#include "tst_panel_program_linux.moc"
