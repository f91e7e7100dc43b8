#include "support/testmain.h"

#include "pe_file.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

#include <windows.h>

// The installed tree for Windows: all that the program needs, nothing else, and what the system reads out of the
// program.
class TestWindowsTree : public QObject {
    Q_OBJECT

private:
    const QDir folder { QStringLiteral(VELMOR_TEST_STAGE "/64") };

    // Files below the folder as relative paths, those of the stand-ins left out.
    QStringList files(const QStringList &patterns) const
    {
        QStringList found;
        QDirIterator it(folder.path(), patterns, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext())
            found << folder.relativeFilePath(it.next());
        for (const char *standIn :
             { "velmor-pkcs11-64.dll", "velmor_can.exe", "velmor_monitor.exe", "velmor_send.exe" })
            found.removeAll(standIn);
        found.sort();
        return found;
    }

    static bool isOfTheSystem(const QString &name)
    {
        wchar_t system[MAX_PATH] = {};
        GetSystemDirectoryW(system, MAX_PATH);
        return QFile::exists(QString::fromWCharArray(system) + '/' + name);
    }

    const QStringList plugins { "iconengines/qsvgicon.dll", "imageformats/qico.dll",  "imageformats/qjpeg.dll",
                                "imageformats/qsvg.dll",    "platforms/qwindows.dll", "styles/qwindowsvistastyle.dll" };

private slots:
    void initTestCase()
    {
        QVERIFY2(QFile::exists(folder.filePath("Manager.exe")), "no installed tree; ./dev windows makes it");
    }

    void everyImportIsBesideTheProgramOrTheSystems()
    {
        const QStringList all = files({ "*.exe", "*.dll" });
        QVERIFY(all.size() > 10);
        for (const QString &file : all) {
            const QStringList names = PeFile(folder.filePath(file)).imports();
            QVERIFY2(!names.isEmpty(), qPrintable(file));
            for (const QString &name : names) {
                const bool beside = QFile::exists(folder.filePath(name));
                QVERIFY2(beside || isOfTheSystem(name), qPrintable(file + " needs " + name));
            }
        }
    }

    void nothingLiesThereThatNobodyImports()
    {
        QStringList queue = plugins;
        queue << "Manager.exe";
        QStringList needed = queue;
        while (!queue.isEmpty()) {
            for (const QString &name : PeFile(folder.filePath(queue.takeFirst())).imports()) {
                if (QFile::exists(folder.filePath(name)) && !needed.contains(name)) {
                    needed << name;
                    queue << name;
                }
            }
        }
        needed.sort();

        QCOMPARE(files({ "*.exe", "*.dll" }), needed);
    }

    void otherFilesAreTheToolkitsSettingsAndTranslation()
    {
        QStringList others = files({ "*" });
        for (const QString &file : files({ "*.exe", "*.dll" }))
            others.removeAll(file);

        QCOMPARE(others, QStringList({ "qt.conf", "translations/qtbase_pl.qm" }));
    }

    void everythingIsFor64Bits()
    {
        for (const QString &file : files({ "*.exe", "*.dll" }))
            QCOMPARE(PeFile(folder.filePath(file)).machine(), PeFile::machineX64);
    }

    void noFileHoldsAPathOfTheBuild()
    {
        QFile program(folder.filePath("Manager.exe"));
        QVERIFY(program.open(QIODevice::ReadOnly));
        const QByteArray bytes = program.readAll();

        QVERIFY(bytes.contains("Manager/window.cpp"));
        QVERIFY(!bytes.contains(QByteArray(VELMOR_TEST_SOURCE_DIR).mid(2) + '/'));
    }

    void programShowsItsIconVersionAndTheSystemsItKnows()
    {
        const QString path = QDir::toNativeSeparators(folder.filePath("Manager.exe"));
        const auto *name = reinterpret_cast<const wchar_t *>(path.utf16());
        const HMODULE program = LoadLibraryExW(name, nullptr, LOAD_LIBRARY_AS_DATAFILE);
        QVERIFY(program);

        const HRSRC manifest = FindResourceW(program, MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(24));
        QVERIFY(manifest);
        const QByteArray text(static_cast<const char *>(LockResource(LoadResource(program, manifest))),
                              static_cast<int>(SizeofResource(program, manifest)));
        // Windows 10 and 11 go by this name; without it they call themselves Windows 8.
        QVERIFY(text.contains("<supportedOS Id=\"{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}\"/>"));
        QVERIFY(text.contains("level=\"asInvoker\""));
        // Sizes of which a file manager picks one.
        const HRSRC icons = FindResourceW(program, MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(14));
        QVERIFY(icons);
        const auto *group = static_cast<const quint16 *>(LockResource(LoadResource(program, icons)));
        QVERIFY2(group[2] >= 5, qPrintable(QString::number(group[2])));
        QVERIFY(FindResourceW(program, MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(16)));
        FreeLibrary(program);
    }
};

VELMOR_TEST(TestWindowsTree)
#include "tst_windows_tree.moc"
