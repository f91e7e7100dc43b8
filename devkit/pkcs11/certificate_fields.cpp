#include "pkcs11/certificate_fields.h"

#include <optional>
#include <string_view>

namespace sim {

namespace {

struct Element {
    unsigned char tag = 0;
    std::string_view whole; // with tag and length
    std::string_view content;
};

// Takes the first DER element off the front of `bytes`.
std::optional<Element> takeElement(std::string_view &bytes)
{
    if (bytes.size() < 2)
        return {};
    std::size_t length = static_cast<unsigned char>(bytes[1]);
    std::size_t head = 2;
    if (length & 0x80) {
        const std::size_t count = length & 0x7F;
        if (count == 0 || count > 4 || bytes.size() < 2 + count)
            return {};
        length = 0;
        for (std::size_t at = 0; at < count; ++at)
            length = length << 8 | static_cast<unsigned char>(bytes[2 + at]);
        head += count;
    }
    if (bytes.size() - head < length)
        return {};
    const Element element { static_cast<unsigned char>(bytes[0]), bytes.substr(0, head + length),
                            bytes.substr(head, length) };
    bytes.remove_prefix(head + length);
    return element;
}

constexpr unsigned char versionTag = 0xA0;

} // namespace

CertificateFields certificateFields(const std::string &der)
{
    std::string_view rest = der;
    const auto certificate = takeElement(rest);
    if (!certificate)
        return {};
    rest = certificate->content;
    const auto toBeSigned = takeElement(rest);
    if (!toBeSigned)
        return {};
    rest = toBeSigned->content;
    auto serial = takeElement(rest);
    if (serial && serial->tag == versionTag)
        serial = takeElement(rest);
    const auto algorithm = takeElement(rest);
    const auto issuer = takeElement(rest);
    const auto validity = takeElement(rest);
    const auto subject = takeElement(rest);
    if (!serial || !algorithm || !issuer || !validity || !subject)
        return {};
    return { std::string(serial->whole), std::string(issuer->whole), std::string(subject->whole) };
}

} // namespace sim
