#include "base/platform.h"

#include "base/own_environment.h"

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

void appendLine(const QString &path, const QByteArray &line)
{
    // With no other right than this one the system itself puts each write at the end.
    const HANDLE file = CreateFileW(reinterpret_cast<const wchar_t *>(path.utf16()), FILE_APPEND_DATA,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return;
    const QByteArray whole = QByteArray(line).replace('\n', "\r\n") + "\r\n";
    DWORD written = 0;
    WriteFile(file, whole.constData(), static_cast<DWORD>(whole.size()), &written, nullptr);
    CloseHandle(file);
}

void distrustCurrentFolder()
{
    // Windows 7 has the first of these by an update only; the second leaves PATH, as the last of all.
    using SetDirectories = BOOL(WINAPI *)(DWORD);
    constexpr DWORD defaultFolders = 0x1000; // LOAD_LIBRARY_SEARCH_DEFAULT_DIRS
    const HMODULE kernel = GetModuleHandleW(L"kernel32.dll");
    const auto setDirectories =
        reinterpret_cast<SetDirectories>(reinterpret_cast<void *>(GetProcAddress(kernel, "SetDefaultDllDirectories")));
    if (!setDirectories || !setDirectories(defaultFolders))
        SetDllDirectoryW(L"");
}

void keepOutOfCoreFiles()
{
    // A process without this box is not reported either. The system's list of programs that are never reported knows
    // them by the name of their file alone, and this one's is not rare.
    SetErrorMode(GetErrorMode() | SEM_NOGPFAULTERRORBOX);
    // What is reported all the same, on somebody's order, is without the heap. Wine does not know it.
    using SetFlags = HRESULT(WINAPI *)(DWORD);
    constexpr DWORD withoutHeap = 1; // WER_FAULT_REPORTING_FLAG_NOHEAP
    const HMODULE kernel = GetModuleHandleW(L"kernel32.dll");
    const auto setFlags = reinterpret_cast<SetFlags>(reinterpret_cast<void *>(GetProcAddress(kernel, "WerSetFlags")));
    if (setFlags)
        setFlags(withoutHeap);
}

void choosePlatformPlugin()
{
    OwnEnvironment::set("QT_QPA_PLATFORM", "windows:fontengine=freetype");
}

} // namespace Platform
