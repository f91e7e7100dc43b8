#include "simworld/cryptoki_names.h"

#include <p11-kit/pkcs11.h>

#include "simworld/config_text.h"

namespace sim {

namespace {

struct Name {
    unsigned long value;
    const char *text;
};

const Name results[] = {
    { CKR_OK, "CKR_OK" },
    { CKR_CANCEL, "CKR_CANCEL" },
    { CKR_HOST_MEMORY, "CKR_HOST_MEMORY" },
    { CKR_SLOT_ID_INVALID, "CKR_SLOT_ID_INVALID" },
    { CKR_GENERAL_ERROR, "CKR_GENERAL_ERROR" },
    { CKR_FUNCTION_FAILED, "CKR_FUNCTION_FAILED" },
    { CKR_ARGUMENTS_BAD, "CKR_ARGUMENTS_BAD" },
    { CKR_NO_EVENT, "CKR_NO_EVENT" },
    { CKR_NEED_TO_CREATE_THREADS, "CKR_NEED_TO_CREATE_THREADS" },
    { CKR_CANT_LOCK, "CKR_CANT_LOCK" },
    { CKR_ATTRIBUTE_READ_ONLY, "CKR_ATTRIBUTE_READ_ONLY" },
    { CKR_ATTRIBUTE_SENSITIVE, "CKR_ATTRIBUTE_SENSITIVE" },
    { CKR_ATTRIBUTE_TYPE_INVALID, "CKR_ATTRIBUTE_TYPE_INVALID" },
    { CKR_ATTRIBUTE_VALUE_INVALID, "CKR_ATTRIBUTE_VALUE_INVALID" },
    { CKR_ACTION_PROHIBITED, "CKR_ACTION_PROHIBITED" },
    { CKR_DATA_INVALID, "CKR_DATA_INVALID" },
    { CKR_DATA_LEN_RANGE, "CKR_DATA_LEN_RANGE" },
    { CKR_DEVICE_ERROR, "CKR_DEVICE_ERROR" },
    { CKR_DEVICE_MEMORY, "CKR_DEVICE_MEMORY" },
    { CKR_DEVICE_REMOVED, "CKR_DEVICE_REMOVED" },
    { CKR_ENCRYPTED_DATA_INVALID, "CKR_ENCRYPTED_DATA_INVALID" },
    { CKR_ENCRYPTED_DATA_LEN_RANGE, "CKR_ENCRYPTED_DATA_LEN_RANGE" },
    { CKR_FUNCTION_CANCELED, "CKR_FUNCTION_CANCELED" },
    { CKR_FUNCTION_NOT_PARALLEL, "CKR_FUNCTION_NOT_PARALLEL" },
    { CKR_FUNCTION_NOT_SUPPORTED, "CKR_FUNCTION_NOT_SUPPORTED" },
    { CKR_KEY_HANDLE_INVALID, "CKR_KEY_HANDLE_INVALID" },
    { CKR_KEY_SIZE_RANGE, "CKR_KEY_SIZE_RANGE" },
    { CKR_KEY_TYPE_INCONSISTENT, "CKR_KEY_TYPE_INCONSISTENT" },
    { CKR_KEY_NOT_NEEDED, "CKR_KEY_NOT_NEEDED" },
    { CKR_KEY_CHANGED, "CKR_KEY_CHANGED" },
    { CKR_KEY_NEEDED, "CKR_KEY_NEEDED" },
    { CKR_KEY_INDIGESTIBLE, "CKR_KEY_INDIGESTIBLE" },
    { CKR_KEY_FUNCTION_NOT_PERMITTED, "CKR_KEY_FUNCTION_NOT_PERMITTED" },
    { CKR_KEY_NOT_WRAPPABLE, "CKR_KEY_NOT_WRAPPABLE" },
    { CKR_KEY_UNEXTRACTABLE, "CKR_KEY_UNEXTRACTABLE" },
    { CKR_MECHANISM_INVALID, "CKR_MECHANISM_INVALID" },
    { CKR_MECHANISM_PARAM_INVALID, "CKR_MECHANISM_PARAM_INVALID" },
    { CKR_OBJECT_HANDLE_INVALID, "CKR_OBJECT_HANDLE_INVALID" },
    { CKR_OPERATION_ACTIVE, "CKR_OPERATION_ACTIVE" },
    { CKR_OPERATION_NOT_INITIALIZED, "CKR_OPERATION_NOT_INITIALIZED" },
    { CKR_PIN_INCORRECT, "CKR_PIN_INCORRECT" },
    { CKR_PIN_INVALID, "CKR_PIN_INVALID" },
    { CKR_PIN_LEN_RANGE, "CKR_PIN_LEN_RANGE" },
    { CKR_PIN_EXPIRED, "CKR_PIN_EXPIRED" },
    { CKR_PIN_LOCKED, "CKR_PIN_LOCKED" },
    { CKR_SESSION_CLOSED, "CKR_SESSION_CLOSED" },
    { CKR_SESSION_COUNT, "CKR_SESSION_COUNT" },
    { CKR_SESSION_HANDLE_INVALID, "CKR_SESSION_HANDLE_INVALID" },
    { CKR_SESSION_PARALLEL_NOT_SUPPORTED, "CKR_SESSION_PARALLEL_NOT_SUPPORTED" },
    { CKR_SESSION_READ_ONLY, "CKR_SESSION_READ_ONLY" },
    { CKR_SESSION_EXISTS, "CKR_SESSION_EXISTS" },
    { CKR_SESSION_READ_ONLY_EXISTS, "CKR_SESSION_READ_ONLY_EXISTS" },
    { CKR_SESSION_READ_WRITE_SO_EXISTS, "CKR_SESSION_READ_WRITE_SO_EXISTS" },
    { CKR_SIGNATURE_INVALID, "CKR_SIGNATURE_INVALID" },
    { CKR_SIGNATURE_LEN_RANGE, "CKR_SIGNATURE_LEN_RANGE" },
    { CKR_TEMPLATE_INCOMPLETE, "CKR_TEMPLATE_INCOMPLETE" },
    { CKR_TEMPLATE_INCONSISTENT, "CKR_TEMPLATE_INCONSISTENT" },
    { CKR_TOKEN_NOT_PRESENT, "CKR_TOKEN_NOT_PRESENT" },
    { CKR_TOKEN_NOT_RECOGNIZED, "CKR_TOKEN_NOT_RECOGNIZED" },
    { CKR_TOKEN_WRITE_PROTECTED, "CKR_TOKEN_WRITE_PROTECTED" },
    { CKR_UNWRAPPING_KEY_SIZE_RANGE, "CKR_UNWRAPPING_KEY_SIZE_RANGE" },
    { CKR_UNWRAPPING_KEY_TYPE_INCONSISTENT, "CKR_UNWRAPPING_KEY_TYPE_INCONSISTENT" },
    { CKR_USER_ALREADY_LOGGED_IN, "CKR_USER_ALREADY_LOGGED_IN" },
    { CKR_USER_NOT_LOGGED_IN, "CKR_USER_NOT_LOGGED_IN" },
    { CKR_USER_PIN_NOT_INITIALIZED, "CKR_USER_PIN_NOT_INITIALIZED" },
    { CKR_USER_TYPE_INVALID, "CKR_USER_TYPE_INVALID" },
    { CKR_USER_ANOTHER_ALREADY_LOGGED_IN, "CKR_USER_ANOTHER_ALREADY_LOGGED_IN" },
    { CKR_USER_TOO_MANY_TYPES, "CKR_USER_TOO_MANY_TYPES" },
    { CKR_WRAPPED_KEY_INVALID, "CKR_WRAPPED_KEY_INVALID" },
    { CKR_WRAPPED_KEY_LEN_RANGE, "CKR_WRAPPED_KEY_LEN_RANGE" },
    { CKR_WRAPPING_KEY_HANDLE_INVALID, "CKR_WRAPPING_KEY_HANDLE_INVALID" },
    { CKR_WRAPPING_KEY_SIZE_RANGE, "CKR_WRAPPING_KEY_SIZE_RANGE" },
    { CKR_WRAPPING_KEY_TYPE_INCONSISTENT, "CKR_WRAPPING_KEY_TYPE_INCONSISTENT" },
    { CKR_RANDOM_SEED_NOT_SUPPORTED, "CKR_RANDOM_SEED_NOT_SUPPORTED" },
    { CKR_RANDOM_NO_RNG, "CKR_RANDOM_NO_RNG" },
    { CKR_DOMAIN_PARAMS_INVALID, "CKR_DOMAIN_PARAMS_INVALID" },
    { CKR_CURVE_NOT_SUPPORTED, "CKR_CURVE_NOT_SUPPORTED" },
    { CKR_BUFFER_TOO_SMALL, "CKR_BUFFER_TOO_SMALL" },
    { CKR_SAVED_STATE_INVALID, "CKR_SAVED_STATE_INVALID" },
    { CKR_INFORMATION_SENSITIVE, "CKR_INFORMATION_SENSITIVE" },
    { CKR_STATE_UNSAVEABLE, "CKR_STATE_UNSAVEABLE" },
    { CKR_CRYPTOKI_NOT_INITIALIZED, "CKR_CRYPTOKI_NOT_INITIALIZED" },
    { CKR_CRYPTOKI_ALREADY_INITIALIZED, "CKR_CRYPTOKI_ALREADY_INITIALIZED" },
    { CKR_MUTEX_BAD, "CKR_MUTEX_BAD" },
    { CKR_MUTEX_NOT_LOCKED, "CKR_MUTEX_NOT_LOCKED" },
    { CKR_NEW_PIN_MODE, "CKR_NEW_PIN_MODE" },
    { CKR_NEXT_OTP, "CKR_NEXT_OTP" },
    { CKR_EXCEEDED_MAX_ITERATIONS, "CKR_EXCEEDED_MAX_ITERATIONS" },
    { CKR_FIPS_SELF_TEST_FAILED, "CKR_FIPS_SELF_TEST_FAILED" },
    { CKR_LIBRARY_LOAD_FAILED, "CKR_LIBRARY_LOAD_FAILED" },
    { CKR_PIN_TOO_WEAK, "CKR_PIN_TOO_WEAK" },
    { CKR_PUBLIC_KEY_INVALID, "CKR_PUBLIC_KEY_INVALID" },
    { CKR_FUNCTION_REJECTED, "CKR_FUNCTION_REJECTED" },
};

const Name attributes[] = {
    { CKA_CLASS, "CLASS" },
    { CKA_TOKEN, "TOKEN" },
    { CKA_PRIVATE, "PRIVATE" },
    { CKA_LABEL, "LABEL" },
    { CKA_APPLICATION, "APPLICATION" },
    { CKA_VALUE, "VALUE" },
    { CKA_OBJECT_ID, "OBJECT_ID" },
    { CKA_CERTIFICATE_TYPE, "CERTIFICATE_TYPE" },
    { CKA_ISSUER, "ISSUER" },
    { CKA_SERIAL_NUMBER, "SERIAL_NUMBER" },
    { CKA_KEY_TYPE, "KEY_TYPE" },
    { CKA_SUBJECT, "SUBJECT" },
    { CKA_ID, "ID" },
    { CKA_SENSITIVE, "SENSITIVE" },
    { CKA_MODIFIABLE, "MODIFIABLE" },
};

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

const std::vector<const char *> &cryptokiFunctions()
{
    static const std::vector<const char *> names {
        "C_Initialize",
        "C_Finalize",
        "C_GetInfo",
        "C_GetFunctionList",
        "C_GetSlotList",
        "C_GetSlotInfo",
        "C_GetTokenInfo",
        "C_GetMechanismList",
        "C_GetMechanismInfo",
        "C_InitToken",
        "C_InitPIN",
        "C_SetPIN",
        "C_OpenSession",
        "C_CloseSession",
        "C_CloseAllSessions",
        "C_GetSessionInfo",
        "C_GetOperationState",
        "C_SetOperationState",
        "C_Login",
        "C_Logout",
        "C_CreateObject",
        "C_CopyObject",
        "C_DestroyObject",
        "C_GetObjectSize",
        "C_GetAttributeValue",
        "C_SetAttributeValue",
        "C_FindObjectsInit",
        "C_FindObjects",
        "C_FindObjectsFinal",
        "C_EncryptInit",
        "C_Encrypt",
        "C_EncryptUpdate",
        "C_EncryptFinal",
        "C_DecryptInit",
        "C_Decrypt",
        "C_DecryptUpdate",
        "C_DecryptFinal",
        "C_DigestInit",
        "C_Digest",
        "C_DigestUpdate",
        "C_DigestKey",
        "C_DigestFinal",
        "C_SignInit",
        "C_Sign",
        "C_SignUpdate",
        "C_SignFinal",
        "C_SignRecoverInit",
        "C_SignRecover",
        "C_VerifyInit",
        "C_Verify",
        "C_VerifyUpdate",
        "C_VerifyFinal",
        "C_VerifyRecoverInit",
        "C_VerifyRecover",
        "C_DigestEncryptUpdate",
        "C_DecryptDigestUpdate",
        "C_SignEncryptUpdate",
        "C_DecryptVerifyUpdate",
        "C_GenerateKey",
        "C_GenerateKeyPair",
        "C_WrapKey",
        "C_UnwrapKey",
        "C_DeriveKey",
        "C_SeedRandom",
        "C_GenerateRandom",
        "C_GetFunctionStatus",
        "C_CancelFunction",
        "C_WaitForSlotEvent",
    };
    return names;
}

bool isCryptokiFunction(const std::string &name)
{
    for (const char *known : cryptokiFunctions()) {
        if (name == known)
            return true;
    }
    return false;
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
