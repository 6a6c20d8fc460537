// Percussion maps: which staff position and notehead stand for each MIDI key of a drum kit.
// The host reads drum staves through them (export, the drum grid). A document's map n exists
// when its name record ('otDL' n) does; map 1 of a new document is the General MIDI kit.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace stavio {

enum class Notehead : uint8_t {
    Normal,
    X,
    CircleX,
    Diamond,
    Triangle,
    Square,
    Slash,
};

// The notehead's name in MusicXML's <notehead> ("normal", "x", "circle-x" ...).
const char* NoteheadName(Notehead head);

struct PercussionNote {
    int16_t key = 0;   // MIDI key (General MIDI drum numbering)
    int16_t tcd = 0;   // staff position: diatonic steps from middle C, read as a treble staff
    Notehead notehead = Notehead::Normal;
    bool foot = false;   // played with a foot (kick, pedal hi-hat): stems down, lower voice
    std::string name;
};

struct PercussionMap {
    std::string name;
    std::vector<PercussionNote> notes;   // by key, ascending

    const PercussionNote* ForKey(int key) const;
    // The kit piece drawn at a position with a notehead: the first in key order where two
    // share one (38 before 40).
    const PercussionNote* At(int tcd, Notehead head) const;

    bool operator==(const PercussionMap& other) const;
};

constexpr int kDefaultPercussionMap = 1;

// The General MIDI kit, keys 35 to 81.
PercussionMap GeneralMidiKit();

}   // namespace stavio
