#pragma once

#include "faults/runner.h"

#include <map>

// One action with its faults, as a command line tells it: the name, then a call and a kind of fault for each.
struct Cell {
    const Action *action;
    std::vector<Strike> strikes;

    QString text() const;
    static bool parse(const QStringList &words, Cell &cell);
};

// Whether it is a matter for a process of its own, since none can go on after it: taken down by the library, or at its
// end.
bool takesTheProcess(const Cell &cell);

// How much of the whole is run: every n-th single fault and every n-th death, so many pairs.
struct Extent {
    int every = 1;
    int pairs = 2000;
    int deathsEvery = 1;
};

// All that is to be run, in one order for all who share it. `calls` are those of each action's faultless run.
using Calls = std::map<QString, std::vector<std::string>>;
std::vector<Cell> singleFaults(const Calls &calls, int every);
std::vector<Cell> pairsOfFaults(const Calls &calls, int count);
std::vector<Cell> deaths(const Calls &calls, int every);
