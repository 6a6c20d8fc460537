#include "stavio/dialogs/dialog_session.h"

#include <algorithm>
#include <cctype>

namespace stavio {

namespace {

constexpr int16_t kCancelItem = 2;
// Where a press on a scroll bar's arrow lands: the middle of its 15-pixel square.
constexpr int kArrowMiddle = toolbox::kScrollBarWidth / 2;

bool IsPressable(toolbox::DialogItemKind kind)
{
    return kind == toolbox::DialogItemKind::kButton || kind == toolbox::DialogItemKind::kRadio ||
           kind == toolbox::DialogItemKind::kCheckbox;
}

std::string Lowered(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
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

std::string DescribeRows(const toolbox::ListControl& list)
{
    std::string rows;
    for (int row = 0; row < list.Rows(); ++row) {
        rows += (row > 0 ? ", " : "") + RowText(list, row);
    }
    return rows.empty() ? "none" : rows;
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

bool DialogSession::CanAct(std::string& why) const
{
    if (finished_ || Ended()) {
        why = "the dialog has ended";
    } else if (Busy()) {
        why = "the dialog's program is busy";
    } else if (!Shown()) {
        why = "the dialog is not shown";
    } else {
        return true;
    }
    return false;
}

const toolbox::DialogItem* DialogSession::UsableItem(int16_t number, std::string& why) const
{
    if (!CanAct(why)) {
        return nullptr;
    }
    const toolbox::DialogItem* item = dialog_.Item(number);
    if (item == nullptr) {
        why = "the dialog has no item " + std::to_string(number);
    } else if (!item->IsVisible()) {
        why = ItemName(*item) + " is hidden";
    } else if (!item->IsEnabled()) {
        why = ItemName(*item) + " is disabled";
    } else {
        return item;
    }
    return nullptr;
}

bool DialogSession::Press(int16_t number, std::string& why)
{
    const toolbox::DialogItem* item = UsableItem(number, why);
    if (item == nullptr) {
        return false;
    }
    if (!IsPressable(item->Kind())) {
        why = ItemName(*item) + " is not a button, radio button or checkbox";
        return false;
    }
    return Send(kDlgMsgCommand, number, 0);
}

bool DialogSession::Choose(int16_t number, int entry, std::string& why)
{
    const toolbox::DialogItem* item = UsableItem(number, why);
    if (item == nullptr) {
        return false;
    }
    if (item->Kind() != toolbox::DialogItemKind::kPopup) {
        why = ItemName(*item) + " is not a pop-up menu";
        return false;
    }
    if (entry < 1 || entry > item->MenuEntryCount() || entry < item->Minimum() || entry > item->Maximum()) {
        why = ItemName(*item) + " has no entry " + std::to_string(entry) + " (entries: " + DescribeEntries(*item) + ")";
        return false;
    }
    dialog_.SetItemValue(number, entry);
    return Send(kDlgMsgCommand, number, 0);
}

bool DialogSession::ChooseNamed(int16_t number, const std::string& text, std::string& why)
{
    const toolbox::DialogItem* item = UsableItem(number, why);
    if (item == nullptr) {
        return false;
    }
    int found = 0;
    int foundIgnoringCase = 0;
    int ignoringCaseCount = 0;
    for (int entry = 1; entry <= item->MenuEntryCount(); ++entry) {
        const std::string& entryText = *item->MenuEntryText(entry);
        if (entryText == text && found == 0) {
            found = entry;
        }
        if (Lowered(entryText) == Lowered(text)) {
            foundIgnoringCase = entry;
            ++ignoringCaseCount;
        }
    }
    if (found == 0 && ignoringCaseCount == 1) {
        found = foundIgnoringCase;
    }
    if (found == 0) {
        why = ItemName(*item) + " has no entry \"" + text + "\" (entries: " + DescribeEntries(*item) + ")";
        return false;
    }
    return Choose(number, found, why);
}

bool DialogSession::Click(toolbox::Point point, toolbox::Modifiers modifiers, std::string& why)
{
    if (!CanAct(why)) {
        return false;
    }
    if (!toolbox::PointInRect(point, dialog_.ContentRect())) {
        why = "the point (" + std::to_string(point.x) + ", " + std::to_string(point.y) + ") lies outside the dialog";
        return false;
    }
    return Send(kDlgMsgMouseDown, point.x, toolbox::PackMouseDownWord(point.y, modifiers));
}

bool DialogSession::ClickListRow(const toolbox::ListControl& list, int row, toolbox::Modifiers modifiers,
                                 std::string& why)
{
    if (row < 0 || row >= list.Rows()) {
        why = "the list has no row " + std::to_string(row + 1) + " (it has " + std::to_string(list.Rows()) + ")";
        return false;
    }
    const toolbox::DialogRect view = list.View();
    // A person scrolls with the arrows until the row shows; each press goes through the program.
    for (int attempt = 0; attempt <= list.Rows() + 1; ++attempt) {
        const toolbox::DialogRect cell = list.CellRect(toolbox::Cell{row, 0});
        const int middle = cell.top + list.CellHeight() / 2;
        if (middle >= view.top && middle < view.bottom) {
            const int x = view.left + std::min(4, std::max(0, toolbox::RectWidth(view) / 2));
            return Click(toolbox::Point{x, middle}, modifiers, why);
        }
        const std::optional<toolbox::DialogRect> bar = list.VerticalScrollBar();
        if (!bar) {
            why = "row " + std::to_string(row + 1) + " is out of view and the list has no scroll bar";
            return false;
        }
        const bool up = middle < view.top;
        const toolbox::Point arrow{bar->left + kArrowMiddle,
                                   up ? bar->top + kArrowMiddle : bar->bottom - 1 - kArrowMiddle};
        const int topBefore = list.TopRow();
        if (!Click(arrow, toolbox::kNoModifiers, why)) {
            return false;
        }
        if (list.TopRow() == topBefore) {
            why = "the list did not scroll to row " + std::to_string(row + 1);
            return false;
        }
    }
    why = "the list did not scroll to row " + std::to_string(row + 1);
    return false;
}

bool DialogSession::ClickListRowNamed(const toolbox::ListControl& list, const std::string& text, std::string& why)
{
    int found = -1;
    int foundIgnoringCase = -1;
    int ignoringCaseCount = 0;
    for (int row = 0; row < list.Rows(); ++row) {
        const std::string rowText = RowText(list, row);
        if (rowText == text && found < 0) {
            found = row;
        }
        if (Lowered(rowText) == Lowered(text)) {
            foundIgnoringCase = row;
            ++ignoringCaseCount;
        }
    }
    if (found < 0 && ignoringCaseCount == 1) {
        found = foundIgnoringCase;
    }
    if (found < 0) {
        why = "no row reads \"" + text + "\" (rows: " + DescribeRows(list) + ")";
        return false;
    }
    return ClickListRow(list, found, toolbox::kNoModifiers, why);
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
