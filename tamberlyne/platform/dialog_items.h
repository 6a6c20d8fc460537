// The platform's dialog services as the plug-in sees them: the dialog model behind a host
// dialog, its items' places, showing and hiding items, their controls and pop-up menus. The
// host's own dialog calls go through the gateway; these are what the plug-in does itself, and
// what the gateway falls back on when a host is too old to do it for the plug-in.
#pragma once

#include "sdk/types.h"
#include "toolbox/dialogs.h"
#include "toolbox/errors.h"

#include <string_view>

// The dialog model behind a host dialog; null when it is not a dialog the toolbox still keeps.
toolbox::Dialog* DialogModel(EDLG dialog);

void ShowDialogItem(EDLG dialog, int32_t item);
void HideDialogItem(EDLG dialog, int32_t item);

// The control of a dialog item. kItemNotControl (and a null control) when the item has none,
// kParamErr (and null) when the dialog or the item does not exist.
toolbox::OSErr GetDialogItemAsControl(EDLG dialog, int32_t item, ECONTROL* control);

// The item's rectangle; false when the dialog or the item does not exist.
bool GetDialogItemRect(EDLG dialog, int32_t item, toolbox::DialogRect& rect);

// Shows the dialog's window (a new dialog stays hidden until its program is ready).
void ShowDialogWindow(EDLG dialog);

// Pop-up menus behind a control: append an entry, set the range of values. Nothing happens for
// a control that is not a pop-up menu the toolbox still keeps.
void AppendPopupEntry(ECONTROL control, std::string_view text);
void SetControlRange(ECONTROL control, int32_t minimum, int32_t maximum);
