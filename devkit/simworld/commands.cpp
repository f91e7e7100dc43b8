#include "simworld/commands.h"

#include <algorithm>

#include "simworld/command_faults.h"
#include "simworld/config_text.h"
#include "simworld/cryptoki_names.h"

namespace sim {

namespace {

using Words = std::vector<std::string>;
using Outcome = CommandOutcome;

constexpr const char *pukWord = "PUK";

Outcome done(bool ok)
{
    return ok ? Outcome::Done : Outcome::Refused;
}

Outcome notUnderstood(WorldOps &ops, const std::string &reason)
{
    ops.refuse(reason);
    return Outcome::NotUnderstood;
}

bool parseSwitch(const std::string &word, bool &on)
{
    on = word == "on";
    return on || word == "off";
}

// The only reader for which `wanted` holds.
template <class Wanted>
bool onlyReader(WorldOps &ops, const std::string &kind, Wanted wanted, std::string &name)
{
    int count = 0;
    for (const Reader &reader : ops.state().readers) {
        if (wanted(reader)) {
            name = reader.name;
            ++count;
        }
    }
    if (count == 1)
        return true;
    return ops.refuse(count == 0 ? "there is no " + kind : "there are several of them: name the " + kind);
}

bool onlyCard(WorldOps &ops, std::string &card)
{
    std::string reader;
    if (!onlyReader(
            ops, "card in a reader", [](const Reader &r) { return !r.card.empty(); }, reader))
        return false;
    card = ops.state().reader(reader)->card;
    return true;
}

Outcome insert(WorldOps &ops, const Words &words)
{
    std::string reader = defaultReaderName;
    if (words.size() == 2)
        reader = words[1];
    else if (!ops.state().readers.empty()
             && !onlyReader(
                 ops, "empty reader", [](const Reader &r) { return r.card.empty(); }, reader))
        return Outcome::Refused;
    return done(ops.insertCard(reader, words[0]));
}

Outcome removeCard(WorldOps &ops, const Words &words)
{
    std::string reader = words.empty() ? std::string() : words[0];
    if (words.empty()
        && !onlyReader(
            ops, "reader with a card", [](const Reader &r) { return !r.card.empty(); }, reader))
        return Outcome::Refused;
    return done(ops.removeCard(reader));
}

Outcome readers(WorldOps &ops, const Words &words)
{
    if (words[0] == "add" && (words.size() == 2 || (words.size() == 3 && words[2] == "pinpad")))
        return done(ops.addReader(words[1], words.size() == 3));
    if (words[0] == "remove" && words.size() == 2)
        return done(ops.removeReader(words[1]));
    return notUnderstood(ops, "readers takes: add NAME [pinpad], or remove NAME");
}

Outcome readerSwitch(WorldOps &ops, const Words &words, bool Reader::*flag)
{
    bool on = false;
    if (!parseSwitch(words[0], on))
        return notUnderstood(ops, "the first word is \"on\" or \"off\"");
    std::string reader = words.size() == 2 ? words[1] : std::string();
    if (words.size() < 2
        && !onlyReader(
            ops, "reader", [](const Reader &) { return true; }, reader))
        return Outcome::Refused;
    return done(ops.setReaderFlag(reader, flag, on));
}

Outcome pinpad(WorldOps &ops, const Words &words)
{
    return readerSwitch(ops, words, &Reader::pinpad);
}

Outcome waitCan(WorldOps &ops, const Words &words)
{
    return readerSwitch(ops, words, &Reader::waitCan);
}

Outcome unread(WorldOps &ops, const Words &words)
{
    return readerSwitch(ops, words, &Reader::notReadByTheMonitor);
}

// Takes an optional card off the front of "[CARD] CONTAINER ..."; `after` is how many words follow the container.
bool takeCard(WorldOps &ops, Words &words, std::size_t after, std::string &card)
{
    if (words.size() == after + 2) {
        card = words[0];
        words.erase(words.begin());
        return true;
    }
    return onlyCard(ops, card);
}

Outcome setTries(WorldOps &ops, const std::string &card, const std::string &what, long long tries)
{
    return done(what == pukWord ? ops.setPukTries(card, tries) : ops.setTries(card, what, tries));
}

Outcome lock(WorldOps &ops, const Words &words)
{
    Words rest = words;
    std::string card;
    return takeCard(ops, rest, 0, card) ? setTries(ops, card, rest[0], 0) : Outcome::Refused;
}

Outcome tries(WorldOps &ops, const Words &words)
{
    Words rest = words;
    std::string card;
    long long count = 0;
    if (!parseNumber(rest.back(), count))
        return notUnderstood(ops, "the number of tries is 0 to 3");
    return takeCard(ops, rest, 1, card) ? setTries(ops, card, rest[0], count) : Outcome::Refused;
}

Outcome setPin(WorldOps &ops, const Words &words)
{
    Words rest = words;
    std::string card;
    if (!takeCard(ops, rest, 1, card))
        return Outcome::Refused;
    return done(rest[0] == pukWord ? ops.setPuk(card, rest[1]) : ops.setPin(card, rest[0], rest[1]));
}

Outcome unset(WorldOps &ops, const Words &words)
{
    Words rest = words;
    std::string card;
    const bool firstUse = rest.back() == "first-use";
    if (!firstUse && rest.back() != "not-initialized")
        return notUnderstood(ops, "the last word is \"first-use\" or \"not-initialized\"");
    if (!takeCard(ops, rest, 1, card))
        return Outcome::Refused;
    return done(ops.unsetPin(card, rest[0], firstUse ? Unset::FirstUse : Unset::NotInitialized));
}

Outcome flags(WorldOps &ops, const Words &words)
{
    Words rest = words;
    std::string card;
    long long on = 0;
    long long off = 0;
    if (!parseNumber(words[words.size() - 2], on) || !parseNumber(words.back(), off))
        return notUnderstood(ops, "the flags are two numbers");
    if (!takeCard(ops, rest, 2, card))
        return Outcome::Refused;
    return done(ops.setTokenFlags(card, rest[0], static_cast<std::uint32_t>(on), static_cast<std::uint32_t>(off)));
}

Outcome label(WorldOps &ops, const Words &words)
{
    Words rest = words;
    std::string card;
    return takeCard(ops, rest, 1, card) ? done(ops.setLabel(card, rest[0], rest[1])) : Outcome::Refused;
}

Outcome restore(WorldOps &ops, const Words &words)
{
    std::string card = words.empty() ? std::string() : words[0];
    return words.empty() && !onlyCard(ops, card) ? Outcome::Refused : done(ops.restoreCard(card));
}

Outcome delay(WorldOps &ops, const Words &words)
{
    long long ms = 0;
    return parseNumber(words[0], ms) ? done(ops.setDelay(ms))
                                     : notUnderstood(ops, "a delay is a number of milliseconds");
}

Outcome fault(WorldOps &ops, const Words &words)
{
    if (words.size() == 1 && words[0] == "clear")
        return done(ops.clearFaults());
    Fault wanted;
    std::string reason;
    if (!parseFault(words, wanted, reason))
        return notUnderstood(ops, reason);
    return done(ops.addFault(wanted));
}

Outcome release(WorldOps &ops, const Words &)
{
    return done(ops.release());
}

Outcome pad(WorldOps &ops, const Words &words)
{
    const std::string &verb = words[0];
    PadAnswer answer;
    if (verb == "clear" && words.size() == 1)
        return done(ops.clearPad());
    if (verb == "change" && words.size() == 3)
        return done(ops.padChange(words[1], words[2]));
    if (verb == "unblock" && words.size() == 3)
        return done(ops.padUnblock(words[1], words[2]));
    if (!parsePad(words, answer))
        return notUnderstood(ops,
                             "pad takes: change PIN NEW, unblock PUK NEW, first PUK NEW, enter SECRET [NEW [REPEAT]], "
                             "cancel, mismatch, reject, result CKR, clear");
    return done(ops.pad(answer));
}

Outcome trace(WorldOps &ops, const Words &words)
{
    bool on = false;
    if (words[0] == "clear")
        return done(ops.clearTrace());
    return parseSwitch(words[0], on) ? done(ops.setTraceOn(on)) : notUnderstood(ops, "trace takes: on, off, clear");
}

Outcome cards(WorldOps &ops, const Words &words)
{
    return done(ops.setCardsDirectory(words[0]));
}

Outcome reset(WorldOps &ops, const Words &)
{
    return done(ops.reset());
}

const struct Command {
    const char *name;
    std::size_t least; // arguments
    std::size_t most;
    Outcome (*run)(WorldOps &ops, const Words &words);
    const char *form;
    const char *help;
} commands[] = {
    { "reset", 0, 0, reset, "reset", "no readers, all cards as they were made, no faults, an empty trace" },
    { "readers", 2, 3, readers, "readers add NAME [pinpad] | remove NAME", "plugs a reader in or out" },
    { "insert", 1, 2, insert, "insert CARD [READER]", "puts a card into a reader, which is made if need be" },
    { "remove", 0, 1, removeCard, "remove [READER]", "takes the card out" },
    { "pinpad", 1, 2, pinpad, "pinpad on|off [READER]", "gives the reader a keypad, or takes it away" },
    { "wait-can", 1, 2, waitCan, "wait-can on|off [READER]", "the card there waits for its CAN" },
    { "unread", 1, 2, unread, "unread on|off [READER]", "the Monitor has not read the card there" },
    { "lock", 1, 2, lock, "lock [CARD] CONTAINER|PUK", "locks a PIN or the PUK" },
    { "tries", 2, 3, tries, "tries [CARD] CONTAINER|PUK N", "sets the tries left, 0 to 3" },
    { "pin", 2, 3, setPin, "pin [CARD] CONTAINER|PUK DIGITS", "sets a PIN or the PUK, with three tries" },
    { "unset", 2, 3, unset, "unset [CARD] CONTAINER first-use|not-initialized",
      "takes a PIN away, in one of two ways" },
    { "flags", 3, 4, flags, "flags [CARD] CONTAINER ON OFF", "token flag bits always and never shown" },
    { "label", 2, 3, label, "label [CARD] CONTAINER TEXT", "another token label; \"\" for the container's word" },
    { "restore", 0, 1, restore, "restore [CARD]", "a card as it was made" },
    { "pad", 1, 4, pad, "pad change PIN NEW | unblock PUK NEW | first PUK NEW | cancel | ...",
      "what the user does at the keypad" },
    { "delay", 1, 1, delay, "delay MS", "every call of the library takes so much longer" },
    { "fault", 1, 20, fault, "fault FUNCTION [KEY=VALUE ...] | clear",
      "lets calls go wrong; \"velmor-sim help fault\"" },
    { "release", 0, 0, release, "release", "lets blocked calls go on" },
    { "trace", 1, 1, trace, "trace on|off|clear", "the record of calls" },
    { "cards", 1, 1, cards, "cards FOLDER", "where the cards are looked for; \"\" for the usual places" },
};

const Command *findCommand(const std::string &name)
{
    for (const Command &command : commands) {
        if (name == command.name)
            return &command;
    }
    return nullptr;
}

} // namespace

bool isCommand(const std::string &name)
{
    return findCommand(name) != nullptr;
}

CommandOutcome runCommand(WorldOps &ops, const std::vector<std::string> &words)
{
    const Command *command = words.empty() ? nullptr : findCommand(words[0]);
    if (!command)
        return notUnderstood(ops, words.empty() ? "no command" : "there is no command \"" + words[0] + "\"");
    const Words arguments(words.begin() + 1, words.end());
    if (arguments.size() < command->least || arguments.size() > command->most)
        return notUnderstood(ops, std::string("it is: ") + command->form);
    return command->run(ops, arguments);
}

bool runScenario(WorldOps &ops, const std::string &text)
{
    int number = 0;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        const std::string line = trimmed(text.substr(start, end - start));
        start = end + 1;
        ++number;
        if (line.empty() || line[0] == '#')
            continue;
        std::vector<std::string> words;
        const std::string where = "line " + std::to_string(number) + ": ";
        if (!splitWords(line, words))
            return ops.refuse(where + "a quote is not closed");
        if (runCommand(ops, words) != CommandOutcome::Done)
            return ops.refuse(where + ops.reason());
    }
    return true;
}

std::string commandHelp()
{
    std::string out;
    for (const Command &command : commands)
        out += std::string("  ") + command.form + "\n      " + command.help + "\n";
    return out;
}

} // namespace sim
