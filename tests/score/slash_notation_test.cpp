// Slash notation added and removed over regions of a host document.
#include "tamberlyne/host/gateway.h"
#include "tamberlyne/score/remove_slash_notation.h"
#include "tamberlyne/score/slash_notation.h"
#include "tests/score/score_test_support.h"

#include <string>

using score_test::Assigned;
using score_test::Assignments;
using score_test::Entries;
using score_test::Region;

namespace {

constexpr int32_t kEnd = kEndOfMeasure;

SXInsertEXENTRYProc gHostInsert = nullptr;

// A host that leaves the entries it inserts at position 0: the plug-in places its rests itself.
int32_t InsertUnplaced(EXQVF2005a* frame, int32_t index, int32_t count, EVERSION version)
{
    const int32_t done = gHostInsert(frame, index, count, version);
    for (int32_t i = index; done != 0 && i < index + count; ++i) frame->pent[i].elldur = 0;
    return done;
}

struct Meter {
    int16_t beats;
    int16_t divbeat;
    int rests;
    int length;
};

class SlashNotation : public score_test::ScoreTest, public ::testing::WithParamInterface<Meter> {
protected:
    void Add(const EREGION& region) { EXPECT_TRUE(TAddSlashNotation(&region).Run()); }
    void Remove(const EREGION& region) { EXPECT_TRUE(TRemoveSlashNotation(&region).Run(nullptr)); }
    void ExpectBeatRests(int inst, int meas, int rests, int length)
    {
        const auto entries = Entries(doc(), inst, meas);
        ASSERT_EQ(entries.size(), size_t(rests)) << "measure " << meas;
        for (size_t i = 0; i < entries.size(); ++i) {
            const EXENTRY& rest = entries[i];
            EXPECT_EQ((std::vector<int64_t>{rest.dura, rest.actdur, rest.elldur, rest.ef, rest.numNotes}),
                      (std::vector<int64_t>{length, length, int64_t(i) * length, 0x81000000, 0}));
        }
    }
    std::string StyleName(int number)
    {
        EDTStaffStyle2003 style;
        return score_test::ReadOther(doc(), kTagStaffStyle, number, 0, style) ? style.styleName : "(none)";
    }
};

}   // namespace

TEST_P(SlashNotation, FillsEmptyMeasuresWithBeatRestsAndAssignsTheStyle)
{
    const Meter meter = GetParam();
    Start(stavio::DocumentBuilder().Measures(3, meter.beats, meter.divbeat).Staff("Drums").Staff("Bass").Build());
    gHostInsert = gStavioFuncs.SX_InsertEXENTRY;
    gStavioFuncs.SX_InsertEXENTRY = &InsertUnplaced;
    Add(Region(1, 2, 1, 2));
    for (int inst : {1, 2}) {
        ExpectBeatRests(inst, 1, meter.rests, meter.length);
        ExpectBeatRests(inst, 2, meter.rests, meter.length);
        EXPECT_TRUE(Entries(doc(), inst, 3).empty());
        EXPECT_EQ(Assignments(doc(), inst), (std::vector<Assigned>{{1, 1, 0, 2, kEnd}}));
    }
    EXPECT_EQ(StyleName(1), "Quillodeon Slash Notation");
}

INSTANTIATE_TEST_SUITE_P(Meters, SlashNotation,
                         ::testing::Values(Meter{4, 1024, 4, 1024}, Meter{3, 1024, 3, 1024}, Meter{6, 512, 2, 1536},
                                           Meter{12, 512, 4, 1536}, Meter{5, 1024, 5, 1024}, Meter{3, 512, 3, 512}),
                         [](const auto& instance) {
                             return std::to_string(instance.param.beats) + "_" +
                                    std::to_string(4096 / instance.param.divbeat);
                         });

using SlashNotationRuns = SlashNotation;

TEST_F(SlashNotationRuns, MusicInAnyLayerIsLeftAloneAndRerunsLeaveOneStyleAndNoOverlaps)
{
    Start(stavio::DocumentBuilder().Measures(8).Staff("Drums").Entries(1, 3, 3, {stavio::Note(42, 4096)}).Build());
    Add(Region(1, 1, 2, 5));
    Add(Region(1, 1, 2, 5));
    ExpectBeatRests(1, 2, 4, 1024);
    EXPECT_TRUE(Entries(doc(), 1, 3).empty());
    EXPECT_EQ(Entries(doc(), 1, 3, 3).size(), 1u);
    Add(Region(1, 1, 4, 6, 0, 4095));   // one EDU short of the end counts as the end
    EXPECT_EQ(StyleName(2), "(none)");
    EXPECT_EQ(Assignments(doc(), 1), (std::vector<Assigned>{{1, 2, 0, 3, kEnd}, {1, 4, 0, 6, kEnd}}));
    ExpectBeatRests(1, 6, 4, 1024);
}

TEST_F(SlashNotationRuns, SlashStylesThatDoMoreAreNeitherReusedNorCut)
{
    stavio::DocumentBuilder builder;
    builder.Measures(8).Staff("Drums");
    for (int16_t number = 1; number <= 999; ++number) builder.StaffStyle(number, score_test::SlashStyle(0x0004));
    Start(builder.StyleAssignment(1, 1, score_test::Range(1, 0, 8)).Build());
    Add(Region(1, 1, 3, 4));
    EXPECT_EQ(StyleName(1000), "Quillodeon Slash Notation");
    EXPECT_EQ(Assignments(doc(), 1), (std::vector<Assigned>{{1, 1, 0, 8, kEnd}, {1000, 3, 0, 4, kEnd}}));
}

TEST_F(SlashNotationRuns, RemoverTakesBackFourFourAndSixEightRestsButNotThreeFour)
{
    Start(stavio::DocumentBuilder()
              .Measures(5)
              .TimeSignatureFrom(2, 3, 1024)
              .TimeSignatureFrom(3, 6, 512)
              .Staff("Drums")
              .Entries(1, 4, 0, {stavio::Rest(1536), stavio::Rest(1536)})
              .Build());
    Add(Region(1, 1, 1, 3));
    Add(Region(1, 1, 5, 5));
    Remove(Region(1, 1, 1, 5, 0, 3071));
    EXPECT_TRUE(Entries(doc(), 1, 1).empty());
    ExpectBeatRests(1, 2, 3, 1024);
    EXPECT_TRUE(Entries(doc(), 1, 3).empty());
    EXPECT_EQ(Entries(doc(), 1, 4).size(), 2u);   // the user's own rests
    EXPECT_TRUE(Entries(doc(), 1, 5).empty());
    EXPECT_TRUE(Assignments(doc(), 1).empty());

    Add(Region(1, 1, 1, 1));
    Remove(Region(1, 1, 1, 1, 512));   // measure 1 not covered whole: its rests stay
    ExpectBeatRests(1, 1, 4, 1024);
    EXPECT_EQ(Assignments(doc(), 1), (std::vector<Assigned>{{1, 1, 0, 1, 511}}));
}
