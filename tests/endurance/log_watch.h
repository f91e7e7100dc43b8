#pragma once

// What the run learns of the window from its log lines. VELMOR_ENDURANCE_LOG=1 prints them too.
namespace LogWatch {

void begin();
int sslLoaded();
int listsTaken(); // by each of the three rules

// Whether what the last listing and the last selection have found is a card in part: it came or went meanwhile. Of one
// that is taken out, slots are left without a name of a reader; of one that is put in, the one slot of the empty
// reader, which is its first by then, or those tokens that were looked at last.
bool foundInPart();

bool loud();

} // namespace LogWatch
