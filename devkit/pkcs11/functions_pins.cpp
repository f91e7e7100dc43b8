// Login, logout, and the two ways to set a PIN. The counters live in the world, so that what one process locks is
// locked for all. An empty PIN on a reader with a keypad is asked for there.
#include "pkcs11/call.h"
#include "simworld/world_ops.h"

using sim::Call;
using sim::CardState;
using sim::PadAnswer;
using sim::PinState;
using sim::Session;

namespace {

struct Secrets {
    std::string current;
    std::string fresh;
};

// The token a PIN call is about.
struct Place {
    Session session;
    std::string container;
    std::string card;
    bool pinpad;
    int digits;
    std::optional<CK_USER_TYPE> login;
};

std::string textOf(CK_UTF8CHAR_PTR bytes, CK_ULONG length)
{
    return bytes ? std::string(reinterpret_cast<const char *>(bytes), length) : std::string();
}

Place placeOf(Call &call, const Session &session)
{
    const auto slot = sim::findSlot(call.world(), session.slot);
    Place place { session, slot->container, slot->reader->card, slot->reader->pinpad, sim::pinDigits(slot->container),
                  {} };
    const auto login = call.module().logins.find(session.slot);
    if (login != call.module().logins.end())
        place.login = login->second;
    return place;
}

// The card's state as a change sees it. Null only if the card's files have gone.
CardState *stateIn(Call &call, sim::World &world, const std::string &card)
{
    std::string ignored;
    return sim::WorldOps(world, call.store().directory(), ignored).cardState(card);
}

using Work = std::function<CK_RV(CardState &state, PinState &pin)>;

// Runs `work` on the card's state under the world's lock. What it has counted is kept whatever it answers.
CK_RV onCard(Call &call, const Place &place, const Work &work)
{
    CK_RV result = CKR_DEVICE_ERROR;
    std::string ignored;
    const bool stored = call.store().update(
        [&](sim::World &world, std::string &) {
            CardState *state = stateIn(call, world, place.card);
            if (state)
                result = work(*state, state->pins[place.container]);
            return state != nullptr;
        },
        ignored);
    return stored ? result : CKR_DEVICE_ERROR;
}

// The same on a copy, to see what stands in the way before anyone is asked at the keypad.
CK_RV lookAtCard(Call &call, const Place &place, const Work &work)
{
    sim::World copy = call.world();
    CardState *state = stateIn(call, copy, place.card);
    return state ? work(*state, state->pins[place.container]) : CKR_DEVICE_ERROR;
}

CK_RV verify(const std::string &expected, int &tries, const std::string &given)
{
    if (tries <= 0)
        return CKR_PIN_LOCKED;
    if (given.empty())
        return CKR_PIN_INCORRECT; // nothing that could be sent to a card, so nothing is counted
    tries = given == expected ? sim::maxTries : tries - 1;
    return given == expected ? CKR_OK : CKR_PIN_INCORRECT;
}

CK_RV checkNewPin(const std::string &pin, int digits)
{
    if (pin.size() != static_cast<std::size_t>(digits))
        return CKR_PIN_LEN_RANGE;
    return pin.find_first_not_of("0123456789") == std::string::npos ? CKR_OK : CKR_PIN_INVALID;
}

// A user who breaks off while the first PIN is being set leaves an activated container whose PIN must be unblocked.
void activateAndLock(Call &call, const Place &place)
{
    onCard(call, place, [](CardState &, PinState &pin) {
        if (!pin.initialized || pin.toBeChanged) {
            pin.initialized = true;
            pin.toBeChanged = false;
            pin.tries = 0;
        }
        return CKR_OK;
    });
}

// Asks at the keypad for what is empty, if the reader has one.
CK_RV complete(Call &call, const Place &place, bool wantsNew, Secrets &secrets)
{
    if (!place.pinpad || !(secrets.current.empty() || (wantsNew && secrets.fresh.empty())))
        return CKR_OK;
    PadAnswer answer;
    const CK_RV result = call.waitForPad(answer);
    if (result != CKR_OK)
        return result;
    switch (answer.kind) {
    case PadAnswer::Kind::Cancel:
        return CKR_FUNCTION_CANCELED;
    case PadAnswer::Kind::Mismatch:
        return CKR_ARGUMENTS_BAD;
    case PadAnswer::Kind::Reject:
        if (wantsNew)
            activateAndLock(call, place);
        return CKR_FUNCTION_REJECTED;
    case PadAnswer::Kind::Result:
        return static_cast<CK_RV>(answer.result);
    case PadAnswer::Kind::Enter:
        break;
    }
    if (wantsNew && !answer.repeat.empty() && answer.repeat != answer.newSecret)
        return CKR_ARGUMENTS_BAD;
    if (secrets.current.empty())
        secrets.current = answer.secret;
    if (secrets.fresh.empty())
        secrets.fresh = answer.newSecret;
    return CKR_OK;
}

CK_RV mayLogin(Call &call, const Place &place, CK_USER_TYPE user)
{
    if (user == CKU_CONTEXT_SPECIFIC)
        return CKR_OPERATION_NOT_INITIALIZED;
    if (user != CKU_USER && user != CKU_SO)
        return CKR_USER_TYPE_INVALID;
    if (place.login)
        return *place.login == user ? CKR_USER_ALREADY_LOGGED_IN : CKR_USER_ANOTHER_ALREADY_LOGGED_IN;
    if (place.digits == 0)
        return user == CKU_USER ? CKR_USER_PIN_NOT_INITIALIZED : CKR_USER_TYPE_INVALID;
    if (user == CKU_USER)
        return CKR_OK;
    for (const auto &row : call.module().sessions) {
        if (row.second.slot == place.session.slot && !(row.second.flags & CKF_RW_SESSION))
            return CKR_SESSION_READ_ONLY_EXISTS;
    }
    return CKR_OK;
}

CK_RV pinStandsInTheWay(CK_USER_TYPE user, const CardState &state, const PinState &pin)
{
    if (user == CKU_SO)
        return state.pukTries > 0 ? CKR_OK : CKR_PIN_LOCKED;
    if (!pin.initialized)
        return CKR_USER_PIN_NOT_INITIALIZED;
    if (pin.toBeChanged)
        return CKR_PIN_EXPIRED;
    return pin.tries > 0 ? CKR_OK : CKR_PIN_LOCKED;
}

CK_RV login(Call &call, const Place &place, CK_USER_TYPE user, Secrets secrets)
{
    CK_RV result = mayLogin(call, place, user);
    if (result == CKR_OK)
        result = lookAtCard(call, place, [&](auto &state, auto &pin) { return pinStandsInTheWay(user, state, pin); });
    if (result == CKR_OK)
        result = complete(call, place, false, secrets);
    if (result == CKR_OK) {
        result = onCard(call, place, [&](CardState &state, PinState &pin) {
            return user == CKU_SO ? verify(state.puk, state.pukTries, secrets.current)
                                  : verify(pin.pin, pin.tries, secrets.current);
        });
    }
    if (result == CKR_OK)
        call.module().logins[place.session.slot] = user;
    return result;
}

void giveNewPin(PinState &pin, const std::string &digits)
{
    pin.pin = digits;
    pin.tries = sim::maxTries;
    pin.initialized = true;
    pin.toBeChanged = false;
}

// Whose secret C_SetPIN changes: the PUK for the security officer, else the PIN. In a first use the PUK stands for the
// PIN that is not there yet.
CK_RV changeSecret(CardState &state, PinState &pin, const Place &place, const Secrets &secrets)
{
    const bool isPuk = place.login == CKU_SO;
    if (!isPuk && !pin.initialized)
        return CKR_USER_PIN_NOT_INITIALIZED;
    CK_RV result = checkNewPin(secrets.fresh, isPuk ? sim::pukDigits : place.digits);
    if (result != CKR_OK)
        return result;
    result = isPuk || pin.toBeChanged ? verify(state.puk, state.pukTries, secrets.current)
                                      : verify(pin.pin, pin.tries, secrets.current);
    if (result == CKR_OK && isPuk)
        state.puk = secrets.fresh;
    else if (result == CKR_OK)
        giveNewPin(pin, secrets.fresh);
    return result;
}

CK_RV setPin(Call &call, const Place &place, Secrets secrets)
{
    if (!(place.session.flags & CKF_RW_SESSION))
        return CKR_SESSION_READ_ONLY;
    if (place.digits == 0)
        return CKR_USER_PIN_NOT_INITIALIZED;
    CK_RV result = lookAtCard(call, place, [&](const CardState &state, const PinState &pin) {
        const bool usesPuk = place.login == CKU_SO || pin.toBeChanged;
        return (usesPuk ? state.pukTries : pin.tries) > 0 ? CKR_OK : CKR_PIN_LOCKED;
    });
    if (result == CKR_OK)
        result = complete(call, place, true, secrets);
    if (result != CKR_OK)
        return result;
    return onCard(call, place,
                  [&](CardState &state, PinState &pin) { return changeSecret(state, pin, place, secrets); });
}

CK_RV initPin(Call &call, const Place &place, Secrets secrets)
{
    if (place.login != CKU_SO)
        return CKR_USER_NOT_LOGGED_IN;
    secrets.current = "known"; // the login has brought the PUK; only the new PIN may be missing
    CK_RV result = complete(call, place, true, secrets);
    if (result == CKR_OK)
        result = checkNewPin(secrets.fresh, place.digits);
    if (result != CKR_OK)
        return result;
    return onCard(call, place, [&](CardState &, PinState &pin) {
        giveNewPin(pin, secrets.fresh);
        return CKR_OK;
    });
}

struct Given {
    CK_UTF8CHAR_PTR bytes;
    CK_ULONG length;
};

// Runs `work` on the token of the call's session. A null pointer may only come with the length 0, and then only where a
// keypad asks.
template <class Work>
CK_RV withPlace(Call &call, std::initializer_list<Given> secrets, Work work)
{
    return call.runOnSession([&](const Session &session) {
        const Place place = placeOf(call, session);
        for (const Given &secret : secrets) {
            if (!secret.bytes && (secret.length > 0 || !place.pinpad))
                return CK_RV(CKR_ARGUMENTS_BAD);
        }
        return work(place);
    });
}

} // namespace

extern "C" CK_RV C_Login(CK_SESSION_HANDLE handle, CK_USER_TYPE user, CK_UTF8CHAR_PTR pin, CK_ULONG length)
{
    Call call("C_Login");
    call.session(handle);
    call.argument("user", user == CKU_SO ? "SO" : user == CKU_USER ? "USER" : std::to_string(user));
    call.secret("pin", pin, length);
    return withPlace(call, { { pin, length } }, [&](const Place &place) {
        return login(call, place, user, { textOf(pin, length), {} });
    });
}

extern "C" CK_RV C_Logout(CK_SESSION_HANDLE handle)
{
    Call call("C_Logout");
    call.session(handle);
    return call.runOnSession([&](const Session &session) {
        return call.module().logins.erase(session.slot) > 0 ? CKR_OK : CKR_USER_NOT_LOGGED_IN;
    });
}

extern "C" CK_RV C_SetPIN(CK_SESSION_HANDLE handle, CK_UTF8CHAR_PTR oldPin, CK_ULONG oldLength, CK_UTF8CHAR_PTR newPin,
                          CK_ULONG newLength)
{
    Call call("C_SetPIN");
    call.session(handle);
    call.secret("oldPin", oldPin, oldLength);
    call.secret("newPin", newPin, newLength);
    return withPlace(call, { { oldPin, oldLength }, { newPin, newLength } }, [&](const Place &place) {
        return setPin(call, place, { textOf(oldPin, oldLength), textOf(newPin, newLength) });
    });
}

extern "C" CK_RV C_InitPIN(CK_SESSION_HANDLE handle, CK_UTF8CHAR_PTR pin, CK_ULONG length)
{
    Call call("C_InitPIN");
    call.session(handle);
    call.secret("newPin", pin, length);
    return withPlace(call, { { pin, length } }, [&](const Place &place) {
        return initPin(call, place, { {}, textOf(pin, length) });
    });
}
