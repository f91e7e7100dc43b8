#include "system/program_runs.h"

#include "base/settings.h"

#include <windows.h>

// Where the program keeps things on Windows, looked at without the toolkit: registry, log folder, the user's profile.
class TestWindowsPlaces : public QObject, private ProgramRuns {
    Q_OBJECT

private:
    static constexpr wchar_t branch[] = L"Software\\velmor\\config";

    // The text that stands under a name in a branch of the registry.
    static QString inRegistry(HKEY root, const wchar_t *name)
    {
        wchar_t text[256] = {};
        DWORD size = sizeof text;
        if (RegGetValueW(root, branch, name, RRF_RT_REG_SZ, nullptr, text, &size) != ERROR_SUCCESS)
            return {};
        return QString::fromWCharArray(text);
    }

    static void writeToRegistry(HKEY root, const wchar_t *name, const QString &text)
    {
        HKEY key = nullptr;
        QCOMPARE(RegCreateKeyW(root, branch, &key), LONG(ERROR_SUCCESS));
        const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
        RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE *>(text.utf16()), size);
        RegCloseKey(key);
    }

private slots:
    void cleanup()
    {
        killAll();
        QDir(logFolder()).removeRecursively();
        RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\velmor");
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"Software\\velmor");
    }

    void testsRunAsAUserWithPolishLettersInHisName()
    {
        QVERIFY2(QDir::tempPath().contains("Grażyna Żółć"), qPrintable(QDir::tempPath()));
    }

    void firstStartLeavesItsGuidInTheUsersBranch()
    {
        QCOMPARE(runToEnd({ "-t" }).code, 0);

        QCOMPARE(inRegistry(HKEY_CURRENT_USER, L"GUID").size(), 64);
        QVERIFY(inRegistry(HKEY_LOCAL_MACHINE, L"GUID").isEmpty());
    }

    void guidInTheMachinesBranchIsEnough()
    {
        writeToRegistry(HKEY_LOCAL_MACHINE, L"GUID", "of the machine");
        writeToRegistry(HKEY_CURRENT_USER, L"e-code:", "remembered");

        QCOMPARE(runToEnd({ "-t" }).code, 0);

        QVERIFY(inRegistry(HKEY_CURRENT_USER, L"GUID").isEmpty());
        QCOMPARE(inRegistry(HKEY_CURRENT_USER, L"e-code:"), QString("remembered"));
    }

    void valuesOfAnInstallerAreRead()
    {
        writeToRegistry(HKEY_LOCAL_MACHINE, L"theme", "dark");
        Settings settings;
        QCOMPARE(settings.value(SettingsKey::theme).toString(), QString("dark"));

        settings.setValue(SettingsKey::theme, "hc");
        settings.sync();

        QCOMPARE(inRegistry(HKEY_CURRENT_USER, L"theme"), QString("hc"));
        QCOMPARE(inRegistry(HKEY_LOCAL_MACHINE, L"theme"), QString("dark"));
    }

    void logIsInItsFolderOnly()
    {
        QCOMPARE(runToEnd({ "-t" }).code, 0);
        QVERIFY(!QFile::exists("C:/tmp/velmor"));

        QVERIFY(QDir().mkpath("C:/tmp/velmor"));
        QCOMPARE(runToEnd({ "-t" }).code, 0);

        QFile log("C:/tmp/velmor/velmor_manager.log");
        QVERIFY(log.open(QIODevice::ReadOnly));
        QVERIFY(log.readAll().endsWith("\r\n"));
    }
};

VELMOR_TEST(TestWindowsPlaces)
#include "tst_windows_places.moc"
