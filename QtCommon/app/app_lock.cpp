#include "app/app_lock.h"

#include "base/own_segment.h"

#include <QDebug>

CommonAppLock::CommonAppLock(const QString &lockKey, int lockSize) : size(lockSize)
{
    if (!lockKey.isEmpty())
        set(lockKey, lockSize);
}

CommonAppLock::~CommonAppLock()
{
    unlock();
}

void CommonAppLock::set(const QString &lockKey, int lockSize)
{
    key = lockKey;
    size = lockSize;
    memory = QSharedPointer<QSharedMemory>::create(key);
}

bool CommonAppLock::create()
{
    return memory && OwnSegment::create(*memory, size);
}

bool CommonAppLock::lock()
{
    bool created = create();
    bool foreign = false;
    if (!created && memory) {
        // Where a segment outlives a process that was killed, the last one to leave it takes it away.
        if (OwnSegment::attach(*memory))
            memory->detach();
        foreign = OwnSegment::isForeign(*memory);
        created = create();
    }
    // Somebody else's segment must not keep this user from the program, which then has no inbox.
    if (!created && foreign)
        return true;
    if (!created) {
        qDebug().noquote() << "Another '" + key + "' app seems to be running";
        return false;
    }
    locked = true;
    qDebug().noquote() << "shm lock created" << key << size;
    return true;
}

void CommonAppLock::unlock()
{
    if (!locked)
        return;
    memory->unlock();
    if (memory->isAttached())
        memory->detach();
    locked = false;
    qDebug().noquote() << "shm lock" << key << "removed";
}

bool CommonAppLock::isHeld()
{
    if (!memory || !OwnSegment::attach(*memory))
        return false;
    memory->detach();
    // The second time tells a living program from a segment that was only left behind.
    const bool held = OwnSegment::attach(*memory);
    memory->detach();
    return held;
}

bool Common::isAppRunning(const QByteArray &id, const QByteArray &product)
{
    CommonAppLock lock(QString::fromLatin1(Segment::key(product, id)));
    return lock.isHeld();
}
