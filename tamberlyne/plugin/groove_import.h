// Putting the cleaned groove into the score: the target staff (the chosen one or a new one
// below the others), the host's import once per repetition of the groove over the region, and
// the respelling of drum notes whose keys the cleaner moved.
#pragma once

#include "sdk/frames.h"

#include <cstdint>

// The region on the target staff over the measures of SelRegion: the chosen staff (slot
// staffnum + 1 of list 0), or, when bit 0 of the options word is set, a new staff that is
// created here and placed 250 below the staff above it. False when there is no such staff (the
// new one could not be made, or the chosen slot holds none).
bool ChooseTargetStaff(uint32_t options, EREGION& DoRegion);

// Imports the file of `MidiFileDescriptor` into the target region once per repetition of a
// `grooveBars`-measure groove from SelRegion's first measure to its last (the last repetition
// cut at the region's end). When `reverseMap` is given (the cleaner moved pitches), every
// imported measure is respelled with it.
void ImportRepeatedly(EREGION DoRegion, int32_t grooveBars, SxpMidiData& MidiFileDescriptor, const uint8_t* reverseMap);

// Respells the notes of one imported frame: each note whose key the reverse map sends higher
// (entry 0 = not moved) is raised to that key. Rests are left alone.
void RespellFrame(EXQVF2005a* frame, const uint8_t reverseMap[128]);

// Raises one note to MIDI key `mapped` (only upwards): first close to it in staff steps, then
// step by step, a sharp for the last semitone. Gives up after a bounded number of steps, so a
// host that never reports the key cannot hold it.
void RespellNote(EXNOTE& note, int32_t mapped);
