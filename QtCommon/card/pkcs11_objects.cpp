// The read-only questions asked of a card: PIN state, objects, pinpad, chip.
#include "base/secret_string.h"
#include "card/cryptoki.h"
#include "card/pkcs11.h"
#include "card/reader.h"
#include "card/token.h"

#include <QDebug>

#include <algorithm>
#include <new>

namespace {

// Many times the largest object of a card, a photo of some tens of kilobytes. More than this is a nonsense answer.
constexpr CK_ULONG maxAttributeSize = 16UL * 1024 * 1024;

// Far above any card. A library that always finds one more would keep the worker for ever.
constexpr int maxObjects = 4096;

bool isTooMany(int found)
{
    if (found < maxObjects)
        return false;
    qDebug().noquote() << "more objects than a card can have, search ended";
    return true;
}

} // namespace

QMap<QString, QVariant> Pkcs11::tokenInfo(const QString &reader, const QString &conteiner)
{
    checkThread();
    Token *token = findToken(reader, conteiner, -1, -1, 0);
    if (!token) {
        qDebug().noquote() << "TokenInfo, token " << conteiner << " not found";
        return {};
    }
    CK_TOKEN_INFO info = {};
    const CK_RV rv = cryptoki->functions->C_GetTokenInfo(token->slotId, &info);
    token->tokenFlags = rv == CKR_OK ? static_cast<quint32>(info.flags) : 0;
    const PinState state = pinState(token->tokenFlags);
    qDebug().noquote() << "Token:" << conteiner << state.status << " tries:" << state.tries
                       << " triesSO:" << state.triesSO;
    return { { "triesSO", state.triesSO }, { "tries", state.tries }, { "status", state.status } };
}

unsigned long Pkcs11::findObjectInit(Token *token)
{
    const CK_RV rv = cryptoki->functions->C_FindObjectsInit(static_cast<quint32>(token->session), nullptr, 0);
    if (rv != CKR_OK)
        qDebug().noquote() << "C_FindObjectsInit error: " << QString::number(rv, 16);
    return rv;
}

bool Pkcs11::tokenObjectsInit(const QString &reader, const QString &conteiner, long &session)
{
    Token *token = findToken(reader, conteiner, -1, -1, 0);
    if (!token) {
        qDebug().noquote() << "Token: " << conteiner << " not found";
        return false;
    }
    if (!token->hasSession() && sessionOpen(token) != 0) {
        qDebug().noquote() << "tokenObjects, openSession return empty tokens list";
        return false;
    }
    CK_RV rv = findObjectInit(token);
    if (rv == CKR_SESSION_HANDLE_INVALID) {
        // A C_Finalize has killed the session behind the token's back.
        sessionRestore(token);
        rv = findObjectInit(token);
    }
    if (rv != CKR_OK) {
        qDebug().noquote() << "tokenObjects error: C_FindObjectsInit failed, sessId:" << token->session;
        return false;
    }
    session = token->session;
    return true;
}

void Pkcs11::tokenObjectsFinish(long session)
{
    if (cryptoki->functions->C_FindObjectsFinal(static_cast<quint32>(session)) != CKR_OK) {
        qDebug().noquote() << "tokenObjects error: C_FindObjectsFinal failed, sessId:" << session;
        error("Błąd pobierania obiektów danych!", -1);
    }
}

unsigned long Pkcs11::objectClass(long session, unsigned long object) const
{
    CK_OBJECT_CLASS value = 0;
    CK_ATTRIBUTE attribute = { CKA_CLASS, &value, sizeof value };
    if (cryptoki->functions->C_GetAttributeValue(static_cast<quint32>(session), object, &attribute, 1) != CKR_OK)
        return static_cast<unsigned long>(error("Błąd biblioteki PKCS11!", CKO_DATA));
    return value;
}

QByteArray Pkcs11::objectAttribute(long session, unsigned long object, unsigned long attribute) const
{
    CK_ATTRIBUTE query = { attribute, nullptr, 0 };
    if (cryptoki->functions->C_GetAttributeValue(static_cast<quint32>(session), object, &query, 1) != CKR_OK)
        return {};
    // This also keeps out CK_UNAVAILABLE_INFORMATION, the largest number there is.
    const CK_ULONG room = query.ulValueLen;
    if (room > maxAttributeSize)
        return {};
    QByteArray bytes;
    try {
        bytes = QByteArray(static_cast<int>(room), '\0');
    } catch (const std::bad_alloc &) {
        return {};
    }
    query.pValue = bytes.data();
    const CK_RV rv = cryptoki->functions->C_GetAttributeValue(static_cast<quint32>(session), object, &query, 1);
    const CK_ULONG written = query.ulValueLen;
    if (rv != CKR_OK || written == CK_UNAVAILABLE_INFORMATION)
        wipeSecret(bytes);
    else if (written < room)
        bytes.truncate(static_cast<int>(written));
    return bytes;
}

int Pkcs11::certsCount(const QString &reader, const QString &conteiner)
{
    checkThread();
    long session = 0;
    if (!tokenObjectsInit(reader, conteiner, session))
        return 0;
    int certs = 0;
    for (int found = 0; !isTooMany(found); ++found) {
        CK_OBJECT_HANDLE object = 0;
        CK_ULONG count = 0;
        const CK_RV rv = cryptoki->functions->C_FindObjects(static_cast<quint32>(session), &object, 1, &count);
        if (rv != CKR_OK || count == 0)
            break;
        if (objectClass(session, object) == CKO_CERTIFICATE)
            ++certs;
    }
    tokenObjectsFinish(session);
    qDebug().noquote() << "Certs in" << conteiner << certs;
    return certs;
}

QList<pkcsDataObj> Pkcs11::tokenObjects(const QString &reader, const QString &conteiner, int type,
                                        const QStringList &names)
{
    checkThread();
    QList<pkcsDataObj> objects;
    long session = 0;
    if (!tokenObjectsInit(reader, conteiner, session))
        return objects;
    for (int found = 0; !isTooMany(found); ++found) {
        CK_OBJECT_HANDLE object = 0;
        CK_ULONG count = 0;
        if (cryptoki->functions->C_FindObjects(static_cast<quint32>(session), &object, 1, &count) != CKR_OK) {
            // The search is left open, unlike in certsCount. That is on purpose.
            qDebug().noquote() << "tokenObjects, no more objects";
            return objects;
        }
        if (count == 0)
            break;
        if (appendObject(session, object, conteiner, type, names, objects) && !names.isEmpty()
            && objects.size() >= names.size())
            break;
    }
    tokenObjectsFinish(session);
    return objects;
}

bool Pkcs11::appendObject(long session, unsigned long object, const QString &conteiner, int type,
                          const QStringList &names, QList<pkcsDataObj> &objects) const
{
    const CK_OBJECT_CLASS found = objectClass(session, object);
    if ((type != -1 && static_cast<CK_OBJECT_CLASS>(type) != found) || found > CKO_CERTIFICATE)
        return false;
    // By its length: the conversion of a whole QByteArray ends at a zero byte.
    const QByteArray bytes = objectAttribute(session, object, CKA_LABEL);
    const QString label = cutTrailingSpace(QString::fromUtf8(bytes.constData(), bytes.size()));
    if (label.isEmpty() || (!names.isEmpty() && !names.contains(label)))
        return false;
    // What a qualified certificate is called stays out of the log.
    if (conteiner == Container::Qualified)
        qDebug().noquote() << "Read qualified cert";
    else
        qDebug().noquote() << "read" << label;
    const QByteArray value = objectAttribute(session, object, CKA_VALUE);
    if (value.isEmpty())
        return false;
    objects.append({ label, value });
    return true;
}

QByteArrayList Pkcs11::tokenCerts(const QString &reader, const QString &conteiner)
{
    QByteArrayList certs;
    const QList<pkcsDataObj> objects = tokenObjects(reader, conteiner, CKO_CERTIFICATE, {});
    for (const pkcsDataObj &object : objects)
        certs << object.value;
    return certs;
}

QMap<QString, QByteArray> Pkcs11::tokenDataMap(const QString &reader, const QString &conteiner,
                                               const QStringList &names)
{
    QMap<QString, QByteArray> values;
    QList<pkcsDataObj> objects = tokenObjects(reader, conteiner, CKO_DATA, names);
    for (pkcsDataObj &object : objects) {
        QByteArray &value = values[object.name];
        wipeSecret(value);
        // Nobody else keeps it, so that it is overwritten with the map.
        value.swap(object.value);
    }
    return values;
}

int Pkcs11::isPinPad(const QString &reader)
{
    checkThread();
    const Token *token = findToken(reader, anyLabel, -1, -1, 0);
    if (!token || static_cast<qint32>(token->slotId) < 0)
        return error("isPinPad1: Brak karty!", -3);
    CK_SLOT_INFO info = {};
    if (cryptoki->functions->C_GetSlotInfo(token->slotId, &info) != CKR_OK)
        return error("isPinPad2: Brak karty!", -1);
    return (info.flags & slotPinPad) ? 1 : 0;
}

int Pkcs11::typeOfChip(const QString &reader)
{
    checkThread();
    for (const Slot &slot : slotList) {
        if (slot.name.contains(reader))
            return Reader::cardChipType(slot.flags);
    }
    qDebug().noquote() << "Can not recognize chip type";
    return 0;
}
