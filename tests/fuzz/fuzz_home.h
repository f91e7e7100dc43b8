#pragma once

#include "support/testmain.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace Fuzz {

// The home of a target that works on files. There is no main of ours under libFuzzer, and at the end of the process the
// toolkit is gone before a static object is: the folder is taken away without it.
inline QString home()
{
    static const auto *made = new TestHome;
    static std::filesystem::path *folder = nullptr;
    if (!folder) {
        folder = new std::filesystem::path(TestHome::path().toStdU16String());
        std::atexit([] {
            std::error_code ignored;
            std::filesystem::remove_all(*folder, ignored);
        });
    }
    Q_UNUSED(made)
    return TestHome::path();
}

} // namespace Fuzz
