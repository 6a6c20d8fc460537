// Slash notation over a region: every empty staff-measure is filled with one rest per beat (the
// host draws rests under a slash style as slashes), and a style whose only effect is to show
// slashes is assigned to the region on every staff of it. TRemoveSlashNotation undoes it.
#pragma once

#include "sdk/frames.h"

class TAddSlashNotation {
public:
    explicit TAddSlashNotation(const EREGION* region);

    // Fills the rests, cuts the slash assignments already on the region, assigns the style and
    // sorts the assignments. True when the work was done.
    bool Run();
    // The place for a region check; accepts every region.
    bool CheckRegion();
    // Fills every staff-measure of the region's whole measures that holds nothing in any layer.
    // False only when a measure specification cannot be loaded (measures done before stay done).
    bool FillWithRests();
    // Appends the beat rests to the first layer of one staff-measure.
    bool FillMeasureWithRests(int inst, int IUlist, int slot, int meas, const EDTMeasureSpec2005& spec);
    // The number of the slash style: the first that does nothing but show slashes, else a new one.
    int FindOrMakeStaffStyle();
    // Assigns the slash style over the region on every staff of it.
    bool ApplyStaffStyle();
    // Appends one rest of `duration` EDU after the frame's last entry; false when the host does
    // not grow the frame.
    bool AddARest(EXQVF2005a* frame, int duration);

    EREGION SelRegion;
};

// The name of the style the plug-in creates.
extern const char kSlashStyleName[];
