#include "base/common.h"
#include "browser/profile_sql.h"
#include "browser/profile_text.h"
#include "shared.h"
#include "support/ordinary_user.h"
#include "support/popup_closer.h"
#include "support/profile_folder.h"
#include "support/testmain.h"

#include <memory>
#include <optional>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#endif

namespace {

// A disk on which no file grows beyond a length, while it lives: a write gets as far as that, as on a full one.
class FullDisk {
public:
#ifdef Q_OS_UNIX
    explicit FullDisk(qint64 length) : handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit limit { rlim_t(length), before.rlim_max };
        works = setrlimit(RLIMIT_FSIZE, &limit) == 0;
    }
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, handler);
    }
#else
    explicit FullDisk(qint64) { }
#endif
    bool works = false;
    FullDisk(const FullDisk &) = delete;
    FullDisk &operator=(const FullDisk &) = delete;

private:
#ifdef Q_OS_UNIX
    rlimit before {};
    void (*handler)(int);
#endif
};

} // namespace

// Files that are not what they should be, and disks that do not take what is written: the user is told or nothing
// happens, and what was there is not lost.
class TestProfileSqlBadFiles : public QObject {
    Q_OBJECT

private:
    static constexpr const char *module = "/opt/velmor/velmor-pkcs11-64.so";
    static constexpr const char *on = "user_pref(\"security.osclientcerts.autoload\", true);\r\n";
    static constexpr const char *cannotWrite = "Nie można zapisać pliku: ";

    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<PopupCloser> popups;

    ProfileFolder oldProfile() { return { folder->filePath("old"), "70.0" }; }
    ProfileFolder newProfile() { return { folder->filePath("new"), "128.0" }; }
    static ProfileSql loaded(const ProfileFolder &files)
    {
        ProfileSql profile;
        if (!profile.load("Firefox", files.path(), "/opt/velmor/velmor-pkcs11-32.so", module))
            qFatal("the profile was not taken");
        return profile;
    }
    static QByteArray entry() { return ProfileText::moduleEntry(module, "velmor (64 bits)", "p").toUtf8(); }

    // Connects on a disk that takes files of this length; nothing where that cannot be had.
    static std::optional<bool> integrateOnFullDisk(ProfileSql &profile, qint64 length)
    {
        const FullDisk disk(length);
        if (!disk.works)
            return std::nullopt;
        return profile.integrate("n", "p");
    }

    // The one message, in a dialog with the product's name, one button and no parent.
    void checkToldAbout(const QString &path) const
    {
        QCOMPARE(popups->messages, QStringList { cannotWrite + path });
        QCOMPARE(popups->titles, QStringList { "velmor" });
        QCOMPARE(popups->buttonCounts, QList<int> { 1 });
        QVERIFY(!popups->hadParent);
    }

private slots:
    void initTestCase()
    {
        Shared::loadResources();
        QApplication::setQuitOnLastWindowClosed(false);
    }
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        popups = std::make_unique<PopupCloser>();
        QVERIFY(OrdinaryUser::letIn({ folder->path() }));
    }
    void cleanup() { popups.reset(); }

    void listThatCannotBeWrittenIsTold()
    {
        const ProfileFolder files = oldProfile();
        ProfileSql profile = loaded(files);
        if (!OrdinaryUser::makeReadOnly(files.path("pkcs11.txt")))
            QSKIP("Whoever runs this may write everything");

        bool done = true;
        {
            const OrdinaryUser user;
            done = profile.integrate("n", "p");
        }

        QVERIFY(!done);
        checkToldAbout(files.path("pkcs11.txt"));
        QCOMPARE(files.content("pkcs11.txt"), ProfileFolder::otherModules("\r\n"));
    }

    void entryThatCannotBeTakenOutIsToldAndCountsAsDone()
    {
        const ProfileFolder files = oldProfile();
        files.put("pkcs11.txt", ProfileFolder::otherModules("\r\n") + entry());
        ProfileSql profile = loaded(files);
        if (!OrdinaryUser::makeReadOnly(files.path("pkcs11.txt")))
            QSKIP("Whoever runs this may write everything");

        bool removed = false;
        bool disconnected = false;
        {
            const OrdinaryUser user;
            removed = profile.moduleRemove();
            QCOMPARE(popups->messages.size(), 1);
            popups->messages.removeFirst();
            popups->titles.removeFirst();
            popups->buttonCounts.removeFirst();
            disconnected = profile.disintegrate();
        }

        QVERIFY(removed);
        QVERIFY(disconnected);
        checkToldAbout(files.path("pkcs11.txt"));
        QCOMPARE(files.content("pkcs11.txt"), ProfileFolder::otherModules("\r\n") + entry());
    }

    void preferencesThatCannotBeWrittenAreNotToldAndStay()
    {
        const ProfileFolder files = newProfile();
        files.put("user.js", "// mine\r\n");
        ProfileSql profile = loaded(files);
        if (!OrdinaryUser::makeReadOnly(files.path("user.js")))
            QSKIP("Whoever runs this may write everything");

        LogCatcher log;
        bool done = true;
        {
            const OrdinaryUser user;
            done = profile.integrate("n", "p");
        }

        QVERIFY(!done);
        QVERIFY(popups->messages.isEmpty());
        QVERIFY(log.has("Result of f write  false"));
        QCOMPARE(files.content("user.js"), QByteArray("// mine\r\n"));
    }

    void preferencesThatCannotBeOpenedAfterTheCutStayEmpty()
    {
#ifdef Q_OS_UNIX
        const ProfileFolder files = newProfile();
        files.put("user.js", "// mine\r\n");
        ProfileSql profile = loaded(files);
        // May be cut and not be read.
        QCOMPARE(chmod(QFile::encodeName(files.path("user.js")).constData(), geteuid() == 0 ? 0622 : 0200), 0);

        bool done = true;
        {
            const OrdinaryUser user;
            done = profile.integrate("n", "p");
        }

        QVERIFY(!done);
        QCOMPARE(QFileInfo(files.path("user.js")).size(), qint64(0));
#else
        QSKIP("There are no files here that may be written and not read");
#endif
    }

    void listThatCannotBeReadMakesNoProfile()
    {
#ifdef Q_OS_UNIX
        const ProfileFolder files = newProfile();
        files.put("user.js", on);
        QCOMPARE(chmod(QFile::encodeName(files.path("pkcs11.txt")).constData(), geteuid() == 0 ? 0700 : 0), 0);
        ProfileSql profile;
        bool usable = true;
        {
            const OrdinaryUser user;
            usable = profile.load("Firefox", files.path(), module, module);
        }
        QVERIFY(!usable);
#else
        QSKIP("Rights are not kept by files here");
#endif
    }

    void folderInPlaceOfTheListMakesNoProfile()
    {
        const ProfileFolder files = newProfile();
        QFile::remove(files.path("pkcs11.txt"));
        QVERIFY(QDir().mkdir(files.path("pkcs11.txt")));
        ProfileSql profile;
        QVERIFY(!profile.load("Firefox", files.path(), module, module));
    }

    void folderThatTakesThePlaceOfTheListIsTold()
    {
        const ProfileFolder files = oldProfile();
        ProfileSql profile = loaded(files);
        QFile::remove(files.path("pkcs11.txt"));
        QVERIFY(QDir().mkdir(files.path("pkcs11.txt")));

        QVERIFY(profile.moduleRemove());
        QVERIFY(popups->messages.isEmpty());
        QVERIFY(!profile.integrate("n", "p"));

        checkToldAbout(files.path("pkcs11.txt"));
    }

    void folderInPlaceOfThePreferencesIsLeftAlone()
    {
        const ProfileFolder files = newProfile();
        QVERIFY(QDir().mkpath(files.path("user.js/inside")));
        ProfileSql profile = loaded(files);

        QVERIFY(!profile.integrate("n", "p"));

        QVERIFY(QFile::exists(files.path("user.js/inside")));
        bool connected = true;
        QVERIFY(profile.checkIntegrate(connected));
        QVERIFY(!connected);
    }

    void folderInPlaceOfTheBrowsersFileMeansNoVersion()
    {
        const ProfileFolder files = newProfile();
        QFile::remove(files.path("compatibility.ini"));
        QVERIFY(QDir().mkdir(files.path("compatibility.ini")));
        QCOMPARE(loaded(files).majorVersion(), 0);
    }

    void vanishedProfileIsToldOrFailsQuietly()
    {
        const ProfileFolder old = oldProfile();
        const ProfileFolder fresh = newProfile();
        ProfileSql oldProfile = loaded(old);
        ProfileSql newProfile = loaded(fresh);
        QVERIFY(QDir(old.path()).removeRecursively());
        QVERIFY(QDir(fresh.path()).removeRecursively());

        QVERIFY(oldProfile.moduleRemove());
        QVERIFY(!newProfile.integrate("n", "p"));
        QVERIFY(popups->messages.isEmpty());
        QVERIFY(!oldProfile.integrate("n", "p"));

        checkToldAbout(old.path("pkcs11.txt"));
        QVERIFY(!QFile::exists(old.path()));
        QVERIFY(!QFile::exists(fresh.path()));
    }

    void entryThatDoesNotFitOnTheDiskLeavesTheListAsItWas()
    {
        const ProfileFolder files = oldProfile();
        ProfileSql profile = loaded(files);
        const QByteArray before = files.content("pkcs11.txt");

        const std::optional<bool> done = integrateOnFullDisk(profile, before.size() + 20);
        if (!done)
            QSKIP("The length of files cannot be limited here");

        QVERIFY(!*done);
        checkToldAbout(files.path("pkcs11.txt"));
        QCOMPARE(files.content("pkcs11.txt"), before);
    }

    // Large ones are written past the toolkit's buffer.
    void preferencesThatDoNotFitOnTheDiskStayAsTheyWere_data()
    {
        QTest::addColumn<int>("lines");
        QTest::newRow("small") << 10;
        QTest::newRow("large") << 20000;
    }

    void preferencesThatDoNotFitOnTheDiskStayAsTheyWere()
    {
        QFETCH(int, lines);
        const ProfileFolder files = newProfile();
        const QByteArray before = QByteArray("user_pref(\"a\", 1);\r\n").repeated(lines);
        files.put("user.js", before);
        ProfileSql profile = loaded(files);

        const std::optional<bool> done = integrateOnFullDisk(profile, before.size() + 20);
        if (!done)
            QSKIP("The length of files cannot be limited here");

        QVERIFY(!*done);
        QCOMPARE(files.content("user.js"), before);
    }

    void preferencesThatWereNotThereAreNotLeftInHalf()
    {
        const ProfileFolder files = newProfile();
        ProfileSql profile = loaded(files);
        const std::optional<bool> done = integrateOnFullDisk(profile, 20);
        if (!done)
            QSKIP("The length of files cannot be limited here");
        QVERIFY(!*done);
        QVERIFY(!files.has("user.js"));
    }

    void textInUtf16IsOneLineAndDoesNotCrash()
    {
        const QString text = "user_pref(\"security.osclientcerts.autoload\", true);\r\nlibrary=velmor-pkcs11\r\n";
        QByteArray utf16("\xFF\xFE");
        for (const QChar letter : text)
            utf16.append(char(letter.cell())).append(char(letter.row()));
        const ProfileFolder files = newProfile();
        files.put("pkcs11.txt", utf16);
        files.put("user.js", utf16);
        ProfileSql profile = loaded(files);
        bool connected = true;
        QVERIFY(profile.checkIntegrate(connected));
        QVERIFY(!connected);

        QVERIFY(profile.moduleRemove());
        QVERIFY(profile.integrate("n", "p"));

        QCOMPARE(files.content("pkcs11.txt"), utf16);
        // What is no UTF-8 does not survive Latin-1.
        QCOMPARE(files.content("user.js"), utf16.replace("\xFF\xFE", "??") + "\r\n" + on);
    }

    void zeroBytesStay()
    {
        const ProfileFolder files = newProfile();
        files.put("user.js", QByteArray("a\0b\r\n\0\r\n", 8));
        files.put("pkcs11.txt", QByteArray("a\0b\r\n", 5) + entry());
        ProfileSql profile = loaded(files);

        QVERIFY(profile.moduleRemove());
        QVERIFY(profile.integrate("n", "p"));

        QCOMPARE(files.content("pkcs11.txt"), QByteArray("a\0b\r\n", 5));
        QCOMPARE(files.content("user.js"), QByteArray("a\0b\r\n\0\r\n", 8) + on);
    }

    void hugeListIsEdited_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::newRow("lines") << QByteArray("name=a module of somebody else\r\n");
        QTest::newRow("empty lines") << QByteArray("\r\n");
        QTest::newRow("one line") << QByteArray("x");
    }

    void hugeListIsEdited()
    {
        QFETCH(QByteArray, line);
        constexpr int size = 50 * 1024 * 1024;
        const ProfileFolder files = oldProfile();
        const QByteArray list = line.repeated(size / line.size());
        files.put("pkcs11.txt", list);
        ProfileSql profile = loaded(files);

        QVERIFY(profile.integrate("n", "p"));
        bool connected = false;
        QVERIFY(profile.checkIntegrate(connected));
        QVERIFY(connected);
        QVERIFY(profile.disintegrate());

        const bool empty = line.trimmed().isEmpty();
        QVERIFY(files.content("pkcs11.txt") == (empty ? QByteArray() : line == "x" ? list + "\r\n" : list));
    }

    void oddNamesAreShownAsTheyAre_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("blanks") << "a  b ";
        QTest::newRow("Polish letters") << "Żółty profil";
        QTest::newRow("percent signs") << "100%1 %2%";
        QTest::newRow("ampersand") << "a&amp;b";
#ifdef Q_OS_UNIX
        QTest::newRow("quotes") << "it's \"mine\"";
        QTest::newRow("markup") << "<b>bold<a href='x'>";
        QTest::newRow("the dialog's own mark") << "a<informative>b";
        QTest::newRow("backslash") << "a\\b";
#endif
    }

    void oddNamesAreShownAsTheyAre()
    {
        QFETCH(QString, name);
        const ProfileFolder files(folder->filePath(name), "70.0");
        ProfileSql profile = loaded(files);
        QVERIFY(profile.integrate("n", "p"));
        QVERIFY(profile.disintegrate());
        QCOMPARE(files.content("pkcs11.txt"), ProfileFolder::otherModulesRewritten());
        QVERIFY(popups->messages.isEmpty());

        QFile::remove(files.path("pkcs11.txt"));
        QVERIFY(QDir().mkdir(files.path("pkcs11.txt")));
        QVERIFY(!profile.integrate("n", "p"));

        // Rich text shows a run of blanks as one.
        QCOMPARE(popups->messages.value(0), cannotWrite + files.path("pkcs11.txt").replace("  ", " "));
    }
};

VELMOR_TEST(TestProfileSqlBadFiles)
#include "tst_profile_sql_bad_files.moc"
