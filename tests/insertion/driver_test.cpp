// The insertion driver run with fixed dialog choices over host documents: its checks and
// alerts, the imports it asks for, the staff it prepares, and what the import leaves behind.
#include "stavio/document/text_expressions.h"
#include "tamberlyne/plugin/groove_insertion.h"
#include "tamberlyne/plugin/plugin_globals.h"
#include "tests/insertion/insertion_test_support.h"

#include <algorithm>
#include <array>
#include <tuple>

using insertion_test::SmallGroove;
using stavio::DocumentBuilder;
using Ids = std::vector<int32_t>;

namespace {

class Driver : public insertion_test::InsertionTest {
protected:
    std::vector<std::pair<int, int>> Imported() const
    {
        std::vector<std::pair<int, int>> spans;
        for (const auto& c : calls) spans.emplace_back(c.firstMeas, c.lastMeas);
        return spans;
    }
    int16_t Clef(int inst, int meas, int16_t set = -1) { return score_test::ClefAt(doc(), inst, meas, set); }
    EDTStaffSpec2003 StaffSpec(int inst)
    {
        EDTStaffSpec2003 spec;
        EXPECT_TRUE(score_test::ReadOther(doc(), kTagStaffSpec, inst, 0, spec));
        return spec;
    }
    std::vector<int> Labels(int inst, int meas) { return score_test::Labels(doc(), inst, meas); }
};

}   // namespace

TEST_F(Driver, RefusedMeasuresAndMeterChangesStopBeforeTheGrooveIsRead)
{
    // (refused measure, meter change from measure) over region 3..6 -> alert (0: the groove is read)
    for (const auto& [refused, change, alert] : std::vector<std::array<int, 3>>{{3, 0, kAlertRefusedMeasure},
                                                                                {6, 0, kAlertRefusedMeasure},
                                                                                {0, 5, kAlertTimeSignatureChange},
                                                                                {0, 3, 0},
                                                                                {0, 7, 0}}) {
        DocumentBuilder builder;
        builder.Measures(8).Staff("Drums");
        if (refused) builder.MeasureFlags(refused, kMeasureAuxRefused);
        if (change) builder.TimeSignatureFrom(change, 3, 1024);
        StartOn(builder.Build(), 3, 6);
        frontEnd.ClearAlerts();
        Files = {toolbox::FileSpec{folder, "missing.mid"}};
        EXPECT_FALSE(Run());
        EXPECT_EQ(AlertIds(), Ids{alert ? alert : kAlertGrooveUnreadable});
        EXPECT_EQ(AlertIds(true), Ids{alert ? kAlertStop : kAlertWarning});
    }
}

TEST_F(Driver, UnreadableEmptyAndDrumlessGroovesAreRefusedWithTheirWarnings)
{
    StartOn(DocumentBuilder().Measures(4).Staff("Drums").Build(), 1, 4);
    UseGrooveBytes({});
    EXPECT_FALSE(Run());
    Files.clear();
    EXPECT_FALSE(Run());
    UseGrooveBytes(SmallGroove({{0, 36, 1}, {960, 38, 2}}));
    EXPECT_FALSE(Run());
    EXPECT_EQ(AlertIds(), (Ids{kAlertGrooveUnreadable, kAlertGrooveUnreadable, kAlertNoDrumNotes}));
    EXPECT_EQ(AlertIds(true), Ids(3, kAlertWarning));
    UseGrooveBytes({'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, 0, 0, 1});   // the reader says what is wrong
    EXPECT_FALSE(Run());
    EXPECT_GT(AlertIds().size(), 3u);
    UseLibraryGroove("Rock 8ths");
    EXPECT_FALSE(Run(0, 0, 5));   // no staff in that slot: nothing to fill
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ(needRefresh, 0);
}

TEST_F(Driver, OverwritingNotesIsAskedUnlessTheGrooveGoesOntoANewStaff)
{
    using stavio::Rest;
    // what layer 3 of staff 1 holds in measure 2 -> a question is asked (a lone rest is no music)
    for (const auto& [entries, asks] : std::vector<std::pair<std::vector<stavio::EntrySpec>, bool>>{
             {{stavio::Note(36, 4096)}, true}, {{Rest(4096)}, false}, {{Rest(2048), Rest(2048)}, true}}) {
        for (const int answer : {kAlertAnswerNo, kAlertAnswerYes}) {
            StartOn(DocumentBuilder().Measures(4).Staff("Drums").Entries(1, 2, 3, entries).Build(), 1, 4);
            UseLibraryGroove("Rock 8ths");
            frontEnd = stavio::ScriptedFrontEnd({answer});
            EXPECT_EQ(Run(), !asks || answer == kAlertAnswerYes);
            EXPECT_EQ(AlertIds(), asks ? Ids{kAlertOverwriteNotes} : Ids{});
            EXPECT_EQ(AlertIds(true), asks ? Ids{kAlertQuestion} : Ids{});
            EXPECT_EQ(calls.empty(), asks && answer == kAlertAnswerNo);
            calls.clear();
        }
    }
    StartOn(DocumentBuilder().Measures(4).Staff("Drums").Entries(1, 2, 0, {stavio::Note(36, 4096)}).Build(), 1, 4);
    frontEnd.ClearAlerts();
    EXPECT_TRUE(Run(1, 1));
    EXPECT_TRUE(AlertIds().empty());
}

TEST_F(Driver, MetersAreComparedWithTheRegionsFirstMeasure)
{
    // (beats, divbeat, groove) -> accepted
    for (const auto& [beats, divbeat, groove, accepted] :
         std::vector<std::tuple<int16_t, int16_t, std::string, bool>>{{4, 1024, "Cut Time Two Beat", true},
                                                                      {4, 1024, "Waltz 3-4", false},
                                                                      {2, 1536, "Afro-Cuban 6-8", true},
                                                                      {4, 768, "Waltz 3-4", false}}) {
        StartOn(DocumentBuilder().Measures(4, beats, divbeat).Staff("Drums").Build(), 2, 3);
        UseLibraryGroove(groove);
        frontEnd.ClearAlerts();
        EXPECT_EQ(Run(), accepted) << groove << " in " << beats << " x " << divbeat;
        EXPECT_EQ(AlertIds(), accepted ? Ids{} : Ids{kAlertMeterMismatch});
    }
}

TEST_F(Driver, TheGrooveIsRepeatedOverTheRegionAndTheLastRepetitionCut)
{
    // (groove, region) -> imports; "Rock 8ths Fill" is 4 bars and a closing crash in bar 5
    using Spans = std::vector<std::pair<int, int>>;
    for (const auto& [groove, first, last, spans] : std::vector<std::tuple<std::vector<uint8_t>, int, int, Spans>>{
             {{}, 1, 10, {{1, 4}, {5, 8}, {9, 10}}},
             {{}, 3, 4, {{3, 4}}},
             {SmallGroove({{0, 49}}), 2, 4, {{2, 2}, {3, 3}, {4, 4}}},       // one bar, never shortened
             {SmallGroove({{0, 36}, {1920, 49}}), 1, 2, {{1, 1}, {2, 2}}},   // a crash after one bar
             {SmallGroove({{0, 36}, {1920 + 1440, 42}}), 1, 3, {{1, 2}, {3, 3}}}}) {
        StartOn(DocumentBuilder().Measures(12).Staff("Drums").Staff("Bass").Build(), first, last);
        if (groove.empty())
            UseLibraryGroove("Rock 8ths Fill");
        else
            UseGrooveBytes(groove);
        calls.clear();
        EXPECT_TRUE(Run(0, 0, 1));
        EXPECT_EQ(Imported(), spans);
        EXPECT_EQ(score_test::Ints(calls.at(0).slot, needRefresh), score_test::Ints(2, 1));
    }
}

TEST_F(Driver, ATemporaryFileThatCannotBeWrittenLeavesTheScoreYetSucceeds)
{
    StartOn(DocumentBuilder().Measures(4).Staff("Drums").Build(), 1, 2);
    UseLibraryGroove("Rock 8ths");
    TempFileSpec.folder = folder + "/no such folder";
    EXPECT_TRUE(Run(1));
    EXPECT_EQ(score_test::Ints(needRefresh, calls.size(), Clef(1, 1), Labels(1, 1).size()),
              score_test::Ints(1, 0, 0, 0));
}

TEST_F(Driver, ARegionEndingAtTheLastMeasureTurnsHumanPlaybackOffOnly)
{
    StartOn(DocumentBuilder().Measures(4).Staff("Drums").Build(), 3, 4);
    UseLibraryGroove("Rock 8ths");
    EXPECT_TRUE(Run());
    EXPECT_EQ((std::vector<std::vector<int>>{Labels(1, 2), Labels(1, 3), Labels(1, 4), Labels(1, 5)}),
              (std::vector<std::vector<int>>{{}, {17}, {}, {}}));
    for (int16_t expression = 1; stavio::ReadTextExpression(doc(), expression); ++expression)
        EXPECT_NE(stavio::ReadTextExpression(doc(), expression)->text, "<HP on>");
}

TEST_F(Driver, ANewStaffGoesBelowTheOthersWithItsOwnLook)
{
    StartOn(DocumentBuilder().Measures(4).Staff("Piano").Staff("Bass").Build(), 2, 3);
    UseLibraryGroove("Rock 8ths");
    EXPECT_TRUE(Run(1, 1));
    ASSERT_EQ(doc().StaffCount(), 3);
    EDTInstrumentUsed above, added;
    ASSERT_TRUE(score_test::ReadOther(doc(), kTagInstrumentUsed, 0, 1, above));
    ASSERT_TRUE(score_test::ReadOther(doc(), kTagInstrumentUsed, 0, 2, added));
    EXPECT_EQ(added.separ, above.separ - 250);
    EXPECT_EQ(Imported(), (std::vector<std::pair<int, int>>{{2, 3}}));
    EXPECT_EQ(score_test::Ints(StaffSpec(added.inst).altFlag, calls.at(0).slot, Clef(added.inst, 2)),
              score_test::Ints(0x1700, 3, kPercussionClef));
}

TEST_F(Driver, EachStylePreparesTheStaffForDrums)
{
    constexpr uint16_t kAllFlags = 0x7FFF;
    for (const int style : {0, 1, 2}) {
        StartOn(DocumentBuilder().Measures(4).Staff("Drums").Build(), 1, 2);
        EDTStaffSpec2003 spec = StaffSpec(1);
        spec.altFlag = kAllFlags;
        ASSERT_TRUE(doc().Write(kTagStaffSpec, stavio::RecordKey::Other(1, 0), spec));
        Clef(1, 1, 3);
        UseLibraryGroove("Rock 8ths");
        passImportsOn = style != 2;   // slash notation over measures the import left empty
        EXPECT_TRUE(Run(style));
        EDTDrumStaff drum;
        EXPECT_EQ(score_test::ReadOther(doc(), kTagDrumStaff, 1, 0, drum), style == 0);
        const int16_t clef = style == 2 ? 3 : kPercussionClef;   // slashes keep the staff's clef
        EXPECT_EQ((std::vector<int>{Clef(1, 1), Clef(1, 2), Clef(1, 3)}), (std::vector<int>{clef, clef, 0}));
        EXPECT_EQ(StaffSpec(1).altFlag, style == 2 ? kAllFlags : kAllFlags & 0x9FFE);
        EXPECT_EQ(score_test::Assignments(doc(), 1).size(), style == 2 ? 1u : 0u);
        EXPECT_EQ(score_test::Entries(doc(), 1, 2).size() == 4u, style == 2);   // beat rests, or the groove
        EDTInstrumentUsage usage;
        EDTGeneric channel;
        ASSERT_TRUE(score_test::ReadOther(doc(), kTagInstrumentUsage, 1, 0, usage, kInstrumentUsageVersion));
        ASSERT_TRUE(score_test::ReadOther(doc(), kTagChannelDef, usage.a + 1, 0, channel));
        EXPECT_EQ(channel.words[0], 9);
        // Human playback off over the groove, on after it.
        EXPECT_EQ((std::vector<std::vector<int>>{Labels(1, 1), Labels(1, 3)}),
                  (std::vector<std::vector<int>>{{17}, {16}}));
    }
}

// ---- With the host's import ------------------------------------------------------------------

// Yes to "replace?" replaces: the filled measures keep nothing in any layer (a drum part's feet
// sit in layer 1), the measures around them keep every layer, also where the groove's last
// repetition is cut at the region's end, and one undo of the bracket brings all of it back.
TEST_F(Driver, YesReplacesTheRegionsNotesInEveryLayerAndOneUndoBringsThemBack)
{
    DocumentBuilder builder;
    builder.Measures(6).Staff("Drums");
    for (int meas = 1; meas <= 6; ++meas)
        builder.Entries(1, meas, 0, {stavio::Note(42, 4096)})
            .Entries(1, meas, 1, {stavio::Note(36, 2048), stavio::Rest(2048)});
    StartOn(builder.Build(), 2, 4);
    UseLibraryGroove("Rock 8ths");   // two bars: measures 2-3, then 4 alone
    frontEnd = stavio::ScriptedFrontEnd({kAlertAnswerYes});
    const stavio::RecordStore before = doc().Records();
    ASSERT_EQ(doc().StartEdit("Tamberlyne Plug-In"), 1);   // as the dialog brackets the driver
    ASSERT_TRUE(Run());
    ASSERT_EQ(doc().EndEdit(), 1);
    EXPECT_EQ(AlertIds(), Ids{kAlertOverwriteNotes});
    EXPECT_EQ(Imported(), (std::vector<std::pair<int, int>>{{2, 3}, {4, 4}}));
    ASSERT_TRUE(EveryImportAnswered());
    for (int meas = 1; meas <= 6; ++meas) {
        const bool filled = meas >= 2 && meas <= 4;
        EXPECT_EQ(score_test::Entries(doc(), 1, meas, 0).size(), filled ? 8u : 1u) << meas;
        EXPECT_EQ(score_test::Entries(doc(), 1, meas, 1).size(), filled ? 0u : 2u) << meas;
        EXPECT_EQ(doc().FrameNumber(1, meas, 1) == 0, filled) << meas;
    }
    ASSERT_TRUE(doc().Undo());
    EXPECT_TRUE(doc().Records() == before);
}

// The imported rhythm is the groove's, repeated and cut to the region; "Rock 8ths Fill" loses its
// closing crash, and the keys the cleaner moved in "Songo" (some above 59) are respelled back.
TEST_F(Driver, TheImportedRhythmIsTheGroovesRepeatedWithItsOwnKeys)
{
    using Spans = std::vector<std::array<int, 3>>;   // first measure, last measure, the groove's bars
    for (const auto& [groove, style, measures, spans] : std::vector<std::tuple<std::string, int, int, Spans>>{
             {"Rock 8ths Fill", 0, 10, {{1, 4, 4}, {5, 8, 4}, {9, 10, 2}}}, {"Songo", 1, 4, {{1, 2, 2}, {3, 4, 2}}}}) {
        StartOn(DocumentBuilder().Measures(measures).Staff("Drums").Build(), 1, measures);
        UseLibraryGroove(groove);
        calls.clear();
        ASSERT_TRUE(Run(style));
        ASSERT_TRUE(EveryImportAnswered());
        const auto onsets = insertion_test::GrooveOnsets(groove);
        ASSERT_FALSE(onsets.empty());
        ASSERT_TRUE(std::any_of(onsets.begin(), onsets.end(),
                                [](const auto& o) { return std::get<2>(o).back() > 59; }) == (groove == "Songo"));
        for (const auto& [first, last, bars] : spans) {
            auto expected = onsets;
            expected.erase(std::find_if(expected.begin(), expected.end(),
                                        [bars = bars](const auto& onset) { return std::get<0>(onset) > bars; }),
                           expected.end());
            EXPECT_EQ(insertion_test::StaffOnsets(doc(), 1, first, last), expected) << groove << " " << first;
        }
    }
}
