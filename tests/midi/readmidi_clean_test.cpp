// The cleaner's passes, the meter check, hostile files, and equality with the byte-moving
// reference on random valid files.
#include <filesystem>
#include <map>
#include <set>

#include "midi_test_support.h"
#include "tamberlyne/midi/midi_alerts.h"

namespace {
Bytes Note(uint8_t status, uint8_t key, uint8_t delta = 0x00)
{
    return {delta, status, key, 0x64};
}
const Bytes kTempoTrack = Concat({{0x00, 0xFF, 0x51, 0x03, 0x07, 0xA1, 0x20}, kEndOfTrack});
using support::Ints;

class MidiCleaner : public MidiTest {};

// Tracks without drums, and drum tracks after the first, go; the header's count follows.
TEST_F(MidiCleaner, OnlyTheFirstDrumTrackAndTheTracksBeforeItAreKept)
{
    const Bytes piano = Concat({{0x00, 0xC0, 0x00}, Note(0x90, 60), Note(0x80, 60, 0x60), kEndOfTrack});
    const Bytes drums = Concat({Note(0x99, 36), Note(0x89, 42, 0x60), kEndOfTrack});
    const Bytes moreDrums = Concat({Note(0x99, 38, 0x70), Note(0x99, 38, 0x7F), kEndOfTrack});
    for (const auto& tracks :
         std::vector<std::vector<Bytes>>{{kTempoTrack, piano, drums}, {kTempoTrack, drums, moreDrums}}) {
        const CleanOutcome out = Clean(Smf(1, 480, tracks));
        ASSERT_TRUE(out.result);
        EXPECT_EQ(out.image, Smf(1, 480, {kTempoTrack, drums}));
        EXPECT_EQ(Ints(out.foundDrums, out.remapped, out.tpq, out.lastBar, out.lastTickInBar, out.meter.TPM),
                  Ints(true, false, 480, 1, 96, 1920));
    }
    EXPECT_TRUE(Alerts().empty());
}

TEST_F(MidiCleaner, HighKeysAreMovedInASecondPass)
{
    const Bytes drums = Concat({Note(0x99, 36), Note(0x99, 38), Note(0x99, 62), Note(0x89, 62, 0x30), kEndOfTrack});
    const CleanOutcome out = Clean(Smf(1, 480, {kTempoTrack, drums}));
    ASSERT_TRUE(out.result);
    const SmfListing listing = ListSmf(out.image);
    ASSERT_EQ(listing.tracks.size(), 2u);
    EXPECT_EQ(Ints(out.remapped, out.reverseMap[37], listing.tracks[1][2].data1, listing.tracks[1][3].data1),
              Ints(true, 62, 37, 37));
}

TEST_F(MidiCleaner, FormatZeroNeutralisedMessagesCountAsKeyZeroInPassTwo)
{
    const Bytes track = Concat({{0x00, 0xC1, 0x20}, Note(0x91, 40), Note(0x99, 36), Note(0x99, 64), kEndOfTrack});
    const CleanOutcome out = Clean(Smf(0, 96, {track}));
    ASSERT_TRUE(out.result);
    EXPECT_EQ(Ints(out.remapped, out.reverseMap[1]), Ints(true, 64)) << "the search starts above key 0, not above 36";
    const SmfListing listing = ListSmf(out.image);
    ASSERT_EQ(listing.tracks.size(), 1u);
    for (const SmfEvent& ev : listing.tracks[0])
        if (ev.status != 0xFF) {
            EXPECT_EQ(ev.Channel(), 10);
        }
    EXPECT_EQ(listing.tracks[0][3].data1, 1);
}

TEST_F(MidiCleaner, BadTrackStopsThePassWithEarlierTracksCleaned)
{
    const Bytes piano = Concat({Note(0x90, 60), kEndOfTrack});
    const Bytes file = Concat({Smf(1, 480, {piano}, 2), Chunk("XTrk", kEndOfTrack)});
    const CleanOutcome out = Clean(file);
    EXPECT_FALSE(out.result);
    EXPECT_EQ(Alerts(), std::vector<std::string>{"Invalid track chunk ID"});
    EXPECT_EQ(out.image[23], 0x89);
}

TEST_F(MidiCleaner, MeterCheckWarnsOncePerFlag)
{
    ReaderHarness h(Smf(1, 480, {kEndOfTrack}));
    h.reader.TPQ = 480;
    EDTMeasureSpec measure{};
    measure.beats = 3;
    measure.divbeat = 1024;
    bool reported = false;
    h.reader.CheckTimeSignature(measure, reported, 3, 480, 1);
    EXPECT_TRUE(Alerts().empty());
    measure.beats = 4;
    h.reader.CheckTimeSignature(measure, reported, 3, 480, 1);
    h.reader.CheckTimeSignature(measure, reported, 3, 480, 1);
    EXPECT_TRUE(reported);
    EXPECT_EQ(Alerts(), std::vector<std::string>{"Time signature mismatch."});
    reported = false;
    measure.auxflag = 0x40;
    h.reader.CheckTimeSignature(measure, reported, 3, 480, 1);
    EXPECT_FALSE(reported);
}

// Malformed files: messages and a false result at worst, never a step outside the block
// (the sanitizers watch), a hang, an overflow or a message of its own making.
TEST_F(MidiCleaner, HostileFilesAreSurvived)
{
    const std::set<std::string> messages = {midi_alerts::kReadBeyondEnd,
                                            midi_alerts::kBadHeaderId,
                                            midi_alerts::kBadHeaderLength,
                                            midi_alerts::kLongHeader,
                                            midi_alerts::kBadFormat,
                                            midi_alerts::kNoTracks,
                                            midi_alerts::kFormat2FirstTrackOnly,
                                            midi_alerts::kFormat0OneTrack,
                                            midi_alerts::kUnusualFrameRate,
                                            midi_alerts::kBadTrackId,
                                            midi_alerts::kRunningStatusUndefined,
                                            midi_alerts::kTimeSignatureChange,
                                            midi_alerts::kOffbeatTimeSignature,
                                            midi_alerts::kEndOfTrackMissing};
    // The hand-made broken seeds of the fuzzer, then random damage to valid files.
    std::vector<Bytes> files;
    for (const auto& entry : std::filesystem::directory_iterator(SourceDir() + "/fuzz/corpus"))
        files.push_back(ReadBytes(entry.path().string()));
    std::mt19937 rng(11);
    for (int i = 0; i < 300; ++i) {
        files.push_back(RandomValidFile(rng));
        for (int flips = 1 + int(rng() % 8); flips > 0; --flips)
            files.back()[rng() % files.back().size()] = uint8_t(rng());
    }
    for (const Bytes& file : files) {
        Alerts().clear();
        EXPECT_LE(Clean(file).image.size(), 2 * file.size());
        for (const std::string& alert : Alerts()) EXPECT_EQ(messages.count(alert), 1u) << alert;
    }
}

TEST_F(MidiCleaner, EveryMessageIsShownHoweverMany)
{
    const CleanOutcome out = Clean(Smf(1, 480, std::vector<Bytes>(100)));   // no track ends properly
    EXPECT_TRUE(out.result);
    EXPECT_EQ(Alerts(), std::vector<std::string>(100, "End of track meta event missing"));
}

TEST_F(MidiCleaner, FullBlockFailsTheConversionInsteadOfOverflowing)
{
    const Bytes file = Smf(1, 480, {Concat({{0x00, 0xC0, 0x05, 0x00, 0xC0, 0x06}, Note(0x99, 36), kEndOfTrack})});
    const CleanOutcome out = Clean(file, int32_t(file.size() + 1));
    EXPECT_FALSE(out.result);
    EXPECT_EQ(out.image.size(), file.size() + 1);
}

// Random valid files, whole and cut short anywhere (as a broken download or copy leaves them):
// the cleaner reads them as far as they go, and on past the end, as the definition does, to the
// byte and to the number of end-of-file messages.
TEST_F(MidiCleaner, MatchesTheByteMovingDefinitionOnRandomFilesWholeAndCutShort)
{
    std::mt19937 rng(2024);
    int secondPasses = 0;
    std::map<bool, int> cutResults;
    for (int i = 0; i < 400; ++i) {
        const Bytes whole = RandomValidFile(rng);
        const Bytes cut(whole.begin(), whole.begin() + 1 + std::ptrdiff_t(rng() % whole.size()));
        for (const bool isCut : {false, true}) {
            Alerts().clear();
            const CleanOutcome fast = Clean(isCut ? cut : whole);
            const CleanOutcome slow = CleanByMovingBytes(isCut ? cut : whole);
            ASSERT_EQ(fast.image, slow.image) << "file " << i << (isCut ? " cut" : "");
            ASSERT_EQ(fast.reverseMap, slow.reverseMap);
            ASSERT_EQ(
                Ints(fast.result, fast.foundDrums, fast.remapped, fast.lastBar, fast.lastTickInBar, fast.readsPastEnd),
                Ints(slow.result, slow.foundDrums, slow.remapped, slow.lastBar, slow.lastTickInBar, slow.readsPastEnd))
                << "file " << i << (isCut ? " cut" : "");
            secondPasses += !isCut && fast.remapped;
            cutResults[fast.result] += isCut;
        }
    }
    EXPECT_GT(secondPasses, 50);
    EXPECT_GT(std::min(cutResults[false], cutResults[true]), 30);   // refusals, and files read past their end
}

// Thousands of one-data-byte messages, each growing the kept track by a byte, both passes.
TEST_F(MidiCleaner, MatchesTheByteMovingDefinitionOnAManyInsertionFile)
{
    Bytes track;
    for (int m = 0; m < 3000; ++m) {
        const Bytes part = Concat({{0x00, uint8_t(m % 2 ? 0xC3 : 0xD5), uint8_t(m % 128)},
                                   Note(0x99, 36, 0x10),
                                   Note(0x99, uint8_t(m % 3 ? 38 : 63), 0x10),
                                   {0x05, 0x3E, 0x00}});
        track.insert(track.end(), part.begin(), part.end());
    }
    const Bytes file = Smf(0, 480, {Concat({track, kEndOfTrack})});
    const CleanOutcome fast = Clean(file);
    ASSERT_TRUE(fast.result && fast.remapped);
    EXPECT_EQ(fast.image.size(), file.size() + 3000);
    EXPECT_EQ(fast.image, CleanByMovingBytes(file).image);
}
}   // namespace
