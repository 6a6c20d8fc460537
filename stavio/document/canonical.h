// The canonical form in which the host keeps each record, whatever layout a caller uses.
// Most tags keep their newest layout; the frame detail keeps the host's own frame numbers in
// place of the caller's pointer.
#pragma once

#include "sdk/records.h"

namespace stavio {

// 'SOMS': EDTMeasureSpec2005 (26 bytes). 'SOIS': EDTStaffSpec2003 (102 bytes).
// 'SOIu': EDTInstrumentUsed (24 bytes). 'SOTX': EDTTextBlock2004 (26 bytes).
// 'ot..': EDTGeneric (12 bytes). 'txbl': the text's bytes, no terminator.

#pragma pack(push, 2)
// 'SDGF' detail (inst, meas, 0).
struct FrameHoldRecord {
    int16_t clef;
    uint16_t flag;
    int16_t clefPercent;
    int16_t frame[4];   // frame number of each layer, 0 = the layer holds nothing
};
#pragma pack(pop)
static_assert(sizeof(FrameHoldRecord) == 14, "FrameHoldRecord is 14 bytes");

// Default content of new records.
EDTMeasureSpec2005 DefaultMeasureSpec();   // 4/4
EDTStaffSpec2003 DefaultStaffSpec();       // five-line staff, treble clef, no names

}   // namespace stavio
