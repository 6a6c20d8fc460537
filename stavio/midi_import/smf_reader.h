// The host's own Standard MIDI File reader: the header, every track chunk event by event
// (running status, meta events, system exclusive), bounded by the bytes it is given.
//
// It never reads outside the data: every length and every event is checked against its chunk.
// A fault ends the reading of its track; the events before it stay, and the fault is kept in a
// message that names the track, the byte offset and what is wrong. Chunks that are not "MTrk" are skipped, as the file format asks.
//
// Files cleaned by a plug-in may hold "neutralised" messages: a channel message whose status
// was overwritten with a note-off on channel 10, key 0, velocity 64 (0x89 0x00 0x40), a
// one-data-byte message (program change, channel pressure) having been lengthened by a byte.
// Messages that followed the original with running status were left as they were, so after
// such a message data bytes may follow that belong to one-data-byte messages. Read as running
// status 0x89 they would take two bytes each and the track would go out of step. The reader
// therefore treats running status after the exact form 0x89 0x00 0x40 as unsure: it reads
// such a run with two data bytes per message first and, when the track then cannot be read to
// its end, with one (see track_reader.h). Every other message is read the standard way.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace stavio::midi_import {

// One event in 12 bytes: a file of a million events is read into a few flat arrays, not a
// million small ones. The data of meta and system-exclusive events lives in the file's data
// store (SmfFile::DataOf). A track that runs past tick 2^32 - 1 (some 30,000 bars at the finest
// resolution) is damaged there.
struct SmfEvent {
    uint32_t tick = 0;     // from the start of its track
    uint32_t dataAt = 0;   // meta and system exclusive: where its data starts in the data store
    uint8_t status = 0;    // 0x80-0xEF channel message, 0xFF meta, 0xF0/0xF7 system exclusive
    uint8_t data1 = 0;     // first data byte; the meta type for a meta event
    uint8_t data2 = 0;     // second data byte (0 for a one-data-byte message)

    bool IsMeta(uint8_t type) const { return status == 0xFF && data1 == type; }
};

struct SmfTrack {
    std::vector<SmfEvent> events;   // in file order; ticks never decrease
};

// The data of one meta or system-exclusive event.
struct EventData {
    const uint8_t* bytes = nullptr;
    size_t size = 0;

    uint8_t operator[](size_t i) const { return bytes[i]; }
};

struct SmfFile {
    int format = 0;   // 0, 1 or 2
    int ticksPerQuarter = 0;
    std::vector<SmfTrack> tracks;
    // The data of the meta and system-exclusive events, each after its length (32 bits).
    std::vector<uint8_t> dataStore;
    // What could not be read of a damaged file (the first fault: the track, the byte offset and
    // what is wrong); "" when the whole file was read.
    std::string damage;

    EventData DataOf(const SmfEvent& event) const;
};

constexpr uint8_t kMetaEndOfTrack = 0x2F;
constexpr uint8_t kMetaTempo = 0x51;
constexpr uint8_t kMetaTimeSignature = 0x58;

// Reads a whole file image. `name` is used in messages. False, with `error` set, when the
// image is not a Standard MIDI File this reader can use: its header chunk is missing, cut or
// unusable.
//
// A damaged file is read as far as it goes, as a player reads it: a track ends at its first
// fault (the events before it are kept), a chunk that claims more bytes than the file has is
// read to the file's end, and a file that ends before the announced tracks keeps those it has.
// The first fault is kept in `damage`.
bool ReadSmf(const std::vector<uint8_t>& bytes, const std::string& name, SmfFile& file, std::string& error);

// Reads the file at `path` ("<path>: cannot be read" when it cannot be opened).
bool ReadSmfFile(const std::string& path, SmfFile& file, std::string& error);

// A file without a tempo event plays at 120 quarter notes a minute, as the file format has it.
constexpr double kDefaultFileTempo = 120.0;

// The tempo the file starts at, in quarter notes a minute: its earliest tempo event in any
// track (kDefaultFileTempo without one).
double StartTempo(const SmfFile& file);

}   // namespace stavio::midi_import
