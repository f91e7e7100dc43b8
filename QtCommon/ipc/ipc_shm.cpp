#include "ipc/ipc_shm.h"

#include "app/app.h"
#include "base/common_c.h"
#include "base/own_segment.h"
#include "base/segment.h"

#include <QDebug>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstring>

namespace {

constexpr std::chrono::milliseconds pollInterval { 100 };
constexpr std::chrono::milliseconds retryInterval { 50 };
constexpr int attempts = 49;

// The first bytes become zero, as many as a message of ours can have: a shorter one must end on the zeros behind it.
void wipe(QSharedMemory &inbox, int size)
{
    std::memset(inbox.data(), 0, static_cast<std::size_t>(std::min(size, inbox.size())));
}

} // namespace

IpcShm::IpcShm(QObject *parent) : IpcBase(parent), size(Segment::size) { }

IpcShm::~IpcShm()
{
    stop();
}

void IpcShm::useLock(const App &app)
{
    memory = app.lockSegment();
    ownName = memory->key().toLatin1();
    owner = false;
}

void IpcShm::start()
{
    if (!memory) {
        memory = QSharedPointer<QSharedMemory>::create(QString::fromLatin1(ownName));
        if (!attachOrCreate() && owner)
            memory.reset();
    }
    running = true;
    listenLoop();
}

bool IpcShm::attachOrCreate()
{
    if (OwnSegment::attach(*memory))
        return true;
    qDebug().noquote() << "create shm" << ownName;
    if (OwnSegment::create(*memory, size))
        return true;
    qDebug().noquote() << "shm not created:" << memory->errorString();
    return false;
}

void IpcShm::listenLoop()
{
    if (!running)
        return;
    const QByteArray text = takeText();
    if (!text.isEmpty()) {
        // Outside the lock, so that a long handler does not hold up the senders.
        const IpcMsg message(text);
        qDebug().noquote() << "recv" << message.toString();
        receive(message);
    }
    QTimer::singleShot(pollInterval, this, &IpcShm::listenLoop);
}

QByteArray IpcShm::takeText()
{
    if (!memory)
        return {};
    // Without a word: this is asked ten times a second.
    if (!memory->isAttached() && !OwnSegment::isForeign(*memory))
        OwnSegment::attach(*memory);
    // The lock alone tells nothing of a segment: it can be had without one.
    if (!memory->isAttached() || !memory->lock())
        return {};
    const char *begin = static_cast<const char *>(memory->constData());
    QByteArray text(begin, static_cast<int>(qstrnlen(begin, static_cast<uint>(memory->size()))));
    wipe(*memory, size);
    memory->unlock();
    return text;
}

bool IpcShm::send(IpcMsg message)
{
    if (message.from().isEmpty())
        message.setFrom(ownName);
    if (!message.hasPayload())
        return false;
    if (!prepareMsg(message)) {
        qDebug().noquote() << "Failed prepare msage";
        return false;
    }
    // By way of text, which changes what is not UTF-8. The siblings do the same, and no bytes get through unharmed that
    // are not text.
    const QByteArray bytes = QString::fromUtf8(message.serialize()).toUtf8();
    QSharedMemory inbox(message.shmKey());
    if (!OwnSegment::attach(inbox)) {
        qDebug().noquote() << "send" << message.shmKey() << " - send command error! (the app probably is closed?)";
        return false;
    }
    for (int attempt = 1; attempt <= attempts; ++attempt) {
        if (attempt > 1)
            QThread::msleep(retryInterval.count());
        if (!deliver(inbox, bytes))
            continue;
        if (attempt > 1)
            qDebug().noquote() << "send success in " << attempt << "attempt";
        inbox.detach();
        return true;
    }
    inbox.detach();
    // One more than there were; the siblings write the same.
    qDebug().noquote() << "send failed" << attempts + 1;
    return false;
}

bool IpcShm::deliver(QSharedMemory &inbox, const QByteArray &bytes) const
{
    if (!inbox.lock())
        return false;
    char *begin = static_cast<char *>(inbox.data());
    const bool free = *begin == '\0';
    if (free)
        CommonC::memCopy(begin, static_cast<std::size_t>(inbox.size()), bytes.constData(),
                         static_cast<std::size_t>(bytes.size()));
    inbox.unlock();
    return free;
}

void IpcShm::stop()
{
    if (!running)
        return;
    running = false;
    if (!memory)
        return;
    const QString key = memory->key();
    if (!owner) {
        // The segment object stays: it is the instance lock's.
        memory->unlock();
        memory->detach();
        qDebug().noquote() << "detach " << key;
        return;
    }
    if (!memory->isAttached() && !OwnSegment::attach(*memory)) {
        qDebug().noquote() << " stop error";
        return;
    }
    if (!memory->lock()) {
        qDebug().noquote() << "stop error";
        return;
    }
    qDebug().noquote() << "remove " << key;
    wipe(*memory, size);
    memory->unlock();
    memory->detach();
    memory.reset();
}
