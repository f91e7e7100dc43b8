#pragma once

#include "support/raw_inbox.h"

#include <atomic>
#include <chrono>
#include <thread>

// The Monitor's inbox, emptied from a thread of its own: a window whose message finds it full waits for that.
class MonitorInbox {
public:
    MonitorInbox() : thread([this] { run(); }) { }
    ~MonitorInbox()
    {
        over = true;
        thread.join();
    }

    // Whether the readers have been asked for since the last time.
    bool takeQuestion() { return asked.exchange(false); }

private:
    void run()
    {
        constexpr int segmentSize = 500;
        RawInbox inbox("velmor_monitor", segmentSize);
        while (!over) {
            if (!inbox.isFree()) {
                const bool readers = inbox.text().contains("getReadersWithPace");
                inbox.clear();
                if (readers)
                    asked = true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    std::atomic<bool> over { false };
    std::atomic<bool> asked { false };
    std::thread thread;
};
