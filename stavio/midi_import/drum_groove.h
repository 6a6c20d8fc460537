// What the import takes from a Standard MIDI File: the drum hits and the groove's meter.
//
// Hits are the note-ons with a velocity above 0 on the drum channel (status 0x99) of every
// track; everything else, neutralised messages (note-offs on channel 10, key 0) included, is
// left out. Bars follow the time signature at tick 0 (4/4 when there is none); later meter
// changes are not followed.
#pragma once

#include "stavio/midi_import/smf_reader.h"

#include <cstdint>
#include <vector>

namespace stavio::midi_import {

struct TimeSignature {
    int numerator = 4;
    int denominator = 4;   // a power of two
};

// Eight bytes: a long file holds a million of them.
struct DrumOnset {
    int64_t edu : 56;   // from the file's start: tick * 1024 / ticks per quarter
    int64_t key : 8;
};

struct DrumGroove {
    TimeSignature meter;
    int64_t barLength = 4096;        // EDU
    std::vector<DrumOnset> onsets;   // in time order (key order at one time)
};

DrumGroove DrumGrooveOf(const SmfFile& file);

}   // namespace stavio::midi_import
