// The wrapper families over the host table. Pass-through wrappers call their slot without a
// test (the slots they use exist in every host the start-up rules accept); the others decide
// what an older host without the slot gets.
#include "tamberlyne/host/gateway.h"

#include "tamberlyne/platform/dialog_items.h"

#include <algorithm>

namespace {

StavioFuncs EmptyTable()
{
    StavioFuncs table{};
    table.size = static_cast<uint32_t>(sizeof(StavioFuncs));
    return table;
}

constexpr EVERSION kDialogItemCallsVersion = 0x0b01ffff;   // callers above this may use slots 104-105
constexpr EVERSION kChordAnalysisVersion = 0x0b000000;

// Signatures of the document and window calls that the sdk leaves untyped.
using VersionOnlyProc = int32_t (*)(EVERSION);
using NumberProc = int32_t (*)(int32_t, EVERSION);
using RegionProc = int32_t (*)(const EREGION*, EVERSION);
using FileProc = int32_t (*)(EFSSPEC*, EVERSION);

template <typename Proc>
Proc As(SXProc slot)
{
    return reinterpret_cast<Proc>(slot);
}

// The slot's answer, or `whenMissing` from a host without the slot.
template <typename Proc, typename... Args>
int32_t CallOr(int32_t whenMissing, Proc slot, Args... args)
{
    return slot == nullptr ? whenMissing : slot(args...);
}

// A slot the sdk leaves untyped, called as `Proc`; 0 from a host without it.
template <typename Proc, typename... Args>
int32_t CallUntyped(SXProc slot, Args... args)
{
    return CallOr(0, As<Proc>(slot), args...);
}

}   // namespace

StavioFuncs gStavioFuncs = EmptyTable();
int32_t StavioEditDepth = 0;
int32_t MassEditDepth = 0;

// ---- Plain pass-through ---------------------------------------------------------------------------

int32_t SX_Dialog(int32_t dialogId, SXDialogHandlerRef handler, void* userData, int32_t modal, uint32_t* flags,
                  EVERSION version)
{
    return gStavioFuncs.SX_Dialog(dialogId, handler, userData, modal, flags, version);
}

int32_t SX_EndDialog(EDLG dialog, int32_t result, EVERSION version)
{
    return gStavioFuncs.SX_EndDialog(dialog, result, version);
}

int32_t SX_EnableDlgItem(EDLG dialog, int32_t item, int32_t enable, EVERSION version)
{
    return gStavioFuncs.SX_EnableDlgItem(dialog, item, enable, version);
}

int32_t SX_GetDlgCntlVal(EDLG dialog, int32_t item, EVERSION version)
{
    return gStavioFuncs.SX_GetDlgCntlVal(dialog, item, version);
}

int32_t SX_SetDlgCntlVal(EDLG dialog, int32_t item, int32_t value, EVERSION version)
{
    return gStavioFuncs.SX_SetDlgCntlVal(dialog, item, value, version);
}

int32_t SX_GetDlgItemVal(EDLG dialog, int32_t item, EVERSION version)
{
    return gStavioFuncs.SX_GetDlgItemVal(dialog, item, version);
}

int32_t SX_SetDlgItemVal(EDLG dialog, int32_t item, int32_t value, EVERSION version)
{
    return gStavioFuncs.SX_SetDlgItemVal(dialog, item, value, version);
}

int32_t SX_SlotToInst(int32_t slot, int32_t IUlist, EVERSION version)
{
    return gStavioFuncs.SX_SlotToInst(slot, IUlist, version);
}

int32_t SX_InstToSlot(int32_t inst, int32_t IUlist, EVERSION version)
{
    return gStavioFuncs.SX_InstToSlot(inst, IUlist, version);
}

int16_t SX_FontNameToNum(const char* name, EVERSION version)
{
    return gStavioFuncs.SX_FontNameToNum(name, version);
}

int32_t SX_FontNumToName(int16_t fontNum, char* name, int32_t capacity, EVERSION version)
{
    return gStavioFuncs.SX_FontNumToName(fontNum, name, capacity, version);
}

int32_t SX_NoteToMidi(const EXNOTE* note, int32_t keySignature, EVERSION version)
{
    return gStavioFuncs.SX_NoteToMidi(note, keySignature, version);
}

int32_t SX_SetTimer(EDLG dialog, int32_t timerId, int32_t period, EVERSION version)
{
    return gStavioFuncs.SX_SetTimer(dialog, timerId, period, version);
}

TIME_EDU SX_GetMeasureDuration(int32_t IUlist, int32_t meas, EVERSION version)
{
    return gStavioFuncs.SX_GetMeasureDuration(IUlist, meas, version);
}

int32_t SX_AlertMessage(EWND owner, int32_t style, int32_t stringId, const char* text, EVERSION version)
{
    return gStavioFuncs.SX_AlertMessage(owner, style, stringId, text, version);
}

// ---- Counting pass-through ----------------------------------------------------------------------

int32_t SX_StartMassEdit(EVERSION version)
{
    ++MassEditDepth;
    return gStavioFuncs.SX_StartMassEdit(version);
}

int32_t SX_EndMassEdit(EVERSION version)
{
    --MassEditDepth;
    return gStavioFuncs.SX_EndMassEdit(version);
}

// ---- Default when missing -------------------------------------------------------------------------

int32_t SX_GetMaxLayers(EVERSION version)
{
    return CallOr(4, gStavioFuncs.SX_GetMaxLayers, version);
}

int32_t SX_IsMachO(EVERSION version)
{
    return CallOr(0, gStavioFuncs.SX_IsMachO, version);
}

int32_t SX_ProcessMidiData(SxpMidiData* data, EVERSION version)
{
    return CallOr(-1, gStavioFuncs.SX_ProcessMidiData, data, version);
}

int32_t SX_GetStavioPathMac(EFSSPEC* folder, EVERSION version)
{
    return CallOr(0, gStavioFuncs.SX_GetStavioPathMac, folder, version);
}

int32_t SX_KillTimer(EDLG dialog, int32_t timerId, EVERSION version)
{
    return CallOr(0, gStavioFuncs.SX_KillTimer, dialog, timerId, version);
}

int32_t SX_GetCurERegions(EREGION* selection, EREGION* document, EVERSION version)
{
    return CallOr(0, gStavioFuncs.SX_GetCurERegions, selection, document, version);
}

int32_t SX_RedrawMusic(EVERSION version)
{
    return CallOr(0, gStavioFuncs.SX_RedrawMusic, version);
}

int32_t SX_SetCurERegionMac(const EREGION* region, EVERSION version)
{
    return CallUntyped<RegionProc>(gStavioFuncs.SX_SetCurERegionMac, region, version);
}

int32_t SX_GetCurrentOrmegaDocument(EVERSION version)
{
    return CallUntyped<VersionOnlyProc>(gStavioFuncs.SX_GetCurrentOrmegaDocument, version);
}

int32_t SX_SetCurrentOrmegaDocument(int32_t document, EVERSION version)
{
    return CallUntyped<NumberProc>(gStavioFuncs.SX_SetCurrentOrmegaDocument, document, version);
}

int32_t SX_GetNextOrmegaDocument(int32_t document, EVERSION version)
{
    return CallUntyped<NumberProc>(gStavioFuncs.SX_GetNextOrmegaDocument, document, version);
}

int32_t SX_GetDocumentPathMac(EFSSPEC* file, EVERSION version)
{
    return CallUntyped<FileProc>(gStavioFuncs.SX_GetDocumentPathMac, file, version);
}

int32_t SX_RebuildMenuSystem(EVERSION version)
{
    return CallUntyped<VersionOnlyProc>(gStavioFuncs.SX_RebuildMenuSystem, version);
}

int32_t SX_EnableBusyDetection(int32_t enable, EVERSION version)
{
    return CallUntyped<NumberProc>(gStavioFuncs.SX_EnableBusyDetection, enable, version);
}

int32_t SX_IsOrmegaDocumentDirty(EVERSION version)
{
    return CallUntyped<VersionOnlyProc>(gStavioFuncs.SX_IsOrmegaDocumentDirty, version);
}

int32_t SX_DeleteMidiExpressions(const EREGION* region, EVERSION version)
{
    return CallUntyped<RegionProc>(gStavioFuncs.SX_DeleteMidiExpressions, region, version);
}

int32_t SX_DeleteTempoRecords(const EREGION* region, EVERSION version)
{
    return CallUntyped<RegionProc>(gStavioFuncs.SX_DeleteTempoRecords, region, version);
}

int32_t SX_GetWindowCount(EVERSION version)
{
    return CallUntyped<VersionOnlyProc>(gStavioFuncs.SX_GetWindowCount, version);
}

int32_t SX_GetCurrentWindow(EVERSION version)
{
    return CallUntyped<VersionOnlyProc>(gStavioFuncs.SX_GetCurrentWindow, version);
}

int32_t SX_CloseCurrentDocumentWindow(EVERSION version)
{
    return CallUntyped<VersionOnlyProc>(gStavioFuncs.SX_CloseCurrentDocumentWindow, version);
}

// ---- Edit brackets ------------------------------------------------------------------------------------

int32_t SX_StartStavioEdit(const char* undoName, EVERSION version)
{
    ++StavioEditDepth;
    return CallOr(0, gStavioFuncs.SX_StartStavioEdit, undoName, version);
}

int32_t SX_EndStavioEdit(EVERSION version)
{
    if (StavioEditDepth <= 0) {
        return 1;
    }
    --StavioEditDepth;
    return CallOr(0, gStavioFuncs.SX_EndStavioEdit, version);
}

void SX_CancelStavioEdit(EVERSION version)
{
    if (StavioEditDepth <= 0) {
        return;
    }
    --StavioEditDepth;
    if (gStavioFuncs.SX_CancelStavioEdit != nullptr) {
        gStavioFuncs.SX_CancelStavioEdit(version);
    }
}

// ---- Version-gated with a platform fallback ------------------------------------------------------------

int32_t SX_ShowHideDlgItem(EDLG dialog, int32_t item, int32_t show, EVERSION version)
{
    static const SXShowHideDlgItemProc hostShowHide = gStavioFuncs.SX_ShowHideDlgItem;
    if (version > kDialogItemCallsVersion && hostShowHide != nullptr) {
        return hostShowHide(dialog, item, show, version);
    }
    if (show == 0) {
        HideDialogItem(dialog, item);
    } else {
        ShowDialogItem(dialog, item);
    }
    return 0;
}

ECONTROL SX_GetDlgCntl(EDLG dialog, int32_t item, EVERSION version)
{
    static const SXGetDlgCntlProc hostGetControl = gStavioFuncs.SX_GetDlgCntl;
    if (version > kDialogItemCallsVersion && hostGetControl != nullptr) {
        return hostGetControl(dialog, item, version);
    }
    ECONTROL control = nullptr;
    if (GetDialogItemAsControl(dialog, item, &control) == toolbox::kItemNotControl) {
        return nullptr;
    }
    return control;
}

// ---- Missing API told to the user ------------------------------------------------------------------

int32_t SX_AnalyzeChord(const EREGION* region, char* result, int32_t capacity, EVERSION version)
{
    if (gStavioFuncs.SX_AnalyzeChord == nullptr) {
        SX_AlertMessage(nullptr, 0, 0, "Chord Analysis API not present in this version of Stavio.", kPluginApiVersion);
        return 0;
    }
    return gStavioFuncs.SX_AnalyzeChord(region, result, capacity, std::max(version, kChordAnalysisVersion));
}
