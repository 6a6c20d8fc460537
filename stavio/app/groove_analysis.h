// What a groove file offers the plug-in, read with the host's own MIDI reader: its meter, how
// many bars the plug-in repeats, its tempo, the kit pieces it plays and its feel; or, for a file
// the plug-in would refuse, why, in a person's words.
//
// The plug-in takes the meter from the time signature at the start of the first track (4/4
// without one), imports only the first track that holds drum-channel messages, and takes the
// bar of that track's last drum-channel message as the groove's length, less one when that
// message lies in the first 70 % of its bar (a closing crash is not part of the pattern). It
// refuses a file it cannot read, one with a time signature after the start, and one without
// drum-channel messages.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace stavio::app {

// The file the plug-in writes into the groove folder while it inserts a groove.
constexpr char kTemporaryGrooveFileName[] = "Tamberlyne$$Temp$$File.mid";

enum class GrooveFeel {
    Straight,   // every hit on the straight eighth or sixteenth grid
    Triplet,    // off-beat hits on the thirds of the beat (a compound meter's eighths count too)
    Swing,      // off-beat hits played late, off both grids
    Mixed       // straight subdivisions beside triplet or swung ones
};

const char* FeelName(GrooveFeel feel);

struct KitPiece {
    int key = 0;
    std::string name;   // General MIDI name ("Key 90" outside the kit)
};

struct GrooveSummary {
    std::string file;      // the file's name in the folder
    std::string name;      // the name the dialog lists: the file name without its extension
    std::string refusal;   // why the plug-in would refuse the file; empty when it takes it
    int numerator = 4;
    int denominator = 4;
    int bars = 0;                // the length the plug-in repeats
    bool closingHits = false;    // a bar of closing hits follows, which the plug-in leaves out
    double tempo = 120;          // quarter notes per minute at the start
    std::vector<KitPiece> kit;   // in key order
    GrooveFeel feel = GrooveFeel::Straight;
    int drumTrack = 0;   // index of the track the plug-in imports

    bool Usable() const { return refusal.empty(); }
    std::string Meter() const { return std::to_string(numerator) + "/" + std::to_string(denominator); }
};

// Reads the file at `path` (named `file` in the folder).
GrooveSummary AnalyseGrooveFile(const std::string& path, const std::string& file);

// Whether the plug-in offers a file of this name: longer than four characters and ending in
// exactly ".mid", ".MID" or ".Mid", and not its own temporary file.
bool IsOfferedGrooveName(const std::string& file);
// Whether a name ends in ".mid" in any mix of capitals (so that it looks like a groove file).
bool LooksLikeGrooveName(const std::string& file);

// The file image keeping only the first track and the imported drum track, as the plug-in
// hands it to the host's import. Empty when the image's chunks cannot be walked.
std::vector<uint8_t> ImportedTracksImage(const std::vector<uint8_t>& bytes, int drumTrack);

}   // namespace stavio::app
