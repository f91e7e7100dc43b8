#include "browser/profile_sql.h"
#include "support/profile_folder.h"
#include "support/testmain.h"

#include <memory>

// One profile: what it knows about its browser, by which of the two mechanisms it is connected, and what its files hold
// then.
class TestProfileSql : public QObject {
    Q_OBJECT

private:
    static constexpr const char *module32 = "/opt/velmor/velmor-pkcs11-32.so";
    static constexpr const char *module64 = "/opt/velmor/velmor-pkcs11-64.so";
    static constexpr const char *on = "user_pref(\"security.osclientcerts.autoload\", true);\r\n";
    static constexpr const char *off = "user_pref(\"security.osclientcerts.autoload\", false);\r\n";
    static QByteArray entry(const QByteArray &module) { return "\r\nlibrary=" + module + "\r\nname=n\r\nNSS=p\r\n"; }

    std::unique_ptr<QTemporaryDir> folder;

    ProfileFolder profileFolder(const QByteArray &version) { return { folder->filePath("profile"), version }; }
    static bool load(ProfileSql &profile, const ProfileFolder &files, const QString &app = "Firefox")
    {
        return profile.load(app, files.path(), module32, module64);
    }
    static bool isConnected(ProfileSql &profile)
    {
        bool connected = true;
        return profile.checkIntegrate(connected) && connected;
    }

private slots:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        QVERIFY2(folder->isValid(), qPrintable(folder->errorString()));
    }

    void newProfileIsWideAndOfNoVersion()
    {
        const ProfileSql profile;
        QCOMPARE(profile.width(), 64);
        QCOMPARE(profile.majorVersion(), 0);
        QCOMPARE(profile.appName(), QString());
    }

    void databaseHasThreeFiles()
    {
        ProfileSql profile;
        QCOMPARE(profile.typeName(), QString("sql"));
        QCOMPARE(profile.dbFiles(), QStringList({ "pkcs11.txt", "key4.db", "cert9.db" }));
    }

    void versionIsTheNumberBeforeTheFirstPoint_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<int>("version");
        QTest::newRow("release") << QByteArray("LastVersion=128.3.1_20241007175634/20241007175634") << 128;
        QTest::newRow("old") << QByteArray("LastVersion=76.0_1/1") << 76;
        QTest::newRow("without a point") << QByteArray("LastVersion=78") << 0;
        QTest::newRow("not a number") << QByteArray("LastVersion=beta.1") << 0;
        QTest::newRow("number and more") << QByteArray("LastVersion=115esr.1") << 0;
        QTest::newRow("hexadecimal") << QByteArray("LastVersion=0x80.1") << 0;
        QTest::newRow("leading zero, still of base 10") << QByteArray("LastVersion=077.1") << 77;
        QTest::newRow("too large") << QByteArray("LastVersion=99999999999.1") << 0;
        QTest::newRow("negative") << QByteArray("LastVersion=-5.1") << -5;
        QTest::newRow("empty") << QByteArray("LastVersion=") << 0;
        QTest::newRow("a list") << QByteArray("LastVersion=115.1, 2") << 0;
        QTest::newRow("missing") << QByteArray() << 0;
    }

    void versionIsTheNumberBeforeTheFirstPoint()
    {
        QFETCH(QByteArray, line);
        const ProfileFolder files = profileFolder("1.0");
        files.put("compatibility.ini", "[Compatibility]\n" + line + "\n");
        ProfileSql profile;
        QVERIFY(load(profile, files));
        QTEST(profile.majorVersion(), "version");
    }

    void widthComesFromTheBrowsersAbi_data()
    {
        QTest::addColumn<QByteArray>("abi");
        QTest::addColumn<int>("width");
        QTest::newRow("32 bits of Windows") << QByteArray("LastOSABI=WINNT_x86-msvc") << 32;
        QTest::newRow("64 bits of Windows") << QByteArray("LastOSABI=WINNT_x86_64-msvc") << 64;
        QTest::newRow("Linux") << QByteArray("LastOSABI=Linux_x86_64-gcc3") << 64;
        QTest::newRow("other case") << QByteArray("LastOSABI=WINNT_X86-MSVC") << 64;
        QTest::newRow("missing") << QByteArray() << 64;
    }

    void widthComesFromTheBrowsersAbi()
    {
        QFETCH(QByteArray, abi);
        QFETCH(int, width);
        const ProfileFolder files = profileFolder("76.0");
        files.put("compatibility.ini", "[Compatibility]\r\nLastVersion=76.0_1/1\r\n" + abi + "\r\n");
        ProfileSql profile;
        QVERIFY(load(profile, files));
        QCOMPARE(profile.width(), width);

        // The width is that of the module which is looked for.
        files.put("pkcs11.txt", entry(width == 32 ? module32 : module64));
        QVERIFY(isConnected(profile));
        files.put("pkcs11.txt", entry(width == 32 ? module64 : module32));
        QVERIFY(!isConnected(profile));
    }

    void folderWithoutCompatibilityFileIsConnectedByAnEntry()
    {
        const ProfileFolder files(folder->filePath("profile"));
        files.put("pkcs11.txt", "");
        ProfileSql profile;
        QVERIFY(load(profile, files));
        QCOMPARE(profile.majorVersion(), 0);
        QCOMPARE(profile.width(), 64);

        QVERIFY(profile.integrate("n", "p"));

        QCOMPARE(files.content("pkcs11.txt"), entry(module64));
        QVERIFY(!files.has("user.js"));
        QVERIFY(!files.has("compatibility.ini"));
    }

    void folderWithoutModuleListIsNoProfile()
    {
        const ProfileFolder files = profileFolder("128.0");
        QFile::remove(files.path("pkcs11.txt"));
        files.put("secmod.db", "old");
        files.put("user.js", on);
        ProfileSql profile;
        QVERIFY(!load(profile, files));
        bool connected = true;
        QVERIFY(!profile.checkIntegrate(connected));
        QVERIFY(!connected);
    }

    void mechanismFollowsNameAndVersion_data()
    {
        QTest::addColumn<QString>("app");
        QTest::addColumn<QByteArray>("version");
        QTest::addColumn<bool>("preference");
        QTest::newRow("76") << "Firefox" << QByteArray("76.9") << false;
        QTest::newRow("77") << "Firefox" << QByteArray("77.0") << true;
        QTest::newRow("present") << "Firefox" << QByteArray("140.0") << true;
        QTest::newRow("78 without a point") << "Firefox" << QByteArray("78") << false;
        QTest::newRow("in capitals, inside a name") << "Mozilla FIREFOX ESR" << QByteArray("128.0") << true;
        QTest::newRow("not Firefox") << "Thunderbird" << QByteArray("128.0") << false;
        QTest::newRow("the others") << "Chrome, Chromium, Edge" << QByteArray("128.0") << false;
    }

    void mechanismFollowsNameAndVersion()
    {
        QFETCH(QString, app);
        QFETCH(QByteArray, version);
        QFETCH(bool, preference);
        const ProfileFolder files(folder->filePath("profile"));
        const QByteArray list = ProfileFolder::otherModules("\r\n");
        files.put("pkcs11.txt", list);
        files.put("compatibility.ini", "[Compatibility]\nLastVersion=" + version + "\n");
        ProfileSql profile;
        QVERIFY(load(profile, files, app));
        QVERIFY(!isConnected(profile));

        QVERIFY(profile.integrate("n", "p"));
        QVERIFY(isConnected(profile));
        QCOMPARE(files.content("pkcs11.txt"), preference ? list : list + entry(module64));
        QCOMPARE(files.has("user.js"), preference);

        QVERIFY(profile.disintegrate());
        QVERIFY(!isConnected(profile));
        if (preference)
            QCOMPARE(files.content("user.js"), QByteArray(off));
        else
            QCOMPARE(files.content("pkcs11.txt"), ProfileFolder::otherModulesRewritten());
    }

    // The same list of modules means something else to the two versions.
    void entryCountsForVersion76AndNotFor77()
    {
        const ProfileFolder files = profileFolder("76.0");
        files.put("pkcs11.txt", ProfileFolder::otherModules("\r\n") + entry(module64));
        ProfileSql old;
        QVERIFY(load(old, files));
        QVERIFY(isConnected(old));

        const ProfileFolder newFiles(folder->filePath("other"), "77.0");
        newFiles.put("pkcs11.txt", files.content("pkcs11.txt"));
        ProfileSql fresh;
        QVERIFY(load(fresh, newFiles));
        LogCatcher log;
        QVERIFY(!isConnected(fresh));
        QVERIFY(log.has("user.js not found in dir"));
    }

    void entryOfAnotherFolderIsNotConnectedYetTakenOut()
    {
        const ProfileFolder files = profileFolder("70.0");
        files.put("pkcs11.txt", ProfileFolder::otherModules("\r\n") + entry("/usr/local/velmor/velmor-pkcs11-64.so"));
        ProfileSql profile;
        QVERIFY(load(profile, files));
        QVERIFY(!isConnected(profile));

        QVERIFY(profile.moduleRemove());

        QCOMPARE(files.content("pkcs11.txt"), ProfileFolder::otherModulesRewritten());
    }

    void preferenceIsWrittenOnceHoweverOftenItIsSet()
    {
        const ProfileFolder files = profileFolder("128.0");
        files.put("user.js", "user_pref(\"a\", 1);\r\n\r\n//\r\n");
        ProfileSql profile;
        QVERIFY(load(profile, files));

        QVERIFY(profile.integrate("n", "p"));
        QVERIFY(profile.integrate("n", "p"));

        QCOMPARE(files.content("user.js"), QByteArray("user_pref(\"a\", 1);\r\n//\r\n") + on);
        LogCatcher log;
        QVERIFY(profile.disintegrate());
        QCOMPARE(files.content("user.js"), QByteArray("user_pref(\"a\", 1);\r\n//\r\n") + off);
        QVERIFY(log.has("disable osclientcerts.autoload"));
        QVERIFY(log.has("dir  " + files.path()));
        QVERIFY(log.has("Result of f write  true"));
    }

    void entryIsAppendedAgainWithoutAQuestion()
    {
        const ProfileFolder files = profileFolder("70.0");
        ProfileSql profile;
        QVERIFY(load(profile, files));
        QVERIFY(profile.integrate("n", "p"));
        QVERIFY(profile.integrate("n", "p"));
        QCOMPARE(files.content("pkcs11.txt"), ProfileFolder::otherModules("\r\n") + entry(module64) + entry(module64));
    }

    void entryIsWrittenAsUtf8AndPreferencesAsLatin1()
    {
        const ProfileFolder files(folder->filePath("Żółty profil"), "70.0");
        files.put("pkcs11.txt", "");
        ProfileSql profile;
        QVERIFY(profile.load("Firefox", files.path(), module32, "/opt/żółw/velmor-pkcs11-64.so"));
        QVERIFY(profile.integrate("ż", "ł"));
        QCOMPARE(files.content("pkcs11.txt"),
                 QByteArray("\r\nlibrary=/opt/\xC5\xBC\xC3\xB3\xC5\x82w/velmor-pkcs11-64.so\r\nname=\xC5\xBC\r\n"
                            "NSS=\xC5\x82\r\n"));
        QVERIFY(isConnected(profile));

        // Of "é", "ż" and the euro sign, Latin-1 has the first.
        files.put("user.js", "// \xC3\xA9\xC5\xBC\xE2\x82\xAC\r\n");
        QVERIFY(profile.userjsSetValue("security.osclientcerts.autoload", "true"));
        QCOMPARE(files.content("user.js"), QByteArray("// \xE9??\r\n") + on);
    }

    void untouchedListKeepsItsBytes()
    {
        const ProfileFolder files = profileFolder("70.0");
        const QByteArray odd("\r\n\xFF\xFE library=x\n\n", 16);
        files.put("pkcs11.txt", odd);
        ProfileSql profile;
        QVERIFY(load(profile, files));
        QVERIFY(profile.moduleRemove());
        QCOMPARE(files.content("pkcs11.txt"), odd);
    }

    void preparedFolderGetsWhatIsMissing()
    {
        const QString path = folder->filePath("a/b/nssdb");
        ProfileSql profile;

        QVERIFY(profile.dirPrepare(path + '/'));

        const ProfileFolder files(path);
        QCOMPARE(QDir(path).entryList(QDir::Files), QStringList({ "cert9.db", "key4.db", "pkcs11.txt" }));
        for (const QString &name : profile.dbFiles())
            QCOMPARE(files.content(name), QByteArray());
    }

    void preparedFolderKeepsWhatIsThere()
    {
        const ProfileFolder files(folder->filePath("nssdb"));
        files.put("pkcs11.txt", "list");
        files.put("key4.db", "keys");
        ProfileSql profile;

        QVERIFY(profile.dirPrepare(files.path()));

        QCOMPARE(files.content("pkcs11.txt"), QByteArray("list"));
        QCOMPARE(files.content("key4.db"), QByteArray("keys"));
        QCOMPARE(files.content("cert9.db"), QByteArray());
    }

    void preparedFolderIsForItsUserAlone()
    {
#ifdef Q_OS_UNIX
        const QString path = folder->filePath("nssdb");
        ProfileSql profile;
        QVERIFY(profile.dirPrepare(path));
        const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther
            | QFile::WriteOther | QFile::ExeOther;
        for (const QString &file : QStringList { path, path + "/key4.db", path + "/pkcs11.txt" })
            QVERIFY2(!(QFile::permissions(file) & others), qPrintable(file));
#else
        QSKIP("The home folder's rights are inherited here");
#endif
    }

    void folderThatCannotBeMadeIsNotPrepared()
    {
        const ProfileFolder files(folder->path());
        files.put("file", "");
        ProfileSql profile;
        QVERIFY(!profile.dirPrepare(files.path("file/nssdb")));
    }
};

VELMOR_TEST(TestProfileSql)
#include "tst_profile_sql.moc"
