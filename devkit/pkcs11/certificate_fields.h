#pragma once

#include <string>

namespace sim {

// The DER bytes of a certificate's fields, as PKCS #11 hands them out. Empty where the bytes are no X.509 certificate.
struct CertificateFields {
    std::string serialNumber; // INTEGER with its tag
    std::string issuer; // Name with its tag
    std::string subject;
};

CertificateFields certificateFields(const std::string &der);

} // namespace sim
