// The host's MIDI export, read back with the tests' own SMF reader: tracks, channels, programs,
// meters and tempo, and every note with its key, onset and end, over the whole score and a range.
#include "stavio/document/staff_playback.h"
#include "stavio/document_builder.h"
#include "stavio/midi_export/midi_export.h"
#include "tests/support/smf.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <map>
#include <tuple>

using namespace stavio;

namespace {

// (channel from 1, key, on tick, off tick) of every note of a track.
using Sounding = std::tuple<int, int, int32_t, int32_t>;

std::vector<Sounding> NotesOf(const std::vector<support::SmfEvent>& track)
{
    std::vector<Sounding> notes;
    std::map<std::pair<int, int>, int32_t> open;
    for (const support::SmfEvent& event : track) {
        const std::pair<int, int> place{event.Channel(), event.data1};
        if (event.IsNoteOn()) {
            open[place] = event.tick;
        } else if ((event.status & 0xF0) == 0x80 || (event.status & 0xF0) == 0x90) {
            EXPECT_TRUE(open.count(place)) << "a note-off without its note-on at tick " << event.tick;
            notes.emplace_back(place.first, place.second, open[place], event.tick);
            open.erase(place);
        }
    }
    EXPECT_TRUE(open.empty()) << "every note ends";
    std::sort(notes.begin(), notes.end(), [](const Sounding& a, const Sounding& b) {
        return std::tie(std::get<2>(a), std::get<1>(a)) < std::tie(std::get<2>(b), std::get<1>(b));
    });
    return notes;
}

// (tick, meta type, data) of the meta events of a track, the end of track included.
std::vector<std::tuple<int32_t, int, support::Bytes>> MetaOf(const std::vector<support::SmfEvent>& track)
{
    std::vector<std::tuple<int32_t, int, support::Bytes>> metas;
    for (const support::SmfEvent& event : track) {
        if (event.status == 0xFF) {
            metas.emplace_back(event.tick, event.data1, event.data);
        }
    }
    return metas;
}

std::vector<int> ProgramsOf(const std::vector<support::SmfEvent>& track)
{
    std::vector<int> programs;
    for (const support::SmfEvent& event : track) {
        if ((event.status & 0xF0) == 0xC0) {
            programs.push_back(event.Channel() * 1000 + event.data1);
        }
    }
    return programs;
}

void MarkTied(Document& doc, int staff, int meas, int layer, size_t entry)
{
    FrameContent frame = *doc.Frame(staff, meas, layer);
    for (int i = 0; i < frame.entries[entry].numNotes; ++i) {
        frame.entries[entry].note[i].flag |= kNoteTiedForward;
    }
    doc.SetFrame(staff, meas, layer, frame);
}

// Four measures, 3/4 from measure 3: a piano (program 1) with a chord, a tie within measure 1
// and one across the bar line from 2 to 3, a triplet and a second layer; a bass on program 34
// whose tie runs past measure 3; a drum staff.
Document BandScore()
{
    Document doc = DocumentBuilder()
                       .Measures(4, 4, kEduPerQuarter)
                       .TimeSignatureFrom(3, 3, kEduPerQuarter)
                       .Staff("Piano", "Pno.")
                       .Staff("Bass")
                       .Staff("Drums")
                       .DrumStaff(3)
                       .Entries(1, 1, 0, {Chord({60, 64, 67}, 1024), Note(62, 1024), Note(62, 1024), Rest(1024)})
                       .Entries(1, 1, 1, {Note(48, 4096)})
                       .Entries(1, 2, 0, {Note(72, 512), Note(74, 512), Note(76, 512), Rest(1024), Note(61, 2048)})
                       .Tuplet(1, 2, 0, TupletSpec{0, 2, 3, 512, 2, 512})
                       .Entries(1, 3, 0, {Note(61, 1024), Note(61, 2048)})
                       .Entries(2, 3, 0, {Rest(2048), Note(40, 1024)})
                       .Entries(2, 4, 0, {Note(40, 3072)})
                       .Entries(3, 1, 0, {Chord({36, 42}, 1024), Chord({38, 42}, 1024), Rest(2048)})
                       .Entries(3, 4, 0, {Note(49, 3072)})
                       .Build();
    MarkTied(doc, 1, 1, 0, 1);   // D4 into D4
    MarkTied(doc, 1, 2, 0, 4);   // C#4 over the bar line
    MarkTied(doc, 2, 3, 0, 1);   // E2 into measure 4
    SetChannelProgram(doc, StaffChannelDefinition(doc, 2), 34);
    return doc;
}

support::SmfListing Export(const Document& doc, const midi_export::ExportOptions& options)
{
    const toolbox::Result<std::vector<uint8_t>> bytes = midi_export::ExportMidi(doc, options);
    EXPECT_TRUE(bytes) << bytes.Message();
    return bytes ? support::ListSmf(*bytes) : support::SmfListing{};
}

}   // namespace

TEST(MidiExport, EveryStaffOnItsChannelWithTempoMetersTiesTupletsChordsAndLayers)
{
    midi_export::ExportOptions options;
    options.microsecondsPerQuarter = midi_export::MicrosecondsPerQuarter(100.0);
    const support::SmfListing file = Export(BandScore(), options);
    EXPECT_EQ(support::Ints(file.format, file.division, file.tracks.size()), support::Ints(1, 1024, 4));

    // 4/4 (clicks of 24 MIDI clocks), then 3/4 at measure 3; 600000 microseconds a quarter.
    using Meta = std::tuple<int32_t, int, support::Bytes>;
    const int32_t end = 2 * 4096 + 2 * 3072;
    EXPECT_EQ(
        MetaOf(file.tracks[0]),
        (std::vector<Meta>{
            {0, 0x51, {0x09, 0x27, 0xC0}}, {0, 0x58, {4, 2, 24, 8}}, {8192, 0x58, {3, 2, 24, 8}}, {end, 0x2F, {}}}));
    for (size_t track = 1; track < 4; ++track) {
        EXPECT_EQ(std::get<0>(MetaOf(file.tracks[track]).back()), end) << "track " << track << " ends with the score";
    }
    EXPECT_EQ(std::get<2>(MetaOf(file.tracks[1]).front()), (support::Bytes{'P', 'i', 'a', 'n', 'o'}));

    // Piano: channel 1, program 1 (0 on the wire). The triplet's thirds of a beat as the document
    // keeps them; the tied D4 is one note, and so is the C#4 tied from measure 2 into measure 3.
    EXPECT_EQ(ProgramsOf(file.tracks[1]), std::vector<int>{1000});
    EXPECT_EQ(NotesOf(file.tracks[1]), (std::vector<Sounding>{{1, 48, 0, 4096},
                                                              {1, 60, 0, 1024},
                                                              {1, 64, 0, 1024},
                                                              {1, 67, 0, 1024},
                                                              {1, 62, 1024, 3072},
                                                              {1, 72, 4096, 4437},
                                                              {1, 74, 4437, 4778},
                                                              {1, 76, 4778, 5119},
                                                              {1, 61, 6143, 9216},
                                                              {1, 61, 9216, 11264}}));
    // Bass: channel 2, program 34; its tie joins measure 3 to measure 4.
    EXPECT_EQ(ProgramsOf(file.tracks[2]), std::vector<int>{2033});
    EXPECT_EQ(NotesOf(file.tracks[2]), (std::vector<Sounding>{{2, 40, 10240, 14336}}));
    // Drums: channel 10, no program change, each note at its kit key.
    EXPECT_TRUE(ProgramsOf(file.tracks[3]).empty());
    EXPECT_EQ(
        NotesOf(file.tracks[3]),
        (std::vector<Sounding>{
            {10, 36, 0, 1024}, {10, 42, 0, 1024}, {10, 38, 1024, 2048}, {10, 42, 1024, 2048}, {10, 49, 11264, 14336}}));
}

TEST(MidiExport, ARangeStartsAtItsFirstMeasureAndCutsWhatRingsPastItsEnd)
{
    midi_export::ExportOptions options;
    options.firstMeasure = 2;
    options.lastMeasure = 3;
    const Document doc = BandScore();
    const support::SmfListing file = Export(doc, options);
    using Meta = std::tuple<int32_t, int, support::Bytes>;
    EXPECT_EQ(
        MetaOf(file.tracks[0]),
        (std::vector<Meta>{
            {0, 0x51, {0x07, 0xA1, 0x20}}, {0, 0x58, {4, 2, 24, 8}}, {4096, 0x58, {3, 2, 24, 8}}, {7168, 0x2F, {}}}));
    EXPECT_EQ(NotesOf(file.tracks[1]).size(), 5u);
    EXPECT_EQ(NotesOf(file.tracks[1]).front(), (Sounding{1, 72, 0, 341}));
    EXPECT_EQ(NotesOf(file.tracks[2]), (std::vector<Sounding>{{2, 40, 6144, 7168}}));
    EXPECT_TRUE(NotesOf(file.tracks[3]).empty());
    EXPECT_DOUBLE_EQ(midi_export::RangeSeconds(doc, options), 3.5);

    for (const auto& [first, last] : std::vector<std::pair<int, int>>{{0, 2}, {3, 2}, {1, 5}}) {
        options.firstMeasure = first;
        options.lastMeasure = last;
        const toolbox::Result<std::vector<uint8_t>> bytes = midi_export::ExportMidi(doc, options);
        EXPECT_FALSE(bytes);
        EXPECT_EQ(bytes.Message(), "measures " + std::to_string(first) + "-" + std::to_string(last) +
                                       " are not a range of the score's measures 1-4");
    }
}
