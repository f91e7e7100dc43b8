#include "endurance/own_resources.h"

#include "support/proc_status.h"

#include <QCoreApplication>
#include <QDir>

#include <malloc.h>

namespace {

int entriesOf(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}

int childrenOf(const QString &tasks)
{
    int count = 0;
    for (const QString &task : QDir(tasks).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile file(tasks + '/' + task + "/children");
        if (file.open(QIODevice::ReadOnly))
            count += QString::fromLatin1(file.readAll()).split(' ', Qt::SkipEmptyParts).size();
    }
    return count;
}

// The fifth column is the maker.
int segmentsOf(qint64 process)
{
    int count = 0;
    QFile file("/proc/sysvipc/shm");
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : file.readAll().split('\n'))
        count += line.simplified().split(' ').value(4).toLongLong() == process;
    return count;
}

} // namespace

OwnResources OwnResources::now()
{
    OwnResources own;
    // What the allocator keeps for later is no growth.
    malloc_trim(0);
#if defined(__GLIBC__) && __GLIBC_PREREQ(2, 33)
    own.heapKiB = long(mallinfo2().uordblks / 1024) + long(mallinfo2().hblkhd / 1024);
#endif
    own.residentKiB = numberInStatus("/proc/self/status", "RssAnon");
    own.descriptors = entriesOf("/proc/self/fd");
    own.threads = entriesOf("/proc/self/task");
    own.children = childrenOf("/proc/self/task");
    own.segments = segmentsOf(QCoreApplication::applicationPid());
    return own;
}

QString OwnResources::text() const
{
    return QString("heap %1 KiB, resident %2 KiB, %3 descriptors, %4 threads, %5 children, %6 segments")
        .arg(heapKiB)
        .arg(residentKiB)
        .arg(descriptors)
        .arg(threads)
        .arg(children)
        .arg(segments);
}
