// List controls: rows and cells, the selection rules of clicks, double clicks, scrolling and
// hit testing, and when a list draws.
#include "tests/support/test_support.h"
#include "toolbox/dialogs.h"

#include <array>

using namespace toolbox;
using support::Ints;
using Rows = std::vector<int>;

namespace {

// A one-column list of rows "row 0", "row 1" ... in a view 100 wide and 5 rows (80 px) high at
// (20, 40), with its vertical scroll bar from x = 120 to 135.
class ToolboxLists : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_NE(dialog_ = NewDialogFromLayout(DialogLayout{"Lists", 300, 300, {}}), nullptr); }
    void TearDown() override { DisposeAllDialogs(); }

    ListControl* MakeList(int rows, bool singleSelection, int columns = 1)
    {
        ListSpec spec;
        spec.view = DialogRect{20, 40, 120, 120};
        spec.columns = columns;
        spec.singleSelection = singleSelection;
        ListControl* list = nullptr;
        EXPECT_EQ(dialog_->NewList(spec, list), kNoErr);
        list->AddRows(rows, 0);
        for (int row = 0; row < rows; ++row)
            for (int column = 0; column < columns; ++column)
                list->SetCellText(Cell{row, column}, "row " + std::to_string(row));
        return list;
    }

    // The middle of a row as it is shown now.
    static Point RowPoint(const ListControl& list, int row)
    {
        const DialogRect rect = list.CellRect(Cell{row, 0});
        return Point{rect.left + 5, rect.top + 8};
    }

    static Rows SelectedRows(const ListControl& list)
    {
        Rows rows;
        for (Cell cell{0, 0}; list.FindSelectedCell(cell) && (rows.push_back(cell.row), cell.row + 1 < list.Rows());)
            ++cell.row;
        return rows;
    }

    Dialog* dialog_ = nullptr;
};

}   // namespace

TEST_F(ToolboxLists, RowsAreAddedAndDeletedAroundTheirCells)
{
    ListControl* list = MakeList(3, true);
    EXPECT_EQ(list->AddRows(2, 1), 1);    // before row 1
    EXPECT_EQ(list->AddRows(1, 99), 5);   // past the end: appended
    EXPECT_EQ(list->AddRows(-1, 0), -1);
    EXPECT_EQ(list->Rows(), 6);
    EXPECT_EQ(*list->CellText(Cell{0, 0}) + "|" + *list->CellText(Cell{1, 0}) + "|" + *list->CellText(Cell{3, 0}),
              "row 0||row 1");
    EXPECT_TRUE(list->CellText(Cell{6, 0}) == nullptr && list->CellText(Cell{0, 1}) == nullptr);
    EXPECT_EQ(list->SetCellText(Cell{-1, 0}, "x"), kParamErr);

    // As many as there are; past the end nothing; a count of 0 empties the list.
    for (const auto& [count, from, left] : std::vector<std::array<int, 3>>{{10, 4, 4}, {1, 4, 4}, {0, 3, 0}}) {
        list->DeleteRows(count, from);
        EXPECT_EQ(list->Rows(), left) << count << " from " << from;
    }

    ListControl* refused = nullptr;
    ListSpec noColumns;
    noColumns.columns = 0;
    EXPECT_EQ(dialog_->NewList(noColumns, refused), kParamErr);
    EXPECT_EQ(refused, nullptr);
}

TEST_F(ToolboxLists, NextCellWalksRowByRowFromTheFirstCell)
{
    ListControl* list = MakeList(2, false, 3);
    std::vector<std::pair<int, int>> visited;
    Cell cell{0, 0};
    do {
        visited.emplace_back(cell.row, cell.column);
    } while (list->NextCell(cell));
    EXPECT_EQ(visited, (std::vector<std::pair<int, int>>{{0, 0}, {0, 1}, {0, 2}, {1, 0}, {1, 1}, {1, 2}}));
    EXPECT_EQ(cell, (Cell{1, 2}));

    list->SetSelected(Cell{1, 1}, true);
    Cell from{0, 2};
    ASSERT_TRUE(list->FindSelectedCell(from));
    EXPECT_EQ(from, (Cell{1, 1}));
    EXPECT_TRUE(list->FindSelectedCell(from));   // at the cell itself
    from = Cell{1, 2};
    EXPECT_FALSE(list->FindSelectedCell(from));
    EXPECT_EQ(from, (Cell{1, 2}));
}

TEST_F(ToolboxLists, ClicksInASingleSelectionListSelectOneCellWhateverTheKeys)
{
    ListControl* list = MakeList(4, true);
    EXPECT_EQ(list->LastClick(), kNoCell);
    list->Click(RowPoint(*list, 1), kNoModifiers, 1000);
    list->Click(RowPoint(*list, 3), kShiftKey, 5000);
    EXPECT_EQ(SelectedRows(*list), Rows{3});
    list->Click(RowPoint(*list, 2), kCommandKey, 9000);
    EXPECT_EQ(SelectedRows(*list), Rows{2});
    EXPECT_EQ(list->LastClick(), (Cell{2, 0}));
    list->SetSelected(Cell{0, 0}, true);   // also when the program selects
    EXPECT_EQ(SelectedRows(*list), Rows{0});
}

// The dialog's click handler is tested over these rules too (tests/ui/dialog_lists_test.cpp);
// here the ones it does not reach: Shift fills the range, Command takes a cell out, a click below
// the last row.
TEST_F(ToolboxLists, ShiftFillsTheRangeCommandTogglesAndAClickBelowTheRowsDeselectsUnlessShifted)
{
    ListControl* list = MakeList(3, false);
    list->Click(RowPoint(*list, 0), kNoModifiers, 1000);
    list->Click(RowPoint(*list, 2), kShiftKey, 2000);
    EXPECT_EQ(SelectedRows(*list), (Rows{0, 1, 2}));
    list->Click(RowPoint(*list, 0), kCommandKey, 3000);
    EXPECT_EQ(SelectedRows(*list), (Rows{1, 2}));

    const Point empty{30, 110};
    ASSERT_FALSE(list->CellAt(empty));
    list->Click(empty, kShiftKey, 4000);
    EXPECT_EQ(SelectedRows(*list), (Rows{1, 2}));
    list->Click(empty, kNoModifiers, 5000);
    EXPECT_TRUE(SelectedRows(*list).empty());
    EXPECT_EQ(list->LastClick(), (Cell{0, 0})) << "a click on no cell is no cell's last click";
}

TEST_F(ToolboxLists, ASecondClickOnTheSameCellInTimeIsADoubleClick)
{
    SetDoubleClickInterval(400);
    ListControl* list = MakeList(4, true);
    // At the limit; a third starts over; too late; another cell; the clock went back.
    for (const auto& [row, when, doubled] : std::vector<std::array<int, 3>>{
             {1, 1000, 0}, {1, 1400, 1}, {1, 1500, 0}, {1, 1901, 0}, {2, 2000, 0}, {2, 1990, 0}, {2, 2100, 1}})
        EXPECT_EQ(list->Click(RowPoint(*list, row), kNoModifiers, uint64_t(when)), doubled != 0)
            << row << " at " << when;
    EXPECT_EQ(list->LastClick(), (Cell{2, 0}));

    // Rows moving under the cell break the pair.
    list->Click(RowPoint(*list, 3), kNoModifiers, 3000);
    list->AddRows(1, 0);
    EXPECT_FALSE(list->Click(RowPoint(*list, 3), kNoModifiers, 3100));
    SetDoubleClickInterval(500);
}

TEST_F(ToolboxLists, ScrollingMovesRowsUnderTheViewWithinLimits)
{
    ListControl* list = MakeList(12, true);
    EXPECT_EQ(list->VisibleRows(), 5);
    EXPECT_EQ(list->CellAt(Point{25, 40}), (Cell{0, 0}));
    EXPECT_EQ(list->CellAt(Point{25, 119}), (Cell{4, 0}));
    EXPECT_FALSE(list->CellAt(Point{120, 50}) || list->CellAt(Point{25, 39})) << "the scroll bar is no cell";

    list->Scroll(0, 3);
    EXPECT_EQ(list->TopRow(), 3);
    EXPECT_EQ(list->CellAt(Point{25, 40}), (Cell{3, 0}));
    EXPECT_EQ(list->CellRect(Cell{3, 0}), (DialogRect{20, 40, 120, 56}));
    EXPECT_EQ(list->CellRect(Cell{0, 0}), (DialogRect{20, -8, 120, 8}));
    list->Scroll(0, 100);
    EXPECT_EQ(list->TopRow(), 7);   // the last row at the bottom
    list->Scroll(5, -100);
    EXPECT_EQ(Ints(list->TopRow(), list->LeftColumn()), Ints(0, 0));

    // Deleting rows pulls the view back.
    list->Scroll(0, 7);
    list->DeleteRows(6, 6);
    EXPECT_EQ(Ints(list->TopRow(), list->VisibleRows()), Ints(1, 5));

    // A view that is not a whole number of rows high shows the last one in part.
    list->Resize(100, 70);
    EXPECT_EQ(list->View(), (DialogRect{20, 40, 120, 110}));
    EXPECT_EQ(Ints(list->TopRow(), list->VisibleRows()), Ints(1, 5));
    list->Scroll(0, 10);
    EXPECT_EQ(Ints(list->TopRow(), list->VisibleRows()), Ints(2, 4)) << "now four whole rows fill the view";
}

TEST_F(ToolboxLists, AutoScrollShowsTheFirstSelectedCellAndScrollBarsScroll)
{
    ListControl* list = MakeList(20, true);
    for (const auto& [row, top] :
         std::vector<std::pair<int, int>>{{9, 5}, {2, 2}, {2, 2}}) {   // row 9: just far enough
        list->SetSelected(Cell{row, 0}, true);
        list->AutoScroll();
        EXPECT_EQ(list->TopRow(), top) << row;
    }

    const DialogRect bar = *list->VerticalScrollBar();
    EXPECT_EQ(bar, (DialogRect{120, 40, 135, 120}));
    // The down arrow, the up arrow, below the thumb (a page down), above it (a page up).
    for (const auto& [y, top] : std::vector<std::pair<int, int>>{{115, 3}, {42, 2}, {100, 7}, {56, 2}}) {
        EXPECT_FALSE(list->Click(Point{125, y}, kNoModifiers, 0));
        EXPECT_EQ(list->TopRow(), top) << y;
    }
    EXPECT_EQ(SelectedRows(*list), Rows{2});
    EXPECT_FALSE(list->HorizontalScrollBar());
    EXPECT_EQ(list->Bounds(), (DialogRect{20, 40, 135, 120}));
}

TEST_F(ToolboxLists, DrawingOffDefersTheDrawingToTheNextUpdate)
{
    ListControl* list = MakeList(0, true);
    const int drawnBefore = list->DrawCount();
    list->SetDrawing(false);
    list->AddRows(3, 0);
    list->SetCellText(Cell{0, 0}, "Rock");
    list->SetSelected(Cell{0, 0}, true);
    EXPECT_EQ(Ints(list->DrawCount(), list->NeedsUpdate()), Ints(drawnBefore, true));
    list->Update(DialogRect{0, 0, 10, 10});   // elsewhere: nothing to draw
    EXPECT_TRUE(list->NeedsUpdate());
    list->Update(dialog_->ContentRect());
    EXPECT_EQ(Ints(list->DrawCount(), list->NeedsUpdate()), Ints(drawnBefore + 1, false));
    const auto& cells = list->LastDrawn().cells;
    ASSERT_EQ(cells.size(), 3u);
    EXPECT_TRUE(cells[0].text == "Rock" && cells[0].selected);
    EXPECT_EQ(cells[2].rect, (DialogRect{20, 72, 120, 88}));

    list->SetDrawing(true);
    list->Activate(false);
    EXPECT_EQ(Ints(list->DrawCount(), list->LastDrawn().active), Ints(drawnBefore + 2, false));
    list->Activate(false);   // no change, no drawing
    EXPECT_EQ(list->DrawCount(), drawnBefore + 2);

    dialog_->DisposeList(list);
    EXPECT_TRUE(!dialog_->OwnsList(list) && dialog_->Lists().empty());
}
