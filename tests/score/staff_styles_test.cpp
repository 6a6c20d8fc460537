// Cutting, splitting and sorting staff style assignments over a region.
#include "tamberlyne/score/staff_styles.h"
#include "tests/score/score_test_support.h"

using score_test::Assigned;
using score_test::Assignments;
using score_test::Range;
using score_test::Region;

namespace {

constexpr int16_t kSlash = 1;
constexpr int16_t kUserSlash = 2;   // slash and another setting
constexpr int16_t kOther = 3;       // no slash
constexpr int32_t kEnd = kEndOfMeasure;

class StaffStyles : public score_test::ScoreTest {
protected:
    // 20 measures of 4/4, two staves, the three styles and these assignments on staff 1.
    void StartWith(std::vector<std::pair<int16_t, EXMEASRANGE>> assignments)
    {
        stavio::DocumentBuilder builder;
        builder.Measures(20).Staff("Drums").Staff("Bass").StaffStyle(kSlash, score_test::SlashStyle());
        builder.StaffStyle(kUserSlash, score_test::SlashStyle(0x0010))
            .StaffStyle(kOther, score_test::SlashStyle(0, 0x0200));
        for (const auto& [style, range] : assignments) builder.StyleAssignment(1, style, range);
        Start(builder.Build());
    }
};

}   // namespace

TEST_F(StaffStyles, AnAssignmentAroundTheRegionIsSplitAtTheNeighbouringPoints)
{
    StartWith({{kSlash, Range(1, 0, 20)}});
    EREGION region = Region(1, 2, 5, 8);
    EXPECT_TRUE(RemoveSlashStaffStyles(region, true));
    EXPECT_EQ(Assignments(doc(), 1), (std::vector<Assigned>{{1, 1, 0, 4, kEnd}, {1, 9, 0, 20, kEnd}}));
    region = Region(1, 1, 12, 14, 1024, 2048);
    EXPECT_TRUE(RemoveSlashStaffStyles(region, true));
    EXPECT_EQ(Assignments(doc(), 1),
              (std::vector<Assigned>{{1, 1, 0, 4, kEnd}, {1, 9, 0, 12, 1023}, {1, 14, 2049, 20, kEnd}}));
}

TEST_F(StaffStyles, EqualRangesGoOverlapsAreTrimmedAndExclusiveOnlySparesTheUsersStyles)
{
    StartWith({{kSlash, Range(5, 0, 8)},
               {kSlash, Range(2, 0, 6, 0)},
               {kSlash, Range(7, 512, 12)},
               {kSlash, Range(15, 0, 16)},
               {kOther, Range(1, 0, 20)},
               {kUserSlash, Range(8, 0, 9)}});
    EREGION region = Region(1, 1, 5, 8, 0, 4095);   // one EDU short of the end counts as the end
    EXPECT_TRUE(RemoveSlashStaffStyles(region, true));
    EXPECT_EQ(region.end.duraPos, kEnd);
    EXPECT_EQ(
        Assignments(doc(), 1),
        (std::vector<Assigned>{
            {1, 2, 0, 4, kEnd}, {1, 9, 0, 12, kEnd}, {1, 15, 0, 16, kEnd}, {3, 1, 0, 20, kEnd}, {2, 8, 0, 9, kEnd}}));
    EXPECT_FALSE(RemoveSlashStaffStyles(region, true));
    EXPECT_TRUE(RemoveSlashStaffStyles(region, false));
    EXPECT_EQ(Assignments(doc(), 1).back(), (Assigned{2, 9, 0, 9, kEnd}));
}

TEST_F(StaffStyles, SortingOrdersByStartOnly)
{
    StartWith({{kOther, Range(5, 0, 6)}, {kSlash, Range(1, 0, 2)}, {kUserSlash, Range(1, 512, 1)}});
    EXPECT_TRUE(SortStaffStyles(Region(1, 2, 1, 1)));
    EXPECT_EQ(Assignments(doc(), 1),
              (std::vector<Assigned>{{1, 1, 0, 2, kEnd}, {2, 1, 512, 1, kEnd}, {3, 5, 0, 6, kEnd}}));
    EXPECT_TRUE(Assignments(doc(), 2).empty());
    const EDTStaffStyleAssign a{0, 0, 0, 0, 0, 0, Range(3, 10, 3)};
    const EDTStaffStyleAssign b{5, 0, 0, 0, 0, 0, Range(3, 10, 9)};
    EXPECT_FALSE(EDTStaffStyleAssignLessThan(a, b) || EDTStaffStyleAssignLessThan(b, a));
}
