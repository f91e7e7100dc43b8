#include "platform/os_win.h"

// Where browsers and their profiles are.

#include "platform/profile_dirs.h"

#include <QDebug>
#include <QDir>

QString OsWin::which(const QString &name)
{
    QString folder = appInfo(name, false, 64).value("directory");
    if (folder.isEmpty())
        folder = appInfo(name, false, 32).value("directory");
    qDebug().noquote() << "inst dir " << folder;
    if (folder.isEmpty())
        return {};
    if (!folder.endsWith('\\'))
        folder += '\\';
    const QString path = folder + name.toLower() + ".exe";
    qDebug().noquote() << "which" << name << path;
    return path;
}

QString OsWin::profilesRoot(const QString &app)
{
    // Thunderbird is served, but listed nowhere.
    static const struct {
        const char *app;
        const char *root;
    } rows[] = {
        { "Firefox", "Mozilla/Firefox/Profiles/" },
        { "Thunderbird", "Thunderbird/Profiles/" },
    };
    for (const auto &row : rows) {
        if (app == row.app)
            return QDir::homePath() + "/AppData/Roaming/" + row.root;
    }
    return {};
}

QStringList OsWin::profileDirs(const QString &app)
{
    const QString root = profilesRoot(app);
    return root.isEmpty() ? QStringList() : profileDirsIn(root);
}
