#include "system/program_runs.h"

#include <QRegularExpression>

#ifdef __SANITIZE_ADDRESS__
constexpr bool otherLibraryIsFirst = true;
#else
constexpr bool otherLibraryIsFirst = false;
#endif

// What the program sets up in the toolkit before its event loop begins, seen by a library inside it.
class TestProgramCalls : public QObject, private ProgramRuns {
    Q_OBJECT

private:
    // What the witness told of a run.
    static QStringList callsOf(const QStringList &args, StringMap variables = {})
    {
        const QString path = TestHome::path() + "/calls";
        QFile::remove(path);
        variables.insert("LD_PRELOAD", VELMOR_TEST_WITNESS);
        variables.insert("VELMOR_WITNESS", path);
        const Outcome outcome = runToEnd(args, variables);
        if (outcome.code != 0)
            return { "code " + QString::number(outcome.code), outcome.errors };
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QString::fromLocal8Bit(file.readAll()).split('\n', Qt::SkipEmptyParts);
    }

private slots:
    void initTestCase()
    {
        if (otherLibraryIsFirst)
            QSKIP("The sanitizer has to be the first library");
    }

    void windowIsShownActiveWithSmoothTextsOf96DotsPerInch()
    {
        QCOMPARE(callsOf({ "-p", "settings" }),
                 QStringList({ "resources", "activated when shown", "without OpenGL", "96 dots per inch", "smooth font",
                               "OpenGL for others", "event loop" }));
    }

    // The window's and the card worker's; what takes long gets none of its own.
    void programMakesOneThread()
    {
        QCOMPARE(callsOf({ "-p", "settings" }, { { "VELMOR_WITNESS_THREADS", "1" } }).count("thread"), 1);
    }

    void systemWithoutTlsIsToldInTheLog()
    {
        QVERIFY(QDir().mkpath(logFolder()));
        callsOf({ "-p", "settings" });
        QVERIFY(!logText().contains("SSL not supported"));

        callsOf({ "-p", "settings" }, { { "VELMOR_WITNESS_WITHOUT_TLS", "1" } });

        QCOMPARE(logLines().filter(QRegularExpression(" SSL not supported$")).size(), 1);
        QDir(logFolder()).removeRecursively();
    }

    void probeTouchesNoResources() { QCOMPARE(callsOf({ "-t" }), QStringList()); }
};

VELMOR_TEST(TestProgramCalls)
#include "tst_program_calls_linux.moc"
