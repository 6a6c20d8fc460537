// A dialog port's drawing state and log, and dialog timers. (The list painter's use of them is
// tested through the painter itself, in tests/ui/dialog_lists_test.cpp.)
#include "tests/support/test_support.h"
#include "toolbox/dialogs.h"

using namespace toolbox;
using support::Ints;

namespace {

constexpr RGBColor kGrey{0x8000, 0x8000, 0x8000};

class ToolboxDrawing : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_NE(dialog_ = NewDialogFromLayout(DialogLayout{"Paint", 200, 150, {}}), nullptr); }
    void TearDown() override { DisposeAllDialogs(); }

    Dialog* dialog_ = nullptr;
};

}   // namespace

TEST_F(ToolboxDrawing, StateIsSavedNormalisedAndRestored)
{
    DrawingPort& port = dialog_->Port();
    EXPECT_EQ(port.State(), DrawingState{});
    port.SetBackground(kGrey);
    port.SetForeground(RGBColor{1, 2, 3});
    port.SetPenSize(3, 4);
    port.UseThemeFont(kSmallSystemFont, kSystemScript);
    const DrawingState themed = port.SaveState();

    port.Normalize();
    EXPECT_EQ(port.State().background, kWhite);
    EXPECT_EQ(port.State().foreground, kBlack);
    EXPECT_EQ(port.GetPenState(), (PenState{1, 1}));
    EXPECT_EQ(port.State().themeFont, kSmallSystemFont);   // the font stays

    port.RestoreState(themed);
    EXPECT_EQ(port.State(), themed);
    EXPECT_EQ(port.GetPenState(), (PenState{3, 4}));
}

TEST_F(ToolboxDrawing, TheLogKeepsTheNewestOperations)
{
    DrawingPort& port = dialog_->Port();
    for (size_t i = 0; i <= DrawingPort::kLogLimit; ++i) port.FrameRect(MakeRect(0, 0, static_cast<long>(i), 1));
    EXPECT_EQ(port.Log().size(), DrawingPort::kLogLimit / 2 + 1);
    EXPECT_EQ(port.Log().back().rect.right, static_cast<int16_t>(DrawingPort::kLogLimit));

    dialog_->DrawItems(DialogRect{300, 300, 400, 400});   // outside the content area: no items drawn
    EXPECT_EQ(dialog_->ItemsDrawCount(), 0);
    dialog_->DrawItems(port.VisibleRegion());
    EXPECT_EQ(Ints(dialog_->ItemsDrawCount(), port.Log().back().kind), Ints(1, DrawKind::kDialogItems));
}

TEST(ToolboxGeometry, InsetClampAndIntersect)
{
    EXPECT_EQ(InsetRect(DialogRect{10, 10, 20, 30}, 2, 3), (DialogRect{12, 13, 18, 27}));
    EXPECT_EQ(InsetRect(DialogRect{10, 10, 20, 30}, 8, 0), (DialogRect{15, 10, 15, 30}));
    EXPECT_EQ(InsetRect(DialogRect{-32768, 0, 32767, 5}, -1, 0), (DialogRect{-32768, 0, 32767, 5}));
    EXPECT_EQ(IntersectRects(DialogRect{0, 0, 10, 10}, DialogRect{5, 5, 20, 20}), (DialogRect{5, 5, 10, 10}));
    EXPECT_FALSE(RectsOverlap(DialogRect{0, 0, 10, 10}, DialogRect{10, 0, 20, 10}));
    EXPECT_TRUE(PointInRect(Point{0, 0}, DialogRect{0, 0, 1, 1}));
    EXPECT_FALSE(PointInRect(Point{1, 0}, DialogRect{0, 0, 1, 1}));
}

TEST(ToolboxTimers, FireWhenDueAndRearmFromTheTimeAsked)
{
    using Ids = std::vector<int32_t>;
    TimerSet timers;
    EXPECT_EQ(timers.NextDue(), std::nullopt);
    EXPECT_EQ(timers.Start(1, 100, 1000), kNoErr);
    EXPECT_EQ(timers.Start(2, 30, 1050), kNoErr);
    EXPECT_EQ(timers.Start(3, -1, 1000), kParamErr);
    EXPECT_EQ(timers.NextDue(), 1080u);

    EXPECT_TRUE(timers.TakeDue(1079).empty());
    EXPECT_EQ(timers.TakeDue(1080), Ids{2});
    EXPECT_EQ(timers.TakeDue(1100), Ids{1});
    // Late: each fires once, earliest first, and is next due a period after now.
    EXPECT_EQ(timers.TakeDue(1500), (Ids{2, 1}));
    EXPECT_EQ(timers.NextDue(), 1530u);

    // Starting a running timer restarts it.
    EXPECT_EQ(timers.Start(1, 10, 1500), kNoErr);
    ASSERT_EQ(timers.Running().size(), 2u);
    EXPECT_EQ(timers.Running()[0].periodMs, 10);
    EXPECT_EQ(timers.NextDue(), 1510u);

    EXPECT_EQ(timers.Kill(1), kNoErr);
    EXPECT_EQ(timers.Kill(1), kParamErr);
    EXPECT_EQ(Ints(timers.IsRunning(1), timers.IsRunning(2)), Ints(false, true));
    EXPECT_TRUE(timers.TakeDue(1520).empty());
}

TEST(ToolboxTimers, EachDialogHasItsOwnTimers)
{
    Dialog* first = NewDialogFromLayout(DialogLayout{});
    Dialog* second = NewDialogFromLayout(DialogLayout{});
    ASSERT_TRUE(first != nullptr && second != nullptr);
    ASSERT_EQ(first->Timers().Start(1, 100, 0), kNoErr);
    EXPECT_TRUE(second->Timers().TakeDue(1000).empty());
    EXPECT_EQ(first->Timers().TakeDue(100), std::vector<int32_t>{1});
    DisposeAllDialogs();

    const uint64_t earlier = NowMilliseconds();
    EXPECT_LE(earlier, NowMilliseconds());
}
