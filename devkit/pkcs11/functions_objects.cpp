// Searching for objects and reading them. Everything on the card is public but for what is marked private, which is
// found after login only.
#include <algorithm>

#include "pkcs11/attributes.h"
#include "pkcs11/call.h"

using sim::Call;
using sim::Object;
using sim::Session;

namespace {

// Handles name the slot too, so that one token's object is not taken for another's.
constexpr CK_OBJECT_HANDLE objectsOfSlot = 1000;

const std::vector<Object> &objectsOf(Call &call, const Session &session)
{
    static const std::vector<Object> none;
    const auto slot = sim::findSlot(call.world(), session.slot);
    const auto card = call.module().wholeCard(*slot->reader);
    if (!card)
        return none;
    const auto found = card->objects.find(slot->container);
    return found == card->objects.end() ? none : found->second;
}

bool isVisible(Call &call, const Session &session, const Object &object)
{
    const auto login = call.module().logins.find(session.slot);
    return !object.isPrivate || (login != call.module().logins.end() && login->second == CKU_USER);
}

const Object *findObject(Call &call, const Session &session, CK_OBJECT_HANDLE handle)
{
    const std::vector<Object> &objects = objectsOf(call, session);
    const CK_OBJECT_HANDLE number = handle % objectsOfSlot;
    if (handle / objectsOfSlot != session.slot || number == 0 || number > objects.size())
        return nullptr;
    const Object &object = objects[number - 1];
    return isVisible(call, session, object) ? &object : nullptr;
}

void startSearch(Call &call, Session &session, const CK_ATTRIBUTE *attributes, CK_ULONG count)
{
    const std::vector<Object> &objects = objectsOf(call, session);
    session.searching = true;
    session.found.clear();
    session.next = 0;
    for (std::size_t at = 0; at < objects.size(); ++at) {
        if (isVisible(call, session, objects[at]) && sim::matchesTemplate(objects[at], attributes, count))
            session.found.push_back(session.slot * objectsOfSlot + at + 1);
    }
}

bool isUsable(const CK_ATTRIBUTE *attributes, CK_ULONG count)
{
    for (CK_ULONG at = 0; attributes && at < count; ++at) {
        if (!attributes[at].pValue && attributes[at].ulValueLen > 0)
            return false;
    }
    return attributes || count == 0;
}

} // namespace

extern "C" CK_RV C_FindObjectsInit(CK_SESSION_HANDLE handle, CK_ATTRIBUTE_PTR attributes, CK_ULONG count)
{
    Call call("C_FindObjectsInit");
    call.session(handle);
    call.argument("template", static_cast<unsigned long>(count));
    return call.runOnSession([&](Session &session) -> CK_RV {
        if (!isUsable(attributes, count))
            return CKR_ARGUMENTS_BAD;
        if (session.searching)
            return CKR_OPERATION_ACTIVE;
        startSearch(call, session, attributes, count);
        return CKR_OK;
    });
}

extern "C" CK_RV C_FindObjects(CK_SESSION_HANDLE handle, CK_OBJECT_HANDLE_PTR objects, CK_ULONG most,
                               CK_ULONG_PTR count)
{
    Call call("C_FindObjects");
    call.session(handle);
    call.argument("max", static_cast<unsigned long>(most));
    return call.runOnSession([&](Session &session) -> CK_RV {
        if (!objects || !count || most == 0)
            return CKR_ARGUMENTS_BAD;
        if (!session.searching)
            return CKR_OPERATION_NOT_INITIALIZED;
        const std::size_t taken = std::min<std::size_t>(most, session.found.size() - session.next);
        std::copy_n(session.found.begin() + static_cast<std::ptrdiff_t>(session.next), taken, objects);
        session.next += taken;
        *count = static_cast<CK_ULONG>(call.nonsense().count.value_or(static_cast<long long>(taken)));
        call.argument("count", static_cast<unsigned long>(*count));
        return CKR_OK;
    });
}

extern "C" CK_RV C_FindObjectsFinal(CK_SESSION_HANDLE handle)
{
    Call call("C_FindObjectsFinal");
    call.session(handle);
    return call.runOnSession([&](Session &session) -> CK_RV {
        if (!session.searching)
            return CKR_OPERATION_NOT_INITIALIZED;
        session.searching = false;
        call.module().forgetWholeCards();
        return CKR_OK;
    });
}

extern "C" CK_RV C_GetAttributeValue(CK_SESSION_HANDLE handle, CK_OBJECT_HANDLE objectHandle,
                                     CK_ATTRIBUTE_PTR attributes, CK_ULONG count)
{
    Call call("C_GetAttributeValue");
    call.session(handle);
    call.argument("object", static_cast<unsigned long>(objectHandle));
    call.attributes(attributes, count);
    return call.runOnSession([&](const Session &session) -> CK_RV {
        if (!attributes || count == 0)
            return CKR_ARGUMENTS_BAD;
        const Object *object = findObject(call, session, objectHandle);
        if (!object)
            return CKR_OBJECT_HANDLE_INVALID;
        // All attributes are filled, whatever goes wrong with one of them.
        CK_RV result = CKR_OK;
        for (CK_ULONG at = 0; at < count; ++at) {
            const CK_RV one = sim::fillAttribute(*object, attributes[at]);
            result = one == CKR_OK ? result : one;
        }
        if (call.nonsense().length)
            attributes->ulValueLen = static_cast<CK_ULONG>(*call.nonsense().length);
        call.argument("length", static_cast<unsigned long>(attributes->ulValueLen));
        return result;
    });
}

extern "C" CK_RV C_GetObjectSize(CK_SESSION_HANDLE handle, CK_OBJECT_HANDLE objectHandle, CK_ULONG_PTR size)
{
    Call call("C_GetObjectSize");
    call.session(handle);
    call.argument("object", static_cast<unsigned long>(objectHandle));
    return call.runOnSession([&](const Session &session) -> CK_RV {
        const Object *object = findObject(call, session, objectHandle);
        if (!object)
            return CKR_OBJECT_HANDLE_INVALID;
        if (!size)
            return CKR_ARGUMENTS_BAD;
        *size = static_cast<CK_ULONG>(object->value.size());
        return CKR_OK;
    });
}
