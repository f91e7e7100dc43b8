#pragma once

#include <QObject>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

// Watches from a thread of its own how long the window's thread takes to come to an event: one is posted to it every
// few milliseconds, the next when the one before has been handled. The time in which the thread was ready to run but
// had no processor is taken off, where the system tells it, so that a busy machine is not taken for a stuck window.
class StallWatch : public QObject {
public:
    StallWatch();
    ~StallWatch() override;

    // In milliseconds since the last call; also of an event that has not been handled yet.
    int takeLongest();

protected:
    bool event(QEvent *event) override;

private:
    using Clock = std::chrono::steady_clock;

    void run();
    qint64 waitedForProcessor() const; // nanoseconds
    qint64 nanosecondsSince(Clock::time_point posted, qint64 waitedBefore) const;

    long threadId;
    std::mutex mutex;
    std::condition_variable condition;
    bool over = false;
    bool pending = false;
    Clock::time_point posted;
    qint64 waitedBefore = 0;
    qint64 longest = 0;
    std::thread thread;
};
