// Stands in for the system's rundll32.exe where that cannot show certificates: writes the command line that it was
// given into the file that RUNDLL32_LOG names, as UTF-8, and shows a window with the title RUNDLL32_TITLE until that is
// closed.

#include <cstdio>
#include <string>
#include <windows.h>

namespace {

LRESULT CALLBACK handleMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_DESTROY)
        PostQuitMessage(0);
    return DefWindowProcW(window, message, wParam, lParam);
}

std::wstring variable(const wchar_t *name)
{
    wchar_t value[1024] = {};
    GetEnvironmentVariableW(name, value, 1024);
    return value;
}

void writeCommandLine(const std::wstring &path)
{
    const wchar_t *line = GetCommandLineW();
    std::string bytes(static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, line, -1, nullptr, 0, nullptr, nullptr)),
                      '\0');
    WideCharToMultiByte(CP_UTF8, 0, line, -1, &bytes[0], static_cast<int>(bytes.size()), nullptr, nullptr);
    // Aside first, so that who waits for the file finds it whole.
    const std::wstring draft = path + L".new";
    if (std::FILE *file = _wfopen(draft.c_str(), L"wb")) {
        std::fwrite(bytes.data(), 1, bytes.size() - 1, file);
        std::fclose(file);
        MoveFileW(draft.c_str(), path.c_str());
    }
}

} // namespace

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR, int)
{
    WNDCLASSW kind = {};
    kind.lpfnWndProc = handleMessage;
    kind.hInstance = instance;
    kind.lpszClassName = L"StandInForRundll32";
    RegisterClassW(&kind);
    const HWND window = CreateWindowW(kind.lpszClassName, variable(L"RUNDLL32_TITLE").c_str(), WS_OVERLAPPEDWINDOW,
                                      CW_USEDEFAULT, CW_USEDEFAULT, 300, 200, nullptr, nullptr, instance, nullptr);
    writeCommandLine(variable(L"RUNDLL32_LOG"));
    if (!window)
        return 1;
    ShowWindow(window, SW_SHOWNORMAL);
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0)
        DispatchMessageW(&message);
    return 0;
}
