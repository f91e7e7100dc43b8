#pragma once

#include <string>
#include <utility>
#include <vector>

#include "simworld/world_types.h"

// trace.log: one line a call,
//   MS PID C_Login reader="Czytnik Alfa" container=Qualified session=1 user=SO pin=set -> 0xa0
// and the same with "-> waiting" when a call begins to wait.
namespace sim {

using TraceArguments = std::vector<std::pair<std::string, std::string>>;

std::string traceLine(const std::string &function, const TraceArguments &arguments, const std::string &outcome);
std::string traceOutcome(unsigned long result); // "0xa0"
inline constexpr const char *traceWaiting = "waiting";

// Adds the line; a file that has grown beyond 16 MB becomes trace.log.old first.
void appendTrace(const std::string &path, const std::string &line);

// Lines that are not of this form, such as one that is just being written, are left out.
std::vector<TraceEntry> traceFromText(const std::string &text);

} // namespace sim
