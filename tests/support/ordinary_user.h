#pragma once

#include "base/common.h"
#include "support/testmain.h"

#include <QDir>
#include <QFile>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#include <unistd.h>
#endif

// The super-user may open everything, and tests often run as one: while it lives the process is somebody else. Nothing
// where there is no such user.
class OrdinaryUser {
public:
#ifdef Q_OS_UNIX
    OrdinaryUser() : changed(geteuid() == 0 && seteuid(65534) == 0) { }
    ~OrdinaryUser()
    {
        if (changed && seteuid(0) != 0)
            qFatal("the test's user could not be restored");
    }
#else
    OrdinaryUser() { }
#endif
    OrdinaryUser(const OrdinaryUser &) = delete;
    OrdinaryUser &operator=(const OrdinaryUser &) = delete;

    // The way to the test's own folders, which are their owner's alone.
    static bool letIn(const QStringList &furtherFolders = {})
    {
#ifdef Q_OS_UNIX
        for (const QString &way : QStringList { TestHome::path(), QDir::tempPath() } + furtherFolders) {
            if (chmod(QFile::encodeName(way).constData(), 0755) != 0)
                return false;
        }
#else
        Q_UNUSED(furtherFolders)
#endif
        return true;
    }

    // False where even that does not keep this user from writing.
    static bool makeReadOnly(const QString &path)
    {
        QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadUser | QFile::ReadGroup | QFile::ReadOther);
        const OrdinaryUser user;
        return !Common::isWritable(path);
    }

private:
    bool changed = false;
};
