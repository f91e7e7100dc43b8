#include "program_runs.h"

#include "base/common.h"

// Whoever starts the program in a folder that others write to gets no plugin of theirs into the process that takes his
// PIN: neither from folders of one letter there, nor from the root of the drive.
class TestPlantedPlugin : public QObject, private ProgramRuns {
    Q_OBJECT

private:
    static QString start() { return TestHome::path() + "/downloads"; }
    static QString trace() { return TestHome::path() + "/planted"; }

    static void plantBelow(const QString &folder)
    {
        QVERIFY(QDir().mkpath(folder + "/imageformats"));
        const QString name = QString("planted_plugin.") + Platform::libraryExtension();
        QVERIFY(QFile::copy(VELMOR_TEST_PLANTED, folder + "/imageformats/" + name));
    }

    static StringMap variables() { return { { "VELMOR_TEST_PLANTED", trace() } }; }

private slots:
    void init()
    {
        QDir().mkpath(logFolder());
        for (char letter = 'a'; letter <= 'z'; ++letter)
            plantBelow(start() + '/' + letter);
        for (char digit = '0'; digit <= '9'; ++digit)
            plantBelow(start() + '/' + digit);
        // Elsewhere it belongs to the super-user.
        if (onWindows)
            plantBelow("C:/");
    }
    void cleanup()
    {
        killAll();
        QDir(start()).removeRecursively();
        if (onWindows)
            QDir("C:/imageformats").removeRecursively();
        QFile::remove(trace());
        QDir(logFolder()).removeRecursively();
    }

    // The world of the other test would be no test without it.
    void pluginIsLoadedWhereTheToolkitLooks()
    {
        StringMap environment = variables();
        environment.insert("QT_PLUGIN_PATH", start() + "/a");

        startProgram({}, environment);

        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(trace()), 20000);
    }

    // Asked from inside the program, by the plugin that it may load.
    void libraryOfTheCurrentFolderIsNotFoundByItsName()
    {
        if (!onWindows)
            QSKIP("The loader of this system never looks there");
        QVERIFY(QFile::copy(VELMOR_TEST_EMPTY_LIBRARY, start() + "/planted_probe.dll"));
        StringMap environment = variables();
        environment.insert("QT_PLUGIN_PATH", start() + "/a");
        QProcess process;
        process.setWorkingDirectory(start());
        process.setProcessEnvironment(environmentWith(environment));

        process.start(program(), QStringList());

        QTRY_COMPARE_WITH_TIMEOUT(readFileText(trace()), QString("current folder distrusted"), 20000);
        process.kill();
        process.waitForFinished();
    }

    void pluginOfTheCurrentFolderIsNotLoaded()
    {
        QProcess process;
        process.setWorkingDirectory(start());
        process.setProcessEnvironment(environmentWith(variables()));

        process.start(program(), QStringList());

        // The last of the window's making; all its pictures are drawn.
        QTRY_VERIFY_WITH_TIMEOUT(logHas("Checking for Kzr update"), 20000);
        QVERIFY(!QFile::exists(trace()));
        process.kill();
        process.waitForFinished();
    }
};

VELMOR_TEST(TestPlantedPlugin)
#include "tst_planted_plugin.moc"
