#include "faults/runner.h"

#include <algorithm>

namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr int slowness = 4;
#else
constexpr int slowness = 1;
#endif
constexpr int allowedStall = 200 * slowness; // ms

int countOf(const std::vector<sim::TraceEntry> &calls, const char *function, const char *user = nullptr)
{
    return int(std::count_if(calls.begin(), calls.end(), [&](const sim::TraceEntry &entry) {
        const auto given = entry.arguments.find("user");
        return entry.function == function && (!user || (given != entry.arguments.end() && given->second == user));
    }));
}

} // namespace

Runner::Runner() : rig(new Rig) { }

Runner::~Runner() = default;

void Runner::settle(QStringList &wrong)
{
    if (!rig->settle())
        wrong << "the card worker does not come to an end";
}

void Runner::judge(QStringList &wrong)
{
    wrong << rig->takeRefusals() << rig->judge();
    const auto more = rig->lastCalls();
    calls.insert(calls.end(), more.begin(), more.end());
}

void Runner::bring(const Action &action)
{
    QStringList wrong;
    if (action.from == Action::CardShown)
        rig->putCard(action.card, action.pinpad);
    if (action.prepare)
        action.prepare(*rig);
    if (action.from == Action::NewWindow) {
        if (rig->window)
            wrong << rig->closeWindow();
    } else if (!rig->window) {
        rig->openWindow();
        settle(wrong);
    }
    if (action.from == Action::CardShown) {
        showCard(*rig, action.card, action.pinpad);
        settle(wrong);
    } else if (action.from == Action::NoCard && rig->page() != "pageDisconected") {
        // As the program comes there from its first page: by a card that goes again.
        showCard(*rig, action.card, action.pinpad);
        settle(wrong);
        rig->takeCard();
        rig->tellReaders();
        settle(wrong);
    }
    if (action.from != Action::NewWindow)
        judge(wrong);
    if (!wrong.isEmpty())
        qFatal("%s cannot begin: %s", qPrintable(action.name), qPrintable(wrong.join("; ")));
}

void Runner::releaseAndSettle(bool blocks, QStringList &wrong)
{
    while (blocks && rig->waitForBlock()) {
        // A user waits, and presses what can be pressed.
        constexpr int pause = 30;
        rig->runUntil([] { return false; }, pause);
        rig->world.release();
    }
    settle(wrong);
}

void Runner::act(const Action &action, bool blocks, QStringList &wrong)
{
    rig->takeLongestStall();
    action.act(*rig);
    releaseAndSettle(blocks, wrong);
    stall = rig->takeLongestStall();
    judge(wrong);
    if (wrong.isEmpty() && rig->rules.padDelayRuns) {
        if (!rig->waitForRequest())
            wrong << "the keypad is not asked for the PUK";
        releaseAndSettle(blocks, wrong);
        judge(wrong);
    }
}

std::vector<std::string> Runner::record(const Action &action, QStringList &wrong)
{
    if (action.quits && action.from == Action::CardShown)
        return { "C_Finalize" };
    bring(action);
    action.begin(*rig);
    // Without the one that holds the read meanwhile: it has begun.
    const int before = rig->window ? int(rig->world.trace().size()) + rig->world.waitingCalls() : 0;
    calls.clear();
    act(action, false, wrong);
    if (wrong.isEmpty() && action.achieved && !action.achieved(*rig).isEmpty())
        wrong << action.achieved(*rig);
    std::vector<std::string> functions;
    for (std::size_t i = std::size_t(before); i < calls.size(); ++i)
        functions.push_back(calls[i].function);
    cleanUp(action, wrong);
    readNextCard(wrong);
    return functions;
}

QStringList Runner::run(const Action &action, const std::vector<Strike> &strikes)
{
    if (action.quits)
        return runQuit(action, strikes[0]);
    QStringList wrong;
    bring(action);
    action.begin(*rig);
    const auto before = rig->world.cardState(action.card);
    bool blocks = false;
    for (const Strike &strike : strikes) {
        rig->world.addFault(strike.kind->atCall(strike.call, action.reader));
        blocks = blocks || strike.kind->nature == FaultKind::Blocks;
    }
    calls.clear();
    act(action, blocks, wrong);
    if (stall > allowedStall)
        wrong << QString("the window did not answer for %1 ms").arg(stall);
    judgeCard(action, *before, wrong);
    judgeEntries(action, wrong);
    const bool struck = rig->world.faults().empty();
    if (!struck && strikes.size() == 1 && action.achieved)
        wrong << "the call was not made that had to fail";
    if (!struck && wrong.isEmpty() && action.achieved && strikes.size() == 1 && !action.achieved(*rig).isEmpty())
        wrong << action.achieved(*rig);
    askingRuns += rig->asksWithoutEnd();
    cleanUp(action, wrong);
    readNextCard(wrong);
    // Style sheets grow with each card, as is meant, and the window becomes slow to work in.
    constexpr int runsOfAWindow = 40;
    if (++runs % runsOfAWindow == 0 && rig->window)
        wrong << rig->closeWindow();
    return wrong;
}

// Tries go by the user's own entries alone, and who is told of a success has it.
void Runner::judgeCard(const Action &action, const sim::CardState &before, QStringList &wrong)
{
    const auto now = rig->world.cardState(action.card);
    for (const auto &pin : before.pins) {
        const bool entered = action.secret == Action::Pin && pin.first == action.container;
        const int fall = pin.second.tries - now->pins.at(pin.first).tries;
        if (fall > (entered ? action.entries : 0))
            wrong << QString("%1 lost %2 tries").arg(pin.first.c_str()).arg(fall);
    }
    const int fall = before.pukTries - now->pukTries;
    if (fall > (action.secret == Action::Puk ? action.entries : 0))
        wrong << QString("the PUK lost %1 tries").arg(fall);
    const QString &result = rig->rules.shown.result;
    const bool success = rig->rules.shown.page == "pageCorrectChange"
        && (result == "PIN został zmieniony" || result == "PIN został odblokowany" || result == "PIN został nadany");
    if (success && action.achieved && !action.achieved(*rig).isEmpty())
        wrong << "a success is told that is none";
}

void Runner::judgeEntries(const Action &action, QStringList &wrong) const
{
    for (const char *function : { "C_SetPIN", "C_InitPIN" }) {
        if (countOf(calls, function) > action.entries)
            wrong << QString("%1 was called %2 times").arg(function).arg(countOf(calls, function));
    }
    // On a keypad a PIN that has been locked leads on to the PUK by itself.
    for (const char *user : { "USER", "SO" }) {
        if (countOf(calls, "C_Login", user) > action.entries)
            wrong << QString("an entry was sent %1 times").arg(countOf(calls, "C_Login", user));
    }
}

void Runner::cleanUp(const Action &action, QStringList &wrong)
{
    rig->world.clearFaults();
    rig->world.clearPad();
    rig->world.release();
    QStringList late;
    if (rig->window)
        settle(late);
    rig->world.restoreCard(action.card);
    if (rig->window && (!late.isEmpty() || !wrong.isEmpty())) {
        // Rules and program are no longer at the same place.
        rig->closeWindow();
        rig->world.clearTrace();
    }
    rig->takeCard();
    for (const sim::Reader &row : rig->world.readers()) {
        if (row.name == Rig::otherReader)
            rig->world.removeReader(row.name);
    }
}

// Another holder's, so that what was kept of the one before would show.
void Runner::readNextCard(QStringList &wrong)
{
    QStringList late;
    const bool stuck = rig->isStuck();
    stuckRuns += stuck;
    if (stuck && rig->window)
        rig->closeWindow();
    if (!rig->window) {
        rig->openWindow();
    } else {
        rig->tellReaders();
        settle(late);
        judge(late);
    }
    showCard(*rig, "ewa");
    settle(late);
    judge(late);
    const Shown &shown = rig->rules.shown;
    if (late.isEmpty() && (shown.surname != "Łoś" || !shown.arrow || !shown.photo || shown.page != "pageHome"))
        late << "it is not shown whole";
    rig->takeCard();
    rig->tellReaders();
    settle(late);
    judge(late);
    if (late.isEmpty())
        return;
    wrong << "the next card: " + late.join("; ");
    if (rig->window)
        rig->closeWindow();
}

QStringList Runner::startWhole()
{
    QStringList wrong;
    readNextCard(wrong);
    return wrong;
}

QStringList Runner::actAndDie(const Action &action, const Strike &strike)
{
    if (action.quits)
        return judgeQuit(action, strike);
    bring(action);
    action.begin(*rig);
    rig->world.addFault(strike.kind->atCall(strike.call, action.reader));
    QStringList ignored;
    act(action, false, ignored);
    return { "the process did not end at the call" };
}

// Whatever the library does, the window goes, and what is called after that is the library's end alone.
QStringList Runner::judgeQuit(const Action &action, const Strike &strike)
{
    bring(action);
    action.begin(*rig);
    rig->world.clearTrace();
    rig->world.addFault(strike.kind->atCall(strike.call, action.reader));
    action.act(*rig);
    const std::size_t before = rig->world.trace().size();
    rig->takeLongestStall();
    QStringList wrong = rig->quit();
    stall = rig->takeLongestStall();
    if (stall > allowedStall)
        wrong << QString("the window did not answer for %1 ms").arg(stall);
    const std::vector<sim::TraceEntry> made = rig->world.trace();
    if (made.size() != before + 1 || made.back().function != "C_Finalize")
        wrong << QString("%1 calls after the user's wish, not the library's end alone").arg(made.size() - before);
    if (!rig->world.faults().empty())
        wrong << "the call was not made that had to fail";
    return wrong;
}

QStringList Runner::runQuit(const Action &action, const Strike &strike)
{
    QStringList wrong = judgeQuit(action, strike);
    cleanUp(action, wrong);
    readNextCard(wrong);
    return wrong;
}
