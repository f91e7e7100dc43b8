#include "simworld/world_state.h"

#include <algorithm>

#include "simworld/command_faults.h"

namespace sim {

WorldReader *World::reader(const std::string &name)
{
    const auto at = std::find_if(readers.begin(), readers.end(), [&](const Reader &r) { return r.name == name; });
    return at == readers.end() ? nullptr : &*at;
}

const WorldReader *World::reader(const std::string &name) const
{
    return const_cast<World *>(this)->reader(name);
}

bool isContainer(const std::string &name)
{
    return std::find(std::begin(containers), std::end(containers), name) != std::end(containers);
}

int pinDigits(const std::string &container)
{
    static const struct {
        const char *container;
        int digits;
    } rows[] = { { Authentication, 4 }, { Authorization, 6 }, { Qualified, 8 } };
    for (const auto &row : rows) {
        if (container == row.container)
            return row.digits;
    }
    return 0;
}

CardState freshCardState()
{
    CardState state;
    state.puk = "87654321";
    for (const char *container : containers) {
        const int digits = pinDigits(container);
        state.pins[container].pin = std::string("12345678").substr(0, static_cast<std::size_t>(digits));
        state.pins[container].initialized = digits > 0;
    }
    return state;
}

void cardStateValues(ConfigValues values, CardState &state)
{
    values.text("puk", state.puk);
    values.number("puk.tries", state.pukTries);
    for (auto &row : state.pins) {
        const std::string prefix = row.first + ".";
        PinState &pin = row.second;
        if (pinDigits(row.first) > 0) {
            values.text(prefix + "pin", pin.pin);
            values.number(prefix + "tries", pin.tries);
            values.flag(prefix + "initialized", pin.initialized);
            values.flag(prefix + "toBeChanged", pin.toBeChanged);
        }
        values.bitsIfSet(prefix + "flagsOn", pin.flagsOn);
        values.bitsIfSet(prefix + "flagsOff", pin.flagsOff);
        values.textIfGiven(prefix + "label", pin.label);
    }
}

namespace {

void readerValues(ConfigValues values, WorldReader &reader)
{
    values.number("id", reader.id);
    values.text("name", reader.name);
    values.flag("pinpad", reader.pinpad);
    values.flag("waitCan", reader.waitCan);
    values.flag("notReadByTheMonitor", reader.notReadByTheMonitor);
    values.textIfGiven("card", reader.card);
    if (reader.card.empty())
        return;
    values.text("cardFolder", reader.cardFolder);
    values.flag("supported", reader.supported);
    values.number("insertion", reader.insertion);
}

void worldValues(ConfigValues values, World &world)
{
    values.number("generation", world.generation);
    values.textIfGiven("cards", world.cardsDirectory);
    values.number("delay", world.delayMs);
    values.flag("trace", world.traceOn, "on", "off");
    values.flag("sessionsAnew", world.sessionsAnew);
    values.number("lastInsertion", world.lastInsertion);
    values.number("lastEvent", world.lastEvent);
}

void eventValues(ConfigValues values, ReaderEvent &event)
{
    values.text("what", event.what);
    values.text("reader", event.reader);
}

ConfigValues newSection(std::vector<ConfigSection> &sections, const std::string &kind, const std::string &name = {})
{
    sections.push_back({ kind, name, {} });
    return ConfigValues::into(sections.back());
}

} // namespace

std::string worldToText(World world)
{
    std::vector<ConfigSection> sections(1);
    worldValues(ConfigValues::into(sections.front()), world);
    for (const Fault &fault : world.faults)
        sections.front().addText("fault", describeFault(fault));
    for (const PadAnswer &answer : world.pad)
        sections.front().addText("pad", describePad(answer));
    for (WorldReader &reader : world.readers)
        readerValues(newSection(sections, "reader"), reader);
    for (auto &row : world.cards)
        cardStateValues(newSection(sections, "card", row.first), row.second);
    return writeConfig(sections, "A simulated world of readers and specimen cards; changed by velmor-sim.");
}

bool worldFromText(const std::string &text, World &world, std::string &error)
{
    std::vector<ConfigSection> sections;
    std::vector<std::string> words;
    if (!parseConfig(text, sections, error))
        return false;
    world = World();
    worldValues(ConfigValues::of(sections.front()), world);
    for (const std::string &line : sections.front().texts("fault")) {
        if (!splitWords(line, words) || !parseFault(words, world.faults.emplace_back(), error)) {
            error.insert(0, "fault = " + line + ": ");
            return false;
        }
    }
    for (const std::string &line : sections.front().texts("pad")) {
        if (!splitWords(line, words) || !parsePad(words, world.pad.emplace_back())) {
            error = "pad = ...: no answer at a keypad";
            return false;
        }
    }
    for (const ConfigSection &section : sections) {
        if (section.kind == "reader")
            readerValues(ConfigValues::of(section), world.readers.emplace_back());
        else if (section.kind == "card")
            cardStateValues(ConfigValues::of(section), world.cards[section.name] = freshCardState());
    }
    return true;
}

std::string eventToText(ReaderEvent event)
{
    std::vector<ConfigSection> sections(1);
    eventValues(newSection(sections, "event", std::to_string(event.number)), event);
    for (const Reader &reader : event.readers) {
        WorldReader row;
        static_cast<Reader &>(row) = reader;
        readerValues(newSection(sections, "reader"), row);
    }
    return writeConfig(sections);
}

std::vector<ReaderEvent> eventsFromText(const std::string &text)
{
    std::vector<ConfigSection> sections;
    std::vector<ReaderEvent> events;
    std::string error;
    if (!parseConfig(text, sections, error))
        return events;
    for (const ConfigSection &section : sections) {
        if (section.kind == "event") {
            long long number = 0;
            ReaderEvent &event = events.emplace_back();
            event.number = parseNumber(section.name, number) ? static_cast<long>(number) : 0;
            eventValues(ConfigValues::of(section), event);
        } else if (section.kind == "reader" && !events.empty()) {
            WorldReader reader;
            readerValues(ConfigValues::of(section), reader);
            events.back().readers.push_back(reader);
        }
    }
    return events;
}

} // namespace sim
