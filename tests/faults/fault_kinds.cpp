#include "faults/fault_kinds.h"

#include "simworld/command_faults.h"

#include <algorithm>

namespace {

const std::vector<std::string> pinFunctions { "C_Login", "C_SetPIN", "C_InitPIN", "C_Logout" };

std::vector<FaultKind> allKinds()
{
    std::vector<FaultKind> kinds;
    for (const char *result :
         { "CKR_GENERAL_ERROR", "CKR_DEVICE_ERROR", "CKR_DEVICE_REMOVED", "CKR_TOKEN_NOT_PRESENT", "CKR_PIN_INCORRECT",
           "CKR_PIN_LOCKED", "CKR_FUNCTION_FAILED", "CKR_HOST_MEMORY", "CKR_SESSION_HANDLE_INVALID",
           "CKR_USER_NOT_LOGGED_IN", "CKR_CRYPTOKI_NOT_INITIALIZED", "CKR_BUFFER_TOO_SMALL" })
        kinds.push_back({ result, FaultKind::Fails, {} });
    // These mean something where a PIN is on its way.
    for (const char *result : { "CKR_ARGUMENTS_BAD", "CKR_FUNCTION_CANCELED", "CKR_FUNCTION_REJECTED" })
        kinds.push_back({ result, FaultKind::Fails, pinFunctions });
    kinds.push_back({ "after", FaultKind::FailsAfterwards, {} });
    kinds.push_back({ "block", FaultKind::Blocks, {} });
    kinds.push_back({ "remove-card", FaultKind::LosesCard, {} });
    kinds.push_back({ "remove-reader", FaultKind::LosesReader, {} });
    const std::string zeros(64, '0');
    const std::string broken(64, 'F');
    for (const std::string &words :
         { std::string("count=0"), std::string("count=7"), std::string("count=1099511627776") })
        kinds.push_back({ words, FaultKind::Garbage, { "C_GetSlotList" } });
    for (const std::string &words : { std::string("count=0"), std::string("count=7") })
        kinds.push_back({ words, FaultKind::Garbage, { "C_FindObjects" } });
    for (const std::string &words :
         { "description=" + zeros, "description=" + broken, std::string("flags=0"), std::string("flags=0xFFFFFFFF") })
        kinds.push_back({ words, FaultKind::Garbage, { "C_GetSlotInfo" } });
    for (const std::string &words :
         { "label=" + zeros, "label=" + broken, std::string("flags=0"), std::string("flags=0xFFFFFFFF") })
        kinds.push_back({ words, FaultKind::Garbage, { "C_GetTokenInfo" } });
    for (const std::string &words :
         { std::string("length=-1"), std::string("length=0"), std::string("length=3"), std::string("length=1000000") })
        kinds.push_back({ words, FaultKind::Garbage, { "C_GetAttributeValue" } });
    kinds.push_back({ "die", FaultKind::Dies, {} });
    return kinds;
}

} // namespace

bool FaultKind::isFor(const std::string &function) const
{
    return functions.empty() || std::find(functions.begin(), functions.end(), function) != functions.end();
}

sim::Fault FaultKind::atCall(int nth, const std::string &reader) const
{
    std::vector<std::string> words { "*", "nth=" + std::to_string(nth) };
    switch (nature) {
    case Fails:
        words.push_back("result=" + name);
        break;
    case FailsAfterwards:
        words.push_back("result=CKR_DEVICE_ERROR");
        words.push_back("after");
        break;
    case LosesCard:
    case LosesReader:
        words.push_back(name + "=" + reader);
        break;
    case Garbage:
    case Blocks:
    case Dies:
        words.push_back(name);
        break;
    }
    sim::Fault fault;
    std::string error;
    if (!sim::parseFault(words, fault, error)) {
        std::fprintf(stderr, "%s: %s\n", name.c_str(), error.c_str());
        std::abort();
    }
    return fault;
}

const std::vector<FaultKind> &faultKinds()
{
    static const std::vector<FaultKind> kinds = allKinds();
    return kinds;
}

const FaultKind *faultKind(const std::string &name)
{
    const auto &kinds = faultKinds();
    const auto found =
        std::find_if(kinds.begin(), kinds.end(), [&name](const FaultKind &kind) { return kind.name == name; });
    return found == kinds.end() ? nullptr : &*found;
}
