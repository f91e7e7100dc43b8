#pragma once

#include <memory>
#include <string>

#include <openssl/evp.h>
#include <openssl/x509.h>

#include "specimens/person.h"

namespace specimen {

struct IssuerName {
    std::string commonName;
    std::string organization;
    std::string organizationalUnit; // empty for none
};

enum class CertificateUse { Authentication, Signature };

// An invented certification authority with a key of its own, which anyone can compute. Nobody trusts it.
class Authority {
public:
    explicit Authority(const IssuerName &issuerName);

    bool isUsable() const { return key != nullptr; }

    // X.509 in DER with an EC key on P-256, valid from the person's day of issue to the day of expiry. The subject is
    // C, SN, GN, CN ("given names surname"), serialNumber. Empty on failure.
    std::string issue(const Person &person, CertificateUse use, long serial) const;

private:
    struct KeyFree {
        void operator()(EVP_PKEY *freed) const { EVP_PKEY_free(freed); }
    };
    using Key = std::unique_ptr<EVP_PKEY, KeyFree>;

    static Key makeKey();

    IssuerName name;
    Key key;
};

} // namespace specimen
