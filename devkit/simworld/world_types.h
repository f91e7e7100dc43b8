#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

// What a simulated world consists of. Texts and paths are UTF-8.
namespace sim {

// The five tokens of a card, in the order of their slots. A card's slot description is "READER #1" to "READER #5".
inline constexpr const char *Authentication = "Authentication"; // PIN of 4 digits
inline constexpr const char *Presence = "Presence"; // no PIN
inline constexpr const char *Authorization = "Authorization"; // PIN of 6 digits
inline constexpr const char *Qualified = "Qualified"; // PIN of 8 digits; its token shows the card's PUK counter
inline constexpr const char *Emrtd = "eMRTD"; // no PIN; holds the data groups

struct Reader {
    std::string name;
    std::string card; // name of the card in it, empty if there is none
    bool pinpad = false;
    bool waitCan = false; // the card can be seen but not read before its CAN
    bool notReadByTheMonitor = false;
    bool supported = true; // false: there is a card, but not one of ours (C_GetTokenInfo answers 0xE1)
    int id = 0; // slot ids of this reader are (id - 1) * 8 + 1 to + 5
    int insertion = 0; // a new number at every insertion; a session does not outlive it
};

struct PinState {
    std::string pin; // digits; also kept while locked
    int tries = 3; // 3, 2, 1, or 0 for locked
    bool initialized = true; // false: to be set by the security officer (login with the PUK, then C_InitPIN)
    bool toBeChanged = false; // true: first use (C_SetPIN with the PUK as the old PIN, no login)
    std::uint32_t flagsOn = 0; // CK_TOKEN_INFO.flags bits that are shown whatever the state says ...
    std::uint32_t flagsOff = 0; // ... and those that are never shown
    std::string label; // token label instead of the container's word, empty for none
};

struct CardState {
    std::string puk;
    int pukTries = 3;
    std::map<std::string, PinState> pins; // by container, all five; eMRTD and Presence have no PIN but label and flags
};

// In which way a PIN is not set yet: initialised and to be changed, or not initialised.
enum class Unset { FirstUse, NotInitialized };

// One object of a token. `file` names a file beside the card's manifest; a card made by a test may give `value`
// instead.
struct Object {
    unsigned long objectClass = 0; // CKO_DATA 0, CKO_CERTIFICATE 1, CKO_PUBLIC_KEY 2, CKO_PRIVATE_KEY 3
    std::string label;
    std::string id; // raw bytes
    std::string file;
    std::string value; // raw bytes: DER, data group
    bool isPrivate = false; // found only after login
};

// What a card is when it leaves the factory. What happens to it later is its CardState.
struct Card {
    std::string name;
    std::string holder; // for lists shown to a person
    std::string chip; // "VELMOR_1_0", "VELMOR_2_0", "VELMOR_2_1", "VELMOR_2_2_TEST", "VELMOR_2_2"; "" if unrecognised
    bool supported = true;
    CardState state;
    std::map<std::string, std::vector<Object>> objects; // by container, in the order in which a search finds them
};

// Which call of a function goes wrong, and how. All conditions must hold for a call to count. A fault with `nth` above
// 0 is gone once it has happened.
struct Fault {
    enum class Buffer { Any, Null, Given }; // calls that ask for a size or count, calls that bring a buffer

    std::string function; // "C_Login"; "*" for every function
    int nth = 1; // the n-th counting call from now on; 0: every one
    std::string reader; // only calls on this reader; empty: any
    std::string container; // only calls on this token; empty: any
    std::optional<unsigned long> attribute; // only C_GetAttributeValue whose first attribute is this type
    Buffer buffer = Buffer::Any; // C_GetSlotList and C_GetAttributeValue

    // What happens, in this order.
    int delayMs = 0; // the call takes so much longer
    bool block = false; // the call waits for release()
    bool die = false; // the process ends here and at once, as after a crash
    std::string removeReader; // this reader goes; the call then fails as it would at a real reader
    std::string removeCard; // the card in this reader goes
    std::optional<unsigned long> result; // this CKR value is returned instead of doing the work ...
    bool afterWork = false; // ... or after having done it
    // Nonsense in an otherwise good answer. Texts are raw bytes, filled with blanks to the size of the field.
    std::optional<std::string> description; // C_GetSlotInfo, 64 bytes
    std::optional<std::string> label; // C_GetTokenInfo, 32 bytes
    std::optional<std::uint32_t> flags; // C_GetSlotInfo, C_GetTokenInfo
    std::optional<long long>
        count; // C_GetSlotList, C_FindObjects: the number reported; never more ids than fit are written
    std::optional<long long> length; // C_GetAttributeValue: ulValueLen reported, -1 for (CK_ULONG)-1
};

// What the user does at the keypad of a pinpad reader. Each library call that finds an empty PIN takes the first answer
// of the queue, and waits for one (in a cancellation point) while there is none.
struct PadAnswer {
    enum class Kind {
        Enter, // keys in `secret`, `newSecret`, `repeat`, whichever the call needs
        Cancel, // the red key: CKR_FUNCTION_CANCELED 0x50
        Mismatch, // the two new PINs differ: CKR_ARGUMENTS_BAD 7
        Reject, // CKR_FUNCTION_REJECTED 0x200; a PIN not yet set is activated and locked by it
        Result // `result`
    };
    Kind kind = Kind::Enter;
    std::string secret; // current PIN, or the PUK
    std::string newSecret;
    std::string repeat; // empty: the same as newSecret
    unsigned long result = 0;
};

// One call of the library. A PIN or PUK never gets here: of those a call says "set", "empty" or "null".
struct TraceEntry {
    int process = 0;
    long long ms = 0; // since the epoch, at the end of the call
    std::string function;
    // By name: reader, container, slot, session, object, user (USER, SO), pin, newPin (set, empty, null), attribute
    // (CLASS, LABEL, VALUE, ... or 0x...), buffer (null, given), max, count, flags, template. Only what the function
    // has.
    std::map<std::string, std::string> arguments;
    bool waiting = false; // true: not a result but the note that the call has begun to wait (block, pad)
    unsigned long result = 0;
    // "C_Login container=Qualified user=SO pin=set -> 0xa0": without process, time, reader, slot, session and object,
    // so that a sequence of calls can be compared as it stands.
    std::string text;
};

// The readers as they stood after one change of readers or cards, for whoever watches them. Numbers count up from 1.
struct ReaderEvent {
    long number = 0;
    std::string what; // "added", "removed", "inserted", "ejected", "changed", "reset"
    std::string reader;
    std::vector<Reader> readers;
};

} // namespace sim
