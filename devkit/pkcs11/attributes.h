#pragma once

#include <string>

#include "pkcs11/cryptoki.h"
#include "simworld/world_types.h"

namespace sim {

// The value of one attribute as PKCS #11 lays it out (CK_ULONG and CK_BBOOL in the machine's own form, texts and DER as
// bytes). CKR_ATTRIBUTE_TYPE_INVALID if an object of this class has none, CKR_ATTRIBUTE_SENSITIVE for the value of a
// key.
CK_RV attributeValue(const Object &object, CK_ATTRIBUTE_TYPE type, std::string &value);

// True if the object has every attribute of the template with exactly its value.
bool matchesTemplate(const Object &object, const CK_ATTRIBUTE *attributes, CK_ULONG count);

// Fills one attribute of C_GetAttributeValue: length alone for a null buffer, else value and length.
CK_RV fillAttribute(const Object &object, CK_ATTRIBUTE &attribute);

} // namespace sim
