#include "base/platform.h"

#include <cstdio>
#include <sys/stat.h>
#include <windows.h>

namespace Platform {

QString word()
{
    return "win";
}

QString executablePath()
{
    wchar_t buffer[260] = {};
    const DWORD length = GetModuleFileNameW(nullptr, buffer, 260);
    return QString::fromWCharArray(buffer, static_cast<int>(length));
}

QString programSuffix()
{
    return ".exe";
}

QString libraryExtension()
{
    return "dll";
}

QString libraryPath(const QString &path)
{
    return QString(path).replace('/', '\\');
}

QString logsDir(const QString &product)
{
    return QString("C:\\tmp\\") + product;
}

QString readersConfPath(const QString &product)
{
    return qEnvironmentVariable("APPDATA") + '\\' + product + "\\readers.conf";
}

std::optional<quint64> folderCreated(const QString &path)
{
    struct _stat status = {};
    if (_stat(path.toLocal8Bit().constData(), &status) != 0)
        return std::nullopt;
    return static_cast<quint64>(status.st_ctime);
}

void usePrivateTempDir(const QByteArray &product)
{
    // The system's folder for temporary files belongs to the user already.
    Q_UNUSED(product)
}

bool threadsCanRefuseToEnd()
{
    return false;
}

void leaveAtOnce(int exitCode)
{
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(exitCode));
}

void avoidOpenGl() { }

void allowOpenGl() { }

QProcessEnvironment childEnvironment()
{
    return QProcessEnvironment::systemEnvironment();
}

EmptyFontConfiguration::EmptyFontConfiguration() = default;

EmptyFontConfiguration::~EmptyFontConfiguration() = default;

std::FILE *openForAppending(const QString &path)
{
    return _wfopen(reinterpret_cast<const wchar_t *>(path.utf16()), L"a+");
}

void choosePlatformPlugin()
{
    qputenv("QT_QPA_PLATFORM", "windows:fontengine=freetype");
}

} // namespace Platform
