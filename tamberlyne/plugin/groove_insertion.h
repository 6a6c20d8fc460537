// The groove insertion driver: checks the region, reads and cleans the chosen groove, has the
// host import it as often as the region needs, and prepares the staff for drums.
#pragma once

#include "sdk/types.h"

#include <cstdint>

// The driver's alerts (entries of string list 20001).
constexpr int32_t kAlertOverwriteNotes = 0x4E210002;        // question: replace the staff's notes?
constexpr int32_t kAlertRefusedMeasure = 0x4E210003;        // stop: a measure refuses the command
constexpr int32_t kAlertTimeSignatureChange = 0x4E210004;   // stop: the meter changes in the region
constexpr int32_t kAlertGrooveUnreadable = 0x4E210005;      // warning: file unreadable, empty, no memory
constexpr int32_t kAlertNoDrumNotes = 0x4E210006;           // warning: nothing on the drum channel
constexpr int32_t kAlertMeterMismatch = 0x4E210007;         // warning: the groove's meter does not fit

// Runs the insertion with the dialog's choices (the globals filenum, staffnum, stylenum and the
// options word). True when the score was changed; needRefresh is then 1.
bool DoYourThing(EDLG dialog, uint32_t* optionsWord);

// True when the working region's time signature is usable (no refused measure, no change).
bool CheckNoTimeSignatureChanges();

// True when the target staff is empty in the region or the user agrees to overwrite it.
bool CheckOverwritingNotes();
