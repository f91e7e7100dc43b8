#pragma once

#include <QByteArray>
#include <QMap>

// Keys of conversations between the programs of the family, the agreement that makes them, and the transform of values
// that uses them. One object a process; keys live in memory only. A failure is a log line and an empty array.
//
// The group is the 1024-bit one with a 160-bit subgroup of RFC 5114, section 2.1. The agreement multiplies where others
// of its kind raise to a power: the public value is g * r mod p, the shared one A * r mod p. The transform is a
// repeated XOR, without nonce, padding or integrity. Neither keeps a secret from a determined listener; both are what
// the siblings speak and must stay as they are.
class Crypto {
public:
    // The answering side. A: the peer's public value, big-endian, of any length and not checked. B: our public value,
    // big-endian without leading zeros, up to 128 bytes. The answer is the SHA-256 of the shared value, likewise
    // without leading zeros: 32 bytes.
    QByteArray generateKey(const QByteArray &A, QByteArray &B) const;

    // A later key under the same id replaces the former. Of more than 64 the oldest go.
    void storeKey(const QByteArray &id, const QByteArray &key);
    QByteArray getKey(const QByteArray &id) const;

    // Also decrypts. Empty for an unknown id.
    QByteArray encrypt(const QByteArray &value, const QByteArray &id) const;

    // Each byte XORed with the key's byte at the same place, the key repeated. As long as the value; its own inverse.
    static QByteArray encryptValue(const QByteArray &value, const QByteArray &key);

    // 6 bytes out of the SHA-256 of the seed.
    static QByteArray deriveKey(const QByteArray &seed);

    // 64 lower-case hexadecimal digits from the system's random source; the value of the setting GUID.
    static QByteArray generateSeed();

private:
    QMap<QByteArray, QByteArray> keys;
    QByteArrayList ids; // oldest first
};
