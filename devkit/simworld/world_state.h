#pragma once

#include <map>
#include <string>
#include <vector>

#include "simworld/config_text.h"
#include "simworld/world_types.h"

// The whole content of world.conf.
namespace sim {

struct WorldReader : Reader {
    std::string cardFolder; // where the card was found when it was inserted; the library reads it there
};

struct World {
    long generation = 0;
    std::string cardsDirectory;
    int delayMs = 0;
    bool traceOn = true;
    bool sessionsAnew = false; // handles of sessions begin at 1 at each C_Initialize
    int lastInsertion = 0; // never starts again, so that a session cannot meet a later card by accident
    long lastEvent = 0;
    std::vector<WorldReader> readers;
    std::map<std::string, CardState> cards; // only those that differ, or once differed, from how they were made
    std::vector<Fault> faults;
    std::vector<PadAnswer> pad;

    // Wishes of a change that are not part of the state; whoever stores the world carries them out.
    std::vector<ReaderEvent> newEvents;
    bool clearTrace = false;
    bool clearEvents = false;
    bool release = false;

    WorldReader *reader(const std::string &name);
    const WorldReader *reader(const std::string &name) const;
};

inline constexpr const char *containers[] = { Authentication, Presence, Authorization, Qualified, Emrtd };
bool isContainer(const std::string &name);
// Digits of a container's PIN, 0 for one that has none. The PUK has pukDigits.
int pinDigits(const std::string &container);
inline constexpr int pukDigits = 8;
inline constexpr int maxTries = 3;
inline constexpr int longestDelayMs = 600000;

// A CardState with all five containers and the PINs of the specimen cards.
CardState freshCardState();

// What a section says of a card's state; when it is read, onto a fresh one.
void cardStateValues(ConfigValues values, CardState &state);

std::string worldToText(World world);
bool worldFromText(const std::string &text, World &world, std::string &error);

// events.log is one "[event NUMBER]" section after the other, each followed by the readers as they then stood.
std::string eventToText(ReaderEvent event);
std::vector<ReaderEvent> eventsFromText(const std::string &text);

} // namespace sim
