// The host's MIDI import (SX_ProcessMidiData): the drum hits of a Standard MIDI File written
// into layer 0 of one staff over a region of measures, in place of what they held.
//
// Groove bar 1 goes into the region's first measure, bar 2 into the next, and so on; bars
// beyond the region are ignored. Each measure of the region is replaced whole: its old entries
// go from every layer, the new ones are in layer 0, and a measure the file does not reach, or
// where nothing sounds, gets one whole-measure rest. Nothing outside the region changes. Which
// hits count and how bars are found: drum_groove.h; the grid: beat_quantiser.h; the entries:
// measure_notation.h. Frames go through the document's frame store, which keeps the staff's
// frame detail ('SDGF') in step.
//
// A file that cannot be read, or a region that is not in the document, changes nothing.
#pragma once

#include "sdk/types.h"
#include "stavio/document/document.h"

#include <cstdint>
#include <string>
#include <vector>

namespace stavio::midi_import {

// Imports the file at `path` into the region: its staff is slot start.IUslot of instrument
// list start.IUlist, its measures start.meas .. end.meas. False, with `error` saying why, when
// nothing was imported.
bool ImportMidiFile(Document& doc, const EREGION& region, const std::string& path, std::string& error);

// The same from a file image; `name` is used in messages.
bool ImportMidiBytes(Document& doc, const EREGION& region, const std::vector<uint8_t>& bytes, const std::string& name,
                     std::string& error);

// SX_ProcessMidiData on a document: 1 when it imported, 0 when not. Why the last call of the
// process failed is kept for the host's own reports ("" after a success).
int32_t ProcessMidiData(Document& doc, const SxpMidiData& data);
const std::string& LastProcessMidiDataError();

// The path a file specification names: its folder and name joined.
std::string PathOf(const EFSSPEC& spec);

}   // namespace stavio::midi_import
