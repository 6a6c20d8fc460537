// Standard MIDI Files for the tests: builders for small hand-made files, and a reader of its
// own, written from the file format alone, to check what the product read or wrote.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace support {

using Bytes = std::vector<uint8_t>;

Bytes Chunk(const char* id, const Bytes& body);
Bytes Concat(std::initializer_list<Bytes> parts);
Bytes Header(int format, int tracks, int division);
// A header chunk followed by one track chunk per body; the track count as given, if given.
Bytes Smf(int format, int division, const std::vector<Bytes>& trackBodies, int trackCountField = -1);
void PutNumber(Bytes& out, uint32_t value);                  // a variable-length quantity
inline const Bytes kEndOfTrack = {0x00, 0xFF, 0x2F, 0x00};   // inline: ready for other files' constants

struct DrumHit {
    int64_t tick = 0;
    int key = 0;
    int channel = 10;
};
// Format 0: the meter at tick 0, each hit a note-on with its note-off `offAfter` ticks later.
Bytes DrumFile(int tpq, int numerator, int denominator, std::vector<DrumHit> hits, int offAfter = 10);

struct SmfEvent {
    int32_t tick = 0;
    uint8_t status = 0;   // channel status, 0xFF for meta, 0xF0/0xF7 for system exclusive
    uint8_t data1 = 0;    // first data byte, or the meta type
    uint8_t data2 = 0;
    Bytes data;   // a meta or system-exclusive event's data
    bool IsNoteOn() const { return (status & 0xF0) == 0x90 && data2 > 0; }
    int Channel() const { return (status & 0x0F) + 1; }
};

struct SmfListing {
    int format = 0;
    int trackCountField = 0;
    int division = 0;
    std::vector<std::vector<SmfEvent>> tracks;
};

// Throws std::runtime_error when the bytes are not a well-formed file (every chunk must be
// whole and every track must end with its end-of-track event). `asFarAsItGoes` lists a damaged
// file as a player reads it: each track up to its first fault, a chunk that runs past the file
// to the file's end (only the header must be whole).
SmfListing ListSmf(const Bytes& bytes, bool asFarAsItGoes = false);

// The listing as text, an event a line: "tick on/off/control/program/... channel data..." for
// channel events; "tick meta TYPE" and its bytes in hex (a text in quotes), "tick sysex" and its
// bytes.
std::string ListingText(const SmfListing& file);

}   // namespace support
