#include "card/reader.h"

#include "card/card_tables.h"
#include "card/token.h"

#include <QDebug>

int Reader::cardChipType(unsigned long flags)
{
    const quint32 word = static_cast<quint32>(flags);
    quint32 type = 0;
    for (const CardChip &chip : cardChips()) {
        const quint32 wanted = chip.slotFlag | slotMarkerBits;
        if ((word & wanted) == wanted) {
            type = chip.chipType;
            break;
        }
    }
    qDebug().noquote() << "CHIP TYPE=" << type;
    return static_cast<int>(type);
}
