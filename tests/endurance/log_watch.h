#pragma once

// What the run learns of the window from its log lines. VELMOR_ENDURANCE_LOG=1 prints them too.
namespace LogWatch {

void begin();
int sslLoaded();
int listsTaken(); // by each of the three rules

// Whether the last listing was one of a card that came or went meanwhile. Of one that is taken out, slots are left
// without a name of a reader; of one that is put in, the one slot of the empty reader, which is its first by then.
bool listedInPart();

bool loud();

} // namespace LogWatch
