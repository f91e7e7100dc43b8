#include "pkcs11/module.h"

#include <algorithm>

#include "simworld/card_file.h"
#include "simworld/sim_world.h"

namespace sim {

namespace {

// Slot ids stay the same while readers come and go before them in the list.
constexpr CK_SLOT_ID slotsOfReader = 8;
constexpr int tokensOfCard = 5;

int usedSlots(const WorldReader &reader)
{
    return reader.card.empty() || !reader.supported ? 1 : tokensOfCard;
}

} // namespace

CK_SLOT_ID slotId(const WorldReader &reader, int number)
{
    return static_cast<CK_SLOT_ID>(reader.id - 1) * slotsOfReader + static_cast<CK_SLOT_ID>(number);
}

std::vector<CK_SLOT_ID> slotIds(const World &world, bool withCardOnly)
{
    std::vector<CK_SLOT_ID> ids;
    for (const WorldReader &reader : world.readers) {
        if (withCardOnly && reader.card.empty())
            continue;
        for (int number = 1; number <= usedSlots(reader); ++number)
            ids.push_back(slotId(reader, number));
    }
    return ids;
}

std::optional<SlotView> findSlot(const World &world, CK_SLOT_ID id)
{
    for (const WorldReader &reader : world.readers) {
        for (int number = 1; number <= usedSlots(reader); ++number) {
            if (slotId(reader, number) != id)
                continue;
            const bool ours = !reader.card.empty() && reader.supported;
            return SlotView { &reader, number, ours ? containers[number - 1] : nullptr };
        }
    }
    return {};
}

Module &Module::instance()
{
    static Module module;
    return module;
}

std::shared_ptr<WorldStore> Module::store()
{
    const std::lock_guard<std::mutex> guard(mutex);
    if (!current)
        current = std::make_shared<WorldStore>(SimWorld::defaultDirectory());
    return current;
}

void Module::chooseWorld()
{
    const std::lock_guard<std::mutex> guard(mutex);
    const std::string wanted = SimWorld::defaultDirectory();
    if (!initialized && (!current || current->directory() != wanted)) {
        current = std::make_shared<WorldStore>(wanted);
        cards.clear();
        wholeCards.clear();
    }
}

CK_SESSION_HANDLE Module::addSession(const Session &session)
{
    sessions[++lastHandle] = session;
    return lastHandle;
}

void Module::closeSession(CK_SESSION_HANDLE handle)
{
    const auto found = sessions.find(handle);
    if (found == sessions.end())
        return;
    const CK_SLOT_ID slot = found->second.slot;
    sessions.erase(found);
    for (const auto &other : sessions) {
        if (other.second.slot == slot)
            return;
    }
    logins.erase(slot); // with the last session of a token its login ends
}

void Module::closeSessions(CK_SLOT_ID slot)
{
    for (auto at = sessions.begin(); at != sessions.end();)
        at = at->second.slot == slot ? sessions.erase(at) : std::next(at);
    logins.erase(slot);
}

void Module::forgetAll()
{
    sessions.clear();
    logins.clear();
    cards.clear();
    wholeCards.clear();
}

void Module::dropSessionsOfRemovedCards(const World &world)
{
    std::vector<CK_SLOT_ID> gone;
    for (const auto &row : sessions) {
        const auto slot = findSlot(world, row.second.slot);
        if (!slot || !slot->hasCard() || slot->reader->insertion != row.second.insertion)
            gone.push_back(row.second.slot);
    }
    for (const CK_SLOT_ID slot : gone)
        closeSessions(slot);
}

std::shared_ptr<const Card> Module::card(const WorldReader &reader)
{
    auto &known = cards[reader.insertion];
    if (known)
        return known;
    const auto whole = wholeCard(reader);
    if (!whole)
        return nullptr;
    Card outline = *whole;
    outline.objects.clear();
    // Cleared they would keep their memory, and what is in it.
    std::string().swap(outline.holder);
    std::string().swap(outline.state.puk);
    for (auto &row : outline.state.pins)
        std::string().swap(row.second.pin);
    known = std::make_shared<const Card>(std::move(outline));
    const auto searches = [](const auto &row) { return row.second.searching; };
    if (std::none_of(sessions.begin(), sessions.end(), searches))
        forgetWholeCards();
    return known;
}

std::shared_ptr<const Card> Module::wholeCard(const WorldReader &reader)
{
    auto &known = wholeCards[reader.insertion];
    std::string ignored;
    if (!known) {
        if (auto read = readCard(reader.cardFolder, true, ignored))
            known = std::make_shared<const Card>(std::move(*read));
    }
    return known;
}

void Module::forgetWholeCards()
{
    wholeCards.clear();
}

} // namespace sim
