// A list control's cells, rows and selection, and how it draws itself.
#include "toolbox/lists.h"

#include <algorithm>
#include <climits>

namespace toolbox {

bool ListControl::IsValidListSpec(const ListSpec& spec)
{
    return spec.columns >= 1 && spec.rows >= 0 && spec.cellWidth >= 0 && spec.cellHeight >= 0 &&
           spec.view.right >= spec.view.left && spec.view.bottom >= spec.view.top &&
           static_cast<long long>(spec.rows) * spec.columns <= INT_MAX;
}

ListControl::ListControl(const ListSpec& given, DrawingPort* port) : port_(port)
{
    ListSpec spec = given;
    if (!IsValidListSpec(spec)) {
        spec.columns = 1;
        spec.rows = 0;
        spec.cellWidth = 0;
        spec.cellHeight = 0;
        spec.view.right = std::max(spec.view.left, spec.view.right);
        spec.view.bottom = std::max(spec.view.top, spec.view.bottom);
    }
    view_ = spec.view;
    columns_ = spec.columns;
    rows_ = spec.rows;
    cellWidth_ = spec.cellWidth > 0 ? spec.cellWidth : std::max(1, RectWidth(view_) / columns_);
    cellHeight_ = spec.cellHeight > 0 ? spec.cellHeight : kDefaultCellHeight;
    verticalScrollBar_ = spec.verticalScrollBar;
    horizontalScrollBar_ = spec.horizontalScrollBar;
    singleSelection_ = spec.singleSelection;
    drawing_ = spec.drawing;
    cells_.resize(static_cast<size_t>(rows_) * RowLength());
    lastDrawn_.view = view_;
}

std::optional<DialogRect> ListControl::VerticalScrollBar() const
{
    if (!verticalScrollBar_) return std::nullopt;
    return MakeRect(view_.right, view_.top, static_cast<long>(view_.right) + kScrollBarWidth, view_.bottom);
}

std::optional<DialogRect> ListControl::HorizontalScrollBar() const
{
    if (!horizontalScrollBar_) return std::nullopt;
    return MakeRect(view_.left, view_.bottom, view_.right, static_cast<long>(view_.bottom) + kScrollBarWidth);
}

DialogRect ListControl::Bounds() const
{
    return MakeRect(view_.left, view_.top, static_cast<long>(view_.right) + (verticalScrollBar_ ? kScrollBarWidth : 0),
                    static_cast<long>(view_.bottom) + (horizontalScrollBar_ ? kScrollBarWidth : 0));
}

int ListControl::AddRows(int count, int beforeRow)
{
    if (count < 0 || count > INT_MAX - rows_ ||
        static_cast<long long>(rows_ + count) * columns_ > static_cast<long long>(INT_MAX))
        return -1;
    const int at = std::clamp(beforeRow, 0, rows_);
    if (count == 0) return at;
    try {
        cells_.insert(cells_.begin() + static_cast<std::ptrdiff_t>(IndexOf(Cell{at, 0})),
                      static_cast<size_t>(count) * RowLength(), CellData{});
    } catch (...) {
        return -1;
    }
    rows_ += count;
    // The rows moved under the remembered cells: a click now starts over.
    anchor_ = kNoCell;
    ForgetClickTiming();
    Changed();
    return at;
}

void ListControl::DeleteRows(int count, int fromRow)
{
    int first = fromRow;
    int removed = count;
    if (count == 0) {
        first = 0;
        removed = rows_;
    } else if (count < 0 || fromRow < 0 || fromRow >= rows_) {
        return;
    }
    removed = std::min(removed, rows_ - first);
    if (removed == 0) return;
    const auto begin = cells_.begin() + static_cast<std::ptrdiff_t>(IndexOf(Cell{first, 0}));
    cells_.erase(begin, begin + static_cast<std::ptrdiff_t>(static_cast<size_t>(removed) * RowLength()));
    rows_ -= removed;
    anchor_ = kNoCell;
    ForgetClickTiming();
    ClampScroll();
    Changed();
}

bool ListControl::IsCell(Cell cell) const
{
    return cell.row >= 0 && cell.row < rows_ && cell.column >= 0 && cell.column < columns_;
}

OSErr ListControl::SetCellText(Cell cell, std::string_view text)
{
    if (!IsCell(cell)) return kParamErr;
    try {
        cells_[IndexOf(cell)].text.assign(text);
    } catch (...) {
        return kMemFull;
    }
    Changed();
    return kNoErr;
}

const std::string* ListControl::CellText(Cell cell) const
{
    return IsCell(cell) ? &cells_[IndexOf(cell)].text : nullptr;
}

bool ListControl::SetSelected(Cell cell, bool selected)
{
    if (!IsCell(cell)) return false;
    bool changed = false;
    if (selected && singleSelection_) {
        for (size_t i = 0; i < cells_.size(); ++i) {
            if (i != IndexOf(cell) && cells_[i].selected) {
                cells_[i].selected = false;
                changed = true;
            }
        }
    }
    CellData& data = cells_[IndexOf(cell)];
    if (data.selected != selected) {
        data.selected = selected;
        changed = true;
    }
    if (changed) Changed();
    return true;
}

bool ListControl::IsSelected(Cell cell) const
{
    return IsCell(cell) && cells_[IndexOf(cell)].selected;
}

void ListControl::DeselectAll()
{
    bool changed = false;
    for (CellData& data : cells_) {
        changed = changed || data.selected;
        data.selected = false;
    }
    if (changed) Changed();
}

bool ListControl::NextCell(Cell& cell) const
{
    if (!IsCell(cell)) return false;
    if (cell.column + 1 < columns_) {
        ++cell.column;
        return true;
    }
    if (cell.row + 1 < rows_) {
        cell = Cell{cell.row + 1, 0};
        return true;
    }
    return false;
}

bool ListControl::FindSelectedCell(Cell& cell) const
{
    if (!IsCell(cell)) return false;
    for (size_t i = IndexOf(cell); i < cells_.size(); ++i) {
        if (cells_[i].selected) {
            cell = Cell{static_cast<int>(i / RowLength()), static_cast<int>(i % RowLength())};
            return true;
        }
    }
    return false;
}

void ListControl::SelectRange(Cell from, Cell to)
{
    for (int row = std::min(from.row, to.row); row <= std::max(from.row, to.row); ++row) {
        for (int column = std::min(from.column, to.column); column <= std::max(from.column, to.column); ++column)
            cells_[IndexOf(Cell{row, column})].selected = true;
    }
}

void ListControl::Activate(bool active)
{
    if (active_ == active) return;
    active_ = active;
    Changed();
}

void ListControl::Resize(int width, int height)
{
    view_ = MakeRect(view_.left, view_.top, static_cast<long>(view_.left) + std::max(0, width),
                     static_cast<long>(view_.top) + std::max(0, height));
    ClampScroll();
    Changed();
}

void ListControl::SetDrawing(bool drawing)
{
    drawing_ = drawing;
}

void ListControl::Update(const DialogRect& region)
{
    const DialogRect drawn = IntersectRects(Bounds(), region);
    if (!IsEmptyRect(drawn)) Draw(drawn);
}

ListPicture ListControl::Picture() const
{
    ListPicture picture;
    picture.view = view_;
    picture.topRow = topRow_;
    picture.leftColumn = leftColumn_;
    picture.active = active_;
    const int lastRow = topRow_ + VisibleRows();
    for (int row = topRow_; row < lastRow; ++row) {
        for (int column = leftColumn_; column < columns_; ++column) {
            const Cell cell{row, column};
            const DialogRect rect = CellRect(cell);
            if (rect.left >= view_.right) break;
            const CellData& data = cells_[IndexOf(cell)];
            picture.cells.push_back(DrawnCell{cell, rect, data.text, data.selected});
        }
    }
    return picture;
}

void ListControl::Draw(const DialogRect& region) noexcept
{
    try {
        lastDrawn_ = Picture();
    } catch (...) {
        // Memory ran out: the last picture stays as it was; the drawing itself still counts.
    }
    if (port_ != nullptr) port_->Record(DrawKind::kListCells, region);
    ++drawCount_;
    needsUpdate_ = false;
}

void ListControl::Changed()
{
    if (drawing_)
        Draw(Bounds());
    else
        needsUpdate_ = true;
}

}   // namespace toolbox
