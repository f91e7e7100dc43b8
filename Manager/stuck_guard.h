#pragma once

#include <atomic>
#include <memory>

// Ends the process if quitting gets stuck. On some systems a thread is only cancelled where it looks for it, and a
// library can die with its locks held; then neither the thread nor the library's own end ever comes. Armed at the first
// termination of the worker, or when only the deletion of the library is left; five seconds later the process removes
// the temporary certificate and goes, which also gives the instance lock back. Does nothing on systems whose threads
// cannot refuse to end.
class StuckGuard {
public:
    StuckGuard() = default;
    ~StuckGuard();
    StuckGuard(const StuckGuard &) = delete;
    StuckGuard &operator=(const StuckGuard &) = delete;

    void arm();

private:
    std::shared_ptr<std::atomic<bool>> finished;
};
