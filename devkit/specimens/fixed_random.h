#pragma once

namespace specimen {

// From here on OpenSSL's random numbers are a fixed sequence, for as long as the process lives: the same sources give
// the same specimen cards, and so the same packages. Anyone can compute the keys that come of it; nobody shall trust
// them.
void fixRandomNumbers();

} // namespace specimen
