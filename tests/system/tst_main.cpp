#include "system/program_runs.h"

#include <QRegularExpression>
#include <QSharedMemory>

#include "simworld/sim_world.h"

// The program as a process: options, exit codes, log file, one instance at a time, death and a new start.
class TestMain : public QObject, private ProgramRuns {
    Q_OBJECT

private:
    static bool holdsTheLock()
    {
        QSharedMemory memory("velmor_manager");
        return memory.attach();
    }

private slots:
    void init() { QDir().mkpath(logFolder()); }

    void cleanup()
    {
        killAll();
        QDir(logFolder()).removeRecursively();
        QSharedMemory memory("velmor_manager");
        memory.attach();
    }

    void probeOptionPrintsVersionFixAndTranslation()
    {
        const Outcome outcome = runToEnd({ "-t" });

        QCOMPARE(outcome.code, 0);
        QCOMPARE(QString::fromUtf8(outcome.output),
                 QString("<Version>4.3.5</Version><Fix>23</Fix><Translation>Zamknij</Translation>\n"));
    }

    void probeOptionTouchesNeitherScreenNorFontsNorLock()
    {
        runToEnd({ "-t" });

        QVERIFY(logHas("root:"));
        QVERIFY(!logHas("Screen:"));
        QVERIFY(!logHas("load ttf:"));
        QVERIFY(!logHas("shm lock"));
    }

    void joinedProbeOptionStillAnswersButAsksTheScreens()
    {
        const Outcome outcome = runToEnd({ "-tr", "x" });

        QCOMPARE(outcome.code, 0);
        QVERIFY(outcome.output.startsWith("<Version>"));
        QVERIFY(logHas("Scale factors:"));
    }

    void versionOptionNamesTheProgramByItsFile_data()
    {
        QTest::addColumn<QString>("option");
        QTest::newRow("short") << "-v";
        QTest::newRow("long") << "--version";
    }
    void versionOptionNamesTheProgramByItsFile()
    {
        QFETCH(QString, option);
        const Outcome outcome = runToEnd({ option });

        QCOMPARE(outcome.code, 0);
        QCOMPARE(outcome.output.trimmed(), QByteArray("Manager 4.3.5"));
    }

    void unknownOptionEndsWithOne_data()
    {
        QTest::addColumn<QString>("option");
        QTest::newRow("help is none") << "-h";
        QTest::newRow("other") << "--nonsense";
        QTest::newRow("value missing") << "-p";
    }
    void unknownOptionEndsWithOne()
    {
        QFETCH(QString, option);
        const Outcome outcome = runToEnd({ option });

        QCOMPARE(outcome.code, 1);
        QVERIFY(!outcome.errors.isEmpty());
    }

    void scaleFactorsOfTheUserAreKept()
    {
        runToEnd({ "-v" }, { { "QT_SCREEN_SCALE_FACTORS", "1" } });
        QVERIFY(!logHas("Scale factors:"));

        runToEnd({ "-v" }, { { "QT_SCREEN_SCALE_FACTORS", "" } });
        QVERIFY(logHas("Scale factors:"));
    }

    void startLogsItsStepsInOrder()
    {
        startProgram();
        QTRY_VERIFY_WITH_TIMEOUT(logHas("reader checked"), 10000);

        const QStringList wanted { "root:",
                                   "Menedżer Manager velmor Manager velmor_manager 4.3.5.23 x86_64 prod",
                                   "Screen:",
                                   "Scale factors:",
                                   onWindows ? "used platform plugin:  windows" : "used platform plugin:  offscreen",
                                   "load ttf:",
                                   "shm lock created velmor_manager 500",
                                   "Application velmor_monitor could not be found",
                                   "Checking for Kzr update",
                                   "reader checked" };
        const QStringList lines = logLines();
        int at = -1;
        for (const QString &text : wanted) {
            const int found = lines.indexOf(QRegularExpression(".*" + QRegularExpression::escape(text) + ".*"), at + 1);
            QVERIFY2(found > at, qPrintable("missing or out of order: " + text + "\n" + lines.join('\n')));
            at = found;
        }
    }

    void everyLogLineHasDateSourceAndMessage()
    {
        startProgram({ "-p", "settings" });
        QTRY_VERIFY_WITH_TIMEOUT(logHas("show settings"), 10000);

        const QRegularExpression form("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3} .{15} .*");
        QVERIFY(logLines().size() > 10);
        for (const QString &line : logLines())
            QVERIFY2(form.match(line).hasMatch(), qPrintable(line));
        QVERIFY(!logLines().filter(QRegularExpression("T[0-9:.]{12} window_setting  show settings")).isEmpty());
    }

    void withoutItsFolderThereIsNoLog()
    {
        QDir(logFolder()).removeRecursively();

        QCOMPARE(runToEnd({ "-v" }).code, 0);

        QVERIFY(!QDir(logFolder()).exists());
    }

    void everyStartBeginsANewLog()
    {
        runToEnd({ "-v" });
        const int first = logLines().filter("root:").size();
        runToEnd({ "-v" });

        QCOMPARE(first, 1);
        QCOMPARE(logLines().filter("root:").size(), 1);
    }

    void settingsPageIsShownWithoutAReaderQuery()
    {
        startProgram({ "-p", " settings " });
        QTRY_VERIFY_WITH_TIMEOUT(logHas("show settings"), 10000);
        QTest::qWait(200);
        QVERIFY(!logHas("reader checked"));
    }

    void helpPageWinsOverAReaderList()
    {
        startProgram({ "-p", "help", "-r", "0:Czytnik Alfa||" });
        QTRY_VERIFY_WITH_TIMEOUT(logHas("show help"), 10000);
        QTest::qWait(200);
        QVERIFY(!logHas("Readers list:"));
        QVERIFY(!logHas("reader checked"));
    }

    void unknownPageShowsTheFirstOneWithoutAQuery()
    {
        startProgram({ "-p", "foo" });
        QTRY_VERIFY_WITH_TIMEOUT(logHas("Checking for Kzr update"), 10000);
        QTest::qWait(200);
        QVERIFY(!logHas("show settings"));
        QVERIFY(!logHas("reader checked"));
    }

    void errorWordAsListShowsTheMissingCard()
    {
        startProgram({ "-r", " NO_CARD " });
        QTRY_VERIFY_WITH_TIMEOUT(logHas("move to disconnect page aborted because current page is:"), 10000);
        QVERIFY2(!logLines().filter(QRegularExpression("Readers list:  \\(\\)$")).isEmpty(), qPrintable(logText()));
    }

    void readerListIsTrimmed()
    {
        startProgram({ "-r", " 0:Czytnik Alfa||1:Czytnik Beta " });
        QTRY_VERIFY_WITH_TIMEOUT(logHas("Readers list:"), 10000);
        QVERIFY2(logHas("Readers list:  (Czytnik Alfa, Czytnik Beta)"), qPrintable(logText()));
    }

    void readerListReadsTheCard()
    {
        sim::SimWorld world;
        world.reset();
        world.insertCard("Czytnik Alfa", "anna");

        startProgram({ "-r", "0:Czytnik Alfa||" });

        QTRY_VERIFY_WITH_TIMEOUT(logHas("all certs loaded"), 15000);
    }

    void secondStartEndsWithOneAndTheFirstGoesOn()
    {
        QProcess *first = startProgram();
        QTRY_VERIFY_WITH_TIMEOUT(holdsTheLock(), 10000);

        const Outcome second = runToEnd({ "-p", "settings" });

        QCOMPARE(second.code, 1);
        QCOMPARE(first->state(), QProcess::Running);
        QVERIFY(logHas("Another 'velmor_manager' app seems to be running"));
        QVERIFY(!logHas("show settings"));
    }

    void killedInstanceLeavesALockThatTheNextStartTakes()
    {
        QProcess *first = startProgram();
        QTRY_VERIFY_WITH_TIMEOUT(logHas("reader checked"), 10000);
        first->kill();
        QVERIFY(first->waitForFinished());
        QVERIFY(QFile::remove(logPath()));

        QProcess *second = startProgram();

        QTRY_VERIFY_WITH_TIMEOUT(logHas("reader checked"), 10000);
        QVERIFY(logHas("shm lock created velmor_manager 500"));
        QVERIFY(!second->waitForFinished(300));
        QCOMPARE(second->state(), QProcess::Running);
    }

    void placesThatCannotBeWrittenDoNotKeepTheProgramFromStarting_data()
    {
        QTest::addColumn<StringMap>("variables");
        // Nobody writes below /proc, whatever his rights.
        QTest::newRow("home") << StringMap {
            { "HOME", "/proc" }, { "XDG_CONFIG_HOME", "" }, { "XDG_CACHE_HOME", "" }, { "XDG_DATA_HOME", "" }
        };
        QTest::newRow("settings store") << StringMap { { "XDG_CONFIG_HOME", "/proc/version" } };
    }
    void placesThatCannotBeWrittenDoNotKeepTheProgramFromStarting()
    {
        QFETCH(StringMap, variables);

        QProcess *process = startProgram({}, variables);

        QTRY_VERIFY_WITH_TIMEOUT(logHas("reader checked"), 10000);
        QCOMPARE(process->state(), QProcess::Running);
    }

    void logThatCannotBeWrittenIsLostInSilence()
    {
        QVERIFY(QDir().mkpath(logFolder() + "/velmor_manager.log/in-the-way"));

        const Outcome outcome = runToEnd({ "-t" });

        QCOMPARE(outcome.code, 0);
        QVERIFY(outcome.output.startsWith("<Version>"));
        QVERIFY(outcome.errors.isEmpty());
    }

    void settingsStoreOfNonsenseCountsAsEmpty()
    {
        const QString folder = TestHome::path() + "/nonsense/velmor";
        QVERIFY(QDir().mkpath(folder));
        QFile store(folder + "/config.conf");
        QVERIFY(store.open(QIODevice::WriteOnly));
        store.write(QByteArray("\x00\xff[[[\n=\n\x80theme", 15));
        store.close();

        startProgram({}, { { "XDG_CONFIG_HOME", TestHome::path() + "/nonsense" } });

        QTRY_VERIFY_WITH_TIMEOUT(logHas("reader checked"), 10000);
    }
};

VELMOR_TEST(TestMain)
#include "tst_main.moc"
