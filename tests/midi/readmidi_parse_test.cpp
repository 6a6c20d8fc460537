// Header validation, track walking, event records and the in-place edits of one track.
#include <algorithm>

#include "midi_test_support.h"

namespace {
using Alerts_ = std::vector<std::string>;
const std::string kEof = "Parsing error - trying to read beyond EOF.";
using support::Ints;
const Bytes kTempo120 = {0x00, 0xFF, 0x51, 0x03, 0x07, 0xA1, 0x20};

struct HeaderCase {
    Bytes file;
    bool accepted;
    Alerts_ alerts;
    int32_t tpq = 0;   // of an accepted header
};

class MidiHeader : public MidiTest {};

TEST_F(MidiHeader, EachProblemHasItsMessage)
{
    const Bytes track = Chunk("MTrk", kEndOfTrack);
    const std::vector<HeaderCase> cases = {
        {Concat({Chunk("MThx", {0, 1, 0, 1, 1, 0xE0}), track}), false, {"Invalid header chunk ID"}},
        {Concat({Chunk("MThd", {0, 1, 0, 1, 1}), track}), false, {"Invalid header chunk length"}},
        {Concat({Chunk("MThd", {0, 1, 0, 1, 1, 0xE0, 9, 9}), track}),
         true,
         {"Header longer than version defined in Midi Specs 1.0 - additinal bytes ignored."},
         480},
        {Smf(3, 480, {kEndOfTrack}), false, {"Invalid format ID"}},
        {Smf(1, 480, {}, 0), false, {"No tracks in file"}},
        {Smf(2, 480, {kEndOfTrack, kEndOfTrack, kEndOfTrack}),
         true,
         {"Only track 1 will be read from a format 2 file."},
         480},
        {Smf(0, 480, {kEndOfTrack, kEndOfTrack}), false, {"Number of tracks should be 1 for format 0 files"}},
        {Smf(1, 480, {kEndOfTrack, kEndOfTrack}), true, {}, 480},
        // Time code: frames per second in the upper byte taken as it stands (231), 40 ticks each.
        {Smf(1, 0xE728, {kEndOfTrack}), true, {"Unusual number of frames per second"}, 40 * 231},
    };
    for (const HeaderCase& c : cases) {
        Alerts().clear();
        ReaderHarness h(c.file);
        h.reader.InitVariables();
        EXPECT_EQ(h.reader.ReadHeader(), c.accepted) << ::testing::PrintToString(c.alerts);
        EXPECT_EQ(Alerts(), c.alerts);
        if (!c.accepted) continue;
        // Past the header, with the default meter and tempo for its ticks per quarter.
        const LEventRec& meter = h.reader.InitialMeterEvent;
        EXPECT_EQ(Ints(h.reader.inptr, h.reader.TPQ, h.reader.TrkCountIdx, meter.TPB, meter.TPM, meter.BPM,
                       meter.Denominator, h.reader.InitialTempoEvent.MicsPerBeat),
                  Ints(c.file.size() - size_t(h.reader.TrkCount) * 12, c.tpq, 10, c.tpq, 4 * c.tpq, 4, 4, 1000000));
    }
    Alerts().clear();
    ReaderHarness cut(Bytes{'M', 'T'});   // six bytes missing: one alert each
    EXPECT_FALSE(cut.reader.ReadHeader());
    Alerts_ expected(6, kEof);
    expected.push_back("Invalid header chunk ID");
    EXPECT_EQ(Alerts(), expected);
}

// A format 1 file of one track whose chunk says it holds `claimed` bytes (-1: the body's own
// length), so that it can run past the end of the file.
Bytes OneTrackFile(const Bytes& body, int64_t claimed = -1)
{
    Bytes file = Smf(1, 480, {body});
    if (claimed >= 0)
        for (int i = 0; i < 4; ++i) file[size_t(18 + i)] = uint8_t(uint64_t(claimed) >> (24 - 8 * i));
    return file;
}

// Runs LoadTrack over a format 1 file whose first track has `body`.
struct TrackRun {
    explicit TrackRun(const Bytes& body, bool mayHaveNotes = true, int pass = 1, int64_t claimed = -1)
        : h(OneTrackFile(body, claimed))
    {
        h.reader.InitVariables();
        h.reader.ReadHeader();
        result = h.reader.LoadTrack(1, drums, mayHaveNotes, pass);
    }
    ReaderHarness h;
    bool drums = false;
    bool result = false;
    std::vector<LEventRec> Events() const { return h.reader.Events.ToVector(); }
};

class MidiTrackWalk : public MidiTest {};

TEST_F(MidiTrackWalk, TrackProblemsStopTheWalkWithTheirMessage)
{
    const std::vector<std::pair<Bytes, std::string>> cases = {
        {{0x00, 0x40, 0x40}, "Running status is used but undefined"},
        {{0x01, 0xFF, 0x58, 0x04, 0x04, 0x02, 0x18, 0x08},
         "This Midi file contains time signature changes. This is not supported."},
    };
    for (const auto& c : cases) {
        Alerts().clear();
        TrackRun run(Concat({c.first, kEndOfTrack}));
        EXPECT_FALSE(run.result);
        EXPECT_EQ(Alerts(), Alerts_{c.second});
    }
    Alerts().clear();
    ReaderHarness h(Concat({Smf(1, 480, {}, 1), Chunk("MTrx", kEndOfTrack)}));
    bool drums = false;
    h.reader.InitVariables();
    h.reader.ReadHeader();
    EXPECT_FALSE(h.reader.LoadTrack(1, drums, true, 1));
    EXPECT_EQ(Alerts(), Alerts_{"Invalid track chunk ID"});
}

// A chunk running past the end of the file goes on reading zeros up to its length, one message
// per byte: zero deltas and running-status messages of key 0, or a refusal where no running
// status is defined; then the end-of-track record is queued where the walk stands. However long
// the chunk says it is, the walk ends promptly.
TEST_F(MidiTrackWalk, TrackRunningPastTheEndReadsZerosUpToItsLength)
{
    const Bytes cutTempo = {0x00, 0xFF, 0x51, 0x03, 0x07};   // two data bytes missing
    const Bytes drum = {0x83, 0x60, 0x99, 0x24, 0x64};       // at tick 480
    const Bytes program = {0x00, 0xC0, 0x05};                // neutralised, which lengthens the chunk by one
    struct Case {
        Bytes body;
        int64_t claimed;
        bool result;
        size_t eofAlerts;
        std::string last;
    };
    const std::string refused = "Running status is used but undefined", missing = "End of track meta event missing";
    const std::vector<Case> cases = {
        {cutTempo, 11, false, 4, refused},                       // 2 for the data, delta and status
        {Concat({drum, cutTempo}), 16, true, 8, missing},        // then two events of three zeros
        {Concat({drum, cutTempo}), 3001, true, 2993, missing},   // 997 such events
        {Concat({program, cutTempo}), 14, true, 8, missing},     // events of two zeros up to 15
    };
    for (const Case& c : cases) {
        Alerts().clear();
        TrackRun run(c.body, true, 1, c.claimed);
        EXPECT_EQ(run.result, c.result);
        ASSERT_FALSE(Alerts().empty());
        EXPECT_EQ(Alerts().back(), c.last);
        EXPECT_EQ(std::count(Alerts().begin(), Alerts().end(), kEof), std::ptrdiff_t(c.eofAlerts)) << c.claimed;
        EXPECT_EQ(Alerts().size(), c.eofAlerts + 1);
    }

    Alerts().clear();
    TrackRun huge(Concat({drum, cutTempo}), true, 1, 0x7FFFFFFF);
    ASSERT_TRUE(huge.result);
    EXPECT_EQ(Alerts().back(), missing);
    EXPECT_GT(Alerts().size(), 3000u);
    EXPECT_LT(Alerts().size(), 1000000u);                    // not one per byte of the two gigabytes
    EXPECT_TRUE(huge.drums && huge.h.reader.PitchUsed[0]);   // the zeros read as drum notes of key 0
    const auto events = huge.Events();
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(Ints(events[0].MicsPerBeat, events[0].Tick, events[1].stop, events[1].Tick, events[1].Beat),
              Ints(0x0700 << 8, 480, true, 480, 2));
}

// Measure-boundary records of track 1 at the first ticks of `FromMeasure` and `ToMeasure` + 1,
// reckoned from whole measures of each delta only. The track: tempo and SMPTE offset at tick 0
// (one record), a note 4000 ticks later (measure 3, tick 160), then one `last` ticks later.
TEST_F(MidiTrackWalk, BoundaryRecordsCountWholeMeasuresOfTheDeltaOnly)
{
    const auto walk = [](const Bytes& last) {
        ReaderHarness h(OneTrackFile(Concat({kTempo120,
                                             {0x00, 0xFF, 0x54, 0x05, 1, 2, 3, 4, 5},
                                             {0x9F, 0x20, 0x99, 36, 100},
                                             last,
                                             {0x99, 38, 100},
                                             kEndOfTrack})));
        h.reader.FromMeasure = 3;
        h.reader.ToMeasure = 3;
        h.reader.InitVariables();
        h.reader.ReadHeader();
        bool drums = false;
        EXPECT_TRUE(h.reader.LoadTrack(1, drums, true, 1));
        const LEventRec& smpte = h.reader.SMPTEEvent;
        EXPECT_EQ(Ints(smpte.hr, smpte.mn, smpte.se, smpte.fr, smpte.ff), Ints(1, 2, 3, 4, 5));
        std::vector<std::vector<int64_t>> records;
        for (const LEventRec& ev : h.reader.Events.ToVector())
            records.push_back(Ints(ev.Tick, ev.Bar, ev.Beat, ev.tickinbar, ev.TPM, ev.MicsPerBeat, ev.ff, ev.stop));
        return records;
    };
    const auto start = Ints(0, 1, 1, 0, 0, 500000, 5, false);   // tempo and offset in one record
    const auto measure3 = Ints(3840, 3, 1, 0, 1920, 0, 0, false);
    // 1800 ticks lead into measure 4, but hold no whole measure: no record at its start.
    EXPECT_EQ(walk({0x8E, 0x08}),
              (std::vector<std::vector<int64_t>>{start, measure3, Ints(5800, 4, 0, 40, 0, 0, 0, true)}));
    // 1920 ticks do; the record takes measure 4's first tick, its beat from where the walk stood.
    EXPECT_EQ(walk({0x8F, 0x00}),
              (std::vector<std::vector<int64_t>>{start, measure3, Ints(5760, 4, 0, 0, 1920, 0, 0, false),
                                                 Ints(5920, 4, 0, 160, 0, 0, 0, true)}));
}

TEST_F(MidiTrackWalk, SixEightMeterPlacesEventsInMeasuresAndBeats)
{
    TrackRun run(Concat({{0x00, 0xFF, 0x58, 0x04, 0x06, 0x03, 0x18, 0x08},
                         kTempo120,
                         {0x8B, 0x20, 0xFF, 0x51, 0x03, 0x07, 0xA1, 0x20},   // 1440 ticks later
                         {0x78, 0xFF, 0x51, 0x03, 0x07, 0xA1, 0x20},         // 120 more
                         kEndOfTrack}));
    ASSERT_TRUE(run.result);
    const LEventRec& meter = run.h.reader.InitialMeterEvent;
    EXPECT_EQ(Ints(meter.TPB, meter.TPM, meter.BPM, meter.Denominator), Ints(240, 1440, 6, 8));
    const auto events = run.Events();
    ASSERT_EQ(events.size(), 3u);
    // Tempo and meter at one tick: one record.
    EXPECT_EQ(Ints(events[0].MicsPerBeat, events[0].BPM, run.h.reader.InitialTempoEvent.MicsPerBeat),
              Ints(500000, 6, 500000));
    EXPECT_DOUBLE_EQ(events[0].Speed, 120.0);
    EXPECT_EQ(Ints(events[1].Tick, events[1].Bar, events[1].tickinbar, events[1].Beat, events[1].EDUinbar),
              Ints(1440, 2, 0, 1, 0));
    EXPECT_EQ(Ints(events[2].Tick, events[2].tickinbar, events[2].Beat, events[2].EDUinbar, events[2].stop),
              Ints(1560, 120, 0, 512, true));
    EXPECT_TRUE(Alerts().empty());
}

TEST_F(MidiTrackWalk, OffbeatTimeSignatureIsShiftedBackOntoBeatOne)
{
    // A five-byte delta of -1 puts the time signature just before tick 0, off the beat.
    TrackRun run(Concat({{0x8F, 0xFF, 0xFF, 0xFF, 0x7F, 0xFF, 0x58, 0x04, 0x03, 0x02, 0x18, 0x08}, kEndOfTrack}));
    EXPECT_TRUE(run.result);
    EXPECT_EQ(
        Alerts(),
        Alerts_{"Invalid offbeat time signature specification found and shifted backwards onto the full beat 1."});
    EXPECT_EQ(Ints(run.h.reader.InitialMeterEvent.BPM, run.h.reader.InitialMeterEvent.Beat), Ints(3, 1));
}

TEST_F(MidiTrackWalk, ForeignMessagesAreNeutralisedAndDrumsKept)
{
    const Bytes body =
        Concat({{0x00, 0xC0, 0x05, 0x00, 0x99, 0x24, 0x64, 0x00, 0x90, 0x3C, 0x50, 0x00, 0x40, 0x50}, kEndOfTrack});
    TrackRun run(body);
    ASSERT_TRUE(run.result);
    EXPECT_TRUE(run.drums);
    EXPECT_EQ(run.h.Image(),
              Smf(1, 480,
                  {Concat({{0x00, 0x89, 0x00, 0x40, 0x00, 0x99, 0x24, 0x64, 0x00, 0x89, 0x00, 0x40, 0x00, 0x40, 0x50},
                           kEndOfTrack})}));
    EXPECT_TRUE(run.h.reader.PitchUsed[0x24]);

    TrackRun later(body, false);   // a track read after the drum track: drums go too
    EXPECT_FALSE(later.drums);
    const Bytes image = later.h.Image();
    EXPECT_EQ(Bytes(image.begin() + 27, image.begin() + 30), (Bytes{0x89, 0x00, 0x40}));
}

TEST_F(MidiTrackWalk, SecondPassMovesHighKeysOntoFreeOnes)
{
    const Bytes body =
        Concat({{0x00, 0x99, 36, 100, 0x00, 0x99, 38, 100, 0x00, 0x99, 62, 100, 0x10, 62, 0x00}, kEndOfTrack});
    TrackRun run(body, true, 2);
    ASSERT_TRUE(run.result);
    const Bytes image = run.h.Image();   // the key with its status byte, and with running status
    EXPECT_EQ(Ints(run.h.reader.PitchMappedTo[62], run.h.reader.PitchReverseMap[37], image[22 + 10], image[22 + 13]),
              Ints(37, 62, 37, 37));
    TrackRun first(body, true, 1);
    EXPECT_EQ(Ints(first.h.reader.PitchMappedTo[62], first.h.reader.highestpitchfound, first.h.reader.lowestpitchfound),
              Ints(0, 62, 36));
}

TEST_F(MidiTrackWalk, ShortSystemExclusiveIsScannedToTheNextEndByte)
{
    // F0 01 F7: the four skipped bytes swallow the F7 and what follows; the scan finds the next.
    TrackRun run(Concat({{0x00, 0xF0, 0x01, 0xF7, 0x00, 0x99, 0x24, 0x40, 0x00, 0xF7}, kEndOfTrack}));
    EXPECT_TRUE(run.result && !run.drums && Alerts().empty());

    Alerts().clear();
    TrackRun open(Bytes{0x00, 0xF0, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07});   // no end byte anywhere
    EXPECT_TRUE(open.result);
    EXPECT_EQ(Alerts(), (Alerts_{kEof, "End of track meta event missing"}));
}

TEST_F(MidiTrackWalk, QueueKeepsTickOrderAndTheBarrier)
{
    ReaderHarness h(Bytes{0});
    TMidiRead& r = h.reader;
    int32_t queued = 0;   // each record carries its arrival number as its tempo
    auto record = [&queued](int32_t tick, bool stop) {
        LEventRec ev;
        ev.Tick = tick;
        ev.Bar = 7;
        ev.stop = stop;
        ev.MicsPerBeat = ++queued;
        return ev;
    };
    r.Enqueue(record(100, false));
    r.Enqueue(record(500, true));
    r.Enqueue(record(600, false));   // later than the barrier: dropped
    r.Enqueue(record(500, false));   // same tick: goes in before the barrier
    r.Enqueue(record(50, false));
    r.Enqueue(record(100, false));   // after the record of the same tick
    std::vector<std::vector<int64_t>> order;
    for (const LEventRec& ev : r.Events.ToVector()) order.push_back(Ints(ev.Tick, ev.MicsPerBeat, ev.stop));
    EXPECT_EQ(order, (std::vector<std::vector<int64_t>>{Ints(50, 5, false), Ints(100, 1, false), Ints(100, 6, false),
                                                        Ints(500, 4, false), Ints(500, 2, true)}));
    r.Events = EventQueue();
    r.Enqueue(record(10, false));
    r.CheckStop();
    EXPECT_TRUE(r.Events.back().stop);
}
}   // namespace
