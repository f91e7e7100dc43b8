#include "platform/profile_dirs.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>

QStringList profileDirsIn(const QString &root)
{
    QStringList found;
    // Without a filter of types, so the dot entries come as well.
    QDirIterator entries(root, QStringList { "*" }, QDir::NoFilter);
    while (entries.hasNext()) {
        const QString base = entries.next() + QDir::separator();
        if (QFile::exists(base + "pkcs11.txt") || QFile::exists(base + "/secmod.db"))
            found << entries.filePath();
    }
    return found;
}
