#pragma once

#include "support/scripted_pkcs11/script.h"

#include <QByteArray>
#include <QLibrary>
#include <QMap>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

struct ScriptedObject {
    CK_OBJECT_CLASS objectClass;
    QByteArray label;
    QByteArray value;
};

// Text fields are given as raw bytes and filled with blanks, as the standard has it.
struct ScriptedSlot {
    CK_SLOT_ID id = 0;
    QByteArray description;
    CK_FLAGS flags = CKF_TOKEN_PRESENT;
    QByteArray label;
    CK_FLAGS tokenFlags = CKF_TOKEN_INITIALIZED | CKF_USER_PIN_INITIALIZED;
    std::vector<ScriptedObject> objects = {};
    CK_RV slotInfo = CKR_OK;
    CK_RV tokenInfo = CKR_OK;
};

// A Cryptoki library played by the test: it keeps sessions and searches as the standard says, answers from a list of
// slots, and notes every call. Any function can be made to fail, and the answers of some replaced by nonsense.
//
// While it lives, the library file that App names is the module, loaded and attached to this object.
class ScriptedCard : public Script {
public:
    ScriptedCard();
    ~ScriptedCard() override;
    ScriptedCard(const ScriptedCard &) = delete;
    ScriptedCard &operator=(const ScriptedCard &) = delete;

    // Points App at a root of its own below the test's home, and makes `module` its Cryptoki library. Returns the path.
    static QString installModule();
    static QString installNoEntryModule();
    static QString installBytes(const QByteArray &bytes);
    static QString removeLibrary();

    // The calls so far, such as "C_Login 1 user=0 pin=8": handles, numbers, lengths of PINs, never their digits.
    QStringList calls() const { return trace; }
    // Names only.
    QStringList functions() const;
    int count(const QString &function) const;
    void clearCalls() { trace.clear(); }

    // The given call from now on, 1 for the next, fails; 0: all do. "C_GetAttributeValue.LABEL" and its kin mean one
    // attribute only.
    void fail(const QString &function, CK_RV rv, int nth = 0);
    void heal() { faults.clear(); }

    ScriptedSlot *slotOf(CK_SLOT_ID id);
    // Slots 1 to 5 of one reader, "NAME #1" and so on, labelled with the four containers and eMRTD.
    void addReader(const QString &name, CK_SLOT_ID firstId = 1);

    // Drops the test's own hold on the module, so that only Pkcs11 keeps it in memory.
    void letGoOfModule() { module.unload(); }
    bool isUnloaded() const { return gone; }

    std::vector<ScriptedSlot> card;
    // PINs as they came, and whether each was given by a non-null pointer.
    QList<QByteArray> pins;
    bool anyPinNull = false;
    bool argumentsWereNull = true; // of C_Initialize and C_Finalize
    CK_SESSION_HANDLE nextSession = 1;

    // Set to replace an answer.
    std::function<CK_RV(CK_FUNCTION_LIST *, CK_FUNCTION_LIST **)> onFunctionList;
    std::function<CK_RV(CK_SLOT_ID *, CK_ULONG *)> onSlotList;
    std::function<CK_RV(CK_ULONG *)> onFindObjects;
    // Called instead of the answer for LABEL and VALUE, and for CLASS.
    std::function<CK_RV(CK_ATTRIBUTE *)> onAttribute;
    // Called before a call is answered, with its function's name.
    std::function<void(const QString &)> onCall;

    CK_RV getFunctionList(CK_FUNCTION_LIST *own, CK_FUNCTION_LIST **list) override;
    CK_RV initialize(void *arguments) override;
    CK_RV finalize(void *reserved) override;
    CK_RV getSlotList(bool tokenPresent, CK_SLOT_ID *ids, CK_ULONG *count) override;
    CK_RV getSlotInfo(CK_SLOT_ID slot, CK_SLOT_INFO *info) override;
    CK_RV getTokenInfo(CK_SLOT_ID slot, CK_TOKEN_INFO *info) override;
    CK_RV openSession(CK_SLOT_ID slot, CK_FLAGS flags, void *application, CK_NOTIFY notify,
                      CK_SESSION_HANDLE *session) override;
    CK_RV closeSession(CK_SESSION_HANDLE session) override;
    CK_RV login(CK_SESSION_HANDLE session, CK_USER_TYPE user, unsigned char *pin, CK_ULONG length) override;
    CK_RV logout(CK_SESSION_HANDLE session) override;
    CK_RV setPin(CK_SESSION_HANDLE session, unsigned char *oldPin, CK_ULONG oldLength, unsigned char *newPin,
                 CK_ULONG newLength) override;
    CK_RV initPin(CK_SESSION_HANDLE session, unsigned char *pin, CK_ULONG length) override;
    CK_RV findObjectsInit(CK_SESSION_HANDLE session, CK_ATTRIBUTE *pattern, CK_ULONG count) override;
    CK_RV findObjects(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE *objects, CK_ULONG max, CK_ULONG *count) override;
    CK_RV findObjectsFinal(CK_SESSION_HANDLE session) override;
    CK_RV getAttributeValue(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object, CK_ATTRIBUTE *attributes,
                            CK_ULONG count) override;
    CK_RV other() override;
    void unloaded() override { gone = true; }

private:
    struct Search {
        CK_SLOT_ID slot = 0;
        bool active = false;
        std::size_t next = 0;
    };
    struct Fault {
        CK_RV rv;
        int nth;
        bool every;
    };

    std::optional<CK_RV> takeFault(const QString &key);
    // Notes the call; CKR_OK unless a fault is set for it or the library is not initialised.
    CK_RV begin(const QString &function, const QString &arguments = {});
    // The same for a call on a session, which must be open.
    CK_RV beginOnSession(const QString &function, CK_SESSION_HANDLE session, const QString &arguments = {});
    void keepPin(const unsigned char *pin, CK_ULONG length);
    CK_RV answerAttribute(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object, CK_ATTRIBUTE *attribute);

    QLibrary module;
    QStringList trace;
    QMap<QString, Fault> faults;
    QMap<quint64, Search> sessions;
    bool ready = false;
    bool gone = false;
};
