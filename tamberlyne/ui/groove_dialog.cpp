#include "tamberlyne/ui/groove_dialog.h"

// For now the dialog handles no message: the host shows the layout and the buttons close it.
int32_t TamberlyneDialogProc(EDLG /*dialog*/, uint32_t /*message*/, intptr_t /*wParam*/, intptr_t /*lParam*/,
                             void* /*userFlags*/)
{
    return 0;
}
