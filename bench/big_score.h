// A large, realistic MusicXML score for the open + fill + save benchmark and for comparing with
// MuseScore on the same file: `measures` measures of 4/4 in `parts` parts, the last a drum set
// on MIDI channel 10 (one instrument per piece, two voices), the others pitched parts with
// chords, beams, dynamics, chord symbols, lyrics and system breaks. 2,000 measures of 8 parts
// come to about 12 MB.
#pragma once

#include <string>

namespace bench {

std::string BigScore(int measures = 2000, int parts = 8);

}   // namespace bench
