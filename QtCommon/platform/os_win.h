#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

class OsWin {
public:
    virtual ~OsWin() = default;

    // Shows one certificate, as DER, in the system's certificate window. False for a null array alone: whether the
    // window came is told by certWindowCount.
    bool certOpen(const QByteArray &der);

    // Certificate windows that are open, by their titles in Polish and English, whoever opened them; -1 if the system
    // does not tell.
    int certWindowCount();

    // The first entry in the list of installed programs whose display name holds `name` in any case and which tells a
    // version: `name`, `directory`, `appBits` and, if asked for, `version`. Empty if there is none. `bits` chooses the
    // list, 64 or 32.
    QMap<QString, QString> appInfo(const QString &name, bool withVersion, int bits);

    // Path that an application's program has by the list of installed programs, whether the file is there or not; empty
    // without an install folder.
    QString which(const QString &name);

    // Folder of an application's profiles with "/" at its end, empty for one that has none here.
    QString profilesRoot(const QString &app);

    // Its entries in which a database of NSS lies, files and dot entries included.
    QStringList profileDirs(const QString &app);

    // Versions of the installed browsers by their labels, such as "Firefox" or "Google Chrome (32-bit)".
    QMap<QString, QString> browserVersions();

    // Installed card software with versions, sorted, a line a program.
    QStringList cardSoftware();

    // Names of the reader devices that the system knows, sorted.
    QStringList readerDevices();

    // Version of the program for electronic signatures, empty if it is not installed.
    QString signatureAppVersion(int bits);

    // Name and build of the system, and its architecture below it.
    QString systemDescription();

    // The log folder, which may not exist, and the reader configuration file.
    QString logsDir();
    QString readersConfPath();

    // The running program's file, in two spellings: as the system has it, and for the report in the letters of Latin-1
    // alone.
    QString programPath();
    QString programPathLatin1();
};
