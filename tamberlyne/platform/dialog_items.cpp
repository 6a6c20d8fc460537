#include "tamberlyne/platform/dialog_items.h"

// The toolbox has no dialog model yet: until it does, showing and hiding do nothing and no
// item has a control. These are reached only on hosts that cannot do the work themselves.

void ShowDialogItem(EDLG /*dialog*/, int32_t /*item*/)
{
}

void HideDialogItem(EDLG /*dialog*/, int32_t /*item*/)
{
}

toolbox::OSErr GetDialogItemAsControl(EDLG /*dialog*/, int32_t /*item*/, ECONTROL* control)
{
    if (control != nullptr) {
        *control = nullptr;
    }
    return toolbox::kItemNotControl;
}
