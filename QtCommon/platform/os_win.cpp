#include "platform/os_win.h"

#include "base/common.h"
#include "base/own_environment.h"
#include "platform/temporary_certificate.h"

#include <QDebug>
#include <QProcess>
#include <QStringList>

#include <windows.h>

namespace {

// Windows found by the enumeration that runs.
int certificateWindows = 0;

BOOL CALLBACK countCertificateWindow(HWND window, LPARAM)
{
    constexpr int capacity = 1024;
    wchar_t buffer[capacity] = {};
    GetWindowTextW(window, buffer, capacity);
    const QString title = QString::fromWCharArray(buffer);
    if (title == QLatin1String("Certyfikat") || title == QLatin1String("Certificate"))
        ++certificateWindows;
    return TRUE;
}

} // namespace

bool OsWin::certOpen(const QByteArray &der)
{
    if (der.isNull())
        return false;
    const QString path = TemporaryCertificate::path();
    TemporaryCertificate::removeFile();
    writeFileBytes(path, der);
    // The path belongs to the line of rundll32, not to cmd: two arguments, not three.
    const QStringList args { "/c", "rundll32.exe cryptext.dll,CryptExtOpenCER " + path };
    qDebug().noquote() << "startDetached cmd.exe, args=" << args;
    QProcess viewer;
    viewer.setProgram("cmd.exe");
    viewer.setArguments(args);
    viewer.setProcessEnvironment(OwnEnvironment::forChild(OwnEnvironment::Child::Stranger));
    viewer.startDetached();
    return true;
}

int OsWin::certWindowCount()
{
    certificateWindows = 0;
    return EnumWindows(countCertificateWindow, 0) ? certificateWindows : -1;
}
