#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QMetaType>
#include <QPair>
#include <QString>
#include <QVariant>

#include <initializer_list>

// One message between the programs of the family: what it says, addressing included, and the id of the key that
// encrypts it (empty: plain). Registered as a meta type so that it can travel through queued signals.
//
// Text form: each entry as "<key>value</key>", one after the other in the order of the keys' bytes, without separator,
// header, length or escaping; a value that holds the closing tag of its own key ends there. docs/messages.md has
// examples. Types do not survive the trip: every value is read back as a QByteArray.
class IpcMsg {
public:
    using Entry = QPair<QByteArray, QVariant>;

    IpcMsg() = default;
    // A later duplicate wins.
    IpcMsg(std::initializer_list<Entry> entries);
    // Reads the text form. Whatever is not an entry is skipped in silence. The time is linear in the size.
    explicit IpcMsg(const QByteArray &text);

    // Empty when missing; a bool gives "0" or "1".
    QByteArray param(const QByteArray &key) const;
    void setParam(const QByteArray &key, const QVariant &value);
    void removeParam(const QByteArray &key);
    // Keeps the encryption id.
    void clearParams();

    QByteArray from() const { return param("from"); }
    void setFrom(const QByteArray &value) { setParam("from", value); }
    QByteArray to() const { return param("to"); }
    void setTo(const QByteArray &value) { setParam("to", value); }
    void setRes(bool value) { setParam("res", value); }
    // Only "0" refuses an answer.
    bool wantsReply() const { return param("reply") != "0"; }

    QByteArray encryptionId() const { return encId; }
    void setEncryptionId(const QByteArray &id) { encId = id; }

    QList<QByteArray> keys() const { return params.keys(); }
    // Without addressing and `reply`: the commands.
    QList<QByteArray> payloadKeys() const;
    bool hasPayload() const { return !payloadKeys().isEmpty(); }
    bool isEmpty() const { return !hasPayload(); }

    // Key of the segment that the message goes to: `to` without what follows its first "/".
    QString shmKey() const;

    QByteArray serialize() const;

    // For the log: "key:value" with long values shortened, binary ones in hexadecimal, and "#" for what could be a CAN.
    QString toString() const;
    // A key as it may stand in the log: one that is not printable, which could write lines of its own, in hexadecimal.
    static QByteArray keyForLog(const QByteArray &key);

private:
    QMap<QByteArray, QVariant> params;
    QByteArray encId;
};

Q_DECLARE_METATYPE(IpcMsg)
