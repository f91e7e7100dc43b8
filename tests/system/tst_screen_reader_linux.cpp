#include "system/story_runs.h"

#include "base/common.h"
#include "platform/os.h"
#include "support/fake_programs.h"
#include "support/profile_folder.h"

#include "simworld/sim_world.h"

// The program as a blind person has it: on a display of its own, found, read and worked over AT-SPI and by keys alone,
// from the home page to the result. The stories are told in Python, by the desktop's own client of that interface.
class TestScreenReader : public QObject, private StoryRuns {
    Q_OBJECT

private slots:
    void initTestCase() { beginStories(); }
    void init() { QVERIFY(world.reset()); }

    void pinIsChangedByKeyboardAndEarAlone()
    {
        QVERIFY(world.insertCard("Czytnik Alfa", "anna"));

        runStory({ "change_pin.py", siblingPath("velmor_send"), program(), "-r", "0:Czytnik Alfa||" }, {});

        QCOMPARE(world.cardState("anna")->pins[sim::Authentication].pin, std::string("4826"));
        QCOMPARE(world.cardState("anna")->pins[sim::Authentication].tries, 3);
    }

    void pinIsUnblockedByKeyboardAndEarAlone()
    {
        QVERIFY(world.insertCard("Czytnik Alfa", "locked-authorization"));
        // A slow card: the tile has the focus long before the photo brings it its name.
        QVERIFY(world.setDelay(40));

        runStory("unblock_pin.py");

        QCOMPARE(world.cardState("locked-authorization")->pins[sim::Authorization].pin, std::string("482615"));
        QCOMPARE(world.cardState("locked-authorization")->pukTries, 3);
    }

    void helpPageIsWorkedByKeyboardAndEarAlone()
    {
        QVERIFY(world.insertCard("Czytnik Alfa", "anna"));
        // Stands for whatever opens links on a desktop, and writes down what it was given.
        const QString opener = TestHome::path() + "/bin/xdg-open";
        const QString opened = TestHome::path() + "/opened";
        QDir().mkpath(QFileInfo(opener).path());
        QVERIFY(writeFileBytes(opener, "#!/bin/sh\nprintf '%s\\n' \"$@\" >>'" + opened.toLocal8Bit() + "'\n"));
        QVERIFY(QFile::setPermissions(opener, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));

        runStory({ "help_page.py", opened, logFolder(), programIn(VELMOR_TEST_FAMILY), "-p", "help" },
                 { { "PATH", QFileInfo(opener).path() + ':' + qEnvironmentVariable("PATH") }, { "BROWSER", {} } });

        endFamily();
    }

    void settingsPageIsWorkedByKeyboardAndEarAlone()
    {
        QVERIFY(world.insertCard("Czytnik Alfa", "anna"));
        const FakePrograms programs(qEnvironmentVariable("PATH"));
        programs.install("bin/firefox");
        const ProfileFolder profile(Os().profilesRoot("Firefox") + "a.default", "128.0");

        runStory({ "settings_page.py", profile.path("user.js"), program(), "-r", "0:Czytnik Alfa||" }, {});

        QCOMPARE(profile.content("user.js"), QByteArray("user_pref(\"security.osclientcerts.autoload\", false);\r\n"));
    }

    void panelIsWorkedByKeyboardAndEarAlone()
    {
        runStory({ "panel.py", VELMOR_TEST_ROOT "/devkit/velmor-panel" }, {});

        // The lesson of the lost PIN, and nothing of what was done before it.
        QVERIFY(!world.readers().empty());
        QCOMPARE(world.readers().at(0).card, std::string("anna"));
        QCOMPARE(world.cardState("anna")->pins[sim::Authorization].tries, 0);
        QCOMPARE(world.cardState("anna")->pukTries, 3);
        const auto events = world.readerEvents();
        QCOMPARE(events.back().what, std::string("inserted"));
    }
};

VELMOR_TEST(TestScreenReader)
#include "tst_screen_reader_linux.moc"
