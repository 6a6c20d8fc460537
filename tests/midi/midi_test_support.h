// Shared pieces of the midi tests: a fixture that records the host alerts, builders for small
// MIDI files, a cleaning run with all its outputs, random valid files, the slow reference
// cleaner that moves the image's bytes on every insertion, and an independent file reader.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "sdk/funcs.h"
#include "tamberlyne/midi/readmidi.h"

using Bytes = std::vector<uint8_t>;

// Installs a recording alert call in the host table for the test, and restores it after.
class MidiTest : public ::testing::Test {
public:
    static std::vector<std::string>& Alerts();

protected:
    void SetUp() override;
    void TearDown() override;

private:
    SXAlertMessageProc saved_ = nullptr;
};

// Header chunk (length 6) followed by one track chunk per body.
Bytes Smf(int format, int division, const std::vector<Bytes>& trackBodies, int trackCountField = -1);
Bytes Chunk(const char* id, const Bytes& body);
Bytes Concat(std::initializer_list<Bytes> parts);
extern const Bytes kEndOfTrack;   // 00 FF 2F 00

// A reader over a copy of the file in a block of twice its size (or `capacity`).
struct ReaderHarness {
    explicit ReaderHarness(const Bytes& file, int32_t capacity = -1);
    Bytes Image();
    std::vector<char> block;
    int32_t size;
    TMidiRead reader;
};

struct CleanOutcome {
    bool result = false;
    Bytes image;
    LEventRec meter;
    int32_t tpq = 0;
    bool foundDrums = false;
    int32_t lastBar = 0;
    int32_t lastTickInBar = 0;
    bool remapped = false;
    std::vector<uint8_t> reverseMap;   // 128 entries
};

CleanOutcome Clean(const Bytes& file, int32_t capacity = -1);
CleanOutcome CleanByMovingBytes(const Bytes& file);

Bytes RandomValidFile(std::mt19937& rng);
Bytes ReadFileBytes(const std::string& path);
std::string SourceDir();

// A small Standard MIDI File reader of its own, written from the file format alone, to check
// what the cleaner produced: it lists tracks and their events.
struct SmfEvent {
    int32_t tick = 0;
    uint8_t status = 0;      // channel status, 0xFF for meta, 0xF0/0xF7 for system exclusive
    uint8_t data1 = 0;       // first data byte, or the meta type
    uint8_t data2 = 0;
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
// whole and every track must end with its end-of-track event).
SmfListing ListSmf(const std::vector<uint8_t>& bytes);

