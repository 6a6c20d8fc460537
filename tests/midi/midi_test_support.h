// Shared pieces of the midi tests: a fixture that records the host alerts, a cleaning run with
// all its outputs, random valid files, and the slow reference cleaner that moves the image's
// bytes on every insertion. Small MIDI files and an independent reader are in tests/support.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "sdk/funcs.h"
#include "tamberlyne/midi/readmidi.h"
#include "tests/support/smf.h"
#include "tests/support/test_support.h"

using support::Bytes;
using support::Chunk;
using support::Concat;
using support::kEndOfTrack;
using support::ListSmf;
using support::ReadBytes;
using support::Smf;
using support::SmfEvent;
using support::SmfListing;
using support::SourceDir;

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
    int64_t readsPastEnd = 0;          // end-of-file messages shown (reads past the end, for the reference)
};

CleanOutcome Clean(const Bytes& file, int32_t capacity = -1);
CleanOutcome CleanByMovingBytes(const Bytes& file);

Bytes RandomValidFile(std::mt19937& rng);
