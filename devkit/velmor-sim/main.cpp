// velmor-sim: shows and changes the simulated world from a shell.
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "simworld/command_faults.h"
#include "simworld/commands.h"
#include "simworld/platform.h"
#include "simworld/reader_message.h"
#include "simworld/sim_world.h"
#include "simworld/world_store.h"
#include "velmor-sim/report.h"

namespace {

using Words = std::vector<std::string>;

// What a shell gets: done; refused by the world as it stands; not understood.
enum ExitCode { done = 0, refused = 1, notUnderstood = 2 };

int complain(ExitCode code, const std::string &reason)
{
    std::fprintf(stderr, "velmor-sim: %s\n", reason.c_str());
    if (code == notUnderstood)
        std::fprintf(stderr, "\"velmor-sim help\" lists the commands.\n");
    return code;
}

int print(const std::string &text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
    return done;
}

std::string help()
{
    return "velmor-sim [--world FOLDER] COMMAND ...\n"
           "\n"
           "Shows and changes the simulated world that the stand-in of the card library lives in. READER and CARD may "
           "be\n"
           "left out where only one can be meant. Containers: Authentication, Presence, Authorization, Qualified, "
           "eMRTD.\n"
           "\n"
           "  list\n      readers, cards in them, tries left, faults, what waits\n"
           "  message\n      the readers as Manager takes them after -r\n"
           "  cards\n      all cards that can be inserted\n"
           "  trace [FUNCTION]\n      calls of the library so far\n"
           "  events\n      changes of readers and cards so far\n"
           "  send [--from NAME] TO KEY VALUE [KEY VALUE ...]\n      a message to velmor_manager, velmor_monitor or "
           "velmor_can\n"
           "  scenario FILE\n      the commands in the file, one a line, all of them or none\n"
           "  help [fault]\n      this\n"
        + sim::commandHelp();
}

int runHelp(sim::SimWorld &, const Words &words)
{
    if (words.size() == 1 && words[0] == "fault")
        return print(sim::faultHelp());
    return words.empty() ? print(help()) : complain(notUnderstood, "there is no help on \"" + words[0] + "\"");
}

int runScenarioFile(sim::SimWorld &world, const Words &words)
{
    std::string text;
    if (!sim::platform::readFile(words[0], text))
        return complain(refused, "cannot read " + words[0]);
    return world.applyScenario(text) ? int(done) : complain(refused, words[0] + ", " + world.error());
}

// Messages need the toolkit's shared memory, which this program does without.
int runSend(const Words &words)
{
    const std::string programs = sim::platform::familyProgramsFolder();
    const int code = sim::platform::runProgram(programs + "/velmor_send", words);
    return code >= 0 ? code : complain(refused, "there is no velmor_send in " + programs);
}

// Words that show something. A name may also be a command that changes the world, with other arguments.
const struct Query {
    const char *name;
    std::size_t least;
    std::size_t most;
    int (*run)(sim::SimWorld &world, const Words &words);
} queries[] = {
    { "list", 0, 0, [](sim::SimWorld &world, const Words &) { return print(describeWorld(world)); } },
    { "message", 0, 0,
      [](sim::SimWorld &world, const Words &) { return print(sim::readerMessage(world.readers()) + "\n"); } },
    { "cards", 0, 0, [](sim::SimWorld &world, const Words &) { return print(describeCards(world)); } },
    { "events", 0, 0, [](sim::SimWorld &world, const Words &) { return print(describeEvents(world)); } },
    { "trace", 0, 1,
      [](sim::SimWorld &world, const Words &words) {
          return print(describeTrace(world, words.empty() ? "" : words[0]));
      } },
    { "scenario", 1, 1, runScenarioFile },
    { "help", 0, 1, runHelp },
    { "--help", 0, 1, runHelp },
    { "-h", 0, 1, runHelp },
};

bool isTraceChange(const Words &words)
{
    return words.size() == 2 && words[0] == "trace" && words[1].compare(0, 2, "C_") != 0;
}

const Query *findQuery(const Words &words)
{
    for (const Query &query : queries) {
        const std::size_t count = words.size() - 1;
        if (words[0] == query.name && count >= query.least && count <= query.most && !isTraceChange(words))
            return &query;
    }
    return nullptr;
}

int runChange(const std::string &folder, const Words &words)
{
    sim::CommandOutcome outcome = sim::CommandOutcome::Refused;
    std::string reason;
    const auto work = [&](sim::World &world, std::string &error) {
        sim::WorldOps ops(world, folder, error);
        outcome = sim::runCommand(ops, words);
        return outcome == sim::CommandOutcome::Done;
    };
    sim::WorldStore store(folder);
    // A world that cannot be read any more must not stand in the way of starting afresh.
    const bool ok = words[0] == "reset" ? store.updateOrStartAfresh(work, reason) : store.update(work, reason);
    if (ok)
        return done;
    return complain(outcome == sim::CommandOutcome::NotUnderstood ? notUnderstood : refused, reason);
}

} // namespace

int main(int argc, char *argv[])
{
    Words words = sim::platform::programArguments(argc, argv);
    std::string folder = sim::SimWorld::defaultDirectory();
    if (words.size() >= 2 && words[0] == "--world") {
        folder = words[1];
        words.erase(words.begin(), words.begin() + 2);
    }
    if (words.empty())
        return complain(notUnderstood, "no command");
    sim::SimWorld world(folder);
    if (const Query *query = findQuery(words))
        return query->run(world, Words(words.begin() + 1, words.end()));
    if (words[0] == "send")
        return runSend(Words(words.begin() + 1, words.end()));
    if (words[0] == "scenario")
        return complain(notUnderstood, "it is: scenario FILE");
    return runChange(folder, words);
}
