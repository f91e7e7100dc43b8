#include "card/pkcs11.h"

#include "app/app.h"
#include "base/common.h"
#include "card/cryptoki.h"
#include "card/token.h"

#include <QDebug>
#include <QLibrary>
#include <QThread>

#include <algorithm>
#include <new>

namespace {

// Far above any real computer; a larger count is nonsense and must not become an allocation.
constexpr CK_ULONG maxSlots = 0x10000;

// The entries that this program calls. A table with a gap in one of them is as good as none.
bool isComplete(const CK_FUNCTION_LIST *list)
{
    return list && list->C_Initialize && list->C_Finalize && list->C_GetSlotList && list->C_GetSlotInfo
        && list->C_GetTokenInfo && list->C_OpenSession && list->C_CloseSession && list->C_Login && list->C_Logout
        && list->C_SetPIN && list->C_InitPIN && list->C_FindObjectsInit && list->C_FindObjects
        && list->C_FindObjectsFinal && list->C_GetAttributeValue;
}

// A text field of a Cryptoki structure: UTF-8, not terminated, filled with blanks.
template <std::size_t size>
QString fieldText(const CK_UTF8CHAR (&field)[size])
{
    return cutTrailingSpace(QString::fromUtf8(reinterpret_cast<const char *>(field), static_cast<int>(size)));
}

Slot readSlot(const Cryptoki &cryptoki, CK_SLOT_ID id)
{
    Slot slot;
    slot.id = static_cast<quint32>(id);
    CK_SLOT_INFO told = {};
    if (cryptoki.functions->C_GetSlotInfo(id, &told) == CKR_OK) {
        slot.name = fieldText(told.slotDescription).remove(QChar(0));
        slot.flags = static_cast<quint32>(told.flags);
    }
    return slot;
}

} // namespace

Pkcs11::Pkcs11() = default;

Pkcs11::~Pkcs11()
{
    tokens.clear();
    // Also if it was never initialised or is finalised already: the library answers that with an error of its own.
    if (cryptoki)
        cryptoki->functions->C_Finalize(NULL_PTR);
    if (library)
        library->unload();
}

void Pkcs11::checkThread()
{
    if (!thread)
        thread = QThread::currentThreadId();
    Q_ASSERT_X(thread == QThread::currentThreadId(), "Pkcs11", "touched from a second thread");
}

int Pkcs11::error(const QString &message, int code) const
{
    qDebug().noquote() << "Pkcs11 err: " << message;
    return code;
}

int Pkcs11::init()
{
    checkThread();
    app = App::instance();
    if (loaded)
        return 0;
    qDebug().noquote() << "init()";
    libraryPath = app->pkcsLibPath("x86_64");
    if (libraryPath.isEmpty())
        return error("Nie odnaleziono biblioteki pkcs11", -1);
    return loadLibrary();
}

int Pkcs11::loadLibrary()
{
    qDebug().noquote() << "Loading: " << libraryPath;
    library.reset(new (std::nothrow) QLibrary(libraryPath));
    if (!library)
        return error("#1 Nie można załadować biblioteki: " + libraryPath, -1);
    if (!library->load()) {
        // Qt's own translated text begins as ours does.
        QString reason = library->errorString().remove("Nie można załadować biblioteki");
        if (!reason.contains(libraryPath))
            reason.prepend(libraryPath + ' ');
        return error("#2 Nie można załadować biblioteki: " + reason, -1);
    }
    const auto getFunctionList = reinterpret_cast<CK_C_GetFunctionList>(library->resolve("C_GetFunctionList"));
    if (!getFunctionList)
        return loadFailed("#3 Nie można załadować biblioteki: ");
    CK_FUNCTION_LIST *functions = nullptr;
    if (getFunctionList(&functions) != CKR_OK || !isComplete(functions))
        return loadFailed("#4 Nie można załadować biblioteki: ");
    cryptoki.reset(new Cryptoki { functions });
    loaded = true;
    return 0;
}

int Pkcs11::loadFailed(const QString &message)
{
    // Unloading clears the reason.
    const QString reason = library->errorString();
    library->unload();
    return error(message + reason, -1);
}

int Pkcs11::initialize()
{
    checkThread();
    if (initialized)
        return 0;
    const int result = init();
    if (result != 0)
        return result;
    qDebug().noquote() << "C_initialize()";
    const CK_RV rv = cryptoki->functions->C_Initialize(NULL_PTR);
    initialized = rv == CKR_OK;
    return static_cast<int>(rv);
}

void Pkcs11::finalize()
{
    checkThread();
    if (!initialized)
        return;
    qDebug().noquote() << "C_finalize()";
    initialized = false;
    cryptoki->functions->C_Finalize(NULL_PTR);
}

bool Pkcs11::detectSlots()
{
    slotList.clear();
    qDebug().noquote() << "C_GetSLotList()";
    if (initialize() != 0)
        return false;
    CK_ULONG count = 0;
    CK_RV rv = cryptoki->functions->C_GetSlotList(CK_FALSE, nullptr, &count);
    qDebug().noquote() << "Found slots: " << count;
    std::unique_ptr<CK_SLOT_ID[]> ids;
    const CK_ULONG room = count;
    if (rv == CKR_OK && room <= maxSlots)
        ids.reset(new (std::nothrow) CK_SLOT_ID[room]());
    if (ids)
        rv = cryptoki->functions->C_GetSlotList(CK_FALSE, ids.get(), &count);
    if (!ids || rv != CKR_OK) {
        qDebug().noquote() << "Błąd podczas pobierania listy slotów.";
        return false;
    }
    // Readers may have gone between the two calls, and no answer reaches behind the array.
    const CK_ULONG written = std::min(count, room);
    for (CK_ULONG i = 0; i < written; ++i) {
        slotList.push_back(readSlot(*cryptoki, ids[i]));
        qDebug().noquote() << describeSlot(slotList.back(), true, true);
    }
    return true;
}

void Pkcs11::detectTokens()
{
    checkThread();
    std::vector<std::unique_ptr<Token>> detected;
    for (const Slot &slot : slotList) {
        if (slot.id == noSlotId || slot.name.contains("Virtual hotplug slot") || !slot.name.contains(selectedReader))
            continue;
        std::unique_ptr<Token> token = readToken(slot);
        if (!token)
            continue;
        qDebug().noquote() << describeToken(*token, true, true);
        const Token *known = findToken(token->name, token->label, static_cast<qint32>(token->slotId), -1, 0);
        const auto kept = std::find_if(tokens.begin(), tokens.end(),
                                       [known](const auto &candidate) { return known && candidate.get() == known; });
        if (kept != tokens.end()) {
            (*kept)->slotFlags = token->slotFlags;
            (*kept)->tokenFlags = token->tokenFlags;
            token = std::move(*kept);
        }
        detected.push_back(std::move(token));
    }
    // What has not moved over is gone from the reader.
    for (const std::unique_ptr<Token> &token : tokens) {
        if (!token)
            continue;
        qDebug().noquote() << "remove token " << describeToken(*token, false, false);
        sessionClose(token.get());
    }
    tokens = std::move(detected);
}

std::unique_ptr<Token> Pkcs11::readToken(const Slot &slot) const
{
    auto token = std::make_unique<Token>();
    token->name = Common::readerName(slot.name);
    token->slotId = slot.id;
    token->slotFlags = slot.flags;
    CK_TOKEN_INFO info = {};
    const CK_RV rv = cryptoki->functions->C_GetTokenInfo(slot.id, &info);
    if (rv == CKR_OK) {
        token->label = fieldText(info.label);
        token->tokenFlags = static_cast<quint32>(info.flags);
    } else if (rv != CKR_TOKEN_NOT_PRESENT && rv != CKR_TOKEN_NOT_RECOGNIZED) {
        return nullptr;
    }
    return token;
}

std::vector<Token *> Pkcs11::findTokens(const QString &name, const QString &label, qint32 slotId, qint32 session,
                                        quint32 slotFlags) const
{
    std::vector<Token *> hits;
    const QString wanted = cutTrailingSpace(name);
    if (wanted.isEmpty())
        return hits;
    for (const std::unique_ptr<Token> &token : tokens) {
        // Empty while detectTokens moves tokens to its new list.
        if (token && matches(*token, wanted, label, slotId, session, slotFlags))
            hits.push_back(token.get());
    }
    return hits;
}

Token *Pkcs11::findToken(const QString &name, const QString &label, qint32 slotId, qint32 session,
                         quint32 slotFlags) const
{
    const std::vector<Token *> hits = findTokens(name, label, slotId, session, slotFlags);
    return hits.empty() ? nullptr : hits.front();
}

bool Pkcs11::readers(QStringList &out, unsigned long requireFlag, unsigned long nonRequiredFlag)
{
    out.clear();
    if (initialize() != 0) {
        qDebug().noquote() << "initialize failed !";
        return false;
    }
    detectSlots();
    const quint32 required = static_cast<quint32>(requireFlag);
    const quint32 refused = static_cast<quint32>(nonRequiredFlag);
    for (const Slot &slot : slotList) {
        const QString name = Common::readerName(slot.name);
        if (out.contains(name))
            continue;
        // 0 is no condition on the left and bars everything on the right; callers rely on the second as well.
        if ((required == 0 || (slot.flags & required)) && refused != 0 && !(slot.flags & refused))
            out << name;
    }
    if (out.isEmpty() && required != 0)
        qDebug().noquote() << "no slots with flag: " << statusWords(slotStatusNames(), required);
    return true;
}

bool Pkcs11::selectReader(const QString &reader)
{
    qDebug().noquote() << "select reader: " << reader;
    selectedReader = reader;
    detectTokens();
    const bool usable = std::any_of(tokens.begin(), tokens.end(), [&reader](const std::unique_ptr<Token> &token) {
        return token->name == reader && (token->tokenFlags & CKF_TOKEN_INITIALIZED)
            && !(token->tokenFlags & tokenWaitCan) && !token->label.contains('(');
    });
    if (usable || findToken(reader, "(", -1, -1, 0)) {
        qDebug().noquote() << "select reader success";
        return true;
    }
    qDebug().noquote() << "select reader failed";
    selectedReader = "null";
    return false;
}
