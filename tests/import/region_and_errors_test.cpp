// What the import changes and what it leaves alone: the region's bounds, every layer of its
// measures, other staves, refused regions, malformed files, the running-status
// resynchronisation, and the import as a plug-in reaches it (SX_ProcessMidiData on the host).
#include "stavio/document_builder.h"
#include "stavio/host.h"
#include "stavio/midi_import/midi_import.h"
#include "tests/import/import_test_support.h"

#include <cstring>

namespace {

using namespace import_test;
using stavio::Document;
using stavio::midi_import::ImportMidiBytes;
using stavio::midi_import::ImportMidiFile;

const std::string kRock = GrooveLibrary() + "/Rock 8ths.mid";   // two bars of 4/4 and a closing crash

// Two staves with something in every measure, and the feet of staff 1 in a layer of their own
// (as a drum part's second voice reads) in measures 3, 5 and 9; measure 8 has a layer 3 too.
Document FilledDocument()
{
    stavio::DocumentBuilder builder;
    builder.Measures(10).Staff("Drum Set").DrumStaff(1).Staff("Piano");
    for (int meas = 1; meas <= 10; ++meas) {
        builder.Entries(1, meas, 0, {stavio::Note(38, 4096)}).Entries(2, meas, 0, {stavio::Note(60, 4096)});
    }
    for (int meas : {3, 5, 9}) {
        builder.Entries(1, meas, 1, {stavio::Note(36, 2048), stavio::Rest(2048)});
    }
    return builder.Entries(1, 8, 3, {stavio::Note(44, 4096)}).Build();
}

// The region's staff-measures are replaced in every layer: the groove in layer 0, the other
// layers emptied (a frame number of 0 with them), and nothing else changes.
TEST(ImportRegion, TheRegionsMeasuresAreReplacedInEveryLayerAndNothingElseChanges)
{
    const Document before = FilledDocument();
    Document doc = FilledDocument();
    std::string error;
    ASSERT_TRUE(ImportMidiFile(doc, Region(1, 4, 8), kRock, error)) << error;
    Document fresh = DrumDocument(2);
    ASSERT_TRUE(ImportMidiFile(fresh, Region(1, 1, 2), kRock, error));
    for (int staff = 1; staff <= 2; ++staff) {
        for (int meas = 1; meas <= 10; ++meas) {
            for (int layer = 0; layer < stavio::kMaxLayers; ++layer) {
                SCOPED_TRACE(std::to_string(staff) + "/" + std::to_string(meas) + "/" + std::to_string(layer));
                if (staff == 1 && meas >= 4 && meas <= 8) {
                    if (layer > 0) {
                        EXPECT_EQ(Describe(*doc.Frame(staff, meas, layer)), "");
                        EXPECT_EQ(doc.FrameNumber(staff, meas, layer), 0);
                    }
                    continue;
                }
                EXPECT_EQ(Describe(*doc.Frame(staff, meas, layer)), Describe(*before.Frame(staff, meas, layer)));
                EXPECT_EQ(doc.FrameNumber(staff, meas, layer), before.FrameNumber(staff, meas, layer));
            }
        }
    }
    EXPECT_NE(Describe(*doc.Frame(1, 9, 1)), "");
    EXPECT_EQ(Describe(doc, 1, 4), Describe(fresh, 1, 1));
    EXPECT_EQ(Describe(doc, 1, 5), Describe(fresh, 1, 2));
    EXPECT_EQ(Describe(doc, 1, 6), "0+1024:36,49 | 1024+1024:r | 2048+2048:r");
    for (int meas = 4; meas <= 8; ++meas) {
        EXPECT_TRUE(meas < 7 || Describe(doc, 1, meas) == "0+4096:r") << "the file does not reach measure " << meas;
        EXPECT_NE(doc.FrameNumber(1, meas, 0), 0) << "the frame detail follows the entries";
    }
}

TEST(ImportRegion, AFileLongerThanTheRegionStopsAtItsEnd)
{
    // Four bars and a closing crash, into measures of four dotted-quarter beats.
    const std::string ballad = GrooveLibrary() + "/Ballad 12-8.mid";
    Document whole = DrumDocument(5, 4, 1536);
    Document cut = DrumDocument(4, 4, 1536);
    std::string error;
    ASSERT_TRUE(ImportMidiFile(whole, Region(1, 1, 5), ballad, error)) << error;
    ASSERT_TRUE(ImportMidiFile(cut, Region(1, 2, 3), ballad, error)) << error;
    EXPECT_EQ(Describe(cut, 1, 2), Describe(whole, 1, 1));
    EXPECT_EQ(Describe(cut, 1, 3), Describe(whole, 1, 2));
    EXPECT_EQ(Describe(cut, 1, 1), "");
    EXPECT_EQ(Describe(cut, 1, 4), "");
}

TEST(ImportRegion, RefusedRegionsChangeNothing)
{
    const Document before = FilledDocument();
    EREGION otherList = Region(1, 1, 2);
    otherList.start.IUlist = 1;
    for (const EREGION& region :
         {Region(3, 1, 2), Region(0, 1, 2), Region(1, 0, 2), Region(1, 3, 2), Region(1, 9, 11), otherList}) {
        Document doc = FilledDocument();
        std::string error;
        EXPECT_FALSE(ImportMidiFile(doc, region, kRock, error));
        EXPECT_EQ(error.rfind(kRock + ": cannot import into ", 0), 0u) << error;
        EXPECT_TRUE(doc.Records() == before.Records());
    }
}

TEST(ImportErrors, MalformedFilesNameTheFileAndTheFaultAndChangeNothing)
{
    auto track = [](Bytes body) { return Concat({Header(0, 1, 480), Chunk("MTrk", body)}); };
    const Bytes end{0x00, 0xFF, 0x2F, 0x00};
    const std::vector<std::pair<Bytes, std::string>> cases{
        {{}, "not a Standard MIDI File"},
        {{'R', 'I', 'F', 'F', 0, 0, 0, 4, 'W', 'A', 'V', 'E'}, "not a Standard MIDI File"},
        {Concat({Chunk("MThd", {0, 0, 0, 1})}), "header chunk is 4 bytes"},
        {Concat({Header(3, 1, 480), Chunk("MTrk", end)}), "unknown format 3"},
        {Header(0, 0, 480), "announces no tracks"},
        {Concat({Header(1, 1, 0xE728), Chunk("MTrk", end)}), "time-code division"},
        {Concat({Header(1, 2, 480), Chunk("MTrk", end)}), "announces 2 tracks; the file ends after 1"},
        {Concat({Header(0, 1, 480), Chunk("MTrk", {0x00, 0x99})}), "the track ends inside a message of status 0x99"},
        {track(Concat({{0x00, 0x24, 0x64}, end})), "track 1 at byte 0x00000017: running status is used before"},
        {track(Concat({{0x00, 0x99, 0x24, 0x90}, end})), "data byte expected in a message of status 0x99, found 0x90"},
        {track({0x00, 0xFF, 0x51, 0x10, 0x07}), "meta event 0x51 claims 16 bytes; the track has 1 left"},
        {track(Concat({{0x00, 0xF3, 0x01}, end})), "system message 0xF3 has no place in a file"},
        {track(Concat({{0x80, 0x80, 0x80, 0x80, 0x00, 0x99, 0x24, 0x64}, end})), "longer than four bytes"},
        {track({0x00, 0xFF, 0x58, 0x04, 0x04, 0x02, 0x18, 0x08, 0x00}), "the track ends after a delta time"},
    };
    const Document before = FilledDocument();
    for (const auto& [bytes, fault] : cases) {
        SCOPED_TRACE(fault);
        Document doc = FilledDocument();
        std::string error;
        EXPECT_FALSE(ImportMidiBytes(doc, Region(1, 1, 2), bytes, "bad.mid", error));
        EXPECT_EQ(error.rfind("bad.mid: ", 0), 0u) << error;
        EXPECT_NE(error.find(fault), std::string::npos) << error;
        EXPECT_TRUE(doc.Records() == before.Records());
    }
    Document doc = FilledDocument();
    std::string error;
    EXPECT_FALSE(ImportMidiFile(doc, Region(1, 1, 2), "/nonexistent/groove.mid", error));
    EXPECT_EQ(error, "/nonexistent/groove.mid: cannot be read (no such file)");
}

// A damaged file is read as far as it goes: the notes before the fault land. Copies of library
// grooves cut short at every byte import what an independent reading of the same bytes finds
// before the cut; a copy cut before its first note is refused and changes nothing.
TEST(ImportErrors, DamagedFilesGiveTheNotesBeforeTheFault)
{
    Bytes chunkPastTheEnd = Concat({Header(0, 1, 480), Chunk("MTrk", Concat({{0x00, 0x99, 0x24, 0x64}, kEndOfTrack}))});
    chunkPastTheEnd.resize(chunkPastTheEnd.size() - 3);
    for (const Bytes& damaged :
         {chunkPastTheEnd, Concat({Header(0, 1, 480), Chunk("MTrk", {0x00, 0x99, 0x24, 0x64, 0x00})}),
          Concat({Header(0, 1, 480), Chunk("MTrk", {0x00, 0x99, 0x24, 0x64, 0x83, 0x60, 0x99, 0x26, 0xC0})}),
          Concat(
              {Header(1, 3, 480), Chunk("MTrk", {0x00, 0x99, 0x24, 0x64, 0x00, 0xF3}), Chunk("MTrk", kEndOfTrack)})}) {
        Document doc = DrumDocument(1);
        std::string error;
        ASSERT_TRUE(ImportMidiBytes(doc, Region(1, 1, 1), damaged, "damaged.mid", error)) << error;
        EXPECT_EQ(Describe(doc, 1, 1), "0+1024:36 | 1024+1024:r | 2048+2048:r");
    }
    // After a neutralised message neither reading of the run gets to the end; the two-byte one
    // gets further (to the kick at tick 128 and the 0xF3 after it) and is the one kept, though
    // the one-byte reading (0x81 0x00 then 0x99) fails last.
    const Bytes unsure{0x00, 0x89, 0x00, 0x40, 0x00, 0x30, 0x40, 0x81, 0x00, 0x99, 0x24, 0x64, 0x00, 0xF3};
    Document doc = DrumDocument(1);
    std::string error;
    ASSERT_TRUE(
        ImportMidiBytes(doc, Region(1, 1, 1), Concat({Header(0, 1, 480), Chunk("MTrk", unsure)}), "unsure.mid", error))
        << error;
    EXPECT_EQ(Describe(doc, 1, 1), "0+256:r | 256+768:36 | 1024+1024:r | 2048+2048:r");

    int cutsWithNotes = 0;
    for (const char* name : {"Rock 8ths", "Funk 16ths Ghost Notes", "Waltz 3-4", "Ballad 12-8"}) {
        const Bytes whole = ReadBytes(GrooveLibrary() + "/" + name + ".mid");
        const Listing full = ListDrumHits(whole);
        const auto beats = static_cast<int16_t>(full.numerator);
        const auto divbeat = static_cast<int16_t>(4096 / full.denominator);
        constexpr int kMeasures = 6;
        const Document before = DrumDocument(kMeasures, beats, divbeat);
        for (size_t size = 14; size < whole.size(); ++size) {
            SCOPED_TRACE(std::string(name) + " cut to " + std::to_string(size) + " bytes");
            const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            const Listing readable = ListDrumHits(cut, true);
            Document cutDoc = before;
            std::string cutError;
            const bool imported = ImportMidiBytes(cutDoc, Region(1, 1, kMeasures), cut, "cut.mid", cutError);
            ASSERT_EQ(imported, !readable.hits.empty()) << cutError;
            if (!imported) {
                EXPECT_EQ(cutError.rfind("cut.mid: ", 0), 0u) << cutError;
                EXPECT_TRUE(cutDoc.Records() == before.Records());
                continue;
            }
            ++cutsWithNotes;
            Document expected = before;
            const Bytes sound = DrumFile(readable.tpq, full.numerator, full.denominator, readable.hits);
            ASSERT_TRUE(ImportMidiBytes(expected, Region(1, 1, kMeasures), sound, "sound.mid", cutError)) << cutError;
            for (int meas = 1; meas <= kMeasures; ++meas) {
                EXPECT_EQ(Describe(cutDoc, 1, meas), Describe(expected, 1, meas)) << "measure " << meas;
            }
        }
    }
    EXPECT_GT(cutsWithNotes, 400) << cutsWithNotes;
}

// A file as a plug-in's cleaner leaves it: a program change and a controller on channel 1
// became note-offs 0x89 0x00 0x40, and the messages sent after them with running status stayed.
TEST(ImportErrors, RunningStatusAfterANeutralisedOneByteMessageStaysInStep)
{
    const Bytes body{
        0x00, 0xFF, 0x58, 0x04, 0x04, 0x02, 0x18, 0x08,   // 4/4
        0x00, 0x89, 0x00, 0x40,                           // was C0 05, lengthened by one byte
        0x00, 0x06,                                       // program change by running status: one byte
        0x00, 0x07, 0x00, 0x99, 0x24, 0x64,               // kick at 0
        0x83, 0x60, 0x99, 0x26, 0x64,                     // snare at 480
        0x00, 0x89, 0x00, 0x40,                           // was B0 07 64
        0x00, 0x0A, 0x40,                                 // controller by running status: two bytes
        0x00, 0x99, 0x2A, 0x64,                           // hi-hat at 480
        0x00, 0x89, 0x00, 0x40,                           // was D0 30, the track's last message
        0x10, 0x31,                                       // channel pressure by running status
        0x00, 0xFF, 0x2F, 0x00,
    };
    Document doc = DrumDocument(1);
    std::string error;
    ASSERT_TRUE(
        ImportMidiBytes(doc, Region(1, 1, 1), Concat({Header(0, 1, 480), Chunk("MTrk", body)}), "clean.mid", error))
        << error;
    EXPECT_EQ(Describe(doc, 1, 1), "0+1024:36 | 1024+1024:38,42 | 2048+2048:r");
}

TEST(ImportService, ProcessMidiDataImportsIntoTheCurrentHostsDocumentAndAnswersZeroOtherwise)
{
    stavio::Host host;
    host.SetDocument(DrumDocument(5));
    const StavioFuncs& table = host.FunctionTable();
    SxpMidiData data{};
    data.ereg = Region(1, 2, 5);
    std::strcpy(data.midiFile.folder, GrooveLibrary().c_str());
    std::strcpy(data.midiFile.name, "Rock 8ths.mid");
    ASSERT_EQ(table.SX_ProcessMidiData(&data, kPluginApiVersion), 1);
    EXPECT_EQ(stavio::midi_import::LastProcessMidiDataError(), "");
    EXPECT_EQ(Describe(host.document(), 1, 1), "");
    EXPECT_EQ(Describe(host.document(), 1, 5), "0+4096:r");
    EXQVF2005a* frame = table.SX_LoadQVF(0, 1, 2, 0, 0, kPluginApiVersion);
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->numEntries, 8) << "eighth notes";
    EXPECT_NE(frame->frame, 0);
    table.SX_FreeQVF(frame, kPluginApiVersion);

    const stavio::RecordStore imported = host.document().Records();
    std::strcpy(data.midiFile.name, "No Such Groove.mid");
    EXPECT_EQ(table.SX_ProcessMidiData(&data, kPluginApiVersion), 0);
    EXPECT_NE(stavio::midi_import::LastProcessMidiDataError().find("No Such Groove.mid: cannot be read"),
              std::string::npos);
    EXPECT_EQ(table.SX_ProcessMidiData(nullptr, kPluginApiVersion), 0);
    EXPECT_TRUE(host.document().Records() == imported);
}

}   // namespace
