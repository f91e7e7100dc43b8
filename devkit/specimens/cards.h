#pragma once

#include <string>
#include <vector>

#include "simworld/world_types.h"

namespace specimen {

// All specimen cards with the values of their objects. Empty, with a reason, if one of them cannot be made.
std::vector<sim::Card> makeCards(std::string &error);

} // namespace specimen
