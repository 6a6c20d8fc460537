// The drum grid and the JSON view of a known pattern, letter for letter.
#include "stavio/document_builder.h"
#include "stavio/midi_import/midi_import.h"
#include "stavio/views/staff_view.h"
#include "tests/import/import_test_support.h"

namespace {

using namespace import_test;

// Measure 1: crash and kick on 1, hi-hat eighths, snare on 2 and 4, kick on the "and" of 3.
// Measure 2: a swung first beat (hi-hat on its first and third third, kick with the first),
// snare and hi-hat on beat 2, then silence.
stavio::Document KnownPattern()
{
    std::vector<DrumHit> hits{{0, 49},    {0, 36},    {480, 38},  {1440, 38}, {1200, 36},
                              {1920, 42}, {1920, 36}, {2240, 42}, {2400, 38}, {2400, 42}};
    for (int tick = 0; tick < 1920; tick += 240) hits.push_back({tick, 42});
    stavio::Document doc = DrumDocument(3);
    std::string error;
    EXPECT_TRUE(
        stavio::midi_import::ImportMidiBytes(doc, Region(1, 1, 2), DrumFile(480, 4, 4, hits), "known.mid", error))
        << error;
    return doc;
}

TEST(StaffView, DrumGridShowsOneLinePerKitPieceAndAColumnPerStep)
{
    EXPECT_EQ(stavio::views::RenderDrumGrid(KnownPattern(), 1, 1, 2),
              "Measure        |1               |2              |\n"
              "Beat           |1   2   3   4   |1  2   3   4   |\n"
              "Crash Cymbal 1 |x---------------|---------------|\n"
              "Closed Hi-Hat  |x-x-x-x-x-x-x-x-|x-xx-----------|\n"
              "Acoustic Snare |----o-------o---|---o-----------|\n"
              "Bass Drum 1    |o---------o-----|o--------------|\n");
}

TEST(StaffView, DrumGridNamesUnknownKeysAndSkipsMissingMeasuresAndStaves)
{
    const stavio::Document doc = stavio::DocumentBuilder()
                                     .Measures(1)
                                     .Staff("Drums")
                                     .DrumStaff(1)
                                     .Entries(1, 1, 0, {stavio::Note(30, 4096)})
                                     .Build();
    EXPECT_EQ(stavio::views::RenderDrumGrid(doc, 1, 1, 5), "Measure |1               |\n"
                                                           "Beat    |1   2   3   4   |\n"
                                                           "Key 30  |o---------------|\n");
    EXPECT_EQ(stavio::views::RenderDrumGrid(doc, 2, 1, 1), "");
    EXPECT_EQ(stavio::views::StaffEntriesJson(doc, 2, 1, 1), "[]");
}

TEST(StaffView, JsonGivesEachEntryWithPositionDurationKeysAndTuplet)
{
    EXPECT_EQ(stavio::views::StaffEntriesJson(KnownPattern(), 1, 2, 3),
              "[{\"measure\":2,\"layer\":0,\"position\":0,\"duration\":683,\"keys\":[36,42],\"tuplet\":true},"
              "{\"measure\":2,\"layer\":0,\"position\":683,\"duration\":341,\"keys\":[42],\"tuplet\":true},"
              "{\"measure\":2,\"layer\":0,\"position\":1024,\"duration\":1024,\"keys\":[38,42],\"tuplet\":false},"
              "{\"measure\":2,\"layer\":0,\"position\":2048,\"duration\":2048,\"rest\":true,\"tuplet\":false}]");
}

}   // namespace
