#include "tamberlyne/plugin/invocation.h"

#include "tamberlyne/host/callbacks.h"
#include "tamberlyne/host/gateway.h"
#include "tamberlyne/plugin/plugin_globals.h"
#include "tamberlyne/ui/groove_dialog.h"

namespace {

bool AskYesNo(EWND window, int32_t stringId)
{
    return SX_AlertMessage(window, kAlertQuestion, stringId, nullptr, kPluginApiVersion) == kAlertAnswerYes;
}

bool CoversWholeMeasures(const EREGION& region)
{
    return region.start.duraPos == 0 && region.end.duraPos == kEndOfMeasure;
}

}   // namespace

bool CheckMeasureRegionSelection(EWND window)
{
    if (_pSelRegion == nullptr) {
        if (!AskYesNo(window, kAlertNoSelection)) {
            return false;
        }
        SelRegion = DocRegion;
        return true;
    }
    SelRegion = *_pSelRegion;
    if (CoversWholeMeasures(SelRegion)) {
        return true;
    }
    if (!AskYesNo(window, kAlertPartialMeasures)) {
        return false;
    }
    SelRegion.end.duraPos = kEndOfMeasure;
    SelRegion.start.duraPos = 0;
    return true;
}

int32_t InvokeGrooveCommand(EWND window, const EREGION* selection, const EREGION* document)
{
    IsOpen = 1;
    _pSelRegion = selection;
    needRefresh = 0;
    DocRegion = document != nullptr ? *document : EREGION{};

    if (!CheckMeasureRegionSelection(window)) {
        return 0;
    }
    // The dialog runs modally; its OK path inserts the groove and sets needRefresh.
    const DialogHandlerProc handler(TamberlyneDialogProc);
    SX_Dialog(kGrooveDialogId, handler.Get(), window, 1, &dlgFlags, kPluginApiVersion);
    return needRefresh;
}
