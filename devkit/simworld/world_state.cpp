#include "simworld/world_state.h"

#include <algorithm>

namespace sim {

namespace {

const struct {
    Fault::Buffer value;
    const char *word;
} bufferWords[] = { { Fault::Buffer::Any, "any" }, { Fault::Buffer::Null, "null" }, { Fault::Buffer::Given, "given" } };

const struct {
    PadAnswer::Kind value;
    const char *word;
} padWords[] = {
    { PadAnswer::Kind::Enter, "enter" },       { PadAnswer::Kind::Cancel, "cancel" },
    { PadAnswer::Kind::Mismatch, "mismatch" }, { PadAnswer::Kind::Reject, "reject" },
    { PadAnswer::Kind::Result, "result" },
};

template <class Rows, class Value>
std::string wordOf(const Rows &rows, Value value)
{
    for (const auto &row : rows) {
        if (row.value == value)
            return row.word;
    }
    return {};
}

template <class Rows, class Value>
void valueOf(const Rows &rows, const std::string &word, Value &value)
{
    for (const auto &row : rows) {
        if (word == row.word)
            value = row.value;
    }
}

void setIfGiven(ConfigSection &section, const std::string &key, const std::string &value)
{
    if (!value.empty())
        section.setText(key, value);
}

void writeFault(ConfigSection &section, const Fault &fault)
{
    section.setText("function", fault.function);
    section.setNumber("nth", fault.nth);
    setIfGiven(section, "reader", fault.reader);
    setIfGiven(section, "container", fault.container);
    if (fault.attribute)
        section.setHexNumber("attribute", *fault.attribute);
    if (fault.buffer != Fault::Buffer::Any)
        section.setText("buffer", wordOf(bufferWords, fault.buffer));
    if (fault.delayMs)
        section.setNumber("delay", fault.delayMs);
    if (fault.block)
        section.setFlag("block", true);
    setIfGiven(section, "remove-reader", fault.removeReader);
    setIfGiven(section, "remove-card", fault.removeCard);
    if (fault.result)
        section.setHexNumber("result", *fault.result);
    if (fault.afterWork)
        section.setFlag("after", true);
    if (fault.description)
        section.setBytes("description", *fault.description);
    if (fault.label)
        section.setBytes("label", *fault.label);
    if (fault.flags)
        section.setHexNumber("flags", *fault.flags);
    if (fault.count)
        section.setNumber("count", *fault.count);
    if (fault.length)
        section.setNumber("length", *fault.length);
}

Fault readFault(const ConfigSection &section)
{
    Fault fault;
    fault.function = section.text("function");
    fault.nth = static_cast<int>(section.number("nth", 1));
    fault.reader = section.text("reader");
    fault.container = section.text("container");
    if (section.has("attribute"))
        fault.attribute = static_cast<unsigned long>(section.number("attribute", 0));
    valueOf(bufferWords, section.text("buffer"), fault.buffer);
    fault.delayMs = static_cast<int>(section.number("delay", 0));
    fault.block = section.flag("block", false);
    fault.removeReader = section.text("remove-reader");
    fault.removeCard = section.text("remove-card");
    if (section.has("result"))
        fault.result = static_cast<unsigned long>(section.number("result", 0));
    fault.afterWork = section.flag("after", false);
    if (section.has("description"))
        fault.description = section.bytes("description");
    if (section.has("label"))
        fault.label = section.bytes("label");
    if (section.has("flags"))
        fault.flags = static_cast<std::uint32_t>(section.number("flags", 0));
    if (section.has("count"))
        fault.count = section.number("count", 0);
    if (section.has("length"))
        fault.length = section.number("length", 0);
    return fault;
}

void writePad(ConfigSection &section, const PadAnswer &answer)
{
    section.setText("kind", wordOf(padWords, answer.kind));
    setIfGiven(section, "secret", answer.secret);
    setIfGiven(section, "newSecret", answer.newSecret);
    setIfGiven(section, "repeat", answer.repeat);
    if (answer.kind == PadAnswer::Kind::Result)
        section.setHexNumber("result", answer.result);
}

PadAnswer readPad(const ConfigSection &section)
{
    PadAnswer answer;
    valueOf(padWords, section.text("kind"), answer.kind);
    answer.secret = section.text("secret");
    answer.newSecret = section.text("newSecret");
    answer.repeat = section.text("repeat");
    answer.result = static_cast<unsigned long>(section.number("result", 0));
    return answer;
}

} // namespace

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

void writeCardState(ConfigSection &section, const CardState &state)
{
    section.setText("puk", state.puk);
    section.setNumber("puk.tries", state.pukTries);
    for (const auto &row : state.pins) {
        const std::string prefix = row.first + ".";
        const PinState &pin = row.second;
        if (pinDigits(row.first) > 0) {
            section.setText(prefix + "pin", pin.pin);
            section.setNumber(prefix + "tries", pin.tries);
            section.setFlag(prefix + "initialized", pin.initialized);
            section.setFlag(prefix + "toBeChanged", pin.toBeChanged);
        }
        if (pin.flagsOn)
            section.setHexNumber(prefix + "flagsOn", pin.flagsOn);
        if (pin.flagsOff)
            section.setHexNumber(prefix + "flagsOff", pin.flagsOff);
        setIfGiven(section, prefix + "label", pin.label);
    }
}

CardState readCardState(const ConfigSection &section)
{
    CardState state = freshCardState();
    state.puk = section.text("puk", state.puk);
    state.pukTries = static_cast<int>(section.number("puk.tries", state.pukTries));
    for (auto &row : state.pins) {
        const std::string prefix = row.first + ".";
        PinState &pin = row.second;
        pin.pin = section.text(prefix + "pin", pin.pin);
        pin.tries = static_cast<int>(section.number(prefix + "tries", pin.tries));
        pin.initialized = section.flag(prefix + "initialized", pin.initialized);
        pin.toBeChanged = section.flag(prefix + "toBeChanged", pin.toBeChanged);
        pin.flagsOn = static_cast<std::uint32_t>(section.number(prefix + "flagsOn", 0));
        pin.flagsOff = static_cast<std::uint32_t>(section.number(prefix + "flagsOff", 0));
        pin.label = section.text(prefix + "label");
    }
    return state;
}

void writeReader(ConfigSection &section, const WorldReader &reader)
{
    section.setNumber("id", reader.id);
    section.setText("name", reader.name);
    section.setFlag("pinpad", reader.pinpad);
    section.setFlag("waitCan", reader.waitCan);
    section.setFlag("notReadByTheMonitor", reader.notReadByTheMonitor);
    if (reader.card.empty())
        return;
    section.setText("card", reader.card);
    section.setText("cardFolder", reader.cardFolder);
    section.setFlag("supported", reader.supported);
    section.setNumber("insertion", reader.insertion);
}

WorldReader readReader(const ConfigSection &section)
{
    WorldReader reader;
    reader.id = static_cast<int>(section.number("id", 0));
    reader.name = section.text("name");
    reader.pinpad = section.flag("pinpad", false);
    reader.waitCan = section.flag("waitCan", false);
    reader.notReadByTheMonitor = section.flag("notReadByTheMonitor", false);
    reader.card = section.text("card");
    reader.cardFolder = section.text("cardFolder");
    reader.supported = section.flag("supported", true);
    reader.insertion = static_cast<int>(section.number("insertion", 0));
    return reader;
}

std::string worldToText(const World &world)
{
    std::vector<ConfigSection> sections(1);
    ConfigSection &top = sections.front();
    top.setNumber("generation", world.generation);
    setIfGiven(top, "cards", world.cardsDirectory);
    top.setNumber("delay", world.delayMs);
    top.setText("trace", world.traceOn ? "on" : "off");
    top.setNumber("lastInsertion", world.lastInsertion);
    top.setNumber("lastEvent", world.lastEvent);
    for (const WorldReader &reader : world.readers)
        writeReader(sections.emplace_back("reader"), reader);
    for (const auto &row : world.cards)
        writeCardState(sections.emplace_back("card", row.first), row.second);
    for (const Fault &fault : world.faults)
        writeFault(sections.emplace_back("fault"), fault);
    for (const PadAnswer &answer : world.pad)
        writePad(sections.emplace_back("pad"), answer);
    return writeConfig(sections, "A simulated world of readers and specimen cards; changed by velmor-sim.");
}

bool worldFromText(const std::string &text, World &world, std::string &error)
{
    std::vector<ConfigSection> sections;
    if (!parseConfig(text, sections, error))
        return false;
    world = World();
    const ConfigSection &top = sections.front();
    world.generation = static_cast<long>(top.number("generation", 0));
    world.cardsDirectory = top.text("cards");
    world.delayMs = static_cast<int>(top.number("delay", 0));
    world.traceOn = top.flag("trace", true);
    world.lastInsertion = static_cast<int>(top.number("lastInsertion", 0));
    world.lastEvent = static_cast<long>(top.number("lastEvent", 0));
    for (const ConfigSection &section : sections) {
        if (section.kind == "reader")
            world.readers.push_back(readReader(section));
        else if (section.kind == "card")
            world.cards[section.name] = readCardState(section);
        else if (section.kind == "fault")
            world.faults.push_back(readFault(section));
        else if (section.kind == "pad")
            world.pad.push_back(readPad(section));
    }
    return true;
}

std::string eventToText(const ReaderEvent &event)
{
    std::vector<ConfigSection> sections(1);
    ConfigSection &head = sections.emplace_back("event", std::to_string(event.number));
    head.setText("what", event.what);
    head.setText("reader", event.reader);
    for (const Reader &reader : event.readers) {
        WorldReader row;
        static_cast<Reader &>(row) = reader;
        writeReader(sections.emplace_back("reader"), row);
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
            event.what = section.text("what");
            event.reader = section.text("reader");
        } else if (section.kind == "reader" && !events.empty()) {
            events.back().readers.push_back(readReader(section));
        }
    }
    return events;
}

} // namespace sim
