// C_Initialize and C_Finalize, what tells about the library, and the list of all functions.
#include "pkcs11/call.h"
#include "pkcs11/texts.h"

using sim::Call;

namespace {

// Functions of the standard that no card of this kind offers. They are in the list, as the standard demands, and are
// traced and may go wrong by a fault like the others.
// clang-format off
#define FOR_UNSUPPORTED(X) \
    X(C_InitToken) \
    X(C_GetOperationState) \
    X(C_SetOperationState) \
    X(C_CreateObject) \
    X(C_CopyObject) \
    X(C_DestroyObject) \
    X(C_SetAttributeValue) \
    X(C_EncryptInit) \
    X(C_Encrypt) \
    X(C_EncryptUpdate) \
    X(C_EncryptFinal) \
    X(C_DecryptInit) \
    X(C_Decrypt) \
    X(C_DecryptUpdate) \
    X(C_DecryptFinal) \
    X(C_DigestInit) \
    X(C_Digest) \
    X(C_DigestUpdate) \
    X(C_DigestKey) \
    X(C_DigestFinal) \
    X(C_SignInit) \
    X(C_Sign) \
    X(C_SignUpdate) \
    X(C_SignFinal) \
    X(C_SignRecoverInit) \
    X(C_SignRecover) \
    X(C_VerifyInit) \
    X(C_Verify) \
    X(C_VerifyUpdate) \
    X(C_VerifyFinal) \
    X(C_VerifyRecoverInit) \
    X(C_VerifyRecover) \
    X(C_DigestEncryptUpdate) \
    X(C_DecryptDigestUpdate) \
    X(C_SignEncryptUpdate) \
    X(C_DecryptVerifyUpdate) \
    X(C_GenerateKey) \
    X(C_GenerateKeyPair) \
    X(C_WrapKey) \
    X(C_UnwrapKey) \
    X(C_DeriveKey) \
    X(C_SeedRandom) \
    X(C_GenerateRandom) \
    X(C_WaitForSlotEvent)
// clang-format on

#define NAME_TEXT(name) constexpr char name##Text[] = #name;
FOR_UNSUPPORTED(NAME_TEXT)
#undef NAME_TEXT

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

#define UNSUPPORTED(name) Unsupported<CK_##name, name##Text>::call

CK_FUNCTION_LIST functions = {
    { CRYPTOKI_VERSION_MAJOR, CRYPTOKI_VERSION_MINOR },
    C_Initialize,
    C_Finalize,
    C_GetInfo,
    C_GetFunctionList,
    C_GetSlotList,
    C_GetSlotInfo,
    C_GetTokenInfo,
    C_GetMechanismList,
    C_GetMechanismInfo,
    UNSUPPORTED(C_InitToken),
    C_InitPIN,
    C_SetPIN,
    C_OpenSession,
    C_CloseSession,
    C_CloseAllSessions,
    C_GetSessionInfo,
    UNSUPPORTED(C_GetOperationState),
    UNSUPPORTED(C_SetOperationState),
    C_Login,
    C_Logout,
    UNSUPPORTED(C_CreateObject),
    UNSUPPORTED(C_CopyObject),
    UNSUPPORTED(C_DestroyObject),
    C_GetObjectSize,
    C_GetAttributeValue,
    UNSUPPORTED(C_SetAttributeValue),
    C_FindObjectsInit,
    C_FindObjects,
    C_FindObjectsFinal,
    UNSUPPORTED(C_EncryptInit),
    UNSUPPORTED(C_Encrypt),
    UNSUPPORTED(C_EncryptUpdate),
    UNSUPPORTED(C_EncryptFinal),
    UNSUPPORTED(C_DecryptInit),
    UNSUPPORTED(C_Decrypt),
    UNSUPPORTED(C_DecryptUpdate),
    UNSUPPORTED(C_DecryptFinal),
    UNSUPPORTED(C_DigestInit),
    UNSUPPORTED(C_Digest),
    UNSUPPORTED(C_DigestUpdate),
    UNSUPPORTED(C_DigestKey),
    UNSUPPORTED(C_DigestFinal),
    UNSUPPORTED(C_SignInit),
    UNSUPPORTED(C_Sign),
    UNSUPPORTED(C_SignUpdate),
    UNSUPPORTED(C_SignFinal),
    UNSUPPORTED(C_SignRecoverInit),
    UNSUPPORTED(C_SignRecover),
    UNSUPPORTED(C_VerifyInit),
    UNSUPPORTED(C_Verify),
    UNSUPPORTED(C_VerifyUpdate),
    UNSUPPORTED(C_VerifyFinal),
    UNSUPPORTED(C_VerifyRecoverInit),
    UNSUPPORTED(C_VerifyRecover),
    UNSUPPORTED(C_DigestEncryptUpdate),
    UNSUPPORTED(C_DecryptDigestUpdate),
    UNSUPPORTED(C_SignEncryptUpdate),
    UNSUPPORTED(C_DecryptVerifyUpdate),
    UNSUPPORTED(C_GenerateKey),
    UNSUPPORTED(C_GenerateKeyPair),
    UNSUPPORTED(C_WrapKey),
    UNSUPPORTED(C_UnwrapKey),
    UNSUPPORTED(C_DeriveKey),
    UNSUPPORTED(C_SeedRandom),
    UNSUPPORTED(C_GenerateRandom),
    C_GetFunctionStatus,
    C_CancelFunction,
    UNSUPPORTED(C_WaitForSlotEvent),
};

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
