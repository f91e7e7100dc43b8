#include "simworld/world_store.h"

#include <cstdlib>
#include <filesystem>

#include "simworld/platform.h"

namespace sim {

namespace fs = std::filesystem;

WorldStore::WorldStore(std::string directory) : folder(std::move(directory)) { }

std::shared_ptr<const World> WorldStore::read(std::string &error)
{
    std::string text;
    platform::readFile(folder + "/world.conf", text);
    const std::lock_guard<std::mutex> guard(mutex);
    if (last && text == lastText)
        return last;
    auto world = std::make_shared<World>();
    if (!worldFromText(text, *world, error)) {
        error = folder + "/world.conf: " + error;
        return nullptr;
    }
    lastText = text;
    last = world;
    return last;
}

void WorldStore::forgetRead()
{
    const std::lock_guard<std::mutex> guard(mutex);
    last.reset();
    // Assignment would keep the memory, and what is in it.
    std::string().swap(lastText);
}

bool WorldStore::update(const Change &work, std::string &error)
{
    return change(work, false, error);
}

bool WorldStore::updateOrStartAfresh(const Change &work, std::string &error)
{
    return change(work, true, error);
}

bool WorldStore::change(const Change &work, bool afresh, std::string &error)
{
    std::error_code ignored;
    fs::create_directories(fs::u8path(waitingFolder()), ignored);
    const platform::FileLock lock(folder + "/world.lock");
    if (!lock.isHeld()) {
        error = "cannot lock the world in " + folder;
        return false;
    }
    const std::shared_ptr<const World> now = read(error);
    if (!now && !afresh)
        return false;
    World world = now ? *now : World();
    if (!work(world, error))
        return false;
    ++world.generation;
    // What belongs to the change is written first: who sees the new world also finds its events.
    if (!writeEffects(world, error))
        return false;
    if (platform::replaceFile(folder + "/world.conf", worldToText(world)))
        return true;
    error = "cannot write " + folder + "/world.conf";
    return false;
}

bool WorldStore::writeEffects(World &world, std::string &error)
{
    if (world.clearTrace)
        platform::truncateFile(tracePath());
    if (world.clearEvents)
        platform::truncateFile(folder + "/events.log");
    std::string events;
    for (ReaderEvent &event : world.newEvents) {
        event.number = ++world.lastEvent;
        events += eventToText(event);
    }
    bool ok = events.empty() || platform::appendFile(folder + "/events.log", events);
    if (world.release)
        ok = ok && platform::replaceFile(folder + "/release", std::to_string(releases() + 1));
    if (!ok)
        error = "cannot write in " + folder;
    return ok;
}

std::vector<ReaderEvent> WorldStore::events()
{
    std::string text;
    const platform::FileLock lock(folder + "/world.lock");
    platform::readFile(folder + "/events.log", text);
    return eventsFromText(text);
}

long WorldStore::releases() const
{
    std::string text;
    return platform::readFile(folder + "/release", text) ? std::atol(text.c_str()) : 0;
}

} // namespace sim
