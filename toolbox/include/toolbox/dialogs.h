// Dialogs: a model of a dialog window built from a dialog layout ('DLOG' resource), its items
// and their states, the list controls inside it, its drawing port and its timers.
//
// The model shows nothing itself. A front end shows it and turns a person's actions into
// messages for the program that runs the dialog (see toolbox/DIALOGS.md). The toolbox keeps
// every dialog it made until it is disposed of, so that a dialog can travel through other
// interfaces as an untyped pointer and be checked on its way back (LiveDialog, LiveControl).
// Everything runs on the user-interface thread; nothing throws.
#pragma once

#include "toolbox/drawing.h"
#include "toolbox/errors.h"
#include "toolbox/geometry.h"
#include "toolbox/lists.h"
#include "toolbox/resources.h"
#include "toolbox/status.h"
#include "toolbox/timers.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace toolbox {

class Dialog;

// One item of a dialog. Buttons, radio buttons, checkboxes and pop-up menus are controls: they
// have a value within a range. User items and static text have none (their value stays 0).
class DialogItem {
public:
    DialogItem(const DialogItemSpec& spec, Dialog* owner);

    int16_t Number() const { return number_; }
    DialogItemKind Kind() const { return kind_; }
    const DialogRect& Rect() const { return rect_; }
    const std::string& Label() const { return label_; }
    OSErr SetLabel(std::string_view label) noexcept;
    bool IsControl() const;
    Dialog* Owner() const { return owner_; }

    // The value stays within [Minimum, Maximum]: a value outside is taken to the nearer end, and a
    // changed range takes the value along. A minimum above the maximum raises the maximum to it;
    // a maximum below the minimum lowers the minimum to it. No effect on items that are not
    // controls. New buttons, radio buttons and checkboxes hold 0 in 0..1, pop-up menus 1 in 1..1.
    int32_t Value() const { return value_; }
    int32_t Minimum() const { return minimum_; }
    int32_t Maximum() const { return maximum_; }
    void SetValue(int32_t value);
    void SetMinimum(int32_t minimum);
    void SetMaximum(int32_t maximum);

    bool IsEnabled() const { return enabled_; }
    void SetEnabled(bool enabled) { enabled_ = enabled; }
    bool IsVisible() const { return visible_; }
    void SetVisible(bool visible) { visible_ = visible; }

    // The entries of a pop-up menu, numbered from 1; the value is the chosen entry. Appending
    // raises the maximum to the number of entries when it is lower. kItemNotControl for an item
    // that is not a pop-up menu, kMemFull when memory runs out.
    OSErr AppendMenuEntry(std::string_view text) noexcept;
    int MenuEntryCount() const { return static_cast<int>(menuEntries_.size()); }
    // Null for an entry that does not exist.
    const std::string* MenuEntryText(int entry) const;
    // Removes every entry; the range stays.
    void ClearMenu() { menuEntries_.clear(); }

private:
    int16_t number_ = 0;
    DialogItemKind kind_ = DialogItemKind::kUserItem;
    DialogRect rect_;
    std::string label_;
    int32_t value_ = 0;
    int32_t minimum_ = 0;
    int32_t maximum_ = 0;
    bool enabled_ = true;
    bool visible_ = true;
    std::vector<std::string> menuEntries_;
    Dialog* owner_ = nullptr;
};

class Dialog {
public:
    // Use NewDialog or NewDialogFromLayout: only dialogs made there are known to LiveDialog.
    Dialog(const DialogLayout& layout, int16_t layoutId);
    Dialog(const Dialog&) = delete;
    Dialog& operator=(const Dialog&) = delete;

    // ---- The window ----
    int16_t LayoutId() const { return layoutId_; }   // 0 when not made from a resource
    const std::string& Title() const { return title_; }
    // The content area (0, 0, width, height): the layout's size, else the items' extent.
    const DialogRect& ContentRect() const { return content_; }
    // A new dialog is hidden; the program shows it when it is ready.
    bool IsShown() const { return shown_; }
    void SetShown(bool shown) { shown_ = shown; }

    // Ending is final: the first result stays.
    void End(int32_t result);
    bool HasEnded() const { return ended_; }
    int32_t Result() const { return result_; }

    // A slot for the program's own use.
    void* UserData() const { return userData_; }
    void SetUserData(void* data) { userData_ = data; }

    // ---- Items ----
    // In the layout's order; a dialog's items never change in number or place.
    const std::vector<DialogItem>& Items() const { return items_; }
    DialogItem* Item(int16_t number);
    const DialogItem* Item(int16_t number) const;
    // The number of the first visible item (in layout order) whose rectangle holds the point,
    // 0 when there is none. Disabled items are found too.
    int16_t FindItem(Point point) const;
    // kParamErr for an item that does not exist.
    OSErr ItemRect(int16_t number, DialogRect& rect) const;
    // The item as a control: kParamErr (and null) for an item that does not exist,
    // kItemNotControl (and null) for a user item or static text.
    OSErr ItemAsControl(int16_t number, DialogItem*& control);

    // One call per host dialog service. Values: 0 for an item that does not exist or is not a
    // control. The setters answer kParamErr for an item that does not exist; setting the value
    // of an item that is not a control answers kItemNotControl.
    int32_t ItemValue(int16_t number) const;
    OSErr SetItemValue(int16_t number, int32_t value);
    OSErr EnableItem(int16_t number, bool enable);
    OSErr ShowItem(int16_t number, bool show);

    // ---- Lists ----
    // Makes a list that draws into this dialog's port and lives until DisposeList or the
    // dialog's end. kParamErr (and null) for a shape that IsValidListSpec refuses, kMemFull.
    OSErr NewList(const ListSpec& spec, ListControl*& list) noexcept;
    // Does nothing for null or a list of another dialog.
    void DisposeList(ListControl* list);
    bool OwnsList(const ListControl* list) const;
    // In the order they were made.
    const std::vector<std::unique_ptr<ListControl>>& Lists() const { return lists_; }

    // ---- Drawing ----
    DrawingPort& Port() { return port_; }
    const DrawingPort& Port() const { return port_; }
    // Draws the items within `region` (logged as one operation) and counts the redraw.
    void DrawItems(const DialogRect& region);
    int ItemsDrawCount() const { return itemsDrawCount_; }

    // ---- Timers ----
    TimerSet& Timers() { return timers_; }
    const TimerSet& Timers() const { return timers_; }

private:
    int16_t layoutId_ = 0;
    std::string title_;
    DialogRect content_;
    std::vector<DialogItem> items_;
    bool shown_ = false;
    bool ended_ = false;
    int32_t result_ = 0;
    void* userData_ = nullptr;
    std::vector<std::unique_ptr<ListControl>> lists_;
    DrawingPort port_;
    int itemsDrawCount_ = 0;
    TimerSet timers_;
};

// Makes a dialog from the 'DLOG' resource `layoutId`, found through the resource chain from the
// current file; dispose of it with DisposeDialog. A failure names the layout and what is wrong:
// kResourceNotFound when there is none, kBadResourceFile when its lines do not make a layout,
// kMemFull.
Result<Dialog*> NewDialog(int16_t layoutId);
// Makes a dialog from a layout at hand; null when memory runs out.
Dialog* NewDialogFromLayout(const DialogLayout& layout) noexcept;
// Disposes of the dialog, its lists and timers. Null and unknown pointers are ignored.
void DisposeDialog(Dialog* dialog);
// Disposes of every dialog (between tests, at the host's exit).
void DisposeAllDialogs();

// The dialog or control behind an untyped pointer, or null when it is not one the toolbox made
// and still keeps.
Dialog* LiveDialog(const void* handle);
DialogItem* LiveControl(const void* handle);
// The dialogs in the order they were made (none when memory runs out).
std::vector<Dialog*> LiveDialogs() noexcept;

}   // namespace toolbox
