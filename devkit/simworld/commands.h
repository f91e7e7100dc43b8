#pragma once

#include <string>
#include <vector>

#include "simworld/world_ops.h"

// The commands that change a world, as velmor-sim and scenario files take them. READER and CARD may be left out where
// the world has only one that can be meant.
namespace sim {

enum class CommandOutcome {
    Done,
    Refused, // understood, but the world does not allow it; the reason is in the WorldOps' error
    NotUnderstood // no such command, or wrong arguments; likewise
};

CommandOutcome runCommand(WorldOps &ops, const std::vector<std::string> &words);

// One command a line; empty lines and lines that begin with "#" are skipped. Refuses with the line's number in the
// reason.
bool runScenario(WorldOps &ops, const std::string &text);

// One line a command: its form and what it does.
std::string commandHelp();

// The reader that "insert" makes when the world has none.
inline constexpr const char *defaultReaderName = "Czytnik Alfa";

} // namespace sim
