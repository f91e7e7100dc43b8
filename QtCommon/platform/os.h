#pragma once

#include <QtGlobal>

#ifdef Q_OS_WIN
#include "platform/os_win.h"
using OsOfPlatform = OsWin;
#else
#include "platform/os_linux.h"
using OsOfPlatform = OsLinux;
#endif

// What the system is asked for that Qt does not offer. The operations stand in the class of the platform, in each with
// the same names, arguments and meanings; nobody else names those classes. An object holds no more than lists
// that it has asked for, so a new one serves who wants them fresh. On the window thread only. Nothing here shows a
// message: an empty answer means not found.
class Os : public OsOfPlatform { };
