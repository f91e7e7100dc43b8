#include "faults/worker_rules.h"
#include "faults/trace_words.h"

#include <p11-kit/pkcs11.h>

#include <algorithm>

namespace {

constexpr unsigned long tokenNotPresent = 0xE0;
constexpr unsigned long tokenNotRecognized = 0xE1;
constexpr unsigned long alreadyInitialized = 0x191;

constexpr int mostSlots = 0x10000;

// A field of the trace, in hexadecimal digits.
QString field(const sim::TraceEntry &entry, const char *name)
{
    const QByteArray bytes = QByteArray::fromHex(argument(entry, name).toLatin1());
    return cutAtTheEnd(QString::fromUtf8(bytes.constData(), bytes.size()));
}

QString readerOf(const QString &slot)
{
    return slot.section(" #", 0, 0);
}

int chipOf(quint32 flags)
{
    const struct {
        quint32 flag;
        int chip;
    } rows[] = { { 0x2000, 2 }, { 0x40000, 4 }, { 0x80000, 16 }, { 0x100000, 8 }, { 0x200000, 8 } };
    for (const auto &row : rows) {
        const quint32 wanted = row.flag | 0x88000000;
        if ((flags & wanted) == wanted)
            return row.chip;
    }
    return 0;
}

int triesOf(quint32 flags)
{
    if (!(flags & CKF_USER_PIN_INITIALIZED) || (flags & CKF_USER_PIN_TO_BE_CHANGED))
        return 4;
    return flags & CKF_USER_PIN_LOCKED   ? 0
        : flags & CKF_USER_PIN_FINAL_TRY ? 1
        : flags & CKF_USER_PIN_COUNT_LOW ? 2
                                         : 3;
}

int pukTriesOf(quint32 flags)
{
    if (flags & CKF_SO_PIN_TO_BE_CHANGED)
        return 4;
    return flags & CKF_SO_PIN_LOCKED ? 0 : flags & CKF_SO_PIN_FINAL_TRY ? 1 : flags & CKF_SO_PIN_COUNT_LOW ? 2 : 3;
}

QString wordOf(int tries)
{
    return tries == 4 ? "Nadaj PIN" : tries == 0 ? "Odblokuj PIN" : "Zmień PIN";
}

} // namespace

void WorkerRules::feed(std::vector<sim::TraceEntry> calls)
{
    expectNoMoreCalls();
    trace = std::move(calls);
    next = 0;
}

void WorkerRules::expectNoMoreCalls()
{
    if (!lost && next < trace.size())
        complain("a call that nothing has asked for: " + QString::fromStdString(trace[next].text));
}

void WorkerRules::complain(const QString &text)
{
    if (!lost)
        wrong << text;
    lost = true;
}

WorkerRules::Answer WorkerRules::call(const char *function)
{
    if (lost)
        return nullptr;
    if (next == trace.size()) {
        complain(QString("%1 was not called").arg(function));
        return nullptr;
    }
    const sim::TraceEntry &entry = trace[next++];
    if (entry.function != function) {
        complain(QString("%1 instead of %2").arg(QString::fromStdString(entry.text), function));
        return nullptr;
    }
    return &entry;
}

WorkerRules::Answer WorkerRules::callWith(const char *function, const char *name, const QString &value)
{
    const Answer answer = call(function);
    if (answer && argument(*answer, name) != value)
        complain(QString("%1 with %2 %3 instead of %4").arg(function, name, argument(*answer, name), value));
    return lost ? nullptr : answer;
}

WorkerRules::Answer WorkerRules::callOnSlot(const char *function, quint32 slot)
{
    return callWith(function, "slot", QString::number(slot));
}

// A token without a session gives a handle that no library knows.
WorkerRules::Answer WorkerRules::callOnSession(const char *function, qint32 session)
{
    return callWith(function, "session", QString::number(static_cast<quint32>(session)));
}

bool WorkerRules::initialize()
{
    if (initialized)
        return true;
    if (!loaded && !good(call("C_GetFunctionList")))
        return false;
    loaded = true;
    const Answer answer = call("C_Initialize");
    initialized = good(answer);
    libraryRefusesToStart = answer && answer->result == alreadyInitialized;
    return initialized;
}

bool WorkerRules::detectSlots()
{
    slotList.clear();
    if (!initialize())
        return false;
    const Answer size = callWith("C_GetSlotList", "buffer", "null");
    const qulonglong room = size ? argument(*size, "count").toULongLong() : 0;
    if (!good(size) || room > mostSlots)
        return false;
    const Answer list = callWith("C_GetSlotList", "buffer", "given");
    if (!good(list))
        return false;
    const qulonglong written = std::min(room, argument(*list, "count").toULongLong());
    for (qulonglong i = 0; i < written && !lost; ++i) {
        const Answer answer = call("C_GetSlotInfo");
        if (!answer)
            break;
        Slot slot;
        slot.id = argument(*answer, "slot").toUInt();
        if (good(answer)) {
            slot.name = field(*answer, "name").remove(QChar(0));
            slot.flags = quint32(argument(*answer, "bits").toULongLong());
        }
        slotList.push_back(slot);
    }
    return true;
}

WorkerRules::Readers WorkerRules::readers(quint32 required, quint32 refused)
{
    if (initialized) {
        initialized = false;
        call("C_Finalize");
    }
    if (!initialize())
        return {};
    Readers result { true, {} };
    detectSlots();
    for (const Slot &slot : slotList) {
        const QString name = readerOf(slot.name);
        const bool fits = (required == 0 || (slot.flags & required)) && refused != 0 && !(slot.flags & refused);
        if (fits && !result.names.contains(name))
            result.names << name;
    }
    return result;
}

void WorkerRules::detectTokens()
{
    std::vector<Token> before = std::move(tokens);
    tokens.clear();
    for (const Slot &slot : slotList) {
        if (slot.id == 0xFFFFFFFF || slot.name.contains("Virtual hotplug slot") || !slot.name.contains(selected))
            continue;
        const Answer answer = callOnSlot("C_GetTokenInfo", slot.id);
        if (!answer)
            return;
        if (!good(answer) && answer->result != tokenNotPresent && answer->result != tokenNotRecognized)
            continue;
        Token token { readerOf(slot.name), {}, slot.id, 0, -1 };
        if (good(answer)) {
            token.label = field(*answer, "label");
            token.flags = quint32(argument(*answer, "bits").toULongLong());
        }
        // One that is there already keeps its session and its label.
        const auto same = std::find_if(before.begin(), before.end(), [&token](const Token &known) {
            return !token.reader.isEmpty() && known.reader == token.reader && known.slot == token.slot
                && (token.label.isEmpty() ? known.label.isEmpty() : known.label.contains(token.label));
        });
        if (same != before.end()) {
            token.label = same->label;
            token.session = same->session;
            before.erase(same);
        }
        tokens.push_back(token);
    }
    for (const Token &gone : before) {
        if (gone.session >= 1)
            callOnSession("C_CloseSession", gone.session);
    }
}

WorkerRules::Token *WorkerRules::find(const QString &reader, const QString &part)
{
    const QString wanted = cutAtTheEnd(reader);
    for (Token &token : tokens) {
        if (!wanted.isEmpty() && token.reader == wanted && token.label.contains(part))
            return &token;
    }
    return nullptr;
}

bool WorkerRules::selectReader(const QString &reader)
{
    constexpr quint32 waitsForCan = 0x80;
    selected = reader;
    detectTokens();
    const bool usable = std::any_of(tokens.begin(), tokens.end(), [&reader](const Token &token) {
        return token.reader == reader && (token.flags & CKF_TOKEN_INITIALIZED) && !(token.flags & waitsForCan)
            && !token.label.contains('(');
    });
    if (usable || find(reader, "("))
        return true;
    selected = "null";
    return false;
}

WorkerRules::Pins WorkerRules::pins(const QString &reader)
{
    Pins result { {}, {} };
    int puk = 0;
    for (const char *container : { sim::Authentication, sim::Authorization, sim::Qualified }) {
        Token *token = find(reader, container);
        if (!token) {
            result.words << QString();
            result.tries << 0;
            continue;
        }
        const Answer answer = callOnSlot("C_GetTokenInfo", token->slot);
        token->flags = good(answer) ? quint32(argument(*answer, "bits").toULongLong()) : 0;
        result.tries << triesOf(token->flags);
        result.words << wordOf(result.tries.back());
        if (container == sim::Qualified)
            puk = pukTriesOf(token->flags);
    }
    result.tries << puk;
    return result;
}

WorkerRules::Data WorkerRules::containersAndGroups(const QString &reader)
{
    constexpr quint32 hasPinPad = 0x200;
    Data data;
    data.pins = pins(reader);
    if (const Token *token = find(reader, {})) {
        const Answer answer = callOnSlot("C_GetSlotInfo", token->slot);
        data.pinPad = good(answer) && (argument(*answer, "bits").toULongLong() & hasPinPad);
    }
    const auto slot =
        std::find_if(slotList.begin(), slotList.end(), [&](const Slot &row) { return row.name.contains(reader); });
    data.chip = slot == slotList.end() ? 0 : chipOf(slot->flags);
    data.groups = groups(reader, { "DG1", "DG11", "DG12", "DG13" });
    return data;
}
