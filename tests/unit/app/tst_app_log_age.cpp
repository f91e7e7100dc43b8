#include "support/testmain.h"

#include "app/app.h"
#include "app/app_log.h"
#include "base/platform.h"

#include <QDateTime>
#include <QDir>

#ifdef Q_OS_LINUX
#include <sys/time.h>

#include <ctime>

namespace {

// What the clock of this program is put forward by, in seconds. A folder cannot be made older than it is.
long forward = 0;

} // namespace

// In place of the C library's, for the toolkit as well: that is where it has the time of day from.
extern "C" Q_DECL_EXPORT int gettimeofday(struct timeval *now, void *) noexcept
{
    timespec real = {};
    clock_gettime(CLOCK_REALTIME, &real);
    now->tv_sec = real.tv_sec + forward;
    now->tv_usec = real.tv_nsec / 1000;
    return 0;
}
#else
#include <windows.h>
#endif

// The log goes out by itself three days after its folder was made, even if it was written to since.
class TstAppLogAge : public QObject {
    Q_OBJECT

private:
    static QString folder() { return Platform::logsDir("velmor"); }
    static QString logFile() { return folder() + "/velmor_manager.log"; }

    static qint64 writtenBySetUp()
    {
        AppLog::setUp("velmor Manager");
        App::messageHandler(QtDebugMsg, QMessageLogContext("window.cpp", 1, "f", "default"), "load All");
        return QFileInfo(logFile()).size();
    }

#ifdef Q_OS_LINUX
    static void setAge(long seconds)
    {
        forward = seconds;
    }
#else
    // Here a folder can be made older than it is.
    static void setAge(long seconds)
    {
        constexpr qint64 intervalsOfASecond = 10000000;
        FILETIME now = {};
        GetSystemTimeAsFileTime(&now);
        ULARGE_INTEGER time = {};
        time.LowPart = now.dwLowDateTime;
        time.HighPart = now.dwHighDateTime;
        time.QuadPart -= static_cast<quint64>(seconds * intervalsOfASecond);
        const FILETIME then = { time.LowPart, time.HighPart };
        const QString path = folder();
        const HANDLE handle = CreateFileW(reinterpret_cast<const wchar_t *>(path.utf16()), FILE_WRITE_ATTRIBUTES,
                                          FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
        // Where no time of creation is kept, that of the last change stands in.
        QVERIFY(SetFileTime(handle, &then, nullptr, &then));
        CloseHandle(handle);
    }
#endif

private slots:
    void init()
    {
#ifdef Q_OS_LINUX
        forward = 0;
        const qint64 now = QDateTime::currentSecsSinceEpoch();
        forward = 1000;
        QVERIFY2(QDateTime::currentSecsSinceEpoch() >= now + 1000, "the clock cannot be put forward");
        forward = 0;
        QVERIFY(QDir().mkpath(folder()));
        if (!Platform::folderCreated(folder()))
            QSKIP("The file system keeps no times of creation");
#else
        QVERIFY(QDir().mkpath(folder()));
#endif
    }

    void cleanup()
    {
        QDir(folder()).removeRecursively();
    }

    void folderOfThreeDaysIsWrittenTo()
    {
        setAge(259200 - 60); // a minute for the test itself

        QVERIFY(writtenBySetUp() > 0);
    }

    void olderFolderSwitchesTheLogOff()
    {
        setAge(259200 + 1);

        QCOMPARE(writtenBySetUp(), qint64(0));
        QVERIFY(!QFile::exists(logFile()));
    }

#ifdef Q_OS_LINUX
    void writingToTheFolderDoesNotMakeItYounger()
    {
        QVERIFY(writtenBySetUp() > 0);
        const qint64 size = QFileInfo(logFile()).size();
        forward = 259200 + 1;
        QVERIFY(QDir(folder()).mkdir("of-today"));

        writtenBySetUp();

        // Nor is the log of the run before taken away.
        QCOMPARE(QFileInfo(logFile()).size(), size);
    }

    void folderFromTheFutureIsAnOldOne()
    {
        forward = -60;

        QCOMPARE(writtenBySetUp(), qint64(0));
    }
#endif
};

VELMOR_TEST(TstAppLogAge)
#include "tst_app_log_age.moc"
