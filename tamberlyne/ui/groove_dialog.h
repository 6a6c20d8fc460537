// The groove selection dialog (resource 20129).
#pragma once

#include "sdk/funcs.h"

// The dialog's handler for every message of the host's dialog protocol.
int32_t TamberlyneDialogProc(EDLG dialog, uint32_t message, intptr_t wParam, intptr_t lParam, void* userFlags);
