// Quantising drum hits, one beat at a time.
//
// A measure is counted in beats: quarter notes in simple meters (a half-note beat is counted as
// two quarters, an eighth-note beat as it stands), dotted quarters in compound meters (6/8, 9/8,
// 12/8). Each beat picks its own grid: straight sixteenths, or for a simple beat its thirds
// (eighth-note triplets in a quarter). The grid whose snapping moves the beat's hits the least
// in total wins; a tie goes to the straight grid. Programmed grooves therefore come out exact,
// and loosely played ones come out clean: the finest value the grid can produce is the
// sixteenth, so no stray 32nds or odd tuplets appear. A compound beat already holds three
// eighths and takes sixteenths only.
//
// A hit up to half a sixteenth before a beat belongs to that beat (it was played early).
#pragma once

#include "stavio/midi_import/drum_groove.h"

#include <cstdint>
#include <vector>

namespace stavio::midi_import {

// How one measure is counted. `length` is a whole number of beats, a beat a whole number of
// steps.
struct MeasureGrid {
    int32_t length = 4096;      // EDU
    int32_t beat = 1024;        // EDU
    int32_t step = 256;         // the straight grid, EDU
    bool tripletBeats = true;   // a beat may take the triplet grid (simple meters)

    int32_t Beats() const { return length / beat; }
    // Half a straight step: how early a hit may come and still count for the next grid point.
    int32_t EarlyWindow() const { return step / 2; }
};

// The grid of a document measure of `beats` x `divbeat` EDU holding a groove in `meter`. A
// measure whose beat does not divide it evenly is counted as one beat.
MeasureGrid GridFor(int32_t beats, int32_t divbeat, TimeSignature meter);

// A hit in a measure: EDU from the measure's start (slightly negative when played early).
struct Hit {
    int32_t offset = 0;
    int key = 0;
};

// The hits of one beat after snapping: `slot`s are grid points from the beat's start (steps of
// the straight grid, or thirds of the beat).
struct QuantisedBeat {
    struct Slot {
        int slot = 0;
        std::vector<int> keys;   // ascending, distinct, at most 12
    };
    bool triplet = false;
    std::vector<Slot> slots;   // ascending slot numbers
};

// Snaps the hits of one beat (offsets from the beat's start) to the better grid.
QuantisedBeat QuantiseBeat(const std::vector<Hit>& hits, const MeasureGrid& grid);

// Integer division rounding towards minus infinity.
inline int64_t FloorDiv(int64_t a, int64_t b)
{
    return a / b - ((a % b != 0) && ((a < 0) != (b < 0)) ? 1 : 0);
}

}   // namespace stavio::midi_import
