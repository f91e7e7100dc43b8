#include "support/testmain.h"

#include "app/app.h"
#include "base/common.h"

#include <QTemporaryDir>

#include <ctime>
#include <functional>

namespace {

// What happens in place of a rest of this program, with its length in milliseconds.
std::function<void(long)> onRest;

// What the toolkit was told to look for plugins in.
QStringList addedPaths;

} // namespace

// In place of the C library's, for the toolkit as well.
extern "C" Q_DECL_EXPORT int nanosleep(const struct timespec *time, struct timespec *left)
{
    if (!onRest)
        return clock_nanosleep(CLOCK_REALTIME, 0, time, left);
    onRest(time->tv_sec * 1000 + time->tv_nsec / 1000000);
    return 0;
}

// In place of the toolkit's.
void QCoreApplication::addLibraryPath(const QString &path)
{
    addedPaths << path;
}

// What App asks of the toolkit and the system where nothing else shows it.
class TestAppCalls : public QObject {
    Q_OBJECT

private slots:
    void cleanup() { onRest = nullptr; }

    void startThroughTheShellIsGivenAFifthOfASecond()
    {
        const QTemporaryDir folder;
        App::instance()->init("Menedżer", folder.path(), "x86_64", "Manager");
        createEmptyFile(folder.filePath("velmor_monitor"));
        QList<long> rests;
        onRest = [&rests](long milliseconds) { rests << milliseconds; };

        QVERIFY(App::instance()->runMonitor());

        QCOMPARE(rests, QList<long> { 200 });
    }

    // Meant, and of no use: each letter of the folder of libraries is a path.
    void folderOfLibrariesIsAddedByItsLetters()
    {
        App::instance()->init("Menedżer", "/opt/velmor", "x86_64", "Manager");
        addedPaths.clear();

        App::instance()->initQApp();

        QCOMPARE(addedPaths, QStringList({ "/", "o", "p", "t", "/", "v", "e", "l", "m", "o", "r" }));
    }
};

VELMOR_TEST(TestAppCalls)
#include "tst_app_calls_linux.moc"
