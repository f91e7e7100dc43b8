#include "app/app_lock.h"

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
    return memory && memory->create(size, QSharedMemory::ReadWrite);
}

bool CommonAppLock::lock()
{
    bool created = create();
    if (!created) {
        // Where a segment outlives a process that was killed, the last one to leave it takes it away.
        if (memory && memory->attach(QSharedMemory::ReadWrite))
            memory->detach();
        created = create();
    }
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
    if (!memory || !memory->attach())
        return false;
    memory->detach();
    // The second time tells a living program from a segment that was only left behind.
    const bool held = memory->attach();
    memory->detach();
    return held;
}

bool Common::isAppRunning(const QByteArray &id, const QByteArray &product)
{
    CommonAppLock lock(QString::fromLatin1(Segment::key(product, id)));
    return lock.isHeld();
}
