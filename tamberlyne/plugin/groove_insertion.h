// The groove insertion driver: checks the region, reads and cleans the chosen groove, has the
// host import it as often as the region needs, and prepares the staff for drums.
#pragma once

#include "sdk/types.h"

#include <cstdint>

// Runs the insertion with the dialog's choices (the globals filenum, staffnum, stylenum and the
// options word). True when the score was changed; needRefresh is then 1.
bool DoYourThing(EDLG dialog, uint32_t* optionsWord);

// True when the working region's time signature is usable (no refused measure, no change).
bool CheckNoTimeSignatureChanges();

// True when the target staff is empty in the region or the user agrees to overwrite it.
bool CheckOverwritingNotes();
