#include "integrator_fixture.h"

#include "browser/integrator_checks.h"

// Boxes, edits and reports of the browser integration on a home with hand-made profiles.
class TestIntegrator : public QObject, private IntegratorFixture {
    Q_OBJECT

    // A place for boxes in the order of the keyboard.
    struct BoxesBetweenButtons {
        BoxesBetweenButtons()
        {
            auto *column = new QVBoxLayout(&window);
            column->addWidget(ahead);
            column->addLayout(checks);
            column->addWidget(behind);
        }
        QWidget window;
        QPushButton *ahead = new QPushButton("a");
        QPushButton *behind = new QPushButton("b");
        QVBoxLayout *checks = new QVBoxLayout;
    };

private slots:
    void initTestCase() { setUpApplication(); }
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void whatIsInstalledIsListed()
    {
        LogCatcher log;
        QCOMPARE(integrator->findApps(), rows().size());
        QVERIFY(log.has("applications that can be integrated:  " + rows().join(", ")));
    }

    void withoutFirefoxTheFamilyAloneIsListed()
    {
        if (!hasFamily())
            QSKIP("Firefox alone is listed here");
        programs.reset();
        programs = std::make_unique<FakePrograms>();
        programs->install("bin/thunderbird");
        const ProfileFolder mail(Os().profilesRoot("Thunderbird") + "a.default", "128.0");
        QCOMPARE(integrator->findApps(), 1);
        QCOMPARE(createChecks(), 1);
        QCOMPARE(page->findChildren<QCheckBox *>().size(), 1);
        QVERIFY(check(family));
    }

    void boxesNameTheirApplications()
    {
        LogCatcher log;
        QCOMPARE(createChecks(), rows().size());
        QCOMPARE(layout->count(), rows().size());
        QCOMPARE(check("Firefox")->text(), QString("Przeglądarce Firefox"));
        if (hasFamily())
            QCOMPARE(check(family)->text(), QString("Przeglądarkach: Chrome, Chromium, Edge"));
        for (const QString &row : rows())
            QCOMPARE(check(row.toLatin1())->cursor().shape(), Qt::PointingHandCursor);
        QVERIFY(log.has("pkcs-i386: " + App::instance()->pkcsLibPath("i386")));
        QVERIFY(log.has("pkcs-x86_64: " + App::instance()->pkcsLibPath("x86_64")));
        QVERIFY(log.has("create checks fin"));
    }

    void boxesFollowTheWidgetAheadInTheirOrder()
    {
        BoxesBetweenButtons boxes;

        integrator->checksCreate(boxes.checks, boxes.ahead);

        QWidget *next = boxes.ahead;
        for (const QString &row : rows()) {
            next = next->nextInFocusChain();
            QCOMPARE(next->objectName(), row);
        }
        QCOMPARE(next->nextInFocusChain(), boxes.behind);
    }

    void nameOfSeveralBrowsersIsInThePlural()
    {
        BoxesBetweenButtons boxes;

        addApplicationChecks(
            boxes.checks, { "Firefox", "Alfa, Beta" }, [](const QString &) { return true; }, boxes.ahead);

        const auto textOf = [&](int at) {
            return qobject_cast<QCheckBox *>(boxes.checks->itemAt(at)->widget())->text();
        };
        QCOMPARE(textOf(0), QString("Przeglądarce Firefox"));
        QCOMPARE(textOf(1), QString("Przeglądarkach: Alfa, Beta"));
    }

    void withoutAnApplicationALabelSaysSo()
    {
        BoxesBetweenButtons boxes;

        addApplicationChecks(
            boxes.checks, {}, [](const QString &) { return true; }, boxes.ahead);

        QCOMPARE(boxes.checks->count(), 1);
        const auto *label = qobject_cast<QLabel *>(boxes.checks->itemAt(0)->widget());
        QVERIFY(label);
        QCOMPARE(label->text(), QString("Brak zainstalowanych przeglądarek wymagających integracji"));
        QVERIFY(label->wordWrap());
        QCOMPARE(label->property("class").toString(), QString("no_apps_to_integrity"));
        QCOMPARE(label->focusPolicy(), Qt::StrongFocus);
        QCOMPARE(boxes.ahead->nextInFocusChain(), label);

        integrator->checksSubmit(boxes.checks);
        QCOMPARE(integrator->resultText(), QString());
        Integrator::checksClear(boxes.checks);
        addApplicationChecks(
            boxes.checks, {}, [](const QString &) { return true; }, nullptr);
        QCOMPARE(boxes.checks->count(), 1);
    }

    void clearedLayoutLosesEverythingInIt()
    {
        const QPointer<QWidget> label = new QLabel("a");
        const QPointer<QWidget> inner = new QLabel("b");
        const QPointer<QLayout> sub = new QHBoxLayout;
        sub->addWidget(inner);
        layout->addWidget(label);
        layout->addItem(sub);
        layout->addStretch();

        Integrator::checksClear(layout);

        QCOMPARE(layout->count(), 0);
        QVERIFY(!label && !inner && !sub);
        Integrator::checksClear(layout);
    }

    void itemsOfAnotherKindAreSkipped()
    {
        createChecks();
        layout->insertWidget(0, new QLabel("a"));
        layout->addStretch();
        integrator->checksSubmit(layout);
        QCOMPARE(integrator->resultText().count("<span>"), rows().size());
    }

    void firefoxThatWasNeverStartedAsksForAStart()
    {
        QCOMPARE(submit("Firefox", true).section("<br/><br/>", 0, 0), "<span>" + noProfile("Firefox") + "</span>");
        createChecks();
        QVERIFY(!check("Firefox")->isChecked());
        QVERIFY(!QFile::exists(Os().profilesRoot("Firefox")));
        // Nothing to disconnect is no error.
        QCOMPARE(integrator->disintegrate("Firefox"), QString(noChangeDisconnecting));
    }

    void folderWithTheOldDatabaseAloneIsDropped()
    {
        const ProfileFolder old = profile("old.default", "3.0");
        QFile::remove(old.path("pkcs11.txt"));
        old.put("secmod.db", "");
        QCOMPARE(Os().profileDirs("Firefox").size(), 1);
        QCOMPARE(integrator->findProfiles("Firefox"), 0);
        QVERIFY(!integrator->profileExist("Firefox"));
    }

    void profilesAreCountedOverAllApplicationsAndLogged()
    {
        const ProfileFolder a = profile("a.default", "128.0");
        const ProfileFolder mail(Os().profilesRoot("Thunderbird") + "m.default", "115.0");
        LogCatcher log;
        QCOMPARE(integrator->findProfiles("Firefox"), 1);
        QVERIFY2(log.has("profile a.default is sql , app:  Firefox 128"), qPrintable(log.text()));
        QVERIFY(integrator->profileExist("Firefox"));
        QVERIFY(!integrator->profileExist("Thunderbird"));
        QVERIFY(!integrator->profileExist("firefox"));
        QCOMPARE(integrator->findProfiles("Thunderbird"), 2);
        QCOMPARE(integrator->findProfiles("Firefox"), 2);
        QVERIFY(QDir(a.path()).removeRecursively());
        QCOMPARE(integrator->findProfiles("Firefox"), 2);
    }

    void connectedProfileTicksTheBox()
    {
        const ProfileFolder files = profile("a.default", "128.0");
        createChecks();
        QVERIFY(!check("Firefox")->isChecked());
        files.put("user.js", on);
        createChecks();
        QVERIFY(check("Firefox")->isChecked());
        if (hasFamily())
            QVERIFY(!check(family)->isChecked());
    }

    void profilesOfAnotherApplicationDoNotCount()
    {
        const ProfileFolder browser = profile("a.default", "128.0");
        browser.put("user.js", on);
        const ProfileFolder mail(Os().profilesRoot("Thunderbird") + "m.default", "115.0");
        createChecks();
        QCOMPARE(integrator->findProfiles("Thunderbird"), 2);

        QVERIFY(integrator->isIntegrated("Firefox"));
        QVERIFY(!integrator->isIntegrated("Thunderbird"));
    }

    void oneOfTwoProfilesLeavesTheBoxEmptyAndTheButtonConnectsTheRest()
    {
        const ProfileFolder first = profile("a.default", "128.0");
        const ProfileFolder second = profile("b.default", "128.0");
        first.put("user.js", on);
        createChecks();
        QVERIFY(!check("Firefox")->isChecked());

        QCOMPARE(submit("Firefox", true).section("<br/><br/>", 0, 0), "<span>" + connected("Firefox") + "</span>");
        QCOMPARE(second.content("user.js"), QByteArray(on));

        // Both are connected now, and the box stays as it is.
        createChecks();
        QVERIFY(check("Firefox")->isChecked());
        QCOMPARE(submit("Firefox", true).section("<br/><br/>", 0, 0),
                 QString("<span>") + noChangeConnecting + "</span>");

        QCOMPARE(submit("Firefox", false).section("<br/><br/>", 0, 0), "<span>" + disconnected("Firefox") + "</span>");
        QCOMPARE(first.content("user.js"), QByteArray(off));
        QCOMPARE(second.content("user.js"), QByteArray(off));
    }

    void applicationWithAProfileIsNamedInTheLog()
    {
        profile("a.default", "128.0");
        createChecks();
        const LogCatcher log;

        integrator->integrate("Firefox");

        QCOMPARE(log.lines().mid(0, 2), QStringList({ "integrate:  Firefox", "Firefox" }));
    }

    void emptyBoxOfWhatWasNeverConnectedChangesNothing()
    {
        const ProfileFolder files = profile("a.default", "128.0");
        QCOMPARE(submit("Firefox", false).section("<br/><br/>", 0, 0),
                 QString("<span>") + noChangeDisconnecting + "</span>");
        QVERIFY(!files.has("user.js"));
        QCOMPARE(files.content("pkcs11.txt"), ProfileFolder::otherModules("\r\n"));
    }

    void bothReportsAppearInTheOrderOfTheBoxes()
    {
        if (!hasFamily())
            QSKIP("Firefox alone is listed here");
        const ProfileFolder files = profile("a.default", "128.0");
        LogCatcher log;
        createChecks();
        check("Firefox")->setChecked(true);
        check(family)->setChecked(true);
        integrator->checksSubmit(layout);
        QCOMPARE(integrator->resultText(),
                 "<span>" + connected("Firefox") + "</span><br/><br/><span>" + connected(family) + "</span><br/><br/>");
        QVERIFY(log.has("submit checks"));
        QVERIFY(log.has("integrate:  Firefox"));
        QVERIFY(log.has("Integration Chrome "));

        check("Firefox")->setChecked(false);
        check(family)->setChecked(false);
        integrator->checksSubmit(layout);
        QCOMPARE(integrator->resultText(),
                 "<span>" + disconnected("Firefox") + "</span><br/><br/><span>" + disconnected(family)
                     + "</span><br/><br/>");
        QVERIFY(log.has("disintegrate:  Firefox"));
    }

    void oldFirefoxGetsTheWholeEntry()
    {
        const ProfileFolder files = profile("a.default", "76.0");
        QCOMPARE(integrator->findApps(), rows().size());
        submit("Firefox", true);
        QCOMPARE(files.content("pkcs11.txt"), ProfileFolder::otherModules("\r\n") + entry(module()));
        QVERIFY(!files.has("user.js"));
        createChecks();
        QVERIFY(check("Firefox")->isChecked());

        submit("Firefox", false);
        QCOMPARE(files.content("pkcs11.txt"), ProfileFolder::otherModulesRewritten());
    }

    void sharedDatabaseIsMadeWithTheEntry()
    {
        if (!hasFamily())
            QSKIP("Firefox alone is listed here");
        createChecks();
        QCOMPARE(integrator->integrate(family), connected(family));
        const ProfileFolder files = sharedDatabase();
        QCOMPARE(files.content("pkcs11.txt"), entry(module()));
        QVERIFY(files.has("key4.db") && files.has("cert9.db"));
        QVERIFY(integrator->isIntegrated(family));
        QCOMPARE(integrator->integrate(family), QString(noChangeConnecting).replace("Firefox", family));
        QCOMPARE(integrator->disintegrate(family), disconnected(family));
        QCOMPARE(files.content("pkcs11.txt"), QByteArray());
    }

    // Its profile is made by connecting alone, so a new run knows nothing of it.
    void boxOfTheFamilyIsEmptyInANewRun()
    {
        if (!hasFamily())
            QSKIP("Firefox alone is listed here");
        submit(family, true);
        createChecks();
        QVERIFY(check(family)->isChecked());
        integrator = std::make_unique<Integrator>(App::instance(), nullptr);
        createChecks();
        QVERIFY(!check(family)->isChecked());
        QCOMPARE(integrator->disintegrate(family), QString(noChangeDisconnecting).replace("Firefox", family));
        QCOMPARE(sharedDatabase().content("pkcs11.txt"), entry(module()));
    }
};

VELMOR_TEST(TestIntegrator)
#include "tst_integrator.moc"
