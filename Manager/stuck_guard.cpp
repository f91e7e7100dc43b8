#include "stuck_guard.h"

#include "base/platform.h"
#include "platform/temporary_certificate.h"

#include <chrono>
#include <thread>

namespace {
constexpr std::chrono::seconds patience { 5 };
}

StuckGuard::~StuckGuard()
{
    if (finished)
        *finished = true;
}

void StuckGuard::arm()
{
    if (finished || !Platform::threadsCanRefuseToEnd())
        return;
    finished = std::make_shared<std::atomic<bool>>(false);
    // Detached: the window's thread may be the one that is stuck.
    std::thread([over = finished] {
        std::this_thread::sleep_for(patience);
        if (*over)
            return;
        TemporaryCertificate::removeFile();
        Platform::leaveAtOnce(0);
    }).detach();
}
