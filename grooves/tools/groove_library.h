// The whole groove library: every pattern file of a folder rendered as a MIDI file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace grooves {

struct RenderedGroove {
    std::string fileName;   // "<title>.mid"
    std::vector<uint8_t> bytes;
};

// Renders every "*.groove" file of `patternDir`, sorted by file name. Throws PatternError
// naming the file and line of the first problem, or when two grooves share a title.
std::vector<RenderedGroove> RenderLibrary(const std::string& patternDir);

}   // namespace grooves
