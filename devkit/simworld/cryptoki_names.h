#pragma once

#include <string>

// Names of the published PKCS #11 standard, for texts that a person writes or reads.
namespace sim {

bool isCryptokiFunction(const std::string &name);

// "CKR_PIN_INCORRECT" or "PIN_INCORRECT" or a number; false if it is none of them.
bool parseResult(const std::string &text, unsigned long &value);
// "CKR_PIN_INCORRECT", or the number as "0x..." if it has no name here.
std::string resultName(unsigned long value);

// "LABEL", "CKA_LABEL" or a number.
bool parseAttribute(const std::string &text, unsigned long &value);
std::string attributeName(unsigned long value); // "LABEL", or "0x..."

} // namespace sim
