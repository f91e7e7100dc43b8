#include "simworld/sim_world.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "simworld/card_file.h"
#include "simworld/commands.h"
#include "simworld/platform.h"
#include "simworld/trace_file.h"
#include "simworld/world_store.h"

namespace sim {

namespace fs = std::filesystem;

std::string SimWorld::defaultDirectory()
{
    const std::string configured = platform::variable("VELMOR_SIM_WORLD");
    return configured.empty() ? platform::defaultWorldFolder() : configured;
}

SimWorld::SimWorld(std::string directory) : folder(std::move(directory)) { }

World SimWorld::state() const
{
    const std::shared_ptr<const World> now = WorldStore(folder).read(reason);
    return now ? *now : World();
}

bool SimWorld::change(const std::function<bool(WorldOps &)> &work)
{
    reason.clear();
    return WorldStore(folder).update(
        [&](World &world, std::string &error) {
            WorldOps ops(world, folder, error);
            return work(ops);
        },
        reason);
}

bool SimWorld::reset()
{
    reason.clear();
    return WorldStore(folder).updateOrStartAfresh(
        [&](World &world, std::string &error) { return WorldOps(world, folder, error).reset(); }, reason);
}

bool SimWorld::applyScenario(const std::string &text)
{
    return change([&](WorldOps &ops) { return runScenario(ops, text); });
}

long SimWorld::generation() const
{
    return state().generation;
}

std::vector<Reader> SimWorld::readers() const
{
    const World world = state();
    return { world.readers.begin(), world.readers.end() };
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
    return state().lastEvent;
}

std::vector<Card> SimWorld::cards() const
{
    return listCards(cardFolders(folder, state().cardsDirectory));
}

std::optional<Card> SimWorld::card(const std::string &name) const
{
    const std::string cardFolder = findCardFolder(cardFolders(folder, state().cardsDirectory), name);
    if (cardFolder.empty()) {
        reason = "there is no card \"" + name + "\"";
        return {};
    }
    return readCard(cardFolder, true, reason);
}

bool SimWorld::defineCard(const Card &card)
{
    if (card.name.empty() || card.name.find_first_of("/\\") != std::string::npos) {
        reason = "a card's name is not empty and has no slash";
        return false;
    }
    return change([&](WorldOps &ops) {
        // A state that an earlier card of this name left behind is not this card's.
        ops.state().cards.erase(card.name);
        std::string error;
        return writeCard(folder + "/cards/" + card.name, card, error) || ops.refuse(error);
    });
}

bool SimWorld::block(Text function, Text container, int nth)
{
    Fault fault;
    fault.function = function;
    fault.container = container;
    fault.nth = nth;
    fault.block = true;
    return addFault(fault);
}

std::string SimWorld::cardsDirectory() const
{
    return state().cardsDirectory;
}

std::optional<CardState> SimWorld::cardState(const std::string &card) const
{
    World world = state();
    const CardState *state = WorldOps(world, folder, reason).cardState(card);
    return state ? std::optional<CardState>(*state) : std::nullopt;
}

int SimWorld::delay() const
{
    return state().delayMs;
}

std::vector<Fault> SimWorld::faults() const
{
    return state().faults;
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

std::vector<PadAnswer> SimWorld::padAnswers() const
{
    return state().pad;
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

} // namespace sim
