// How a cleaned groove is laid over the region: its length in measures, whether its meter fits
// the region's, and how many imports fill the region.
#pragma once

#include "sdk/records.h"
#include "tamberlyne/midi/midi_events.h"

#include <cstdint>

// The groove's repeated length: the bar of its last drum note, less one when that note sits in
// the first 70 % of its bar (a closing crash on the downbeat belongs to no repetition). A
// one-bar groove keeps its bar.
int32_t TrimTrailingFill(int32_t lastnotebar, int32_t lastnotetickinbar, int32_t ticksPerMeasure);

// Whether the groove's meter (Meter, TPQ) fits the region's first measure: the measure lengths
// must agree, and the beat counts must too, where a plain beat may be counted twice as fine or
// twice as coarse (2/2 against 4/4) and a dotted beat counts its three parts (6/8 written as two
// dotted quarters).
bool GrooveMeterFits(const EDTMeasureSpec& FirstMeasure, const LEventRec& Meter, int32_t TPQ);

// How many imports of a `grooveBars`-measure groove fill measures firstMeas..lastMeas (the last
// one may be cut short); at least 1.
int32_t ImportLoops(int32_t firstMeas, int32_t lastMeas, int32_t grooveBars);
