#include "base/platform.h"

#include "support/testmain.h"

#include <QDir>
#include <QFile>

#include <windows.h>

// Where the system's loader looks for a library that is asked for by its name alone.
class TestDllFolders : public QObject {
    Q_OBJECT

private:
    static bool canBeLoaded(const wchar_t *name)
    {
        const HMODULE library = LoadLibraryW(name);
        if (library)
            FreeLibrary(library);
        return library != nullptr;
    }

private slots:
    void neitherTheCurrentFolderNorThoseOfPathCount()
    {
        const QString current = TestHome::path() + "/current";
        const QString inPath = TestHome::path() + "/path";
        QVERIFY(QDir().mkpath(current) && QDir().mkpath(inPath));
        QVERIFY(QFile::copy(VELMOR_TEST_PLANTED, current + "/planted_current.dll"));
        QVERIFY(QFile::copy(VELMOR_TEST_PLANTED, inPath + "/planted_path.dll"));
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(current));
        qputenv("PATH", QDir::toNativeSeparators(inPath).toLocal8Bit() + ';' + qgetenv("PATH"));
        QVERIFY(canBeLoaded(L"planted_current.dll"));
        QVERIFY(canBeLoaded(L"planted_path.dll"));

        Platform::distrustCurrentFolder();

        QVERIFY(!canBeLoaded(L"planted_current.dll"));
        QVERIFY(!canBeLoaded(L"planted_path.dll"));
        // The program's own and the system's do.
        QVERIFY(canBeLoaded(L"Qt5Core.dll"));
        QVERIFY(canBeLoaded(L"shell32.dll"));
        QVERIFY(QDir::setCurrent(before));
    }
};

VELMOR_TEST(TestDllFolders)
#include "tst_dll_folders_win.moc"
