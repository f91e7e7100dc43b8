#include "simworld/trace_file.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <filesystem>

#include "simworld/config_text.h"
#include "simworld/platform.h"

namespace sim {

namespace {

// Handles and the reader differ from run to run of a test; a sequence of calls is compared without them. So it is
// without what an answer held, which is there for whoever works out what has to follow from it.
bool isForText(const std::string &argument)
{
    static const char *const left[] = { "reader", "slot", "session", "object", "name",
                                        "label",  "bits", "length",  "class" };
    return std::find(std::begin(left), std::end(left), argument) == std::end(left);
}

bool fromLine(const std::string &line, TraceEntry &entry)
{
    std::vector<std::string> parts;
    if (!splitWords(line, parts) || parts.size() < 5 || parts[parts.size() - 2] != "->")
        return false;
    entry.ms = std::atoll(parts[0].c_str());
    entry.process = std::atoi(parts[1].c_str());
    entry.function = parts[2];
    entry.text = entry.function;
    for (std::size_t at = 3; at + 2 < parts.size(); ++at) {
        const std::size_t equals = parts[at].find('=');
        if (equals == std::string::npos)
            return false;
        const std::string name = parts[at].substr(0, equals);
        entry.arguments[name] = parts[at].substr(equals + 1);
        if (isForText(name))
            entry.text += " " + parts[at];
    }
    entry.waiting = parts.back() == traceWaiting;
    long long result = 0;
    if (!entry.waiting && !parseNumber(parts.back(), result))
        return false;
    entry.result = static_cast<unsigned long>(result);
    entry.text += " -> " + parts.back();
    return true;
}

} // namespace

std::string traceLine(const std::string &function, const TraceArguments &arguments, const std::string &outcome)
{
    std::string line =
        std::to_string(platform::msSinceEpoch()) + " " + std::to_string(platform::processId()) + " " + function;
    for (const auto &argument : arguments)
        line += " " + argument.first + "=" + quotedIfNeeded(argument.second);
    std::replace(line.begin(), line.end(), '\n', ' ');
    return line + " -> " + outcome + "\n";
}

std::string traceOutcome(unsigned long result)
{
    return hexNumber(result);
}

void appendTrace(const std::string &path, const std::string &line)
{
    // Looking at the size costs as much as writing; a bound that is kept roughly is enough.
    constexpr int linesBetweenLooks = 1000;
    constexpr std::uintmax_t mostBytes = 0x1000000;
    static std::atomic<int> lines { 0 };
    std::error_code ignored;
    const auto file = std::filesystem::u8path(path);
    if (++lines % linesBetweenLooks == 0 && std::filesystem::file_size(file, ignored) > mostBytes && !ignored)
        std::filesystem::rename(file, std::filesystem::u8path(path + ".old"), ignored);
    platform::appendFile(path, line);
}

std::vector<TraceEntry> traceFromText(const std::string &text)
{
    std::vector<TraceEntry> entries;
    for (std::size_t start = 0;;) {
        const std::size_t end = text.find('\n', start);
        if (end == std::string::npos)
            return entries;
        TraceEntry entry;
        if (fromLine(text.substr(start, end - start), entry))
            entries.push_back(entry);
        start = end + 1;
    }
}

} // namespace sim
