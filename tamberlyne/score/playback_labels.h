// Playback labels: text expressions that switch the host's human-playback interpretation off over
// an inserted groove ("<HP off>" at its first measure) and back on after it ("<HP on>"), without
// duplicate or contradictory labels.
#pragma once

#include <cstdint>

constexpr int16_t kPlaybackTypeHumanOff = 529;   // created with these; recognised by the low byte
constexpr int16_t kPlaybackTypeHumanOn = 528;

// Attaches the expression `text` of playback type `type` (found or created) to staff `inst` at
// `meas` and marks the measure as carrying expressions. Returns the result of saving the measure.
bool AddLabel(const char* text, int inst, int meas, int16_t type);

// Puts "<HP off>" at `meas` unless playback is already off there: an "off" label in `meas` or,
// looking back at most 25 measures, an "off" label with no "on" label in the same measure.
// "<HP on>" labels of the staff in `meas` are removed. True when a label was added.
bool TurnHumanPlaybackOff(int inst, int meas);

// Puts "<HP on>" at `meas` unless the staff has a playback label there already. Non-zero.
bool TurnHumanPlaybackOn(int inst, int meas);
