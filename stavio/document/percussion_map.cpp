#include "stavio/document/percussion_map.h"

namespace stavio {

namespace {

// Staff positions of a five-line staff read as treble: E4 (bottom line) is 2, F5 (top line) 10.
enum Position : int16_t {
    D4 = 1,
    E4,
    F4,
    G4,
    A4,
    B4,
    C5,
    D5,
    E5,
    F5,
    G5,
    A5,
    B5,
    C6,
};

struct KitPiece {
    int16_t key;
    int16_t tcd;
    Notehead head;
    bool foot;
    const char* name;
};

// Hands on and above the staff, feet below the middle: kick in the first space, snare in the
// third, toms from the top space down to the floor toms, cymbals on and above the top line with
// x heads (open hi-hat circled, bells diamond); Latin percussion in triangles and squares.
constexpr KitPiece kGeneralMidiKit[] = {
    {35, E4, Notehead::Normal, true, "Acoustic Bass Drum"},
    {36, F4, Notehead::Normal, true, "Bass Drum 1"},
    {37, C5, Notehead::X, false, "Side Stick"},
    {38, C5, Notehead::Normal, false, "Acoustic Snare"},
    {39, B4, Notehead::X, false, "Hand Clap"},
    {40, C5, Notehead::Normal, false, "Electric Snare"},
    {41, G4, Notehead::Normal, false, "Low Floor Tom"},
    {42, G5, Notehead::X, false, "Closed Hi-Hat"},
    {43, A4, Notehead::Normal, false, "High Floor Tom"},
    {44, D4, Notehead::X, true, "Pedal Hi-Hat"},
    {45, B4, Notehead::Normal, false, "Low Tom"},
    {46, G5, Notehead::CircleX, false, "Open Hi-Hat"},
    {47, D5, Notehead::Normal, false, "Low-Mid Tom"},
    {48, E5, Notehead::Normal, false, "Hi-Mid Tom"},
    {49, A5, Notehead::X, false, "Crash Cymbal 1"},
    {50, F5, Notehead::Normal, false, "High Tom"},
    {51, F5, Notehead::X, false, "Ride Cymbal 1"},
    {52, C6, Notehead::X, false, "Chinese Cymbal"},
    {53, F5, Notehead::Diamond, false, "Ride Bell"},
    {54, E5, Notehead::X, false, "Tambourine"},
    {55, A5, Notehead::Diamond, false, "Splash Cymbal"},
    {56, A5, Notehead::Triangle, false, "Cowbell"},
    {57, B5, Notehead::X, false, "Crash Cymbal 2"},
    {58, A4, Notehead::X, false, "Vibraslap"},
    {59, D5, Notehead::X, false, "Ride Cymbal 2"},
    {60, E5, Notehead::Triangle, false, "Hi Bongo"},
    {61, D5, Notehead::Triangle, false, "Low Bongo"},
    {62, C5, Notehead::Triangle, false, "Mute Hi Conga"},
    {63, B4, Notehead::Triangle, false, "Open Hi Conga"},
    {64, A4, Notehead::Triangle, false, "Low Conga"},
    {65, E5, Notehead::Square, false, "High Timbale"},
    {66, D5, Notehead::Square, false, "Low Timbale"},
    {67, B5, Notehead::Triangle, false, "High Agogo"},
    {68, G5, Notehead::Triangle, false, "Low Agogo"},
    {69, E4, Notehead::X, false, "Cabasa"},
    {70, F4, Notehead::X, false, "Maracas"},
    {71, B5, Notehead::Diamond, false, "Short Whistle"},
    {72, C6, Notehead::Diamond, false, "Long Whistle"},
    {73, G4, Notehead::X, false, "Short Guiro"},
    {74, G4, Notehead::Diamond, false, "Long Guiro"},
    {75, A4, Notehead::Diamond, false, "Claves"},
    {76, E5, Notehead::Diamond, false, "Hi Wood Block"},
    {77, D5, Notehead::Diamond, false, "Low Wood Block"},
    {78, C5, Notehead::Diamond, false, "Mute Cuica"},
    {79, B4, Notehead::Diamond, false, "Open Cuica"},
    {80, G5, Notehead::Diamond, false, "Mute Triangle"},
    {81, G5, Notehead::Slash, false, "Open Triangle"},
};

}   // namespace

const char* NoteheadName(Notehead head)
{
    switch (head) {
        case Notehead::Normal: return "normal";
        case Notehead::X: return "x";
        case Notehead::CircleX: return "circle-x";
        case Notehead::Diamond: return "diamond";
        case Notehead::Triangle: return "triangle";
        case Notehead::Square: return "square";
        case Notehead::Slash: return "slash";
    }
    return "normal";
}

const PercussionNote* PercussionMap::ForKey(int key) const
{
    for (const PercussionNote& note : notes) {
        if (note.key == key) {
            return &note;
        }
    }
    return nullptr;
}

const PercussionNote* PercussionMap::At(int tcd, Notehead head) const
{
    for (const PercussionNote& note : notes) {
        if (note.tcd == tcd && note.notehead == head) {
            return &note;
        }
    }
    return nullptr;
}

bool PercussionMap::operator==(const PercussionMap& other) const
{
    if (name != other.name || notes.size() != other.notes.size()) {
        return false;
    }
    for (size_t i = 0; i < notes.size(); ++i) {
        const PercussionNote& a = notes[i];
        const PercussionNote& b = other.notes[i];
        if (a.key != b.key || a.tcd != b.tcd || a.notehead != b.notehead || a.foot != b.foot || a.name != b.name) {
            return false;
        }
    }
    return true;
}

PercussionMap GeneralMidiKit()
{
    PercussionMap map;
    map.name = "GM Drum Kit";
    for (const KitPiece& piece : kGeneralMidiKit) {
        map.notes.push_back(PercussionNote{piece.key, piece.tcd, piece.head, piece.foot, piece.name});
    }
    return map;
}

}   // namespace stavio
