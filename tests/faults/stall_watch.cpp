#include "faults/stall_watch.h"

#include <QCoreApplication>
#include <QEvent>

#include <algorithm>
#include <cstdio>
#include <string>

#ifdef Q_OS_LINUX
#include <sys/syscall.h>
#include <unistd.h>
#endif

namespace {

constexpr std::chrono::milliseconds interval { 5 };

} // namespace

StallWatch::StallWatch()
{
#ifdef Q_OS_LINUX
    threadId = syscall(SYS_gettid);
#else
    threadId = 0;
#endif
    thread = std::thread([this] { run(); });
}

StallWatch::~StallWatch()
{
    {
        const std::lock_guard<std::mutex> guard(mutex);
        over = true;
    }
    condition.notify_all();
    thread.join();
    QCoreApplication::removePostedEvents(this);
}

void StallWatch::run()
{
    std::unique_lock<std::mutex> lock(mutex);
    while (!condition.wait_for(lock, interval, [this] { return over; })) {
        if (pending)
            continue;
        pending = true;
        waitedBefore = waitedForProcessor();
        posted = Clock::now();
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }
}

qint64 StallWatch::waitedForProcessor() const
{
    long long ran = 0;
    long long waited = 0;
#ifdef Q_OS_LINUX
    const std::string path = "/proc/self/task/" + std::to_string(threadId) + "/schedstat";
    if (std::FILE *file = std::fopen(path.c_str(), "r")) {
        if (std::fscanf(file, "%lld %lld", &ran, &waited) != 2)
            waited = 0;
        std::fclose(file);
    }
#endif
    return waited;
}

qint64 StallWatch::nanosecondsSince(Clock::time_point from, qint64 before) const
{
    const auto passed = std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - from).count();
    return passed - (waitedForProcessor() - before);
}

bool StallWatch::event(QEvent *event)
{
    if (event->type() != QEvent::User)
        return QObject::event(event);
    const std::lock_guard<std::mutex> guard(mutex);
    longest = std::max(longest, nanosecondsSince(posted, waitedBefore));
    pending = false;
    return true;
}

int StallWatch::takeLongest()
{
    constexpr int nanosecondsOfOne = 1000000;
    const std::lock_guard<std::mutex> guard(mutex);
    const qint64 now = pending ? std::max(longest, nanosecondsSince(posted, waitedBefore)) : longest;
    longest = 0;
    return int(now / nanosecondsOfOne);
}
