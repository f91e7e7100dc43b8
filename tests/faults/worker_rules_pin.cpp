// The PIN operations among the rules of the card worker.
#include "faults/worker_rules.h"

#include <p11-kit/pkcs11.h>

namespace {

constexpr unsigned long argumentsBad = 7;
constexpr unsigned long functionCanceled = 0x50;
constexpr unsigned long pinIncorrect = 0xA0;
constexpr unsigned long functionRejected = 0x200;

// Of C_SetPIN or C_InitPIN; `rejected` is what a rejection at the reader is told as.
int codeOf(unsigned long result, int rejected)
{
    return result == argumentsBad ? -9 : result == functionCanceled ? -8 : result == functionRejected ? rejected : -1;
}

QString given(bool typed)
{
    return typed ? "set" : "empty";
}

} // namespace

WorkerRules::Token *WorkerRules::lookUp(const QString &reader, const QString &container)
{
    if (!find(reader, container))
        detectTokens();
    return find(reader, container);
}

int WorkerRules::login(const QString &reader, const QString &container, bool typed, bool officer)
{
    if (!initialize())
        return -1;
    Token *token = lookUp(reader, container);
    if (!token)
        return -3;
    if (token->session < 1 && !open(*token))
        return -1;
    const Answer answer = callOnSession("C_Login", token->session);
    if (!answer)
        return -1;
    const auto &arguments = answer->arguments;
    if (QString::fromStdString(arguments.at("pin")) != given(typed)
        || arguments.at("user") != (officer ? "SO" : "USER"))
        complain("a login of another user, or of another entry: " + QString::fromStdString(answer->text));
    if (good(answer))
        return 0;
    if (answer->result == pinIncorrect)
        return officer ? -4 : -6;
    return answer->result == functionRejected ? -1 : codeOf(answer->result, -1);
}

WorkerRules::PinResult WorkerRules::changePin(const QString &reader, const QString &container, bool typed)
{
    const auto change = [&]() -> int {
        if (!initialize())
            return -1;
        Token *token = lookUp(reader, container);
        if (!token)
            return -3;
        if (token->session < 1 && !open(*token))
            return -1;
        const int loggedIn = login(reader, container, typed, false);
        if (loggedIn != 0) {
            callOnSession("C_Logout", token->session);
            return loggedIn;
        }
        const Answer set = callOnSession("C_SetPIN", token->session);
        const Answer logout = callOnSession("C_Logout", token->session);
        if (!set)
            return -1;
        return good(set) ? (good(logout) ? 0 : -1) : codeOf(set->result, -1);
    };
    const int code = change();
    return { code, pins(reader) };
}

WorkerRules::PinResult WorkerRules::unblockPin(const QString &reader, const QString &container, bool typed)
{
    const auto unblock = [&]() -> int {
        if (!initialize())
            return -1;
        Token *token = lookUp(reader, container);
        if (!token)
            return -3;
        const quint32 flags = token->flags;
        const bool byOfficer = !(flags & CKF_USER_PIN_INITIALIZED) || (flags & CKF_USER_PIN_LOCKED);
        if (!byOfficer && !(flags & CKF_USER_PIN_TO_BE_CHANGED))
            return -1;
        const int loggedIn = byOfficer ? login(reader, container, typed, true) : 0;
        if (loggedIn != 0)
            return loggedIn;
        const Answer set = callOnSession(byOfficer ? "C_InitPIN" : "C_SetPIN", token->session);
        const bool logsOut = !(flags & CKF_USER_PIN_TO_BE_CHANGED);
        const Answer logout = logsOut ? callOnSession("C_Logout", token->session) : nullptr;
        if (!set)
            return -1;
        return good(set) ? (!logsOut || good(logout) ? 0 : -1) : codeOf(set->result, -11);
    };
    const int code = unblock();
    return { code, pins(reader) };
}

void WorkerRules::end()
{
    if (loaded)
        call("C_Finalize");
}

void WorkerRules::startAnew()
{
    const std::map<std::string, sim::Card> kept = std::move(cards);
    *this = WorkerRules();
    cards = kept;
}
