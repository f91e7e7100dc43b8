#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "pkcs11/cryptoki.h"
#include "simworld/world_store.h"

// What the library remembers between calls: the sessions and logins of this process. All else is in the world, which
// other processes change meanwhile.
namespace sim {

// One slot of the world as it stands in one moment.
struct SlotView {
    const WorldReader *reader = nullptr;
    int number = 0; // 1 to 5, the suffix of the slot's description
    const char *container = nullptr; // null where there is no token of ours
    bool hasCard() const { return !reader->card.empty(); }
};

CK_SLOT_ID slotId(const WorldReader &reader, int number);
std::vector<CK_SLOT_ID> slotIds(const World &world, bool withCardOnly);
std::optional<SlotView> findSlot(const World &world, CK_SLOT_ID id);

struct Session {
    CK_SLOT_ID slot = 0;
    int insertion = 0; // of the card for which it was opened
    CK_FLAGS flags = 0;
    bool searching = false;
    std::vector<CK_OBJECT_HANDLE> found; // what C_FindObjects has still to hand out, from `next` on
    std::size_t next = 0;
};

class Module {
public:
    static Module &instance();

    std::mutex mutex; // guards everything below but the store, which guards itself

    bool initialized = false;
    std::map<CK_SESSION_HANDLE, Session> sessions;
    std::map<CK_SLOT_ID, CK_USER_TYPE> logins; // tokens on which someone is logged in

    // The store of the folder that the environment names; asked anew at C_GetFunctionList and C_Initialize.
    std::shared_ptr<WorldStore> store();
    void chooseWorld();

    // Handles count up for as long as the process lives, C_Finalize or not: an old handle never means a new session,
    // unless the world wants it so.
    CK_SESSION_HANDLE addSession(const Session &session);
    void closeSession(CK_SESSION_HANDLE handle);
    void closeSessions(CK_SLOT_ID slot);
    void forgetAll();
    void numberSessionsAnew() { lastHandle = 0; }
    // A session does not outlive its card.
    void dropSessionsOfRemovedCards(const World &world);

    // These are null if the card's files cannot be read. Whose the card is, its PINs and the values of its objects are
    // known while a search goes on and no longer; the rest of it is kept.
    std::shared_ptr<const Card> card(const WorldReader &reader);
    std::shared_ptr<const Card> wholeCard(const WorldReader &reader);
    void forgetWholeCards();

private:
    std::shared_ptr<WorldStore> current;
    CK_SESSION_HANDLE lastHandle = 0;
    using CardsByInsertion = std::map<int, std::shared_ptr<const Card>>;
    CardsByInsertion cards;
    CardsByInsertion wholeCards;
};

} // namespace sim
