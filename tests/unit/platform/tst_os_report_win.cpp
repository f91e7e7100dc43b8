#include "support/testmain.h"

#include "platform/os.h"
#include "platform/sys_info.h"
#include "platform/wmi_client_win.h"
#include "support/installed_programs.h"

#include <QSettings>

#include <windows.h>

#include <setupapi.h>

using namespace InstalledPrograms;

namespace {

// A smart card reader that is registered with the system while this lives. Without a hardware id it is one that is not
// there any more.
class Device {
public:
    Device(const char *instance, const QString &description, bool present) :
        devices(SetupDiCreateDeviceInfoList(&setupClass, nullptr))
    {
        const QString id = instance;
        const bool made = SetupDiCreateDeviceInfoW(devices, wide(id), &setupClass, nullptr, nullptr, 0, &device)
            && (!present || set(SPDRP_HARDWAREID, "USB\\VID_076B")) && set(SPDRP_DEVICEDESC, description)
            && SetupDiRegisterDeviceInfo(devices, &device, 0, nullptr, nullptr, nullptr)
            && SetupDiCreateDeviceInterfaceW(devices, &device, &readers, nullptr, 0, nullptr);
        if (!made)
            qFatal("%s: %lu", instance, GetLastError());
    }
    ~Device()
    {
        SetupDiRemoveDevice(devices, &device);
        SetupDiDestroyDeviceInfoList(devices);
    }
    Device(const Device &) = delete;
    Device &operator=(const Device &) = delete;

private:
    static constexpr GUID setupClass = { 0x50DD5230, 0xBA8A, 0x11D1, { 0xBF, 0x5D, 0, 0, 0xF8, 0x05, 0xF5, 0x30 } };
    static constexpr GUID readers = setupClass;

    static const wchar_t *wide(const QString &text) { return reinterpret_cast<const wchar_t *>(text.utf16()); }
    // With two zeros behind it, so that it is a list as well.
    bool set(DWORD property, const QString &text)
    {
        const QString ended = text + QChar(0);
        return SetupDiSetDeviceRegistryPropertyW(devices, &device, property,
                                                 reinterpret_cast<const BYTE *>(ended.utf16()),
                                                 static_cast<DWORD>((ended.size() + 1) * 2));
    }

    HDEVINFO devices;
    SP_DEVINFO_DATA device = { sizeof(SP_DEVINFO_DATA), {}, 0, 0 };
};

} // namespace

// What the report asks of Windows: the list of installed programs, the management interface, devices and paths.
class TstOsReport : public QObject {
    Q_OBJECT

private slots:
    void init() { uninstall(); }
    void cleanupTestCase() { uninstall(); }

    void programIsFoundByAWordOfItsNameInAnyCase()
    {
        install({ { 64,
                    "a",
                    { { "DisplayName", "Mozilla FIREFOX ESR (x64 pl)" },
                      { "DisplayVersion", "115.3" },
                      { "InstallLocation", "C:\\Firefox" },
                      { "AppBits", "64" } } } });

        const auto program = Os().appInfo("Firefox", true, 64);

        QCOMPARE(program["name"], QString("Mozilla FIREFOX ESR (x64 pl)"));
        QCOMPARE(program["version"], QString("115.3"));
        QCOMPARE(program["directory"], QString("C:\\Firefox"));
        QCOMPARE(program["appBits"], QString("64"));
        QVERIFY(Os().appInfo("Firefox", true, 32).isEmpty());
    }

    void versionIsToldOnRequest()
    {
        install({ { 64, "a", { { "DisplayName", "Szafir" }, { "DisplayVersion", "2" } } } });

        QVERIFY(!Os().appInfo("Szafir", false, 64).contains("version"));
        QCOMPARE(Os().appInfo("Szafir", false, 64)["name"], QString("Szafir"));
    }

    void secondVersionValueStandsIn()
    {
        install({ { 64, "a", { { "DisplayName", "Szafir" }, { "Version", "7" } } } });

        QCOMPARE(Os().appInfo("Szafir", true, 64)["version"], QString("7"));
    }

    void entryWithoutVersionIsPassedOver()
    {
        install({ { 64, "a", { { "DisplayName", "Szafir stary" } } },
                  { 64, "b", { { "DisplayName", "Szafir nowy" }, { "DisplayVersion", "3" } } } });

        QCOMPARE(Os().appInfo("Szafir", true, 64)["name"], QString("Szafir nowy"));
    }

    void firstEntryWithAVersionWinsWhateverFollows()
    {
        install({ { 64, "a", { { "DisplayName", "Szafir A" }, { "DisplayVersion", "1" } } },
                  { 64,
                    "b",
                    { { "DisplayName", "Szafir" }, { "DisplayVersion", "2" }, { "InstallLocation", "C:\\S" } } } });

        const auto program = Os().appInfo("Szafir", true, 64);

        QCOMPARE(program["name"], QString("Szafir A"));
        QCOMPARE(program["directory"], QString());
    }

    void bothListsAreApart()
    {
        install({ { 64, "a", { { "DisplayName", "Szafir" }, { "DisplayVersion", "64.0" } } },
                  { 32, "a", { { "DisplayName", "Szafir" }, { "DisplayVersion", "32.0" } } } });

        QCOMPARE(Os().appInfo("Szafir", true, 64)["version"], QString("64.0"));
        QCOMPARE(Os().appInfo("Szafir", true, 32)["version"], QString("32.0"));
    }

    void internetExplorerCountsAsAbsent()
    {
        QCOMPARE(Os().appInfo("Internet Explorer", true, 64)["version"], QString());
        QCOMPARE(Os().appInfo("Internet Explorer", true, 64)["name"], QString("Internet Explorer"));
        QVERIFY(!Os().browserVersions().contains("Internet Explorer"));
    }

    void browsersAreToldByListAndWord()
    {
        install({ { 64, "a", { { "DisplayName", "Mozilla Firefox" }, { "DisplayVersion", "118" } } },
                  { 32, "b", { { "DisplayName", "Google Chrome" }, { "DisplayVersion", "119" } } } });

        const auto versions = Os().browserVersions();

        QCOMPARE(versions.value("Firefox"), QString("118"));
        QCOMPARE(versions.value("Google Chrome (32-bit)"), QString("119"));
        QVERIFY(!versions.contains("Google Chrome"));
    }

    void browserInBothListsHasTwoEntries()
    {
        install({ { 64, "a", { { "DisplayName", "Microsoft Edge" }, { "DisplayVersion", "120" } } },
                  { 32, "a", { { "DisplayName", "Microsoft Edge" }, { "DisplayVersion", "119" } } },
                  { 32, "b", { { "DisplayName", "Google Chrome" }, { "DisplayVersion", "118" } } } });

        const QMap<QString, QString> expected { { "Google Chrome (32-bit)", "118" },
                                                { "Microsoft Edge", "120" },
                                                { "Microsoft Edge (32-bit)", "119" } };
        QCOMPARE(Os().browserVersions(), expected);
    }

    void cardSoftwareInBothListsHasTwoLines()
    {
        install({ { 64, "a", { { "DisplayName", "HID Omnikey driver" }, { "DisplayVersion", "4" } } },
                  { 32,
                    "a",
                    { { "DisplayName", "HID Omnikey driver" }, { "DisplayVersion", "4" }, { "AppBits", "16" } } } });

        const QStringList lines = Os().cardSoftware();

        QCOMPARE(lines.count("HID Omnikey driver Ver: 4"), 1);
        QCOMPARE(lines.count("HID Omnikey driver (16-bit) Ver: 4"), 1);
    }

    void signatureProgramIsFoundInEitherList()
    {
        install({ { 32, "a", { { "DisplayName", "Velmor Podpis elektroniczny" }, { "DisplayVersion", "5" } } } });

        QCOMPARE(Os().signatureAppVersion(64), QString());
        QCOMPARE(Os().signatureAppVersion(32), QString("5"));
        QVERIFY(SysInfo().info("C:\\velmor", "{readers}").contains("Velmor podpis elektroniczny (32-bit) Ver: 5"));
    }

    void hostileNameStaysOneLineOfText()
    {
        install(
            { { 64, "a", { { "DisplayName", "XCA <a href='http://x.example'>x</a>" }, { "DisplayVersion", "1" } } } });

        QVERIFY(Os().cardSoftware().contains("XCA <a href='http://x.example'>x</a> Ver: 1"));
    }

    void managementInterfaceTellsTheSystem()
    {
        WmiClient wmi;
        QCOMPARE(wmi.connect(), 0L);
        const auto system = wmi.query("select * from Win32_OperatingSystem");
        wmi.disconnect();

        QVERIFY(system["Caption"].contains("Windows"));
        QVERIFY(!system["BuildNumber"].isEmpty());
    }

    void valueIsToldByItsKind_data()
    {
        QTest::addColumn<QString>("table");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("value");
        const struct {
            const char *kind;
            const char *table;
            const char *name;
            QString value;
        } rows[] = {
            { "VT_NULL", "Win32_Processor", "UniqueId", "null" },
            { "VT_I2", "Win32_OperatingSystem", "CurrentTimeZone",
              QString::number(QDateTime::currentDateTime().offsetFromUtc() / 60) },
            { "VT_I4", "Win32_OperatingSystem", "OSLanguage", QString::number(GetSystemDefaultLangID()) },
            { "VT_BOOL", "Win32_OperatingSystem", "Primary", "-1" },
            { "VT_BSTR", "Win32_OperatingSystem", "SystemDrive", "C:" },
            { "list", "Win32_SystemEnclosure", "ChassisTypes", "not set" },
        };
        for (const auto &row : rows)
            QTest::newRow(row.kind) << QString(row.table) << QString(row.name) << row.value;
    }
    void valueIsToldByItsKind()
    {
        QFETCH(QString, table);
        QFETCH(QString, name);
        WmiClient wmi;
        QCOMPARE(wmi.connect(), 0L);
        const auto values = wmi.query("select * from " + table);
        wmi.disconnect();

        QTEST(values.value(name, "no such property"), "value");
    }

    void questionThatMakesNoSenseGivesNothing()
    {
        WmiClient wmi;
        QCOMPARE(wmi.connect(), 0L);
        QVERIFY(wmi.query("select * from NoSuchClass").isEmpty());
        QVERIFY(wmi.query("nonsense").isEmpty());
        wmi.disconnect();
    }

    void withoutConnectionNothingIsAnswered()
    {
        WmiClient wmi;
        QVERIFY(wmi.query("select * from Win32_OperatingSystem").isEmpty());
        wmi.disconnect();
        QCOMPARE(wmi.connect(), 0L);
        wmi.disconnect();
        QVERIFY(wmi.query("select * from Win32_OperatingSystem").isEmpty());
    }

    void systemIsToldWithCaptionAndBuild()
    {
        const QStringList lines = Os().systemDescription().split('\n');

        QCOMPARE(lines.size(), 2);
        QVERIFY2(QRegularExpression("^Windows .*\\d+$").match(lines[0]).hasMatch(), qPrintable(lines[0]));
        QCOMPARE(lines[1], "Architektura: " + QSysInfo::currentCpuArchitecture() + ", " + QSysInfo::buildAbi());
    }

    void systemWithoutReadersHasNoDevices() { QCOMPARE(Os().readerDevices(), QStringList()); }

    void readersOfTheSystemAreToldOnceInTheirOrder()
    {
        const Device beta("ROOT\\READER\\0000", "Czytnik Beta", true);
        const Device alfa("ROOT\\READER\\0001", "Czytnik Alfa", true);
        const Device again("ROOT\\READER\\0002", "Czytnik Beta", true);
        const Device gone("ROOT\\READER\\0003", "Czytnik Gamma", false);

        QCOMPARE(Os().readerDevices(), QStringList({ "Czytnik Alfa", "Czytnik Beta" }));
    }

    void pathsAreInTheSystemsForm()
    {
        QCOMPARE(Os().logsDir(), QString("C:\\tmp\\velmor"));
        QCOMPARE(Os().readersConfPath(), qEnvironmentVariable("APPDATA") + "\\velmor\\readers.conf");
        QVERIFY(Os().programPath().endsWith("\\tests_unit_platform.exe"));
        QCOMPARE(Os().programPathLatin1(), Os().programPath());
    }
};

VELMOR_TEST(TstOsReport)
#include "tst_os_report_win.moc"
