#pragma once

// The published PKCS #11 interface, seen from the side of the library: its functions are exported, all else is hidden.
#define CRYPTOKI_EXPORTS
#ifndef _WIN32
#pragma GCC visibility push(default)
#endif
#include <p11-kit/pkcs11.h>
#ifndef _WIN32
#pragma GCC visibility pop
#endif

// Not in every version of the header.
#ifndef CKR_FUNCTION_REJECTED
#define CKR_FUNCTION_REJECTED (0x200UL)
#endif
