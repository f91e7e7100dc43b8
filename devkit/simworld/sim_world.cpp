#include "simworld/sim_world.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>

#include "simworld/card_file.h"
#include "simworld/commands.h"
#include "simworld/platform.h"
#include "simworld/trace_file.h"
#include "simworld/world_ops.h"
#include "simworld/world_store.h"

namespace sim {

namespace fs = std::filesystem;

namespace {

World worldOf(const std::string &folder, std::string &reason)
{
    const std::shared_ptr<const World> world = WorldStore(folder).read(reason);
    return world ? *world : World();
}

bool change(const std::string &folder, std::string &reason, const std::function<bool(WorldOps &)> &work)
{
    reason.clear();
    return WorldStore(folder).update(
        [&](World &world, std::string &error) {
            WorldOps ops(world, folder, error);
            return work(ops);
        },
        reason);
}

} // namespace

std::string SimWorld::defaultDirectory()
{
    const std::string configured = platform::variable("VELMOR_SIM_WORLD");
    return configured.empty() ? platform::defaultWorldFolder() : configured;
}

SimWorld::SimWorld(std::string directory) : folder(std::move(directory)) { }

bool SimWorld::reset()
{
    reason.clear();
    return WorldStore(folder).updateOrStartAfresh(
        [&](World &world, std::string &error) { return WorldOps(world, folder, error).reset(); }, reason);
}

bool SimWorld::applyScenario(const std::string &text)
{
    return change(folder, reason, [&](WorldOps &ops) { return runScenario(ops, text); });
}

long SimWorld::generation() const
{
    return worldOf(folder, reason).generation;
}

std::vector<Reader> SimWorld::readers() const
{
    const World world = worldOf(folder, reason);
    return { world.readers.begin(), world.readers.end() };
}

bool SimWorld::addReader(const std::string &name, bool pinpad)
{
    return change(folder, reason, [&](WorldOps &ops) { return ops.addReader(name, pinpad); });
}

bool SimWorld::removeReader(const std::string &name)
{
    return change(folder, reason, [&](WorldOps &ops) { return ops.removeReader(name); });
}

bool SimWorld::setPinpad(const std::string &reader, bool on)
{
    return change(folder, reason, [&](WorldOps &ops) { return ops.setReaderFlag(reader, &Reader::pinpad, on); });
}

bool SimWorld::setWaitCan(const std::string &reader, bool on)
{
    return change(folder, reason, [&](WorldOps &ops) { return ops.setReaderFlag(reader, &Reader::waitCan, on); });
}

bool SimWorld::setNotReadByTheMonitor(const std::string &reader, bool on)
{
    return change(folder, reason,
                  [&](WorldOps &ops) { return ops.setReaderFlag(reader, &Reader::notReadByTheMonitor, on); });
}

std::vector<ReaderEvent> SimWorld::readerEvents(long since) const
{
    std::vector<ReaderEvent> events = WorldStore(folder).events();
    events.erase(std::remove_if(events.begin(), events.end(), [&](const ReaderEvent &e) { return e.number <= since; }),
                 events.end());
    return events;
}

long SimWorld::lastReaderEvent() const
{
    return worldOf(folder, reason).lastEvent;
}

std::vector<Card> SimWorld::cards() const
{
    return listCards(cardFolders(folder, worldOf(folder, reason).cardsDirectory));
}

std::optional<Card> SimWorld::card(const std::string &name) const
{
    const std::string cardFolder = findCardFolder(cardFolders(folder, worldOf(folder, reason).cardsDirectory), name);
    if (cardFolder.empty()) {
        reason = "there is no card \"" + name + "\"";
        return {};
    }
    return readCard(cardFolder, true, reason);
}

bool SimWorld::insertCard(const std::string &reader, const std::string &card)
{
    return change(folder, reason, [&](WorldOps &ops) { return ops.insertCard(reader, card); });
}

bool SimWorld::removeCard(const std::string &reader)
{
    return change(folder, reason, [&](WorldOps &ops) { return ops.removeCard(reader); });
}

bool SimWorld::defineCard(const Card &card)
{
    if (card.name.empty() || card.name.find_first_of("/\\") != std::string::npos) {
        reason = "a card's name is not empty and has no slash";
        return false;
    }
    return change(folder, reason, [&](WorldOps &ops) {
        // A state that an earlier card of this name left behind is not this card's.
        ops.state().cards.erase(card.name);
        std::string error;
        return writeCard(folder + "/cards/" + card.name, card, error) || ops.refuse(error);
    });
}

bool SimWorld::setCardsDirectory(const std::string &path)
{
    return change(folder, reason, [&](WorldOps &ops) { return ops.setCardsDirectory(path); });
}

std::string SimWorld::cardsDirectory() const
{
    return worldOf(folder, reason).cardsDirectory;
}

std::optional<CardState> SimWorld::cardState(const std::string &card) const
{
    World world = worldOf(folder, reason);
    const CardState *state = WorldOps(world, folder, reason).cardState(card);
    return state ? std::optional<CardState>(*state) : std::nullopt;
}

bool SimWorld::setCardState(const std::string &card, const CardState &state)
{
    return change(folder, reason, [&](WorldOps &ops) { return ops.setCardState(card, state); });
}

bool SimWorld::restoreCard(const std::string &card)
{
    return change(folder, reason, [&](WorldOps &ops) { return ops.restoreCard(card); });
}

bool SimWorld::setPin(const std::string &card, const std::string &container, const std::string &pin)
{
    return change(folder, reason, [&](WorldOps &ops) { return ops.setPin(card, container, pin); });
}

bool SimWorld::setTries(const std::string &card, const std::string &container, int tries)
{
    return change(folder, reason, [&](WorldOps &ops) { return ops.setTries(card, container, tries); });
}

bool SimWorld::setPukTries(const std::string &card, int tries)
{
    return change(folder, reason, [&](WorldOps &ops) { return ops.setPukTries(card, tries); });
}

bool SimWorld::unsetPin(const std::string &card, const std::string &container, Unset kind)
{
    return change(folder, reason, [&](WorldOps &ops) { return ops.unsetPin(card, container, kind); });
}

bool SimWorld::setTokenFlags(const std::string &card, const std::string &container, std::uint32_t on, std::uint32_t off)
{
    return change(folder, reason, [&](WorldOps &ops) { return ops.setTokenFlags(card, container, on, off); });
}

bool SimWorld::setLabel(const std::string &card, const std::string &container, const std::string &label)
{
    return change(folder, reason, [&](WorldOps &ops) { return ops.setLabel(card, container, label); });
}

bool SimWorld::setDelay(int msOnEveryCall)
{
    return change(folder, reason, [&](WorldOps &ops) { return ops.setDelay(msOnEveryCall); });
}

bool SimWorld::addFault(const Fault &fault)
{
    return change(folder, reason, [&](WorldOps &ops) { return ops.addFault(fault); });
}

std::vector<Fault> SimWorld::faults() const
{
    return worldOf(folder, reason).faults;
}

bool SimWorld::clearFaults()
{
    return change(folder, reason, [](WorldOps &ops) { return ops.clearFaults(); });
}

bool SimWorld::release()
{
    return change(folder, reason, [](WorldOps &ops) { return ops.release(); });
}

int SimWorld::waitingCalls() const
{
    int count = 0;
    std::error_code ignored;
    // A note is named PROCESS-NUMBER; one whose process has died counts no more.
    for (const auto &note : fs::directory_iterator(fs::u8path(WorldStore(folder).waitingFolder()), ignored)) {
        if (platform::processAlive(std::atoi(note.path().filename().u8string().c_str())))
            ++count;
    }
    return count;
}

bool SimWorld::pad(const PadAnswer &answer)
{
    return change(folder, reason, [&](WorldOps &ops) { return ops.pad(answer); });
}

bool SimWorld::padChange(const std::string &pin, const std::string &newPin)
{
    return change(folder, reason, [&](WorldOps &ops) { return ops.padTwice(pin, pin, newPin); });
}

bool SimWorld::padUnblock(const std::string &puk, const std::string &newPin)
{
    return change(folder, reason, [&](WorldOps &ops) { return ops.padTwice(puk, {}, newPin); });
}

bool SimWorld::padFirstPin(const std::string &puk, const std::string &newPin)
{
    PadAnswer answer;
    answer.secret = puk;
    answer.newSecret = newPin;
    return pad(answer);
}

std::vector<PadAnswer> SimWorld::padAnswers() const
{
    return worldOf(folder, reason).pad;
}

bool SimWorld::clearPad()
{
    return change(folder, reason, [](WorldOps &ops) { return ops.clearPad(); });
}

bool SimWorld::setTraceOn(bool on)
{
    return change(folder, reason, [&](WorldOps &ops) { return ops.setTraceOn(on); });
}

std::vector<TraceEntry> SimWorld::fullTrace() const
{
    std::string text;
    platform::readFile(WorldStore(folder).tracePath(), text);
    return traceFromText(text);
}

std::vector<TraceEntry> SimWorld::trace() const
{
    std::vector<TraceEntry> entries = fullTrace();
    entries.erase(std::remove_if(entries.begin(), entries.end(), [](const TraceEntry &e) { return e.waiting; }),
                  entries.end());
    return entries;
}

std::vector<TraceEntry> SimWorld::trace(const std::string &function) const
{
    std::vector<TraceEntry> entries = trace();
    entries.erase(
        std::remove_if(entries.begin(), entries.end(), [&](const TraceEntry &e) { return e.function != function; }),
        entries.end());
    return entries;
}

std::vector<std::string> SimWorld::traceTexts() const
{
    std::vector<std::string> texts;
    for (const TraceEntry &entry : trace())
        texts.push_back(entry.text);
    return texts;
}

bool SimWorld::clearTrace()
{
    return change(folder, reason, [](WorldOps &ops) { return ops.clearTrace(); });
}

} // namespace sim
