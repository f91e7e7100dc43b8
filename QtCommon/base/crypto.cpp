#include "base/crypto.h"

#include <QCryptographicHash>
#include <QDebug>

#include <openssl/bn.h>
#include <openssl/crypto.h>
#include <openssl/sha.h>

#include <memory>
#include <random>

namespace {

// Upper case and a gap in the middle, as all programs of the family hold them; the decoder skips the gap.
constexpr char primeP[] = "B10B8F96A080E01DDE92DE5EAE5D54EC52C99FBCFB06A3C69A6A9DCA52D23B61"
                          "6073E28675A23D189838EF1E2EE652C013ECB4AEA906112324975C3CD49B83BF      "
                          "ACCBDD7D90C4BD7098488E9C219A73724EFFD6FAE5644738FAA31A4FF55BCCC0"
                          "A151AF5F0DC8B4BD45BF37DF365C1A65E68CFDA76D4DA708DF1FB2BC2E4A4371";
constexpr char generatorG[] = "A4D1CBD5C3FD34126765A442EFB99905F8104DD258AC507FD6406CFF14266D31"
                              "266FEA1E5C41564B777E690F5504F213160217B4B01B886A5E91547F9E2749F4      "
                              "D7FBD7D3B9A92EE1909D0D2263F80A76A6A24C087A091F531DBF0A0169B6A28A"
                              "D662A4D18E73AFA32D779D5918D08BC8858F4DCEF97C2A24855E6EEB22B3B2E5";
constexpr char orderQ[] = "F518AA8781A8DF278ABA4E7D64B7CB9D49462353";

struct ClearNumber {
    void operator()(BIGNUM *number) const { BN_clear_free(number); }
};
using Number = std::unique_ptr<BIGNUM, ClearNumber>;

Number numberOf(const QByteArray &bigEndian)
{
    return Number(BN_bin2bn(reinterpret_cast<const unsigned char *>(bigEndian.constData()), bigEndian.size(), nullptr));
}

// Without leading zeros; nothing at all for zero.
QByteArray bytesOf(const BIGNUM *number)
{
    QByteArray bytes((BN_num_bits(number) + 7) / 8, '\0');
    BN_bn2bin(number, reinterpret_cast<unsigned char *>(bytes.data()));
    return bytes;
}

QByteArray failed(const char *reason)
{
    qDebug().noquote() << QString("Crypto: key generation failed | ") + reason;
    return {};
}

// Of conversations that nobody has ended; whoever sends can begin one.
constexpr int maxKeys = 64;

} // namespace

QByteArray Crypto::generateKey(const QByteArray &A, QByteArray &B) const
{
    B.clear();
    if (A.isEmpty())
        return failed("wrong A parameter");

    Number p, g, q, peer;
    const struct {
        Number &number;
        QByteArray bytes;
        const char *reason;
    } parameters[] = {
        { p, QByteArray::fromHex(primeP), "wrong bnp parameter" },
        { g, QByteArray::fromHex(generatorG), "wrong bng parameter" },
        { q, QByteArray::fromHex(orderQ), "wrong bnq parameter" },
        { peer, A, "wrong bnA parameter" },
    };
    for (const auto &parameter : parameters) {
        parameter.number = numberOf(parameter.bytes);
        if (!parameter.number)
            return failed(parameter.reason);
    }
    const Number r(BN_new());
    if (!r || BN_rand_range(r.get(), q.get()) != 1)
        return failed("BN_rand_range failed");
    const std::unique_ptr<BN_CTX, decltype(&BN_CTX_free)> ctx(BN_CTX_new(), BN_CTX_free);
    if (!ctx)
        return failed("wrong ctx parameter");

    // Multiplied, not raised to a power: the siblings reach g * a * b mod p.
    const Number own(BN_new());
    if (!own)
        return failed("wrong bnB parameter");
    BN_mod_mul(own.get(), g.get(), r.get(), p.get(), ctx.get());
    const Number shared(BN_new());
    if (!shared)
        return failed("wrong bnS parameter");
    BN_mod_mul(shared.get(), peer.get(), r.get(), p.get(), ctx.get());

    QByteArray secret = bytesOf(shared.get());
    QByteArray key(SHA256_DIGEST_LENGTH, '\0');
    SHA256(reinterpret_cast<const unsigned char *>(secret.constData()), static_cast<std::size_t>(secret.size()),
           reinterpret_cast<unsigned char *>(key.data()));
    OPENSSL_cleanse(secret.data(), static_cast<std::size_t>(secret.size()));
    B = bytesOf(own.get());
    return key;
}

void Crypto::storeKey(const QByteArray &id, const QByteArray &key)
{
    if (!keys.contains(id))
        ids << id;
    keys.insert(id, key);
    if (ids.size() > maxKeys)
        keys.remove(ids.takeFirst());
}

QByteArray Crypto::getKey(const QByteArray &id) const
{
    const auto found = keys.constFind(id);
    if (found != keys.constEnd())
        return *found;
    qDebug().noquote() << "The key was not found";
    return {};
}

QByteArray Crypto::encrypt(const QByteArray &value, const QByteArray &id) const
{
    return encryptValue(value, getKey(id));
}

QByteArray Crypto::encryptValue(const QByteArray &value, const QByteArray &key)
{
    if (value.isEmpty()) {
        qDebug().noquote() << "provided empty input array";
        return {};
    }
    if (key.isEmpty()) {
        qDebug().noquote() << "The key array is empty";
        return {};
    }
    QByteArray result = value;
    for (int i = 0; i < result.size(); ++i)
        result[i] = static_cast<char>(result.at(i) ^ key.at(i % key.size()));
    return result;
}

QByteArray Crypto::deriveKey(const QByteArray &seed)
{
    constexpr quint32 startPlaces = 26;
    constexpr int keySize = 6;
    const QByteArray hash = QCryptographicHash::hash(seed, QCryptographicHash::Sha256);
    // Extended with its sign and then read as unsigned, as the siblings do it. A remainder of the signed number would
    // be another; that of the bare byte happens to be the same.
    const auto first = static_cast<quint32>(static_cast<qint32>(static_cast<qint8>(hash.at(0))));
    return hash.mid(static_cast<int>(first % startPlaces), keySize);
}

QByteArray Crypto::generateSeed()
{
    constexpr int seedBytes = 32;
    std::random_device device;
    QByteArray seed;
    for (int i = 0; i < seedBytes; ++i) {
        std::mt19937 generator(device());
        std::uniform_int_distribution<int> byte(0, 255);
        seed += QByteArray::number(byte(generator), 16).rightJustified(2, '0');
    }
    return seed;
}
