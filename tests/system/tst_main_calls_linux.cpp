#include "system/program_runs.h"

#include <QRegularExpression>

#ifdef __SANITIZE_ADDRESS__
constexpr bool otherLibraryIsFirst = true;
#else
constexpr bool otherLibraryIsFirst = false;
#endif

// What the program sets up in the toolkit before its event loop begins, seen by a library inside it.
class TestMainCalls : public QObject, private ProgramRuns {
    Q_OBJECT

private:
    // What the witness told of a run.
    static QStringList callsOf(const QStringList &args, StringMap variables = {}, const QString &path = program())
    {
        const QString calls = TestHome::path() + "/calls";
        QFile::remove(calls);
        variables.insert("LD_PRELOAD", VELMOR_TEST_WITNESS);
        variables.insert("VELMOR_WITNESS", calls);
        const Outcome outcome = runToEnd(args, variables, path);
        if (outcome.code != 0)
            return { "code " + QString::number(outcome.code), outcome.errors };
        QFile file(calls);
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
                 QStringList({ "resources", "font configuration", "activated when shown", "without OpenGL",
                               "96 dots per inch", "smooth font", "OpenGL for others", "event loop" }));
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

    void developerIsToldWhereTheLibrariesForTlsComeFrom()
    {
        QVERIFY(QDir().mkpath(logFolder()));
        // What has been built and not installed has a Makefile.
        const QString root = TestHome::path() + "/built";
        QVERIFY(QDir().mkpath(root + "/bin"));
        QVERIFY(QFile::copy(program(), programIn(root)));
        QFile makefile(root + "/Makefile");
        QVERIFY(makefile.open(QIODevice::WriteOnly));

        callsOf({ "-p", "settings" }, { { "VELMOR_WITNESS_WITHOUT_TLS", "1" }, { "QTDIR", "C:\\Qt" } },
                programIn(root));

        const QString advice = " SSL not supported - Copy ssleay32.dll and libeay32.dll from SDK\\openssl-1.1.1k into "
                               "C:\\Qt\\bin";
        const QStringList told = logLines().filter(" SSL not supported");
        QCOMPARE(told.size(), 1);
        QVERIFY2(told.first().endsWith(advice), qPrintable(told.first()));
        QDir(logFolder()).removeRecursively();
    }

    void probeTouchesNoResources() { QCOMPARE(callsOf({ "-t" }), QStringList()); }
};

VELMOR_TEST(TestMainCalls)
#include "tst_main_calls_linux.moc"
