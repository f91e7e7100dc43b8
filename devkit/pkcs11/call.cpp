#include "pkcs11/call.h"

#include <atomic>
#include <filesystem>
#include <memory>

#include "simworld/cryptoki_names.h"
#include "simworld/world_ops.h"

namespace sim {

namespace fs = std::filesystem;

namespace {

constexpr int pollMs = 5;

// A file that stands for one waiting call, so that others can see that it has begun to wait.
class WaitingNote {
public:
    explicit WaitingNote(const std::string &folder)
    {
        static std::atomic<int> number { 0 };
        path = folder + "/" + std::to_string(platform::processId()) + "-" + std::to_string(++number);
        platform::replaceFile(path, {});
    }
    ~WaitingNote()
    {
        std::error_code ignored;
        fs::remove(fs::u8path(path), ignored);
    }
    WaitingNote(const WaitingNote &) = delete;
    WaitingNote &operator=(const WaitingNote &) = delete;

private:
    std::string path;
};

template <class Value>
void takeOver(std::optional<Value> &to, const std::optional<Value> &from)
{
    if (from)
        to = from;
}

} // namespace

Call::Call(const char *functionName, Needs needs) :
    function(functionName), needed(needs), worldStore(Module::instance().store()), lock(module().mutex, std::defer_lock)
{
}

void Call::slot(CK_SLOT_ID id)
{
    slotWanted = id;
    argument("slot", static_cast<unsigned long>(id));
}

void Call::session(CK_SESSION_HANDLE handle)
{
    sessionWanted = handle;
    argument("session", static_cast<unsigned long>(handle));
}

void Call::attributes(CK_ATTRIBUTE_PTR first, CK_ULONG count)
{
    std::string names;
    for (CK_ULONG at = 0; first && at < count; ++at)
        names += (at ? "," : "") + attributeName(static_cast<unsigned long>(first[at].type));
    argument("attribute", names);
    if (!first || count == 0)
        return;
    attribute = first->type;
    buffer(first->pValue != nullptr);
}

void Call::buffer(bool given)
{
    bufferGiven = given;
    argument("buffer", given ? "given" : "null");
}

void Call::argument(const std::string &name, const std::string &value)
{
    arguments.emplace_back(name, value);
}

void Call::argument(const std::string &name, unsigned long value)
{
    argument(name, std::to_string(value));
}

void Call::secret(const std::string &name, CK_UTF8CHAR_PTR bytes, CK_ULONG length)
{
    argument(name, length > 0 ? "set" : bytes ? "empty" : "null");
}

bool Call::begin(CK_RV &result)
{
    if (!readWorld())
        return false;
    findPlace();
    takeFaults();
    const int delay = now->delayMs + effects.delayMs;
    if (delay > 0)
        platform::sleepCancellable(delay);
    if (effects.block)
        waitForRelease();
    if (effects.die) {
        writeTrace(traceWaiting);
        platform::die();
    }
    const bool removed = removeAsFaultsSay();
    if (effects.result && !effects.afterWork)
        return false;
    result = CKR_DEVICE_REMOVED;
    return !removed && readWorld();
}

bool Call::readWorld()
{
    std::string ignored;
    now = worldStore->read(ignored);
    return now != nullptr;
}

void Call::findPlace()
{
    std::optional<CK_SLOT_ID> id = slotWanted;
    if (sessionWanted) {
        const std::lock_guard<std::mutex> guard(module().mutex);
        const auto found = module().sessions.find(*sessionWanted);
        if (found != module().sessions.end())
            id = found->second.slot;
    }
    const auto view = id ? findSlot(*now, *id) : std::nullopt;
    if (!view)
        return;
    reader = view->reader->name;
    container = view->container ? view->container : "";
    // Before the other arguments: this is what a reader of the trace looks for.
    arguments.insert(arguments.begin(), { "container", container });
    arguments.insert(arguments.begin(), { "reader", reader });
    if (container.empty())
        arguments.erase(arguments.begin() + 1);
}

bool Call::matches(const Fault &fault) const
{
    const bool bufferFits =
        fault.buffer == Fault::Buffer::Any || (bufferGiven && *bufferGiven == (fault.buffer == Fault::Buffer::Given));
    return (fault.function == function || fault.function == "*") && bufferFits
        && (fault.reader.empty() || fault.reader == reader) && (fault.container.empty() || fault.container == container)
        && (!fault.attribute || (attribute && *fault.attribute == *attribute));
}

void Call::takeFaults()
{
    std::vector<Fault> meant;
    const auto happens = [&](const Fault &fault) {
        if (matches(fault) && fault.nth <= 1)
            meant.push_back(fault);
    };
    bool counted = false;
    for (const Fault &fault : now->faults) {
        happens(fault);
        counted = counted || (matches(fault) && fault.nth > 0);
    }
    if (now->faults.empty())
        return;
    // Read before the fault is used up: a release after that moment is meant for this call.
    releasesBefore = worldStore->releases();
    if (counted) {
        // Only now with the lock: another process may have used the fault up in between.
        std::string ignored;
        worldStore->update(
            [&](World &world, std::string &) {
                meant.clear();
                std::vector<Fault> left;
                for (Fault fault : world.faults) {
                    happens(fault);
                    const bool counts = matches(fault) && fault.nth > 0;
                    if (!counts || --fault.nth > 0)
                        left.push_back(fault);
                }
                world.faults = left;
                return true;
            },
            ignored);
    }
    for (const Fault &fault : meant)
        takeFault(fault);
}

void Call::takeFault(const Fault &fault)
{
    effects.delayMs += fault.delayMs;
    effects.block = effects.block || fault.block;
    effects.die = effects.die || fault.die;
    effects.afterWork = effects.afterWork || fault.afterWork;
    if (!fault.removeReader.empty())
        effects.removeReader = fault.removeReader;
    if (!fault.removeCard.empty())
        effects.removeCard = fault.removeCard;
    takeOver(effects.result, fault.result);
    takeOver(effects.description, fault.description);
    takeOver(effects.label, fault.label);
    takeOver(effects.flags, fault.flags);
    takeOver(effects.count, fault.count);
    takeOver(effects.length, fault.length);
}

void Call::waitForRelease()
{
    writeTrace(traceWaiting);
    // With the first question: whoever has seen the note finds this thread waiting.
    platform::waitCancellable(
        [store = worldStore, before = releasesBefore, note = std::shared_ptr<WaitingNote>()]() mutable {
            if (!note)
                note = std::make_shared<WaitingNote>(store->waitingFolder());
            return store->releases() != before;
        },
        pollMs);
}

// True if what this call is about has gone.
bool Call::removeAsFaultsSay()
{
    if (effects.removeReader.empty() && effects.removeCard.empty())
        return false;
    std::string ignored;
    worldStore->update(
        [&](World &world, std::string &error) {
            WorldOps ops(world, worldStore->directory(), error);
            if (!effects.removeCard.empty())
                ops.removeCard(effects.removeCard);
            if (!effects.removeReader.empty())
                ops.removeReader(effects.removeReader);
            return true;
        },
        ignored);
    return !reader.empty() && (reader == effects.removeReader || reader == effects.removeCard);
}

bool Call::checkInitialized()
{
    module().dropSessionsOfRemovedCards(world());
    return needed == Needs::Nothing || module().initialized;
}

CK_RV Call::waitForPad(PadAnswer &answer)
{
    const auto before = findSlot(world(), module().sessions[*sessionWanted].slot);
    const int insertion = before->reader->insertion;
    unlockModule();
    writeTrace(traceWaiting);
    CK_RV result = CKR_OK;
    {
        const WaitingNote note(worldStore->waitingFolder());
        while (!takePadAnswer(insertion, answer, result))
            platform::sleepCancellable(pollMs);
    }
    const bool worldIsThere = readWorld();
    lockModule();
    if (!worldIsThere)
        return CKR_GENERAL_ERROR;
    if (result == CKR_OK && !checkInitialized())
        return CKR_CRYPTOKI_NOT_INITIALIZED;
    if (result == CKR_OK && module().sessions.count(*sessionWanted) == 0)
        return CKR_SESSION_CLOSED;
    return result;
}

// True when the wait is over.
bool Call::takePadAnswer(int insertion, PadAnswer &answer, CK_RV &result)
{
    if (!readWorld())
        return false;
    const WorldReader *place = world().reader(reader);
    if (!place || place->card.empty() || place->insertion != insertion) {
        result = CKR_DEVICE_REMOVED;
        return true;
    }
    {
        const std::lock_guard<std::mutex> guard(module().mutex);
        if (module().sessions.count(*sessionWanted) == 0) {
            result = module().initialized ? CKR_SESSION_CLOSED : CKR_CRYPTOKI_NOT_INITIALIZED;
            return true;
        }
    }
    if (world().pad.empty())
        return false;
    bool taken = false;
    std::string ignored;
    worldStore->update(
        [&](World &world, std::string &) {
            taken = !world.pad.empty();
            if (taken) {
                answer = world.pad.front();
                world.pad.erase(world.pad.begin());
            }
            return taken;
        },
        ignored);
    return taken;
}

void Call::lockModule()
{
    lock.lock();
}

void Call::unlockModule()
{
    if (lock.owns_lock())
        lock.unlock();
}

void Call::writeTrace(const std::string &outcome)
{
    if (!now || now->traceOn)
        appendTrace(worldStore->tracePath(), traceLine(function, arguments, outcome));
}

} // namespace sim
