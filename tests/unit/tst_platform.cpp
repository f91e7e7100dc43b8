#include "support/testmain.h"

#include "base/platform.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

// Names and switches of the platform.
class TstPlatform : public QObject {
    Q_OBJECT

private slots:
    void init();

    void wordsOfThePlatform();
    void programKnowsItsFile();
    void libraryPathIsSpeltForTheLoader();
    void readersConfFallsBackToTheHomeFolder();
    void relativeBaseFoldersDoNotCount();
    void temporaryFilesArePrivate();
    void privateFolderMayBeThereAlready();
    void namedTemporaryFolderStays();
    void withoutARuntimeFolderNothingChanges();
    void pluginIsChosenOnWindowsOnly();

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
    const QFile::Permissions others =
        QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    QCOMPARE(QFile::permissions(privateFolder()) & others, QFile::Permissions());
    QVERIFY(QFile::permissions(privateFolder()).testFlag(QFile::WriteOwner));
}

void TstPlatform::privateFolderMayBeThereAlready()
{
    if (onWindows)
        QSKIP("The system's folder belongs to the user already");
    QVERIFY(QDir().mkpath(privateFolder()));
    const Variable none("TMPDIR", QByteArray());

    Platform::usePrivateTempDir("velmor");

    QCOMPARE(qEnvironmentVariable("TMPDIR"), privateFolder());
}

void TstPlatform::namedTemporaryFolderStays()
{
    const Variable named("TMPDIR", "/named/by/the/user");

    Platform::usePrivateTempDir("velmor");

    QCOMPARE(qgetenv("TMPDIR"), QByteArray("/named/by/the/user"));
    QVERIFY(!QFile::exists(privateFolder()));
}

void TstPlatform::withoutARuntimeFolderNothingChanges()
{
    const Variable none("TMPDIR", QByteArray());
    const Variable noRuntime("XDG_RUNTIME_DIR", QByteArray());

    Platform::usePrivateTempDir("velmor");

    QVERIFY(!qEnvironmentVariableIsSet("TMPDIR"));
}

void TstPlatform::pluginIsChosenOnWindowsOnly()
{
    const Variable chosen("QT_QPA_PLATFORM", "chosen by the user");

    Platform::choosePlatformPlugin();

    QCOMPARE(qgetenv("QT_QPA_PLATFORM"), QByteArray(onWindows ? "windows:fontengine=freetype" : "chosen by the user"));
}

VELMOR_TEST_MAIN(TstPlatform)
#include "tst_platform.moc"
