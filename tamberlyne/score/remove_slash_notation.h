// Undoes slash notation over a region: cuts every slash style assignment back from the region
// and, where that changed something, removes the beat rests that slash notation would have
// written into the measures the region covers whole.
#pragma once

#include "sdk/frames.h"

class TRemoveSlashNotation {
public:
    explicit TRemoveSlashNotation(const EREGION* region);

    // `window` is not used. Returns true.
    bool Run(EWND window);
    // Walks the measures the region covers whole.
    void RemoveUnneededRests();
    // One staff-measure: deletes the first layer's entries when they are exactly the beat rests.
    bool RemoveUnneededRests(int IUlist, int slot, int meas, int unused, const EDTMeasureSpec2005& spec);

    EREGION SelRegion;
};
