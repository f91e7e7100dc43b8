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

    // No reader, all cards as made, no fault, no pad answer, no delay, an empty trace that is on. Cards of this world's
    // own stay. Whatever waits in a blocked call is released.
    bool reset();

    bool addReader(const std::string &name, bool pinpad); // a new name, not empty
    bool removeReader(const std::string &name); // its card is free again
    bool setReaderFlag(const std::string &reader, bool Reader::*flag, bool on);

    // A card is in one reader at most; its PINs stay as they are while it is out.
    bool insertCard(const std::string &reader, const std::string &card); // the reader is made if it does not exist
    bool removeCard(const std::string &reader);
    bool setCardsDirectory(const std::string &path); // instead of VELMOR_SIM_CARDS or the folder beside the library

    bool setCardState(const std::string &card, const CardState &state);
    bool restoreCard(const std::string &card); // as made
    bool setPin(const std::string &card, const std::string &container, const std::string &pin); // with three tries
    bool setPuk(const std::string &card, const std::string &puk); // likewise
    bool setTries(const std::string &card, const std::string &container, long long tries); // 0 to 3
    bool setPukTries(const std::string &card, long long tries);
    bool unsetPin(const std::string &card, const std::string &container, Unset kind);
    bool setTokenFlags(const std::string &card, const std::string &container, std::uint32_t on, std::uint32_t off);
    bool setLabel(const std::string &card, const std::string &container, const std::string &label);

    bool setDelay(long long ms); // of every call
    bool addFault(const Fault &fault);
    bool clearFaults();
    // Blocked calls go on, each with what else its fault says; one that begins later blocks again. Pad waits need an
    // answer.
    bool release();

    bool pad(const PadAnswer &answer);
    bool padChange(const std::string &pin, const std::string &newPin); // answers C_Login and C_SetPIN
    bool padUnblock(const std::string &puk, const std::string &newPin); // answers C_Login and C_InitPIN
    bool padFirstPin(const std::string &puk, const std::string &newPin); // answers C_SetPIN of a first use
    bool clearPad();

    // Whether an old handle can be that of a new session, as it can with some libraries.
    bool setSessionsAnew(bool on);
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
