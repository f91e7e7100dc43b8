#include "pkcs11/call.h"

using sim::Call;
using sim::Session;

namespace {

CK_STATE stateOf(Call &call, const Session &session)
{
    const bool writable = session.flags & CKF_RW_SESSION;
    const auto login = call.module().logins.find(session.slot);
    if (login == call.module().logins.end())
        return writable ? CKS_RW_PUBLIC_SESSION : CKS_RO_PUBLIC_SESSION;
    if (login->second == CKU_SO)
        return CKS_RW_SO_FUNCTIONS;
    return writable ? CKS_RW_USER_FUNCTIONS : CKS_RO_USER_FUNCTIONS;
}

CK_RV openSession(Call &call, CK_SLOT_ID slotId, CK_FLAGS flags, CK_SESSION_HANDLE &handle)
{
    const auto slot = sim::findSlot(call.world(), slotId);
    if (!slot)
        return CKR_SLOT_ID_INVALID;
    if (!(flags & CKF_SERIAL_SESSION))
        return CKR_SESSION_PARALLEL_NOT_SUPPORTED;
    if (!slot->hasCard())
        return CKR_TOKEN_NOT_PRESENT;
    // Before its CAN a card cannot be spoken to.
    if (!slot->container || slot->reader->waitCan || !call.module().card(*slot->reader))
        return CKR_TOKEN_NOT_RECOGNIZED;
    const auto login = call.module().logins.find(slotId);
    if (!(flags & CKF_RW_SESSION) && login != call.module().logins.end() && login->second == CKU_SO)
        return CKR_SESSION_READ_WRITE_SO_EXISTS;
    Session session;
    session.slot = slotId;
    session.insertion = slot->reader->insertion;
    session.flags = flags;
    handle = call.module().addSession(session);
    return CKR_OK;
}

} // namespace

extern "C" CK_RV C_OpenSession(CK_SLOT_ID slotId, CK_FLAGS flags, CK_VOID_PTR, CK_NOTIFY, CK_SESSION_HANDLE_PTR handle)
{
    Call call("C_OpenSession");
    call.slot(slotId);
    call.argument("flags", static_cast<unsigned long>(flags));
    return call.run([&]() -> CK_RV {
        if (!handle)
            return CKR_ARGUMENTS_BAD;
        const CK_RV result = openSession(call, slotId, flags, *handle);
        if (result == CKR_OK)
            call.argument("session", static_cast<unsigned long>(*handle));
        return result;
    });
}

extern "C" CK_RV C_CloseSession(CK_SESSION_HANDLE handle)
{
    Call call("C_CloseSession");
    call.session(handle);
    return call.runOnSession([&](const Session &) {
        call.module().closeSession(handle);
        return CKR_OK;
    });
}

extern "C" CK_RV C_CloseAllSessions(CK_SLOT_ID slotId)
{
    Call call("C_CloseAllSessions");
    call.slot(slotId);
    return call.runOnSlot(&slotId, [&](const sim::SlotView &) {
        call.module().closeSessions(slotId);
        return CKR_OK;
    });
}

extern "C" CK_RV C_GetSessionInfo(CK_SESSION_HANDLE handle, CK_SESSION_INFO_PTR info)
{
    Call call("C_GetSessionInfo");
    call.session(handle);
    return call.runOnSession([&](const Session &session) -> CK_RV {
        if (!info)
            return CKR_ARGUMENTS_BAD;
        *info = { session.slot, stateOf(call, session), session.flags, 0 };
        return CKR_OK;
    });
}
