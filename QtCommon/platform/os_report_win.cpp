#include "platform/os_win.h"

// What the system report asks of the system.

#include "base/common.h"
#include "base/platform.h"
#include "platform/card_software.h"
#include "platform/wmi_client_win.h"

#include <QSysInfo>

#include <cstdio>
#include <windows.h>

#include <setupapi.h>

namespace {

const GUID smartCardReaders = { 0x50DD5230, 0xBA8A, 0x11D1, { 0xBF, 0x5D, 0x00, 0x00, 0xF8, 0x05, 0xF5, 0x30 } };
constexpr DWORD pathCapacity = 260;

// A device without one is not there any more.
bool hasHardwareId(HDEVINFO devices, SP_DEVINFO_DATA &device)
{
    DWORD size = 0;
    SetupDiGetDeviceRegistryPropertyW(devices, &device, SPDRP_HARDWAREID, nullptr, nullptr, 0, &size);
    QByteArray buffer(static_cast<int>(qMax<DWORD>(size, 1)), '\0');
    return SetupDiGetDeviceRegistryPropertyW(devices, &device, SPDRP_HARDWAREID, nullptr,
                                             reinterpret_cast<BYTE *>(buffer.data()), static_cast<DWORD>(buffer.size()),
                                             nullptr);
}

QString description(HDEVINFO devices, SP_DEVINFO_DATA &device)
{
    constexpr int capacity = 150;
    // One more, which stays the zero at the end.
    wchar_t buffer[capacity + 1] = {};
    static_assert(capacity * sizeof *buffer == 300, "two bytes a letter");
    SetupDiGetDeviceRegistryPropertyW(devices, &device, SPDRP_DEVICEDESC, nullptr, reinterpret_cast<BYTE *>(buffer),
                                      capacity * sizeof *buffer, nullptr);
    return QString::fromWCharArray(buffer);
}

DWORD buildNumber()
{
    OSVERSIONINFOW version = {};
    version.dwOSVersionInfoSize = sizeof version;
    static_assert(sizeof version == 276, "the form without service packs");
    return GetVersionExW(&version) ? version.dwBuildNumber : 0;
}

QString caption()
{
    WmiClient wmi;
    wmi.connect();
    const QString text = wmi.query("select * from Win32_OperatingSystem").value("Caption");
    wmi.disconnect();
    return QString(text).remove("Microsoft ");
}

} // namespace

QStringList OsWin::cardSoftware()
{
    return CardSoftware::lines([this](const QString &word, int bits) { return appInfo(word, true, bits); });
}

QStringList OsWin::readerDevices()
{
    QStringList names;
    const HDEVINFO devices = SetupDiGetClassDevsW(&smartCardReaders, nullptr, nullptr, DIGCF_DEVICEINTERFACE);
    if (devices == INVALID_HANDLE_VALUE)
        return names;
    SP_DEVINFO_DATA device = {};
    device.cbSize = sizeof device;
    for (DWORD index = 0; SetupDiEnumDeviceInfo(devices, index, &device); ++index) {
        if (hasHardwareId(devices, device))
            names << description(devices, device);
    }
    SetupDiDestroyDeviceInfoList(devices);
    names.removeDuplicates();
    names.sort(Qt::CaseSensitive);
    return names;
}

QString OsWin::signatureAppVersion(int bits)
{
    return appInfo("Podpis elektroniczny", true, bits).value("version");
}

QString OsWin::systemDescription()
{
    return caption() + " " + QString::number(buildNumber()) + "\nArchitektura: " + QSysInfo::currentCpuArchitecture()
        + ", " + QSysInfo::buildAbi();
}

QString OsWin::logsDir()
{
    return Platform::logsDir(Common::productName().remove('-'));
}

QString OsWin::readersConfPath()
{
    return Platform::readersConfPath(Common::productName());
}

QString OsWin::programPath()
{
    return Platform::executablePath();
}

QString OsWin::programPathLatin1()
{
    char buffer[pathCapacity] = {};
    if (GetModuleFileNameA(nullptr, buffer, pathCapacity) == 0)
        std::fprintf(stderr, "GetModuleFileName failed, error = %d\n", static_cast<int>(GetLastError()));
    // On a path longer than the buffer some systems leave out the zero at the end.
    buffer[pathCapacity - 1] = '\0';
    return QString::fromLatin1(buffer);
}
