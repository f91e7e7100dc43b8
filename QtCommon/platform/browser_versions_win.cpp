#include "platform/os_win.h"

QMap<QString, QString> OsWin::browserVersions()
{
    QMap<QString, QString> versions;
    for (const char *word : { "Internet Explorer", "Microsoft Edge", "Google Chrome", "Firefox" }) {
        const QString wide = appInfo(word, true, 64).value("version");
        if (!wide.isEmpty())
            versions[word] = wide;
        const QString narrow = appInfo(word, true, 32).value("version");
        if (!narrow.isEmpty())
            versions[QString(word) + " (32-bit)"] = narrow;
    }
    return versions;
}
