#include "base/own_segment.h"

#include <QDebug>

namespace {

bool refuse(const QSharedMemory &segment)
{
    qDebug().noquote() << "segment of another user left alone:" << segment.key();
    return false;
}

} // namespace

bool OwnSegment::attach(QSharedMemory &segment)
{
    if (isForeign(segment))
        return refuse(segment);
    const bool attached = segment.attach(QSharedMemory::ReadWrite);
    if (!isForeign(segment))
        return attached;
    if (attached)
        segment.detach();
    return refuse(segment);
}

bool OwnSegment::create(QSharedMemory &segment, int size)
{
    if (isForeign(segment))
        return refuse(segment);
    return segment.create(size, QSharedMemory::ReadWrite);
}
