// Readable views of a staff's notes over a range of measures: a drum grid for people and JSON
// for tools. Both read every layer of the staff (layer 0 first) and leave out measures the
// document does not have; a staff that does not exist gives an empty view.
//
// Drum grid: one line per kit piece that sounds in the range, named from the staff's
// percussion map (its drum staff record's map, else map 1; "Key 62" for a key the map does not
// name), ordered from the top of the staff down. A column per grid step: sixteenths, or the
// thirds of a beat whose notes lie under a tuplet. '|' marks the bar lines; 'x' marks a hit of
// a cymbal or hi-hat (x noteheads), 'o' any other hit, '-' nothing. Two header lines give the
// measure numbers and the beats:
//
//     Measure        |1               |
//     Beat           |1   2   3   4   |
//     Closed Hi-Hat  |x-x-x-x-x-x-x-x-|
//     Acoustic Snare |----o-------o---|
//     Bass Drum 1    |o-------o-o-----|
//
// JSON: one array, an object per entry in measure, layer and position order:
//     {"measure":1,"layer":0,"position":0,"duration":512,"keys":[36,42],"tuplet":false}
//     {"measure":1,"layer":0,"position":512,"duration":512,"rest":true,"tuplet":false}
// `position` and `duration` are EDU: where the entry starts in its measure and how long it
// actually lasts (tuplet-scaled); `keys` are the notes' MIDI keys as SX_NoteToMidi gives them.
#pragma once

#include "stavio/document/document.h"

#include <cstdint>
#include <string>
#include <vector>

namespace stavio::views {

// `inst` is the staff's instrument number (Document::SlotToInst gives it for a slot). The grid
// heads each measure with `measureNames[meas - 1]` (a score's own numbers) where it has one,
// else with the measure's position.
std::string RenderDrumGrid(const Document& doc, int32_t inst, int32_t firstMeasure, int32_t lastMeasure,
                           const std::vector<std::string>& measureNames = {});
std::string StaffEntriesJson(const Document& doc, int32_t inst, int32_t firstMeasure, int32_t lastMeasure);

}   // namespace stavio::views
