#include "platform/os_win.h"

// The system's list of installed programs.

#include <QSettings>

namespace {

QString baseKey(int bits)
{
    return bits == 32 ? "HKEY_LOCAL_MACHINE\\SOFTWARE\\Wow6432Node" : "HKEY_LOCAL_MACHINE\\SOFTWARE";
}

// The one that is not taken from the list. Its key is appended without a separator, so it names none and the version
// stays empty: whoever asks treats that browser as absent, and that is meant.
QMap<QString, QString> internetExplorer(int bits, bool withVersion)
{
    const QSettings key(baseKey(bits) + "Microsoft\\Internet Explorer", QSettings::NativeFormat);
    QMap<QString, QString> program { { "name", "Internet Explorer" } };
    if (withVersion)
        program["version"] = key.value("Version").toString();
    return program;
}

QString versionOf(const QSettings &list, const QString &group)
{
    const QString version = list.value(group + "/DisplayVersion").toString();
    return version.isEmpty() ? list.value(group + "/Version").toString() : version;
}

} // namespace

QMap<QString, QString> OsWin::appInfo(const QString &name, bool withVersion, int bits)
{
    if (name == "Internet Explorer")
        return internetExplorer(bits, withVersion);
    const QSettings list(baseKey(bits) + "\\Microsoft\\Windows\\CurrentVersion\\Uninstall", QSettings::NativeFormat);
    for (const QString &group : list.childGroups()) {
        const QString displayName = list.value(group + "/DisplayName").toString();
        if (!displayName.contains(name, Qt::CaseInsensitive))
            continue;
        const QString version = versionOf(list, group);
        // Without a version it is passed over; a later entry may still match.
        if (version.isEmpty())
            continue;
        QMap<QString, QString> program { { "name", displayName },
                                         { "directory", list.value(group + "/InstallLocation").toString() },
                                         { "appBits", list.value(group + "/AppBits").toString() } };
        if (withVersion)
            program["version"] = version;
        return program;
    }
    return {};
}
