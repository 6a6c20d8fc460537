// One run of the groove command: settle the working region, then open the groove dialog.
#pragma once

#include "sdk/types.h"

constexpr int32_t kGrooveDialogId = 20129;
constexpr int32_t kAlertNoSelection = 0x4E210001;       // "use the whole document?"
constexpr int32_t kAlertPartialMeasures = 0x4E21000B;   // "widen to whole measures?"

// Settles SelRegion from _pSelRegion and DocRegion, asking the user when nothing is selected
// (the whole document on Yes) or when the selection cuts into a measure (widened on Yes).
// False when the user declines.
bool CheckMeasureRegionSelection(EWND window);

// The invocation flow behind StavioExtensionInvoke; answers needRefresh.
int32_t InvokeGrooveCommand(EWND window, const EREGION* selection, const EREGION* document);
