// Alerts, dialogs and edit brackets: what the plug-in asks of the person and of the undo
// history.
#include "stavio/services/exported_functions.h"

using stavio::Host;
using stavio::services::OnCurrentHost;

extern "C" {

int32_t SX_AlertMessage(EWND, int32_t style, int32_t stringId, const char* text, EVERSION)
{
    return OnCurrentHost<int32_t>(0, [&](Host& host) { return host.Alert(style, stringId, text); });
}

int32_t SX_Dialog(int32_t dialogId, SXDialogHandlerRef handler, void* userData, int32_t modal, uint32_t* flags,
                  EVERSION)
{
    return OnCurrentHost<int32_t>(
        0, [&](Host& host) { return host.RequestDialog(dialogId, handler, userData, modal, flags); });
}

int32_t SX_StartStavioEdit(const char* undoName, EVERSION)
{
    return OnCurrentHost<int32_t>(
        0, [&](Host& host) { return host.document().StartEdit(undoName != nullptr ? undoName : ""); });
}

int32_t SX_EndStavioEdit(EVERSION)
{
    return OnCurrentHost<int32_t>(0, [](Host& host) { return host.document().EndEdit(); });
}

void SX_CancelStavioEdit(EVERSION)
{
    OnCurrentHost<int32_t>(0, [](Host& host) {
        host.document().CancelEdit();
        return 0;
    });
}

// Dialog items: until dialogs run, every request fails.
int32_t SX_EndDialog(EDLG, int32_t, EVERSION) { return 0; }
int32_t SX_GetDlgCntlVal(EDLG, int32_t, EVERSION) { return 0; }
int32_t SX_SetDlgCntlVal(EDLG, int32_t, int32_t, EVERSION) { return 0; }
int32_t SX_SetTimer(EDLG, int32_t, int32_t, EVERSION) { return 0; }
int32_t SX_EnableDlgItem(EDLG, int32_t, int32_t, EVERSION) { return 0; }
int32_t SX_GetDlgItemVal(EDLG, int32_t, EVERSION) { return 0; }
int32_t SX_SetDlgItemVal(EDLG, int32_t, int32_t, EVERSION) { return 0; }
int32_t SX_KillTimer(EDLG, int32_t, EVERSION) { return 0; }
int32_t SX_ShowHideDlgItem(EDLG, int32_t, int32_t, EVERSION) { return 0; }
ECONTROL SX_GetDlgCntl(EDLG, int32_t, EVERSION) { return nullptr; }

}  // extern "C"
