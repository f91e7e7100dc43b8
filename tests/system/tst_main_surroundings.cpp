#include "system/program_runs.h"

#include <QLibraryInfo>
#include <QRegularExpression>

#include "simworld/sim_world.h"

// What the program takes from around it: the toolkit's translations, arguments and environment, fonts; and what it
// tells on standard output.
class TestMainSurroundings : public QObject, private ProgramRuns {
    Q_OBJECT

private:
    // Elapsed milliseconds of the lines on standard output.
    static QList<int> stamps(const QByteArray &output)
    {
        QList<int> out;
        for (const QByteArray &line : output.split('\n')) {
            if (!line.isEmpty())
                out << line.left(9).toInt();
        }
        return out;
    }

private slots:
    void init() { QDir().mkpath(logFolder()); }

    void cleanup()
    {
        killAll();
        QDir(logFolder()).removeRecursively();
    }

    void missingTranslationLeavesTheTextsInEnglish()
    {
        const QString root = TestHome::path() + "/moved";
        const QString copy = programIn(root);
        QVERIFY(QDir().mkpath(QFileInfo(copy).path()));
        QVERIFY(QFile::copy(program(), copy));
        QFile conf(QFileInfo(copy).path() + "/qt.conf");
        QVERIFY(conf.open(QIODevice::WriteOnly));
        conf.write("[Paths]\nTranslations=/nonexistent\nPlugins=");
        conf.write(QLibraryInfo::location(QLibraryInfo::PluginsPath).toUtf8() + '\n');
        conf.close();

        const Outcome outcome = runToEnd({ "-t" }, {}, copy);

        QCOMPARE(outcome.code, 0);
        QCOMPARE(outcome.output, QByteArray("<Version>4.3.5</Version><Fix>23</Fix><Translation>Close</Translation>\n"));
        QCOMPARE(outcome.errors, QByteArray());
    }

    // The first application object takes its arguments out of a copy; the second needs them again.
    void toolkitsOwnArgumentsReachBothApplications()
    {
        const Outcome outcome =
            runToEnd({ "-platform", onWindows ? "windows" : "offscreen", "-v" },
                     { { "QT_QPA_PLATFORM", QString() }, { "DISPLAY", QString() }, { "WAYLAND_DISPLAY", QString() } });

        QCOMPARE(outcome.code, 0);
        QCOMPARE(outcome.output.trimmed(), QByteArray("Manager 4.3.5"));
        QVERIFY(logHas("Scale factors:"));
    }

#ifdef Q_OS_WIN
    void nativePlatformIsTakenWhateverTheUserNames()
    {
        // With a factor at hand there is no application before the lasting one; that other would take the user's.
        startProgram({ "-p", "help" }, { { "QT_QPA_PLATFORM", "minimal" }, { "QT_SCREEN_SCALE_FACTORS", "1" } });

        QTRY_VERIFY_WITH_TIMEOUT(logHas("used platform plugin:  windows"), 10000);
    }
#else
    void platformOfTheUserIsLeftAlone()
    {
        startProgram({ "-p", "help" }, { { "QT_QPA_PLATFORM", "minimal" } });
        QTRY_VERIFY_WITH_TIMEOUT(logHas("used platform plugin:  minimal"), 10000);

        // Neither fonts nor translation are loaded on that platform.
        QTRY_VERIFY_WITH_TIMEOUT(logHas("shm lock created"), 10000);
        QVERIFY(!logHas("load ttf:"));
    }

    // Else its segments and a certificate would lie where everybody writes, and its siblings look in this one.
    void withoutATemporaryFolderItMakesOneOfTheUsersOwn()
    {
        const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR") + "/velmor";
        QVERIFY(!QFile::exists(folder));

        QCOMPARE(runToEnd({ "-v" }, { { "TMPDIR", QString() } }).code, 0);

        QVERIFY(QFileInfo(folder).isDir());
    }
#endif

    void everyFontIsLoadedAndGivesTheFamilyOfTheThemes()
    {
        startProgram({ "-p", "help" });
        QTRY_VERIFY_WITH_TIMEOUT(logHas("shm lock created"), 10000);

        QStringList files;
        for (QString line : logLines().filter("load ttf:")) {
            const QRegularExpression form("load ttf: (\\S+\\.ttf)  available fonts:  Poppins$");
            const auto match = form.match(line);
            QVERIFY2(match.hasMatch(), qPrintable(line));
            files << match.captured(1);
        }
        // The themes ask for 400, 500 and 600, the bold words of texts for 700.
        QCOMPARE(files.size(), 4);
        for (const char *weight : { "400", "500", "600", "700" })
            QCOMPARE(files.filter(weight).size(), 1);
    }

    void clockOfTheTestLinesRunsFromTheLastCardRead()
    {
        sim::SimWorld world;
        world.reset();
        // Its name makes test lines of all that name it.
        QVERIFY(world.insertCard("Czytnik [test]", "anna"));

        QProcess *process = startProgram({ "-r", "0:Czytnik [test]||" });
        QTRY_VERIFY_WITH_TIMEOUT(logHas("select reader:  Czytnik [test]"), 10000);
        killAllAfterReading(process);

        const QList<int> times = stamps(standardOutput);
        const int shown = times.first();
        const int restarted = *std::min_element(times.begin() + 1, times.end());
        QVERIFY2(restarted < shown, standardOutput.constData());
        const QRegularExpression form("^\\d{9} .{15} .*\\[test\\].*$");
        for (const QByteArray &line : standardOutput.split('\n')) {
            if (!line.isEmpty())
                QVERIFY2(form.match(QString::fromLocal8Bit(line)).hasMatch(), line.constData());
        }
    }

private:
    QByteArray standardOutput;

    void killAllAfterReading(QProcess *process)
    {
        process->kill();
        process->waitForFinished();
        standardOutput = process->readAllStandardOutput().replace("\r", "");
    }
};

VELMOR_TEST(TestMainSurroundings)
#include "tst_main_surroundings.moc"
