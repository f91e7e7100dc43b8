#pragma once

#include <string>
#include <vector>

#include "simworld/world_state.h"

// Every change that SimWorld, velmor-sim and scenario files can make, on a world in memory. Each is refused with a
// reason in `error`, in words for a person, and then leaves the world alone.
namespace sim {

class WorldOps {
public:
    // `worldFolder` is where the cards of this world's own are looked for.
    WorldOps(World &changedWorld, std::string worldFolder, std::string &reason);

    bool reset();
    bool addReader(const std::string &name, bool pinpad);
    bool removeReader(const std::string &name);
    bool setReaderFlag(const std::string &reader, bool Reader::*flag, bool on);
    bool insertCard(const std::string &reader, const std::string &card);
    bool removeCard(const std::string &reader);
    bool setCardsDirectory(const std::string &path);

    bool setCardState(const std::string &card, const CardState &state);
    bool restoreCard(const std::string &card);
    bool setPin(const std::string &card, const std::string &container, const std::string &pin);
    bool setPuk(const std::string &card, const std::string &puk);
    bool setTries(const std::string &card, const std::string &container, long long tries);
    bool setPukTries(const std::string &card, long long tries);
    bool unsetPin(const std::string &card, const std::string &container, SimWorld::Unset kind);
    bool setTokenFlags(const std::string &card, const std::string &container, std::uint32_t on, std::uint32_t off);
    bool setLabel(const std::string &card, const std::string &container, const std::string &label);

    bool setDelay(long long ms);
    bool addFault(const Fault &fault);
    bool clearFaults();
    bool release();
    bool pad(const PadAnswer &answer);
    // Two answers, for a login with `secret` and for the call after it.
    bool padTwice(const std::string &secret, const std::string &secondSecret, const std::string &newSecret);
    bool clearPad();
    bool setTraceOn(bool on);
    bool clearTrace();

    // The card's state in the world, made from the card itself at its first use; null with a reason if there is no such
    // card.
    CardState *cardState(const std::string &card);
    World &state() { return world; }
    bool refuse(const std::string &reason);
    const std::string &reason() const { return error; }

private:
    std::vector<std::string> folders() const;
    WorldReader *knownReader(const std::string &name);
    PinState *knownPin(const std::string &card, const std::string &container);
    PinState *knownToken(const std::string &card, const std::string &container);
    void note(const std::string &what, const std::string &reader);

    World &world;
    std::string folder;
    std::string &error;
};

} // namespace sim
