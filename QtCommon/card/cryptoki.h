#pragma once

// Cryptoki as the card's library speaks it: the published PKCS #11 interface, version 2, with structures packed on
// Windows and CK_ULONG 4 or 8 bytes wide. For the sources of Pkcs11 only, so that no Cryptoki type gets further.

#include <p11-kit/pkcs11.h>

struct Cryptoki {
    // Table inside the loaded library.
    CK_FUNCTION_LIST *functions;
};
