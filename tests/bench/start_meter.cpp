// start_meter ROUNDS PROGRAM [ARG ...]: starts a program on the X display and prints the time from exec to its first
// window of any size worth the name, its peak memory then, and what the host of a virtual machine took meanwhile, one
// line a round: milliseconds, kibibytes, hundredths of a second. Each round ends the program again.

#include "host_time.h"

#include <xcb/xcb.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <poll.h>
#include <set>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int smallestWindow = 200; // pixels a side; below it are helper windows and splash dots
constexpr auto patience = std::chrono::seconds(60);
constexpr auto settle = std::chrono::milliseconds(300);

long peakMemory(pid_t process)
{
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmHWM:", 0) == 0)
            return std::strtol(line.c_str() + 6, nullptr, 10);
    }
    return -1;
}

bool isLarge(xcb_connection_t *display, xcb_window_t window)
{
    xcb_get_geometry_reply_t *geometry = xcb_get_geometry_reply(display, xcb_get_geometry(display, window), nullptr);
    if (!geometry)
        return false;
    const bool large = geometry->width >= smallestWindow && geometry->height >= smallestWindow;
    std::free(geometry);
    return large;
}

// Waits for a large top-level window to be mapped.
bool waitForWindow(xcb_connection_t *display, Clock::time_point until)
{
    while (Clock::now() < until) {
        xcb_generic_event_t *event = xcb_poll_for_event(display);
        if (!event) {
            pollfd descriptor { xcb_get_file_descriptor(display), POLLIN, 0 };
            poll(&descriptor, 1, 50);
            continue;
        }
        const bool mapped = (event->response_type & 0x7f) == XCB_MAP_NOTIFY
            && isLarge(display, reinterpret_cast<xcb_map_notify_event_t *>(event)->window);
        std::free(event);
        if (mapped)
            return true;
    }
    return false;
}

void drain(xcb_connection_t *display)
{
    while (xcb_generic_event_t *event = xcb_poll_for_event(display))
        std::free(event);
}

pid_t startProgram(char **command)
{
    const pid_t process = fork();
    if (process == 0) {
        setpgid(0, 0);
        execvp(command[0], command);
        _exit(127);
    }
    return process;
}

void endProgram(pid_t process)
{
    kill(-process, SIGKILL);
    kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc < 3) {
        std::fprintf(stderr, "usage: start_meter ROUNDS PROGRAM [ARG ...]\n");
        return 2;
    }
    xcb_connection_t *display = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(display))
        return 1;
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(display)).data;
    const uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(display, screen->root, XCB_CW_EVENT_MASK, &mask);
    xcb_flush(display);

    bool all = true;
    for (int round = std::atoi(argv[1]); round > 0; --round) {
        drain(display);
        const long long takenBefore = takenByTheHost();
        const auto start = Clock::now();
        const pid_t process = startProgram(argv + 2);
        const bool shown = waitForWindow(display, start + patience);
        const std::chrono::duration<double, std::milli> took = Clock::now() - start;
        const long long taken = takenByTheHost() - takenBefore;
        usleep(std::chrono::microseconds(settle).count());
        if (shown)
            std::printf("%.1f %ld %lld\n", took.count(), peakMemory(process), taken);
        all = all && shown;
        endProgram(process);
        usleep(std::chrono::microseconds(settle).count());
    }
    xcb_disconnect(display);
    return all ? 0 : 1;
}
