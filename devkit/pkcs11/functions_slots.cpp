// Slots and tokens: one slot for each token of a card, one without token for an empty reader.
#include "pkcs11/call.h"
#include "pkcs11/texts.h"

using sim::Call;
using sim::SlotView;

namespace {

// Vendor bits of CK_SLOT_INFO.flags and, the first of them, of CK_TOKEN_INFO.flags.
constexpr CK_FLAGS waitsForCan = 0x80;
constexpr CK_FLAGS notReadByTheMonitor = 0x100;
constexpr CK_FLAGS hasPinpad = 0x200;
constexpr CK_FLAGS chipRecognised = 0x88000000;

const struct {
    const char *chip;
    CK_FLAGS slotFlag;
} chips[] = {
    { "VELMOR_1_0", 0x2000 },        { "VELMOR_2_0", 0x40000 },  { "VELMOR_2_1", 0x80000 },
    { "VELMOR_2_2_TEST", 0x100000 }, { "VELMOR_2_2", 0x200000 },
};

CK_FLAGS chipFlags(const std::string &chip)
{
    for (const auto &row : chips) {
        if (chip == row.chip)
            return row.slotFlag | chipRecognised;
    }
    return 0;
}

CK_FLAGS slotFlags(Call &call, const SlotView &slot)
{
    const auto card = slot.container ? call.module().card(*slot.reader) : nullptr;
    CK_FLAGS flags = CKF_REMOVABLE_DEVICE | CKF_HW_SLOT;
    flags |= slot.hasCard() ? CKF_TOKEN_PRESENT : 0;
    flags |= slot.hasCard() && slot.reader->waitCan ? waitsForCan : 0;
    flags |= slot.reader->notReadByTheMonitor ? notReadByTheMonitor : 0;
    flags |= slot.reader->pinpad ? hasPinpad : 0;
    return flags | (card ? chipFlags(card->chip) : 0);
}

// The bits by which PKCS #11 tells of tries, from the lowest bit of the group on: fewer than all, last one, locked.
CK_FLAGS triesFlags(int tries, CK_FLAGS countLow)
{
    static_assert(CKF_USER_PIN_LOCKED == CKF_USER_PIN_COUNT_LOW << 2 && CKF_SO_PIN_LOCKED == CKF_SO_PIN_COUNT_LOW << 2);
    if (tries >= sim::maxTries)
        return 0;
    return tries >= 2 ? countLow : tries == 1 ? countLow | countLow << 1 : countLow << 2;
}

CK_FLAGS tokenFlags(const SlotView &slot, const sim::CardState &state)
{
    const std::string container = slot.container;
    const sim::PinState &pin = state.pins.at(container);
    CK_FLAGS flags = CKF_TOKEN_INITIALIZED;
    flags |= slot.reader->waitCan ? waitsForCan : 0;
    if (sim::pinDigits(container) > 0) {
        flags |= CKF_LOGIN_REQUIRED | triesFlags(pin.tries, CKF_USER_PIN_COUNT_LOW);
        flags |= pin.initialized ? CKF_USER_PIN_INITIALIZED : 0;
        flags |= pin.toBeChanged ? CKF_USER_PIN_TO_BE_CHANGED : 0;
        flags |= slot.reader->pinpad ? CKF_PROTECTED_AUTHENTICATION_PATH : 0;
    }
    if (container == sim::Qualified)
        flags |= triesFlags(state.pukTries, CKF_SO_PIN_COUNT_LOW); // the one place where the card's PUK is counted
    return (flags | pin.flagsOn) & ~static_cast<CK_FLAGS>(pin.flagsOff);
}

void countSessions(Call &call, CK_SLOT_ID slot, CK_TOKEN_INFO &info)
{
    for (const auto &row : call.module().sessions) {
        if (row.second.slot != slot)
            continue;
        ++info.ulSessionCount;
        info.ulRwSessionCount += row.second.flags & CKF_RW_SESSION ? 1 : 0;
    }
}

void fillTokenInfo(const SlotView &slot, const sim::Card &card, const sim::CardState &state, CK_TOKEN_INFO &info)
{
    const std::string container = slot.container;
    const std::string &label = state.pins.at(container).label;
    sim::fillText(info.label, label.empty() ? container : label);
    sim::fillText(info.manufacturerID, sim::manufacturer);
    sim::fillText(info.model, card.chip);
    sim::fillText(info.serialNumber, card.name);
    sim::fillText(info.utcTime, "");
    info.flags = tokenFlags(slot, state);
    info.ulMaxSessionCount = CK_EFFECTIVELY_INFINITE;
    info.ulMaxRwSessionCount = CK_EFFECTIVELY_INFINITE;
    info.ulMinPinLen = info.ulMaxPinLen = static_cast<CK_ULONG>(sim::pinDigits(container));
    info.ulTotalPublicMemory = info.ulFreePublicMemory = CK_UNAVAILABLE_INFORMATION;
    info.ulTotalPrivateMemory = info.ulFreePrivateMemory = CK_UNAVAILABLE_INFORMATION;
}

CK_RV slotList(Call &call, bool withCardOnly, CK_SLOT_ID_PTR list, CK_ULONG &count)
{
    const std::vector<CK_SLOT_ID> ids = sim::slotIds(call.world(), withCardOnly);
    const CK_ULONG room = count;
    count = static_cast<CK_ULONG>(ids.size());
    if (list && room < count)
        return CKR_BUFFER_TOO_SMALL;
    if (list)
        std::copy(ids.begin(), ids.end(), list);
    if (call.nonsense().count)
        count = static_cast<CK_ULONG>(*call.nonsense().count);
    return CKR_OK;
}

// The state of the card in the world, or as it was made if nothing has happened to it yet.
sim::CardState stateOf(const sim::World &world, const sim::Card &card)
{
    const auto found = world.cards.find(card.name);
    return found == world.cards.end() ? card.state : found->second;
}

} // namespace

extern "C" CK_RV C_GetSlotList(CK_BBOOL tokenPresent, CK_SLOT_ID_PTR list, CK_ULONG_PTR count)
{
    Call call("C_GetSlotList");
    call.argument("tokenPresent", tokenPresent ? "yes" : "no");
    call.buffer(list != nullptr);
    return call.run([&]() -> CK_RV {
        if (!count)
            return CKR_ARGUMENTS_BAD;
        const CK_RV result = slotList(call, tokenPresent, list, *count);
        call.argument("count", static_cast<unsigned long>(*count));
        return result;
    });
}

extern "C" CK_RV C_GetSlotInfo(CK_SLOT_ID slotId, CK_SLOT_INFO_PTR info)
{
    Call call("C_GetSlotInfo");
    call.slot(slotId);
    return call.runOnSlot(info, [&](const SlotView &slot) -> CK_RV {
        *info = CK_SLOT_INFO();
        const std::string suffix = slot.hasCard() ? " #" + std::to_string(slot.number) : std::string();
        sim::fillText(info->slotDescription, slot.reader->name + suffix);
        sim::fillText(info->manufacturerID, sim::manufacturer);
        info->flags = slotFlags(call, slot);
        if (call.nonsense().description)
            sim::fillBytes(info->slotDescription, *call.nonsense().description);
        if (call.nonsense().flags)
            info->flags = *call.nonsense().flags;
        call.answer("name", info->slotDescription, info->flags);
        return CKR_OK;
    });
}

extern "C" CK_RV C_GetTokenInfo(CK_SLOT_ID slotId, CK_TOKEN_INFO_PTR info)
{
    Call call("C_GetTokenInfo");
    call.slot(slotId);
    return call.runOnSlot(info, [&](const SlotView &slot) -> CK_RV {
        if (!slot.hasCard())
            return CKR_TOKEN_NOT_PRESENT;
        const auto card = slot.container ? call.module().card(*slot.reader) : nullptr;
        if (!card)
            return CKR_TOKEN_NOT_RECOGNIZED;
        *info = CK_TOKEN_INFO();
        fillTokenInfo(slot, *card, stateOf(call.world(), *card), *info);
        countSessions(call, slotId, *info);
        if (call.nonsense().label)
            sim::fillBytes(info->label, *call.nonsense().label);
        if (call.nonsense().flags)
            info->flags = *call.nonsense().flags;
        call.answer("label", info->label, info->flags);
        return CKR_OK;
    });
}

// The card signs nothing here, so there is no mechanism to offer.
extern "C" CK_RV C_GetMechanismList(CK_SLOT_ID slotId, CK_MECHANISM_TYPE_PTR, CK_ULONG_PTR count)
{
    Call call("C_GetMechanismList");
    call.slot(slotId);
    return call.runOnSlot(count, [&](const SlotView &slot) -> CK_RV {
        if (!slot.hasCard())
            return CKR_TOKEN_NOT_PRESENT;
        *count = 0;
        return slot.container ? CKR_OK : CKR_TOKEN_NOT_RECOGNIZED;
    });
}

extern "C" CK_RV C_GetMechanismInfo(CK_SLOT_ID slotId, CK_MECHANISM_TYPE, CK_MECHANISM_INFO_PTR)
{
    Call call("C_GetMechanismInfo");
    call.slot(slotId);
    return call.runOnSlot(&slotId, [](const SlotView &) { return CKR_MECHANISM_INVALID; });
}
