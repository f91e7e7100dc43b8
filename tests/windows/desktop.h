#pragma once

#include <QImage>
#include <QList>
#include <QString>

#include <functional>

#include <windows.h>

// The screen as its user has it: windows of other processes, what stands in them, and their pixels.
namespace Desktop {

inline QString textOf(HWND window)
{
    wchar_t text[1024] = {};
    // Not GetWindowTextW, which does not ask the controls of another process.
    SendMessageTimeoutW(window, WM_GETTEXT, 1024, reinterpret_cast<LPARAM>(text), SMTO_ABORTIFHUNG, 2000, nullptr);
    return QString::fromWCharArray(text);
}

inline BOOL CALLBACK visit(HWND window, LPARAM callback)
{
    (*reinterpret_cast<const std::function<void(HWND)> *>(callback))(window);
    return TRUE;
}

// Visible top-level windows of a process.
inline QList<HWND> windowsOf(qint64 process)
{
    QList<HWND> found;
    const std::function<void(HWND)> look = [&](HWND window) {
        DWORD owner = 0;
        GetWindowThreadProcessId(window, &owner);
        if (owner == static_cast<DWORD>(process) && IsWindowVisible(window))
            found << window;
    };
    EnumWindows(visit, reinterpret_cast<LPARAM>(&look));
    return found;
}

// Texts of a message box of the system, one line a control; empty if the process shows none.
inline QString messageOf(qint64 process)
{
    QString text;
    const std::function<void(HWND)> add = [&](HWND control) { text += textOf(control) + '\n'; };
    for (HWND window : windowsOf(process)) {
        wchar_t name[64] = {};
        GetClassNameW(window, name, 64);
        if (QString::fromWCharArray(name) == "#32770")
            EnumChildWindows(window, visit, reinterpret_cast<LPARAM>(&add));
    }
    return text;
}

inline void confirmMessageOf(qint64 process)
{
    for (HWND window : windowsOf(process))
        PostMessageW(window, WM_COMMAND, IDOK, 0);
}

// A click of the left button at a place of a window.
inline void click(HWND window, int x, int y)
{
    RECT box = {};
    GetWindowRect(window, &box);
    SetCursorPos(box.left + x, box.top + y);
    for (const DWORD action : { MOUSEEVENTF_LEFTDOWN, MOUSEEVENTF_LEFTUP }) {
        INPUT input = {};
        input.type = INPUT_MOUSE;
        input.mi.dwFlags = action;
        SendInput(1, &input, sizeof input);
    }
}

// What the screen shows where a window is.
inline QImage pictureOf(HWND window)
{
    RECT box = {};
    GetWindowRect(window, &box);
    const int width = box.right - box.left;
    const int height = box.bottom - box.top;
    QImage picture(width, height, QImage::Format_RGB32);
    const HDC screen = GetDC(nullptr);
    const HDC memory = CreateCompatibleDC(screen);
    const HBITMAP bitmap = CreateCompatibleBitmap(screen, width, height);
    const HGDIOBJ before = SelectObject(memory, bitmap);
    BitBlt(memory, 0, 0, width, height, screen, box.left, box.top, SRCCOPY);
    SelectObject(memory, before);
    BITMAPINFO form = {};
    form.bmiHeader.biSize = sizeof form.bmiHeader;
    form.bmiHeader.biWidth = width;
    form.bmiHeader.biHeight = -height;
    form.bmiHeader.biPlanes = 1;
    form.bmiHeader.biBitCount = 32;
    GetDIBits(memory, bitmap, 0, static_cast<UINT>(height), picture.bits(), &form, DIB_RGB_COLORS);
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
    return picture;
}

} // namespace Desktop
