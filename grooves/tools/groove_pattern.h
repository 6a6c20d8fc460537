// A groove as written in the library's pattern files (the format is described in
// grooves/README.md): meter, grid, tempo, and one or more tracks of drum-grid or note lines.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace grooves {

struct PatternError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// One sounding note: grid step (counted over the whole groove), length in steps, key, velocity.
struct GridNote {
    int step = 0;
    int steps = 1;
    int key = 0;
    int velocity = 0;
};

struct PatternTrack {
    std::string name;
    int channel = 10;   // 1..16
    int program = -1;   // -1: no program change
    std::vector<GridNote> notes;
    bool IsDrums() const { return channel == 10; }
};

struct GroovePattern {
    std::string title;   // also the file name, without ".mid"
    int numerator = 4;
    int denominator = 4;
    int division = 480;   // ticks per quarter note
    int tempo = 120;      // quarter notes per minute
    int format = 1;       // 0: one track; 1: tempo track plus one track per part
    int stepsPerBar = 8;
    int bars = 1;
    int swing = 50;   // where the second step of each pair starts, in percent of the pair
    bool runningStatus = false;
    std::vector<int> ending;   // kit pieces struck on the downbeat after the last bar
    std::vector<PatternTrack> tracks;

    int BarTicks() const { return numerator * division * 4 / denominator; }
    // Tick of a grid step (swing applied); steps past the groove continue the same grid.
    int StepTick(int step) const;
    int StepTicks() const { return BarTicks() / stepsPerBar; }
};

// Parses one pattern file's text; `source` names it in error messages.
GroovePattern ParsePattern(const std::string& text, const std::string& source);

// General MIDI drum key of a kit piece name ("kick", "hiconga" ...), or -1.
int DrumKey(const std::string& piece);

}   // namespace grooves
