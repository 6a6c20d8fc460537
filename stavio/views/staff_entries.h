// The entries of a staff over a range of measures, as the views show them.
#pragma once

#include "stavio/document/document.h"

#include <cstdint>
#include <vector>

namespace stavio::views {

struct ViewEntry {
    int32_t measure = 0;
    int layer = 0;
    int32_t position = 0;   // EDU in the measure
    int32_t duration = 0;   // actual EDU
    bool tuplet = false;
    std::vector<int> keys;       // ascending MIDI keys; empty for a rest
    std::vector<int16_t> tcds;   // the staff position of each key, in the same order
};

// Measures firstMeasure..lastMeasure that the document has, every layer, in measure, layer and
// entry order. Empty when the staff does not exist.
std::vector<ViewEntry> CollectEntries(const Document& doc, int32_t inst, int32_t firstMeasure, int32_t lastMeasure);

}   // namespace stavio::views
