#include "support/scripted_pkcs11/scripted_card.h"

#include "app/app.h"
#include "support/testmain.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstring>

namespace {

template <std::size_t size>
void fill(CK_UTF8CHAR (&field)[size], const QByteArray &text)
{
    const QByteArray padded = text.leftJustified(static_cast<int>(size), ' ', true);
    std::memcpy(field, padded.constData(), size);
}

QString libraryPath()
{
    const QString root = TestHome::path() + "/scripted";
    App::instance()->init("Manager", root, "x86_64", "Manager");
    QString path = App::instance()->pkcsLibPath("x86_64");
    QDir().mkpath(QFileInfo(path).path());
    return path;
}

QString install(const QString &file)
{
    QString path = libraryPath();
    QFile::remove(path);
    if (!QFile::copy(file, path))
        qFatal("cannot install %s", qPrintable(file));
    return path;
}

QString attributeName(CK_ATTRIBUTE_TYPE type)
{
    switch (type) {
    case CKA_CLASS:
        return "CLASS";
    case CKA_LABEL:
        return "LABEL";
    case CKA_VALUE:
        return "VALUE";
    default:
        return QString::number(type);
    }
}

} // namespace

ScriptedCard::ScriptedCard() : module(installModule())
{
    const auto attach = reinterpret_cast<AttachScript>(module.resolve("attachScript"));
    if (!attach)
        qFatal("cannot load the scripted module: %s", qPrintable(module.errorString()));
    attach(this);
}

ScriptedCard::~ScriptedCard()
{
    if (gone)
        return;
    reinterpret_cast<AttachScript>(module.resolve("attachScript"))(nullptr);
    module.unload();
}

QString ScriptedCard::installModule()
{
    return install(SCRIPTED_MODULE);
}

QString ScriptedCard::installNoEntryModule()
{
    return install(NO_ENTRY_MODULE);
}

QString ScriptedCard::installBytes(const QByteArray &bytes)
{
    QString path = removeLibrary();
    QFile file(path);
    if (!file.open(QFile::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

QString ScriptedCard::removeLibrary()
{
    QString path = libraryPath();
    QFile::remove(path);
    return path;
}

QStringList ScriptedCard::functions() const
{
    QStringList names;
    for (const QString &call : trace)
        names << call.section(' ', 0, 0);
    return names;
}

int ScriptedCard::count(const QString &function) const
{
    return functions().count(function);
}

void ScriptedCard::fail(const QString &function, CK_RV rv, int nth)
{
    faults[function] = { rv, nth, nth == 0 };
}

ScriptedSlot *ScriptedCard::slotOf(CK_SLOT_ID id)
{
    const auto slot = std::find_if(card.begin(), card.end(), [id](const ScriptedSlot &s) { return s.id == id; });
    return slot == card.end() ? nullptr : &*slot;
}

void ScriptedCard::addReader(const QString &name, CK_SLOT_ID firstId)
{
    const char *labels[] = { "Authentication", "Presence", "Authorization", "Qualified", "eMRTD" };
    int number = 0;
    for (const char *label : labels) {
        ScriptedSlot slot;
        slot.id = firstId + static_cast<CK_SLOT_ID>(number++);
        slot.description = name.toUtf8() + " #" + QByteArray::number(number);
        slot.label = QByteArray("velmor ") + label;
        card.push_back(slot);
    }
}

std::optional<CK_RV> ScriptedCard::takeFault(const QString &key)
{
    const auto fault = faults.find(key);
    if (fault == faults.end() || (fault->nth > 0 && --fault->nth > 0))
        return {};
    const CK_RV rv = fault->rv;
    if (!fault->every)
        faults.erase(fault);
    return rv;
}

CK_RV ScriptedCard::begin(const QString &function, const QString &arguments)
{
    trace << (arguments.isEmpty() ? function : function + ' ' + arguments);
    if (onCall)
        onCall(function);
    if (const std::optional<CK_RV> rv = takeFault(function))
        return *rv;
    return ready || function == "C_Initialize" ? CKR_OK : CKR_CRYPTOKI_NOT_INITIALIZED;
}

CK_RV ScriptedCard::beginOnSession(const QString &function, CK_SESSION_HANDLE session, const QString &arguments)
{
    const QString handle = QString::number(session);
    const CK_RV rv = begin(function, arguments.isEmpty() ? handle : handle + ' ' + arguments);
    if (rv != CKR_OK)
        return rv;
    return sessions.contains(session) ? CKR_OK : CKR_SESSION_HANDLE_INVALID;
}

CK_RV ScriptedCard::getFunctionList(CK_FUNCTION_LIST *own, CK_FUNCTION_LIST **list)
{
    trace << "C_GetFunctionList";
    if (onFunctionList)
        return onFunctionList(own, list);
    *list = own;
    return CKR_OK;
}

CK_RV ScriptedCard::initialize(void *arguments)
{
    argumentsWereNull = argumentsWereNull && !arguments;
    const CK_RV rv = begin("C_Initialize");
    if (rv != CKR_OK)
        return rv;
    if (ready)
        return CKR_CRYPTOKI_ALREADY_INITIALIZED;
    ready = true;
    return CKR_OK;
}

CK_RV ScriptedCard::finalize(void *reserved)
{
    argumentsWereNull = argumentsWereNull && !reserved;
    const CK_RV rv = begin("C_Finalize");
    ready = false;
    sessions.clear();
    return rv;
}

CK_RV ScriptedCard::getSlotList(bool tokenPresent, CK_SLOT_ID *ids, CK_ULONG *count)
{
    const CK_RV rv = begin("C_GetSlotList", QString(tokenPresent ? "present " : "all ") + (ids ? "given" : "null"));
    if (rv != CKR_OK)
        return rv;
    if (onSlotList)
        return onSlotList(ids, count);
    const CK_ULONG room = *count;
    *count = card.size();
    if (!ids)
        return CKR_OK;
    if (room < card.size())
        return CKR_BUFFER_TOO_SMALL;
    for (const ScriptedSlot &slot : card)
        *ids++ = slot.id;
    return CKR_OK;
}

CK_RV ScriptedCard::getSlotInfo(CK_SLOT_ID id, CK_SLOT_INFO *info)
{
    const CK_RV rv = begin("C_GetSlotInfo", QString::number(id));
    if (rv != CKR_OK)
        return rv;
    const ScriptedSlot *slot = slotOf(id);
    if (!slot)
        return CKR_SLOT_ID_INVALID;
    fill(info->slotDescription, slot->description);
    info->flags = slot->flags;
    return slot->slotInfo;
}

CK_RV ScriptedCard::getTokenInfo(CK_SLOT_ID id, CK_TOKEN_INFO *info)
{
    const CK_RV rv = begin("C_GetTokenInfo", QString::number(id));
    if (rv != CKR_OK)
        return rv;
    const ScriptedSlot *slot = slotOf(id);
    if (!slot)
        return CKR_SLOT_ID_INVALID;
    fill(info->label, slot->label);
    info->flags = slot->tokenFlags;
    return slot->tokenInfo;
}

CK_RV ScriptedCard::openSession(CK_SLOT_ID slot, CK_FLAGS flags, void *application, CK_NOTIFY notify,
                                CK_SESSION_HANDLE *session)
{
    const QString callbacks = application || notify ? " callback" : "";
    const CK_RV rv = begin("C_OpenSession", QString("%1 flags=%2").arg(slot).arg(flags) + callbacks);
    if (rv != CKR_OK)
        return rv;
    if (!slotOf(slot))
        return CKR_SLOT_ID_INVALID;
    *session = nextSession++;
    sessions[*session].slot = slot;
    return CKR_OK;
}

CK_RV ScriptedCard::closeSession(CK_SESSION_HANDLE session)
{
    const CK_RV rv = beginOnSession("C_CloseSession", session);
    sessions.remove(session);
    return rv;
}

void ScriptedCard::keepPin(const unsigned char *pin, CK_ULONG length)
{
    anyPinNull = anyPinNull || !pin;
    pins << QByteArray(reinterpret_cast<const char *>(pin), static_cast<int>(length));
}

CK_RV ScriptedCard::login(CK_SESSION_HANDLE session, CK_USER_TYPE user, unsigned char *pin, CK_ULONG length)
{
    keepPin(pin, length);
    return beginOnSession("C_Login", session, QString("user=%1 pin=%2").arg(user).arg(length));
}

CK_RV ScriptedCard::logout(CK_SESSION_HANDLE session)
{
    return beginOnSession("C_Logout", session);
}

CK_RV ScriptedCard::setPin(CK_SESSION_HANDLE session, unsigned char *oldPin, CK_ULONG oldLength, unsigned char *newPin,
                           CK_ULONG newLength)
{
    keepPin(oldPin, oldLength);
    keepPin(newPin, newLength);
    return beginOnSession("C_SetPIN", session, QString("old=%1 new=%2").arg(oldLength).arg(newLength));
}

CK_RV ScriptedCard::initPin(CK_SESSION_HANDLE session, unsigned char *pin, CK_ULONG length)
{
    keepPin(pin, length);
    return beginOnSession("C_InitPIN", session, QString("new=%1").arg(length));
}

CK_RV ScriptedCard::findObjectsInit(CK_SESSION_HANDLE session, CK_ATTRIBUTE *pattern, CK_ULONG count)
{
    const QString arguments = QString(pattern ? "given %1" : "null %1").arg(count);
    const CK_RV rv = beginOnSession("C_FindObjectsInit", session, arguments);
    if (rv != CKR_OK)
        return rv;
    Search &search = sessions[session];
    if (search.active)
        return CKR_OPERATION_ACTIVE;
    search.active = true;
    search.next = 0;
    return CKR_OK;
}

CK_RV ScriptedCard::findObjects(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE *objects, CK_ULONG max, CK_ULONG *count)
{
    const CK_RV rv = beginOnSession("C_FindObjects", session, QString("max=%1").arg(max));
    if (rv != CKR_OK)
        return rv;
    Search &search = sessions[session];
    if (!search.active)
        return CKR_OPERATION_NOT_INITIALIZED;
    const ScriptedSlot *slot = slotOf(search.slot);
    *count = slot && search.next < slot->objects.size() ? 1 : 0;
    if (*count)
        *objects = ++search.next;
    return onFindObjects ? onFindObjects(count) : CKR_OK;
}

CK_RV ScriptedCard::findObjectsFinal(CK_SESSION_HANDLE session)
{
    const CK_RV rv = beginOnSession("C_FindObjectsFinal", session);
    if (rv != CKR_OK)
        return rv;
    Search &search = sessions[session];
    if (!search.active)
        return CKR_OPERATION_NOT_INITIALIZED;
    search.active = false;
    return CKR_OK;
}

CK_RV ScriptedCard::getAttributeValue(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object, CK_ATTRIBUTE *attributes,
                                      CK_ULONG count)
{
    const QString name = attributeName(attributes->type);
    const QString arguments = QString("%1 %2 %3").arg(object).arg(name, attributes->pValue ? "given" : "null");
    CK_RV rv = beginOnSession("C_GetAttributeValue", session, count == 1 ? arguments : arguments + " and more");
    // A fault may also be set for one attribute: "C_GetAttributeValue.LABEL".
    if (const std::optional<CK_RV> fault = takeFault("C_GetAttributeValue." + name))
        rv = *fault;
    if (rv != CKR_OK)
        return rv;
    return onAttribute ? onAttribute(attributes) : answerAttribute(session, object, attributes);
}

CK_RV ScriptedCard::answerAttribute(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object, CK_ATTRIBUTE *attribute)
{
    const ScriptedSlot *slot = slotOf(sessions[session].slot);
    if (!slot || object == 0 || object > slot->objects.size())
        return CKR_OBJECT_HANDLE_INVALID;
    const ScriptedObject &asked = slot->objects[object - 1];
    QByteArray value = attribute->type == CKA_LABEL ? asked.label : asked.value;
    if (attribute->type == CKA_CLASS)
        value = QByteArray(reinterpret_cast<const char *>(&asked.objectClass), sizeof asked.objectClass);
    const CK_ULONG room = attribute->ulValueLen;
    attribute->ulValueLen = static_cast<CK_ULONG>(value.size());
    if (!attribute->pValue)
        return CKR_OK;
    if (room < attribute->ulValueLen) {
        attribute->ulValueLen = CK_UNAVAILABLE_INFORMATION;
        return CKR_BUFFER_TOO_SMALL;
    }
    std::memcpy(attribute->pValue, value.constData(), static_cast<std::size_t>(value.size()));
    return CKR_OK;
}

CK_RV ScriptedCard::other()
{
    trace << "other";
    return CKR_FUNCTION_NOT_SUPPORTED;
}
