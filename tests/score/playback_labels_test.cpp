// Text expressions and the human-playback labels around an inserted groove.
#include "stavio/document/text_expressions.h"
#include "tamberlyne/score/playback_labels.h"
#include "tamberlyne/score/text_expressions.h"
#include "tests/score/score_test_support.h"

#include <string>

namespace {

constexpr int kOn = 16;
constexpr int kOff = 17;

class PlaybackLabels : public score_test::ScoreTest {
protected:
    void StartWith(stavio::DocumentBuilder builder = {})
    {
        Start(builder.Measures(40).Staff("Drums").Staff("Bass").Build());
    }
    std::vector<int> Labels(int inst, int meas) { return score_test::Labels(doc(), inst, meas); }
};

}   // namespace

TEST_F(PlaybackLabels, LabelsAroundARegionAreWrittenOnceWithSharedExpressions)
{
    StartWith();
    for (int run = 0; run < 2; ++run) {
        EXPECT_EQ(TurnHumanPlaybackOff(1, 3), run == 0);
        EXPECT_TRUE(TurnHumanPlaybackOn(1, 7));
    }
    EXPECT_EQ((std::vector<std::vector<int>>{Labels(1, 3), Labels(1, 7)}),
              (std::vector<std::vector<int>>{{kOff}, {kOn}}));
    EDTMeasureSpec2005 spec;
    ASSERT_TRUE(score_test::ReadOther(doc(), kTagMeasureSpec, 3, 0, spec));
    EXPECT_NE(spec.meflag & kMeasureMeflagHasExpressions, 0);
    const EDTGeneric off = stavio::ExpressionAssignments(doc(), 3).at(0);
    EXPECT_EQ((std::vector<int16_t>{off.words[1], off.words[2], off.words[4], off.words[5]}),
              (std::vector<int16_t>{0, 76, 0, 0x1001}));
    const auto definition = stavio::ReadTextExpression(doc(), off.words[0]);
    EXPECT_EQ(definition->text + std::to_string(definition->header.playbackType), "<HP off>529");

    EXPECT_TRUE(TurnHumanPlaybackOff(2, 3));   // the other staff's label is not this staff's
    EXPECT_EQ(stavio::ExpressionAssignments(doc(), 3).at(1).words[0], off.words[0]);
    EXPECT_FALSE(stavio::ReadTextExpression(doc(), 3));
}

TEST_F(PlaybackLabels, OnLabelsWherePlaybackGoesOffAreReplacedAndLookingBackStops)
{
    StartWith();
    TurnHumanPlaybackOn(1, 5);
    TurnHumanPlaybackOn(2, 5);
    EXPECT_TRUE(TurnHumanPlaybackOff(1, 5));
    EXPECT_EQ((std::vector<std::vector<int>>{Labels(1, 5), Labels(2, 5)}),
              (std::vector<std::vector<int>>{{kOff}, {kOn}}));
    EXPECT_FALSE(TurnHumanPlaybackOff(1, 30));   // measure 5 is 25 back: still off
    TurnHumanPlaybackOn(1, 10);
    EXPECT_TRUE(TurnHumanPlaybackOff(1, 12));   // looking back stops at the "on" label
    EXPECT_TRUE(TurnHumanPlaybackOff(1, 38));   // measure 12 is 26 back: out of sight
    EXPECT_TRUE(TurnHumanPlaybackOff(2, 1));    // measure 1: nothing to look back at
}

TEST_F(PlaybackLabels, ExpressionsAreMatchedByLengthAndTypeAndCleanedOfLineBreaks)
{
    StartWith(stavio::DocumentBuilder().TextExpression(1, "<HP xx>", 528).TextExpression(2, "<HP off>", 16));
    char on[] = "<HP on>";
    EXPECT_EQ(CreateTextExpression(on, 0, 0, 528), 1);   // the text itself is not compared
    char off[] = "<HP\r o\nff>";
    EXPECT_EQ(CreateTextExpression(off, 0, 0, 529), 3);
    EXPECT_EQ(std::string(off), "<HP  off>");
    EXPECT_EQ(CreateTextExpression(off, 0, 0, 529), 3);
    EXPECT_EQ(stavio::ReadTextExpression(doc(), 3)->text, "<HP  off>");
}
