#include "support/testmain.h"

#include "base/platform.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QMap>
#include <QMutex>
#include <QTemporaryDir>

#include <cerrno>
#include <cstring>

#ifdef Q_OS_LINUX
#include <sched.h>
#include <sys/sem.h>
#include <sys/shm.h>
#endif

namespace {

QMutex mutex;
QVector<LogCatcher *> catchers; // one may live within another
QtMessageHandler before = nullptr;
QString homePath;

// Made on first use: the classes enter themselves before main.
QMap<QByteArray, TestCase::Make> &testCases()
{
    static QMap<QByteArray, TestCase::Make> cases;
    return cases;
}

// The system knows segments and semaphores by 16 bits of the number of a file, so two files, of which one may have gone
// long ago, can mean the same segment. Where the system lets a process have segments of its own, that is over with.
void haveOwnSegments()
{
#ifdef Q_OS_LINUX
    if (unshare(CLONE_NEWIPC) != 0 && errno != EPERM)
        qWarning("unshare: %s", std::strerror(errno));
#endif
}

// What killed programs have left under this folder. It would outlive its files, and be taken for that of later ones.
void removeSegments(const QString &folder)
{
#ifdef Q_OS_LINUX
    QDirIterator files(folder, { "qipc_*" }, QDir::Files | QDir::System, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const key_t key = ftok(QFile::encodeName(files.next()).constData(), 'Q');
        shmctl(shmget(key, 0, 0), IPC_RMID, nullptr);
        semctl(semget(key, 0, 0), 0, IPC_RMID);
    }
#else
    Q_UNUSED(folder)
#endif
}

void catchMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    LogCatcher::add(message);
    if (before)
        before(type, context, message);
}

} // namespace

TestHome::TestHome() : folder(new QTemporaryDir)
{
    haveOwnSegments();
    // Short, since TMPDIR also holds the names of local sockets.
    homePath = folder->path();
    const QDir home(homePath);
    const struct {
        const char *variable;
        const char *subfolder;
    } rows[] = {
        { "HOME", "home" },
        { "USERPROFILE", "home" },
        { "XDG_CONFIG_HOME", "config" },
        { "XDG_CONFIG_DIRS", "xdg" },
        { "XDG_STATE_HOME", "state" },
        { "XDG_DATA_HOME", "data" },
        { "XDG_CACHE_HOME", "cache" },
        { "XDG_RUNTIME_DIR", "run" },
        { "TMPDIR", "tmp" },
        { "TEMP", "tmp" },
        { "TMP", "tmp" },
        { "APPDATA", "appdata" },
        { "VELMOR_SIM_WORLD", "world" },
    };
    for (const auto &row : rows) {
        home.mkpath(row.subfolder);
        qputenv(row.variable, QDir::toNativeSeparators(home.filePath(row.subfolder)).toLocal8Bit());
    }
    QFile::setPermissions(home.filePath("run"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    // Where the program insists on a platform plugin, the tests see what it sees; elsewhere ctest names one.
    Platform::choosePlatformPlugin();
    // The store's machine branch is fixed when the first store is made, from XDG_CONFIG_DIRS on the systems that have
    // it.
    qunsetenv("QT_SCREEN_SCALE_FACTORS");
}

TestHome::~TestHome()
{
    removeSegments(homePath);
    delete folder;
}

QString TestHome::path()
{
    return homePath;
}

void TestHome::empty()
{
    // Kept: without the folder the toolkit would name another one, in the end the root of the disk.
    const QString home = QDir::homePath();
    if (home.startsWith(homePath)) {
        QDir(home).removeRecursively();
        QDir().mkpath(home);
        return;
    }
    if (!qEnvironmentVariableIsSet("VELMOR_TEST_ACCOUNT"))
        qFatal("This test takes browsers' profiles away; tests/wine/run makes an account for it");
    for (const char *made : { "/.pki", "/AppData/Roaming/Mozilla", "/AppData/Roaming/Thunderbird" })
        QDir(home + made).removeRecursively();
}

LogCatcher::LogCatcher()
{
    QMutexLocker locker(&mutex);
    if (catchers.isEmpty())
        before = qInstallMessageHandler(catchMessage);
    catchers << this;
}

LogCatcher::~LogCatcher()
{
    QMutexLocker locker(&mutex);
    catchers.removeAll(this);
    if (catchers.isEmpty())
        qInstallMessageHandler(before);
}

void LogCatcher::add(const QString &message)
{
    QMutexLocker locker(&mutex);
    for (LogCatcher *catcher : qAsConst(catchers))
        catcher->caught << message;
}

QStringList LogCatcher::lines() const
{
    QMutexLocker locker(&mutex);
    return caught;
}

bool LogCatcher::has(const QString &part) const
{
    return count(part) > 0;
}

int LogCatcher::count(const QString &part) const
{
    return lines().filter(part).size();
}

void LogCatcher::clear()
{
    QMutexLocker locker(&mutex);
    caught.clear();
}

TestCase::TestCase(const char *sourceFile, Make makeTest)
{
    testCases().insert(QFileInfo(QString::fromUtf8(sourceFile)).completeBaseName().toLatin1(), makeTest);
}

std::unique_ptr<QObject> TestCase::make(const QByteArray &name)
{
    const Make makeTest = testCases().value(name);
    return makeTest ? makeTest() : nullptr;
}

QByteArrayList TestCase::names()
{
    return testCases().keys();
}
