// The groove selection dialog (resource 20129): the user picks a groove file, the target staff,
// the notation style and whether a new staff is made; OK runs the insertion driver inside one
// undo step and ends the dialog only when the driver succeeded.
#pragma once

#include "sdk/funcs.h"
#include "tamberlyne/ui/white_lists.h"

#include <cstdint>

// The dialog's items.
constexpr int32_t kItemOK = 1;
constexpr int32_t kItemCancel = 2;
constexpr int32_t kItemGrooveList = 4;    // user item: the frame of the groove list
constexpr int32_t kItemNewStaff = 6;      // radio: put the groove on a new staff
constexpr int32_t kItemChosenStaff = 7;   // radio: put it on the staff of the pop-up (default)
constexpr int32_t kItemStaffPopup = 8;    // one entry per staff of the selection
constexpr int32_t kItemStylePopup = 11;   // entry = style number + 1

// The options word: bit 0 when radio 6 is on; Cancel sets 0x10000.
constexpr uint32_t kOptionNewStaff = 0x1;
constexpr uint32_t kOptionCancelled = 0x10000;

// The dialog's one timer: it closes a dialog that cannot start, on its first tick.
constexpr int32_t kCloseTimerId = 1;
constexpr int32_t kCloseTimerPeriod = 100;

// Dialog results handed to the host when the dialog ends.
constexpr int32_t kDialogResultOK = 1;
constexpr int32_t kDialogResultCancel = 2;
constexpr int32_t kDialogResultClosed = 0;

constexpr int32_t kAlertNoGrooves = 0x4E210008;
constexpr int32_t kAlertNoGrooveChosen = 0x4E210009;
constexpr int32_t kAlertNoPercussionMap = 0x4E21000A;

// The remembered options word lives in the preferences file under this id and names.
constexpr int16_t kSettingsId = 20000;
constexpr char kPrefsFileName[] = "tamberlyne Prefs";
constexpr char kSettingsResourceName[] = "tamberlyne";
constexpr char kUndoName[] = "Tamberlyne Plug-In";

// The groove list of the open dialog (null when none is open) and whether the close timer runs.
extern ListHandle g_hStaffList;
extern bool TimerAllocated;

// The dialog's handler for every message of the host's dialog protocol. `userFlags` is the
// options word (uint32_t). The host does not read the answer; it is always 0.
int32_t TamberlyneDialogProc(EDLG dialog, uint32_t message, intptr_t wParam, intptr_t lParam, void* userFlags);

// Reads the items into filenum, staffnum, stylenum and the options word, remembers the word in
// initFlag and the preferences file.
void ReadDialog(EDLG dialog, uint32_t* flags);
// Starts the close timer: the dialog ends on its first tick.
void CancelDialog(EDLG dialog);
// The small system theme font for the dialog's drawing.
void SetTheFont(EDLG dialog);
void OnPaint(EDLG dialog);
void OnLButtonDown(EDLG dialog, int x, int y, toolbox::Modifiers modifiers);
