// C_Initialize and C_Finalize, what tells about the library, and the list of all functions.
#include "pkcs11/call.h"
#include "pkcs11/texts.h"
#include "simworld/cryptoki_functions.h"

using sim::Call;

namespace {

#define NO_TEXT(name)
#define NAME_TEXT(name) constexpr char name##Text[] = #name;
SIM_CRYPTOKI_FUNCTIONS(NO_TEXT, NAME_TEXT)

template <class Signature, const char *name>
struct Unsupported;

template <class... Arguments, const char *name>
struct Unsupported<CK_RV (*)(Arguments...), name> {
    static CK_RV call(Arguments...)
    {
        Call call(name);
        return call.run([] { return CKR_FUNCTION_NOT_SUPPORTED; });
    }
};

#define SUPPORTED(name) name,
#define UNSUPPORTED(name) Unsupported<CK_##name, name##Text>::call,
CK_FUNCTION_LIST functions = { { CRYPTOKI_VERSION_MAJOR, CRYPTOKI_VERSION_MINOR },
                               SIM_CRYPTOKI_FUNCTIONS(SUPPORTED, UNSUPPORTED) };

// Either none of the four mutex functions is given, or all; the library uses locks of its own in any case.
bool argumentsAreGood(const CK_C_INITIALIZE_ARGS *arguments)
{
    if (!arguments)
        return true;
    const int given = (arguments->CreateMutex != nullptr) + (arguments->DestroyMutex != nullptr)
        + (arguments->LockMutex != nullptr) + (arguments->UnlockMutex != nullptr);
    return !arguments->pReserved && (given == 0 || given == 4);
}

} // namespace

extern "C" CK_RV C_GetFunctionList(CK_FUNCTION_LIST_PTR_PTR list)
{
    sim::Module::instance().chooseWorld();
    Call call("C_GetFunctionList", Call::Needs::Nothing);
    return call.run([&] {
        if (!list)
            return CKR_ARGUMENTS_BAD;
        *list = &functions;
        return CKR_OK;
    });
}

extern "C" CK_RV C_Initialize(CK_VOID_PTR initArguments)
{
    sim::Module::instance().chooseWorld();
    Call call("C_Initialize", Call::Needs::Nothing);
    call.argument("arguments", initArguments ? "given" : "null");
    return call.run([&] {
        if (!argumentsAreGood(static_cast<CK_C_INITIALIZE_ARGS_PTR>(initArguments)))
            return CKR_ARGUMENTS_BAD;
        if (call.module().initialized)
            return CKR_CRYPTOKI_ALREADY_INITIALIZED;
        call.module().initialized = true;
        if (call.world().sessionsAnew)
            call.module().numberSessionsAnew();
        return CKR_OK;
    });
}

extern "C" CK_RV C_Finalize(CK_VOID_PTR reserved)
{
    Call call("C_Finalize");
    return call.run([&] {
        if (reserved)
            return CKR_ARGUMENTS_BAD;
        call.module().forgetAll();
        call.module().initialized = false;
        return CKR_OK;
    });
}

extern "C" CK_RV C_GetInfo(CK_INFO_PTR info)
{
    Call call("C_GetInfo");
    return call.run([&] {
        if (!info)
            return CKR_ARGUMENTS_BAD;
        *info = CK_INFO();
        info->cryptokiVersion = functions.version;
        sim::fillText(info->manufacturerID, sim::manufacturer);
        sim::fillText(info->libraryDescription, "Simulated card library");
        info->libraryVersion = { 1, 0 };
        return CKR_OK;
    });
}

// Both belong to a way of working that the standard has given up.
extern "C" CK_RV C_GetFunctionStatus(CK_SESSION_HANDLE session)
{
    Call call("C_GetFunctionStatus");
    call.session(session);
    return call.run([] { return CKR_FUNCTION_NOT_PARALLEL; });
}

extern "C" CK_RV C_CancelFunction(CK_SESSION_HANDLE session)
{
    Call call("C_CancelFunction");
    call.session(session);
    return call.run([] { return CKR_FUNCTION_NOT_PARALLEL; });
}
