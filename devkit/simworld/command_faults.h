#pragma once

#include <string>
#include <vector>

#include "simworld/world_types.h"

// Faults and answers at the keypad as words: in commands, in lists, in world.conf.
namespace sim {

// "C_Login nth=2 container=Qualified result=CKR_DEVICE_ERROR": a function's name, then KEY=VALUE and single words.
bool parseFault(const std::vector<std::string> &words, Fault &fault, std::string &error);
// One line that splitWords and parseFault turn into the same fault.
std::string describeFault(const Fault &fault);
std::string faultHelp();

// "enter 1234 4321", "first 87654321 12345678", "cancel", "result 0x30" ...
bool parsePad(const std::vector<std::string> &words, PadAnswer &answer);
std::string describePad(const PadAnswer &answer); // likewise

} // namespace sim
