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

bool isAny(const Reader &)
{
    return true;
}

bool isEmpty(const Reader &reader)
{
    return reader.card.empty();
}

bool hasCard(const Reader &reader)
{
    return !reader.card.empty();
}

// The only reader for which `wanted` holds.
bool onlyReader(WorldOps &ops, const std::string &kind, bool (*wanted)(const Reader &), std::string &name)
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
    if (!onlyReader(ops, "card in a reader", hasCard, reader))
        return false;
    card = ops.state().reader(reader)->card;
    return true;
}

Outcome insert(WorldOps &ops, const Words &words)
{
    std::string reader = defaultReaderName;
    if (words.size() == 2)
        reader = words[1];
    else if (!ops.state().readers.empty() && !onlyReader(ops, "empty reader", isEmpty, reader))
        return Outcome::Refused;
    return done(ops.insertCard(reader, words[0]));
}

Outcome removeCard(WorldOps &ops, const Words &words)
{
    std::string reader = words.empty() ? std::string() : words[0];
    const bool known = !words.empty() || onlyReader(ops, "reader with a card", hasCard, reader);
    return done(known && ops.removeCard(reader));
}

Outcome readers(WorldOps &ops, const Words &words)
{
    if (words[0] == "add" && (words.size() == 2 || (words.size() == 3 && words[2] == "pinpad")))
        return done(ops.addReader(words[1], words.size() == 3));
    if (words[0] == "remove" && words.size() == 2)
        return done(ops.removeReader(words[1]));
    return notUnderstood(ops, "readers takes: add NAME [pinpad], or remove NAME");
}

template <bool Reader::*flag>
Outcome readerSwitch(WorldOps &ops, const Words &words)
{
    bool on = false;
    if (!parseSwitch(words[0], on))
        return notUnderstood(ops, "the first word is \"on\" or \"off\"");
    std::string reader = words.size() == 2 ? words[1] : std::string();
    const bool known = words.size() == 2 || onlyReader(ops, "reader", isAny, reader);
    return done(known && ops.setReaderFlag(reader, flag, on));
}

// Does `work` on "[CARD] CONTAINER ..."; `after` is how many words follow the container.
template <class Work>
Outcome withCard(WorldOps &ops, const Words &words, std::size_t after, Work work)
{
    const bool named = words.size() == after + 2;
    std::string card = words[0];
    return done((named || onlyCard(ops, card)) && work(card, Words(words.begin() + (named ? 1 : 0), words.end())));
}

Outcome setTries(WorldOps &ops, const Words &words, std::size_t after, long long tries)
{
    return withCard(ops, words, after, [&](const std::string &card, const Words &rest) {
        return rest[0] == pukWord ? ops.setPukTries(card, tries) : ops.setTries(card, rest[0], tries);
    });
}

Outcome lock(WorldOps &ops, const Words &words)
{
    return setTries(ops, words, 0, 0);
}

Outcome tries(WorldOps &ops, const Words &words)
{
    long long count = 0;
    return parseNumber(words.back(), count) ? setTries(ops, words, 1, count)
                                            : notUnderstood(ops, "the number of tries is 0 to 3");
}

Outcome setPin(WorldOps &ops, const Words &words)
{
    return withCard(ops, words, 1, [&](const std::string &card, const Words &rest) {
        return rest[0] == pukWord ? ops.setPuk(card, rest[1]) : ops.setPin(card, rest[0], rest[1]);
    });
}

Outcome unset(WorldOps &ops, const Words &words)
{
    const bool firstUse = words.back() == "first-use";
    if (!firstUse && words.back() != "not-initialized")
        return notUnderstood(ops, "the last word is \"first-use\" or \"not-initialized\"");
    return withCard(ops, words, 1, [&](const std::string &card, const Words &rest) {
        return ops.unsetPin(card, rest[0], firstUse ? Unset::FirstUse : Unset::NotInitialized);
    });
}

Outcome flags(WorldOps &ops, const Words &words)
{
    long long on = 0;
    long long off = 0;
    if (!parseNumber(words[words.size() - 2], on) || !parseNumber(words.back(), off))
        return notUnderstood(ops, "the flags are two numbers");
    return withCard(ops, words, 2, [&](const std::string &card, const Words &rest) {
        return ops.setTokenFlags(card, rest[0], static_cast<std::uint32_t>(on), static_cast<std::uint32_t>(off));
    });
}

Outcome label(WorldOps &ops, const Words &words)
{
    return withCard(ops, words, 1,
                    [&](const std::string &card, const Words &rest) { return ops.setLabel(card, rest[0], rest[1]); });
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

Outcome sessions(WorldOps &ops, const Words &words)
{
    if (words[0] != "anew" && words[0] != "ongoing")
        return notUnderstood(ops, "sessions takes: anew, ongoing");
    return done(ops.setSessionsAnew(words[0] == "anew"));
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

template <bool (WorldOps::*op)()>
Outcome plain(WorldOps &ops, const Words &)
{
    return done((ops.*op)());
}

const struct Command {
    const char *form; // begins with the name
    std::size_t least; // arguments
    std::size_t most;
    Outcome (*run)(WorldOps &ops, const Words &words);
    const char *help;
} commands[] = {
    { "reset", 0, 0, plain<&WorldOps::reset>, "no readers, all cards as they were made, no faults, an empty trace" },
    { "readers add NAME [pinpad] | remove NAME", 2, 3, readers, "plugs a reader in or out" },
    { "insert CARD [READER]", 1, 2, insert, "puts a card into a reader, which is made if need be" },
    { "remove [READER]", 0, 1, removeCard, "takes the card out" },
    { "pinpad on|off [READER]", 1, 2, readerSwitch<&Reader::pinpad>, "gives the reader a keypad, or takes it away" },
    { "wait-can on|off [READER]", 1, 2, readerSwitch<&Reader::waitCan>, "the card there waits for its CAN" },
    { "unread on|off [READER]", 1, 2, readerSwitch<&Reader::notReadByTheMonitor>,
      "the Monitor has not read the card there" },
    { "lock [CARD] CONTAINER|PUK", 1, 2, lock, "locks a PIN or the PUK" },
    { "tries [CARD] CONTAINER|PUK N", 2, 3, tries, "sets the tries left, 0 to 3" },
    { "pin [CARD] CONTAINER|PUK DIGITS", 2, 3, setPin, "sets a PIN or the PUK, with three tries" },
    { "unset [CARD] CONTAINER first-use|not-initialized", 2, 3, unset, "takes a PIN away, in one of two ways" },
    { "flags [CARD] CONTAINER ON OFF", 3, 4, flags, "token flag bits always and never shown" },
    { "label [CARD] CONTAINER TEXT", 2, 3, label, "another token label; \"\" for the container's word" },
    { "restore [CARD]", 0, 1, restore, "a card as it was made" },
    { "pad change PIN NEW | unblock PUK NEW | first PUK NEW | cancel | ...", 1, 4, pad,
      "what the user does at the keypad" },
    { "delay MS", 1, 1, delay, "every call of the library takes so much longer" },
    { "fault FUNCTION [KEY=VALUE ...] | clear", 1, 20, fault, "lets calls go wrong; \"velmor-sim help fault\"" },
    { "release", 0, 0, plain<&WorldOps::release>, "lets blocked calls go on" },
    { "sessions anew|ongoing", 1, 1, sessions,
      "session handles begin at 1 again at each C_Initialize, or never mean another session" },
    { "trace on|off|clear", 1, 1, trace, "the record of calls" },
    { "cards FOLDER", 1, 1, cards, "where the cards are looked for; \"\" for the usual places" },
};

const Command *findCommand(const std::string &name)
{
    for (const Command &command : commands) {
        const std::string form = command.form;
        if (name == form.substr(0, form.find(' ')))
            return &command;
    }
    return nullptr;
}

} // namespace

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
