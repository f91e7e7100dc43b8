#include "siblings/monitor.h"

#include "app/app.h"
#include "app/app_lock.h"
#include "base/settings.h"
#include "simworld/reader_message.h"

#include <QDebug>
#include <QTimer>

#include <algorithm>
#include <chrono>

namespace {

// Of the 500 bytes of a message, what addresses and tags leave, with something to spare.
constexpr int longestValue = 400;
constexpr std::chrono::seconds updateTime { 2 };

bool waitsForCan(const std::vector<sim::Reader> &readers)
{
    return std::any_of(readers.begin(), readers.end(),
                       [](const sim::Reader &reader) { return !reader.card.empty() && reader.waitCan; });
}

QByteArray describe(const sim::Reader &reader)
{
    QByteArray line = "- " + QByteArray::fromStdString(reader.name) + ": ";
    if (reader.card.empty())
        line += "brak karty";
    else if (!reader.supported)
        line += "karta nieobsługiwana";
    else if (reader.waitCan)
        line += "karta czeka na CAN";
    else
        line += "karta gotowa";
    return line + (reader.pinpad ? ", klawiatura\n" : "\n");
}

} // namespace

QByteArray readersThatFit(const QByteArray &list)
{
    if (list.size() <= longestValue)
        return list;
    return list.left(list.lastIndexOf("||", longestValue - 2) + 2);
}

QByteArray diagnosis(const std::vector<sim::Reader> &readers)
{
    const QByteArray omission = "...\n";
    QByteArray text = "Diagnostyka czytników (symulacja)\nLiczba czytników: "
        + QByteArray::number(static_cast<int>(readers.size())) + '\n';
    for (const sim::Reader &reader : readers) {
        const QByteArray line = describe(reader);
        if (text.size() + line.size() >= longestValue - omission.size())
            return text + omission;
        text += line;
    }
    return text;
}

Monitor::Monitor(App &application) : app(application), lastEvent(watcher.world().lastReaderEvent())
{
    ipc.useLock(app);
    connect(&ipc, &Ipc::received, this, &Monitor::receive);
    connect(&watcher, &WorldWatcher::changed, this, &Monitor::tellChanges);
    connect(&watcher, &WorldWatcher::gone, this, &Monitor::finished);
    ipc.start();
    // Manager may have asked before there was anybody to hear it.
    tellReadersNow();
}

void Monitor::receive(const IpcMsg &message)
{
    static const QMap<QByteArray, void (Monitor::*)()> commands {
        { "close", &Monitor::finished },
        { "diagnoseReaders", &Monitor::tellDiagnosis },
        { "getReadersWithPace", &Monitor::tellReadersNow },
        { "offerUpdate", &Monitor::offerUpdate },
        { "updateApp", &Monitor::startUpdate },
    };
    if (message.to() != ipc.name())
        return;
    for (const QByteArray &key : message.payloadKeys()) {
        const auto command = commands.find(key);
        if (command != commands.end())
            (this->**command)();
        else if (key == "canAppStatus")
            setCanStatus(message.param(key));
        else
            qDebug().noquote() << "unknown ipc " << key;
    }
}

// One message a change, none merged, so that what came and went is seen.
void Monitor::tellChanges()
{
    for (const sim::ReaderEvent &event : watcher.world().readerEvents(lastEvent)) {
        lastEvent = event.number;
        tellReaders(event.readers);
    }
}

void Monitor::tellReadersNow()
{
    tellReaders(watcher.world().readers());
}

void Monitor::tellReaders(const std::vector<sim::Reader> &readers)
{
    startCanFor(readers);
    IpcMsg message { { "readers", readersThatFit(QByteArray::fromStdString(sim::readerMessage(readers))) } };
    if (!canStatus.isEmpty())
        message.setParam("canAppStatus", canStatus);
    ipc.msgToManager(message);
}

// Once for each card that begins to wait: a window that the user has closed stays closed.
void Monitor::startCanFor(const std::vector<sim::Reader> &readers)
{
    const bool before = canWanted;
    canWanted = waitsForCan(readers);
    if (!canWanted)
        canStatus.clear();
    else if (!before && !Common::isAppRunning("Can", "velmor"))
        app.runApp("*can", false);
}

void Monitor::setCanStatus(const QByteArray &status)
{
    if (!canWanted)
        return;
    canStatus = status;
    tellReadersNow();
}

void Monitor::tellDiagnosis()
{
    ipc.msgToManager(IpcMsg { { "diagnoseReaders", diagnosis(watcher.world().readers()) } });
}

void Monitor::storeUpdateState(bool available, bool inProgress)
{
    Settings *settings = Settings::instance();
    settings->setValue(SettingsKey::updateAvailable, available ? "true" : "false");
    settings->setValue(SettingsKey::updateInProgress, inProgress ? "true" : "false");
    settings->sync();
}

void Monitor::offerUpdate()
{
    storeUpdateState(true, false);
    ipc.msgToManager(IpcMsg { { "checkForUpdate", 1 } });
}

void Monitor::startUpdate()
{
    storeUpdateState(true, true);
    QTimer::singleShot(updateTime, this, &Monitor::endUpdate);
}

void Monitor::endUpdate()
{
    storeUpdateState(false, false);
    ipc.msgToManager(IpcMsg { { "checkForUpdate", 1 } });
}
