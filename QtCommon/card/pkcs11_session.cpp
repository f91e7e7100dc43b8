// Sessions, and the three operations that send a PIN to the card.
#include "card/card_results.h"
#include "card/cryptoki.h"
#include "card/pin_buffer.h"
#include "card/pkcs11.h"
#include "card/token.h"

#include <QDebug>

namespace {

// What a Cryptoki result means to the caller, and to the log.
struct Outcome {
    CK_RV rv;
    int code;
    const char *message;
};

struct LoginOutcome {
    CK_RV rv;
    CK_USER_TYPE userType;
    int code;
    const char *message;
};

constexpr CK_USER_TYPE anyUser = static_cast<CK_USER_TYPE>(-1);

constexpr LoginOutcome loginOutcomes[] = {
    { CKR_ARGUMENTS_BAD, anyUser, CardResult::pinsDiffer, "Niezgodne PINy!" },
    { CKR_FUNCTION_CANCELED, anyUser, CardResult::cancelled, "Operacja anulowana!" },
    { CKR_PIN_INCORRECT, CKU_USER, CardResult::wrongPin, "Błędny PIN!" },
    { CKR_PIN_INCORRECT, CKU_SO, CardResult::wrongPuk, "Błędny PUK!" },
};

// CKR_FUNCTION_REJECTED has a code of its own only when a PIN is unblocked.
constexpr Outcome changeOutcomes[] = {
    { CKR_ARGUMENTS_BAD, CardResult::pinsDiffer, "Niezgodne PINy!" },
    { CKR_FUNCTION_CANCELED, CardResult::cancelled, "Operacja anulowana!" },
};

constexpr Outcome unblockOutcomes[] = {
    { CKR_ARGUMENTS_BAD, CardResult::pinsDiffer, "Niezgodne PINy!" },
    { CKR_FUNCTION_CANCELED, CardResult::cancelled, "Operacja anulowana!" },
    { CKR_FUNCTION_REJECTED, CardResult::aborted, "Operacja przerwana!" },
};

// The row for `rv` and for the logout after it, which counts only after a success.
template <std::size_t rows>
Outcome outcomeOf(const Outcome (&table)[rows], const char *otherMessage, CK_RV rv, CK_RV logout)
{
    if (rv == CKR_OK) {
        if (logout == CKR_OK)
            return { CKR_OK, CardResult::done, nullptr };
        return { rv, CardResult::failed, "Błąd podczas wylogowywania się po zmianie pin-u!" };
    }
    for (const Outcome &row : table) {
        if (row.rv == rv)
            return row;
    }
    return { rv, CardResult::failed, otherMessage };
}

// As it stands: a token without a session gives a handle that no library knows.
CK_SESSION_HANDLE handle(const Token &token)
{
    return static_cast<quint32>(token.session);
}

} // namespace

int Pkcs11::sessionOpen(Token *token)
{
    if (initialize() != 0)
        return -1;
    if (static_cast<qint32>(token->slotId) < 0)
        return error("Nieprawidłowy ID slotu.", -1);
    CK_SESSION_HANDLE session = 0;
    const CK_FLAGS flags = CKF_SERIAL_SESSION | CKF_RW_SESSION;
    if (cryptoki->functions->C_OpenSession(token->slotId, flags, nullptr, nullptr, &session) != CKR_OK)
        return error("Błąd podczas otwierania sesji.", -1);
    qDebug().noquote() << "session " << session << "opened for " << describeToken(*token, false, false);
    token->session = static_cast<qint32>(session);
    return 0;
}

int Pkcs11::sessionClose(Token *token)
{
    if (!token->hasSession()) {
        qDebug().noquote() << "sessionClose abort " << describeToken(*token, false, false);
        return 0;
    }
    qDebug().noquote() << "closing session " << describeToken(*token, false, false);
    if (cryptoki->functions->C_CloseSession(handle(*token)) == CKR_OK)
        qDebug().noquote() << "session closed";
    token->session = noSession;
    return 0;
}

void Pkcs11::sessionRestore(Token *token)
{
    qDebug().noquote() << "sessionRestore()";
    sessionOpen(token);
}

Token *Pkcs11::lookUpToken(const QString &reader, const QString &conteiner)
{
    Token *token = findToken(reader, conteiner, -1, -1, 0);
    if (token)
        return token;
    detectTokens();
    return findToken(reader, conteiner, -1, -1, 0);
}

int Pkcs11::login(const QString &reader, const QString &conteiner, const QString &pin, unsigned long userType)
{
    if (initialize() != 0)
        return CardResult::failed;
    Token *token = lookUpToken(reader, conteiner);
    if (!token)
        return error("login: Brak karty!", CardResult::noCard);
    if (!token->hasSession() && sessionOpen(token) != 0)
        return error("Błąd podczas otwierania sesji!", CardResult::failed);
    PinBuffer bytes(pin);
    const CK_RV rv = cryptoki->functions->C_Login(handle(*token), userType, bytes.data(), bytes.size());
    if (rv == CKR_OK)
        return CardResult::done;
    for (const LoginOutcome &row : loginOutcomes) {
        if (row.rv == rv && (row.userType == anyUser || row.userType == userType))
            return error(row.message, row.code);
    }
    return error("Błąd podczas logowania !" + QString::number(userType), CardResult::failed);
}

int Pkcs11::changePIN(const QString &reader, const QString &conteiner, const QString &oldPin, const QString &newPin)
{
    if (initialize() != 0)
        return CardResult::failed;
    Token *token = lookUpToken(reader, conteiner);
    if (!token)
        return error("changePIN: Brak karty!", CardResult::noCard);
    if (!token->hasSession() && sessionOpen(token) != 0)
        return error("Błąd podczas otwierania sesji!", CardResult::failed);
    const int loggedIn = login(reader, conteiner, oldPin, CKU_USER);
    if (loggedIn != CardResult::done) {
        // Also though nobody is logged in: the card expects it.
        cryptoki->functions->C_Logout(handle(*token));
        return loggedIn;
    }
    PinBuffer oldBytes(oldPin);
    PinBuffer newBytes(newPin);
    const CK_RV rv = cryptoki->functions->C_SetPIN(handle(*token), oldBytes.data(), oldBytes.size(), newBytes.data(),
                                                   newBytes.size());
    const CK_RV logout = cryptoki->functions->C_Logout(handle(*token));
    const Outcome outcome = outcomeOf(changeOutcomes, "Błędna zmiana pinu!", rv, logout);
    return outcome.message ? error(outcome.message, outcome.code) : outcome.code;
}

int Pkcs11::unblockPIN(const QString &reader, const QString &conteiner, const QString &PUK, const QString &newPIN)
{
    if (initialize() != 0)
        return CardResult::failed;
    Token *token = lookUpToken(reader, conteiner);
    if (!token)
        return error("unblockPIN: Brak karty!", CardResult::noCard);
    const quint32 flags = token->tokenFlags;
    CK_RV rv = CKR_OK;
    if (!(flags & CKF_USER_PIN_INITIALIZED) || (flags & CKF_USER_PIN_LOCKED)) {
        const int loggedIn = login(reader, conteiner, PUK, CKU_SO);
        if (loggedIn != CardResult::done)
            return error("Błąd podczas logowania pinem SO!", loggedIn);
        PinBuffer newBytes(newPIN);
        rv = cryptoki->functions->C_InitPIN(handle(*token), newBytes.data(), newBytes.size());
    } else {
        if (!(flags & CKF_USER_PIN_TO_BE_CHANGED))
            return error("Nie wspierany mechanizm odblokowania kodu PIN!", CardResult::failed);
        // First use: the PUK stands in for the old PIN, without a login, and so a wrong PUK is -1 here and not -4. This
        // opens no session; the count of certificates, which comes before, has left one.
        PinBuffer pukBytes(PUK);
        PinBuffer newBytes(newPIN);
        rv = cryptoki->functions->C_SetPIN(handle(*token), pukBytes.data(), pukBytes.size(), newBytes.data(),
                                           newBytes.size());
    }
    // The flags as they are stored, not asked again.
    CK_RV logout = CKR_OK;
    if (!(token->tokenFlags & CKF_USER_PIN_TO_BE_CHANGED))
        logout = cryptoki->functions->C_Logout(handle(*token));
    const Outcome outcome = outcomeOf(unblockOutcomes, "Błąd podczas odblokowywaniu pin-u!", rv, logout);
    return outcome.message ? error(outcome.message, outcome.code) : outcome.code;
}
