#pragma once

#include <string>
#include <vector>

#include "simworld/world_types.h"

namespace sim {

// The readers as the resident sibling tells them: "0:NAME||" for each with a card that can be read, one after the
// other, or one word that says why there is none.
std::string readerMessage(const std::vector<Reader> &readers);

} // namespace sim
