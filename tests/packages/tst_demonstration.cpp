#include "installation.h"

#include "windows/desktop.h"

#include <tlhelp32.h>

// The demonstration as a trainer has it: unpacked into a folder with blanks and Polish letters, and opened.
class TestDemonstration : public QObject, private Installation {
    Q_OBJECT

private:
    static constexpr int stepPatience = 60000;

    static QString root() { return variant(QString::fromUtf8("Pokaz żółty/velmor-demo")); }
    static QString launcher() { return root() + "/velmor-demo.exe"; }
    static QString demoLog() { return "C:/tmp/velmor-demo/velmor_manager.log"; }
    static bool demoHas(const QByteArray &text) { return contentOf(demoLog()).contains(text); }
    static QSettings product() { return { "HKEY_CURRENT_USER\\Software\\velmor", QSettings::NativeFormat }; }

    static QList<DWORD> processesOf(const QString &program)
    {
        QList<DWORD> found;
        const HANDLE all = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
        PROCESSENTRY32W entry = {};
        entry.dwSize = sizeof entry;
        for (BOOL more = Process32FirstW(all, &entry); more; more = Process32NextW(all, &entry)) {
            if (QString::fromWCharArray(entry.szExeFile).compare(program, Qt::CaseInsensitive) == 0)
                found << entry.th32ProcessID;
        }
        CloseHandle(all);
        return found;
    }
    static HWND windowOf(DWORD process)
    {
        for (HWND window : Desktop::windowsOf(process)) {
            RECT box = {};
            GetWindowRect(window, &box);
            if (box.right - box.left > 800)
                return window;
        }
        return nullptr;
    }
    static void endEverything()
    {
        for (const char *name :
             { "Manager.exe", "velmor_monitor.exe", "velmor_can.exe", "velmor-panel.exe", "velmor-demo.exe" }) {
            for (const DWORD id : processesOf(name)) {
                const HANDLE process = OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id);
                TerminateProcess(process, 99);
                WaitForSingleObject(process, 5000);
                CloseHandle(process);
            }
        }
    }

    // Nothing of the test's own world.
    static StringMap surroundings()
    {
        return { { "VELMOR_SIM_WORLD", QString() },
                 { "VELMOR_SIM_CARDS", QString() },
                 { "PATH", "C:\\windows\\system32;C:\\windows" },
                 { "QT_PLUGIN_PATH", QString() } };
    }
    QProcess *open(const QStringList &options = {})
    {
        QProcess *process = startProgram(options, surroundings(), launcher());
        const bool read = QTest::qWaitFor([] { return demoHas("all certs loaded"); }, stepPatience);
        if (!read)
            qWarning("%s", contentOf(demoLog()).constData());
        return read ? process : nullptr;
    }

private slots:
    void initTestCase() { QVERIFY2(QFile::exists(launcher()), "nothing unpacked; tests/packages/run does it"); }
    void init() { QVERIFY(QDir().mkpath("C:/tmp/velmor-demo")); }
    void cleanup()
    {
        endEverything();
        killAll();
        QDir("C:/tmp").removeRecursively();
    }

    void opensOnACardByItself()
    {
        QVERIFY(open());
        QCOMPARE(processesOf("Manager.exe").size(), 1);
        QTRY_VERIFY_WITH_TIMEOUT(windowOf(processesOf("Manager.exe").value(0)), stepPatience);
    }

    void cardsAreChangedWhileItRuns()
    {
        QVERIFY(open());
        const QString sim = root() + "/devkit/velmor-sim.exe";
        QTRY_VERIFY_WITH_TIMEOUT(!processesOf("velmor_monitor.exe").isEmpty(), stepPatience);
        QTest::qWait(2000);

        QCOMPARE(runToEnd({ "remove" }, surroundings(), sim).code, 0);
        QTest::qWait(1000);
        QCOMPARE(runToEnd({ "insert", "zaneta" }, surroundings(), sim).code, 0);

        QTRY_COMPARE_WITH_TIMEOUT(contentOf(demoLog()).count("all certs loaded"), 2, stepPatience);
    }

    void panelOpensBesideItAndComesBackWithASecondStart()
    {
        QVERIFY(open());
        QTRY_COMPARE_WITH_TIMEOUT(processesOf("velmor-panel.exe").size(), 1, stepPatience);
        const DWORD panel = processesOf("velmor-panel.exe").first();
        QTRY_VERIFY_WITH_TIMEOUT(!Desktop::windowsOf(panel).isEmpty(), stepPatience);
        const HANDLE process = OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, panel);
        TerminateProcess(process, 0);
        WaitForSingleObject(process, 5000);
        CloseHandle(process);

        runToEnd({}, surroundings(), launcher());

        QTRY_COMPARE_WITH_TIMEOUT(processesOf("velmor-panel.exe").size(), 1, stepPatience);
    }

    void installedProductAndItsSettingsStayAsTheyAre()
    {
        QVERIFY(QDir().mkpath(logFolder()));
        product().setValue("config/GUID", "of the product");
        product().setValue("config/theme", "dark");
        product().sync();

        QVERIFY(open());

        QSettings own("HKEY_CURRENT_USER\\Software\\velmor-demo", QSettings::NativeFormat);
        QVERIFY(!own.value("config/GUID").toString().isEmpty());
        QCOMPARE(product().value("config/GUID").toString(), QString("of the product"));
        QSettings written("HKEY_CURRENT_USER\\Software\\velmor", QSettings::NativeFormat);
        QCOMPARE(written.allKeys(), QStringList({ "config/GUID", "config/theme" }));
        QVERIFY(QDir(logFolder()).isEmpty());
        written.remove("");
    }

    void runsBesideAnInstalledProgram()
    {
        QCOMPARE(install(package()), int(Success));
        QVERIFY(QDir().mkpath(logFolder()));
        startProgram({ "-p", "help" }, surroundings(), programIn(usualFolder));
        QTRY_VERIFY_WITH_TIMEOUT(logHas("show help"), stepPatience);

        QVERIFY(open());

        QCOMPARE(processesOf("Manager.exe").size(), 2);
        endEverything();
        QCOMPARE(removeProduct(), int(Success));
    }

    void secondStartEndsAndTheFirstStays()
    {
        QProcess *first = open();
        QVERIFY(first);

        const Outcome second = runToEnd({}, surroundings(), launcher());

        QCOMPARE(second.code, 1);
        QCOMPARE(first->state(), QProcess::Running);
        QCOMPARE(processesOf("Manager.exe").size(), 1);
    }

    void nothingRunsOnWhenTheWindowIsClosed()
    {
        QProcess *process = open();
        QVERIFY(process);
        const DWORD manager = processesOf("Manager.exe").value(0);
        QTRY_VERIFY_WITH_TIMEOUT(windowOf(manager), stepPatience);
        QTest::qWait(1500);

        Desktop::click(windowOf(manager), 883, 40);

        QCOMPARE(outcomeOf(*process, stepPatience).code, 0);
        for (const char *name : { "Manager.exe", "velmor_monitor.exe", "velmor_can.exe", "velmor-panel.exe" })
            QTRY_VERIFY2_WITH_TIMEOUT(processesOf(name).isEmpty(), name, stepPatience);
    }

    void archiveThatWasNotUnpackedWholeIsTold()
    {
        const QString program = root() + "/64/Manager.exe";
        QVERIFY(QFile::rename(program, root() + "/aside"));

        QProcess *process = startProgram({}, surroundings(), launcher());
        const bool told = QTest::qWaitFor([&] { return Desktop::messageOf(process->processId()).contains("Rozpakuj"); },
                                          stepPatience);
        Desktop::confirmMessageOf(process->processId());
        const int code = outcomeOf(*process).code;
        QVERIFY(QFile::rename(root() + "/aside", program));

        QVERIFY(told);
        QCOMPARE(code, 1);
    }
};

VELMOR_TEST(TestDemonstration)
#include "tst_demonstration.moc"
