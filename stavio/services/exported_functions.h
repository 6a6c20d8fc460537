// The host functions as the process exports them: unmangled symbols named exactly as the
// table's fields, which a plug-in on the name path finds in the global scope. Private to
// stavio/services: a plug-in's own wrappers carry the same names with C++ linkage, so a public
// header declaring these would clash with them in any file that sees both.
#pragma once

#include "sdk/sdk.h"
#include "stavio/host.h"

#define STAVIO_EXPORT __attribute__((visibility("default")))

extern "C" {

// Entry frames
STAVIO_EXPORT EXQVF2005a* SX_LoadQVF(int16_t IUlist, int16_t slot, int16_t meas, int16_t layer, int32_t flags,
                                     EVERSION version);
STAVIO_EXPORT int32_t SX_SaveQVF(EXQVF2005a* frame, EVERSION version);
STAVIO_EXPORT void SX_FreeQVF(EXQVF2005a* frame, EVERSION version);
STAVIO_EXPORT int32_t SX_InsertEXENTRY(EXQVF2005a* frame, int32_t index, int32_t count, EVERSION version);
STAVIO_EXPORT int32_t SX_DeleteEXENTRY(EXQVF2005a* frame, int32_t index, int32_t count, EVERSION version);

// Records
STAVIO_EXPORT int32_t SX_LoadEData(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version);
STAVIO_EXPORT int32_t SX_SaveEData(EXTAG tag, const EDataID* key, const void* buffer, int32_t size, EVERSION version);
STAVIO_EXPORT int32_t SX_CreateEData(EXTAG tag, EDataID* key, const void* buffer, int32_t size, EVERSION version);
STAVIO_EXPORT int32_t SX_DeleteEData(EXTAG tag, const EDataID* key, EVERSION version);
STAVIO_EXPORT int32_t SX_PreviousEData(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version);
STAVIO_EXPORT int32_t SX_NextEData(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version);

// Dialogs and alerts
STAVIO_EXPORT int32_t SX_Dialog(int32_t dialogId, SXDialogHandlerRef handler, void* userData, int32_t modal,
                                uint32_t* flags, EVERSION version);
STAVIO_EXPORT int32_t SX_EndDialog(EDLG dialog, int32_t result, EVERSION version);
STAVIO_EXPORT int32_t SX_GetDlgCntlVal(EDLG dialog, int32_t item, EVERSION version);
STAVIO_EXPORT int32_t SX_SetDlgCntlVal(EDLG dialog, int32_t item, int32_t value, EVERSION version);
STAVIO_EXPORT int32_t SX_SetTimer(EDLG dialog, int32_t timerId, int32_t period, EVERSION version);
STAVIO_EXPORT int32_t SX_EnableDlgItem(EDLG dialog, int32_t item, int32_t enable, EVERSION version);
STAVIO_EXPORT int32_t SX_GetDlgItemVal(EDLG dialog, int32_t item, EVERSION version);
STAVIO_EXPORT int32_t SX_SetDlgItemVal(EDLG dialog, int32_t item, int32_t value, EVERSION version);
STAVIO_EXPORT int32_t SX_KillTimer(EDLG dialog, int32_t timerId, EVERSION version);
STAVIO_EXPORT int32_t SX_ShowHideDlgItem(EDLG dialog, int32_t item, int32_t show, EVERSION version);
STAVIO_EXPORT ECONTROL SX_GetDlgCntl(EDLG dialog, int32_t item, EVERSION version);
STAVIO_EXPORT int32_t SX_AlertMessage(EWND owner, int32_t style, int32_t stringId, const char* text, EVERSION version);

// Score questions
STAVIO_EXPORT int32_t SX_SlotToInst(int32_t slot, int32_t IUlist, EVERSION version);
STAVIO_EXPORT int32_t SX_InstToSlot(int32_t inst, int32_t IUlist, EVERSION version);
STAVIO_EXPORT int32_t SX_GetCurERegions(EREGION* selection, EREGION* document, EVERSION version);
STAVIO_EXPORT int32_t SX_FontNumToName(int16_t fontNum, char* name, int32_t capacity, EVERSION version);
STAVIO_EXPORT int16_t SX_FontNameToNum(const char* name, EVERSION version);
STAVIO_EXPORT int32_t SX_RedrawMusic(EVERSION version);
STAVIO_EXPORT int32_t SX_NoteToMidi(const EXNOTE* note, int32_t keySignature, EVERSION version);
STAVIO_EXPORT TIME_EDU SX_GetMeasureDuration(int32_t IUlist, int32_t meas, EVERSION version);
STAVIO_EXPORT int32_t SX_StartMassEdit(EVERSION version);
STAVIO_EXPORT int32_t SX_EndMassEdit(EVERSION version);
STAVIO_EXPORT int32_t SX_GetStavioPathMac(EFSSPEC* folder, EVERSION version);
STAVIO_EXPORT int32_t SX_StartStavioEdit(const char* undoName, EVERSION version);
STAVIO_EXPORT int32_t SX_EndStavioEdit(EVERSION version);
STAVIO_EXPORT void SX_CancelStavioEdit(EVERSION version);
STAVIO_EXPORT int32_t SX_IsMachO(EVERSION version);
STAVIO_EXPORT int32_t SX_GetMaxLayers(EVERSION version);
STAVIO_EXPORT int32_t SX_ProcessMidiData(SxpMidiData* data, EVERSION version);
STAVIO_EXPORT int32_t SX_AnalyzeChord(const EREGION* region, char* result, int32_t capacity, EVERSION version);

// Slots whose arguments this host leaves open: each answers 0.
#define STAVIO_UNTYPED_SLOTS(X)                                                                                        \
    X(SX_RebeamRegion)                                                                                                 \
    X(SX_RebarRegion) X(SX_ScrollTo) X(SX_ListenToMidi) X(SX_Playback) X(SX_CopyMidi) X(SX_PasteMidi) X(SX_NoteMover)  \
        X(SX_SelectNote) X(SX_GetKeySig) X(SX_SetDlgFocus) X(SX_MidiNoteToString) X(SX_StringToMidiNote)               \
            X(SX_GetDlgItemUser) X(SX_SetDlgItemUser) X(SX_GetSyllable) X(SX_ParseCaretCommand) X(SX_UpdateLayout)     \
                X(SX_GetEntryMetrics) X(SX_GetQVFEntryMetrics) X(SX_FontDialog) X(SX_SymbolDialog)                     \
                    X(SX_SelectionDialog) X(SX_SyllableInfo) X(SX_GetQVFDuration) X(SX_ReduceEntries)                  \
                        X(SX_MassEditProgress) X(SX_GetDlgString) X(SX_SetDlgString) X(SX_GetShowLayer)                \
                            X(SX_SetCurERegionMac) X(SX_SetCurrentOrmegaDocument) X(SX_GetCurrentOrmegaDocument)       \
                                X(SX_GetNextOrmegaDocument) X(SX_GetDocumentPathMac) X(SX_SelectExpressionDialog)      \
                                    X(SX_MassMoverMac) X(SX_RebuildMenuSystem) X(SX_EnableBusyDetection)               \
                                        X(SX_ExecuteMenuItem) X(SX_NewOrmegaDocument) X(SX_CloseOrmegaDocument)        \
                                            X(SX_IsOrmegaDocumentDirty) X(SX_SetOrmegaDocumentDirty)                   \
                                                X(SX_GetPrintSettings) X(SX_PrintCurrentDocument) X(SX_PrintDocument)  \
                                                    X(SX_PrintDocuments) X(SX_OpenDocument) X(SX_SaveDocument)         \
                                                        X(SX_DeleteMidiExpressions) X(SX_DeleteTempoRecords)           \
                                                            X(SX_GetWindowCount) X(SX_GetWindowInfoList)               \
                                                                X(SX_GetCurrentWindowInfo) X(SX_GetCurrentWindow)      \
                                                                    X(SX_SetCurrentWindow)                             \
                                                                        X(SX_CloseCurrentDocumentWindow)               \
                                                                            X(SX_InsertMeasures) X(SX_DeleteMeasures)

#define STAVIO_DECLARE_UNTYPED_SLOT(name) STAVIO_EXPORT int32_t name();
STAVIO_UNTYPED_SLOTS(STAVIO_DECLARE_UNTYPED_SLOT)
#undef STAVIO_DECLARE_UNTYPED_SLOT

}   // extern "C"

namespace stavio::services {

// Runs a service body on the current host; `failure` when there is none or the body throws:
// nothing crosses the plug-in boundary as an exception.
template <typename Result, typename Body>
Result OnCurrentHost(Result failure, Body body)
{
    Host* host = Host::Current();
    if (host == nullptr) {
        return failure;
    }
    try {
        return body(*host);
    } catch (...) {
        return failure;
    }
}

}   // namespace stavio::services
