#include "installation.h"

#include <shlobj.h>

// The Windows Installer package in the hands of an administrator: everything silently.
class TestInstaller : public QObject, private Installation {
    Q_OBJECT

private:
    // All of a drive but what other programs keep for themselves there.
    static QStringList drive()
    {
        QStringList found;
        QDirIterator it("C:/", QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            if (!path.startsWith(QDir::tempPath(), Qt::CaseInsensitive)
                && !path.contains("/windows/temp", Qt::CaseInsensitive))
                found << path;
        }
        return found;
    }

    // The path is a copy, since the list grows.
    static void keysBelow(HKEY root, QString path, QStringList &found)
    {
        HKEY key = nullptr;
        if (RegOpenKeyExW(root, reinterpret_cast<LPCWSTR>(path.utf16()), 0, KEY_READ, &key) != ERROR_SUCCESS)
            return;
        wchar_t name[256] = {};
        for (DWORD i = 0, size = 256;
             RegEnumKeyExW(key, i, name, &size, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS; ++i, size = 256) {
            found << path + '\\' + QString::fromWCharArray(name);
            keysBelow(root, found.last(), found);
        }
        RegCloseKey(key);
    }
    static QStringList registry()
    {
        QStringList found;
        keysBelow(HKEY_LOCAL_MACHINE, "Software\\Microsoft\\Windows\\CurrentVersion", found);
        keysBelow(HKEY_LOCAL_MACHINE, "Software\\Classes\\Installer", found);
        keysBelow(HKEY_LOCAL_MACHINE, "Software\\velmor", found);
        keysBelow(HKEY_CURRENT_USER, "Software", found);
        return found;
    }
    static QStringList newIn(QStringList now, const QStringList &before)
    {
        const QSet<QString> known(before.begin(), before.end());
        now.erase(std::remove_if(now.begin(), now.end(), [&](const QString &name) { return known.contains(name); }),
                  now.end());
        return now;
    }

    static QString searchPath(const QString &branch)
    {
        return QSettings(branch, QSettings::NativeFormat).value("PATH").toString();
    }
    static QStringList searchPaths()
    {
        return { searchPath("HKEY_LOCAL_MACHINE\\System\\CurrentControlSet\\Control\\Session Manager\\Environment"),
                 searchPath("HKEY_CURRENT_USER\\Environment") };
    }
    static bool restartIsAsked()
    {
        return QSettings("HKEY_LOCAL_MACHINE\\System\\CurrentControlSet\\Control\\Session Manager",
                         QSettings::NativeFormat)
            .contains("PendingFileRenameOperations");
    }
    // Links in the start menus of all users and of this one, where Wine puts them, with what they lead to.
    static QMap<QString, QString> menu()
    {
        QMap<QString, QString> links;
        for (const int folder : { CSIDL_COMMON_PROGRAMS, CSIDL_PROGRAMS }) {
            wchar_t path[MAX_PATH] = {};
            SHGetFolderPathW(nullptr, folder, nullptr, 0, path);
            QDirIterator it(QString::fromWCharArray(path), { "*.lnk" }, QDir::Files | QDir::System,
                            QDirIterator::Subdirectories);
            while (it.hasNext()) {
                const QFileInfo link(it.next());
                links[link.completeBaseName()] = QDir::fromNativeSeparators(link.symLinkTarget());
            }
        }
        return links;
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(QFile::exists(package()), "no package; ./dev package makes it");
        QVERIFY2(QFile::exists(variant("newer.msi")), "no variants; tests/packages/run makes them");
    }
    void cleanup()
    {
        killAll();
        if (!entries().isEmpty())
            QCOMPARE(removeProduct(), int(Success));
        QSettings("HKEY_CURRENT_USER\\Software\\velmor", QSettings::NativeFormat).remove("");
        QVERIFY(entries().isEmpty());
        for (const char *folder : { usualFolder, oddFolder })
            QDir(folder).removeRecursively();
    }

    void everyFileIsLaidAsItWasMade()
    {
        QCOMPARE(install(package()), int(Success));

        QCOMPARE(filesOf(QDir(usualFolder)), filesOf(shipped()));
        QCOMPARE(damageOf(usualFolder), QStringList());
    }

    void systemsListTellsVersionSizeAndHelp()
    {
        const QStringList paths = searchPaths();

        QCOMPARE(install(package()), int(Success));

        QCOMPARE(entries().size(), 1);
        QCOMPARE(entry("DisplayName"), QString("velmor"));
        QCOMPARE(entry("DisplayVersion"), QString(VELMOR_TEST_FULL_VERSION));
        QCOMPARE(entry("HelpLink"), QString("https://pomoc.velmor.example/"));
        QCOMPARE(entry("WindowsInstaller"), QString("1"));
        QVERIFY(entry("UninstallString").contains(entry("ProductCode")));
        QVERIFY(QFile::exists("C:/windows/Installer/" + entry("ProductCode") + "/velmor.ico"));
        QCOMPARE(searchPaths(), paths);
        QVERIFY(!restartIsAsked());
    }

    void startMenuLeadsToTheProgram()
    {
        QCOMPARE(install(package()), int(Success));
        const auto links = menu();
        QCOMPARE(QStringList(links.keys()).join(", "), QString("velmor"));
        QVERIFY2(links["velmor"].endsWith("/Program Files/velmor/64/Manager.exe", Qt::CaseInsensitive),
                 qPrintable(links["velmor"]));

        QCOMPARE(removeProduct(), int(Success));
        QVERIFY(menu().isEmpty());
    }

    void nameInTheMenuIsAStringOfTheProgram()
    {
        QCOMPARE(install(package()), int(Success));
        const QString path = QDir::toNativeSeparators(QString(usualFolder) + "/64/Manager.exe");
        const HMODULE program =
            LoadLibraryExW(reinterpret_cast<LPCWSTR>(path.utf16()), nullptr, LOAD_LIBRARY_AS_DATAFILE);
        QVERIFY(program);
        wchar_t text[64] = {};
        LoadStringW(program, 1, text, 64);
        FreeLibrary(program);
        QCOMPARE(QString::fromWCharArray(text), QString::fromUtf8("velmor Menedżer"));
    }

    void folderMayHaveBlanksAndPolishLetters()
    {
        QCOMPARE(installInto(oddFolder), int(Success));

        QCOMPARE(damageOf(oddFolder), QStringList());
        QVERIFY(!QDir(usualFolder).exists());
        QCOMPARE(removeProduct(), int(Success));
        QVERIFY2(!QDir(oddFolder).exists(), qPrintable(filesOf(QDir(oddFolder)).join(", ")));
    }

    void removalLeavesWhatTheUserHasAndNoMore()
    {
        const QStringList filesBefore = drive();
        const QStringList keysBefore = registry();
        QCOMPARE(install(package()), int(Success));
        QCOMPARE(runToEnd({ "-t" }, {}, programIn(usualFolder)).code, 0);

        QCOMPARE(removeProduct(), int(Success));

        // The installer's own folder, which it makes for the first package of all.
        QStringList files = newIn(drive(), filesBefore);
        files.removeAll("C:/windows/Installer");
        QCOMPARE(files, QStringList());
        QStringList keys = newIn(registry(), keysBefore);
        // Branches that the installer makes once for all packages, with nothing of this one in them.
        for (auto it = keys.begin(); it != keys.end();)
            it = it->contains("\\Installer") && !it->contains("{") ? keys.erase(it) : it + 1;
        // The first is the machine's store, which a start by an administrator makes, and empty.
        QCOMPARE(keys.join(", "), QString("Software\\velmor\\config, Software\\velmor, Software\\velmor\\config"));
        QVERIFY(
            !QSettings("HKEY_CURRENT_USER\\Software\\velmor\\config", QSettings::NativeFormat).value("GUID").isNull());
    }

    void repairBringsBackWhatIsMissingOrChanged()
    {
        QCOMPARE(installInto(oddFolder), int(Success));
        const QString folder = oddFolder;
        QVERIFY(QFile::remove(folder + "/64/Qt5Gui.dll"));
        QVERIFY(QDir(folder + "/statics").removeRecursively());
        QVERIFY(put(folder + "/64/Qt5Core.dll", "not a library"));
        QVERIFY(put(folder + "/64/libgcc_s_seh-1.dll", QByteArray()));
        QVERIFY(!damageOf(folder).isEmpty());

        QCOMPARE(repair(), int(Success));

        QCOMPARE(damageOf(folder), QStringList());
        QCOMPARE(entries().size(), 1);
    }

    void secondInstallationIsARepair()
    {
        QCOMPARE(install(package()), int(Success));
        QVERIFY(QFile::remove(QString(usualFolder) + "/64/Qt5Widgets.dll"));

        QCOMPARE(install(package()), int(Success));

        QCOMPARE(damageOf(usualFolder), QStringList());
        QCOMPARE(entries().size(), 1);
    }

    void olderVersionIsReplaced_data()
    {
        QTest::addColumn<QString>("older");
        QTest::newRow("another version") << "older.msi";
        QTest::newRow("another fix of the same version") << "older-fix.msi";
    }
    void olderVersionIsReplaced()
    {
        QFETCH(QString, older);
        QCOMPARE(install(variant(older)), int(Success));
        const QString before = entry("DisplayVersion");
        QVERIFY(before != VELMOR_TEST_FULL_VERSION);
        // What only the older one had, and the user's settings.
        QVERIFY(QFile::exists(QString(usualFolder) + "/64/" + QFileInfo(older).completeBaseName() + ".dll"));
        QSettings settings("HKEY_CURRENT_USER\\Software\\velmor\\config", QSettings::NativeFormat);
        settings.setValue("theme", "dark");
        settings.sync();

        QCOMPARE(install(package()), int(Success));

        QCOMPARE(entries().size(), 1);
        QCOMPARE(entry("DisplayVersion"), QString(VELMOR_TEST_FULL_VERSION));
        QCOMPARE(damageOf(usualFolder), QStringList());
        QVERIFY(!QFile::exists(QString(usualFolder) + "/64/" + QFileInfo(older).completeBaseName() + ".dll"));
        QCOMPARE(
            QSettings("HKEY_CURRENT_USER\\Software\\velmor\\config", QSettings::NativeFormat).value("theme").toString(),
            QString("dark"));
        QVERIFY(!restartIsAsked());
    }

    void newerVersionStays()
    {
        QCOMPARE(install(variant("newer.msi")), int(Success));
        const QString newer = entry("DisplayVersion");
        const QByteArray history = contentOf(QString(usualFolder) + "/statics/historia_zmian.html");

        QCOMPARE(install(package()), int(InstallFailure));

        QCOMPARE(entries().size(), 1);
        QCOMPARE(entry("DisplayVersion"), newer);
        QCOMPARE(contentOf(QString(usualFolder) + "/statics/historia_zmian.html"), history);
    }

    void packageThatIsCutOffIsRefused()
    {
        constexpr int places = 50;
        const QByteArray whole = contentOf(package());
        const QString cut = TestHome::path() + "/cut.msi";
        for (int i = 0; i < places; ++i) {
            QVERIFY(put(cut, whole.left(int(qint64(whole.size()) * i / places))));

            const int code = install(cut);

            QVERIFY2(code != Success, qPrintable(QString("cut off after %1 of %2").arg(i).arg(places)));
            QCOMPARE(entries(), QStringList());
            QVERIFY(!QDir(usualFolder).exists());
        }
        QVERIFY(put(cut, whole));
        QCOMPARE(install(cut), int(Success));
        QVERIFY(QFile::remove(cut));
    }

    void foreignFilesStay()
    {
        QCOMPARE(install(package()), int(Success));
        const QString library = QString(usualFolder) + "/64/velmor-pkcs11-64.dll";
        const QString note = QString(usualFolder) + "/notatka.txt";
        QVERIFY(put(library, "of the card's maker"));
        QVERIFY(put(note, "of the administrator"));

        QCOMPARE(repair(), int(Success));
        QCOMPARE(install(variant("newer.msi")), int(Success));
        QCOMPARE(removeProduct(), int(Success));

        QCOMPARE(filesOf(QDir(usualFolder)), QStringList({ "64/velmor-pkcs11-64.dll", "notatka.txt" }));
        QCOMPARE(contentOf(library), QByteArray("of the card's maker"));
    }
};

VELMOR_TEST(TestInstaller)
#include "tst_installer.moc"
