// List controls inside dialogs: painting a list with its frame, the update of a dialog with up
// to two lists, and handing a press in a dialog to its list.
#pragma once

#include "sdk/types.h"
#include "tamberlyne/ui/white_lists.h"

// What the click handler needs of the event that brought the press.
struct DialogEvent {
    toolbox::Modifiers modifiers = toolbox::kNoModifiers;
    uint64_t when = 0;   // toolbox clock
};

// The remembered results of the last click handed to a list: 1 when it was a double click,
// else 0; and the cell it hit (toolbox::kNoCell before the first).
extern int32_t gListDoubleClick;
extern toolbox::Cell gListLastClick;

// Frames the list (its view and scroll bars, grown by 1 horizontally and 2 vertically) in grey,
// sets the pen back to black and redraws the list over its port's visible region. The pen and
// the small system font are used for the drawing; the pen state is put back afterwards.
void QVPaintOneList(ListHandle list);

// The update of a dialog holding up to two lists (either may be null): redraws the dialog's
// items over the visible region, then each list. Always true.
bool QVMacPaintHandlerForDialogsWithList(EDLG dialog, ListHandle listA, ListHandle listB);

// Hands a press at `point` to `list` when it lands on dialog item `item` (the list's item).
// With `clearOnPlainClick`, a press without modifier keys inside the list's view first
// deselects every cell. Remembers the double-click flag and the last clicked cell. True when
// the list took the press; false (and nothing changes) for a null list or a press elsewhere.
bool QVMacLButtonDownHandlerForLists(EDLG dialog, ListHandle list, int16_t item, const DialogEvent& event,
                                     toolbox::Point point, bool clearOnPlainClick);
