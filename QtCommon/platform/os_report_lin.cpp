#include "platform/os_linux.h"

// What the system report asks of the system.

#include "base/common.h"
#include "base/platform.h"
#include "platform/usb_readers_lin.h"

#include <QSysInfo>

const PackageDatabase::Packages &OsLinux::packages()
{
    if (!packageList)
        packageList = PackageDatabase::installed();
    return *packageList;
}

QStringList OsLinux::cardSoftware()
{
    return PackageDatabase::cardSoftware(packages());
}

QStringList OsLinux::readerDevices()
{
    return UsbReaders::namesIn(UsbReaders::systemFolder);
}

QString OsLinux::signatureAppVersion(int bits)
{
    return PackageDatabase::versionOf(packages(), "Podpis elektroniczny", bits);
}

QString OsLinux::systemDescription()
{
    return QSysInfo::prettyProductName() + " " + QSysInfo::kernelVersion()
        + "\nArchitektura: " + QSysInfo::currentCpuArchitecture() + ", " + QSysInfo::buildAbi();
}

QString OsLinux::logsDir()
{
    return Platform::logsDir(Common::productName().remove('-'));
}

QString OsLinux::readersConfPath()
{
    return Platform::readersConfPath(Common::productName());
}

QString OsLinux::programPath()
{
    return Platform::executablePath();
}

QString OsLinux::programPathLatin1()
{
    return programPath();
}
