#include "stavio/dialogs/dialog_session.h"

#include "stavio/dialogs/dialog_text.h"

#include <algorithm>

namespace stavio {

namespace {

// Where a press on a scroll bar's arrow lands: the middle of its 15-pixel square.
constexpr int kArrowMiddle = toolbox::kScrollBarWidth / 2;

bool IsPressable(toolbox::DialogItemKind kind)
{
    return kind == toolbox::DialogItemKind::kButton || kind == toolbox::DialogItemKind::kRadio ||
           kind == toolbox::DialogItemKind::kCheckbox;
}

std::string ItemName(const toolbox::DialogItem& item)
{
    std::string name = "item " + std::to_string(item.Number());
    if (!item.Label().empty()) {
        name += " (\"" + item.Label() + "\")";
    }
    return name;
}

std::string RowText(const toolbox::ListControl& list, int row)
{
    const std::string* text = list.CellText(toolbox::Cell{row, 0});
    return text != nullptr ? *text : std::string();
}

std::vector<std::string> RowTexts(const toolbox::ListControl& list)
{
    std::vector<std::string> rows;
    for (int row = 0; row < list.Rows(); ++row) {
        rows.push_back(RowText(list, row));
    }
    return rows;
}

std::vector<std::string> EntryTexts(const toolbox::DialogItem& popup)
{
    std::vector<std::string> entries;
    for (int entry = 1; entry <= popup.MenuEntryCount(); ++entry) {
        entries.push_back(*popup.MenuEntryText(entry));
    }
    return entries;
}

std::string DescribeRows(const toolbox::ListControl& list)
{
    std::string rows;
    for (const std::string& row : RowTexts(list)) {
        rows += (rows.empty() ? "" : ", ") + row;
    }
    return rows.empty() ? "none" : rows;
}

toolbox::Status Failure(std::string why)
{
    return toolbox::Status::Failure(std::move(why));
}

}   // namespace

std::string DescribeEntries(const toolbox::DialogItem& popup)
{
    std::string entries;
    for (int entry = 1; entry <= popup.MenuEntryCount(); ++entry) {
        entries += (entry > 1 ? ", " : "") + std::to_string(entry) + " " + *popup.MenuEntryText(entry);
    }
    return entries.empty() ? "none" : entries;
}

DialogSession::DialogSession(toolbox::Dialog& dialog, SXDialogHandler handler, uint32_t* flags)
    : dialog_(dialog), handler_(handler), flags_(flags)
{}

bool DialogSession::Send(uint32_t message, intptr_t wParam, intptr_t lParam)
{
    if (finished_ || depth_ > 0 || handler_ == nullptr) {
        return false;
    }
    if (Ended() && message != kDlgMsgClose) {
        return false;
    }
    ++depth_;
    try {
        handler_(&dialog_, message, wParam, lParam, flags_);
    } catch (...) {
        Note("the dialog's program failed while handling a message");
    }
    --depth_;
    wasShown_ = wasShown_ || Shown();
    return true;
}

void DialogSession::Initialise()
{
    if (initialised_) {
        return;
    }
    initialised_ = true;
    Send(kDlgMsgInit, 0, 0);
}

void DialogSession::Paint()
{
    Send(kDlgMsgPaint, 0, 0);
}

toolbox::Status DialogSession::Sent(uint32_t message, intptr_t wParam, intptr_t lParam)
{
    if (Send(message, wParam, lParam)) {
        return toolbox::Status::Ok();
    }
    return CanAct() ? Failure("the dialog has no program to handle it") : CanAct();
}

toolbox::Status DialogSession::CanAct() const
{
    if (finished_ || Ended()) {
        return Failure("the dialog has ended");
    }
    if (Busy()) {
        return Failure("the dialog's program is busy");
    }
    if (!Shown()) {
        return Failure("the dialog is not shown");
    }
    return toolbox::Status::Ok();
}

toolbox::Result<const toolbox::DialogItem*> DialogSession::UsableItem(int16_t number) const
{
    toolbox::Status can = CanAct();
    if (!can) {
        return can;
    }
    const toolbox::DialogItem* item = dialog_.Item(number);
    if (item == nullptr) {
        return Failure("the dialog has no item " + std::to_string(number));
    }
    if (!item->IsVisible()) {
        return Failure(ItemName(*item) + " is hidden");
    }
    if (!item->IsEnabled()) {
        return Failure(ItemName(*item) + " is disabled");
    }
    return item;
}

toolbox::Status DialogSession::Press(int16_t number)
{
    const toolbox::Result<const toolbox::DialogItem*> item = UsableItem(number);
    if (!item) {
        return item.status();
    }
    if (!IsPressable((*item)->Kind())) {
        return Failure(ItemName(**item) + " is not a button, radio button or checkbox");
    }
    return Sent(kDlgMsgCommand, number, 0);
}

toolbox::Status DialogSession::Choose(int16_t number, int entry)
{
    const toolbox::Result<const toolbox::DialogItem*> item = UsableItem(number);
    if (!item) {
        return item.status();
    }
    const toolbox::DialogItem& popup = **item;
    if (popup.Kind() != toolbox::DialogItemKind::kPopup) {
        return Failure(ItemName(popup) + " is not a pop-up menu");
    }
    if (entry < 1 || entry > popup.MenuEntryCount() || entry < popup.Minimum() || entry > popup.Maximum()) {
        return Failure(ItemName(popup) + " has no entry " + std::to_string(entry) +
                       " (entries: " + DescribeEntries(popup) + ")");
    }
    dialog_.SetItemValue(number, entry);
    return Sent(kDlgMsgCommand, number, 0);
}

toolbox::Status DialogSession::ChooseNamed(int16_t number, const std::string& text)
{
    const toolbox::Result<const toolbox::DialogItem*> item = UsableItem(number);
    if (!item) {
        return item.status();
    }
    const int found = FindNamed(EntryTexts(**item), text);
    if (found < 0) {
        return Failure(ItemName(**item) + " has no entry \"" + text + "\" (entries: " + DescribeEntries(**item) + ")");
    }
    return Choose(number, found + 1);
}

toolbox::Status DialogSession::Click(toolbox::Point point, toolbox::Modifiers modifiers)
{
    toolbox::Status can = CanAct();
    if (!can) {
        return can;
    }
    if (!toolbox::PointInRect(point, dialog_.ContentRect())) {
        return Failure("the point (" + std::to_string(point.x) + ", " + std::to_string(point.y) +
                       ") lies outside the dialog");
    }
    return Sent(kDlgMsgMouseDown, point.x, toolbox::PackMouseDownWord(point.y, modifiers));
}

toolbox::Status DialogSession::ClickListRow(const toolbox::ListControl& list, int row, toolbox::Modifiers modifiers)
{
    if (row < 0 || row >= list.Rows()) {
        return Failure("the list has no row " + std::to_string(row + 1) + " (it has " + std::to_string(list.Rows()) +
                       ")");
    }
    const toolbox::DialogRect view = list.View();
    // A person scrolls with the arrows until the row shows; each press goes through the program.
    for (int attempt = 0; attempt <= list.Rows() + 1; ++attempt) {
        const toolbox::DialogRect cell = list.CellRect(toolbox::Cell{row, 0});
        const int middle = cell.top + list.CellHeight() / 2;
        if (middle >= view.top && middle < view.bottom) {
            const int x = view.left + std::min(4, std::max(0, toolbox::RectWidth(view) / 2));
            return Click(toolbox::Point{x, middle}, modifiers);
        }
        const std::optional<toolbox::DialogRect> bar = list.VerticalScrollBar();
        if (!bar) {
            return Failure("row " + std::to_string(row + 1) + " is out of view and the list has no scroll bar");
        }
        const bool up = middle < view.top;
        const toolbox::Point arrow{bar->left + kArrowMiddle,
                                   up ? bar->top + kArrowMiddle : bar->bottom - 1 - kArrowMiddle};
        const int topBefore = list.TopRow();
        toolbox::Status clicked = Click(arrow, toolbox::kNoModifiers);
        if (!clicked) {
            return clicked;
        }
        if (list.TopRow() == topBefore) {
            break;
        }
    }
    return Failure("the list did not scroll to row " + std::to_string(row + 1));
}

toolbox::Status DialogSession::ClickListRowNamed(const toolbox::ListControl& list, const std::string& text)
{
    const int found = FindNamed(RowTexts(list), text);
    if (found < 0) {
        return Failure("no row reads \"" + text + "\" (rows: " + DescribeRows(list) + ")");
    }
    return ClickListRow(list, found, toolbox::kNoModifiers);
}

bool DialogSession::CloseIfNeverShown()
{
    if (Shown()) {
        return false;
    }
    Note("the dialog's program did not show the dialog; it was closed");
    CloseBox();
    return true;
}

void DialogSession::CloseBox()
{
    if (!initialised_ || finished_ || Ended()) {
        return;
    }
    if (Busy()) {
        dialog_.End(0);
        return;
    }
    Send(kDlgMsgCloseRequest, 0, 0);
    const toolbox::DialogItem* cancel = dialog_.Item(kCancelItem);
    if (!Ended() && cancel != nullptr && cancel->Kind() == toolbox::DialogItemKind::kButton && cancel->IsEnabled() &&
        cancel->IsVisible()) {
        Send(kDlgMsgCommand, kCancelItem, 0);
    }
    if (!Ended()) {
        dialog_.End(0);
    }
}

void DialogSession::FireDueTimers(uint64_t nowMs)
{
    if (finished_ || Busy() || Ended()) {
        return;
    }
    for (int32_t id : dialog_.Timers().TakeDue(nowMs)) {
        if (Ended()) {
            break;
        }
        Send(kDlgMsgTimer, id, 0);
    }
}

bool DialogSession::LetTimePass()
{
    const std::optional<uint64_t> next = dialog_.Timers().NextDue();
    if (!next || finished_ || Busy() || Ended()) {
        return false;
    }
    FireDueTimers(std::max(*next, toolbox::NowMilliseconds()));
    return true;
}

const toolbox::ListControl* DialogSession::ListInItem(int16_t item) const
{
    toolbox::DialogRect rect;
    if (dialog_.ItemRect(item, rect) != toolbox::kNoErr) {
        return nullptr;
    }
    for (const auto& list : dialog_.Lists()) {
        if (toolbox::RectsOverlap(list->Bounds(), rect)) {
            return list.get();
        }
    }
    return nullptr;
}

void DialogSession::Finish()
{
    if (finished_) {
        return;
    }
    if (initialised_ && !Busy()) {
        Send(kDlgMsgClose, 0, 0);
    }
    finished_ = true;
}

}   // namespace stavio
