#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>

#include "pkcs11/cryptoki.h"

namespace sim {

inline constexpr const char *manufacturer = "velmor stand-in";

// The standard's text fields have a fixed size, are filled with blanks and have no zero at the end. A text that is too
// long is cut, at a character and not within one.
template <std::size_t size>
void fillText(CK_UTF8CHAR (&field)[size], const std::string &text)
{
    std::size_t length = std::min(size, text.size());
    while (length > 0 && length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80)
        --length;
    std::memset(field, ' ', size);
    std::memcpy(field, text.data(), length);
}

// The same for bytes that a fault puts there as they are.
template <std::size_t size>
void fillBytes(CK_UTF8CHAR (&field)[size], const std::string &bytes)
{
    std::memset(field, ' ', size);
    std::memcpy(field, bytes.data(), std::min(size, bytes.size()));
}

} // namespace sim
