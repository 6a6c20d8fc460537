// Checks of a partwise MusicXML score that a schema cannot make, read with pugixml on their own
// (not through the host's reader): instrument references, parts against the part list, and
// measures adding up per voice. The same walk gives every note's place in time, which the
// MuseScore comparison needs.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace musicxml_support {

struct TimedNote {
    int measureIndex = 0;        // 0-based, in the part's order
    std::string measureNumber;   // as the score writes it
    double onset = 0;            // quarter notes from the start of the score, repeats not unrolled
    double duration = 0;         // quarter notes; 0 for grace notes
    int staff = 1;
    std::string voice;
    bool rest = false;
    bool unpitched = false;
    bool grace = false;
    bool tieStop = false;       // continues a tied note: it does not sound again
    int key = 0;                // a <pitch>'s MIDI key (60: middle C), 0 for others
    std::string instrumentId;   // the note's <instrument id>, else the part's only score-instrument
    int midiUnpitched = 0;      // that instrument's <midi-unpitched>, 0 when it has none
    int midiChannel = 0;        // and its <midi-channel>
};

// Every fault found, each naming its part and measure; empty for a sound score. Bytes may be
// UTF-8 or UTF-16 with a byte-order mark. `rewritten` (part id -> measure numbers) names the
// measures an edit rewrote in a part it gave more instruments: that part's other measures kept
// their notes as they were, and those may go without <instrument> (a reader gives them the
// part's first instrument, as it did); rewritten measures and every other part must name theirs.
std::vector<std::string> ScoreProblems(const std::string& bytes,
                                       const std::map<std::string, std::set<std::string>>& rewritten = {});

// The notes of one part in time order of the walk (chords and voices as written).
std::vector<TimedNote> PartNotes(const std::string& bytes, const std::string& partId);

}   // namespace musicxml_support
