#include "base/ipc_msg.h"

#include "base/closing_tags.h"
#include "base/common.h"

namespace {

// Commands whose value is a CAN.
constexpr const char *secretKeys[] = { "checkCan", "setCanToVerify", "setCanVerified" };

QByteArray bytesOf(const QVariant &value)
{
    if (value.type() == QVariant::Bool)
        return QByteArray::number(value.toInt());
    return value.toByteArray();
}

bool holdsCan(const QByteArray &key, const QByteArray &value)
{
    for (const char *secret : secretKeys) {
        // A whole message as a value of another would bring its CAN along.
        if (key == secret || value.contains(QByteArray(secret) + '>'))
            return true;
    }
    return false;
}

QByteArray sizeNote(const QByteArray &value)
{
    return '(' + QByteArray::number(value.size()) + "b)";
}

QByteArray shortenedText(const QByteArray &text)
{
    constexpr int longest = 35;
    constexpr int cut = 8;
    if (text.size() <= longest)
        return text;
    const int firstBlank = text.indexOf(' ');
    const int lastBlank = text.lastIndexOf(' ');
    const QByteArray start = firstBlank >= 4 && firstBlank <= 11 ? text.left(firstBlank) : text.left(cut);
    const QByteArray end = lastBlank > 3 && text.size() - lastBlank >= 2 ? text.mid(lastBlank) : text.right(cut);
    return start + "..." + end + sizeNote(text);
}

QByteArray shortenedHex(const QByteArray &bytes)
{
    constexpr int longest = 16;
    constexpr int cut = 6;
    const QByteArray hex = bytes.toHex();
    const QByteArray shown = hex.size() <= longest ? hex : hex.left(cut) + "..." + hex.right(cut);
    return shown + sizeNote(bytes);
}

QByteArray forLog(const QByteArray &key, const QByteArray &value)
{
    if (holdsCan(key, value))
        return "#";
    return Common::isPrintableUtf8(value) ? shortenedText(value) : shortenedHex(value);
}

} // namespace

QByteArray IpcMsg::keyForLog(const QByteArray &key)
{
    return Common::isPrintableUtf8(key) ? key : key.toHex();
}

IpcMsg::IpcMsg(std::initializer_list<Entry> entries)
{
    for (const Entry &entry : entries)
        setParam(entry.first, entry.second);
}

IpcMsg::IpcMsg(const QByteArray &text)
{
    const ClosingTags closingTags(text);
    int position = 0;
    while (position < text.size()) {
        const int open = text.indexOf('<', position);
        const int keyEnd = open < 0 ? -1 : closingTags.endOfTag(open);
        if (keyEnd < 0)
            return;
        const int close = closingTags.find(open + 1, keyEnd);
        if (close < 0) {
            // From the opening bracket on it will not be one either; what stands before it is no entry.
            position = open + 1;
            continue;
        }
        const QByteArray key = text.mid(open + 1, keyEnd - open - 1);
        params.insert(key, text.mid(keyEnd + 1, close - keyEnd - 1));
        position = close + key.size() + 3;
    }
}

QByteArray IpcMsg::param(const QByteArray &key) const
{
    return bytesOf(params.value(key));
}

void IpcMsg::setParam(const QByteArray &key, const QVariant &value)
{
    params.insert(key, value);
}

void IpcMsg::removeParam(const QByteArray &key)
{
    params.remove(key);
}

void IpcMsg::clearParams()
{
    params.clear();
}

QList<QByteArray> IpcMsg::payloadKeys() const
{
    QList<QByteArray> payload;
    for (auto it = params.begin(); it != params.end(); ++it) {
        if (it.key() != "from" && it.key() != "to" && it.key() != "reply")
            payload << it.key();
    }
    return payload;
}

QString IpcMsg::shmKey() const
{
    const QByteArray address = to();
    const int slash = address.indexOf('/');
    return QString::fromLatin1(slash < 0 ? address : address.left(slash));
}

QByteArray IpcMsg::serialize() const
{
    QByteArray text;
    for (auto it = params.begin(); it != params.end(); ++it)
        text += '<' + it.key() + '>' + bytesOf(it.value()) + "</" + it.key() + '>';
    return text;
}

QString IpcMsg::toString() const
{
    QByteArray text;
    for (auto it = params.begin(); it != params.end(); ++it)
        text += (text.isEmpty() ? "" : ", ") + keyForLog(it.key()) + ':' + forLog(it.key(), bytesOf(it.value()));
    return QString::fromUtf8(text.constData(), text.size());
}
