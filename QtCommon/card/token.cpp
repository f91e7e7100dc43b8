#include "card/token.h"

#include "card/card_results.h"
#include "card/cryptoki.h"

#include <QStringList>

QString cutTrailingSpace(const QString &text)
{
    int length = text.size();
    while (length > 0 && text.at(length - 1).isSpace())
        --length;
    return text.left(length);
}

bool matches(const Token &token, const QString &name, const QString &label, qint32 slotId, qint32 session,
             quint32 slotFlags)
{
    if (token.name != name)
        return false;
    if (label != anyLabel && (label.isEmpty() ? !token.label.isEmpty() : !token.label.contains(label)))
        return false;
    if (slotId != -1 && slotId != static_cast<qint32>(token.slotId))
        return false;
    if (session != -1 && session != token.session)
        return false;
    return slotFlags == 0 || (slotFlags & token.slotFlags) != 0;
}

const QMap<quint32, QString> &slotStatusNames()
{
    static const QMap<quint32, QString> names {
        { slotNotReadByTheMonitor, "notReadByTheMonitor" },
        { slotWaitCan, "waitCan" },
        { 0, "present" },
    };
    return names;
}

const QMap<quint32, QString> &tokenStatusNames()
{
    static const QMap<quint32, QString> names {
        { CKF_TOKEN_INITIALIZED, "initialized" },         { CKF_SO_PIN_COUNT_LOW, "so_tries_low" },
        { CKF_SO_PIN_FINAL_TRY, "so_final_try" },         { CKF_SO_PIN_LOCKED, "so_pin_locked" },
        { CKF_SO_PIN_TO_BE_CHANGED, "so_to_be_changed" }, { CKF_USER_PIN_COUNT_LOW, "tries_low" },
        { CKF_USER_PIN_FINAL_TRY, "final_try" },          { CKF_USER_PIN_LOCKED, "pin_locked" },
        { CKF_USER_PIN_TO_BE_CHANGED, "to_be_changed" },
    };
    return names;
}

QString statusWords(const QMap<quint32, QString> &names, quint32 flags)
{
    QStringList words;
    for (auto name = names.begin(); name != names.end(); ++name) {
        if (name.key() & flags)
            words << name.value();
    }
    return words.join(' ');
}

QString describeSlot(const Slot &slot, bool withName, bool withFlags)
{
    QString text = QString("Slot 0x%1").arg(slot.id);
    if (withName)
        text += ": " + slot.name.trimmed();
    if (withFlags)
        text += ' ' + statusWords(slotStatusNames(), slot.flags);
    return text;
}

QString describeToken(const Token &token, bool withName, bool withFlags)
{
    QString text = QString("Token 0x%1").arg(token.slotId);
    if (withName)
        text += ": " + token.label.trimmed();
    if (withFlags)
        text += ' ' + statusWords(tokenStatusNames(), token.tokenFlags);
    return text;
}

PinState pinState(quint32 tokenFlags)
{
    // The card has no counter that Cryptoki could read. First row that applies; the last always does.
    static const struct {
        quint32 bits;
        bool set;
        int tries;
        const char *status;
    } userRows[] = {
        { CKF_USER_PIN_INITIALIZED, false, Tries::notSet, PinWord::first },
        { CKF_USER_PIN_TO_BE_CHANGED, true, Tries::notSet, PinWord::first },
        { CKF_USER_PIN_LOCKED, true, Tries::locked, PinWord::unblock },
        { CKF_USER_PIN_FINAL_TRY, true, Tries::last, PinWord::change },
        { CKF_USER_PIN_COUNT_LOW, true, 2, PinWord::change },
        { 0, false, 3, PinWord::change },
    };
    static const struct {
        quint32 bits;
        bool set;
        int tries;
    } officerRows[] = {
        { CKF_SO_PIN_TO_BE_CHANGED, true, Tries::notSet },
        { CKF_SO_PIN_LOCKED, true, Tries::locked },
        { CKF_SO_PIN_FINAL_TRY, true, Tries::last },
        { CKF_SO_PIN_COUNT_LOW, true, 2 },
        { 0, false, 3 },
    };
    const auto applies = [tokenFlags](const auto &row) { return ((tokenFlags & row.bits) != 0) == row.set; };
    const auto *user = userRows;
    while (!applies(*user))
        ++user;
    const auto *officer = officerRows;
    while (!applies(*officer))
        ++officer;
    return { officer->tries, user->tries, user->status };
}
