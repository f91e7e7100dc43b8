#pragma once

#include "platform/package_database_lin.h"

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>

class OsLinux {
public:
    virtual ~OsLinux() = default;

    // Shows one certificate, as DER, in a viewer of such files. False for a null array, if the file for the viewer
    // cannot be written, and if there is no viewer; whether its window came is told by certWindowCount.
    bool certOpen(const QByteArray &der);

    // Viewers open among those that this program started. Viewers of a desktop's own choice are started by a helper
    // that ends at once, and count from then on for good, since nothing tells of their end.
    int certWindowCount();

    // Path of an application's program, empty if it is not installed: "Firefox" as the system's package, a snap or a
    // flatpak, anything else by its name in lower case.
    QString which(const QString &name);

    // Folder of an application's profiles with "/" at its end, as the system's package has it; empty for one that has
    // none here.
    QString profilesRoot(const QString &app);

    // Profiles of an application in that folder and those of its other packages: entries in which a database of NSS
    // lies.
    QStringList profileDirs(const QString &app);

    // Versions of the installed browsers by their labels, such as "Firefox" or "Google Chrome (32-bit)".
    QMap<QString, QString> browserVersions();

    // Installed card software with versions, sorted, a line a package.
    QStringList cardSoftware();

    // Names of the USB smart-card readers, sorted.
    QStringList readerDevices();

    // Version of the program for electronic signatures, empty if it is not installed.
    QString signatureAppVersion(int bits);

    // Name of the system and its kernel, and its architecture below it.
    QString systemDescription();

    // The log folder, which may not exist, and the reader configuration file.
    QString logsDir();
    QString readersConfPath();

    // The running program's file. The second spelling differs on other systems only.
    QString programPath();
    QString programPathLatin1();

private:
    // Asked for once in the life of the object, so a fresh list needs a new one.
    const PackageDatabase::Packages &packages();

    std::optional<PackageDatabase::Packages> packageList;
};
