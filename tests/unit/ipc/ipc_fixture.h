#pragma once

#include "app/app.h"
#include "ipc/ipc.h"

#include "support/raw_inbox.h"
#include "support/testmain.h"

#include <memory>

// Two programs on the bus inside one process, one that sends and one that may listen.
class IpcFixture : public QObject {
protected:
    static constexpr char inboxKey[] = "velmor_monitor";
    static constexpr int agreedSize = 500;

    void openBus()
    {
        receiver = std::make_unique<Ipc>();
        sender = std::make_unique<Ipc>();
        sender->setName("velmor_can");
        heard.clear();
    }

    void leaveBus()
    {
        receiver.reset();
        sender.reset();
        App::instance()->unlock();
    }

    void keepWhatIsHeard()
    {
        connect(receiver.get(), &Ipc::received, this, [this](const IpcMsg &message) { heard << message; });
    }

    void listen()
    {
        receiver->setName(inboxKey);
        keepWhatIsHeard();
        receiver->start();
    }

    // A message whose text form has this size.
    static IpcMsg messageOfSize(int size, char fill = 'x')
    {
        IpcMsg message { { "from", "f" }, { "to", inboxKey }, { "k", "" } };
        message.setParam("k", QByteArray(size - message.serialize().size(), fill));
        return message;
    }

    static bool segmentExists(const char *key)
    {
        QSharedMemory memory(QString::fromLatin1(key));
        return memory.attach();
    }

    std::unique_ptr<Ipc> receiver;
    std::unique_ptr<Ipc> sender;
    QList<IpcMsg> heard;
};
