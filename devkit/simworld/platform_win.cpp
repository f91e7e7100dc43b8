#include "simworld/platform.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <vector>

#include <windows.h>

#include <shellapi.h>

namespace sim::platform {

namespace {

constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

std::wstring wide(const std::string &text)
{
    const int size = MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
    std::wstring out(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), out.data(), size);
    return out;
}

std::string narrow(const std::wstring &text)
{
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string out(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, out.data(), size, nullptr, nullptr);
    return out;
}

std::string slashes(std::string path)
{
    for (char &c : path) {
        if (c == '\\')
            c = '/';
    }
    return path;
}

// As the receiving program takes its command line apart: backslashes count only before a quote.
std::wstring quotedWord(const std::wstring &word)
{
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : word) {
        if (c == L'"')
            quoted.append(backslashes + 1, L'\\');
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        quoted += c;
    }
    return quoted.append(backslashes, L'\\') + L'"';
}

class File {
public:
    File(const std::string &path, DWORD access, DWORD creation) :
        value(CreateFileW(wide(path).c_str(), access, shareAll, nullptr, creation, FILE_ATTRIBUTE_NORMAL, nullptr))
    {
    }
    ~File()
    {
        if (isOpen())
            CloseHandle(value);
    }
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    bool isOpen() const { return value != INVALID_HANDLE_VALUE; }
    bool write(const std::string &bytes) const
    {
        DWORD done = 0;
        return isOpen() && WriteFile(value, bytes.data(), static_cast<DWORD>(bytes.size()), &done, nullptr)
            && done == bytes.size();
    }

    const HANDLE value;
};

bool readAll(const File &file, std::string &bytes)
{
    bytes.clear();
    // Not on the stack, where it would stay: it may be of a card.
    std::vector<char> buffer(16384);
    DWORD count = 0;
    while (ReadFile(file.value, buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr)) {
        if (count == 0)
            return true;
        bytes.append(buffer.data(), count);
    }
    return false;
}

} // namespace

std::string variable(const char *name)
{
    const std::wstring wideName = wide(name);
    const DWORD size = GetEnvironmentVariableW(wideName.c_str(), nullptr, 0);
    if (size == 0)
        return {};
    std::wstring value(size, L'\0');
    value.resize(GetEnvironmentVariableW(wideName.c_str(), value.data(), size));
    return slashes(narrow(value));
}

std::string defaultWorldFolder()
{
    return variable("APPDATA") + "/velmor-sim";
}

std::string moduleFolder()
{
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&moduleFolder), &module);
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size())));
    const std::string file = slashes(narrow(path));
    const std::size_t end = file.find_last_of('/');
    return end == std::string::npos ? std::string() : file.substr(0, end);
}

std::string familyProgramsFolder()
{
    return moduleFolder() + "/../64";
}

int runProgram(const std::string &path, const std::vector<std::string> &arguments)
{
    std::wstring line = quotedWord(wide(path));
    for (const std::string &argument : arguments)
        line += L' ' + quotedWord(wide(argument));
    STARTUPINFOW start {};
    start.cb = sizeof start;
    PROCESS_INFORMATION process {};
    if (!CreateProcessW(wide(path + ".exe").c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start,
                        &process))
        return -1;
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return static_cast<int>(code);
}

std::vector<std::string> programArguments(int, char **)
{
    // argv itself is in the system's code page.
    SetConsoleOutputCP(CP_UTF8);
    int count = 0;
    wchar_t **words = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> out;
    for (int at = 1; at < count; ++at)
        out.push_back(narrow(words[at]));
    LocalFree(words);
    return out;
}

int processId()
{
    return static_cast<int>(GetCurrentProcessId());
}

void die()
{
    for (;;)
        TerminateProcess(GetCurrentProcess(), 1);
}

bool processAlive(int id)
{
    const HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(id));
    if (!process)
        return GetLastError() == ERROR_ACCESS_DENIED;
    const bool alive = WaitForSingleObject(process, 0) == WAIT_TIMEOUT;
    CloseHandle(process);
    return alive;
}

long long msSinceEpoch()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

bool readFile(const std::string &path, std::string &bytes)
{
    // A file that is being replaced in this moment is refused, not missing.
    const auto isMissing = [] {
        return GetLastError() == ERROR_FILE_NOT_FOUND || GetLastError() == ERROR_PATH_NOT_FOUND;
    };
    for (int attempt = 0; attempt < 400; ++attempt) {
        const File file(path, GENERIC_READ, OPEN_EXISTING);
        if (file.isOpen())
            return readAll(file, bytes);
        if (isMissing())
            return false;
        Sleep(5);
    }
    return false;
}
bool replaceFile(const std::string &path, const std::string &bytes)
{
    const std::string fresh = path + ".new";
    if (!File(fresh, GENERIC_WRITE, CREATE_ALWAYS).write(bytes))
        return false;
    // While another process reads the old file it cannot be replaced; reads are short.
    for (int attempt = 0; attempt < 400; ++attempt) {
        if (MoveFileExW(wide(fresh).c_str(), wide(path).c_str(), MOVEFILE_REPLACE_EXISTING))
            return true;
        Sleep(5);
    }
    // A thread that was ended from outside while it read holds the old file for as long as its process lives.
    DeleteFileW(wide(fresh).c_str());
    return File(path, GENERIC_WRITE, CREATE_ALWAYS).write(bytes);
}

bool appendFile(const std::string &path, const std::string &bytes)
{
    // Wine looks where the file ends and writes there, in two steps, so threads take turns. Not for ever: one that is
    // ended by force in its turn must not keep the others.
    constexpr std::chrono::milliseconds patience { 100 };
    static std::timed_mutex turn;
    const std::unique_lock<std::timed_mutex> mine(turn, patience);
    return File(path, FILE_APPEND_DATA, OPEN_ALWAYS).write(bytes);
}

bool truncateFile(const std::string &path)
{
    return File(path, GENERIC_WRITE, CREATE_ALWAYS).isOpen();
}

FileLock::FileLock(const std::string &path)
{
    const HANDLE file = CreateFileW(wide(path).c_str(), GENERIC_READ | GENERIC_WRITE, shareAll, nullptr, OPEN_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return;
    handle = reinterpret_cast<long long>(file);
    OVERLAPPED where {};
    held = LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &where);
}

FileLock::~FileLock()
{
    const HANDLE file = reinterpret_cast<HANDLE>(handle);
    if (held) {
        OVERLAPPED where {};
        UnlockFileEx(file, 0, 1, 0, &where);
    }
    if (handle != -1)
        CloseHandle(file);
}

// A thread is ended from outside at once here; there is nothing to hold off.
CancelGuard::CancelGuard() = default;
CancelGuard::~CancelGuard() = default;

namespace {

struct Watch {
    std::function<bool()> done;
    DWORD pollMs = 0;
    HANDLE waiter = nullptr; // the waiting thread
    HMODULE code = nullptr; // kept in memory until the watch has ended, which can be after a forced end of the waiter
};

DWORD WINAPI watch(void *argument)
{
    std::unique_ptr<Watch> watched(static_cast<Watch *>(argument));
    while (!watched->done() && WaitForSingleObject(watched->waiter, watched->pollMs) == WAIT_TIMEOUT) { }
    CloseHandle(watched->waiter);
    HMODULE code = watched->code;
    watched.reset();
    FreeLibraryAndExitThread(code, 0);
}

} // namespace

void waitCancellable(const std::function<bool()> &done, int pollMs)
{
    auto watched = std::make_unique<Watch>();
    watched->done = done;
    watched->pollMs = static_cast<DWORD>(pollMs);
    DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &watched->waiter, 0, FALSE,
                    DUPLICATE_SAME_ACCESS);
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCWSTR>(&watch), &watched->code);
    HANDLE thread = CreateThread(nullptr, 0, watch, watched.get(), 0, nullptr);
    if (thread == nullptr)
        return;
    static_cast<void>(watched.release()); // the thread owns it
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
}

void sleepCancellable(int ms)
{
    Sleep(static_cast<DWORD>(ms));
}

} // namespace sim::platform
