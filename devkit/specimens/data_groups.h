#pragma once

#include <string>

#include "specimens/person.h"

// The data groups of the travel document standard ICAO 9303 (DG13: the national one) as the files of a card, in bytes.
namespace specimen {

// Tag in hexadecimal digits, length in the shortest form.
std::string tlv(const std::string &tag, const std::string &content);
// The same with a length of two bytes (form 82), whatever the size.
std::string tlvOfTwoByteLength(const std::string &tag, const std::string &content);

// Check digit of the machine-readable zone: weights 7, 3, 1.
char checkDigit(const std::string &text);

// Three lines of 30 characters of a TD1 document.
std::string machineReadableZone(const Person &person);

std::string dg1(const Person &person);
std::string dg2(const std::string &jpeg, int width, int height);
std::string dg11(const Person &person);
std::string dg12(const Person &person);
std::string dg13(const Person &person);
std::string com(); // which data groups there are

} // namespace specimen
