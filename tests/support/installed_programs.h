#pragma once

#include <QMap>
#include <QSettings>
#include <QString>
#include <QVector>

// Windows' lists of installed programs, with entries of a test's own.
namespace InstalledPrograms {

struct Entry {
    int bits;
    const char *group;
    QMap<QString, QString> values;
};
inline QString list(int bits)
{
    return QString(bits == 32 ? "HKEY_LOCAL_MACHINE\\SOFTWARE\\Wow6432Node" : "HKEY_LOCAL_MACHINE\\SOFTWARE")
        + "\\Microsoft\\Windows\\CurrentVersion\\Uninstall";
}
inline void install(const QVector<Entry> &entries)
{
    for (const Entry &entry : entries) {
        QSettings settings(list(entry.bits), QSettings::NativeFormat);
        settings.beginGroup("velmor-test-" + QString(entry.group));
        settings.setValue("Marker", "x");
        for (auto value = entry.values.begin(); value != entry.values.end(); ++value)
            settings.setValue(value.key(), value.value());
    }
}
inline void uninstall()
{
    for (int bits : { 64, 32 }) {
        QSettings settings(list(bits), QSettings::NativeFormat);
        for (const QString &group : settings.childGroups()) {
            if (group.startsWith("velmor-test-"))
                settings.remove(group);
        }
    }
}

} // namespace InstalledPrograms
