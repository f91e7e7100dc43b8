#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "simworld/world_state.h"

// The folder of a world: reads and changes world.conf under the lock between processes, and writes what belongs to a
// change (events, an emptied trace, a release). Thread-safe.
namespace sim {

class WorldStore {
public:
    using Change = std::function<bool(World &world, std::string &error)>;

    explicit WorldStore(std::string directory);

    const std::string &directory() const { return folder; }

    // The world as it stands. Parsed anew only if the file differs from what was read last. A file that cannot be
    // parsed gives nothing and a reason; no file at all gives an empty world.
    std::shared_ptr<const World> read(std::string &error);
    // What was read last is kept no longer.
    void forgetRead();

    // Locks, reads, lets `change` work on a copy, writes it if the answer is true.
    bool update(const Change &change, std::string &error);
    // The same, starting from an empty world if the file cannot be parsed.
    bool updateOrStartAfresh(const Change &change, std::string &error);

    std::vector<ReaderEvent> events();
    long releases() const; // number of release() so far

    std::string tracePath() const { return folder + "/trace.log"; }
    std::string waitingFolder() const { return folder + "/waiting"; }

private:
    bool change(const Change &change, bool afresh, std::string &error);
    bool writeEffects(World &world, std::string &error);

    const std::string folder;
    std::mutex mutex;
    std::string lastText;
    std::shared_ptr<const World> last;
};

} // namespace sim
