#pragma once

#include <QByteArray>
#include <QMap>
#include <QMetaType>
#include <QVariant>

// One message between the programs of the family: what it says, addressing included, and the name of the key that
// encrypts it. Registered as a meta type so that it can travel through queued signals.
class IpcMsg {
public:
    IpcMsg() = default;

private:
    QMap<QByteArray, QVariant> params;
    QByteArray encryptionId;
};

Q_DECLARE_METATYPE(IpcMsg)
