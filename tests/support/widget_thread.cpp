// The link editor loads this library into a test (LD_AUDIT) and tells it of each call from the program into the library
// of widgets. All of them belong to the window's thread, which is the process's first; a call on any other ends the
// process with the function's name. It works on the calls as they are made, whoever makes them and through whatever
// helper.
//
// Not seen are virtual functions and signals that are connected to a widget's own function. What those do to a widget
// comes to it as an event, which WidgetWatch sees.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <link.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

bool isWindowThread()
{
    return static_cast<pid_t>(syscall(SYS_gettid)) == getpid();
}

} // namespace

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED unsigned la_version(unsigned version)
{
    return version < LAV_CURRENT ? version : LAV_CURRENT;
}

// Calls are told that go from the program itself to the widgets.
EXPORTED unsigned la_objopen(link_map *map, Lmid_t, uintptr_t *)
{
    if (map->l_name[0] == '\0')
        return LA_FLG_BINDFROM;
    return std::strstr(map->l_name, "Qt5Widgets") ? LA_FLG_BINDTO : 0;
}

EXPORTED uintptr_t la_symbind64(Elf64_Sym *symbol, unsigned, uintptr_t *, uintptr_t *, unsigned *flags, const char *)
{
    *flags |= LA_SYMB_NOPLTEXIT;
    return symbol->st_value;
}

EXPORTED Elf64_Addr la_x86_64_gnu_pltenter(Elf64_Sym *symbol, unsigned, uintptr_t *, uintptr_t *, La_x86_64_regs *,
                                           unsigned *, const char *name, long *)
{
    if (!isWindowThread()) {
        std::fprintf(stderr, "a widget is touched outside of the window's thread: %s\n", name);
        std::abort();
    }
    return symbol->st_value;
}
