#pragma once

#include "simworld/sim_world.h"

#include <QString>

// Of a call in the library's trace; empty if it has no such argument.
inline QString argument(const sim::TraceEntry &entry, const char *name)
{
    const auto found = entry.arguments.find(name);
    return found == entry.arguments.end() ? QString() : QString::fromStdString(found->second);
}

inline QString cutAtTheEnd(QString text)
{
    while (!text.isEmpty() && text.back().isSpace())
        text.chop(1);
    return text;
}
