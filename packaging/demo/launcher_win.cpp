// velmor-demo.exe: starts the demonstration. It puts a card into the simulated reader if there is no reader yet, starts
// the panel and the program, and ends what stays when the program has ended.
#include "simworld/reader_message.h"
#include "simworld/sim_world.h"

#include <string>

#include <windows.h>

namespace {

std::wstring ownFolder()
{
    wchar_t path[32768] = {};
    GetModuleFileNameW(nullptr, path, 32767);
    const std::wstring file = path;
    return file.substr(0, file.find_last_of(L'\\'));
}

std::wstring wide(const std::string &text)
{
    const int size = MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
    std::wstring out(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), out.data(), size);
    return out;
}

int tell(const std::wstring &text)
{
    MessageBoxW(nullptr, text.c_str(), L"velmor Menedżer – pokaz", MB_OK | MB_ICONERROR);
    return 1;
}

class Process {
public:
    Process(const std::wstring &program, const std::wstring &arguments, DWORD flags = 0)
    {
        std::wstring line = L'"' + program + L"\" " + arguments;
        STARTUPINFOW start = {};
        start.cb = sizeof start;
        started =
            CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, flags, nullptr, nullptr, &start, &process);
    }
    ~Process()
    {
        if (!started)
            return;
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;

    bool isStarted() const { return started; }
    int wait() const
    {
        DWORD code = 1;
        if (!started)
            return 1;
        WaitForSingleObject(process.hProcess, INFINITE);
        GetExitCodeProcess(process.hProcess, &code);
        return static_cast<int>(code);
    }

private:
    PROCESS_INFORMATION process = {};
    bool started = false;
};

// As the receiving program takes its command line apart; a reader's name ends in no backslash.
std::wstring quoted(const std::wstring &text)
{
    std::wstring out = L"\"";
    for (const wchar_t c : text) {
        if (c == L'"')
            out += L'\\';
        out += c;
    }
    return out + L'"';
}

} // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR options, int)
{
    const std::wstring root = ownFolder();
    const std::wstring manager = root + L"\\64\\Manager.exe";
    // Whoever holds it is the first; a second start only brings the first one's windows to the front.
    CreateMutexW(nullptr, FALSE, L"velmor-demo");
    const bool isFirst = GetLastError() != ERROR_ALREADY_EXISTS;
    std::wstring arguments = options;
    if (isFirst) {
        sim::SimWorld world;
        if (world.readers().empty() && !world.insertCard("Czytnik Alfa", "anna"))
            return tell(wide("Nie można przygotować udawanego czytnika:\n" + world.error()));
        const std::wstring readers = wide(sim::readerMessage(world.readers()));
        // Straight to the card, if there is one; by itself the window would open on the settings.
        if (arguments.empty() && readers.find(L"||") != std::wstring::npos)
            arguments = L"-r " + quoted(readers);
    }
    const Process program(manager, arguments);
    if (!program.isStarted())
        return tell(L"Nie można uruchomić programu:\n" + manager + L"\nRozpakuj całe archiwum jeszcze raz.");
    // One that runs comes to the front; without it the program is the same.
    const Process panel(root + L"\\64\\velmor-panel.exe", {});
    if (!isFirst)
        return program.wait();

    const int code = program.wait();
    // The stand-ins would stay.
    for (const wchar_t *sibling : { L"velmor_monitor", L"velmor_can", L"velmor_panel" })
        Process(root + L"\\64\\velmor_send.exe", sibling + std::wstring(L" close 1"), CREATE_NO_WINDOW).wait();
    return code;
}
