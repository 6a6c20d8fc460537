// List controls: a grid of text cells shown in a rectangle of a dialog, scrolled a row (or a
// column) at a time, with a selection that clicks change.
//
// Cells are addressed by row and column, both from 0. A list draws itself into its dialog's port
// when something visible changes while drawing is on; with drawing off it only notes that it
// needs an update, and Update draws it.
#pragma once

#include "toolbox/drawing.h"
#include "toolbox/errors.h"
#include "toolbox/events.h"
#include "toolbox/geometry.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace toolbox {

struct Cell {
    int row = 0;
    int column = 0;
};

inline bool operator==(const Cell& a, const Cell& b)
{
    return a.row == b.row && a.column == b.column;
}
inline bool operator!=(const Cell& a, const Cell& b)
{
    return !(a == b);
}

// What LastClick answers before the first click.
constexpr Cell kNoCell{-1, -1};

// The width of a scroll bar beside or below a list's view.
constexpr int kScrollBarWidth = 15;
// The row height of a list that does not give one.
constexpr int kDefaultCellHeight = 16;

struct ListSpec {
    DialogRect view;   // where the cells are shown, without the scroll bars
    int columns = 1;   // at least 1
    int rows = 0;
    int cellWidth = 0;                  // 0: the view's width shared by the columns
    int cellHeight = 0;                 // 0: kDefaultCellHeight
    bool verticalScrollBar = true;      // a bar right of the view, kScrollBarWidth wide
    bool horizontalScrollBar = false;   // a bar below the view
    bool singleSelection = false;       // at most one cell is ever selected
    bool drawing = true;
};

struct DrawnCell {
    Cell cell;
    DialogRect rect;
    std::string text;
    bool selected = false;
};

// What a list shows: the cells that lie at least partly in its view.
struct ListPicture {
    DialogRect view;
    int topRow = 0;
    int leftColumn = 0;
    bool active = true;
    std::vector<DrawnCell> cells;   // row by row
};

class ListControl {
public:
    // `port` (may be null) is where the list draws. Check the shape with IsValidListSpec first:
    // one that it refuses makes an empty one-column list.
    ListControl(const ListSpec& spec, DrawingPort* port);

    static bool IsValidListSpec(const ListSpec& spec);

    // ---- Shape ----
    const DialogRect& View() const { return view_; }
    int Rows() const { return rows_; }
    int Columns() const { return columns_; }
    int CellWidth() const { return cellWidth_; }
    int CellHeight() const { return cellHeight_; }
    bool IsSingleSelection() const { return singleSelection_; }
    std::optional<DialogRect> VerticalScrollBar() const;
    std::optional<DialogRect> HorizontalScrollBar() const;
    // The view with its scroll bars.
    DialogRect Bounds() const;

    // Inserts `count` empty rows before `beforeRow` (at the end when it lies past the last row)
    // and answers the number of the first new row; -1 when `count` is negative or memory runs
    // out (then nothing changes).
    int AddRows(int count, int beforeRow);
    // Deletes `count` rows from `fromRow` on (fewer when the list ends sooner); a count of 0
    // deletes every row.
    void DeleteRows(int count, int fromRow);

    // ---- Cells ----
    bool IsCell(Cell cell) const;
    // kParamErr for a cell outside the list, kMemFull when memory runs out.
    OSErr SetCellText(Cell cell, std::string_view text);
    // Null for a cell outside the list. Valid until the list changes.
    const std::string* CellText(Cell cell) const;

    // ---- Selection ----
    // Selects or deselects one cell; false for a cell outside the list. Selecting a cell of a
    // single-selection list deselects the others.
    bool SetSelected(Cell cell, bool selected);
    bool IsSelected(Cell cell) const;
    void DeselectAll();
    // The next cell after `cell`, row by row (along a row, then down): from (0, 0) it visits
    // every cell. False, and `cell` unchanged, after the last cell.
    bool NextCell(Cell& cell) const;
    // The first selected cell at `cell` or after it in the same order; false when there is none.
    bool FindSelectedCell(Cell& cell) const;

    // A press of the mouse button at `point` at `timeMs` (NowMilliseconds or a test's clock).
    // On a cell: a single-selection list selects just that cell; in a multi-selection list
    // Command toggles the cell and keeps the rest, Shift selects the rectangle of cells from the
    // last plainly clicked (or Command-clicked) cell to this one and keeps the rest, and a click
    // without either selects just that cell. In the view below the last row: deselects every
    // cell unless Shift or Command is held. On a scroll bar: its arrows scroll one row (column),
    // the rest of it a page towards the press. Anywhere else: nothing happens.
    // Answers true when the press is a double click: a second press on the same cell within
    // DoubleClickInterval of the first (a third press starts over).
    bool Click(Point point, Modifiers modifiers, uint64_t timeMs);
    // The cell of the last press on a cell; kNoCell before the first.
    Cell LastClick() const { return lastClick_; }

    // ---- Scrolling and hit testing ----
    int TopRow() const { return topRow_; }
    int LeftColumn() const { return leftColumn_; }
    // Rows at least partly in the view, counting from TopRow, at most as many as remain.
    int VisibleRows() const;
    // Moves the view by whole columns and rows (positive: towards the end), no further than
    // needed to show the last row or column.
    void Scroll(int columns, int rows);
    // Scrolls as little as needed to show the first selected cell; nothing without a selection.
    void AutoScroll();
    // The rectangle where the cell is shown now (it may lie outside the view).
    DialogRect CellRect(Cell cell) const;
    // The cell shown at `point`; nothing outside the view or past the last row or column.
    std::optional<Cell> CellAt(Point point) const;

    // ---- Activation, size, drawing ----
    void Activate(bool active);
    bool IsActive() const { return active_; }
    // Gives the view a new size; its top left corner stays.
    void Resize(int width, int height);
    void SetDrawing(bool drawing);
    bool IsDrawing() const { return drawing_; }
    // Draws the list within `region` (drawing on or off) and notes it as up to date.
    void Update(const DialogRect& region);
    bool NeedsUpdate() const { return needsUpdate_; }
    // How often the list has drawn itself, and what it showed the last time.
    int DrawCount() const { return drawCount_; }
    const ListPicture& LastDrawn() const { return lastDrawn_; }
    // What the list would show now.
    ListPicture Picture() const;
    DrawingPort* Port() const { return port_; }

private:
    struct CellData {
        std::string text;
        bool selected = false;
    };

    // The cells lie row by row in cells_; coordinates and counts stay int, as the list calls give them.
    size_t RowLength() const { return static_cast<size_t>(columns_); }
    size_t IndexOf(Cell cell) const
    {
        return static_cast<size_t>(cell.row) * RowLength() + static_cast<size_t>(cell.column);
    }
    int FullyVisibleRows() const;
    int FullyVisibleColumns() const;
    void ClampScroll();
    void ClickCell(Cell cell, Modifiers modifiers);
    void ClickScrollBar(Point point);
    void SelectRange(Cell from, Cell to);
    void Draw(const DialogRect& region) noexcept;
    void Changed();
    void ForgetClickTiming() { lastClickTime_.reset(); }

    DialogRect view_;
    int columns_ = 1;
    int rows_ = 0;
    int cellWidth_ = 0;
    int cellHeight_ = kDefaultCellHeight;
    bool verticalScrollBar_ = true;
    bool horizontalScrollBar_ = false;
    bool singleSelection_ = false;
    bool drawing_ = true;
    bool active_ = true;
    bool needsUpdate_ = true;
    std::vector<CellData> cells_;   // row by row
    int topRow_ = 0;
    int leftColumn_ = 0;
    Cell lastClick_ = kNoCell;
    Cell anchor_ = kNoCell;
    std::optional<uint64_t> lastClickTime_;
    int drawCount_ = 0;
    ListPicture lastDrawn_;
    DrawingPort* port_ = nullptr;
};

}   // namespace toolbox
