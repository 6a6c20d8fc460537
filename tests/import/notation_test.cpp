// How hits become entries: chords, rests, durations, tuplets, compound beats, early hits and
// the spelling of keys, on small hand-made files with exactly known results.
#include "stavio/document/pitch.h"
#include "stavio/midi_import/measure_notation.h"
#include "stavio/midi_import/midi_import.h"
#include "tests/import/import_test_support.h"

namespace {

using namespace import_test;
using stavio::Document;

// Imports hits (480 ticks to the quarter) into `measures` measures of beats x divbeat and
// describes measure `shown`.
std::string Imported(std::vector<DrumHit> hits, int numerator = 4, int denominator = 4, int shown = 1, int measures = 1)
{
    const auto divbeat = static_cast<int16_t>(4096 / denominator);
    Document doc = DrumDocument(measures, static_cast<int16_t>(numerator), divbeat);
    std::string error;
    EXPECT_TRUE(stavio::midi_import::ImportMidiBytes(doc, Region(1, 1, measures),
                                                     DrumFile(480, numerator, denominator, hits), "hand.mid", error))
        << error;
    return Describe(doc, 1, shown);
}

TEST(ImportNotation, StraightBeatsGiveChordsNotesToTheNextHitAndMergedRests)
{
    // Kick and hi-hat, hi-hat, snare and hi-hat, hi-hat in eighths; beats 3 and 4 silent.
    EXPECT_EQ(Imported({{0, 36}, {0, 42}, {240, 42}, {480, 38}, {480, 42}, {720, 42}}),
              "0+512:36,42 | 512+512:42 | 1024+512:38,42 | 1536+512:42 | 2048+2048:r");
    // A note lasts to the end of its beat at most; a beat that starts late starts with a rest.
    EXPECT_EQ(Imported({{240, 36}, {480, 36}, {840, 38}}),
              "0+512:r | 512+512:36 | 1024+768:36 | 1792+256:38 | 2048+2048:r");
    // Rests merge only where the longer rest starts on its own multiple.
    EXPECT_EQ(Imported({{480, 38}}), "0+1024:r | 1024+1024:38 | 2048+2048:r");
    EXPECT_EQ(Imported({{1440, 38}}), "0+2048:r | 2048+1024:r | 3072+1024:38");
    EXPECT_EQ(Imported({{960, 38}}, 3, 4), "0+2048:r | 2048+1024:38");
}

TEST(ImportNotation, TripletBeatsAreTupletsOfThreeInTheTimeOfTwo)
{
    const std::vector<DrumHit> hits{{0, 42}, {320, 42}, {480, 38}};   // swung eighths, then a quarter
    EXPECT_EQ(Imported(hits), "0+683=1024t:42 | 683+341=512t:42 | 1024+1024:38 | 2048+2048:r");
    Document doc = DrumDocument(1);
    std::string error;
    ASSERT_TRUE(stavio::midi_import::ImportMidiBytes(doc, Region(1, 1, 1), DrumFile(480, 4, 4, hits), "t.mid", error));
    const std::vector<TupletInfo> tuplets = doc.Frame(1, 1, 0)->tuplets;
    ASSERT_EQ(tuplets.size(), 1u);
    const TupletInfo& t = tuplets[0];
    EXPECT_EQ(std::to_string(t.stoff) + "-" + std::to_string(t.enoff) + " in " + std::to_string(t.tupPeriod) + ": " +
                  std::to_string(t.tpDef.symbolicNum) + "x" + std::to_string(t.tpDef.symbolicDur) + " for " +
                  std::to_string(t.tpDef.refNum) + "x" + std::to_string(t.tpDef.refDur),
              "0-1 in 1024: 3x512 for 2x512");
    // A triplet rest opens a beat whose first hit is on its second third; a full triplet beat.
    EXPECT_EQ(Imported({{160, 42}, {480, 42}, {640, 42}, {800, 42}}),
              "0+341=512t:r | 341+683=1024t:42 | 1024+341=512t:42 | 1365+342=512t:42 | 1707+341=512t:42 | 2048+2048:r");
    // A hit on the beat alone, or a straight sixteenth, stays straight: ties go to the straight grid.
    EXPECT_EQ(Imported({{120, 42}}), "0+256:r | 256+768:42 | 1024+1024:r | 2048+2048:r");
}

TEST(ImportNotation, CompoundBeatsTakeEighthsAndSixteenthsWithoutTuplets)
{
    EXPECT_EQ(Imported({{0, 36}, {240, 42}, {600, 38}}, 6, 8), "0+512:36 | 512+768:42 | 1280+256:38 | 1536+1536:r");
    // Five sixteenths are not one value: the note takes a quarter and a rest the rest.
    EXPECT_EQ(Imported({{0, 36}, {600, 38}, {720, 36}}, 6, 8), "0+1024:36 | 1024+256:r | 1280+256:38 | 1536+1536:36");
}

TEST(ImportNotation, ChordsHoldTwelveNotesAtMost)
{
    std::vector<DrumHit> hits;
    for (int key = 35; key <= 48; ++key) hits.push_back({0, key});
    EXPECT_EQ(Imported(hits), "0+1024:35,36,37,38,39,40,41,42,43,44,45,46 | 1024+1024:r | 2048+2048:r");
}

TEST(ImportNotation, AnEarlyHitBelongsToTheBarItAnticipates)
{
    const std::vector<DrumHit> hits{{0, 36}, {1920 - 25, 49}};   // the crash comes 25 ticks early
    EXPECT_EQ(Imported(hits, 4, 4, 1, 2), "0+1024:36 | 1024+1024:r | 2048+2048:r");
    EXPECT_EQ(Imported(hits, 4, 4, 2, 2), "0+1024:49 | 1024+1024:r | 2048+2048:r");
}

TEST(ImportNotation, KeysAreSpelledSoThatTheHostGivesThemBack)
{
    const stavio::midi_import::MeasureGrid grid = stavio::midi_import::GridFor(4, 1024, {});
    for (int key = 0; key <= 127; ++key) {
        const stavio::FrameContent frame = stavio::midi_import::NotateMeasure({{0, key}}, grid);
        const EXNOTE note = frame.entries.at(0).note[0];
        EXPECT_EQ(stavio::NoteToMidiKey(note.tcd, note.alteration), key);
        EXPECT_TRUE(note.alteration == 0 || note.alteration == 1) << key;
    }
}

}   // namespace
