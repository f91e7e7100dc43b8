// The functions are exported and not imported, which the header wants to know where that makes a difference.
#define CRYPTOKI_EXPORTS
#include "script.h"

#include <cstddef>

#ifdef _WIN32
#define MODULE_EXPORT extern "C" __declspec(dllexport)
#else
#define MODULE_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

Script *script = nullptr;

// Forwards to a method of the script with the same parameters.
template <auto method, typename... Parameters>
CK_RV forward(Parameters... parameters)
{
    return script ? (script->*method)(parameters...) : CKR_GENERAL_ERROR;
}

CK_RV getSlotList(unsigned char tokenPresent, CK_SLOT_ID *ids, CK_ULONG *count)
{
    return script ? script->getSlotList(tokenPresent != 0, ids, count) : CKR_GENERAL_ERROR;
}

CK_RV other()
{
    return script ? script->other() : CKR_GENERAL_ERROR;
}

CK_FUNCTION_LIST makeList()
{
    CK_FUNCTION_LIST list = {};
    list.version = { 2, 40 };
    // The entries follow one another; those that the script does not know count their calls.
    auto *entries =
        reinterpret_cast<CK_RV (**)()>(reinterpret_cast<char *>(&list) + offsetof(CK_FUNCTION_LIST, C_Initialize));
    const std::size_t count = (sizeof list - offsetof(CK_FUNCTION_LIST, C_Initialize)) / sizeof(void *);
    for (std::size_t i = 0; i < count; ++i)
        entries[i] = other;
    list.C_Initialize = forward<&Script::initialize>;
    list.C_Finalize = forward<&Script::finalize>;
    list.C_GetSlotList = getSlotList;
    list.C_GetSlotInfo = forward<&Script::getSlotInfo>;
    list.C_GetTokenInfo = forward<&Script::getTokenInfo>;
    list.C_OpenSession = forward<&Script::openSession>;
    list.C_CloseSession = forward<&Script::closeSession>;
    list.C_Login = forward<&Script::login>;
    list.C_Logout = forward<&Script::logout>;
    list.C_SetPIN = forward<&Script::setPin>;
    list.C_InitPIN = forward<&Script::initPin>;
    list.C_FindObjectsInit = forward<&Script::findObjectsInit>;
    list.C_FindObjects = forward<&Script::findObjects>;
    list.C_FindObjectsFinal = forward<&Script::findObjectsFinal>;
    list.C_GetAttributeValue = forward<&Script::getAttributeValue>;
    return list;
}

CK_FUNCTION_LIST functions = makeList();

struct Farewell {
    ~Farewell()
    {
        if (script)
            script->unloaded();
    }
} farewell;

} // namespace

MODULE_EXPORT void attachScript(Script *next)
{
    script = next;
}

MODULE_EXPORT CK_RV C_GetFunctionList(CK_FUNCTION_LIST **list)
{
    return script ? script->getFunctionList(&functions, list) : CKR_GENERAL_ERROR;
}
