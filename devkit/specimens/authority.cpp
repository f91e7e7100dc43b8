#include "specimens/authority.h"

#include <openssl/ec.h>
#include <openssl/x509v3.h>

namespace specimen {

namespace {

struct CertificateFree {
    void operator()(X509 *freed) const { X509_free(freed); }
};
struct NameFree {
    void operator()(X509_NAME *freed) const { X509_NAME_free(freed); }
};
using Name = std::unique_ptr<X509_NAME, NameFree>;

bool addEntry(X509_NAME *name, const char *field, const std::string &value)
{
    // An empty value leaves the entry out. With a type of its own, the entry may be longer than the standard allows.
    return value.empty()
        || X509_NAME_add_entry_by_txt(name, field, V_ASN1_UTF8STRING,
                                      reinterpret_cast<const unsigned char *>(value.c_str()), -1, -1, 0);
}

Name issuerName(const IssuerName &issuer)
{
    Name name(X509_NAME_new());
    const bool ok = addEntry(name.get(), "C", "PL") && addEntry(name.get(), "O", issuer.organization)
        && addEntry(name.get(), "OU", issuer.organizationalUnit) && addEntry(name.get(), "CN", issuer.commonName);
    return ok ? std::move(name) : nullptr;
}

Name subjectName(const Person &person)
{
    Name name(X509_NAME_new());
    const bool ok = addEntry(name.get(), "C", "PL") && addEntry(name.get(), "SN", person.surname)
        && addEntry(name.get(), "GN", person.givenNames()) && addEntry(name.get(), "CN", person.fullName())
        && addEntry(name.get(), "serialNumber", "PNOPL-" + pesel(person));
    return ok ? std::move(name) : nullptr;
}

bool addExtension(X509 *certificate, int kind, const char *value)
{
    X509V3_CTX context;
    X509V3_set_ctx(&context, nullptr, certificate, nullptr, nullptr, 0);
    X509_EXTENSION *extension = X509V3_EXT_conf_nid(nullptr, &context, kind, value);
    const bool ok = extension && X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
    return ok;
}

bool setValidity(X509 *certificate, const Person &person)
{
    const std::string from = person.issueDate + "000000Z";
    const std::string to = person.expiryDate + "235959Z";
    return ASN1_TIME_set_string_X509(X509_getm_notBefore(certificate), from.c_str())
        && ASN1_TIME_set_string_X509(X509_getm_notAfter(certificate), to.c_str());
}

bool addUse(X509 *certificate, CertificateUse use)
{
    const bool signs = use == CertificateUse::Signature;
    return addExtension(certificate, NID_basic_constraints, "critical,CA:FALSE")
        && addExtension(certificate, NID_key_usage, signs ? "critical,nonRepudiation" : "critical,digitalSignature")
        && addExtension(certificate, NID_subject_key_identifier, "hash")
        && (signs || addExtension(certificate, NID_ext_key_usage, "clientAuth"));
}

std::string toDer(X509 *certificate)
{
    unsigned char *bytes = nullptr;
    const int size = i2d_X509(certificate, &bytes);
    std::string der(reinterpret_cast<const char *>(bytes), size > 0 ? static_cast<std::size_t>(size) : 0);
    OPENSSL_free(bytes);
    return der;
}

} // namespace

Authority::Key Authority::makeKey()
{
    return Key(EVP_EC_gen("P-256"));
}

Authority::Authority(const IssuerName &issuer) : name(issuer), key(makeKey()) { }

std::string Authority::issue(const Person &person, CertificateUse use, long serial) const
{
    const std::unique_ptr<X509, CertificateFree> certificate(X509_new());
    const Key holderKey = makeKey();
    const Name issuer = issuerName(name);
    const Name subject = subjectName(person);
    if (!certificate || !holderKey || !issuer || !subject)
        return {};
    constexpr long version3 = 2;
    const bool ok = X509_set_version(certificate.get(), version3)
        && ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), serial)
        && X509_set_issuer_name(certificate.get(), issuer.get())
        && X509_set_subject_name(certificate.get(), subject.get())
        && X509_set_pubkey(certificate.get(), holderKey.get()) && setValidity(certificate.get(), person)
        && addUse(certificate.get(), use) && X509_sign(certificate.get(), key.get(), EVP_sha256());
    return ok ? toDer(certificate.get()) : std::string();
}

} // namespace specimen
