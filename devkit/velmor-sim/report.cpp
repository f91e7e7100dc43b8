#include "velmor-sim/report.h"

#include "simworld/command_faults.h"

namespace {

std::string marks(const sim::Reader &reader)
{
    const struct {
        bool on;
        const char *word;
    } rows[] = {
        { reader.pinpad, "pinpad" },
        { !reader.card.empty() && reader.waitCan, "waits for the CAN" },
        { reader.notReadByTheMonitor, "not read by the Monitor" },
        { !reader.supported, "card not supported" },
    };
    std::string out;
    for (const auto &row : rows) {
        if (row.on)
            out += std::string(out.empty() ? " (" : ", ") + row.word;
    }
    return out.empty() ? out : out + ")";
}

std::string describeTries(int tries)
{
    return tries == 0 ? "locked" : std::to_string(tries) + (tries == 1 ? " try" : " tries");
}

std::string describePin(const sim::PinState &pin)
{
    if (!pin.initialized)
        return "not set (not initialized)";
    return pin.toBeChanged ? "not set (first use)" : describeTries(pin.tries);
}

std::string describeCard(const sim::SimWorld &world, const std::string &name)
{
    const auto state = world.cardState(name);
    if (!state)
        return {};
    std::string out;
    for (const char *container : { sim::Authentication, sim::Authorization, sim::Qualified })
        out += "      " + std::string(container) + ": " + describePin(state->pins.at(container)) + "\n";
    return out + "      PUK: " + describeTries(state->pukTries) + "\n";
}

} // namespace

std::string describeWorld(const sim::SimWorld &world)
{
    std::string out = "world in " + world.directory() + "\n";
    for (const sim::Reader &reader : world.readers()) {
        out += "  reader \"" + reader.name + "\"" + marks(reader) + "\n";
        out +=
            reader.card.empty() ? "    empty\n" : "    card " + reader.card + "\n" + describeCard(world, reader.card);
    }
    if (world.readers().empty())
        out += "  no reader\n";
    for (const sim::Fault &fault : world.faults())
        out += "  fault " + sim::describeFault(fault) + "\n";
    if (const std::size_t answers = world.padAnswers().size())
        out += "  answers at the keypad: " + std::to_string(answers) + "\n";
    if (const int waiting = world.waitingCalls())
        out += "  calls that wait: " + std::to_string(waiting) + "\n";
    return world.error().empty() ? out : out + "  " + world.error() + "\n";
}

std::string describeCards(const sim::SimWorld &world)
{
    std::string out;
    for (const sim::Card &card : world.cards()) {
        const std::string chip = card.supported ? card.chip : "not supported";
        out += card.name + std::string(card.name.size() < 22 ? 22 - card.name.size() : 1, ' ') + chip
            + std::string(chip.size() < 18 ? 18 - chip.size() : 1, ' ') + card.holder + "\n";
    }
    return out.empty() ? "no cards found\n" : out;
}

std::string describeEvents(const sim::SimWorld &world)
{
    std::string out;
    for (const sim::ReaderEvent &event : world.readerEvents()) {
        out += std::to_string(event.number) + " " + event.what + " \"" + event.reader + "\":";
        for (const sim::Reader &reader : event.readers)
            out += " [" + reader.name + (reader.card.empty() ? "" : ": " + reader.card) + marks(reader) + "]";
        out += "\n";
    }
    return out;
}

std::string describeTrace(const sim::SimWorld &world, const std::string &function)
{
    std::string out;
    for (const sim::TraceEntry &entry : world.fullTrace()) {
        if (function.empty() || entry.function == function)
            out += entry.text + "\n";
    }
    return out;
}
