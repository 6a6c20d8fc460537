// List support inside dialogs: clicks handed to a list with and without modifier keys, clicks
// elsewhere, painting with a frame, and list operations that draw on white whatever the port's
// state.
#include "tamberlyne/ui/dialog_lists.h"
#include "tests/support/test_support.h"
#include "toolbox/dialogs.h"

#include <array>
#include <cstring>

using namespace toolbox;

namespace {

constexpr int16_t kListItem = 4;
constexpr RGBColor kThemeGrey{0xDDDD, 0xDDDD, 0xDDDD};

DialogItemSpec Item(int16_t number, DialogItemKind kind, DialogRect rect)
{
    DialogItemSpec item;
    item.number = number;
    item.kind = kind;
    item.rect = rect;
    return item;
}

class DialogLists : public ::testing::Test {
protected:
    void SetUp() override
    {
        DialogLayout layout;
        layout.width = 300;
        layout.height = 200;
        layout.items = {Item(kListItem, DialogItemKind::kUserItem, DialogRect{20, 20, 135, 120}),
                        Item(1, DialogItemKind::kButton, DialogRect{200, 160, 280, 180}),
                        Item(5, DialogItemKind::kUserItem, DialogRect{160, 20, 275, 120})};
        dialog_ = NewDialogFromLayout(layout);
        ASSERT_NE(dialog_, nullptr);
        ListSpec spec;
        spec.view = DialogRect{20, 20, 120, 120};   // the item less its scroll bar
        spec.singleSelection = false;
        ASSERT_EQ(dialog_->NewList(spec, list_), kNoErr);
        for (const char* row : {"Funk", "Rock", "Samba", "Waltz"}) {
            const int added = LAddRowWhite(1, list_->Rows(), list_);
            LSetCellWhite(row, static_cast<int>(std::strlen(row)), Cell{added, 0}, list_);
        }
        gListDoubleClick = 0;
        gListLastClick = kNoCell;
    }
    void TearDown() override { DisposeAllDialogs(); }

    Point RowPoint(int row) const { return Point{30, 20 + row * kDefaultCellHeight + 5}; }
    bool Click(int row, Modifiers modifiers, uint64_t when = 1000, bool clear = true)
    {
        return QVMacLButtonDownHandlerForLists(dialog_, list_, kListItem, DialogEvent{modifiers, when}, RowPoint(row),
                                               clear);
    }
    std::vector<int> Selected() const
    {
        std::vector<int> rows;
        for (int row = 0; row < list_->Rows(); ++row)
            if (list_->IsSelected(Cell{row, 0})) rows.push_back(row);
        return rows;
    }

    Dialog* dialog_ = nullptr;
    ListControl* list_ = nullptr;
};

}   // namespace

TEST_F(DialogLists, ModifierKeysAddToTheSelectionAndPlainClicksStartOver)
{
    EXPECT_TRUE(Click(0, kNoModifiers));
    EXPECT_TRUE(Click(2, kCommandKey, 3000));
    EXPECT_EQ(Selected(), (std::vector<int>{0, 2}));
    EXPECT_TRUE(Click(3, kShiftKey, 5000));
    EXPECT_EQ(Selected(), (std::vector<int>{0, 2, 3}));
    EXPECT_TRUE(Click(1, kNoModifiers, 7000));
    EXPECT_EQ(Selected(), (std::vector<int>{1}));
    EXPECT_EQ(gListLastClick, (Cell{1, 0}));
    EXPECT_EQ(gListDoubleClick, 0);
    // The same cell again within the double-click time, then another cell.
    for (const auto& [row, when, doubled] : {std::array<int, 3>{1, 7200, 1}, {2, 7300, 0}}) {
        EXPECT_TRUE(Click(row, kNoModifiers, uint64_t(when)));
        EXPECT_EQ(gListDoubleClick, doubled) << row;
    }
}

TEST_F(DialogLists, WithoutClearingAPlainClickInTheViewLeavesTheListToDecide)
{
    Click(0, kNoModifiers);
    Click(2, kCommandKey, 3000);
    // Below the last row: with clearing every cell goes; the list itself would keep a Shift
    // selection, and without clearing its own rule (a plain click there deselects) applies.
    EXPECT_TRUE(
        QVMacLButtonDownHandlerForLists(dialog_, list_, kListItem, DialogEvent{kShiftKey, 5000}, Point{30, 110}, true));
    EXPECT_EQ(Selected(), (std::vector<int>{0, 2}));
    EXPECT_TRUE(QVMacLButtonDownHandlerForLists(dialog_, list_, kListItem, DialogEvent{kNoModifiers, 6000},
                                                Point{30, 110}, false));
    EXPECT_TRUE(Selected().empty());
}

TEST_F(DialogLists, ClicksOutsideTheListsItemAreNotTheLists)
{
    Click(1, kNoModifiers);
    const int draws = list_->DrawCount();
    for (const Point point : {Point{170, 50}, Point{210, 170}, Point{5, 5}, Point{20, 19}}) {
        EXPECT_FALSE(QVMacLButtonDownHandlerForLists(dialog_, list_, kListItem, DialogEvent{}, point, true))
            << point.x << "," << point.y;
    }
    EXPECT_FALSE(QVMacLButtonDownHandlerForLists(dialog_, nullptr, kListItem, DialogEvent{}, RowPoint(0), true));
    EXPECT_FALSE(QVMacLButtonDownHandlerForLists(nullptr, list_, kListItem, DialogEvent{}, RowPoint(0), true));
    EXPECT_EQ(Selected(), (std::vector<int>{1}));
    EXPECT_EQ(gListLastClick, (Cell{1, 0}));
    EXPECT_EQ(list_->DrawCount(), draws);

    // A press on the scroll bar is the list's (inside its item), though not on a cell.
    EXPECT_TRUE(QVMacLButtonDownHandlerForLists(dialog_, list_, kListItem, DialogEvent{}, Point{125, 60}, true));
    EXPECT_EQ(Selected(), (std::vector<int>{1})) << "outside the view nothing is cleared";
}

TEST_F(DialogLists, ListOperationsDrawOnWhiteAndPutTheThemeBack)
{
    dialog_->Port().SetBackground(kThemeGrey);
    dialog_->Port().SetForeground(kThemeGrey);
    const DrawingState themed = dialog_->Port().State();
    dialog_->Port().ClearLog();
    EXPECT_TRUE(LSetSelectWhite(true, Cell{2, 0}, list_));
    EXPECT_FALSE(LSetSelectWhite(true, Cell{9, 0}, list_));
    LScrollWhite(0, 1, list_);
    EXPECT_TRUE(dialog_->Port().State() == themed);
    ASSERT_FALSE(dialog_->Port().Log().empty());
    for (const DrawOp& op : dialog_->Port().Log()) {
        EXPECT_EQ(op.kind, DrawKind::kListCells);
        EXPECT_TRUE(op.state.background == kWhite && op.state.foreground == kBlack);
    }

    // A list without a port cannot save a drawing state: nothing is done, and it is reported.
    ListSpec spec;
    spec.view = DialogRect{0, 0, 50, 50};
    ListControl orphan(spec, nullptr);
    const int failures = WhiteListAssertionFailures();
    EXPECT_EQ(LAddRowWhite(1, 0, &orphan), -1);
    EXPECT_EQ(support::Ints(orphan.Rows(), WhiteListAssertionFailures()), support::Ints(0, failures + 1));
    LDelRowWhite(0, 0, nullptr);   // null lists are ignored
}

TEST_F(DialogLists, PaintingFramesTheListInGreyAndRedrawsIt)
{
    dialog_->Port().SetPenSize(3, 3);
    dialog_->Port().ClearLog();
    EXPECT_TRUE(QVMacPaintHandlerForDialogsWithList(dialog_, list_, nullptr));
    const std::vector<DrawOp>& log = dialog_->Port().Log();
    ASSERT_EQ(log.size(), 3u);
    EXPECT_EQ(support::Ints(log[0].kind, log[1].kind, log[2].kind, log[1].state.themeFont),
              support::Ints(DrawKind::kDialogItems, DrawKind::kFrameRect, DrawKind::kListCells, kSmallSystemFont));
    EXPECT_EQ(log[1].rect, (DialogRect{19, 18, 136, 122})) << "view and scroll bar, grown by 1 and 2";
    EXPECT_EQ(log[1].state.foreground, (RGBColor{0x8000, 0x8000, 0x8000}));
    EXPECT_EQ(log[1].state.pen, (PenState{1, 1}));
    EXPECT_EQ(dialog_->Port().State().foreground, kBlack);
    EXPECT_EQ(dialog_->Port().GetPenState(), (PenState{3, 3}));
}
