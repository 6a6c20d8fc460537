// The options of `tamberlyne fill`.
#pragma once

#include "stavio/app/sound_output.h"

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
    SoundOptions sound;   // --midi, --audio, --tempo, --sound-font: the filled measures' sound
};

// Parses the arguments that follow the command. On failure returns false and sets `error` to a
// message for a person.
bool ParseFillOptions(const std::vector<std::string>& arguments, FillOptions& options, std::string& error);

// "5-12" or "7": measures counted from 1. False with `error` for a person otherwise.
bool ReadMeasureRange(const std::string& text, MeasureRange& range, std::string& error);

// "drums", "percussion-clef", "slashes".
const char* StyleOptionName(GrooveStyle style);

// The part of the usage text that describes the fill command.
std::string FillUsageText();

}   // namespace stavio::app
