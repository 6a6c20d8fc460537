// Notated pitch to MIDI key, as the host computes it for SX_NoteToMidi.
#pragma once

#include <cstdint>

namespace stavio {

// 60 (middle C) + the major-scale semitones of `tcd` diatonic steps from middle C (C D E F G A
// B = 0 2 4 5 7 9 11, 7 steps to the octave, below middle C too) + `alteration` semitones.
// Key signatures change how a note is shown, not this number.
int32_t NoteToMidiKey(int32_t tcd, int32_t alteration);

}   // namespace stavio
