#include "support/fake_dpkg.h"

#include "base/common.h"
#include "base/own_environment.h"
#include "platform/os.h"
#include "platform/package_database_lin.h"
#include "platform/sys_info.h"

#include <csignal>

// What the report takes from the package database.
class TstPackageDatabase : public QObject {
    Q_OBJECT

private:
    static QStringList software(const QByteArray &output)
    {
        return PackageDatabase::cardSoftware(PackageDatabase::parse(output));
    }

private slots:
    void packageIsReadFromItsLine()
    {
        const auto packages = PackageDatabase::parse("ii \tpcscd\t1.9.9-2\tamd64\tMiddleware to access a smart card\n");

        QCOMPARE(packages.size(), 1);
        QCOMPARE(packages[0].name, QString("pcscd"));
        QCOMPARE(packages[0].version, QString("1.9.9-2"));
        QCOMPARE(packages[0].bits, 64);
        QCOMPARE(packages[0].summary, QString("Middleware to access a smart card"));
    }

    void tabInASummaryIsPartOfIt()
    {
        QCOMPARE(PackageDatabase::parse("ii \ta\t1\tamd64\tsmart\tcard").value(0).summary, QString("smart card"));
    }

    void onlyWholeRecordsOfInstalledPackagesCount_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<int>("count");
        QTest::newRow("installed") << QByteArray("ii \ta\t1\tamd64\tx") << 1;
        QTest::newRow("removed, its files left") << QByteArray("rc \ta\t1\tamd64\tx") << 0;
        QTest::newRow("never installed") << QByteArray("un \ta\t\tamd64\t") << 0;
        QTest::newRow("half installed") << QByteArray("iH \ta\t1\tamd64\tx") << 0;
        QTest::newRow("cut off") << QByteArray("ii \ta\t1\tamd64") << 0;
        QTest::newRow("nothing") << QByteArray() << 0;
        QTest::newRow("garbage") << QByteArray("\0\xff\xfe\t\t\t\t", 7) << 0;
    }
    void onlyWholeRecordsOfInstalledPackagesCount()
    {
        QFETCH(QByteArray, line);
        QTEST(PackageDatabase::parse(line).size(), "count");
    }

    void architectureTellsTheWidth_data()
    {
        QTest::addColumn<QByteArray>("architecture");
        QTest::addColumn<int>("bits");
        QTest::newRow("amd64") << QByteArray("amd64") << 64;
        QTest::newRow("arm64") << QByteArray("arm64") << 64;
        QTest::newRow("all") << QByteArray("all") << 64;
        for (const char *narrow : { "i386", "armel", "armhf", "mips", "mipsel", "powerpc", "x32" })
            QTest::newRow(narrow) << QByteArray(narrow) << 32;
        QTest::newRow("mips64el") << QByteArray("mips64el") << 64;
    }
    void architectureTellsTheWidth()
    {
        QFETCH(QByteArray, architecture);
        QTEST(PackageDatabase::parse("ii \ta\t1\t" + architecture + "\tx").value(0).bits, "bits");
    }

    void cardSoftwareIsChosenByWordAndKind_data()
    {
        QTest::addColumn<QByteArray>("package");
        QTest::addColumn<QString>("line");
        const auto row = [](const char *name, const char *package, const char *line) {
            QTest::newRow(name) << QByteArray("ii \t") + package << line;
        };
        row("smart card in the summary", "opensc\t0.23\tamd64\tSmart card utilities", "opensc Ver: 0.23");
        row("maker's word in a card package", "libacsccid1\t1.1\tamd64\tPC/SC driver for ACS USB CCID readers",
            "libacsccid1 Ver: 1.1");
        row("maker's word at the end", "driver\t1\tamd64\tCCID driver for SCM", "driver Ver: 1");
        row("maker's word at the end of the name", "driver-acs\t1\tamd64\tCCID driver", "driver-acs Ver: 1");
        row("reader driver", "libifd-cyberjack6\t3.99\tamd64\tREINER SCT cyberJack USB chipcard reader driver",
            "libifd-cyberjack6 Ver: 3.99");
        row("narrow package", "libccid\t1.5\ti386\tdriver for smart card readers", "libccid (32-bit) Ver: 1.5");
        row("program named by the word", "xca\t2.4\tamd64\tcertification authority", "xca Ver: 2.4");
        row("card package without a word", "libpcsclite-dev\t1\tamd64\tPC/SC headers", "");
        row("short word inside another name", "libkf5kirigami2-5\t5\tamd64\tset of components", "");
        row("short word inside another text", "emacs\t1\tall\tGNU Emacs editor", "");
        row("word in the text of another package", "hid-recorder\t1\tall\tRecords HID events", "");
    }
    void cardSoftwareIsChosenByWordAndKind()
    {
        QFETCH(QByteArray, package);
        QTEST(software(package).join('|'), "line");
    }

    void linesAreSortedAndSingle()
    {
        QCOMPARE(software("ii \tpcscd\t1\tamd64\tsmart card\n"
                          "ii \topensc\t2\tamd64\tSmart card\n"
                          "ii \topensc\t2\tall\tSmart card\n"),
                 QStringList({ "opensc Ver: 2", "pcscd Ver: 1" }));
    }

    void signatureProgramIsFoundByItsText()
    {
        const auto packages = PackageDatabase::parse("ii \tvelmor-sign\t7.1\tamd64\tPodpis Elektroniczny\n"
                                                     "ii \tvelmor-sign\t7.0\ti386\tpodpis elektroniczny\n");

        QCOMPARE(PackageDatabase::versionOf(packages, "Podpis elektroniczny", 64), QString("7.1"));
        QCOMPARE(PackageDatabase::versionOf(packages, "Podpis elektroniczny", 32), QString("7.0"));
        QCOMPARE(PackageDatabase::versionOf({}, "Podpis elektroniczny", 64), QString());
    }

    void reportTellsTheSignatureProgramOfEitherWidth()
    {
        FakeDpkg dpkg;
        dpkg.setOutput("ii \tsign\t7.1\tamd64\tPodpis elektroniczny\n"
                       "ii \tsign\t7.0\ti386\tPodpis elektroniczny\n");

        QVERIFY(SysInfo()
                    .info("/opt/velmor", "{readers}")
                    .startsWith("Programy/sterowniki do obsługi kart: \n"
                                "Velmor podpis elektroniczny (32-bit) Ver: 7.0\n"
                                "Velmor podpis elektroniczny Ver: 7.1\n\nCzytniki w systemie: \n"));
    }

    void oneQueryServesAllQuestionsOfAnObject()
    {
        FakeDpkg dpkg;
        dpkg.setOutput("ii \topensc\t2\tamd64\tSmart card\n"
                       "ii \tfirefox-esr\t115.3\tamd64\tbrowser\n"
                       "ii \tsign\t7.1\tamd64\tPodpis elektroniczny\n");
        Os os;

        QCOMPARE(os.cardSoftware(), QStringList { "opensc Ver: 2" });
        QCOMPARE(os.signatureAppVersion(64), QString("7.1"));
        QCOMPARE(os.signatureAppVersion(32), QString());
        QCOMPARE(os.browserVersions().values(), QStringList { "115.3" });
        QCOMPARE(dpkg.timesAsked(), 1);
        Os().cardSoftware();
        QCOMPARE(dpkg.timesAsked(), 2);
    }

    void databaseInTroubleGivesNothing_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::newRow("fails") << QByteArray("echo 'ii \tx\t1\tamd64\tSmart card'; exit 2");
        QTest::newRow("is killed") << QByteArray("echo 'ii \tx\t1\tamd64\tSmart card'; kill -9 $$");
        QTest::newRow("does not end") << QByteArray("echo 'ii \tx\t1\tamd64\tSmart card'; exec sleep 60");
        QTest::newRow("says nothing") << QByteArray("exit 0");
        QTest::newRow("complains") << QByteArray("echo 'ii \tx\t1\tamd64\tSmart card' >&2");
    }
    void databaseInTroubleGivesNothing()
    {
        QFETCH(QByteArray, script);
        const QString process = TestHome::path() + "/query";
        FakeDpkg dpkg;
        dpkg.setScript("echo $$ >'" + QFile::encodeName(process) + "'\n" + script);
        const LogCatcher log;

        QVERIFY(PackageDatabase::installed().isEmpty());

        QCOMPARE(dpkg.timesAsked(), 1);
        // Nothing of it is left, and it was not the toolkit that ended it: that would wait half a minute.
        const pid_t query = readFileText(process).trimmed().toInt();
        QVERIFY(query > 0);
        QTRY_COMPARE(kill(query, 0), -1);
        QVERIFY2(!log.has("Destroyed while process"), qPrintable(log.text()));
    }

    // In no language, whatever the user's is, with none of the program's own variables, and its complaints unread.
    void queryHasSurroundingsOfItsOwn()
    {
        FakeDpkg dpkg;
        dpkg.setScript("echo \"ii \tx\t$LC_ALL\tamd64\t${QT_SCREEN_SCALE_FACTORS-none} $(readlink /proc/$$/fd/2)\"");
        OwnEnvironment::set("QT_SCREEN_SCALE_FACTORS", "2");

        const auto packages = PackageDatabase::installed();

        OwnEnvironment::restore("QT_SCREEN_SCALE_FACTORS");
        QCOMPARE(packages.size(), 1);
        QCOMPARE(packages[0].version, QString("C.UTF-8"));
        QCOMPARE(packages[0].summary, QString("none /dev/null"));
    }

    void systemWithoutPackageDatabaseGivesNothing()
    {
        FakeDpkg dpkg;
        dpkg.remove();

        QVERIFY(PackageDatabase::installed().isEmpty());
        QCOMPARE(Os().cardSoftware(), QStringList());
    }

    void machinesOwnDatabaseIsRead()
    {
        if (QStandardPaths::findExecutable("dpkg-query").isEmpty())
            QSKIP("no dpkg-query here");
        const auto packages = PackageDatabase::installed();
        const auto dpkg = std::find_if(packages.begin(), packages.end(),
                                       [](const PackageDatabase::Package &package) { return package.name == "dpkg"; });

        QVERIFY(dpkg != packages.end());
        QCOMPARE(dpkg->bits, 64);
        QVERIFY(!dpkg->version.isEmpty());
    }
};

VELMOR_TEST(TstPackageDatabase)
#include "tst_package_database_lin.moc"
