#include "simworld/world_ops.h"

#include <algorithm>
#include <filesystem>

#include "simworld/card_file.h"
#include "simworld/command_faults.h"
#include "simworld/cryptoki_names.h"
#include "simworld/world_store.h"

namespace sim {

namespace fs = std::filesystem;

namespace {

std::string inQuotes(const std::string &text)
{
    return "\"" + text + "\"";
}

bool isDigits(const std::string &text, int count)
{
    return text.size() == static_cast<std::size_t>(count) && text.find_first_not_of("0123456789") == std::string::npos;
}

} // namespace

WorldOps::WorldOps(World &changedWorld, std::string worldFolder, std::string &reason) :
    world(changedWorld), folder(std::move(worldFolder)), error(reason)
{
}

bool WorldOps::refuse(const std::string &reason)
{
    error = reason;
    return false;
}

std::vector<std::string> WorldOps::folders() const
{
    return cardFolders(folder, world.cardsDirectory);
}

void WorldOps::note(const std::string &what, const std::string &reader)
{
    ReaderEvent event;
    event.what = what;
    event.reader = reader;
    event.readers.assign(world.readers.begin(), world.readers.end());
    world.newEvents.push_back(event);
}

WorldReader *WorldOps::knownReader(const std::string &name)
{
    WorldReader *reader = world.reader(name);
    if (!reader)
        refuse("there is no reader " + inQuotes(name));
    return reader;
}

CardState *WorldOps::cardState(const std::string &card)
{
    const auto found = world.cards.find(card);
    if (found != world.cards.end())
        return &found->second;
    std::string cardFolder = findCardFolder(folders(), card);
    for (const WorldReader &reader : world.readers) {
        if (reader.card == card)
            cardFolder = reader.cardFolder; // it may have been inserted by its path
    }
    if (cardFolder.empty()) {
        refuse("there is no card " + inQuotes(card));
        return nullptr;
    }
    const auto made = readCard(cardFolder, false, error);
    return made ? &world.cards.emplace(card, made->state).first->second : nullptr;
}

PinState *WorldOps::knownToken(const std::string &card, const std::string &container)
{
    if (!isContainer(container)) {
        refuse("there is no container " + inQuotes(container));
        return nullptr;
    }
    CardState *state = cardState(card);
    return state ? &state->pins[container] : nullptr;
}

PinState *WorldOps::knownPin(const std::string &card, const std::string &container)
{
    if (isContainer(container) && pinDigits(container) == 0) {
        refuse(container + " has no PIN");
        return nullptr;
    }
    return knownToken(card, container);
}

bool WorldOps::reset()
{
    World fresh;
    fresh.generation = world.generation;
    fresh.lastInsertion = world.lastInsertion;
    fresh.lastEvent = world.lastEvent;
    fresh.cardsDirectory = world.cardsDirectory;
    fresh.clearTrace = true;
    fresh.clearEvents = true;
    fresh.release = true;
    world = fresh;
    // A thread that was ended from outside may have left the note of its call behind.
    std::error_code ignored;
    for (const auto &left : fs::directory_iterator(fs::u8path(WorldStore(folder).waitingFolder()), ignored))
        fs::remove(left.path(), ignored);
    note("reset", {});
    return true;
}

bool WorldOps::addReader(const std::string &name, bool pinpad)
{
    // The slot description holds 64 bytes and ends in " #" and one digit.
    constexpr std::size_t longestName = 61;
    if (name.empty() || name.size() > longestName)
        return refuse("a reader's name has 1 to 61 bytes");
    if (world.reader(name))
        return refuse("there is already a reader " + inQuotes(name));
    WorldReader reader;
    reader.name = name;
    reader.pinpad = pinpad;
    const auto taken = [&](int id) {
        return std::any_of(world.readers.begin(), world.readers.end(), [&](const Reader &r) { return r.id == id; });
    };
    for (reader.id = 1; taken(reader.id); ++reader.id) { }
    world.readers.push_back(reader);
    note("added", name);
    return true;
}

bool WorldOps::removeReader(const std::string &name)
{
    if (!knownReader(name))
        return false;
    world.readers.erase(std::remove_if(world.readers.begin(), world.readers.end(),
                                       [&](const Reader &reader) { return reader.name == name; }),
                        world.readers.end());
    note("removed", name);
    return true;
}

bool WorldOps::setReaderFlag(const std::string &reader, bool Reader::*flag, bool on)
{
    WorldReader *found = knownReader(reader);
    if (!found)
        return false;
    if (found->*flag != on) {
        found->*flag = on;
        note("changed", reader);
    }
    return true;
}

bool WorldOps::insertCard(const std::string &reader, const std::string &card)
{
    const std::string cardFolder = findCardFolder(folders(), card);
    if (cardFolder.empty())
        return refuse("there is no card " + inQuotes(card));
    const auto made = readCard(cardFolder, false, error);
    if (!made)
        return false;
    for (const Reader &other : world.readers) {
        if (other.card == made->name)
            return refuse("the card " + inQuotes(made->name) + " is in the reader " + inQuotes(other.name));
    }
    if (!world.reader(reader) && !addReader(reader, false))
        return false;
    WorldReader *found = world.reader(reader);
    if (!found->card.empty())
        return refuse("the reader " + inQuotes(reader) + " holds the card " + inQuotes(found->card));
    found->card = made->name;
    found->cardFolder = fs::absolute(fs::u8path(cardFolder)).generic_u8string();
    found->supported = made->supported;
    found->insertion = ++world.lastInsertion;
    note("inserted", reader);
    return true;
}

bool WorldOps::removeCard(const std::string &reader)
{
    WorldReader *found = knownReader(reader);
    if (!found)
        return false;
    if (found->card.empty())
        return refuse("the reader " + inQuotes(reader) + " is empty");
    found->card.clear();
    found->cardFolder.clear();
    found->supported = true;
    note("ejected", reader);
    return true;
}

bool WorldOps::setCardsDirectory(const std::string &path)
{
    std::error_code ignored;
    if (!path.empty() && !fs::is_directory(fs::u8path(path), ignored))
        return refuse("there is no folder " + inQuotes(path));
    world.cardsDirectory = path.empty() ? path : fs::absolute(fs::u8path(path)).generic_u8string();
    return true;
}

bool WorldOps::setCardState(const std::string &card, const CardState &state)
{
    CardState *known = cardState(card);
    if (!known)
        return false;
    *known = state;
    for (const char *container : containers)
        known->pins[container];
    return true;
}

bool WorldOps::restoreCard(const std::string &card)
{
    if (!cardState(card))
        return false;
    world.cards.erase(card);
    return true;
}

bool WorldOps::setPin(const std::string &card, const std::string &container, const std::string &pin)
{
    PinState *state = knownPin(card, container);
    if (!state)
        return false;
    if (!isDigits(pin, pinDigits(container)))
        return refuse("the PIN of " + container + " has " + std::to_string(pinDigits(container)) + " digits");
    state->pin = pin;
    state->tries = maxTries;
    state->initialized = true;
    state->toBeChanged = false;
    return true;
}

bool WorldOps::setPuk(const std::string &card, const std::string &puk)
{
    CardState *state = cardState(card);
    if (!state)
        return false;
    if (!isDigits(puk, pukDigits))
        return refuse("the PUK has " + std::to_string(pukDigits) + " digits");
    state->puk = puk;
    state->pukTries = maxTries;
    return true;
}

bool WorldOps::setTries(const std::string &card, const std::string &container, long long tries)
{
    if (tries < 0 || tries > maxTries)
        return refuse("tries are 0 to 3");
    PinState *state = knownPin(card, container);
    if (state)
        state->tries = static_cast<int>(tries);
    return state != nullptr;
}

bool WorldOps::setPukTries(const std::string &card, long long tries)
{
    if (tries < 0 || tries > maxTries)
        return refuse("tries are 0 to 3");
    CardState *state = cardState(card);
    if (state)
        state->pukTries = static_cast<int>(tries);
    return state != nullptr;
}

bool WorldOps::unsetPin(const std::string &card, const std::string &container, Unset kind)
{
    PinState *state = knownPin(card, container);
    if (!state)
        return false;
    state->initialized = kind == Unset::FirstUse;
    state->toBeChanged = kind == Unset::FirstUse;
    state->tries = maxTries;
    return true;
}

bool WorldOps::setTokenFlags(const std::string &card, const std::string &container, std::uint32_t on, std::uint32_t off)
{
    PinState *state = knownToken(card, container);
    if (!state)
        return false;
    state->flagsOn = on;
    state->flagsOff = off;
    return true;
}

bool WorldOps::setLabel(const std::string &card, const std::string &container, const std::string &label)
{
    PinState *state = knownToken(card, container);
    if (state)
        state->label = label;
    return state != nullptr;
}

bool WorldOps::setDelay(long long ms)
{
    if (ms < 0 || ms > longestDelayMs)
        return refuse("a delay is 0 to 600000 milliseconds");
    world.delayMs = static_cast<int>(ms);
    return true;
}

bool WorldOps::addFault(const Fault &fault)
{
    if (!isCryptokiFunction(fault.function) && fault.function != "*")
        return refuse(inQuotes(fault.function) + " is no function of the card library");
    if (fault.nth < 0 || fault.delayMs < 0)
        return refuse("neither a call's number nor a delay can be negative");
    // Nothing may come into the world that its file could not give back.
    std::vector<std::string> words;
    Fault read;
    if (!splitWords(describeFault(fault), words) || !parseFault(words, read, error))
        return false;
    world.faults.push_back(fault);
    return true;
}

bool WorldOps::clearFaults()
{
    world.faults.clear();
    return true;
}

bool WorldOps::release()
{
    world.release = true;
    return true;
}

bool WorldOps::pad(const PadAnswer &answer)
{
    world.pad.push_back(answer);
    return true;
}

bool WorldOps::padChange(const std::string &pin, const std::string &newPin)
{
    return pad({ PadAnswer::Kind::Enter, pin, {}, {}, 0 }) && pad({ PadAnswer::Kind::Enter, pin, newPin, {}, 0 });
}

bool WorldOps::padUnblock(const std::string &puk, const std::string &newPin)
{
    return pad({ PadAnswer::Kind::Enter, puk, {}, {}, 0 }) && pad({ PadAnswer::Kind::Enter, {}, newPin, {}, 0 });
}

bool WorldOps::padFirstPin(const std::string &puk, const std::string &newPin)
{
    return pad({ PadAnswer::Kind::Enter, puk, newPin, {}, 0 });
}

bool WorldOps::clearPad()
{
    world.pad.clear();
    return true;
}

bool WorldOps::setSessionsAnew(bool on)
{
    world.sessionsAnew = on;
    return true;
}

bool WorldOps::setTraceOn(bool on)
{
    world.traceOn = on;
    return true;
}

bool WorldOps::clearTrace()
{
    world.clearTrace = true;
    return true;
}

} // namespace sim
