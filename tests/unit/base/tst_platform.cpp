#include "support/testmain.h"

#include "base/common.h"
#include "base/platform.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#ifdef Q_OS_LINUX
#include <unistd.h>
#endif

// Names and switches of the platform.
class TstPlatform : public QObject {
    Q_OBJECT

private slots:
    void init();

    void wordsOfThePlatform();
    void programKnowsItsFile();
    void libraryPathIsSpeltForTheLoader();
    void readersConfFallsBackToTheHomeFolder();
    void absoluteBaseFoldersCount();
    void relativeBaseFoldersDoNotCount();
    void temporaryFilesArePrivate();
    void privateFolderMayBeThereAlready();
    void namedTemporaryFolderStays();
    void withoutARuntimeFolderItIsBesideTheLogFolder_data();
    void withoutARuntimeFolderItIsBesideTheLogFolder();
    void withoutAnyNamedFolderItIsBelowTheHomeFolder();
    void withoutAnyFolderNothingChanges();
    void openGlIsAvoidedUntilTheWindowIsShown();
    void openGlOfTheUserIsKept();
    void pluginIsChosenOnWindowsOnly();
    void terminatedThreadsCanGoOnWhereThatIsOnlyARequest();
#ifdef Q_OS_LINUX
    void lineIsAppendedWhateverTheDescriptorIs();
#endif

private:
#ifdef Q_OS_WIN
    static constexpr bool onWindows = true;
#else
    static constexpr bool onWindows = false;
#endif
};

namespace {

// Sets a variable for one test and puts the old value back.
class Variable {
public:
    Variable(const char *variable, const QByteArray &value) : name(variable), old(qgetenv(variable))
    {
        if (value.isNull())
            qunsetenv(name);
        else
            qputenv(name, value);
    }
    ~Variable()
    {
        if (old.isNull())
            qunsetenv(name);
        else
            qputenv(name, old);
    }
    Variable(const Variable &) = delete;
    Variable &operator=(const Variable &) = delete;

private:
    const char *name;
    QByteArray old;
};

const QFile::Permissions owner = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
const QFile::Permissions others =
    QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;

QString privateFolder()
{
    return qEnvironmentVariable("XDG_RUNTIME_DIR") + "/velmor";
}

} // namespace

void TstPlatform::init()
{
    QDir(privateFolder()).removeRecursively();
}

void TstPlatform::wordsOfThePlatform()
{
    QCOMPARE(Platform::word(), QString(onWindows ? "win" : "lin"));
    QCOMPARE(Platform::programSuffix(), QString(onWindows ? ".exe" : ""));
    QCOMPARE(Platform::libraryExtension(), QString(onWindows ? "dll" : "so"));
}

void TstPlatform::programKnowsItsFile()
{
    QCOMPARE(QFileInfo(Platform::executablePath()).canonicalFilePath(),
             QFileInfo(QCoreApplication::applicationFilePath()).canonicalFilePath());
}

void TstPlatform::libraryPathIsSpeltForTheLoader()
{
    QCOMPARE(Platform::libraryPath("C:/velmor/64/velmor-pkcs11-64.dll"),
             QString(onWindows ? "C:\\velmor\\64\\velmor-pkcs11-64.dll" : "C:/velmor/64/velmor-pkcs11-64.dll"));
}

void TstPlatform::readersConfFallsBackToTheHomeFolder()
{
    if (onWindows) {
        const Variable none("APPDATA", QByteArray());
        QCOMPARE(Platform::readersConfPath("velmor"), QString("\\velmor\\readers.conf"));
    } else {
        const Variable none("XDG_CONFIG_HOME", QByteArray());
        QCOMPARE(Platform::readersConfPath("velmor"), QDir::homePath() + "/.config/velmor/readers.conf");
    }
}

void TstPlatform::absoluteBaseFoldersCount()
{
    if (onWindows)
        QSKIP("The other platform's folders");
    const Variable config("XDG_CONFIG_HOME", "/some/where/../config/");
    const Variable state("XDG_STATE_HOME", "/some/where/../state/");

    QCOMPARE(Platform::readersConfPath("velmor"), QString("/some/config/velmor/readers.conf"));
    QCOMPARE(Platform::logsDir("velmor"), QString("/some/state/velmor"));
}

void TstPlatform::relativeBaseFoldersDoNotCount()
{
    if (onWindows)
        QSKIP("The other platform's folders");
    const Variable config("XDG_CONFIG_HOME", "config");
    const Variable state("XDG_STATE_HOME", "state");

    QCOMPARE(Platform::readersConfPath("velmor"), QDir::homePath() + "/.config/velmor/readers.conf");
    QCOMPARE(Platform::logsDir("velmor"), QDir::homePath() + "/.local/state/velmor");
}

void TstPlatform::temporaryFilesArePrivate()
{
    if (onWindows)
        QSKIP("The system's folder belongs to the user already");
    const Variable none("TMPDIR", QByteArray());

    Platform::usePrivateTempDir("velmor");

    QCOMPARE(qEnvironmentVariable("TMPDIR"), privateFolder());
    QCOMPARE(QDir::tempPath(), privateFolder());
    QCOMPARE(QFile::permissions(privateFolder()) & (owner | others), owner);
}

void TstPlatform::privateFolderMayBeThereAlready()
{
    if (onWindows)
        QSKIP("The system's folder belongs to the user already");
    QVERIFY(QDir().mkpath(privateFolder()));
    QVERIFY(QFile::setPermissions(privateFolder(), owner | others));
    const Variable none("TMPDIR", QByteArray());

    Platform::usePrivateTempDir("velmor");

    QCOMPARE(qEnvironmentVariable("TMPDIR"), privateFolder());
    QCOMPARE(QFile::permissions(privateFolder()) & (owner | others), owner);
}

void TstPlatform::namedTemporaryFolderStays()
{
    const Variable named("TMPDIR", "/named/by/the/user");

    Platform::usePrivateTempDir("velmor");

    QCOMPARE(qgetenv("TMPDIR"), QByteArray("/named/by/the/user"));
    QVERIFY(!QFile::exists(privateFolder()));
}

void TstPlatform::withoutARuntimeFolderItIsBesideTheLogFolder_data()
{
    QTest::addColumn<QByteArray>("runtime");
    QTest::newRow("not set") << QByteArray();
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("relative") << QByteArray("run");
    QTest::newRow("not there") << QByteArray("/nonexistent/run");
}
void TstPlatform::withoutARuntimeFolderItIsBesideTheLogFolder()
{
    if (onWindows)
        QSKIP("The system's folder belongs to the user already");
    QFETCH(QByteArray, runtime);
    const Variable none("TMPDIR", QByteArray());
    const Variable noRuntime("XDG_RUNTIME_DIR", runtime);
    const Variable state("XDG_STATE_HOME", QFile::encodeName(TestHome::path() + "/made/state"));
    const QString folder = TestHome::path() + "/made/state/velmor-run";

    Platform::usePrivateTempDir("velmor");

    QCOMPARE(qEnvironmentVariable("TMPDIR"), folder);
    QCOMPARE(QFile::permissions(folder) & (owner | others), owner);
    // Which would switch the log on.
    QVERIFY(!QFile::exists(Platform::logsDir("velmor")));
    QVERIFY(QDir(TestHome::path() + "/made").removeRecursively());
}

void TstPlatform::withoutAnyNamedFolderItIsBelowTheHomeFolder()
{
    if (onWindows)
        QSKIP("The system's folder belongs to the user already");
    const Variable none("TMPDIR", QByteArray());
    const Variable noRuntime("XDG_RUNTIME_DIR", QByteArray());
    const Variable noState("XDG_STATE_HOME", QByteArray());

    Platform::usePrivateTempDir("velmor");

    QCOMPARE(qEnvironmentVariable("TMPDIR"), QDir::homePath() + "/.local/state/velmor-run");
    QVERIFY(QDir(QDir::homePath() + "/.local").removeRecursively());
}

void TstPlatform::withoutAnyFolderNothingChanges()
{
    const Variable none("TMPDIR", QByteArray());
    const Variable noRuntime("XDG_RUNTIME_DIR", QByteArray());
    const Variable state("XDG_STATE_HOME", "/proc/nonexistent");

    Platform::usePrivateTempDir("velmor");

    QVERIFY(!qEnvironmentVariableIsSet("TMPDIR"));
}

void TstPlatform::openGlIsAvoidedUntilTheWindowIsShown()
{
    if (onWindows)
        QSKIP("A switch of the other platform's toolkit");
    for (const QByteArray &before : { QByteArray(), QByteArray("") }) {
        const Variable notChosen("QT_XCB_GL_INTEGRATION", before);

        Platform::avoidOpenGl();
        QCOMPARE(qgetenv("QT_XCB_GL_INTEGRATION"), QByteArray("none"));

        Platform::allowOpenGl();
        QCOMPARE(qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION"), !before.isNull());
        QVERIFY(qEnvironmentVariableIsEmpty("QT_XCB_GL_INTEGRATION"));
    }
}

void TstPlatform::openGlOfTheUserIsKept()
{
    const Variable chosen("QT_XCB_GL_INTEGRATION", "xcb_egl");

    Platform::avoidOpenGl();
    QCOMPARE(qgetenv("QT_XCB_GL_INTEGRATION"), QByteArray("xcb_egl"));

    Platform::allowOpenGl();
    QCOMPARE(qgetenv("QT_XCB_GL_INTEGRATION"), QByteArray("xcb_egl"));
}

void TstPlatform::pluginIsChosenOnWindowsOnly()
{
    const Variable chosen("QT_QPA_PLATFORM", "chosen by the user");

    Platform::choosePlatformPlugin();

    QCOMPARE(qgetenv("QT_QPA_PLATFORM"), QByteArray(onWindows ? "windows:fontengine=freetype" : "chosen by the user"));
}

void TstPlatform::terminatedThreadsCanGoOnWhereThatIsOnlyARequest()
{
    QCOMPARE(Platform::threadsCanRefuseToEnd(), !onWindows);
}

#ifdef Q_OS_LINUX
// Also as the lowest number, which it gets in a program that was started without a standard input.
void TstPlatform::lineIsAppendedWhateverTheDescriptorIs()
{
    const QString path = TestHome::path() + "/lines";
    const int input = dup(STDIN_FILENO);
    QVERIFY(input > STDIN_FILENO);
    close(STDIN_FILENO);

    Platform::appendLine(path, "first");
    Platform::appendLine(path, "second");

    // Nothing is open behind it: the number is free again.
    const int lowest = dup(input);
    dup2(input, STDIN_FILENO);
    close(input);
    QCOMPARE(lowest, STDIN_FILENO);
    QCOMPARE(readFileText(path), QString("first\nsecond\n"));
}
#endif

VELMOR_TEST(TstPlatform)
#include "tst_platform.moc"
