#include "faults/matrix.h"

#include <algorithm>
#include <random>

namespace {

// The second fault of a pair lies so far behind the first at most.
constexpr int reach = 10;

std::vector<Cell> everyFault(const Calls &calls, const std::function<bool(const Cell &)> &wanted)
{
    std::vector<Cell> cells;
    for (const Action &action : actions()) {
        const auto row = calls.find(action.name);
        // An action without calls: a fault lies in wait, and nothing runs into it.
        const std::vector<std::string> none { std::string() };
        const std::vector<std::string> &functions = row == calls.end() ? std::vector<std::string>()
            : row->second.empty()                                      ? none
                                                                       : row->second;
        for (std::size_t i = 0; i < functions.size(); ++i) {
            for (const FaultKind &kind : faultKinds()) {
                const bool taken = !action.takes || action.takes(kind, int(i) + 1);
                const Cell cell { &action, { { int(i) + 1, &kind } } };
                if (taken && kind.isFor(functions[i]) && wanted(cell))
                    cells.push_back(cell);
            }
        }
    }
    return cells;
}

std::vector<Cell> everyNth(const std::vector<Cell> &cells, int every)
{
    std::vector<Cell> some;
    for (std::size_t i = 0; i < cells.size(); i += std::size_t(std::max(1, every)))
        some.push_back(cells[i]);
    return some;
}

} // namespace

bool takesTheProcess(const Cell &cell)
{
    if (cell.strikes.empty())
        return false;
    return cell.strikes[0].kind->nature == FaultKind::Dies || cell.action->endsTheProcess;
}

QString Cell::text() const
{
    QString line = "'" + action->name + "'";
    for (const Strike &strike : strikes)
        line += QString(" %1 %2").arg(strike.call).arg(strike.kind->name.c_str());
    return line;
}

bool Cell::parse(const QStringList &words, Cell &cell)
{
    cell = { actionOf(words.value(0)), {} };
    for (int i = 1; i + 1 < words.size(); i += 2) {
        const FaultKind *kind = faultKind(words[i + 1].toStdString());
        if (!kind || words[i].toInt() < 1)
            return false;
        cell.strikes.push_back({ words[i].toInt(), kind });
    }
    return cell.action && words.size() % 2 == 1;
}

std::vector<Cell> singleFaults(const Calls &calls, int every)
{
    return everyNth(everyFault(calls, [](const Cell &cell) { return !takesTheProcess(cell); }), every);
}

std::vector<Cell> deaths(const Calls &calls, int every)
{
    std::vector<Cell> cells;
    for (const Cell &cell : everyFault(calls, takesTheProcess)) {
        if (!calls.at(cell.action->name).empty())
            cells.push_back(cell);
    }
    return everyNth(cells, every);
}

// A first fault by lot, and one more, by lot, at each of the calls behind it.
std::vector<Cell> pairsOfFaults(const Calls &calls, int count)
{
    std::vector<Cell> cells;
    const std::vector<Cell> first = singleFaults(calls, 1);
    std::mt19937 lot(20261122);
    const auto below = [&lot](std::size_t bound) { return lot() % bound; };
    const auto &kinds = faultKinds();
    while (!first.empty() && int(cells.size()) < count) {
        const Cell cell = first[below(first.size())];
        if (calls.at(cell.action->name).empty() || cell.action->quits)
            continue;
        for (int behind = 1; behind <= reach && int(cells.size()) < count; ++behind) {
            Cell pair = cell;
            const FaultKind *kind = &kinds[below(kinds.size())];
            while (kind->nature == FaultKind::Dies)
                kind = &kinds[below(kinds.size())];
            pair.strikes.push_back({ cell.strikes[0].call + behind, kind });
            cells.push_back(pair);
        }
    }
    return cells;
}
