#include "stavio/services/function_table.h"

#include "stavio/services/exported_functions.h"

#include <cstring>

namespace stavio::services {

namespace {

// Slots 62, 77 and 78 carry no name: nothing can look them up, but the table still offers them.
void UnnamedSlot()
{}

constexpr int kLastOlderHostSlot = 76;

}   // namespace

StavioFuncs BuildFunctionTable(HostPose pose)
{
    StavioFuncs table{};
    table.size = static_cast<uint32_t>(sizeof(StavioFuncs));
    table.version = pose == HostPose::Newer ? kNewerHostVersion : kOlderHostVersion;
    table.SX_LoadQVF = &::SX_LoadQVF;
    table.SX_SaveQVF = &::SX_SaveQVF;
    table.SX_FreeQVF = &::SX_FreeQVF;
    table.SX_InsertEXENTRY = &::SX_InsertEXENTRY;
    table.SX_DeleteEXENTRY = &::SX_DeleteEXENTRY;
    table.SX_RebeamRegion = reinterpret_cast<SXProc>(&::SX_RebeamRegion);
    table.SX_RebarRegion = reinterpret_cast<SXProc>(&::SX_RebarRegion);
    table.SX_LoadEData = &::SX_LoadEData;
    table.SX_SaveEData = &::SX_SaveEData;
    table.SX_CreateEData = &::SX_CreateEData;
    table.SX_DeleteEData = &::SX_DeleteEData;
    table.SX_PreviousEData = &::SX_PreviousEData;
    table.SX_NextEData = &::SX_NextEData;
    table.SX_Dialog = &::SX_Dialog;
    table.SX_EndDialog = &::SX_EndDialog;
    table.SX_GetDlgCntlVal = &::SX_GetDlgCntlVal;
    table.SX_SetDlgCntlVal = &::SX_SetDlgCntlVal;
    table.SX_SlotToInst = &::SX_SlotToInst;
    table.SX_InstToSlot = &::SX_InstToSlot;
    table.SX_ScrollTo = reinterpret_cast<SXProc>(&::SX_ScrollTo);
    table.SX_ListenToMidi = reinterpret_cast<SXProc>(&::SX_ListenToMidi);
    table.SX_Playback = reinterpret_cast<SXProc>(&::SX_Playback);
    table.SX_GetCurERegions = &::SX_GetCurERegions;
    table.SX_FontNumToName = &::SX_FontNumToName;
    table.SX_FontNameToNum = &::SX_FontNameToNum;
    table.SX_RedrawMusic = &::SX_RedrawMusic;
    table.SX_CopyMidi = reinterpret_cast<SXProc>(&::SX_CopyMidi);
    table.SX_PasteMidi = reinterpret_cast<SXProc>(&::SX_PasteMidi);
    table.SX_NoteToMidi = &::SX_NoteToMidi;
    table.SX_NoteMover = reinterpret_cast<SXProc>(&::SX_NoteMover);
    table.SX_SelectNote = reinterpret_cast<SXProc>(&::SX_SelectNote);
    table.SX_GetKeySig = reinterpret_cast<SXProc>(&::SX_GetKeySig);
    table.SX_SetTimer = &::SX_SetTimer;
    table.SX_EnableDlgItem = &::SX_EnableDlgItem;
    table.SX_SetDlgFocus = reinterpret_cast<SXProc>(&::SX_SetDlgFocus);
    table.SX_MidiNoteToString = reinterpret_cast<SXProc>(&::SX_MidiNoteToString);
    table.SX_StringToMidiNote = reinterpret_cast<SXProc>(&::SX_StringToMidiNote);
    table.SX_GetDlgItemUser = reinterpret_cast<SXProc>(&::SX_GetDlgItemUser);
    table.SX_SetDlgItemUser = reinterpret_cast<SXProc>(&::SX_SetDlgItemUser);
    table.SX_GetSyllable = reinterpret_cast<SXProc>(&::SX_GetSyllable);
    table.SX_ParseCaretCommand = reinterpret_cast<SXProc>(&::SX_ParseCaretCommand);
    table.SX_UpdateLayout = reinterpret_cast<SXProc>(&::SX_UpdateLayout);
    table.SX_GetEntryMetrics = reinterpret_cast<SXProc>(&::SX_GetEntryMetrics);
    table.SX_GetQVFEntryMetrics = reinterpret_cast<SXProc>(&::SX_GetQVFEntryMetrics);
    table.SX_FontDialog = reinterpret_cast<SXProc>(&::SX_FontDialog);
    table.SX_SymbolDialog = reinterpret_cast<SXProc>(&::SX_SymbolDialog);
    table.SX_SelectionDialog = reinterpret_cast<SXProc>(&::SX_SelectionDialog);
    table.SX_SyllableInfo = reinterpret_cast<SXProc>(&::SX_SyllableInfo);
    table.SX_GetMeasureDuration = &::SX_GetMeasureDuration;
    table.SX_GetQVFDuration = reinterpret_cast<SXProc>(&::SX_GetQVFDuration);
    table.SX_ReduceEntries = reinterpret_cast<SXProc>(&::SX_ReduceEntries);
    table.SX_StartMassEdit = &::SX_StartMassEdit;
    table.SX_EndMassEdit = &::SX_EndMassEdit;
    table.SX_MassEditProgress = reinterpret_cast<SXProc>(&::SX_MassEditProgress);
    table.SX_AlertMessage = &::SX_AlertMessage;
    table.SX_GetDlgItemVal = &::SX_GetDlgItemVal;
    table.SX_SetDlgItemVal = &::SX_SetDlgItemVal;
    table.SX_GetDlgString = reinterpret_cast<SXProc>(&::SX_GetDlgString);
    table.SX_SetDlgString = reinterpret_cast<SXProc>(&::SX_SetDlgString);
    table.SX_GetShowLayer = reinterpret_cast<SXProc>(&::SX_GetShowLayer);
    table.unnamedQuery62 = &UnnamedSlot;
    table.SX_SetCurERegionMac = reinterpret_cast<SXProc>(&::SX_SetCurERegionMac);
    table.SX_SetCurrentOrmegaDocument = reinterpret_cast<SXProc>(&::SX_SetCurrentOrmegaDocument);
    table.SX_GetCurrentOrmegaDocument = reinterpret_cast<SXProc>(&::SX_GetCurrentOrmegaDocument);
    table.SX_GetNextOrmegaDocument = reinterpret_cast<SXProc>(&::SX_GetNextOrmegaDocument);
    table.SX_GetStavioPathMac = &::SX_GetStavioPathMac;
    table.SX_StartStavioEdit = &::SX_StartStavioEdit;
    table.SX_EndStavioEdit = &::SX_EndStavioEdit;
    table.SX_CancelStavioEdit = &::SX_CancelStavioEdit;
    table.SX_GetDocumentPathMac = reinterpret_cast<SXProc>(&::SX_GetDocumentPathMac);
    table.SX_SelectExpressionDialog = reinterpret_cast<SXProc>(&::SX_SelectExpressionDialog);
    table.SX_MassMoverMac = reinterpret_cast<SXProc>(&::SX_MassMoverMac);
    table.SX_RebuildMenuSystem = reinterpret_cast<SXProc>(&::SX_RebuildMenuSystem);
    table.SX_EnableBusyDetection = reinterpret_cast<SXProc>(&::SX_EnableBusyDetection);
    table.SX_ExecuteMenuItem = reinterpret_cast<SXProc>(&::SX_ExecuteMenuItem);
    table.reserved1 = &UnnamedSlot;
    table.reserved2 = &UnnamedSlot;
    table.SX_NewOrmegaDocument = reinterpret_cast<SXProc>(&::SX_NewOrmegaDocument);
    table.SX_CloseOrmegaDocument = reinterpret_cast<SXProc>(&::SX_CloseOrmegaDocument);
    table.SX_IsOrmegaDocumentDirty = reinterpret_cast<SXProc>(&::SX_IsOrmegaDocumentDirty);
    table.SX_SetOrmegaDocumentDirty = reinterpret_cast<SXProc>(&::SX_SetOrmegaDocumentDirty);
    table.SX_GetPrintSettings = reinterpret_cast<SXProc>(&::SX_GetPrintSettings);
    table.SX_PrintCurrentDocument = reinterpret_cast<SXProc>(&::SX_PrintCurrentDocument);
    table.SX_PrintDocument = reinterpret_cast<SXProc>(&::SX_PrintDocument);
    table.SX_PrintDocuments = reinterpret_cast<SXProc>(&::SX_PrintDocuments);
    table.SX_OpenDocument = reinterpret_cast<SXProc>(&::SX_OpenDocument);
    table.SX_SaveDocument = reinterpret_cast<SXProc>(&::SX_SaveDocument);
    table.SX_IsMachO = &::SX_IsMachO;
    table.SX_GetMaxLayers = &::SX_GetMaxLayers;
    table.SX_ProcessMidiData = &::SX_ProcessMidiData;
    table.SX_DeleteMidiExpressions = reinterpret_cast<SXProc>(&::SX_DeleteMidiExpressions);
    table.SX_DeleteTempoRecords = reinterpret_cast<SXProc>(&::SX_DeleteTempoRecords);
    table.SX_GetWindowCount = reinterpret_cast<SXProc>(&::SX_GetWindowCount);
    table.SX_GetWindowInfoList = reinterpret_cast<SXProc>(&::SX_GetWindowInfoList);
    table.SX_GetCurrentWindowInfo = reinterpret_cast<SXProc>(&::SX_GetCurrentWindowInfo);
    table.SX_GetCurrentWindow = reinterpret_cast<SXProc>(&::SX_GetCurrentWindow);
    table.SX_SetCurrentWindow = reinterpret_cast<SXProc>(&::SX_SetCurrentWindow);
    table.SX_CloseCurrentDocumentWindow = reinterpret_cast<SXProc>(&::SX_CloseCurrentDocumentWindow);
    table.SX_KillTimer = &::SX_KillTimer;
    table.SX_AnalyzeChord = &::SX_AnalyzeChord;
    table.SX_InsertMeasures = reinterpret_cast<SXProc>(&::SX_InsertMeasures);
    table.SX_DeleteMeasures = reinterpret_cast<SXProc>(&::SX_DeleteMeasures);
    table.SX_ShowHideDlgItem = &::SX_ShowHideDlgItem;
    table.SX_GetDlgCntl = &::SX_GetDlgCntl;
    if (pose == HostPose::Older) {
        auto* bytes = reinterpret_cast<unsigned char*>(&table);
        std::memset(bytes + SlotOffset(kLastOlderHostSlot + 1), 0,
                    SlotOffset(kLastFunctionSlot + 1) - SlotOffset(kLastOlderHostSlot + 1));
    }
    return table;
}

}   // namespace stavio::services
