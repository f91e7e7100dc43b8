#pragma once

#include <QMap>
#include <QString>

// Slots and tokens as Pkcs11 keeps them, and what their flag words mean. Inside the card layer only: neither these
// records nor the numbers in them leave Pkcs11. All flag words are unsigned 32 bits, or 0x88000000 would be widened to
// a word that matches nothing.

// Vendor bits of CK_SLOT_INFO.flags; the bits of the standard are those of PKCS #11.
constexpr quint32 slotWaitCan = 0x80;
constexpr quint32 slotNotReadByTheMonitor = 0x100;
constexpr quint32 slotPinPad = 0x200;
// Both are set on a slot whose chip was recognised; which chip it is says one bit more (CardChip::slotFlag).
constexpr quint32 slotMarkerBits = 0x88000000;
// Vendor bit of CK_TOKEN_INFO.flags: the token can be seen but not yet used.
constexpr quint32 tokenWaitCan = 0x80;

constexpr quint32 noSlotId = 0xFFFFFFFF;
constexpr qint32 noSession = -1;
// A label for Pkcs11::findTokens that lets every token of the reader through.
constexpr const char *anyLabel = "_noset";

struct Slot {
    QString name; // slot description; empty if it could not be read
    quint32 id = 0;
    quint32 flags = 0;
};

struct Token {
    QString name; // of the reader: the slot's name before " #"
    QString label; // empty if there is no token or an unknown one in the slot
    quint32 slotId = 0;
    qint32 session = noSession; // open if at least 1, but perhaps dead since a C_Finalize
    quint32 slotFlags = 0;
    quint32 tokenFlags = 0; // as last read

    bool hasSession() const { return session >= 1; }
};

// Without the white space at the end; at the front it stays.
QString cutTrailingSpace(const QString &text);

// Whether the token is asked for. An empty label asks for an empty one, any other for a part of it; slotId and session
// -1 and slotFlags 0 ask for nothing.
bool matches(const Token &token, const QString &name, const QString &label, qint32 slotId, qint32 session,
             quint32 slotFlags);

// Words for logs. The key 0 of the first map never matches a flag word; it is kept all the same.
const QMap<quint32, QString> &slotStatusNames();
const QMap<quint32, QString> &tokenStatusNames();
QString statusWords(const QMap<quint32, QString> &names, quint32 flags);

// "Slot 0x12: NAME words". The number is decimal in spite of its "0x".
QString describeSlot(const Slot &slot, bool withName, bool withFlags);
QString describeToken(const Token &token, bool withName, bool withFlags);

// What the flags of CK_TOKEN_INFO say of a container's PIN and of the PUK. Tries: 1 to 3 are left, 0 locked, 4 not set
// or to be changed.
struct PinState {
    int triesSO;
    int tries;
    QString status; // text of the container's PIN button
};

PinState pinState(quint32 tokenFlags);
