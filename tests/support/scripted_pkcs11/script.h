#pragma once

#include <p11-kit/pkcs11.h>

// What the scripted module forwards to: one method a function that the program may call. Any other entry of the table
// ends in other().
class Script {
public:
    virtual ~Script() = default;

    virtual CK_RV getFunctionList(CK_FUNCTION_LIST *own, CK_FUNCTION_LIST **list) = 0;
    virtual CK_RV initialize(void *arguments) = 0;
    virtual CK_RV finalize(void *reserved) = 0;
    virtual CK_RV getSlotList(bool tokenPresent, CK_SLOT_ID *ids, CK_ULONG *count) = 0;
    virtual CK_RV getSlotInfo(CK_SLOT_ID slot, CK_SLOT_INFO *info) = 0;
    virtual CK_RV getTokenInfo(CK_SLOT_ID slot, CK_TOKEN_INFO *info) = 0;
    virtual CK_RV openSession(CK_SLOT_ID slot, CK_FLAGS flags, void *application, CK_NOTIFY notify,
                              CK_SESSION_HANDLE *session) = 0;
    virtual CK_RV closeSession(CK_SESSION_HANDLE session) = 0;
    virtual CK_RV login(CK_SESSION_HANDLE session, CK_USER_TYPE user, unsigned char *pin, CK_ULONG length) = 0;
    virtual CK_RV logout(CK_SESSION_HANDLE session) = 0;
    virtual CK_RV setPin(CK_SESSION_HANDLE session, unsigned char *oldPin, CK_ULONG oldLength, unsigned char *newPin,
                         CK_ULONG newLength) = 0;
    virtual CK_RV initPin(CK_SESSION_HANDLE session, unsigned char *pin, CK_ULONG length) = 0;
    virtual CK_RV findObjectsInit(CK_SESSION_HANDLE session, CK_ATTRIBUTE *pattern, CK_ULONG count) = 0;
    virtual CK_RV findObjects(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE *objects, CK_ULONG max, CK_ULONG *count) = 0;
    virtual CK_RV findObjectsFinal(CK_SESSION_HANDLE session) = 0;
    virtual CK_RV getAttributeValue(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object, CK_ATTRIBUTE *attributes,
                                    CK_ULONG count) = 0;
    virtual CK_RV other() = 0;
    // The module leaves memory.
    virtual void unloaded() = 0;
};

// Exported by the module: whom to forward to from now on, null for nobody (every call then fails).
using AttachScript = void (*)(Script *);
