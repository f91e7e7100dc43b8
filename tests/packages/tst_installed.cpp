#include "installation.h"

#include "platform/os.h"
#include "support/profile_folder.h"
#include "windows/desktop.h"

#include "simworld/sim_world.h"

// The installed program in the hands of its user: from the package, in a folder with blanks and Polish letters, with a
// card library in the place that is left for it.
class TestInstalled : public QObject, private Installation {
    Q_OBJECT

private:
    static constexpr int stepPatience = 60000;
    static constexpr char reader[] = "Czytnik Żółty";

    std::unique_ptr<sim::SimWorld> world;

    static QString root() { return oddFolder; }

    // Where the form has it.
    enum Place { ChangePin, SettingsButton, FirefoxBox, Connect, Cross };
    static QPoint pointOf(Place place)
    {
        static const QMap<Place, QPoint> points = { { ChangePin, { 374, 431 } },
                                                    { SettingsButton, { 746, 669 } },
                                                    { FirefoxBox, { 87, 335 } },
                                                    { Connect, { 157, 563 } },
                                                    { Cross, { 883, 40 } } };
        return points[place];
    }
    static HWND windowOf(const QProcess *process)
    {
        for (HWND window : Desktop::windowsOf(process->processId())) {
            RECT box = {};
            GetWindowRect(window, &box);
            if (box.right - box.left > 800)
                return window;
        }
        return nullptr;
    }
    static void press(const QProcess *process, Place place)
    {
        Desktop::click(windowOf(process), pointOf(place).x(), pointOf(place).y());
    }
    static void type(const QByteArray &keys)
    {
        for (const char key : keys) {
            for (const DWORD action : { DWORD(0), DWORD(KEYEVENTF_KEYUP) }) {
                INPUT input = {};
                input.type = INPUT_KEYBOARD;
                input.ki.wVk = static_cast<WORD>(key);
                input.ki.dwFlags = action;
                SendInput(1, &input, sizeof input);
            }
            QTest::qWait(20);
        }
    }

    // With nothing but the system's folders to look for DLLs, as at a user's.
    static StringMap bareSurroundings()
    {
        return { { "PATH", "C:\\windows\\system32;C:\\windows" }, { "QT_PLUGIN_PATH", QString() } };
    }
    QProcess *start(const QStringList &options = { QStringLiteral("-r"), QString("0:%1||").arg(reader) })
    {
        return startProgram(options, bareSurroundings(), programIn(root()));
    }
    QProcess *startWithCard()
    {
        QProcess *process = start();
        const bool read = QTest::qWaitFor([] { return logHas("all certs loaded"); }, stepPatience);
        if (!read)
            qWarning("%s", qPrintable(logText()));
        return read && QTest::qWaitFor([&] { return windowOf(process) != nullptr; }, stepPatience) ? process : nullptr;
    }

    // What a user sees of a start; empty if there is nothing to see.
    static QString verdictOn(const QProcess *process)
    {
        QString verdict;
        const auto look = [&] {
            if (process->state() == QProcess::NotRunning)
                verdict = process->error() == QProcess::FailedToStart || process->exitCode() != 0 ? "refused" : "ended";
            else if (Desktop::messageOf(process->processId()).contains("plugin"))
                verdict = "message";
            else if (logHas("all certs loaded"))
                verdict = "runs";
            return !verdict.isEmpty();
        };
        return QTest::qWaitFor(look, stepPatience) ? verdict : QString();
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(QFile::exists(package()), "no package; ./dev package makes it");
        qputenv("VELMOR_SIM_CARDS", VELMOR_TEST_ROOT "/devkit/cards");
        QCOMPARE(installInto(oddFolder), int(Success));
        QVERIFY(layLibrary(oddFolder));
    }
    void cleanupTestCase()
    {
        // What lies in the folder is what was laid there: the program writes nothing beside itself.
        QCOMPARE(damageOf(oddFolder), QStringList());
        QStringList wanted = filesOf(shipped()) << "64/velmor-pkcs11-64.dll";
        wanted.sort();
        QCOMPARE(filesOf(QDir(oddFolder)), wanted);
        QCOMPARE(removeProduct(), int(Success));
    }
    void init()
    {
        QDir().mkpath(logFolder());
        world = std::make_unique<sim::SimWorld>();
        QVERIFY2(world->reset(), world->error().c_str());
        QVERIFY2(world->insertCard(reader, "zaneta"), world->error().c_str());
    }
    void cleanup()
    {
        killAll();
        world.reset();
        QDir(logFolder()).removeRecursively();
    }

    void cardIsReadByTheLibraryInTheFolder()
    {
        QVERIFY(startWithCard());

        const QString library = QDir::toNativeSeparators(root()) + "\\64\\velmor-pkcs11-64.dll";
        QVERIFY2(logHas("Loading:  " + library), qPrintable(logText()));
    }

    void pinIsChanged()
    {
        QProcess *process = startWithCard();
        QVERIFY(process);
        // The page moves in.
        QTest::qWait(1500);
        press(process, ChangePin);
        QTRY_VERIFY2_WITH_TIMEOUT(logHas("Container: "), qPrintable(logText()), stepPatience);
        QTest::qWait(1500);
        type("1234\t4826\t4826\t\r");

        QTRY_VERIFY2_WITH_TIMEOUT(logHas("Change pin status: "), qPrintable(logText()), stepPatience);
        QCOMPARE(QString::fromStdString(world->cardState("zaneta")->pins[sim::Authentication].pin), QString("4826"));
        for (const char *secret : { "1234", "4826" })
            QVERIFY(!logText().contains(secret));
    }

    void firefoxIsConnected()
    {
        const QString list = uninstall() + "\\Mozilla Firefox 60.0 (x64 pl)";
        QSettings firefox(list, QSettings::NativeFormat);
        firefox.setValue("DisplayName", "Mozilla Firefox (x64 pl)");
        firefox.setValue("DisplayVersion", "60.0");
        firefox.setValue("InstallLocation", "C:\\Program Files\\Mozilla Firefox");
        firefox.sync();
        // One from before and one from after the browser took modules of the system by itself.
        const ProfileFolder old(Os().profilesRoot("Firefox") + "a.default", "60.0", "WINNT_x86_64-msvc");
        const ProfileFolder recent(Os().profilesRoot("Firefox") + "b.default", "128.0", "WINNT_x86_64-msvc");
        QProcess *process = startWithCard();
        QVERIFY(process);
        QTest::qWait(1500);
        press(process, SettingsButton);
        QTRY_VERIFY2_WITH_TIMEOUT(logHas("show settings"), qPrintable(logText()), stepPatience);
        QTest::qWait(1500);
        press(process, FirefoxBox);
        QTest::qWait(300);
        press(process, Connect);

        QTRY_VERIFY2_WITH_TIMEOUT(logHas("submit checks"), qPrintable(logText()), stepPatience);
        const QByteArray library = (QDir::toNativeSeparators(root()) + "\\64\\velmor-pkcs11-64.dll").toUtf8();
        QTRY_VERIFY2_WITH_TIMEOUT(old.content("pkcs11.txt").contains("library=" + library),
                                  old.content("pkcs11.txt").constData(), stepPatience);
        const char *const preference = "\"security.osclientcerts.autoload\", true";
        QTRY_VERIFY_WITH_TIMEOUT(recent.has("user.js") && recent.content("user.js").contains(preference), stepPatience);
        QSettings(list, QSettings::NativeFormat).remove("");
        QVERIFY(QDir(Os().profilesRoot("Firefox")).removeRecursively());
    }

    void secondStartEndsAndTheFirstStays()
    {
        QProcess *first = startWithCard();
        QVERIFY(first);

        const Outcome second = runToEnd({ "-p", "help" }, bareSurroundings(), programIn(root()));

        QCOMPARE(second.code, 1);
        QCOMPARE(first->state(), QProcess::Running);
    }

    void crossEndsIt()
    {
        QProcess *process = startWithCard();
        QVERIFY(process);
        QTest::qWait(1500);

        press(process, Cross);

        QCOMPARE(outcomeOf(*process).code, 0);
    }

    void missingDocumentsChangeNothingElse()
    {
        for (const char *folder : { "Licenses", "statics", "policies" })
            QVERIFY(QDir(root() + '/' + folder).removeRecursively());

        QVERIFY(startWithCard());
        killAll();

        QCOMPARE(repair(), int(Success));
        QCOMPARE(damageOf(root()), QStringList());
    }

    void missingFileIsToldOrDoneWithout_data()
    {
        QTest::addColumn<QString>("file");
        for (const QString &file : filesOf(shipped())) {
            if (file.startsWith("64/"))
                QTest::newRow(file.toLatin1().constData()) << file;
        }
    }
    // Never nothing at all: the system names the DLL, or the toolkit its plugin, or the card is shown all the same.
    void missingFileIsToldOrDoneWithout()
    {
        QFETCH(QString, file);
        const QString path = root() + '/' + file;
        const QString aside = root() + "/aside";
        QVERIFY(QFile::rename(path, aside));

        const QString verdict = verdictOn(start());
        killAll();
        QVERIFY(QFile::rename(aside, path));

        static const QStringList plugins { "64/platforms/qwindows.dll" };
        static const QRegularExpression dispensable("^64/(iconengines|imageformats|styles|translations)/|^64/qt.conf$");
        const QString wanted = plugins.contains(file) ? "message"
            : dispensable.match(file).hasMatch()      ? "runs"
                                                      : "refused";
        QCOMPARE(verdict, wanted);
    }

    void repairBringsBackEveryFile()
    {
        for (const QString &file : filesOf(shipped()))
            QVERIFY(QFile::remove(root() + '/' + file));

        QCOMPARE(repair(), int(Success));

        QCOMPARE(damageOf(root()), QStringList());
        QVERIFY(startWithCard());
    }

    void upgradeOverARunningProgram()
    {
        QCOMPARE(removeProduct(), int(Success));
        QCOMPARE(install(variant("older.msi"), { "INSTALLDIR=" + QDir::toNativeSeparators(root()) }), int(Success));
        QProcess *process = startWithCard();
        QVERIFY(process);

        // Into the folder of the one before, which nobody names.
        const int code = install(package());

        // Replaced at once, or refused with the older version whole: never something between.
        qInfo("msiexec: %d", code);
        QCOMPARE(entries().size(), 1);
        killAll();
        if (code != Success)
            QCOMPARE(install(package()), int(Success));
        QCOMPARE(entry("DisplayVersion"), QString(VELMOR_TEST_FULL_VERSION));
        QCOMPARE(damageOf(root()), QStringList());
        QDir(logFolder()).removeRecursively();
        QDir().mkpath(logFolder());
        QVERIFY(startWithCard());
    }
};

VELMOR_TEST(TestInstalled)
#include "tst_installed.moc"
