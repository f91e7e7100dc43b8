#pragma once

#include <QtGlobal>

#ifdef Q_OS_UNIX
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

private:
    bool changed = false;
};
