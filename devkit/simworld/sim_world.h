#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "simworld/world_ops.h"

// The simulated world: readers, specimen cards, PIN counters, faults and the call trace. The stand-in of the card
// library reads it at every call, velmor-sim and the tests change it; all of them may be different processes at the
// same time.
//
// Everything lives in one folder of plain text files (README.md beside this folder tells the format). Each method of
// SimWorld is one step: it locks the folder, reads, changes, writes. A change is seen by the library at its next call.
//
// Texts and paths are UTF-8. No exceptions: a method that can fail returns false and leaves its reason in error().
namespace sim {

class SimWorld {
public:
    // VELMOR_SIM_WORLD, else $XDG_STATE_HOME/velmor-sim, else ~/.local/state/velmor-sim; Windows: APPDATA\velmor-sim.
    static std::string defaultDirectory();

    explicit SimWorld(std::string directory = defaultDirectory());

    std::string directory() const { return folder; }
    std::string error() const { return reason; }

    // Sets the whole world from a text of velmor-sim commands, one a line (README.md). Nothing is changed on an error.
    bool applyScenario(const std::string &text);
    bool defineCard(const Card &card); // a card of this world's own; replaces one of the same name
    bool reset(); // also of a world that cannot be read

    // The changes of WorldOps, where they are explained.
    using Text = const std::string &;
    using Unset = sim::Unset;
    bool addReader(Text name, bool pinpad = false) { return step(&WorldOps::addReader, name, pinpad); }
    bool removeReader(Text name) { return step(&WorldOps::removeReader, name); }
    bool setPinpad(Text reader, bool on) { return step(&WorldOps::setReaderFlag, reader, &Reader::pinpad, on); }
    bool setWaitCan(Text reader, bool on) { return step(&WorldOps::setReaderFlag, reader, &Reader::waitCan, on); }
    bool setNotReadByTheMonitor(Text reader, bool on)
    {
        return step(&WorldOps::setReaderFlag, reader, &Reader::notReadByTheMonitor, on);
    }
    bool insertCard(Text reader, Text card) { return step(&WorldOps::insertCard, reader, card); }
    bool removeCard(Text reader) { return step(&WorldOps::removeCard, reader); }
    bool setCardsDirectory(Text path) { return step(&WorldOps::setCardsDirectory, path); }
    bool setCardState(Text card, const CardState &state) { return step(&WorldOps::setCardState, card, state); }
    bool restoreCard(Text card) { return step(&WorldOps::restoreCard, card); }
    bool setPin(Text card, Text container, Text pin) { return step(&WorldOps::setPin, card, container, pin); }
    bool setTries(Text card, Text container, int tries) { return step(&WorldOps::setTries, card, container, tries); }
    bool setPukTries(Text card, int tries) { return step(&WorldOps::setPukTries, card, tries); }
    bool unsetPin(Text card, Text container, Unset kind) { return step(&WorldOps::unsetPin, card, container, kind); }
    bool setTokenFlags(Text card, Text container, std::uint32_t on, std::uint32_t off)
    {
        return step(&WorldOps::setTokenFlags, card, container, on, off);
    }
    bool setLabel(Text card, Text container, Text label) { return step(&WorldOps::setLabel, card, container, label); }
    bool setDelay(int msOnEveryCall) { return step(&WorldOps::setDelay, msOnEveryCall); }
    bool addFault(const Fault &fault) { return step(&WorldOps::addFault, fault); }
    // The n-th such call waits for release().
    bool block(Text function, Text container = {}, int nth = 1);
    bool clearFaults() { return step(&WorldOps::clearFaults); }
    bool release() { return step(&WorldOps::release); }
    bool pad(const PadAnswer &answer) { return step(&WorldOps::pad, answer); }
    bool padChange(Text pin, Text newPin) { return step(&WorldOps::padChange, pin, newPin); }
    bool padUnblock(Text puk, Text newPin) { return step(&WorldOps::padUnblock, puk, newPin); }
    bool padFirstPin(Text puk, Text newPin) { return step(&WorldOps::padFirstPin, puk, newPin); }
    bool clearPad() { return step(&WorldOps::clearPad); }
    bool setSessionsAnew(bool on) { return step(&WorldOps::setSessionsAnew, on); }
    bool setTraceOn(bool on) { return step(&WorldOps::setTraceOn, on); }
    bool clearTrace() { return step(&WorldOps::clearTrace); }

    // The world as it is now.
    long generation() const; // changes whenever anything in the world changes
    std::vector<Reader> readers() const; // in the order in which the library lists them
    // Reader changes after `since`, oldest first; none is ever merged with another.
    std::vector<ReaderEvent> readerEvents(long since = 0) const;
    long lastReaderEvent() const;
    std::vector<Card> cards() const; // all that can be inserted, without their objects' values
    std::optional<Card> card(const std::string &name) const; // with values, as made
    std::string cardsDirectory() const;
    std::optional<CardState> cardState(const std::string &card) const; // PINs as they are now
    int delay() const; // of every call, in milliseconds
    std::vector<Fault> faults() const; // `nth` is what is left to count
    int waitingCalls() const; // calls that wait now, in a block or at the pad
    std::vector<PadAnswer> padAnswers() const;

    // Trace, oldest first, of all processes.
    std::vector<TraceEntry> trace() const; // finished calls only
    std::vector<TraceEntry> trace(const std::string &function) const;
    std::vector<std::string> traceTexts() const; // texts of trace()
    std::vector<TraceEntry> fullTrace() const; // with the "waiting" notes

private:
    bool change(const std::function<bool(WorldOps &ops)> &work);
    template <class... Parameters, class... Arguments>
    bool step(bool (WorldOps::*op)(Parameters...), const Arguments &...arguments)
    {
        return change([&](WorldOps &ops) { return (ops.*op)(arguments...); });
    }
    World state() const;

    std::string folder;
    mutable std::string reason;
};

} // namespace sim
