// Dialog items through the platform's own dialog services, for hosts too old to do it for the
// plug-in.
#pragma once

#include "sdk/types.h"
#include "toolbox/errors.h"

void ShowDialogItem(EDLG dialog, int32_t item);
void HideDialogItem(EDLG dialog, int32_t item);

// The control of a dialog item. kItemNotControl (and a null control) when the item has none.
toolbox::OSErr GetDialogItemAsControl(EDLG dialog, int32_t item, ECONTROL* control);
