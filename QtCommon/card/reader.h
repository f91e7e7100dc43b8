#pragma once

// What the flag word of a reader's slot says of the card in it.
class Reader {
public:
    // CardChip::chipType of the first chip whose own bit and both slotMarkerBits are set in `flags`; 0 if there is
    // none.
    static int cardChipType(unsigned long flags);
};
