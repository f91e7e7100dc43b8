#pragma once

#include <cstddef>

namespace CommonC {

// Copies the smaller of the two sizes, overlap allowed. Nothing is copied if a size is 0 or, with a log line, if a
// pointer is null; a copy that is cut short is logged.
void memCopy(void *target, std::size_t targetSize, const void *source, std::size_t sourceSize);

} // namespace CommonC
