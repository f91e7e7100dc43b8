#include "base/own_segment.h"

bool OwnSegment::isForeign(const QSharedMemory &segment)
{
    Q_UNUSED(segment)
    return false;
}
