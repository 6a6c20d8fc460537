// The music of one rewritten staff-measure as MusicXML: a drum staff's notes written the way
// notation programs read them (unpitched notes placed by the percussion map, hands in voice 1
// with stems up, feet in voice 2 with stems down, beams by beat, tuplets), or a pitched staff's
// notes as they are.
#pragma once

#include "stavio/document/document.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace stavio::musicxml {

struct MeasureMusic {
    int divisions = 1;                // the <divisions> the durations are written in
    std::vector<std::string> lines;   // one element per line, without indentation
};

// The MIDI keys a drum staff's measure plays (layer 0 and every other layer).
std::set<int> KeysInMeasure(const Document& doc, int32_t inst, int32_t meas);

// The notes of staff `inst` in measure `meas`. `divisions` is the part's divisions there; the
// result uses a multiple of it when the notes need finer units. `instrumentOf` names the
// score-instrument of each key (every note of a key it holds names it, since the part may have
// other instruments that notes without <instrument> fall back to). A measure
// without entries is a whole-measure rest of `restLength` EDU (0: the measure's meter). In a
// part with several staves, `staff` is the staff's number (each note says it) and the voices
// are numbered from `firstVoice`.
MeasureMusic WriteMeasureMusic(const Document& doc, int32_t inst, int32_t meas, bool drum, int divisions,
                               const std::map<int, std::string>& instrumentOf, int32_t restLength = 0, int staff = 0,
                               int firstVoice = 1);

}   // namespace stavio::musicxml
