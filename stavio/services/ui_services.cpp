// Alerts, dialogs and edit brackets: what the plug-in asks of the person and of the undo
// history.
#include "stavio/dialogs/dialog_runner.h"
#include "stavio/services/exported_functions.h"
#include "toolbox/dialogs.h"
#include "toolbox/events.h"

#include <cstdint>

using stavio::Host;
using stavio::services::OnCurrentHost;

namespace {

// The dialog behind the plug-in's handle and one of its item numbers; null when the handle is
// not a dialog the toolbox still keeps.
toolbox::Dialog* LiveDialog(EDLG dialog)
{
    return toolbox::LiveDialog(dialog);
}

bool IsItemNumber(int32_t item)
{
    return item >= 1 && item <= INT16_MAX;
}

// 1 when the toolbox did it, 0 when it refused (no such dialog or item).
int32_t Done(toolbox::OSErr status)
{
    return status == toolbox::kNoErr ? 1 : 0;
}

template <typename Body>
int32_t OnItem(EDLG handle, int32_t item, Body body)
{
    toolbox::Dialog* dialog = LiveDialog(handle);
    if (dialog == nullptr || !IsItemNumber(item)) {
        return 0;
    }
    return body(*dialog, static_cast<int16_t>(item));
}

}   // namespace

extern "C" {

int32_t SX_AlertMessage(EWND, int32_t style, int32_t stringId, const char* text, EVERSION)
{
    return OnCurrentHost<int32_t>(0, [&](Host& host) { return host.Alert(style, stringId, text); });
}

int32_t SX_Dialog(int32_t dialogId, SXDialogHandlerRef handler, void* userData, int32_t modal, uint32_t* flags,
                  EVERSION)
{
    // The request is recorded (and its handler resolved for the host's pose) first; then the
    // dialog runs to its end. Modal or not, a dialog of this host runs until it ends.
    return OnCurrentHost<int32_t>(0, [&](Host& host) {
        host.RequestDialog(dialogId, handler, userData, modal, flags);
        const stavio::DialogRequest request = host.DialogRequests().back();
        return stavio::RunDialogRequest(request, host.frontEnd());
    });
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

// Dialog items, on the toolbox model of the dialog. Each answers 0 (or null) for a handle that
// is not a live dialog or an item that does not exist.
int32_t SX_EndDialog(EDLG handle, int32_t result, EVERSION)
{
    toolbox::Dialog* dialog = LiveDialog(handle);
    if (dialog == nullptr) {
        return 0;
    }
    dialog->End(result);
    return 1;
}

int32_t SX_GetDlgCntlVal(EDLG handle, int32_t item, EVERSION)
{
    return OnItem(handle, item, [](toolbox::Dialog& dialog, int16_t number) { return dialog.ItemValue(number); });
}

int32_t SX_SetDlgCntlVal(EDLG handle, int32_t item, int32_t value, EVERSION)
{
    return OnItem(handle, item,
                  [&](toolbox::Dialog& dialog, int16_t number) { return Done(dialog.SetItemValue(number, value)); });
}

int32_t SX_GetDlgItemVal(EDLG handle, int32_t item, EVERSION version)
{
    return SX_GetDlgCntlVal(handle, item, version);
}

int32_t SX_SetDlgItemVal(EDLG handle, int32_t item, int32_t value, EVERSION version)
{
    return SX_SetDlgCntlVal(handle, item, value, version);
}

int32_t SX_EnableDlgItem(EDLG handle, int32_t item, int32_t enable, EVERSION)
{
    return OnItem(handle, item, [&](toolbox::Dialog& dialog, int16_t number) {
        return Done(dialog.EnableItem(number, enable != 0));
    });
}

int32_t SX_ShowHideDlgItem(EDLG handle, int32_t item, int32_t show, EVERSION)
{
    return OnItem(handle, item,
                  [&](toolbox::Dialog& dialog, int16_t number) { return Done(dialog.ShowItem(number, show != 0)); });
}

ECONTROL SX_GetDlgCntl(EDLG handle, int32_t item, EVERSION)
{
    toolbox::Dialog* dialog = LiveDialog(handle);
    toolbox::DialogItem* control = nullptr;
    if (dialog != nullptr && IsItemNumber(item)) {
        dialog->ItemAsControl(static_cast<int16_t>(item), control);
    }
    return control;
}

// Timers fire through the front end's event loop as timer messages.
int32_t SX_SetTimer(EDLG handle, int32_t timerId, int32_t period, EVERSION)
{
    toolbox::Dialog* dialog = LiveDialog(handle);
    if (dialog == nullptr) {
        return 0;
    }
    return Done(dialog->Timers().Start(timerId, period, toolbox::NowMilliseconds()));
}

int32_t SX_KillTimer(EDLG handle, int32_t timerId, EVERSION)
{
    toolbox::Dialog* dialog = LiveDialog(handle);
    if (dialog == nullptr) {
        return 0;
    }
    return Done(dialog->Timers().Kill(timerId));
}

}   // extern "C"
