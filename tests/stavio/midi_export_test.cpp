// The host's MIDI export, read back with the tests' own SMF reader and listed event by event
// against the listings checked in under files/, over the whole score and a range.
#include "stavio/document/staff_playback.h"
#include "stavio/document_builder.h"
#include "stavio/midi_export/midi_export.h"
#include "tests/support/smf.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

using namespace stavio;

namespace {

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

// The export of `doc` listed against tests/stavio/files/`listing`. After a deliberate change the
// failure shows the new listing: check it event by event, then put it in the file.
void ExpectExport(const Document& doc, const midi_export::ExportOptions& options, const std::string& listing)
{
    const toolbox::Result<std::vector<uint8_t>> bytes = midi_export::ExportMidi(doc, options);
    ASSERT_TRUE(bytes) << bytes.Message();
    EXPECT_EQ(support::ListingText(support::ListSmf(*bytes)),
              support::ReadFile(support::SourceDir() + "/tests/stavio/files/" + listing));
}

}   // namespace

// A track per staff after the conductor's (tempo, meters, the end), each on its channel with its
// program but the drums on channel 10 without one; the triplet's thirds of a beat as the
// document keeps them; a tied note sounds once, also across the bar line.
TEST(MidiExport, EveryStaffOnItsChannelWithTempoMetersTiesTupletsChordsAndLayers)
{
    midi_export::ExportOptions options;
    options.microsecondsPerQuarter = midi_export::MicrosecondsPerQuarter(100.0);
    ExpectExport(BandScore(), options, "band_score.txt");
}

// Measures 2-3: the range starts at tick 0, and the bass tied into measure 4 is cut at the end.
TEST(MidiExport, ARangeStartsAtItsFirstMeasureAndCutsWhatRingsPastItsEnd)
{
    midi_export::ExportOptions options;
    options.firstMeasure = 2;
    options.lastMeasure = 3;
    const Document doc = BandScore();
    ExpectExport(doc, options, "band_score_2-3.txt");
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
