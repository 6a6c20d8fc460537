// The records the score-editing utilities use, as a plug-in reaches them through the table:
// staff styles and their assignments, text expressions and their assignments, the drum-staff
// records, and the host's refusal of wrong sizes, versions and keys. (The plug-in's own tests in
// tests/score meet the ordinary paths; these keep the boundaries the plug-in never reaches.)
#include "stavio/document/text_expressions.h"
#include "stavio/document_builder.h"
#include "stavio/host.h"
#include "tests/stavio/test_support.h"

#include <cstring>
#include <string>
#include <vector>

namespace stavio {
namespace {

using test::OtherKey;
constexpr EVERSION kV = kPluginApiVersion;
using support::Ints;

EXMEASRANGE Range(int16_t first, int16_t last)
{
    return EXMEASRANGE{EXMEASPOINT{first, 0}, EXMEASPOINT{last, kEndOfMeasure}};
}

class StavioScoreRecords : public ::testing::Test {
protected:
    StavioScoreRecords()
    {
        host_.SetDocument(DocumentBuilder()
                              .Measures(8)
                              .Staff("Piano")
                              .Staff("Drum Set")
                              .StaffStyle(1, EDTStaffStyle2003{})
                              .TextExpression(1, "<HP off>", 529)
                              .TextExpression(3, "rit.", 0)
                              .ExpressionAssignment(2, 4, 1)
                              .ExpressionAssignment(1, 4, 3)
                              .Build());
    }
    const StavioFuncs& T() const { return host_.FunctionTable(); }

    template <typename Record>
    bool Load(EXTAG tag, uint16_t cmper, int16_t inci, Record& record, EVERSION version = kV) const
    {
        EDataID key = OtherKey(cmper, inci);
        int32_t size = sizeof(Record);
        return T().SX_LoadEData(tag, &key, &record, &size, version) != 0;
    }
    Host host_;
};

// (Appending and shifting down on delete are met by the plug-in's staff-style tests.)
TEST_F(StavioScoreRecords, StyleAssignmentsNeedTheirStaffAndTheirSize)
{
    EDTStaffStyleAssign assignment{};
    assignment.style = 1;
    assignment.range = Range(7, 8);
    EDataID key{};
    for (uint16_t missing : {uint16_t{0}, uint16_t{3}, kPickNumber}) {
        key = OtherKey(missing, -1);
        EXPECT_EQ(T().SX_CreateEData(kTagStaffStyleAssign, &key, &assignment, 24, kV), 0) << missing;
        key = OtherKey(missing, 0);
        EXPECT_EQ(T().SX_SaveEData(kTagStaffStyleAssign, &key, &assignment, 24, kV), 0) << missing;
    }
    key = OtherKey(1, -1);
    EXPECT_EQ(T().SX_CreateEData(kTagStaffStyleAssign, &key, &assignment, 22, kV), 0) << "wrong size";
    EXPECT_EQ(T().SX_CreateEData(kTagStaffStyleAssign, &key, &assignment, 24, kV), 1) << "the right request";
}

TEST_F(StavioScoreRecords, ExpressionDefinitionsAreNumberedAfterTheHighestAndAnswerTheirStoredLength)
{
    const std::string text = "<HP on>";
    std::vector<uint8_t> bytes(12 + text.size() + 1, 0);
    bytes[10] = 0x10;   // word 5, playback type 528
    bytes[11] = 0x02;
    std::memcpy(bytes.data() + 12, text.c_str(), text.size() + 1);
    EDataID key = OtherKey(kPickNumber, 0);
    ASSERT_EQ(T().SX_CreateEData(kTagTextExpression, &key, bytes.data(), static_cast<int32_t>(bytes.size()), kV), 1);
    EXPECT_EQ(key.other.cmper, 4) << "after the highest (3), not the first gap";

    int32_t size = 0;
    key = OtherKey(4, 0);
    ASSERT_EQ(T().SX_LoadEData(kTagTextExpression, &key, nullptr, &size, kV), 1);
    EXPECT_EQ(size, static_cast<int32_t>(text.size() + 13));
    key = OtherKey(1, 0);
    ASSERT_EQ(T().SX_LoadEData(kTagTextExpression, &key, nullptr, &size, kV), 1);
    EXPECT_EQ(size, 8 + 13);
    std::vector<char> buffer(static_cast<size_t>(size));
    ASSERT_EQ(T().SX_LoadEData(kTagTextExpression, &key, buffer.data(), &size, 0x0A000000), 1);
    EDTTextExpressionHeader header{};
    std::memcpy(&header, buffer.data(), sizeof(header));
    EXPECT_EQ(header.playbackType, 529);
    EXPECT_STREQ(buffer.data() + 12, "<HP off>");
    key = OtherKey(2, 0);
    EXPECT_EQ(T().SX_LoadEData(kTagTextExpression, &key, nullptr, &size, kV), 0);

    // A definition must carry its header and a terminated text.
    const char unterminated[14] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 'a', 'b'};
    key = OtherKey(kPickNumber, 0);
    EXPECT_EQ(T().SX_CreateEData(kTagTextExpression, &key, unterminated, 14, kV), 0);
    key = OtherKey(1, 0);
    EXPECT_EQ(T().SX_SaveEData(kTagTextExpression, &key, unterminated, 12, kV), 0);
    EXPECT_EQ(ReadTextExpression(host_.document(), 1)->text, "<HP off>");
}

TEST_F(StavioScoreRecords, ExpressionAssignmentsAppendPerMeasureAndShiftDownOnDelete)
{
    std::vector<EDTGeneric> assigned = ExpressionAssignments(host_.document(), 4);
    ASSERT_EQ(assigned.size(), 2u);
    EXPECT_EQ(Ints(assigned[0].words[0], assigned[0].words[2], uint16_t(assigned[0].words[5]),
                   AssignmentOnStaff(assigned[0], 2), AssignmentOnStaff(assigned[1], 2)),
              Ints(1, 76, 0x1002, true, false));
    EDTMeasureSpec2005 spec{};
    ASSERT_TRUE(Load(kTagMeasureSpec, 4, 0, spec));
    EXPECT_TRUE(spec.meflag & kMeasureMeflagHasExpressions);

    EDTGeneric label = ExpressionAssignmentFor(3, 2);
    EDataID key = OtherKey(4, -1);
    ASSERT_EQ(T().SX_CreateEData(kTagExpressionAssign, &key, &label, 12, kV), 1);
    EXPECT_EQ(key.other.inci, 2);
    EDataID first = OtherKey(4, 0);
    ASSERT_EQ(T().SX_DeleteEData(kTagExpressionAssign, &first, kV), 1);
    assigned = ExpressionAssignments(host_.document(), 4);
    ASSERT_EQ(assigned.size(), 2u);
    EXPECT_EQ(Ints(assigned[0].words[0], AssignmentOnStaff(assigned[1], 2)), Ints(3, true));
    EXPECT_TRUE(ExpressionAssignments(host_.document(), 5).empty());
}

TEST_F(StavioScoreRecords, DrumRecordsAreStrictAboutSizeVersionAndStaff)
{
    EDTInstrumentUsage usage{};   // 0x0A000000 is older than the 24-byte layout
    EXPECT_EQ(Ints(Load(kTagInstrumentUsage, 2, 0, usage, kInstrumentUsageVersion),
                   Load(kTagInstrumentUsage, 2, 0, usage, kV), Load(kTagInstrumentUsage, 2, 0, usage, 0x0A000000)),
              Ints(true, true, false));
    EDataID key = OtherKey(3, 0);
    EXPECT_EQ(T().SX_SaveEData(kTagInstrumentUsage, &key, &usage, 24, kInstrumentUsageVersion), 0) << "no staff 3";
    key = OtherKey(2, 1);
    EXPECT_EQ(T().SX_SaveEData(kTagInstrumentUsage, &key, &usage, 24, kInstrumentUsageVersion), 0)
        << "one usage per staff";
    key = OtherKey(2, 0);
    EXPECT_EQ(T().SX_SaveEData(kTagInstrumentUsage, &key, &usage, 22, kInstrumentUsageVersion), 0);

    EDTDrumStaff drum{};
    drum.percMap = 1;
    EXPECT_EQ(T().SX_SaveEData(kTagDrumStaff, &key, &drum, 24, kV), 1);
    EXPECT_EQ(T().SX_SaveEData(kTagDrumStaff, &key, &drum, 26, kV), 0);
    key = OtherKey(0, 0);
    EXPECT_EQ(T().SX_SaveEData(kTagDrumStaff, &key, &drum, 24, kV), 0);

    EDTStaffStyle2003 style{};
    EXPECT_TRUE(Load(kTagStaffStyle, 1, 0, style));
    EXPECT_FALSE(Load(kTagStaffStyle, 1, 0, style, 0x07FFFFFF)) << "the 132-byte layout is the 2003 one";

    EDataID clef{};
    clef.words[0] = kPercussionClef;
    EDTClefDef def{};
    int32_t size = 16;
    EXPECT_EQ(T().SX_LoadEData(kTagClefDef, &clef, &def, &size, kV), 0);
    EDTFontPref font{};
    size = 8;
    key = OtherKey(6, 0);
    EXPECT_EQ(T().SX_LoadEData(kTagDefaultFontPref, &key, &font, &size, kV), 0);
}

}   // namespace
}   // namespace stavio
