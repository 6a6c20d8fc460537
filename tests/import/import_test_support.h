// Shared pieces of the import tests: hand-made Standard MIDI Files, an independent listing of a
// file's drum hits, the groove library, a document with a drum staff, frames in short.
#pragma once

#include "sdk/types.h"
#include "stavio/document/document.h"

#include <string>
#include <vector>

namespace import_test {

using Bytes = std::vector<uint8_t>;

struct DrumHit {
    int64_t tick = 0;
    int key = 0;
};

Bytes Chunk(const char* id, const Bytes& body);
Bytes Header(int format, int tracks, int division);
Bytes Concat(std::initializer_list<Bytes> parts);
// Format 0: the meter at tick 0, each hit a channel-10 note-on with its note-off 10 ticks later.
Bytes DrumFile(int tpq, int numerator, int denominator, std::vector<DrumHit> hits);

// An independent reading: ticks per quarter, the meter at tick 0, the note-ons of status 0x99
// with a velocity above 0 in every track, in time order.
struct Listing {
    int tpq = 0, numerator = 4, denominator = 4;
    std::vector<DrumHit> hits;
};
Listing ListDrumHits(const Bytes& file);

Bytes ReadFile(const std::string& path);
std::string GrooveFolder();
std::vector<std::string> GrooveFiles();   // paths, in name order

// Staff 1 "Drum Set" (a drum staff on map 1), staff 2 "Piano"; `measures` of beats x divbeat.
stavio::Document DrumDocument(int measures, int16_t beats = 4, int16_t divbeat = 1024);
EREGION Region(int slot, int first, int last);

// Per entry "position+actual" ("=notated" when that differs, "t" under a tuplet), then ":r"
// for a rest or ":" and its MIDI keys; entries joined by " | ".
std::string Describe(const stavio::FrameContent& frame);
std::string Describe(const stavio::Document& doc, int32_t inst, int32_t meas);   // layer 0

}  // namespace import_test
