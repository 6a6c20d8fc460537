// Reads the events of one track chunk.
//
// A track is read as a sequence of events from its first byte; it ends with its end-of-track
// meta event (bytes after it are ignored) or, lacking one, exactly at the chunk's end. A fault
// ends it early: the events before the fault are kept. Data
// bytes must be below 0x80, and system messages other than 0xF0/0xF7 have no place in a file.
// Meta and system-exclusive events leave the running status as it was.
//
// Running status after a neutralised message (0x89 0x00 0x40) is unsure (see smf_reader.h):
// the run of messages that follows it is read with two data bytes each, and when that reading
// leads to a fault further on, the run is read again with one data byte each. The search tries
// each reading of a run at most once per byte offset, so a track is read in linear time. When
// no reading works, the fault reported, and the reading whose events are kept, is the one that
// gets furthest into the track (found by running the same search again up to that fault, so
// that the work stays linear).
#pragma once

#include "stavio/midi_import/smf_reader.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace stavio::midi_import {

// Reads the track chunk body bytes[begin, end) into `track`, the data of its meta and
// system-exclusive events into `dataStore` (after what is there). False with `error` (without
// the file name) when it cannot be read to its end; `error` names the byte offset in `bytes`,
// and `track` holds the events read before the fault.
bool ReadTrackEvents(const std::vector<uint8_t>& bytes, size_t begin, size_t end, SmfTrack& track,
                     std::vector<uint8_t>& dataStore, std::string& error);

}   // namespace stavio::midi_import
