#pragma once

#include "base/crypto.h"
#include "base/ipc_msg.h"

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QTimer>

// The layer between the commands and any transport: who a message is for, replies to requests, encrypted messages, and
// the answering half of the key agreement. What it does not understand is logged and dropped, never answered. One
// object a process, on the window's thread; docs/messages.md shows the exchanges byte by byte.
class IpcBase : public QObject {
    Q_OBJECT

public:
    explicit IpcBase(QObject *parent = nullptr);

    // Own address on the bus, the key of the own segment.
    virtual QByteArray name() const = 0;

    // For the transport. Encrypts a message that has an encryption id; false if that failed.
    bool prepareMsg(IpcMsg &message) const;
    // For the transport: what has arrived.
    void receive(IpcMsg message);

    // The answer goes to the sender of the request, under the same key.
    bool sendResponse(const IpcMsg &request, IpcMsg answer);

    // Sends with an address for the reply, which is handed to `slot` (in SLOT() form, one argument IpcMsg) of the
    // receiver; after five seconds without one, a message with the one entry TIMEOUT is. One request at a time: false
    // while one is open, or if the message could not be sent.
    bool sendReceive(IpcMsg message, QObject *receiver, const char *slot);
    void sendReceiveFin(const IpcMsg &message);

public slots:
    // False if it was not delivered; nobody tries again.
    virtual bool send(IpcMsg message) = 0;
    void sendReceiveTimeout();
    void msgToCan(IpcMsg message);
    void msgToCtk(IpcMsg message);
    void msgToManager(IpcMsg message);
    void msgToMonitor(IpcMsg message);

signals:
    void received(const IpcMsg &message);
    // Emitted by nobody; kept as part of the interface.
    void receivedTimed(const IpcMsg &message);

private:
    void receiveReply(const IpcMsg &message);
    void answerKeyExchange(const IpcMsg &message);
    void receiveEncrypted(IpcMsg message, const QByteArray &id);
    void sendTo(const char *program, IpcMsg message);

    bool waiting = false;
    QTimer timer;
    QByteArray requestId;
    QPointer<QObject> replyReceiver;
    QByteArray replySlot;

protected:
    Crypto crypto;
};

// Hands on what is addressed to a name, and drops the rest.
class IpcProxy : public QObject {
    Q_OBJECT

public:
    IpcProxy(IpcBase *base, const QByteArray &name, QObject *parent = nullptr);

public slots:
    void _received(const IpcMsg &message);

private:
    IpcBase *target;
    QByteArray ownName;
};

// "velmor_manager" for "Manager", and so on: a program's segment and its address.
QByteArray segmentKey(const QByteArray &program);
