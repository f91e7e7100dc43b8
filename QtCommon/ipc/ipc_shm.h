#pragma once

#include "ipc/ipc_base.h"

#include <QByteArray>
#include <QSharedMemory>
#include <QSharedPointer>

class App;

// Messages through shared-memory segments. Each program owns one segment, named by its address, as its inbox: one
// message from byte 0 on, without header, ended by the first zero byte. A zero in byte 0 says that the inbox is free.
// The owner looks into it ten times a second and wipes it; a sender waits until it is free. The segment's own lock
// guards every access; what is in it may have been written by anybody.
//
// A segment has 500 bytes, or more where the system hands out whole pages: a longer message is cut, not refused.
class IpcShm : public IpcBase {
    Q_OBJECT

public:
    explicit IpcShm(QObject *parent = nullptr);
    ~IpcShm() override;

    QByteArray name() const override { return ownName; }
    // The address alone: enough for a program that only sends.
    void setName(const QByteArray &address) { ownName = address; }
    // Name and inbox are those of the single-instance lock, which goes on owning the segment.
    void useLock(const App &app);

public slots:
    // Opens the inbox and polls it. Not within 100 ms of a `stop`: the old poll would come back to life beside the new.
    void start();
    void stop();
    void listenLoop();
    // Blocks for up to 2.4 s while the receiver's inbox is full. False if it stays so or if there is none.
    bool send(IpcMsg message) override;

private:
    bool attachOrCreate();
    QByteArray takeText();
    bool deliver(QSharedMemory &inbox, const QByteArray &bytes) const;

    QByteArray ownName;
    int size;
    bool running = false;
    bool owner = true;
    QSharedPointer<QSharedMemory> memory;
};
