// Percussion staff preparation against a host document: clefs, the percussion clef's font,
// the drum staff record and the playback channel.
#include "stavio/document/staff_playback.h"
#include "tamberlyne/plugin/staff_preparation.h"
#include "tests/score/score_test_support.h"

#include <array>
#include <cstring>

using score_test::Ints;
using score_test::Region;

namespace {

class StaffPreparation : public score_test::ScoreTest {
protected:
    int16_t Clef(int inst, int meas) { return score_test::ClefAt(doc(), inst, meas); }
    EDTClefDef PercussionClef()
    {
        EDTClefDef clef{};
        doc().Read(kTagClefDef, stavio::RecordKey::Number(kPercussionClef), clef);
        return clef;
    }
    int16_t Font(const char* name) { return doc().Fonts().Find(name).value_or(-1); }
};

}   // namespace

TEST_F(StaffPreparation, PutClefSetsTheRegionsMeasuresAndAsksOnlyAboutAPercussionClefInAnotherFont)
{
    Start(stavio::DocumentBuilder().Measures(4).Staff("Drums").Staff("Bass").Build(), Region(1, 1, 2, 3));
    PutClef(1, 3);
    PutClef(2, kPercussionClef);   // the new document's percussion clef uses the font already
    EXPECT_EQ((std::vector<int16_t>{Clef(1, 1), Clef(1, 2), Clef(1, 3), Clef(1, 4), Clef(2, 2)}),
              (std::vector<int16_t>{0, 3, 3, 0, 12}));
    EXPECT_TRUE(frontEnd.Alerts().empty());

    EDTClefDef clef = PercussionClef();
    clef.font = Font("Times New Roman");
    clef.shapeID = 77;
    ASSERT_TRUE(doc().Write(kTagClefDef, stavio::RecordKey::Number(kPercussionClef), clef));
    PutClef(1, 3);
    EXPECT_TRUE(frontEnd.Alerts().empty());
    frontEnd.AddAnswer(kAlertAnswerNo);
    PutClef(1, kPercussionClef);
    ASSERT_EQ(frontEnd.Alerts().size(), 1u);
    EXPECT_EQ(Ints(frontEnd.Alerts()[0].request.stringId, frontEnd.Alerts()[0].request.style),
              Ints(0x4E21000C, kAlertQuestion));
    const EDTClefDef declined = PercussionClef();
    EXPECT_EQ(std::memcmp(&declined, &clef, sizeof(clef)), 0);
    EXPECT_EQ(Clef(1, 3), kPercussionClef);   // the measures get the clef all the same

    frontEnd.AddAnswer(kAlertAnswerYes);
    PutClef(1, kPercussionClef);
    const EDTClefDef c = PercussionClef();
    EXPECT_EQ((std::vector<int>{c.adjust, c.clefchar, c.clefydisp, c.baseAdjust, c.shapeID, c.font, c.size, c.efx}),
              (std::vector<int>{-10, 139, -6, 0, 77, Font("Dorvane"), 24, 0}));
    EXPECT_NE(c.flag & 0x0002, 0);
    PutClef(1, kPercussionClef);
    EXPECT_EQ(frontEnd.Alerts().size(), 2u);
}

TEST_F(StaffPreparation, MakeDrumStyleSetsClefsFromMeasureOneOrOnANewStaffOnly)
{
    // (first measure, options word) -> clefs, instflag; the staff's own clefs are 0x0303
    for (const auto& [firstMeas, options, clefs, instflag] :
         std::vector<std::array<int, 4>>{{1, 0, 0x0C0C, 0x0020}, {5, 0, 0x0303, 0x0020}, {5, 1, 0x0C0C, 0x0420}}) {
        Start(stavio::DocumentBuilder().Measures(8).Staff("Drums").Build(), Region(1, 1, uint16_t(firstMeas), 8),
              uint32_t(options));
        EDTStaffSpec2003 s;
        ASSERT_TRUE(score_test::ReadOther(doc(), kTagStaffSpec, 1, 0, s));
        s.clefs = 0x0303;
        ASSERT_TRUE(doc().Write(kTagStaffSpec, stavio::RecordKey::Other(1, 0), s));
        MakeDrumStyle(1);
        EDTDrumStaff drum;
        ASSERT_TRUE(score_test::ReadOther(doc(), kTagStaffSpec, 1, 0, s));
        ASSERT_TRUE(score_test::ReadOther(doc(), kTagDrumStaff, 1, 0, drum));
        EXPECT_EQ((std::vector<int>{s.clefs, s.instflag, s.mfont, s.sizeefx, s.flag & 0x2020, Clef(1, 8)}),
                  (std::vector<int>{clefs, instflag, Font("Dorvane Percussion"), 0x1800, 0x2020, kPercussionClef}))
            << "from measure " << firstMeas << ", options " << options;
        EXPECT_EQ((std::vector<int>{drum.percMap, drum.playMap[0] & drum.playMap[7]}), (std::vector<int>{1, 0xFFFF}));
    }
}

TEST_F(StaffPreparation, StavesShareOneChannelTenDefinitionThatTheDialogDoesNotYetCallDrums)
{
    Start(stavio::DocumentBuilder().Measures(1).Staff("Kick").Staff("Snare").Staff("Bass").Build());
    MakeCH10(1);
    MakeCH10(2);
    const int32_t definition = stavio::StaffChannelDefinition(doc(), 1);
    EXPECT_EQ(stavio::StaffChannelDefinition(doc(), 2), definition);
    EXPECT_NE(stavio::StaffChannelDefinition(doc(), 3), definition);
    EXPECT_EQ(stavio::ChannelCode(doc(), definition), 9);
    EXPECT_EQ(stavio::ChannelName(doc(), definition), "Tamberlyne");
    EDTInstrumentUsage usage;
    ASSERT_TRUE(score_test::ReadOther(doc(), kTagInstrumentUsage, 2, 0, usage, kInstrumentUsageVersion));
    EXPECT_EQ(Ints(usage.flag, usage.f), Ints(0x5055, definition - 1));

    EXPECT_FALSE(IsDrumStaff(1));   // code 9 until the host marks its drum channel
    ASSERT_TRUE(stavio::SetChannelCode(doc(), definition, stavio::kDrumChannelCode));
    EXPECT_EQ(Ints(IsDrumStaff(1), IsDrumStaff(3), IsDrumStaff(12)), Ints(true, false, false));
}

TEST_F(StaffPreparation, ANewChannelDefinitionWhenOneToNinetyNineAreTakenAndThePercussionMap)
{
    Start(stavio::DocumentBuilder().Measures(1).Staff("Drums").FillChannelDefinitions().Build());
    MakeCH10(1);
    const int32_t definition = stavio::StaffChannelDefinition(doc(), 1);
    EXPECT_GT(definition, 99);
    EXPECT_EQ(stavio::ChannelCode(doc(), definition), 9);
    EXPECT_EQ(stavio::ChannelName(doc(), definition), "Tamberlyne");
    EXPECT_TRUE(PercussionMapPresent());
    Start(stavio::DocumentBuilder().Measures(1).Staff("Drums").DrumStaff(1).WithoutPercussionMap().Build());
    EXPECT_FALSE(PercussionMapPresent());
    EXPECT_TRUE(IsDrumStaff(1));
}
