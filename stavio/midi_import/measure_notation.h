// Writing one measure of quantised drum hits as entries that read well.
//
// - Hits at one grid point are one entry (a chord of up to 12 notes).
// - A note lasts until the next hit or the end of its beat, whichever comes first; a rest fills
//   the start of a beat before its first hit. Durations are notated values (whole down to 32nd,
//   dotted where exact); a length that is not one is split, the note taking the largest value
//   that fits and rests the remainder.
// - Beats without hits are rests, merged where a longer rest starts on its own multiple (a
//   half rest on beat 3 of 4/4, not across the middle of the measure); a measure without hits
//   is one whole-measure rest.
// - The entries of a triplet beat lie under a tuplet of 3 in the time of 2 (kEntryInTuplet in
//   `ef`); their positions are the thirds of the beat rounded to whole EDU, and each entry's
//   actual length runs to the next one, so the beat adds up exactly.
//
// Notes are spelled as the host spells MIDI keys: a white key natural, a black key as the white
// key below raised by one, so that SX_NoteToMidi gives the key back.
#pragma once

#include "stavio/document/entry_frames.h"
#include "stavio/midi_import/beat_quantiser.h"

#include <vector>

namespace stavio::midi_import {

// The entries of one measure. `hits` are EDU offsets from the measure's start; a hit earlier
// than half a straight step before the start counts as on it, one that falls in the next
// measure's early window or beyond is left out.
FrameContent NotateMeasure(const std::vector<Hit>& hits, const MeasureGrid& grid);

// True for whole, half, quarter, eighth, 16th and 32nd values, plain or dotted.
bool IsNotatedValue(int32_t edu);

}   // namespace stavio::midi_import
