// Makes the target staff look and play like a drum staff after a groove went in: its clef over
// the working region, the percussion clef's font, the drum staff record, and playback on MIDI
// channel 10. Also the two questions the dialog asks about staves and the document.
#pragma once

#include <cstdint>

// Sets the clef of every measure of SelRegion on staff `inst` (measures without a frame detail
// are left alone). For the percussion clef, also offers to set that clef up with the percussion
// font when it does not use it yet.
void PutClef(int inst, int16_t clef);

// Turns staff `inst` into a drum staff on percussion map 1 with the percussion font and clef.
void MakeDrumStyle(int inst);

// Makes staff `inst` play on MIDI channel 10, sharing a channel definition that already does or
// creating one named "Tamberlyne".
void MakeCH10(int inst);

// True when the staff's channel definition is the host's drum channel (code 0x8009). A definition
// made by MakeCH10 (code 9) counts only once the host has marked it.
bool IsDrumStaff(int inst);

// True when the document has percussion map 1.
bool PercussionMapPresent();
