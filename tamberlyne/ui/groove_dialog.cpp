#include "tamberlyne/ui/groove_dialog.h"

#include "tamberlyne/host/gateway.h"
#include "tamberlyne/platform/dialog_items.h"
#include "tamberlyne/plugin/groove_insertion.h"
#include "tamberlyne/plugin/plugin_globals.h"
#include "tamberlyne/plugin/staff_preparation.h"
#include "tamberlyne/ui/dialog_lists.h"
#include "tamberlyne/ui/groove_lists.h"
#include "tamberlyne/ui/prefs.h"
#include "toolbox/events.h"

#include <cstdio>
#include <cstring>

ListHandle g_hStaffList = nullptr;
bool TimerAllocated = false;

namespace {

constexpr long kSettingsBufferSize = 100;

// Reads the remembered options word at the first opening after load. The word is kept, but the
// radio buttons do not follow it: the dialog always opens on "the chosen staff".
void LoadRememberedOptions()
{
    if (initFlag <= 1) {
        return;
    }
    initFlag = 1;
    char buffer[kSettingsBufferSize] = {};
    if (GetSettings(kSettingsId, buffer, kSettingsBufferSize, kPrefsFileName) > 0 && buffer[0] != '\0') {
        buffer[kSettingsBufferSize - 1] = '\0';
        long value = 0;
        // Only 0 and 1 are options; anything else, judged on the whole number read and not on its
        // low 32 bits (4294967296 is no 0), falls back to 1.
        if (std::sscanf(buffer, "%ld", &value) == 1) {
            initFlag = value == 0 ? 0u : 1u;
        }
    }
}

void OnInitialise(EDLG dialog)
{
    TimerAllocated = false;
    SetTheFont(dialog);
    LoadRememberedOptions();
    SX_SetDlgCntlVal(dialog, kItemChosenStaff, 1, kPluginApiVersion);
    if (FillSelectionLists(dialog) == 1 && CheckNoTimeSignatureChanges()) {
        ShowDialogWindow(dialog);
    } else {
        // Closing from inside the initialisation is not allowed: the timer does it a moment later.
        CancelDialog(dialog);
        TimerAllocated = true;
    }
}

// The staff pop-up is for "the chosen staff" only. It is hidden while it changes so that it
// redraws.
void ChooseStaffTarget(EDLG dialog, bool newStaff)
{
    SX_SetDlgCntlVal(dialog, kItemNewStaff, newStaff ? 1 : 0, kPluginApiVersion);
    SX_SetDlgCntlVal(dialog, kItemChosenStaff, newStaff ? 0 : 1, kPluginApiVersion);
    SX_ShowHideDlgItem(dialog, kItemStaffPopup, 0, kPluginApiVersion);
    SX_EnableDlgItem(dialog, kItemStaffPopup, newStaff ? 0 : 1, kPluginApiVersion);
    SX_ShowHideDlgItem(dialog, kItemStaffPopup, 1, kPluginApiVersion);
}

void EnableButtons(EDLG dialog, bool enable)
{
    SX_EnableDlgItem(dialog, kItemOK, enable ? 1 : 0, kPluginApiVersion);
    SX_EnableDlgItem(dialog, kItemCancel, enable ? 1 : 0, kPluginApiVersion);
}

void OnOK(EDLG dialog, uint32_t* flags)
{
    ReadDialog(dialog, flags);
    if (filenum < 0) {
        SX_AlertMessage(nullptr, kAlertStop, kAlertNoGrooveChosen, nullptr, kPluginApiVersion);
        return;
    }
    if (stylenum == 0 && !PercussionMapPresent()) {
        SX_AlertMessage(nullptr, kAlertStop, kAlertNoPercussionMap, nullptr, kPluginApiVersion);
        return;
    }
    if (Files.empty()) {
        return;
    }
    EnableButtons(dialog, false);
    SX_StartStavioEdit(kUndoName, kPluginApiVersion);
    const bool inserted = DoYourThing(dialog, flags);
    SX_EndStavioEdit(kPluginApiVersion);
    EnableButtons(dialog, true);
    if (inserted) {
        SX_EndDialog(dialog, kDialogResultOK, kPluginApiVersion);
    }
}

void OnCommand(EDLG dialog, intptr_t item, uint32_t* flags)
{
    switch (item) {
        case kItemNewStaff: ChooseStaffTarget(dialog, true); break;
        case kItemChosenStaff: ChooseStaffTarget(dialog, false); break;
        case kItemCancel:
            *flags |= kOptionCancelled;
            SX_EndDialog(dialog, kDialogResultCancel, kPluginApiVersion);
            break;
        case kItemOK: OnOK(dialog, flags); break;
        default: break;
    }
}

void OnTimer(EDLG dialog)
{
    SX_KillTimer(dialog, kCloseTimerId, kPluginApiVersion);
    SX_EndDialog(dialog, kDialogResultClosed, kPluginApiVersion);
}

void OnClose(EDLG dialog)
{
    IsOpen = 0;
    if (TimerAllocated) {
        SX_KillTimer(dialog, kCloseTimerId, kPluginApiVersion);
        TimerAllocated = false;
    }
    if (toolbox::Dialog* model = DialogModel(dialog)) {
        model->DisposeList(g_hStaffList);
    }
    g_hStaffList = nullptr;
}

}   // namespace

int32_t TamberlyneDialogProc(EDLG dialog, uint32_t message, intptr_t wParam, intptr_t lParam, void* userFlags)
{
    uint32_t unusedFlags = 0;
    uint32_t* flags = userFlags != nullptr ? static_cast<uint32_t*>(userFlags) : &unusedFlags;
    try {
        switch (message) {
            case kDlgMsgInit: OnInitialise(dialog); break;
            case kDlgMsgCommand: OnCommand(dialog, wParam, flags); break;
            case kDlgMsgTimer: OnTimer(dialog); break;
            case kDlgMsgPaint: OnPaint(dialog); break;
            case kDlgMsgClose:
            case kDlgMsgCloseRequest: OnClose(dialog); break;
            case kDlgMsgMouseDown:
                OnLButtonDown(dialog, static_cast<int>(wParam), toolbox::MouseDownY(lParam),
                              toolbox::MouseDownModifiers(lParam));
                break;
            default: break;
        }
    } catch (...) {
        // Nothing crosses back into the host as an exception; the dialog stays as it is.
    }
    return 0;
}

void ReadDialog(EDLG dialog, uint32_t* flags)
{
    *flags = 0;
    if (SX_GetDlgCntlVal(dialog, kItemNewStaff, kPluginApiVersion) != 0) {
        *flags |= kOptionNewStaff;
    }
    filenum = MacList_GetSelNum() - 1;
    const int32_t staff = SX_GetDlgCntlVal(dialog, kItemStaffPopup, kPluginApiVersion);
    if (staff > 0) {
        staffnum = staff - 1;
    }
    const int32_t style = SX_GetDlgCntlVal(dialog, kItemStylePopup, kPluginApiVersion);
    if (style > 0) {
        stylenum = style - 1;
    }
    initFlag = *flags;
    char text[32];
    std::snprintf(text, sizeof(text), "%ld", static_cast<long>(*flags));
    PutSettings(kSettingsId, text, static_cast<long>(std::strlen(text) + 1), kSettingsResourceName, kPrefsFileName);
}

void CancelDialog(EDLG dialog)
{
    SX_SetTimer(dialog, kCloseTimerId, kCloseTimerPeriod, kPluginApiVersion);
}

void SetTheFont(EDLG dialog)
{
    if (toolbox::Dialog* model = DialogModel(dialog)) {
        model->Port().UseThemeFont(toolbox::kSmallSystemFont, toolbox::kSystemScript);
    }
}

void OnPaint(EDLG dialog)
{
    SetTheFont(dialog);
    QVMacPaintHandlerForDialogsWithList(dialog, g_hStaffList, nullptr);
}

void OnLButtonDown(EDLG dialog, int x, int y, toolbox::Modifiers modifiers)
{
    const DialogEvent event{modifiers, toolbox::NowMilliseconds()};
    QVMacLButtonDownHandlerForLists(dialog, g_hStaffList, static_cast<int16_t>(kItemGrooveList), event,
                                    toolbox::Point{x, y}, true);
}
