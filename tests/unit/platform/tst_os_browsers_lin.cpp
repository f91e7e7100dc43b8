#include "platform/os.h"
#include "support/fake_programs.h"
#include "support/profile_folder.h"
#include "support/testmain.h"

#include <QScopeGuard>

#include <memory>
#include <sched.h>
#include <sys/mount.h>

// Where browsers and their profiles are found.
class TestOsBrowsersLin : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<FakePrograms> programs;
    Os os;

    static QString home(const QString &path) { return QDir::homePath() + '/' + path; }
    static QStringList sorted(QStringList list)
    {
        list.sort();
        return list;
    }

private slots:
    void init() { programs = std::make_unique<FakePrograms>(); }
    void cleanup()
    {
        programs.reset();
        TestHome::empty();
    }

    void nothingIsFoundWhereNothingIsInstalled()
    {
        QCOMPARE(os.which("Firefox"), QString());
        QCOMPARE(os.which("Thunderbird"), QString());
        QCOMPARE(os.which(""), QString());
    }

    void programIsFoundInEachOfItsPackages_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("program");
        QTest::newRow("package or snap") << "Firefox"
                                         << "bin/firefox";
        QTest::newRow("ESR") << "Firefox"
                             << "bin/firefox-esr";
        QTest::newRow("flatpak of the user") << "Firefox"
                                             << "flatpak-user/exports/bin/org.mozilla.firefox";
        QTest::newRow("flatpak of the system") << "Firefox"
                                               << "flatpak-system/exports/bin/org.mozilla.firefox";
        QTest::newRow("Thunderbird") << "Thunderbird"
                                     << "bin/thunderbird";
        QTest::newRow("Thunderbird, flatpak") << "Thunderbird"
                                              << "flatpak-user/exports/bin/org.mozilla.Thunderbird";
        QTest::newRow("a name without a row") << "Manager"
                                              << "bin/manager";
    }

    void programIsFoundInEachOfItsPackages()
    {
        QFETCH(QString, name);
        QFETCH(QString, program);
        const QString path = programs->install(program);
        LogCatcher log;
        QCOMPARE(os.which(name), path);
        QVERIFY(log.has("which " + name + " " + path));
    }

    void packageComesBeforeEsrAndFlatpak()
    {
        programs->install("flatpak-user/exports/bin/org.mozilla.firefox");
        const QString esr = programs->install("bin/firefox-esr");
        QCOMPARE(os.which("Firefox"), esr);
        const QString package = programs->install("bin/firefox");
        QCOMPARE(os.which("Firefox"), package);
    }

    void folderOfFlatpaksIsInTheDataFolderUnlessMoved()
    {
        qunsetenv("FLATPAK_USER_DIR");
        const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
        QDir().mkpath(data + "/flatpak/exports/bin");
        const QString path = data + "/flatpak/exports/bin/org.mozilla.firefox";
        QVERIFY(QFile::copy(programs->install("other"), path));
        QCOMPARE(os.which("Firefox"), path);
        QFile::remove(path);
    }

    // The folder is the system's, so it is looked for on a disk that this process alone sees there.
    void folderOfTheSystemsFlatpaksIsTheUsualOneUnlessMoved()
    {
        if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0
            || mount("tmpfs", "/var/lib", "tmpfs", 0, nullptr) != 0)
            QSKIP("Only the super-user can make a disk");
        const auto back = qScopeGuard([] { umount("/var/lib"); });
        qunsetenv("FLATPAK_SYSTEM_DIR");
        const QString folder = "/var/lib/flatpak/exports/bin";
        QVERIFY(QDir().mkpath(folder));
        QVERIFY(QFile::copy(programs->install("other"), folder + "/org.mozilla.firefox"));

        QCOMPARE(os.which("Firefox"), folder + "/org.mozilla.firefox");
    }

    void fileThatCannotBeRunIsNoProgram()
    {
        const QString path = programs->install("bin/firefox");
        QFile::setPermissions(path, QFile::ReadOwner);
        QVERIFY(QDir().mkpath(QFileInfo(path).path() + "/firefox-esr"));
        QCOMPARE(os.which("Firefox"), QString());
    }

    void pathInPlaceOfANameFindsNothing()
    {
        const QString path = programs->install("bin/firefox");
        QCOMPARE(os.which(path), QString());
        QCOMPARE(os.which("../bin/firefox"), QString());
    }

    void rootIsThatOfThePackage()
    {
        QCOMPARE(os.profilesRoot("Firefox"), home(".mozilla/firefox/"));
        QCOMPARE(os.profilesRoot("Thunderbird"), home(".thunderbird/"));
        QCOMPARE(os.profilesRoot("firefox"), QString());
        QCOMPARE(os.profilesRoot("Chrome, Chromium, Edge"), QString());
    }

    void profilesOfAllPackagesAreFound_data()
    {
        QTest::addColumn<QString>("app");
        QTest::addColumn<QString>("root");
        QTest::newRow("Firefox") << "Firefox"
                                 << ".mozilla/firefox/";
        QTest::newRow("Firefox, newer place") << "Firefox"
                                              << ".config/mozilla/firefox/";
        QTest::newRow("Firefox, snap") << "Firefox"
                                       << "snap/firefox/common/.mozilla/firefox/";
        QTest::newRow("Firefox, flatpak") << "Firefox"
                                          << ".var/app/org.mozilla.firefox/.mozilla/firefox/";
        QTest::newRow("Firefox, flatpak, newer place") << "Firefox"
                                                       << ".var/app/org.mozilla.firefox/config/mozilla/firefox/";
        QTest::newRow("Thunderbird") << "Thunderbird"
                                     << ".thunderbird/";
        QTest::newRow("Thunderbird, snap") << "Thunderbird"
                                           << "snap/thunderbird/common/.thunderbird/";
        QTest::newRow("Thunderbird, flatpak") << "Thunderbird"
                                              << ".var/app/org.mozilla.Thunderbird/.thunderbird/";
    }

    void profilesOfAllPackagesAreFound()
    {
        QFETCH(QString, app);
        QFETCH(QString, root);
        const QString path = home(root) + "abcd.default";
        const ProfileFolder profile(path, "128.0");

        QCOMPARE(os.profileDirs(app), QStringList { path });
        QCOMPARE(os.profileDirs(app == "Firefox" ? "Thunderbird" : "Firefox"), QStringList());
    }

    void profilesOfAllPackagesAreFoundTogether()
    {
        const ProfileFolder first(home(".mozilla/firefox/a.default"), "128.0");
        const ProfileFolder second(home("snap/firefox/common/.mozilla/firefox/b.default"), "128.0");
        QCOMPARE(sorted(os.profileDirs("Firefox")), sorted({ first.path(), second.path() }));
    }

    void profileIsAnEntryWithAListOfModules()
    {
        const QString root = home(".mozilla/firefox/");
        const ProfileFolder present(root + "present");
        present.put("pkcs11.txt", "");
        const ProfileFolder old(root + "old");
        old.put("secmod.db", "");
        const ProfileFolder bare(root + "bare");
        bare.put("user.js", "");
        const ProfileFolder odd(root + "it's a \"100%\" żółty <b>profil<a href=x>");
        odd.put("pkcs11.txt", "");
        const ProfileFolder deep(root + "outer/inner");
        deep.put("pkcs11.txt", "");
        const ProfileFolder files(root.chopped(1));
        files.put("profiles.ini", "");

        QCOMPARE(sorted(os.profileDirs("Firefox")), sorted({ present.path(), old.path(), odd.path() }));
    }

    // They are looked at like every other.
    void dotEntriesOfTheRootAreProfilesIfTheyLookLikeOne()
    {
        const ProfileFolder root(home(".mozilla/firefox"));
        root.put("pkcs11.txt", "");
        QCOMPARE(os.profileDirs("Firefox"), QStringList { home(".mozilla/firefox/.") });
    }

    void appWithoutARowHasNoProfiles()
    {
        const ProfileFolder here("here", "128.0");
        QCOMPARE(os.profileDirs("Chrome, Chromium, Edge"), QStringList());
        QDir("here").removeRecursively();
    }

    void missingRootHasNoProfiles() { QCOMPARE(os.profileDirs("Firefox"), QStringList()); }
};

VELMOR_TEST(TestOsBrowsersLin)
#include "tst_os_browsers_lin.moc"
