// The options of `tamberlyne fill`.
#pragma once

#include "stavio/app/sound_output.h"
#include "toolbox/status.h"

#include <optional>
#include <string>
#include <vector>

namespace stavio::app {

enum class GrooveStyle {
    DrumStaff = 0,
    PercussionClef = 1,
    Slashes = 2
};

struct MeasureRange {
    int first = 0;
    int last = 0;
};

// One more fill of the same run (--fill RANGE=GROOVE after the first).
struct FillStep {
    std::string measuresText;   // as given
    MeasureRange measures;      // resolved (the demo's numbers, or the score's through score_fill.h)
    std::string groove;
};

struct FillOptions {
    std::optional<MeasureRange> measures;   // none: nothing selected (the plug-in asks)
    std::optional<std::string> groove;      // the groove's name (its file name, with or without ".mid")
    std::optional<std::string> staff;       // a staff's name, or its number in the staff pop-up
    std::optional<GrooveStyle> style;
    bool newStaff = false;
    std::optional<bool> answerYes;        // --yes / --no; none: questions are answered No
    std::optional<std::string> library;   // the folder holding the .mid files
    bool interactive = false;
    bool json = false;
    // A MusicXML score to fill instead of the demo score (score_fill.h).
    std::optional<std::string> score;
    std::optional<std::string> measuresText;   // --measures as given: the score's own numbers
    std::optional<std::string> output;         // -o OUT ("-": standard output)
    bool inPlace = false;
    bool force = false;
    bool dryRun = false;
    // --fill RANGE=GROOVE given more than once: the first sets measures and groove, these follow.
    std::vector<FillStep> moreFills;
    SoundOptions sound;   // --midi, --audio, --tempo, --sound-font: the filled measures' sound
};

// Parses the arguments that follow the command; a failure says what is wrong, for a person.
toolbox::Result<FillOptions> ParseFillOptions(const std::vector<std::string>& arguments);

// "5-12" or "7": measures counted from 1.
toolbox::Result<MeasureRange> ReadMeasureRange(const std::string& text);

// "drums", "percussion-clef", "slashes".
const char* StyleOptionName(GrooveStyle style);

// The part of the usage text that describes the fill command.
std::string FillUsageText();

}   // namespace stavio::app
