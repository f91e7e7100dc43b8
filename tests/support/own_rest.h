#pragma once

#include <QtGlobal>

#include <ctime>
#include <functional>

// Rests of a program, told instead of taken. Included by one source of a program, which then has a nanosleep() of its
// own.

// What happens in place of a rest, with its length in milliseconds; without it the rest is taken.
inline std::function<void(long)> onRest;

// In place of the C library's, for the toolkit as well.
extern "C" Q_DECL_EXPORT int nanosleep(const struct timespec *time, struct timespec *left)
{
    if (!onRest)
        return clock_nanosleep(CLOCK_REALTIME, 0, time, left);
    onRest(time->tv_sec * 1000 + time->tv_nsec / 1000000);
    return 0;
}
