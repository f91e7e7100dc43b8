#pragma once

// All functions of the standard's CK_FUNCTION_LIST in its order: YES for those that the card offers. The others are in
// the list, as the standard demands, and are traced and may go wrong by a fault like them.
// clang-format off
#define SIM_CRYPTOKI_FUNCTIONS(YES, NO) \
    YES(C_Initialize) YES(C_Finalize) YES(C_GetInfo) YES(C_GetFunctionList) \
    YES(C_GetSlotList) YES(C_GetSlotInfo) YES(C_GetTokenInfo) \
    YES(C_GetMechanismList) YES(C_GetMechanismInfo) \
    NO(C_InitToken) YES(C_InitPIN) YES(C_SetPIN) \
    YES(C_OpenSession) YES(C_CloseSession) YES(C_CloseAllSessions) \
    YES(C_GetSessionInfo) NO(C_GetOperationState) NO(C_SetOperationState) \
    YES(C_Login) YES(C_Logout) \
    NO(C_CreateObject) NO(C_CopyObject) NO(C_DestroyObject) \
    YES(C_GetObjectSize) YES(C_GetAttributeValue) NO(C_SetAttributeValue) \
    YES(C_FindObjectsInit) YES(C_FindObjects) YES(C_FindObjectsFinal) \
    NO(C_EncryptInit) NO(C_Encrypt) NO(C_EncryptUpdate) NO(C_EncryptFinal) \
    NO(C_DecryptInit) NO(C_Decrypt) NO(C_DecryptUpdate) NO(C_DecryptFinal) \
    NO(C_DigestInit) NO(C_Digest) NO(C_DigestUpdate) NO(C_DigestKey) NO(C_DigestFinal) \
    NO(C_SignInit) NO(C_Sign) NO(C_SignUpdate) NO(C_SignFinal) \
    NO(C_SignRecoverInit) NO(C_SignRecover) \
    NO(C_VerifyInit) NO(C_Verify) NO(C_VerifyUpdate) NO(C_VerifyFinal) \
    NO(C_VerifyRecoverInit) NO(C_VerifyRecover) \
    NO(C_DigestEncryptUpdate) NO(C_DecryptDigestUpdate) NO(C_SignEncryptUpdate) NO(C_DecryptVerifyUpdate) \
    NO(C_GenerateKey) NO(C_GenerateKeyPair) NO(C_WrapKey) NO(C_UnwrapKey) NO(C_DeriveKey) \
    NO(C_SeedRandom) NO(C_GenerateRandom) \
    YES(C_GetFunctionStatus) YES(C_CancelFunction) NO(C_WaitForSlotEvent)
// clang-format on
