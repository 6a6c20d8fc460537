// The host's clefs: the default clef definitions of a document ('gbcf' 0..17) and what each
// clef means in notation terms (for export).
#pragma once

#include "sdk/records.h"

#include <vector>

namespace stavio {

constexpr int kDefaultClefCount = 18;
constexpr uint16_t kClefUsesFont = 0x0002;   // EDTClefDef.flag: `font` names the clef's font

// How a clef reads: its sign ("G", "F", "C", "percussion", "TAB", "none"), the staff line it
// sits on counted from the bottom (0 when the sign has none), and its octave shift.
struct ClefMeaning {
    const char* name;
    const char* sign;
    int line;
    int octaveChange;
};

// Clef definitions 0..17 of a new document. `adjust` is the staff position of middle C from
// the top line in diatonic steps (treble -10), `clefydisp` the line the glyph sits on. Clef 12,
// the percussion clef, is drawn with the percussion font family: `flag` has kClefUsesFont and
// `font` is `musicFont` (the number of "Dorvane").
std::vector<EDTClefDef> DefaultClefDefinitions(int16_t musicFont);

// The meaning of clef 0..17; null for any other number.
const ClefMeaning* ClefMeaningOf(int clef);

}   // namespace stavio
