#pragma once

// A card library that leaves nothing of a card or a PIN in freed memory, so that what is found in that of a program is
// the program's own. The library's operators new and delete are its own (they overwrite what is freed) and known to it
// alone.
namespace sim {

// Overwrites what the calls before have left on the stack below the caller.
void cleanStack();

} // namespace sim
