// Where a list's cells are shown, scrolling, and what a press of the mouse button does.
#include "toolbox/lists.h"

#include <algorithm>

namespace toolbox {

namespace {

// How far the view may move: the first row (column) shown stays where the last one still fills
// the view.
int MaxFirst(int count, int fullyVisible)
{
    return std::max(0, count - fullyVisible);
}

// Ceiling of a / b for a >= 0, b > 0.
int CeilDiv(int a, int b)
{
    return (a + b - 1) / b;
}

// A scroll bar from `start` to `end` along its length: -1 (back), +1 (forward) or the page
// direction for a press at `position`. The arrows take kScrollBarWidth at each end; between them
// the thumb stands where `first` lies within 0..maxFirst, and a press pages towards itself.
struct BarPress {
    int step = 0;   // one row (column) back or forward
    int page = 0;   // one page back or forward
};

BarPress PressOnBar(int position, int start, int end, int first, int maxFirst)
{
    if (position < start + kScrollBarWidth) return BarPress{-1, 0};
    if (position >= end - kScrollBarWidth) return BarPress{1, 0};
    const int trackStart = start + kScrollBarWidth;
    const int trackLength = std::max(0, end - start - 2 * kScrollBarWidth);
    const long thumb = trackStart + (maxFirst > 0 ? static_cast<long>(trackLength) * first / maxFirst : 0);
    return BarPress{0, position < thumb ? -1 : 1};
}

}   // namespace

int ListControl::FullyVisibleRows() const
{
    return std::max(1, RectHeight(view_) / cellHeight_);
}

int ListControl::FullyVisibleColumns() const
{
    return std::max(1, RectWidth(view_) / cellWidth_);
}

int ListControl::VisibleRows() const
{
    return std::max(0, std::min(rows_ - topRow_, CeilDiv(RectHeight(view_), cellHeight_)));
}

void ListControl::ClampScroll()
{
    topRow_ = std::clamp(topRow_, 0, MaxFirst(rows_, FullyVisibleRows()));
    leftColumn_ = std::clamp(leftColumn_, 0, MaxFirst(columns_, FullyVisibleColumns()));
}

void ListControl::Scroll(int columns, int rows)
{
    const int oldTop = topRow_;
    const int oldLeft = leftColumn_;
    const long top = static_cast<long>(topRow_) + rows;
    const long left = static_cast<long>(leftColumn_) + columns;
    topRow_ = static_cast<int>(std::clamp<long>(top, 0, MaxFirst(rows_, FullyVisibleRows())));
    leftColumn_ = static_cast<int>(std::clamp<long>(left, 0, MaxFirst(columns_, FullyVisibleColumns())));
    if (topRow_ != oldTop || leftColumn_ != oldLeft) Changed();
}

void ListControl::AutoScroll()
{
    Cell selected{0, 0};
    if (!FindSelectedCell(selected)) return;
    int rows = 0;
    if (selected.row < topRow_)
        rows = selected.row - topRow_;
    else if (selected.row >= topRow_ + FullyVisibleRows())
        rows = selected.row - (topRow_ + FullyVisibleRows() - 1);
    int columns = 0;
    if (selected.column < leftColumn_)
        columns = selected.column - leftColumn_;
    else if (selected.column >= leftColumn_ + FullyVisibleColumns())
        columns = selected.column - (leftColumn_ + FullyVisibleColumns() - 1);
    Scroll(columns, rows);
}

DialogRect ListControl::CellRect(Cell cell) const
{
    const long left = view_.left + static_cast<long>(cell.column - leftColumn_) * cellWidth_;
    const long top = view_.top + static_cast<long>(cell.row - topRow_) * cellHeight_;
    return MakeRect(left, top, left + cellWidth_, top + cellHeight_);
}

std::optional<Cell> ListControl::CellAt(Point point) const
{
    if (!PointInRect(point, view_)) return std::nullopt;
    const Cell cell{topRow_ + (point.y - view_.top) / cellHeight_, leftColumn_ + (point.x - view_.left) / cellWidth_};
    if (!IsCell(cell)) return std::nullopt;
    return cell;
}

bool ListControl::Click(Point point, Modifiers modifiers, uint64_t timeMs)
{
    if (const std::optional<Cell> cell = CellAt(point)) {
        ClickCell(*cell, modifiers);
        const bool doubleClick = lastClickTime_ && lastClick_ == *cell && timeMs >= *lastClickTime_ &&
                                 timeMs - *lastClickTime_ <= DoubleClickInterval();
        lastClick_ = *cell;
        if (doubleClick)
            ForgetClickTiming();
        else
            lastClickTime_ = timeMs;
        return doubleClick;
    }
    if (PointInRect(point, view_)) {
        if ((modifiers & (kShiftKey | kCommandKey)) == 0) DeselectAll();
        ForgetClickTiming();
        return false;
    }
    const std::optional<DialogRect> vertical = VerticalScrollBar();
    const std::optional<DialogRect> horizontal = HorizontalScrollBar();
    if ((vertical && PointInRect(point, *vertical)) || (horizontal && PointInRect(point, *horizontal))) {
        ClickScrollBar(point);
        ForgetClickTiming();
    }
    return false;
}

void ListControl::ClickCell(Cell cell, Modifiers modifiers)
{
    const bool shift = (modifiers & kShiftKey) != 0;
    const bool command = (modifiers & kCommandKey) != 0;
    if (singleSelection_ || (!shift && !command)) {
        for (CellData& data : cells_) data.selected = false;
        cells_[IndexOf(cell)].selected = true;
        anchor_ = cell;
    } else if (shift && IsCell(anchor_)) {
        SelectRange(anchor_, cell);
    } else if (shift) {
        cells_[IndexOf(cell)].selected = true;
        anchor_ = cell;
    } else {
        cells_[IndexOf(cell)].selected = !cells_[IndexOf(cell)].selected;
        anchor_ = cell;
    }
    Changed();
}

void ListControl::ClickScrollBar(Point point)
{
    const std::optional<DialogRect> vertical = VerticalScrollBar();
    if (vertical && PointInRect(point, *vertical)) {
        const BarPress press =
            PressOnBar(point.y, vertical->top, vertical->bottom, topRow_, MaxFirst(rows_, FullyVisibleRows()));
        Scroll(0, press.step + press.page * FullyVisibleRows());
        return;
    }
    const std::optional<DialogRect> horizontal = HorizontalScrollBar();
    if (horizontal && PointInRect(point, *horizontal)) {
        const BarPress press = PressOnBar(point.x, horizontal->left, horizontal->right, leftColumn_,
                                          MaxFirst(columns_, FullyVisibleColumns()));
        Scroll(press.step + press.page * FullyVisibleColumns(), 0);
    }
}

}   // namespace toolbox
