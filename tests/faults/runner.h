#pragma once

#include "faults/actions.h"
#include "faults/fault_kinds.h"

#include <memory>

// A fault at the n-th call of an action.
struct Strike {
    int call;
    const FaultKind *kind;
};

// Carries out actions with faults in them, one after the other in the same program, and judges each.
class Runner {
public:
    Runner();
    ~Runner();

    // The calls that the action makes when nothing goes wrong. Complaints go to `wrong`.
    std::vector<std::string> record(const Action &action, QStringList &wrong);
    // What is wrong with the action under these faults; empty if nothing is.
    QStringList run(const Action &action, const std::vector<Strike> &strikes);

    // As the next start of the program after one that was taken down: a card is read.
    QStringList startWhole();
    // Arms the fault that takes the process down and acts; comes back only if it did not strike.
    QStringList actAndDie(const Action &action, const Strike &strike);

    int longestStall() const { return stall; }
    // Runs in which the program asks the Monitor again and again for a card that it cannot read, as is meant.
    int asking() const { return askingRuns; }
    // Runs after which only a new start of the program helps, as is meant.
    int stuck() const { return stuckRuns; }

private:
    void bring(const Action &action);
    QStringList runQuit(const Action &action, const Strike &strike);
    QStringList judgeQuit(const Action &action, const Strike &strike);
    void act(const Action &action, bool blocks, QStringList &wrong);
    void judge(QStringList &wrong);
    void judgeCard(const Action &action, const sim::CardState &before, QStringList &wrong);
    void judgeEntries(const Action &action, QStringList &wrong) const;
    void cleanUp(const Action &action, QStringList &wrong);
    void readNextCard(QStringList &wrong);
    void settle(QStringList &wrong);
    void releaseAndSettle(bool blocks, QStringList &wrong);

    std::unique_ptr<Rig> rig;
    std::vector<sim::TraceEntry> calls; // of the action that is judged
    int runs = 0;
    int stall = 0;
    int askingRuns = 0;
    int stuckRuns = 0;
};
