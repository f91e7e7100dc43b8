// The fault matrix: every call of the card library in every action of a user goes wrong in every way, and the real
// window is judged each time. See docs/testing.md.
//
//     fault_matrix [--jobs N] [--every N] [--pairs N] [--deaths-every N]
//     fault_matrix --only 'ACTION' CALL FAULT [CALL FAULT]       one of them, with its reasons
//     fault_matrix --list                                        actions with their calls, kinds of fault
//
// The work is shared by processes of this program, each with a home and a world of its own.

#include "faults/matrix.h"

#include "app/app.h"
#include "base/settings.h"
#include "platform/os.h"
#include "support/fake_programs.h"
#include "support/flow.h"
#include "support/profile_folder.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QProcess>

#include <algorithm>
#include <cstdio>

namespace {

struct Options {
    Extent extent;
    int jobs = 2;
    int share = -1; // of the jobs; -1 for the one that gives them out
};

int option(const QStringList &arguments, const char *name, int otherwise)
{
    const int at = arguments.indexOf(name);
    return at < 0 ? otherwise : arguments.value(at + 1).toInt();
}

Options optionsOf(const QStringList &arguments)
{
    Options options;
    options.jobs = std::max(1, option(arguments, "--jobs", options.jobs));
    options.share = option(arguments, "--share", -1);
    options.extent.every = option(arguments, "--every", 1);
    options.extent.pairs = option(arguments, "--pairs", options.extent.pairs);
    options.extent.deathsEvery = option(arguments, "--deaths-every", 1);
    return options;
}

void say(const QString &line)
{
    std::printf("%s\n", qPrintable(line));
    std::fflush(stdout);
}

void fail(const Cell &cell, const QStringList &wrong)
{
    say("FAIL fault_matrix --only " + cell.text() + "  | " + wrong.join("; "));
}

// What a start finds: a lock that nobody holds, an inbox that is empty, the settings as they were left.
QStringList startAfterDeath()
{
    QStringList wrong;
    // The system can take a moment to give back what a process has held that somebody was looking at.
    if (!QTest::qWaitFor([] { return App::instance()->lock(); }, 2000))
        return { "the lock is still held" };
    const auto segment = App::instance()->lockSegment();
    if (!segment || !segment->isAttached() || *static_cast<const char *>(segment->constData()) != '\0')
        wrong << "the segment is not as a new one";
    if (Settings::instance()->value(SettingsKey::guid).toString() != "kept")
        wrong << "the settings are not as they were";
    return wrong;
}

// A program that is taken down by its library; first it looks at what the one before has left.
int dieAt(const QStringList &words)
{
    QStringList wrong = startAfterDeath();
    Runner runner;
    if (wrong.isEmpty())
        wrong = runner.startWhole();
    say(wrong.isEmpty() ? "whole" : "broken: " + wrong.join("; "));
    Cell cell;
    if (wrong.isEmpty() && Cell::parse(words, cell)) {
        wrong = runner.actAndDie(*cell.action, cell.strikes.at(0));
        say(wrong.isEmpty() ? "ended" : wrong.join("; "));
    }
    return 0;
}

QByteArray runChild(const QStringList &arguments)
{
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child.start(QCoreApplication::applicationFilePath(), arguments);
    constexpr int patience = 60000;
    if (!child.waitForFinished(patience)) {
        child.kill();
        child.waitForFinished(patience);
        return "it did not end";
    }
    return child.readAllStandardOutput().trimmed();
}

// Each is the next start of the one before.
int runDeaths(const std::vector<Cell> &cells)
{
    Settings::instance()->setValue(SettingsKey::guid, "kept");
    Settings::instance()->sync();
    int failures = 0;
    for (std::size_t i = 0; i <= cells.size(); ++i) {
        QStringList arguments { "--die" };
        if (i < cells.size())
            arguments << cells[i].action->name << QString::number(cells[i].strikes[0].call)
                      << cells[i].strikes[0].kind->name.c_str();
        const QByteArray told = runChild(arguments);
        if (!told.startsWith("whole") && i > 0) {
            fail(cells[i - 1], { "the next start: " + QString::fromUtf8(told) });
            ++failures;
        }
        // Of one that the library has taken down, or that did not wait for it any longer, nothing more is heard.
        if (i < cells.size() && told.startsWith("whole") && told != "whole" && told != "whole\nended") {
            fail(cells[i], { QString::fromUtf8(told.mid(6)) });
            ++failures;
        }
    }
    return failures;
}

std::vector<Cell> shareOf(const std::vector<Cell> &cells, const Options &options)
{
    std::vector<Cell> mine;
    // In blocks, so that one action follows the same.
    constexpr std::size_t block = 20;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (int(i / block % std::size_t(options.jobs)) == options.share)
            mine.push_back(cells[i]);
    }
    // Some actions wait, most work. Each share begins elsewhere, so that they do not all wait at once.
    const std::size_t begin = mine.size() * std::size_t(options.share) / std::size_t(options.jobs);
    std::rotate(mine.begin(), mine.begin() + std::ptrdiff_t(begin), mine.end());
    return mine;
}

Calls recordAll(Runner &runner, int &failures)
{
    Calls calls;
    for (const Action &action : actions()) {
        QStringList wrong;
        calls[action.name] = runner.record(action, wrong);
        if (!wrong.isEmpty()) {
            fail({ &action, {} }, wrong);
            ++failures;
        }
    }
    return calls;
}

// A second time where a busy machine may be to blame.
QStringList runTwiceAtMost(Runner &runner, const Cell &cell)
{
    const QStringList wrong = runner.run(*cell.action, cell.strikes);
    const bool slow = wrong.size() == 1 && wrong[0].startsWith("the window did not answer");
    return slow ? runner.run(*cell.action, cell.strikes) : wrong;
}

int runShare(const Options &options)
{
    int failures = 0;
    int longest = 0;
    auto runner = std::make_unique<Runner>();
    const Calls calls = recordAll(*runner, failures);
    const std::vector<Cell> singles = shareOf(singleFaults(calls, options.extent.every), options);
    const std::vector<Cell> pairs = shareOf(pairsOfFaults(calls, options.extent.pairs), options);
    const std::vector<Cell> ends = shareOf(deaths(calls, options.extent.deathsEvery), options);
    if (options.share == 0) {
        for (const Action &action : actions())
            say(QString("ACTION %1 %2").arg(calls.at(action.name).size()).arg(action.name));
        say(QString("WHOLE %1 %2").arg(singleFaults(calls, 1).size()).arg(deaths(calls, 1).size()));
    }
    for (const auto &cells : { singles, pairs }) {
        for (const Cell &cell : cells) {
            const QStringList wrong = runTwiceAtMost(*runner, cell);
            longest = std::max(longest, runner->longestStall());
            if (!wrong.isEmpty()) {
                fail(cell, wrong);
                ++failures;
            }
        }
    }
    const int asking = runner->asking();
    const int stuck = runner->stuck();
    // The children have the home to themselves.
    runner.reset();
    failures += runDeaths(ends);
    say(QString("SUM %1 %2 %3 %4 %5 %6 %7")
            .arg(singles.size())
            .arg(pairs.size())
            .arg(ends.size())
            .arg(failures)
            .arg(asking)
            .arg(stuck)
            .arg(longest));
    return 0;
}

int runOnly(const QStringList &words)
{
    Cell cell;
    if (!Cell::parse(words, cell)) {
        std::fprintf(stderr, "there is no such action or fault; see --list\n");
        return 2;
    }
    if (takesTheProcess(cell))
        return runDeaths({ cell }) > 0;
    Runner runner;
    QStringList wrong;
    if (cell.strikes.empty())
        runner.record(*cell.action, wrong);
    else
        wrong = runner.run(*cell.action, cell.strikes);
    if (!wrong.isEmpty())
        fail(cell, wrong);
    else
        say(QString("as it should be; longest stall %1 ms").arg(runner.longestStall()));
    return !wrong.isEmpty();
}

int list()
{
    Runner runner;
    int failures = 0;
    const Calls calls = recordAll(runner, failures);
    for (const auto &row : calls) {
        say(row.first);
        for (std::size_t i = 0; i < row.second.size(); ++i)
            say(QString("    %1 %2").arg(i + 1).arg(row.second[i].c_str()));
    }
    for (const FaultKind &kind : faultKinds())
        say(kind.name.c_str());
    return failures > 0;
}

// Gives the shares out and adds them up.
class Shares {
public:
    int run(const Options &options, QStringList arguments)
    {
        QElapsedTimer clock;
        clock.start();
        std::vector<std::unique_ptr<QProcess>> children;
        for (int share = 0; share < options.jobs; ++share) {
            children.push_back(std::make_unique<QProcess>());
            children.back()->setProcessChannelMode(QProcess::ForwardedErrorChannel);
            children.back()->start(QCoreApplication::applicationFilePath(),
                                   arguments + QStringList { "--share", QString::number(share) });
        }
        // What they tell is told at once.
        bool ended = true;
        for (const auto &child : children) {
            QProcess *const process = child.get();
            QObject::connect(process, &QProcess::readyReadStandardOutput, [this, process] {
                while (process->canReadLine())
                    read(QString::fromUtf8(process->readLine()).trimmed());
            });
        }
        for (const auto &child : children) {
            while (child->state() != QProcess::NotRunning)
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            ended = child->exitStatus() == QProcess::NormalExit && ended;
        }
        say(QString("%1 of %2 single faults, %3 pairs, %4 of %5 deaths of the process: %6 runs in %7 s")
                .arg(sums[0])
                .arg(whole.value(0), QString::number(sums[1]), QString::number(sums[2]), whole.value(1))
                .arg(sums[0] + sums[1] + sums[2])
                .arg(clock.elapsed() / 1000));
        say(QString("longest stall of the window %1 ms; %2 runs in which it asks the Monitor on and on, %3 after which "
                    "the library starts no more")
                .arg(stall)
                .arg(sums[4])
                .arg(sums[5]));
        say(QString("failures: %1").arg(sums[3]));
        if (!ended || sums[0] == 0)
            say("a share of the work has not come to its end");
        return !ended || sums[0] == 0 || sums[3] > 0;
    }

private:
    void read(const QString &line)
    {
        if (line.startsWith("SUM ")) {
            const QStringList numbers = line.mid(4).split(' ');
            for (int i = 0; i < 6; ++i)
                sums[i] += numbers.value(i).toInt();
            stall = std::max(stall, numbers.value(6).toInt());
        } else if (line.startsWith("WHOLE ")) {
            whole = line.mid(6).split(' ');
        } else if (line.startsWith("ACTION ")) {
            say(QString("%1 calls: %2").arg(line.section(' ', 1, 1), 4).arg(line.section(' ', 2)));
        } else if (!line.isEmpty()) {
            say(line);
        }
    }

    int sums[6] = {};
    int stall = 0;
    QStringList whole;
};

} // namespace

int main(int argc, char *argv[])
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QString::fromUtf8(argv[i]);
    const bool works = arguments.contains("--share") || arguments.contains("--only") || arguments.contains("--list");
    // One that is to be taken down lives in the home of its parent.
    const bool dies = arguments.value(0) == "--die";
    const std::unique_ptr<TestHome> home(works ? new TestHome : nullptr);
    const std::unique_ptr<FakePrograms> programs(works ? new FakePrograms : nullptr);
    QApplication application(argc, argv);
    if (!works && !dies)
        return Shares().run(optionsOf(arguments), arguments);
    Flow::setUpApplication();
    if (dies)
        return dieAt(arguments.mid(1));
    programs->installFirefox();
    const ProfileFolder profile(Os().profilesRoot("Firefox") + "a.default", "128.0");
    if (arguments.value(0) == "--only")
        return runOnly(arguments.mid(1));
    return arguments.value(0) == "--list" ? list() : runShare(optionsOf(arguments));
}
