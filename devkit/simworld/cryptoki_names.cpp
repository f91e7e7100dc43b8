#include "simworld/cryptoki_names.h"

#include <algorithm>

#include <p11-kit/pkcs11.h>

#include "simworld/config_text.h"
#include "simworld/cryptoki_functions.h"

namespace sim {

namespace {

struct Name {
    unsigned long value;
    const char *text;
};

// clang-format off
#define RESULTS(X) \
    X(OK) X(CANCEL) X(HOST_MEMORY) X(SLOT_ID_INVALID) X(GENERAL_ERROR) X(FUNCTION_FAILED) X(ARGUMENTS_BAD) \
    X(NO_EVENT) X(NEED_TO_CREATE_THREADS) X(CANT_LOCK) X(ATTRIBUTE_READ_ONLY) X(ATTRIBUTE_SENSITIVE) \
    X(ATTRIBUTE_TYPE_INVALID) X(ATTRIBUTE_VALUE_INVALID) X(ACTION_PROHIBITED) X(DATA_INVALID) X(DATA_LEN_RANGE) \
    X(DEVICE_ERROR) X(DEVICE_MEMORY) X(DEVICE_REMOVED) X(ENCRYPTED_DATA_INVALID) X(ENCRYPTED_DATA_LEN_RANGE) \
    X(FUNCTION_CANCELED) X(FUNCTION_NOT_PARALLEL) X(FUNCTION_NOT_SUPPORTED) X(KEY_HANDLE_INVALID) X(KEY_SIZE_RANGE) \
    X(KEY_TYPE_INCONSISTENT) X(KEY_NOT_NEEDED) X(KEY_CHANGED) X(KEY_NEEDED) X(KEY_INDIGESTIBLE) \
    X(KEY_FUNCTION_NOT_PERMITTED) X(KEY_NOT_WRAPPABLE) X(KEY_UNEXTRACTABLE) X(MECHANISM_INVALID) \
    X(MECHANISM_PARAM_INVALID) X(OBJECT_HANDLE_INVALID) X(OPERATION_ACTIVE) X(OPERATION_NOT_INITIALIZED) \
    X(PIN_INCORRECT) X(PIN_INVALID) X(PIN_LEN_RANGE) X(PIN_EXPIRED) X(PIN_LOCKED) X(SESSION_CLOSED) X(SESSION_COUNT) \
    X(SESSION_HANDLE_INVALID) X(SESSION_PARALLEL_NOT_SUPPORTED) X(SESSION_READ_ONLY) X(SESSION_EXISTS) \
    X(SESSION_READ_ONLY_EXISTS) X(SESSION_READ_WRITE_SO_EXISTS) X(SIGNATURE_INVALID) X(SIGNATURE_LEN_RANGE) \
    X(TEMPLATE_INCOMPLETE) X(TEMPLATE_INCONSISTENT) X(TOKEN_NOT_PRESENT) X(TOKEN_NOT_RECOGNIZED) \
    X(TOKEN_WRITE_PROTECTED) X(UNWRAPPING_KEY_SIZE_RANGE) X(UNWRAPPING_KEY_TYPE_INCONSISTENT) \
    X(USER_ALREADY_LOGGED_IN) X(USER_NOT_LOGGED_IN) X(USER_PIN_NOT_INITIALIZED) X(USER_TYPE_INVALID) \
    X(USER_ANOTHER_ALREADY_LOGGED_IN) X(USER_TOO_MANY_TYPES) X(WRAPPED_KEY_INVALID) X(WRAPPED_KEY_LEN_RANGE) \
    X(WRAPPING_KEY_HANDLE_INVALID) X(WRAPPING_KEY_SIZE_RANGE) X(WRAPPING_KEY_TYPE_INCONSISTENT) \
    X(RANDOM_SEED_NOT_SUPPORTED) X(RANDOM_NO_RNG) X(DOMAIN_PARAMS_INVALID) X(CURVE_NOT_SUPPORTED) \
    X(BUFFER_TOO_SMALL) X(SAVED_STATE_INVALID) X(INFORMATION_SENSITIVE) X(STATE_UNSAVEABLE) \
    X(CRYPTOKI_NOT_INITIALIZED) X(CRYPTOKI_ALREADY_INITIALIZED) X(MUTEX_BAD) X(MUTEX_NOT_LOCKED) X(NEW_PIN_MODE) \
    X(NEXT_OTP) X(EXCEEDED_MAX_ITERATIONS) X(FIPS_SELF_TEST_FAILED) X(LIBRARY_LOAD_FAILED) X(PIN_TOO_WEAK) \
    X(PUBLIC_KEY_INVALID) X(FUNCTION_REJECTED)
#define ATTRIBUTES(X) \
    X(CLASS) X(TOKEN) X(PRIVATE) X(LABEL) X(APPLICATION) X(VALUE) X(OBJECT_ID) X(CERTIFICATE_TYPE) X(ISSUER) \
    X(SERIAL_NUMBER) X(KEY_TYPE) X(SUBJECT) X(ID) X(SENSITIVE) X(MODIFIABLE)
// clang-format on

#define RESULT(name) { CKR_##name, "CKR_" #name },
#define ATTRIBUTE(name) { CKA_##name, #name },
const Name results[] = { RESULTS(RESULT) };
const Name attributes[] = { ATTRIBUTES(ATTRIBUTE) };

template <std::size_t size>
bool valueOf(const Name (&rows)[size], const std::string &prefix, const std::string &text, unsigned long &value)
{
    for (const Name &row : rows) {
        if (text == row.text || prefix + text == row.text) {
            value = row.value;
            return true;
        }
    }
    long long number = 0;
    if (!parseNumber(text, number) || number < 0)
        return false;
    value = static_cast<unsigned long>(number);
    return true;
}

template <std::size_t size>
std::string nameOf(const Name (&rows)[size], unsigned long value)
{
    for (const Name &row : rows) {
        if (row.value == value)
            return row.text;
    }
    return hexNumber(value);
}

} // namespace

bool isCryptokiFunction(const std::string &name)
{
#define NAME(function) #function,
    static const std::string known[] = { SIM_CRYPTOKI_FUNCTIONS(NAME, NAME) };
#undef NAME
    return std::find(std::begin(known), std::end(known), name) != std::end(known);
}

bool parseResult(const std::string &text, unsigned long &value)
{
    return valueOf(results, "CKR_", text, value);
}

std::string resultName(unsigned long value)
{
    return nameOf(results, value);
}

bool parseAttribute(const std::string &text, unsigned long &value)
{
    const std::string prefix = "CKA_";
    return valueOf(attributes, {}, text.compare(0, prefix.size(), prefix) == 0 ? text.substr(prefix.size()) : text,
                   value);
}

std::string attributeName(unsigned long value)
{
    return nameOf(attributes, value);
}

} // namespace sim
