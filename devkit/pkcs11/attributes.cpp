#include "pkcs11/attributes.h"

#include <cstring>

#include "pkcs11/certificate_fields.h"

namespace sim {

namespace {

enum Classes : unsigned { Data = 1, Certificate = 2, PublicKey = 4, PrivateKey = 8, Keys = 12, All = 15 };

unsigned classBit(const Object &object)
{
    return object.objectClass <= CKO_PRIVATE_KEY ? 1U << object.objectClass : 0U;
}

std::string number(CK_ULONG value)
{
    return std::string(reinterpret_cast<const char *>(&value), sizeof value);
}

std::string flag(bool value)
{
    return std::string(1, static_cast<char>(value ? CK_TRUE : CK_FALSE));
}

// The named curve P-256, which the specimen keys use.
std::string curve()
{
    return std::string("\x06\x08\x2A\x86\x48\xCE\x3D\x03\x01\x07", 10);
}

const struct {
    CK_ATTRIBUTE_TYPE type;
    unsigned classes;
    std::string (*value)(const Object &object);
} rows[] = {
    { CKA_CLASS, All, [](const Object &o) { return number(static_cast<CK_ULONG>(o.objectClass)); } },
    { CKA_TOKEN, All, [](const Object &) { return flag(true); } },
    { CKA_PRIVATE, All, [](const Object &o) { return flag(o.isPrivate); } },
    { CKA_MODIFIABLE, All, [](const Object &) { return flag(false); } },
    { CKA_LABEL, All, [](const Object &o) { return o.label; } },
    { CKA_APPLICATION, Data, [](const Object &) { return std::string("velmor"); } },
    { CKA_OBJECT_ID, Data, [](const Object &) { return std::string(); } },
    { CKA_VALUE, Data | Certificate, [](const Object &o) { return o.value; } },
    { CKA_ID, Certificate | Keys, [](const Object &o) { return o.id; } },
    { CKA_CERTIFICATE_TYPE, Certificate, [](const Object &) { return number(CKC_X_509); } },
    { CKA_SUBJECT, Certificate, [](const Object &o) { return certificateFields(o.value).subject; } },
    { CKA_ISSUER, Certificate, [](const Object &o) { return certificateFields(o.value).issuer; } },
    { CKA_SERIAL_NUMBER, Certificate, [](const Object &o) { return certificateFields(o.value).serialNumber; } },
    { CKA_KEY_TYPE, Keys, [](const Object &) { return number(CKK_EC); } },
    { CKA_EC_PARAMS, Keys, [](const Object &) { return curve(); } },
    { CKA_LOCAL, Keys, [](const Object &) { return flag(true); } },
    { CKA_SENSITIVE, PrivateKey, [](const Object &) { return flag(true); } },
    { CKA_ALWAYS_SENSITIVE, PrivateKey, [](const Object &) { return flag(true); } },
    { CKA_EXTRACTABLE, PrivateKey, [](const Object &) { return flag(false); } },
    { CKA_NEVER_EXTRACTABLE, PrivateKey, [](const Object &) { return flag(true); } },
    { CKA_ALWAYS_AUTHENTICATE, PrivateKey, [](const Object &) { return flag(false); } },
    { CKA_SIGN, PrivateKey, [](const Object &) { return flag(true); } },
    { CKA_DECRYPT, PrivateKey, [](const Object &) { return flag(false); } },
    { CKA_UNWRAP, PrivateKey, [](const Object &) { return flag(false); } },
    { CKA_DERIVE, Keys, [](const Object &) { return flag(false); } },
};

} // namespace

CK_RV attributeValue(const Object &object, CK_ATTRIBUTE_TYPE type, std::string &value)
{
    if (type == CKA_VALUE && classBit(object) == PrivateKey)
        return CKR_ATTRIBUTE_SENSITIVE;
    for (const auto &row : rows) {
        if (row.type != type || !(row.classes & classBit(object)))
            continue;
        value = row.value(object);
        return CKR_OK;
    }
    return CKR_ATTRIBUTE_TYPE_INVALID;
}

bool matchesTemplate(const Object &object, const CK_ATTRIBUTE *attributes, CK_ULONG count)
{
    for (CK_ULONG at = 0; at < count; ++at) {
        std::string value;
        const CK_ATTRIBUTE &wanted = attributes[at];
        if (attributeValue(object, wanted.type, value) != CKR_OK || value.size() != wanted.ulValueLen
            || (!value.empty() && std::memcmp(value.data(), wanted.pValue, value.size()) != 0))
            return false;
    }
    return true;
}

CK_RV fillAttribute(const Object &object, CK_ATTRIBUTE &attribute)
{
    std::string value;
    CK_RV result = attributeValue(object, attribute.type, value);
    if (result == CKR_OK && attribute.pValue && attribute.ulValueLen < value.size())
        result = CKR_BUFFER_TOO_SMALL;
    if (result != CKR_OK) {
        attribute.ulValueLen = CK_UNAVAILABLE_INFORMATION;
        return result;
    }
    if (attribute.pValue && !value.empty())
        std::memcpy(attribute.pValue, value.data(), value.size());
    attribute.ulValueLen = static_cast<CK_ULONG>(value.size());
    return CKR_OK;
}

} // namespace sim
