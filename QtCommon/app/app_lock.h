#pragma once

#include "base/segment.h"

#include <QSharedMemory>
#include <QSharedPointer>
#include <QString>

// The single-instance lock: a shared-memory segment that only one process can create. Its content is the inbox of the
// program that holds it; for the lock its existence is all that counts. Given back by the destructor, and by the system
// if the process dies.
class CommonAppLock {
public:
    // With an empty key no segment is made until `set`.
    explicit CommonAppLock(const QString &key = {}, int size = Segment::size);
    ~CommonAppLock();
    CommonAppLock(const CommonAppLock &) = delete;
    CommonAppLock &operator=(const CommonAppLock &) = delete;

    void set(const QString &key, int size);
    // False if another process has it. True without a segment where somebody else's account has taken its name.
    bool lock();
    void unlock();

    // The segment, which is also the inbox of the program. Null without a key.
    QSharedPointer<QSharedMemory> segment() const { return memory; }

    // Whether somebody holds the segment.
    bool isHeld();

private:
    bool create();

    bool locked = false;
    QString key;
    int size;
    QSharedPointer<QSharedMemory> memory;
};

namespace Common {

// Whether a program of the family runs, told by its segment: "<product>_<id in lower case>".
bool isAppRunning(const QByteArray &id, const QByteArray &product);

} // namespace Common
