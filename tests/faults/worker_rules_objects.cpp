// Sessions and the reading of objects among the rules of the card worker.
#include "faults/trace_words.h"
#include "faults/worker_rules.h"

#include <p11-kit/pkcs11.h>

#include <algorithm>

namespace {

constexpr unsigned long sessionHandleInvalid = 0xB3;
constexpr unsigned long longestValue = 16UL * 1024 * 1024;

} // namespace

bool WorkerRules::open(Token &token)
{
    if (!initialize())
        return false;
    const Answer answer = callOnSlot("C_OpenSession", token.slot);
    if (!good(answer))
        return false;
    token.session = argument(*answer, "session").toInt();
    return true;
}

bool WorkerRules::beginSearch(Token *token)
{
    if (!token || (token->session < 1 && !open(*token)))
        return false;
    Answer answer = callOnSession("C_FindObjectsInit", token->session);
    if (answer && answer->result == sessionHandleInvalid) {
        // The library was ended since, and its sessions with it.
        open(*token);
        answer = callOnSession("C_FindObjectsInit", token->session);
    }
    return good(answer);
}

const sim::Object *WorkerRules::objectOf(Answer asked, const char *container) const
{
    const auto card = cards.find(argument(*asked, "reader").toStdString());
    if (card == cards.end())
        return nullptr;
    const auto objects = card->second.objects.find(container);
    const std::size_t number = argument(*asked, "object").toULong() % 1000;
    const bool known = objects != card->second.objects.end() && number >= 1 && number <= objects->second.size();
    return known ? &objects->second[number - 1] : nullptr;
}

// One that cannot be read counts as data.
int WorkerRules::objectClass(const Token &token, const char *container)
{
    const Answer answer = callOnSession("C_GetAttributeValue", token.session);
    if (answer && argument(*answer, "attribute") != "CLASS")
        complain("the class of an object was not asked for first");
    const sim::Object *object = good(answer) ? objectOf(answer, container) : nullptr;
    return object ? int(object->objectClass) : 0;
}

QByteArray WorkerRules::attribute(const Token &token, const char *container, const char *name)
{
    const Answer size = callOnSession("C_GetAttributeValue", token.session);
    if (size && (argument(*size, "attribute") != name || argument(*size, "buffer") != "null"))
        complain(QString("the size of %1 was not asked for").arg(name));
    const qulonglong room = size ? argument(*size, "length").toULongLong() : 0;
    if (!good(size) || room > longestValue)
        return {};
    const Answer answer = callOnSession("C_GetAttributeValue", token.session);
    if (answer && (argument(*answer, "attribute") != name || argument(*answer, "buffer") != "given"))
        complain(QString("%1 was not asked for").arg(name));
    const qulonglong written = answer ? argument(*answer, "length").toULongLong() : 0;
    if (!good(answer) || written == ~0ULL)
        return {};
    const sim::Object *object = objectOf(answer, container);
    QByteArray value =
        object ? QByteArray::fromStdString(qstrcmp(name, "LABEL") == 0 ? object->label : object->value) : QByteArray();
    const int length = int(std::min(written, room));
    // What lies behind the value in the buffer are zeros.
    return value.size() < length ? value + QByteArray(length - value.size(), '\0') : value.left(length);
}

int WorkerRules::countOf(const QString &reader, const char *container)
{
    Token *token = find(reader, container);
    if (!beginSearch(token))
        return 0;
    int count = 0;
    while (!lost) {
        const Answer found = callOnSession("C_FindObjects", token->session);
        if (!good(found) || argument(*found, "count") == "0")
            break;
        count += objectClass(*token, container) == CKO_CERTIFICATE;
    }
    callOnSession("C_FindObjectsFinal", token->session);
    return count;
}

WorkerRules::Counts WorkerRules::certsCount(const QString &reader)
{
    Counts counts;
    counts.pres = countOf(reader, sim::Presence);
    counts.auth = countOf(reader, sim::Authentication);
    counts.author = countOf(reader, sim::Authorization);
    counts.qual = countOf(reader, sim::Qualified);
    return counts;
}

QList<WorkerRules::Found> WorkerRules::objects(const QString &reader, const char *container, int wantedClass,
                                               const QStringList &names)
{
    QList<Found> result;
    Token *token = find(reader, container);
    if (!beginSearch(token))
        return result;
    while (!lost) {
        const Answer found = callOnSession("C_FindObjects", token->session);
        if (!good(found))
            return result; // and the search stays open, unlike where certificates are counted
        if (argument(*found, "count") == "0")
            break;
        if (objectClass(*token, container) != wantedClass)
            continue;
        const QByteArray bytes = attribute(*token, container, "LABEL");
        const QString label = cutAtTheEnd(QString::fromUtf8(bytes.constData(), bytes.size()));
        if (label.isEmpty() || (!names.isEmpty() && !names.contains(label)))
            continue;
        const QByteArray value = attribute(*token, container, "VALUE");
        if (value.isEmpty())
            continue;
        result.append({ label, value });
        if (!names.isEmpty() && result.size() >= names.size())
            break;
    }
    callOnSession("C_FindObjectsFinal", token->session);
    return result;
}

QMap<QString, QByteArray> WorkerRules::groups(const QString &reader, const QStringList &names)
{
    QMap<QString, QByteArray> result;
    for (const char *container : { sim::Emrtd, sim::Presence }) {
        for (const Found &found : objects(reader, container, CKO_DATA, names))
            result.insert(found.label, found.value);
        if (!result.isEmpty())
            break;
    }
    return result;
}

WorkerRules::Certs WorkerRules::certs(const QString &reader, bool auth, bool pres, bool author, bool qual)
{
    const auto read = [&](bool wanted, const char *container) {
        QByteArrayList values;
        if (wanted) {
            for (const Found &found : objects(reader, container, CKO_CERTIFICATE, {}))
                values << found.value;
        }
        return values;
    };
    Certs result;
    result.auth = read(auth, sim::Authentication).value(0);
    result.pres = read(pres, sim::Presence).value(0);
    result.author = read(author, sim::Authorization).value(0);
    result.qual = read(qual, sim::Qualified);
    return result;
}

QByteArray WorkerRules::photo(const QString &reader)
{
    return groups(reader, { "DG2" }).value("DG2");
}
