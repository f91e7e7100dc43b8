#include "simworld/reader_message.h"

namespace sim {

std::string readerMessage(const std::vector<Reader> &readers)
{
    std::string list;
    int listed = 0;
    bool card = false;
    bool waiting = false;
    for (const Reader &reader : readers) {
        if (reader.card.empty())
            continue;
        card = true;
        waiting = waiting || reader.waitCan;
        if (reader.supported && !reader.waitCan && !reader.notReadByTheMonitor)
            list += std::to_string(listed++) + ':' + reader.name + "||";
    }
    if (!list.empty())
        return list;
    if (readers.empty())
        return "NO_READER";
    if (waiting)
        return "WAIT_CAN";
    return card ? "NO_SUPPORTED_CARD" : "NO_CARD";
}

} // namespace sim
