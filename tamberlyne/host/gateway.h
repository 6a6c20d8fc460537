// The plug-in's single copy of the host function table and the SX_ wrappers over its slots.
// Every call into the host goes through one of these; each wrapper decides what happens when
// the host is too old to fill its slot (see the families in gateway.cpp).
#pragma once

#include "sdk/sdk.h"

extern StavioFuncs gStavioFuncs;
extern int32_t StavioEditDepth;
extern int32_t MassEditDepth;

// ---- Plain pass-through: the slot exists in every host the start-up rules accept -------------
int32_t SX_Dialog(int32_t dialogId, SXDialogHandlerRef handler, void* userData, int32_t modal, uint32_t* flags,
                  EVERSION version);
int32_t SX_EndDialog(EDLG dialog, int32_t result, EVERSION version);
int32_t SX_EnableDlgItem(EDLG dialog, int32_t item, int32_t enable, EVERSION version);
int32_t SX_GetDlgCntlVal(EDLG dialog, int32_t item, EVERSION version);
int32_t SX_SetDlgCntlVal(EDLG dialog, int32_t item, int32_t value, EVERSION version);
int32_t SX_GetDlgItemVal(EDLG dialog, int32_t item, EVERSION version);
int32_t SX_SetDlgItemVal(EDLG dialog, int32_t item, int32_t value, EVERSION version);
int32_t SX_SlotToInst(int32_t slot, int32_t IUlist, EVERSION version = kPluginApiVersion);
int32_t SX_InstToSlot(int32_t inst, int32_t IUlist, EVERSION version = kPluginApiVersion);
int16_t SX_FontNameToNum(const char* name, EVERSION version = kPluginApiVersion);
int32_t SX_FontNumToName(int16_t fontNum, char* name, int32_t capacity, EVERSION version = kPluginApiVersion);
int32_t SX_NoteToMidi(const EXNOTE* note, int32_t keySignature, EVERSION version = kPluginApiVersion);
int32_t SX_SetTimer(EDLG dialog, int32_t timerId, int32_t period, EVERSION version);
TIME_EDU SX_GetMeasureDuration(int32_t IUlist, int32_t meas, EVERSION version = kPluginApiVersion);
int32_t SX_AlertMessage(EWND owner, int32_t style, int32_t stringId, const char* text,
                        EVERSION version = kPluginApiVersion);

// ---- Counting pass-through ---------------------------------------------------------------------
int32_t SX_StartMassEdit(EVERSION version);
int32_t SX_EndMassEdit(EVERSION version);

// ---- Default when missing ------------------------------------------------------------------------
int32_t SX_GetMaxLayers(EVERSION version = kPluginApiVersion);                         // 4
int32_t SX_IsMachO(EVERSION version = kPluginApiVersion);                              // 0
int32_t SX_ProcessMidiData(SxpMidiData* data, EVERSION version = kPluginApiVersion);   // -1
int32_t SX_GetStavioPathMac(EFSSPEC* folder, EVERSION version = kPluginApiVersion);    // 0
int32_t SX_KillTimer(EDLG dialog, int32_t timerId, EVERSION version);                  // nothing
int32_t SX_GetCurERegions(EREGION* selection, EREGION* document, EVERSION version = kPluginApiVersion);
int32_t SX_RedrawMusic(EVERSION version = kPluginApiVersion);
// Document and window calls of newer hosts that the groove command does not need; each answers
// 0 (or does nothing) on a host without the slot.
int32_t SX_SetCurERegionMac(const EREGION* region, EVERSION version = kPluginApiVersion);
int32_t SX_GetCurrentOrmegaDocument(EVERSION version = kPluginApiVersion);
int32_t SX_SetCurrentOrmegaDocument(int32_t document, EVERSION version = kPluginApiVersion);
int32_t SX_GetNextOrmegaDocument(int32_t document, EVERSION version = kPluginApiVersion);
int32_t SX_GetDocumentPathMac(EFSSPEC* file, EVERSION version = kPluginApiVersion);
int32_t SX_RebuildMenuSystem(EVERSION version = kPluginApiVersion);
int32_t SX_EnableBusyDetection(int32_t enable, EVERSION version = kPluginApiVersion);
int32_t SX_IsOrmegaDocumentDirty(EVERSION version = kPluginApiVersion);
int32_t SX_DeleteMidiExpressions(const EREGION* region, EVERSION version = kPluginApiVersion);
int32_t SX_DeleteTempoRecords(const EREGION* region, EVERSION version = kPluginApiVersion);
int32_t SX_GetWindowCount(EVERSION version = kPluginApiVersion);
int32_t SX_GetCurrentWindow(EVERSION version = kPluginApiVersion);
int32_t SX_CloseCurrentDocumentWindow(EVERSION version = kPluginApiVersion);

// ---- Edit brackets -------------------------------------------------------------------------------
// Start always counts, even when the host cannot open a bracket; End and Cancel never take the
// depth below 0, and an End without a Start answers 1 without reaching the host.
int32_t SX_StartStavioEdit(const char* undoName, EVERSION version = kPluginApiVersion);
int32_t SX_EndStavioEdit(EVERSION version = kPluginApiVersion);
void SX_CancelStavioEdit(EVERSION version = kPluginApiVersion);

// ---- Version-gated with a platform fallback: the host is asked only when the caller's version is
// above 0x0b01ffff and the slot (read once, on the first call) is filled -------------------------------------------------------
int32_t SX_ShowHideDlgItem(EDLG dialog, int32_t item, int32_t show, EVERSION version);
ECONTROL SX_GetDlgCntl(EDLG dialog, int32_t item, EVERSION version);

// ---- Missing API told to the user ----------------------------------------------------------------
// Tells the user when the host has no chord analysis and answers 0. The version passed on is at
// least 0x0b000000.
int32_t SX_AnalyzeChord(const EREGION* region, char* result, int32_t capacity, EVERSION version);
