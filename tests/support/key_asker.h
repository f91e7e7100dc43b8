#pragma once

#define OPENSSL_SUPPRESS_DEPRECATED
#include <openssl/dh.h>

#include <QByteArray>
#include <QCryptographicHash>

#include <memory>

// The asking half of the family's key agreement, on the group that OpenSSL itself brings: A = g * a mod p, and from the
// other's B the key SHA-256(B * a mod p).
class KeyAsker {
public:
    // Big-endian.
    explicit KeyAsker(const QByteArray &ownSecret) : secret(ownSecret) { }

    QByteArray publicValue() const { return product(generator()); }
    QByteArray key(const QByteArray &B) const
    {
        return QCryptographicHash::hash(product(B), QCryptographicHash::Sha256);
    }

private:
    using Number = std::unique_ptr<BIGNUM, decltype(&BN_free)>;

    static const DH *group()
    {
        static const std::unique_ptr<DH, decltype(&DH_free)> made(DH_get_1024_160(), DH_free);
        return made.get();
    }
    static Number number(const QByteArray &bytes)
    {
        return Number(BN_bin2bn(reinterpret_cast<const unsigned char *>(bytes.constData()), bytes.size(), nullptr),
                      BN_free);
    }
    static QByteArray bytes(const BIGNUM *value)
    {
        QByteArray result(BN_num_bytes(value), '\0');
        BN_bn2bin(value, reinterpret_cast<unsigned char *>(result.data()));
        return result;
    }
    static QByteArray generator() { return bytes(DH_get0_g(group())); }

    QByteArray product(const QByteArray &factor) const
    {
        const std::unique_ptr<BN_CTX, decltype(&BN_CTX_free)> context(BN_CTX_new(), BN_CTX_free);
        const Number result(BN_new(), BN_free);
        BN_mod_mul(result.get(), number(factor).get(), number(secret).get(), DH_get0_p(group()), context.get());
        return bytes(result.get());
    }

    QByteArray secret;
};
