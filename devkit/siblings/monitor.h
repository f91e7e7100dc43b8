#pragma once

#include "ipc/ipc.h"
#include "siblings/world_watcher.h"

#include <QObject>
#include <QString>

#include <vector>

class App;

// The stand-in of the resident Monitor: watches the simulated readers and tells Manager of each change, answers its
// questions, plays an update, and starts the program that asks for a CAN.
//
// Commands: getReadersWithPace, diagnoseReaders, updateApp as Manager sends them; canAppStatus from Can; close ends it;
// offerUpdate, which only the stand-in knows, makes an update available.
class Monitor : public QObject {
    Q_OBJECT

public:
    explicit Monitor(App &app);

signals:
    void finished();

private:
    void receive(const IpcMsg &message);
    void tellChanges();
    void tellReaders(const std::vector<sim::Reader> &readers);
    void tellReadersNow();
    void tellDiagnosis();
    void setCanStatus(const QByteArray &status);
    void offerUpdate();
    void startUpdate();
    void endUpdate();
    void storeUpdateState(bool available, bool inProgress);
    void startCanFor(const std::vector<sim::Reader> &readers);

    App &app;
    WorldWatcher watcher;
    Ipc ipc;
    long lastEvent;
    bool canWanted = false;
    QByteArray canStatus;
};

// A list cut after its last entry that a message has room for.
QByteArray readersThatFit(const QByteArray &list);

// A few lines on each reader, cut to what a message has room for.
QByteArray diagnosis(const std::vector<sim::Reader> &readers);
