#include "platform/os_linux.h"

// Where browsers and their profiles are: packages of the system, snaps and flatpaks. A snap's program is found on PATH
// like a package's.

#include "platform/profile_dirs.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

struct Application {
    const char *name;
    QStringList programs;
    const char *flatpak;
    // Below the home folder, that of the system's package first.
    QStringList roots;
};

const QVector<Application> &applications()
{
    // Thunderbird is served, but listed nowhere.
    static const QVector<Application> rows {
        { "Firefox",
          { "firefox", "firefox-esr" },
          "org.mozilla.firefox",
          { ".mozilla/firefox/", ".config/mozilla/firefox/", "snap/firefox/common/.mozilla/firefox/",
            ".var/app/org.mozilla.firefox/.mozilla/firefox/",
            ".var/app/org.mozilla.firefox/config/mozilla/firefox/" } },
        { "Thunderbird",
          { "thunderbird" },
          "org.mozilla.Thunderbird",
          { ".thunderbird/", "snap/thunderbird/common/.thunderbird/",
            ".var/app/org.mozilla.Thunderbird/.thunderbird/" } },
    };
    return rows;
}

Application application(const QString &name)
{
    for (const Application &row : applications()) {
        if (name == row.name)
            return row;
    }
    return { "", { name.toLower() }, "", {} };
}

// Folders in which flatpaks show their programs: the user's and the system's, by the variables that move them.
QStringList flatpakFolders()
{
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return { qEnvironmentVariable("FLATPAK_USER_DIR", data + "/flatpak") + "/exports/bin",
             qEnvironmentVariable("FLATPAK_SYSTEM_DIR", "/var/lib/flatpak") + "/exports/bin" };
}

QString programOf(const Application &app)
{
    for (const QString &program : app.programs) {
        QString path = QStandardPaths::findExecutable(program);
        if (!path.isEmpty())
            return path;
    }
    return *app.flatpak ? QStandardPaths::findExecutable(app.flatpak, flatpakFolders()) : QString();
}

} // namespace

QString OsLinux::which(const QString &name)
{
    // A path instead of a name would be taken as it stands.
    QString path = name.contains('/') ? QString() : programOf(application(name));
    qDebug().noquote() << "which" << name << path;
    return path;
}

QString OsLinux::profilesRoot(const QString &app)
{
    const QStringList roots = application(app).roots;
    return roots.isEmpty() ? QString() : QDir::homePath() + '/' + roots.first();
}

QStringList OsLinux::profileDirs(const QString &app)
{
    QStringList dirs;
    for (const QString &root : application(app).roots)
        dirs += profileDirsIn(QDir::homePath() + '/' + root);
    return dirs;
}
