#include "browser/profile_sql.h"

#include "browser/profile_text.h"
#include "shared.h"
#include "support/popup_closer.h"
#include "support/profile_folder.h"
#include "support/testmain.h"

#include <QProcess>

// A browser's files on a disk with no room left: a real one, small and in memory, which takes only the super-user to
// make. Nothing of theirs is lost, and once there is room the same operation succeeds.
class TestProfileFullDisk : public QObject {
    Q_OBJECT

private:
    static constexpr const char *module = "/opt/velmor/velmor-pkcs11-64.so";
    static constexpr int blockSize = 4096;

    QString disk;
    bool mounted = false;
    std::unique_ptr<PopupCloser> popups;

    QString fillerPath() const { return disk + "/filler"; }

    // Lines up to a little before the end of a block: what is written next gets only so far.
    static QByteArray nearlyABlock(const QByteArray &line)
    {
        constexpr int room = 20;
        const QByteArray lines = line.repeated((blockSize - room - 2) / line.size());
        return lines + QByteArray("#").repeated(blockSize - room - 2 - lines.size()) + "\r\n";
    }

    void fill() const
    {
        QFile filler(fillerPath());
        QVERIFY(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        while (filler.write(QByteArray(blockSize, 'x')) > 0) { }
    }

    static ProfileSql loaded(const ProfileFolder &files)
    {
        ProfileSql profile;
        if (!profile.load("Firefox", files.path(), "/opt/velmor/velmor-pkcs11-32.so", module))
            qFatal("the profile was not taken");
        return profile;
    }

private slots:
    void initTestCase() { Shared::loadResources(); }

    void init()
    {
        disk = TestHome::path() + "/small-disk";
        QDir().mkpath(disk);
        mounted = QProcess::execute("mount", { "-t", "tmpfs", "-o", "size=64k", "tmpfs", disk }) == 0;
        if (!mounted)
            QSKIP("Only the super-user can make a disk");
        popups = std::make_unique<PopupCloser>();
    }

    void cleanup()
    {
        popups.reset();
        if (mounted)
            QCOMPARE(QProcess::execute("umount", { disk }), 0);
    }

    void listOfModulesStaysAsItWas()
    {
        const ProfileFolder files(disk + "/old", "70.0");
        const QByteArray before = nearlyABlock("library=/usr/lib/p11-kit-proxy.so\r\n");
        files.put("pkcs11.txt", before);
        ProfileSql profile = loaded(files);
        fill();

        QVERIFY(!profile.integrate("n", "p"));

        QCOMPARE(popups->messages, QStringList { "Nie można zapisać pliku: " + files.path("pkcs11.txt") });
        QCOMPARE(files.content("pkcs11.txt"), before);
        QVERIFY(QFile::remove(fillerPath()));
        QVERIFY(profile.integrate("n", "p"));
        QVERIFY(files.content("pkcs11.txt").startsWith(before));
        QVERIFY(files.content("pkcs11.txt").contains(module));
    }

    // Taking something out needs no room: the file gets shorter.
    void entryIsTakenOutEvenSo()
    {
        const ProfileFolder files(disk + "/old", "70.0");
        files.put("pkcs11.txt",
                  ProfileFolder::otherModules("\r\n")
                      + ProfileText::moduleEntry(module, "velmor (64 bits)", "p").toUtf8());
        ProfileSql profile = loaded(files);
        fill();

        QVERIFY(profile.disintegrate());

        QVERIFY(popups->messages.isEmpty());
        QCOMPARE(files.content("pkcs11.txt"), ProfileFolder::otherModulesRewritten());
    }

    void preferencesStayAsTheyWere()
    {
        const ProfileFolder files(disk + "/new", "128.0");
        const QByteArray before = nearlyABlock("user_pref(\"a\", 1);\r\n");
        files.put("user.js", before);
        ProfileSql profile = loaded(files);
        fill();

        QVERIFY(!profile.integrate("n", "p"));

        QCOMPARE(files.content("user.js"), before);
        QVERIFY(QFile::remove(fillerPath()));
        QVERIFY(profile.integrate("n", "p"));
        QCOMPARE(files.content("user.js"), before + "user_pref(\"security.osclientcerts.autoload\", true);\r\n");
    }

    void preferencesThatWereNotThereAreNotLeftInHalf()
    {
        const ProfileFolder files(disk + "/new", "128.0");
        ProfileSql profile = loaded(files);
        fill();

        QVERIFY(!profile.integrate("n", "p"));

        QVERIFY(!files.has("user.js"));
    }
};

VELMOR_TEST(TestProfileFullDisk)
#include "tst_profile_full_disk_lin.moc"
