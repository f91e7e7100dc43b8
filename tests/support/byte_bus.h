#pragma once

#include "ipc/ipc_base.h"

#include <QCoreApplication>
#include <QList>

#include <memory>

// A transport that keeps every byte: what a program sends lies in `sent` until it is carried to another program's
// `receive`. For exchanges whose raw bytes the shared segments would change.
class ByteBusProgram : public IpcBase {
public:
    explicit ByteBusProgram(const QByteArray &address) : ownName(address)
    {
        connect(this, &IpcBase::received, this, [this](const IpcMsg &message) { heard << message; });
    }

    QByteArray name() const override { return ownName; }

    bool send(IpcMsg message) override
    {
        if (message.from().isEmpty())
            message.setFrom(ownName);
        if (!message.hasPayload() || !prepareMsg(message) || deaf)
            return false;
        sent << message.serialize();
        return true;
    }

    // Hands over all that lies there, oldest first.
    void carryTo(ByteBusProgram &other)
    {
        while (!sent.isEmpty())
            other.receive(IpcMsg(sent.takeFirst()));
    }

    // As the asking side does once it has worked out the key.
    void keepKey(const QByteArray &id, const QByteArray &key) { crypto.storeKey(id, key); }

    QList<QByteArray> sent;
    QList<IpcMsg> heard;
    bool deaf = false;

private:
    QByteArray ownName;
};

// Two that talk over it, and the replies that came to the test's slot.
struct ByteBusPair {
    std::unique_ptr<ByteBusProgram> manager;
    std::unique_ptr<ByteBusProgram> monitor;
    QList<IpcMsg> replies;

    void renew()
    {
        manager = std::make_unique<ByteBusProgram>("velmor_manager");
        monitor = std::make_unique<ByteBusProgram>("velmor_monitor");
        replies.clear();
    }
};
