// Shared pieces of the import tests: the drum hits of a file read independently, the groove
// library, a document with a drum staff, frames in short. Hand-made files come from tests/support.
#pragma once

#include "sdk/types.h"
#include "stavio/document/document.h"
#include "tests/support/smf.h"
#include "tests/support/test_support.h"

#include <string>
#include <vector>

namespace import_test {

using support::Bytes;
using support::Chunk;
using support::Concat;
using support::DrumFile;
using support::DrumHit;
using support::GrooveLibrary;
using support::Header;
using support::kEndOfTrack;
using support::ReadBytes;

// Ticks per quarter, the meter at tick 0, the sounding channel-10 notes of every track in time order.
struct Listing {
    int tpq = 0, numerator = 4, denominator = 4;
    std::vector<DrumHit> hits;
};
Listing ListDrumHits(const Bytes& file, bool asFarAsItGoes = false);   // see support::ListSmf

std::vector<std::string> GrooveFiles();   // paths, in name order

// Staff 1 "Drum Set" (a drum staff on map 1), staff 2 "Piano"; `measures` of beats x divbeat.
stavio::Document DrumDocument(int measures, int16_t beats = 4, int16_t divbeat = 1024);
inline EREGION Region(int slot, int first, int last)
{
    return support::Region(uint16_t(slot), uint16_t(slot), uint16_t(first), uint16_t(last));
}

// Per entry "position+actual" ("=notated" when that differs, "t" under a tuplet), then ":r"
// for a rest or ":" and its MIDI keys; entries joined by " | ".
std::string Describe(const stavio::FrameContent& frame);
std::string Describe(const stavio::Document& doc, int32_t inst, int32_t meas);   // layer 0

}   // namespace import_test
