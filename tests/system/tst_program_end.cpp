#include "system/program_runs.h"

#include "simworld/platform.h"
#include "simworld/sim_world.h"

#ifdef Q_OS_LINUX
#include <fcntl.h>
#include <linux/input.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

// The program's end as its user brings it about, at the keyboard: with a card library that answers, and with one that
// never comes back.
class TestProgramEnd : public QObject, private ProgramRuns {
    Q_OBJECT

private:
    std::unique_ptr<sim::SimWorld> world;
    int keyboard = -1;

    static QString keyboardPath() { return TestHome::path() + "/keyboard"; }
    static QString certificatePath() { return QDir::tempPath() + "/cert.cer"; }

    // The toolkit reads a keyboard of its own from any file below /dev.
    QProcess *startWithKeyboard(const QStringList &args)
    {
        return startProgram(args, { { "QT_QPA_GENERIC_PLUGINS", "evdevkeyboard:/dev/.." + keyboardPath() } });
    }

#ifdef Q_OS_LINUX
    void send(int key, int value)
    {
        input_event event = {};
        event.type = EV_KEY;
        event.code = static_cast<decltype(event.code)>(key);
        event.value = value;
        QCOMPARE(write(keyboard, &event, sizeof event), ssize_t(sizeof event));
    }

    // The cross is the last stop of the window, one step back from the first.
    void pressTheCross()
    {
        for (const int key : { KEY_LEFTSHIFT, KEY_TAB })
            send(key, 1);
        for (const int key : { KEY_TAB, KEY_LEFTSHIFT })
            send(key, 0);
        for (const int value : { 1, 0 })
            send(KEY_SPACE, value);
    }
#else
    void pressTheCross() { }
#endif

    void leaveACertificate() const
    {
        QFile file(certificatePath());
        QVERIFY(file.open(QIODevice::WriteOnly));
    }

    // The end that the program makes by itself when it is stuck: some five seconds after it has lost its patience with
    // the worker, which is 1.5 s after the cross was pressed.
    void verifyItGoesByItself(QProcess &process)
    {
        const Outcome outcome = outcomeOf(process);

        QCOMPARE(outcome.code, 0);
        QVERIFY2(!logHas("app destruct"), qPrintable(logText()));
        QVERIFY(!QFile::exists(certificatePath()));
    }

private slots:
    void initTestCase()
    {
#ifndef Q_OS_LINUX
        QSKIP("needs a keyboard that is a file");
#endif
    }

    void init()
    {
#ifdef Q_OS_LINUX
        // A new one each time: keys that nobody read are gone with it.
        const QByteArray path = QFile::encodeName(keyboardPath());
        QCOMPARE(mkfifo(path.constData(), 0600), 0);
        keyboard = open(path.constData(), O_RDWR | O_CLOEXEC);
        QVERIFY(keyboard >= 0);
#endif
        QDir().mkpath(logFolder());
        world = std::make_unique<sim::SimWorld>();
        QVERIFY2(world->reset(), world->error().c_str());
    }

    void cleanup()
    {
        killAll();
#ifdef Q_OS_LINUX
        close(keyboard);
#endif
        QFile::remove(keyboardPath());
        world->release();
        QFile::remove(certificatePath());
        QDir(logFolder()).removeRecursively();
    }

    void userWhoClosesTheWindowEndsTheProgram_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QString>("shown");
        QTest::newRow("first page") << QStringList() << "reader checked";
        QTest::newRow("help") << QStringList { "-p", "help" } << "show help";
        QTest::newRow("settings") << QStringList { "-p", "settings" } << "show settings";
    }
    void userWhoClosesTheWindowEndsTheProgram()
    {
        QFETCH(QStringList, args);
        QFETCH(QString, shown);
        QProcess *process = startWithKeyboard(args);
        QTRY_VERIFY_WITH_TIMEOUT(logHas(shown), 10000);

        pressTheCross();

        const Outcome outcome = outcomeOf(*process);
        QCOMPARE(outcome.code, 0);
        const QStringList lines = logLines();
        int at = -1;
        for (const char *text : { "quitClicked", "closeTheards()", "threads closed", "app destruct" }) {
            const QStringList found = lines.filter(text);
            QVERIFY2(!found.isEmpty(), qPrintable(text + QString(" is missing\n") + logText()));
            QVERIFY2(lines.indexOf(found.last()) > at, text);
            at = lines.indexOf(found.last());
        }
        QVERIFY(!logHas("terminateTheards()"));
    }

    void theNextStartFindsNoLock()
    {
        QProcess *process = startWithKeyboard({});
        QTRY_VERIFY_WITH_TIMEOUT(logHas("reader checked"), 10000);
        pressTheCross();
        QCOMPARE(outcomeOf(*process).code, 0);

        QFile::remove(logPath());
        startProgram();

        QTRY_VERIFY_WITH_TIMEOUT(logHas("reader checked"), 10000);
        QVERIFY(!logHas("Another 'velmor_manager' app seems to be running"));
    }

    void theTemporaryCertificateGoesWithTheProgram()
    {
        QProcess *process = startWithKeyboard({ "-p", "help" });
        QTRY_VERIFY_WITH_TIMEOUT(logHas("show help"), 10000);
        leaveACertificate();

        pressTheCross();

        QCOMPARE(outcomeOf(*process).code, 0);
        QVERIFY(!QFile::exists(certificatePath()));
    }

    void workerThatWaitsIsTerminatedAndTheProgramEnds()
    {
        world->insertCard("Czytnik Alfa", "anna");
        world->block("C_GetSlotList");
        QProcess *process = startWithKeyboard({ "-r", "0:Czytnik Alfa||" });
        QTRY_COMPARE_WITH_TIMEOUT(world->waitingCalls(), 1, 10000);

        pressTheCross();

        QCOMPARE(outcomeOf(*process).code, 0);
        QVERIFY2(logHas("terminateTheards()"), qPrintable(logText()));
        QVERIFY2(logHas("app destruct"), qPrintable(logText()));
    }

    void workerThatCannotBeCancelledDoesNotKeepTheProgram()
    {
        world->insertCard("Czytnik Alfa", "anna");
        sim::Fault changesTheWorld;
        changesTheWorld.function = "C_GetTokenInfo";
        changesTheWorld.result = 5;
        world->addFault(changesTheWorld);
        // The library waits for this lock where no cancellation reaches it.
        auto lock = std::make_unique<sim::platform::FileLock>(world->directory() + "/world.lock");
        QVERIFY(lock->isHeld());
        QProcess *process = startWithKeyboard({ "-r", "0:Czytnik Alfa||" });
        QTRY_VERIFY_WITH_TIMEOUT(logHas("select reader"), 10000);
        leaveACertificate();

        pressTheCross();

        verifyItGoesByItself(*process);
        QVERIFY(logHas("terminateTheards()"));
        QVERIFY(!logHas("threads closed"));
        lock.reset();
    }

    void libraryThatNeverFinishesDoesNotKeepTheProgram()
    {
        world->insertCard("Czytnik Alfa", "anna");
        world->block("C_GetSlotList");
        QProcess *process = startWithKeyboard({ "-r", "0:Czytnik Alfa||" });
        QTRY_COMPARE_WITH_TIMEOUT(world->waitingCalls(), 1, 10000);
        world->block("C_Finalize");

        pressTheCross();

        verifyItGoesByItself(*process);
        QVERIFY(logHas("terminateTheards()"));
        QVERIFY(logHas("threads closed"));
    }

    void libraryThatStopsAtItsVeryEndDoesNotKeepTheProgram()
    {
        world->insertCard("Czytnik Alfa", "anna");
        QProcess *process = startWithKeyboard({ "-r", "0:Czytnik Alfa||" });
        QTRY_VERIFY_WITH_TIMEOUT(logHas("all certs loaded"), 10000);
        world->block("C_Finalize");

        pressTheCross();

        verifyItGoesByItself(*process);
        QVERIFY(!logHas("terminateTheards()"));
    }
};

VELMOR_TEST(TestProgramEnd)
#include "tst_program_end.moc"
