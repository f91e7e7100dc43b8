#include "base/own_segment.h"

#include <QFile>

#include <optional>
#include <sys/shm.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

bool isFileOfAnother(const QString &path)
{
    struct stat status = {};
    return lstat(QFile::encodeName(path).constData(), &status) == 0 && status.st_uid != geteuid();
}

// The system's number of the segment at this address, which the toolkit does not tell: the inode of its mapping.
std::optional<int> segmentAt(const void *address)
{
    QFile maps("/proc/self/maps");
    if (!maps.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray range = QByteArray::number(reinterpret_cast<quintptr>(address), 16) + '-';
    for (const QByteArray &line : maps.readAll().split('\n')) {
        // address, rights, offset, device, inode
        constexpr int inode = 4;
        if (line.startsWith(range))
            return line.simplified().split(' ').value(inode).toInt();
    }
    return std::nullopt;
}

bool isSegmentOfAnother(const void *address)
{
    const std::optional<int> id = segmentAt(address);
    shmid_ds status = {};
    if (!id || shmctl(*id, IPC_STAT, &status) != 0)
        return false;
    return status.shm_perm.uid != geteuid() || status.shm_perm.cuid != geteuid();
}

} // namespace

bool OwnSegment::isForeign(const QSharedMemory &segment)
{
    // A segment of this user never refuses itself to him.
    return isFileOfAnother(segment.nativeKey()) || segment.error() == QSharedMemory::PermissionDenied
        || (segment.isAttached() && isSegmentOfAnother(segment.constData()));
}
