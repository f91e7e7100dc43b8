#include "base/common_c.h"

#include <QDebug>

#include <algorithm>
#include <cstring>

namespace CommonC {

void memCopy(void *target, std::size_t targetSize, const void *source, std::size_t sourceSize)
{
    if (targetSize == 0 || sourceSize == 0)
        return;
    if (!target || !source) {
        qDebug().noquote() << "memcpy error | _DestinationSize or _SourceSize is null";
        return;
    }
    if (targetSize < sourceSize)
        qDebug().noquote() << "memcpy error | _DestinationSize < _SourceSize | copied data length reduced to: "
                              "_DestinationSize";
    std::memmove(target, source, std::min(targetSize, sourceSize));
}

} // namespace CommonC
