#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "pkcs11/clean_memory.h"
#include "pkcs11/cryptoki.h"
#include "pkcs11/module.h"
#include "simworld/config_text.h"
#include "simworld/platform.h"
#include "simworld/trace_file.h"

namespace sim {

// One call of a library function: finds out what faults the world has in store for it, waits if it must, runs the work
// under the module's mutex and writes the trace.
//
//     Call call("C_CloseSession");
//     call.session(handle);
//     return call.run([&] { ... return CKR_OK; });
//
// A forced end of the calling thread is let in only while the call waits, with nothing locked.
class Call {
public:
    enum class Needs { Nothing, Initialized };

    explicit Call(const char *functionName, Needs needs = Needs::Initialized);

    // What the call is about; for the trace and for faults that are meant for certain calls only.
    void slot(CK_SLOT_ID id);
    void session(CK_SESSION_HANDLE handle);
    void attributes(CK_ATTRIBUTE_PTR first, CK_ULONG count); // of C_GetAttributeValue
    void buffer(bool given);
    void argument(const std::string &name, const std::string &value);
    void argument(const std::string &name, unsigned long value);
    // What the call has answered: a field of text, in hexadecimal digits, and flags.
    template <std::size_t size>
    void answer(const char *name, const CK_UTF8CHAR (&field)[size], CK_FLAGS flags)
    {
        argument(name, toHex(std::string(reinterpret_cast<const char *>(field), size)));
        argument("bits", static_cast<unsigned long>(flags));
    }
    // Says only whether there is one.
    void secret(const std::string &name, CK_UTF8CHAR_PTR bytes, CK_ULONG length);

    template <class Work>
    CK_RV run(Work work)
    {
        CK_RV result = CKR_GENERAL_ERROR;
        // Not "...": the forced end of a thread travels as an exception too and must not be caught.
        try {
            if (begin(result)) {
                lockModule();
                result = checkInitialized() ? apart(work) : CKR_CRYPTOKI_NOT_INITIALIZED;
                unlockModule();
            }
            if (effects.result)
                result = static_cast<CK_RV>(*effects.result);
        } catch (const std::exception &) {
            unlockModule();
            result = CKR_GENERAL_ERROR;
        }
        writeTrace(traceOutcome(result));
        // It holds the PINs of the cards.
        worldStore->forgetRead();
        cleanStack();
        return result;
    }

    // The same with work on the slot or the session that the call is about, if it is there. `answer` is what the call
    // must have been given to write to.
    template <class Work>
    CK_RV runOnSlot(const void *answer, Work work)
    {
        return run([&]() -> CK_RV {
            if (!answer)
                return CKR_ARGUMENTS_BAD;
            const auto view = findSlot(world(), *slotWanted);
            return view ? work(*view) : CKR_SLOT_ID_INVALID;
        });
    }
    template <class Work>
    CK_RV runOnSession(Work work)
    {
        return run([&]() -> CK_RV {
            const auto found = module().sessions.find(*sessionWanted);
            return found == module().sessions.end() ? CKR_SESSION_HANDLE_INVALID : work(found->second);
        });
    }

    // For the work. The world is the one in which the work began, with the sessions of removed cards gone.
    const World &world() const { return *now; }
    Module &module() { return Module::instance(); }
    WorldStore &store() { return *worldStore; }
    // The nonsense that a fault wants in this call's answer.
    const Fault &nonsense() const { return effects; }

    // Waits, with the mutex given back meanwhile, for the first answer at the keypad of this call's reader. CKR_OK with
    // the answer, or the reason why there is none. The world is a later one afterwards.
    CK_RV waitForPad(PadAnswer &answer);

private:
    // With a stack of its own, which is cleaned afterwards.
    template <class Work>
    [[gnu::noinline]] static CK_RV apart(Work &work)
    {
        return work();
    }
    bool begin(CK_RV &result);
    bool readWorld();
    void takeFaults();
    void takeFault(const Fault &fault);
    bool matches(const Fault &fault) const;
    void waitForRelease();
    bool removeAsFaultsSay();
    void findPlace();
    bool checkInitialized();
    bool takePadAnswer(int insertion, PadAnswer &answer, CK_RV &result);
    void lockModule();
    void unlockModule();
    void writeTrace(const std::string &outcome);

    const platform::CancelGuard cancelGuard;
    const char *const function;
    const Needs needed;
    const std::shared_ptr<WorldStore> worldStore;
    std::shared_ptr<const World> now;
    std::unique_lock<std::mutex> lock;
    std::optional<CK_SLOT_ID> slotWanted;
    std::optional<CK_SESSION_HANDLE> sessionWanted;
    std::optional<CK_ATTRIBUTE_TYPE> attribute;
    std::optional<bool> bufferGiven;
    std::string reader; // both empty if the call is about no slot, or about none that is there
    std::string container;
    TraceArguments arguments;
    Fault effects; // all faults of this call in one
    long releasesBefore = 0;
};

} // namespace sim
