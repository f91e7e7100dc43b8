#include "integrator_fixture.h"

#include "support/ordinary_user.h"

// Entries that former versions have left in the profiles, and files that cannot be edited.
class TestIntegratorFiles : public QObject, private IntegratorFixture {
    Q_OBJECT

private slots:
    void initTestCase() { setUpApplication(); }
    void init()
    {
        setUp();
        QVERIFY(OrdinaryUser::letIn({ QDir::homePath() }));
    }
    void cleanup() { tearDown(); }

    void oldEntryOfANewFirefoxIsTakenOutSilently_data()
    {
        QTest::addColumn<QByteArray>("version");
        for (const char *version : { "77.0", "115.0" })
            QTest::newRow(version) << QByteArray(version);
    }
    // The entry of a former version goes in every case, and only the preference counts as a change.
    void oldEntryOfANewFirefoxIsTakenOutSilently()
    {
        QFETCH(QByteArray, version);
        const ProfileFolder files = profile("a.default", version);
        files.put("pkcs11.txt", ProfileFolder::otherModules("\r\n") + oldEntry());
        files.put("user.js", on);
        createChecks();
        QVERIFY(check("Firefox")->isChecked());

        QCOMPARE(submit("Firefox", true).section("<br/><br/>", 0, 0),
                 QString("<span>") + noChangeConnecting + "</span>");

        QCOMPARE(files.content("pkcs11.txt"), ProfileFolder::otherModulesRewritten());
        QCOMPARE(files.content("user.js"), QByteArray(on));
    }

    void entryOfAnOldFirefoxInAnotherFolderStaysBesideTheNewOne_data()
    {
        QTest::addColumn<QByteArray>("version");
        for (const char *version : { "70.0", "76.0", "76.9.1" })
            QTest::newRow(version) << QByteArray(version);
    }
    void entryOfAnOldFirefoxInAnotherFolderStaysBesideTheNewOne()
    {
        QFETCH(QByteArray, version);
        const ProfileFolder files = profile("a.default", version);
        const QByteArray before = ProfileFolder::otherModules("\r\n") + oldEntry();
        files.put("pkcs11.txt", before);
        submit("Firefox", true);
        QCOMPARE(files.content("pkcs11.txt"), before + entry(module()));
        submit("Firefox", false);
        QCOMPARE(files.content("pkcs11.txt"), ProfileFolder::otherModulesRewritten());
    }

    // The version alone tells that the old entry goes, whatever the program.
    void oldEntryOfANewMailProgramMakesRoomForTheNewOne()
    {
        const ProfileFolder files(Os().profilesRoot("Thunderbird") + "m.default", "128.0");
        files.put("pkcs11.txt", ProfileFolder::otherModules("\r\n") + oldEntry());
        createChecks();
        QCOMPARE(integrator->findProfiles("Thunderbird"), 1);

        QCOMPARE(integrator->integrate("Thunderbird"), connected("Thunderbird"));

        QCOMPARE(files.content("pkcs11.txt"), ProfileFolder::otherModulesRewritten() + entry(module()));
        QVERIFY(!files.has("user.js"));
    }

    void entryThatCannotBeTakenOutIsToldAndReportedAsDisconnected()
    {
        const ProfileFolder files = profile("a.default", "70.0");
        const QByteArray before = ProfileFolder::otherModules("\r\n") + entry(module());
        files.put("pkcs11.txt", before);
        createChecks();
        if (!OrdinaryUser::makeReadOnly(files.path("pkcs11.txt")))
            QSKIP("Whoever runs this may write everything");

        QString report;
        {
            const OrdinaryUser user;
            report = integrator->disintegrate("Firefox");
        }

        QCOMPARE(popups->messages, QStringList { "Nie można zapisać pliku: " + files.path("pkcs11.txt") });
        QCOMPARE(report, disconnected("Firefox"));
        QCOMPARE(files.content("pkcs11.txt"), before);
    }

    void profilesAreLookedUpAnewWhileADialogIsUp()
    {
        const ProfileFolder files = profile("a.default", "115.0");
        files.put("pkcs11.txt", ProfileFolder::otherModules("\r\n") + oldEntry());
        files.put("user.js", on);
        createChecks();
        if (!OrdinaryUser::makeReadOnly(files.path("pkcs11.txt")))
            QSKIP("Whoever runs this may write everything");
        popups->meanwhile = [this] { integrator->findProfiles("Firefox"); };

        QString report;
        {
            const OrdinaryUser user;
            report = integrator->integrate("Firefox");
        }

        QCOMPARE(popups->messages.size(), 1);
        QCOMPARE(report, QString(noChangeConnecting));
    }

    void ticksCountThoughThePageIsRebuiltWhileADialogIsUp()
    {
        const ProfileFolder files = profile("a.default", "70.0");
        createChecks();
        for (const QString &row : rows())
            check(row.toLatin1())->setChecked(true);
        QFile::remove(files.path("pkcs11.txt"));
        QVERIFY(QDir().mkdir(files.path("pkcs11.txt")));
        popups->meanwhile = [this] { createChecks(); };

        integrator->checksSubmit(layout);

        QCOMPARE(popups->messages.size(), 1);
        QString report = QString("<span>") + noChangeConnecting + "</span><br/><br/>";
        if (hasFamily()) {
            report += "<span>" + connected(family) + "</span><br/><br/>";
            QCOMPARE(sharedDatabase().content("pkcs11.txt"), entry(module()));
        }
        QCOMPARE(integrator->resultText(), report);
    }

    void databaseThatCannotBeMadeIsTold()
    {
        if (!hasFamily())
            QSKIP("Firefox alone is listed here");
        createChecks();
        QFile pki(QDir::homePath() + "/.pki");
        QVERIFY(pki.open(QIODevice::WriteOnly));
        QCOMPARE(integrator->integrate(family), QString(noChangeConnecting).replace("Firefox", family));
        QCOMPARE(popups->messages, QStringList { "Nie można zapisać pliku: " + pki.fileName() + "/nssdb/pkcs11.txt" });
    }

    void profileThatCannotBeWrittenIsToldAndTheNextIsConnected()
    {
        const ProfileFolder bad = profile("a.default", "70.0");
        const ProfileFolder good = profile("b.default", "70.0");
        createChecks();
        check("Firefox")->setChecked(true);
        QFile::remove(bad.path("pkcs11.txt"));
        QVERIFY(QDir().mkdir(bad.path("pkcs11.txt")));

        integrator->checksSubmit(layout);

        QCOMPARE(popups->messages, QStringList { "Nie można zapisać pliku: " + bad.path("pkcs11.txt") });
        QCOMPARE(good.content("pkcs11.txt"), ProfileFolder::otherModules("\r\n") + entry(module()));
        QVERIFY(integrator->resultText().startsWith("<span>" + connected("Firefox")));
    }

    void profileThatCannotBeWrittenDoesNotHideTheOneBefore()
    {
        profile("a.default", "70.0");
        const ProfileFolder bad = profile("b.default", "70.0");
        createChecks();
        QFile::remove(bad.path("pkcs11.txt"));
        QVERIFY(QDir().mkdir(bad.path("pkcs11.txt")));

        QCOMPARE(integrator->integrate("Firefox"), connected("Firefox"));
    }

    void profileThatStaysConnectedDoesNotHideTheOneBefore()
    {
        const ProfileFolder good = profile("a.default", "128.0");
        const ProfileFolder bad = profile("b.default", "128.0");
        for (const ProfileFolder &files : { good, bad })
            files.put("user.js", on);
        createChecks();
        if (!OrdinaryUser::makeReadOnly(bad.path("user.js")))
            QSKIP("Whoever runs this may write everything");
        QFile::setPermissions(good.path("user.js"), QFile::Permissions(0x6666));

        QString report;
        {
            const OrdinaryUser user;
            report = integrator->disintegrate("Firefox");
        }

        QCOMPARE(good.content("user.js"), QByteArray(off));
        QCOMPARE(bad.content("user.js"), QByteArray(on));
        QCOMPARE(report, disconnected("Firefox"));
    }

    void firefoxThatIsUpdatedMeanwhileIsTakenAsTheNewOne()
    {
        const ProfileFolder old = profile("a.default", "76.0");
        createChecks();
        const ProfileFolder files = profile("a.default", "128.0");

        QCOMPARE(submit("Firefox", true).section("<br/><br/>", 0, 0), "<span>" + connected("Firefox") + "</span>");

        QCOMPARE(files.content("user.js"), QByteArray(on));
        QCOMPARE(files.content("pkcs11.txt"), ProfileFolder::otherModules("\r\n"));
    }

    void fileThatCannotBeWrittenIsWarnedOf()
    {
        const ProfileFolder bad = profile("a.default", "70.0");
        createChecks();
        QFile::remove(bad.path("pkcs11.txt"));
        QVERIFY(QDir().mkdir(bad.path("pkcs11.txt")));

        integrator->integrate("Firefox");
        // As any warning, and not as any information.
        Popup::warning(nullptr, {}, "x");
        Popup::information(nullptr, {}, "x");

        QCOMPARE(popups->icons.size(), 3);
        QCOMPARE(popups->icons[0], popups->icons[1]);
        QVERIFY(popups->icons[0] != popups->icons[2]);
        QCOMPARE(popups->buttons[0], QDialogButtonBox::StandardButtons(QDialogButtonBox::Close));
    }

    void profileThatVanishesChangesNothing()
    {
        const ProfileFolder files = profile("a.default", "128.0");
        createChecks();
        check("Firefox")->setChecked(true);
        QVERIFY(QDir(files.path()).removeRecursively());
        integrator->checksSubmit(layout);
        QVERIFY(integrator->resultText().startsWith(QString("<span>") + noChangeConnecting));
        QVERIFY(popups->messages.isEmpty());
        QVERIFY(!QFile::exists(files.path()));
    }
};

VELMOR_TEST(TestIntegratorFiles)
#include "tst_integrator_files.moc"
