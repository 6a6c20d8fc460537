// Renders a groove pattern as a Standard MIDI File.
#pragma once

#include <cstdint>
#include <vector>

#include "grooves/tools/groove_pattern.h"

namespace grooves {

std::vector<uint8_t> RenderMidiFile(const GroovePattern& pattern);

}   // namespace grooves
