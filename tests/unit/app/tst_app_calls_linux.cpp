#include "support/own_rest.h"
#include "support/testmain.h"

#include "app/app.h"
#include "base/common.h"

#include <QTemporaryDir>

namespace {

// What the toolkit was told to look for plugins in.
QStringList addedPaths;

} // namespace

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
