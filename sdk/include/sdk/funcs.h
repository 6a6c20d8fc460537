// The host function table (StavioFuncs), the plug-in's reply (SXPluginFuncs), the signatures
// of host functions and plug-in entry points, and the dialog protocol's message numbers.
//
// 64-bit layout: `size` and `version` are 32-bit, then 104 pointer-sized slots in the host's
// order (slot 2 is SX_LoadQVF ... slot 105 is SX_GetDlgCntl). `size` is sizeof this build's
// table. A slot holding null means "this host does not offer the function".
#pragma once

#include "sdk/frames.h"

extern "C" {

// ---- Dialogs ---------------------------------------------------------------------------------

// The handler the host calls for every message of a plug-in dialog. `userFlags` is the flags
// pointer given to SX_Dialog.
typedef int32_t (*SXDialogHandler)(EDLG dialog, uint32_t message, intptr_t wParam, intptr_t lParam, void* userFlags);

// What SX_Dialog receives as its handler: the handler itself for a host that reports
// SX_IsMachO, otherwise an old-style transition vector whose first word is the handler.
struct SXTransitionVector {
    SXDialogHandler code;
    void* toc;   // always null
};
typedef void* SXDialogHandlerRef;

constexpr uint32_t kDlgMsgClose = 0x02;
constexpr uint32_t kDlgMsgPaint = 0x0F;
constexpr uint32_t kDlgMsgCloseRequest = 0x10;
constexpr uint32_t kDlgMsgInit = 0x110;
constexpr uint32_t kDlgMsgCommand = 0x111;     // wParam = item number
constexpr uint32_t kDlgMsgTimer = 0x113;       // wParam = timer id
constexpr uint32_t kDlgMsgMouseDown = 0x201;   // wParam = x, lParam = y; modifiers in the high bits of lParam

constexpr int32_t kAlertStop = 16;
constexpr int32_t kAlertQuestion = 36;   // Yes/No; kAlertAnswerYes means Yes
constexpr int32_t kAlertWarning = 48;
constexpr int32_t kAlertAnswerYes = 6;
constexpr int32_t kAlertAnswerNo = 7;
constexpr int32_t kAlertAnswerOk = 1;

// ---- Host function signatures (slots the plug-in calls) -------------------------------------

typedef void (*SXProc)();   // a slot this plug-in never calls

typedef EXQVF2005a* (*SXLoadQVFProc)(int16_t IUlist, int16_t slot, int16_t meas, int16_t layer, int32_t flags,
                                     EVERSION version);
typedef int32_t (*SXSaveQVFProc)(EXQVF2005a* frame, EVERSION version);
typedef void (*SXFreeQVFProc)(EXQVF2005a* frame, EVERSION version);
typedef int32_t (*SXInsertEXENTRYProc)(EXQVF2005a* frame, int32_t index, int32_t count, EVERSION version);
typedef int32_t (*SXDeleteEXENTRYProc)(EXQVF2005a* frame, int32_t index, int32_t count, EVERSION version);

typedef int32_t (*SXLoadEDataProc)(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version);
typedef int32_t (*SXSaveEDataProc)(EXTAG tag, const EDataID* key, const void* buffer, int32_t size, EVERSION version);
typedef int32_t (*SXCreateEDataProc)(EXTAG tag, EDataID* key, const void* buffer, int32_t size, EVERSION version);
typedef int32_t (*SXDeleteEDataProc)(EXTAG tag, const EDataID* key, EVERSION version);
typedef int32_t (*SXStepEDataProc)(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version);

typedef int32_t (*SXDialogProc)(int32_t dialogId, SXDialogHandlerRef handler, void* userData, int32_t modal,
                                uint32_t* flags, EVERSION version);
typedef int32_t (*SXEndDialogProc)(EDLG dialog, int32_t result, EVERSION version);
typedef int32_t (*SXGetDlgValProc)(EDLG dialog, int32_t item, EVERSION version);
typedef int32_t (*SXSetDlgValProc)(EDLG dialog, int32_t item, int32_t value, EVERSION version);
typedef int32_t (*SXEnableDlgItemProc)(EDLG dialog, int32_t item, int32_t enable, EVERSION version);
typedef int32_t (*SXShowHideDlgItemProc)(EDLG dialog, int32_t item, int32_t show, EVERSION version);
typedef ECONTROL (*SXGetDlgCntlProc)(EDLG dialog, int32_t item, EVERSION version);
typedef int32_t (*SXSetTimerProc)(EDLG dialog, int32_t timerId, int32_t period, EVERSION version);
typedef int32_t (*SXKillTimerProc)(EDLG dialog, int32_t timerId, EVERSION version);

typedef int32_t (*SXSlotToInstProc)(int32_t slot, int32_t IUlist, EVERSION version);
typedef int32_t (*SXInstToSlotProc)(int32_t inst, int32_t IUlist, EVERSION version);
typedef int32_t (*SXGetCurERegionsProc)(EREGION* selection, EREGION* document, EVERSION version);
typedef int32_t (*SXFontNumToNameProc)(int16_t fontNum, char* name, int32_t capacity, EVERSION version);
typedef int16_t (*SXFontNameToNumProc)(const char* name, EVERSION version);
typedef int32_t (*SXRedrawMusicProc)(EVERSION version);
typedef int32_t (*SXNoteToMidiProc)(const EXNOTE* note, int32_t keySignature, EVERSION version);
typedef TIME_EDU (*SXGetMeasureDurationProc)(int32_t IUlist, int32_t meas, EVERSION version);
typedef int32_t (*SXMassEditProc)(EVERSION version);
typedef int32_t (*SXAlertMessageProc)(EWND owner, int32_t style, int32_t stringId, const char* text, EVERSION version);
typedef int32_t (*SXGetStavioPathProc)(EFSSPEC* folder, EVERSION version);
typedef int32_t (*SXStartStavioEditProc)(const char* undoName, EVERSION version);
typedef int32_t (*SXEndStavioEditProc)(EVERSION version);
typedef void (*SXCancelStavioEditProc)(EVERSION version);
typedef int32_t (*SXVersionQueryProc)(EVERSION version);   // SX_IsMachO, SX_GetMaxLayers
typedef int32_t (*SXProcessMidiDataProc)(SxpMidiData* data, EVERSION version);
typedef int32_t (*SXAnalyzeChordProc)(const EREGION* region, char* result, int32_t capacity, EVERSION version);

// ---- The table -------------------------------------------------------------------------------

struct StavioFuncs {
    uint32_t size;
    uint32_t version;
    SXLoadQVFProc SX_LoadQVF;                         //  2
    SXSaveQVFProc SX_SaveQVF;                         //  3
    SXFreeQVFProc SX_FreeQVF;                         //  4
    SXInsertEXENTRYProc SX_InsertEXENTRY;             //  5
    SXDeleteEXENTRYProc SX_DeleteEXENTRY;             //  6
    SXProc SX_RebeamRegion;                           //  7
    SXProc SX_RebarRegion;                            //  8
    SXLoadEDataProc SX_LoadEData;                     //  9
    SXSaveEDataProc SX_SaveEData;                     // 10
    SXCreateEDataProc SX_CreateEData;                 // 11
    SXDeleteEDataProc SX_DeleteEData;                 // 12
    SXStepEDataProc SX_PreviousEData;                 // 13
    SXStepEDataProc SX_NextEData;                     // 14
    SXDialogProc SX_Dialog;                           // 15
    SXEndDialogProc SX_EndDialog;                     // 16
    SXGetDlgValProc SX_GetDlgCntlVal;                 // 17
    SXSetDlgValProc SX_SetDlgCntlVal;                 // 18
    SXSlotToInstProc SX_SlotToInst;                   // 19
    SXInstToSlotProc SX_InstToSlot;                   // 20
    SXProc SX_ScrollTo;                               // 21
    SXProc SX_ListenToMidi;                           // 22
    SXProc SX_Playback;                               // 23
    SXGetCurERegionsProc SX_GetCurERegions;           // 24
    SXFontNumToNameProc SX_FontNumToName;             // 25
    SXFontNameToNumProc SX_FontNameToNum;             // 26
    SXRedrawMusicProc SX_RedrawMusic;                 // 27
    SXProc SX_CopyMidi;                               // 28
    SXProc SX_PasteMidi;                              // 29
    SXNoteToMidiProc SX_NoteToMidi;                   // 30
    SXProc SX_NoteMover;                              // 31
    SXProc SX_SelectNote;                             // 32
    SXProc SX_GetKeySig;                              // 33
    SXSetTimerProc SX_SetTimer;                       // 34
    SXEnableDlgItemProc SX_EnableDlgItem;             // 35
    SXProc SX_SetDlgFocus;                            // 36
    SXProc SX_MidiNoteToString;                       // 37
    SXProc SX_StringToMidiNote;                       // 38
    SXProc SX_GetDlgItemUser;                         // 39
    SXProc SX_SetDlgItemUser;                         // 40
    SXProc SX_GetSyllable;                            // 41
    SXProc SX_ParseCaretCommand;                      // 42
    SXProc SX_UpdateLayout;                           // 43
    SXProc SX_GetEntryMetrics;                        // 44
    SXProc SX_GetQVFEntryMetrics;                     // 45
    SXProc SX_FontDialog;                             // 46
    SXProc SX_SymbolDialog;                           // 47
    SXProc SX_SelectionDialog;                        // 48
    SXProc SX_SyllableInfo;                           // 49
    SXGetMeasureDurationProc SX_GetMeasureDuration;   // 50
    SXProc SX_GetQVFDuration;                         // 51
    SXProc SX_ReduceEntries;                          // 52
    SXMassEditProc SX_StartMassEdit;                  // 53
    SXMassEditProc SX_EndMassEdit;                    // 54
    SXProc SX_MassEditProgress;                       // 55
    SXAlertMessageProc SX_AlertMessage;               // 56
    SXGetDlgValProc SX_GetDlgItemVal;                 // 57
    SXSetDlgValProc SX_SetDlgItemVal;                 // 58
    SXProc SX_GetDlgString;                           // 59
    SXProc SX_SetDlgString;                           // 60
    SXProc SX_GetShowLayer;                           // 61
    SXProc unnamedQuery62;                            // 62: a host query this plug-in never calls
    SXProc SX_SetCurERegionMac;                       // 63
    SXProc SX_SetCurrentOrmegaDocument;               // 64
    SXProc SX_GetCurrentOrmegaDocument;               // 65
    SXProc SX_GetNextOrmegaDocument;                  // 66
    SXGetStavioPathProc SX_GetStavioPathMac;          // 67
    SXStartStavioEditProc SX_StartStavioEdit;         // 68
    SXEndStavioEditProc SX_EndStavioEdit;             // 69
    SXCancelStavioEditProc SX_CancelStavioEdit;       // 70
    SXProc SX_GetDocumentPathMac;                     // 71
    SXProc SX_SelectExpressionDialog;                 // 72
    SXProc SX_MassMoverMac;                           // 73
    SXProc SX_RebuildMenuSystem;                      // 74
    SXProc SX_EnableBusyDetection;                    // 75
    SXProc SX_ExecuteMenuItem;                        // 76
    SXProc reserved1;                                 // 77
    SXProc reserved2;                                 // 78
    SXProc SX_NewOrmegaDocument;                      // 79
    SXProc SX_CloseOrmegaDocument;                    // 80
    SXProc SX_IsOrmegaDocumentDirty;                  // 81
    SXProc SX_SetOrmegaDocumentDirty;                 // 82: never resolved by name
    SXProc SX_GetPrintSettings;                       // 83
    SXProc SX_PrintCurrentDocument;                   // 84
    SXProc SX_PrintDocument;                          // 85
    SXProc SX_PrintDocuments;                         // 86
    SXProc SX_OpenDocument;                           // 87
    SXProc SX_SaveDocument;                           // 88
    SXVersionQueryProc SX_IsMachO;                    // 89
    SXVersionQueryProc SX_GetMaxLayers;               // 90
    SXProcessMidiDataProc SX_ProcessMidiData;         // 91
    SXProc SX_DeleteMidiExpressions;                  // 92
    SXProc SX_DeleteTempoRecords;                     // 93
    SXProc SX_GetWindowCount;                         // 94
    SXProc SX_GetWindowInfoList;                      // 95
    SXProc SX_GetCurrentWindowInfo;                   // 96
    SXProc SX_GetCurrentWindow;                       // 97
    SXProc SX_SetCurrentWindow;                       // 98
    SXProc SX_CloseCurrentDocumentWindow;             // 99
    SXKillTimerProc SX_KillTimer;                     // 100
    SXAnalyzeChordProc SX_AnalyzeChord;               // 101
    SXProc SX_InsertMeasures;                         // 102
    SXProc SX_DeleteMeasures;                         // 103
    SXShowHideDlgItemProc SX_ShowHideDlgItem;         // 104
    SXGetDlgCntlProc SX_GetDlgCntl;                   // 105
};

constexpr int kFirstFunctionSlot = 2;
constexpr int kLastFunctionSlot = 105;
constexpr int kFunctionSlotCount = kLastFunctionSlot - kFirstFunctionSlot + 1;   // 104

constexpr size_t SlotOffset(int slot)
{
    return 2 * sizeof(uint32_t) + static_cast<size_t>(slot - kFirstFunctionSlot) * sizeof(void*);
}
static_assert(offsetof(StavioFuncs, SX_LoadQVF) == SlotOffset(2), "slot 2");
static_assert(offsetof(StavioFuncs, SX_LoadEData) == SlotOffset(9), "slot 9");
static_assert(offsetof(StavioFuncs, SX_AlertMessage) == SlotOffset(56), "slot 56");
static_assert(offsetof(StavioFuncs, SX_GetStavioPathMac) == SlotOffset(67), "slot 67");
static_assert(offsetof(StavioFuncs, SX_IsMachO) == SlotOffset(89), "slot 89");
static_assert(offsetof(StavioFuncs, SX_KillTimer) == SlotOffset(100), "slot 100");
static_assert(offsetof(StavioFuncs, SX_GetDlgCntl) == SlotOffset(105), "slot 105");
static_assert(sizeof(StavioFuncs) == SlotOffset(106), "104 slots after size and version");

// ---- The plug-in's reply and entry points -----------------------------------------------------

#pragma pack(push, 2)
struct SXT_MENUSTRING_PACKET {
    char menuItem[64];
    char msgString[64];
    char undoString[64];
    int16_t needSelectedRegion;
    int16_t useGetMenuStatus;
    int16_t launchable;
    int16_t canTerminateAfterInvoke;
    int16_t canTerminateAfterLastDialog;
    uint32_t flags;
};
static_assert(sizeof(SXT_MENUSTRING_PACKET) == 206, "SXT_MENUSTRING_PACKET is 206 bytes");
#pragma pack(pop)

typedef uint32_t (*SXGetVersionEntry)(uint32_t hostVersion);
typedef int32_t (*SXInitEntry)(EWND window, uint32_t* flags);
typedef int32_t (*SXEnumerateEntry)(void* unused, int32_t menuIndex, SXT_MENUSTRING_PACKET* packet);
typedef int32_t (*SXInvokeEntry)(EWND window, uint32_t unused, const EREGION* selection, const EREGION* document);
typedef void (*SXTerminateEntry)();
typedef int32_t (*SXGetMenuStatusEntry)(void* unused);

struct SXPluginFuncs {
    uint32_t size;
    uint32_t version;
    SXGetVersionEntry fpGetversion;
    SXInitEntry fpInit;
    SXEnumerateEntry fpEnumerate;
    SXInvokeEntry fpInvoke;
    SXTerminateEntry fpTerminate;
    SXGetMenuStatusEntry fpGetMenuStatus;
};

// The bundle's main entry, looked up as "main" in the loaded module.
typedef int32_t (*SXMainEntry)(StavioFuncs* hostFuncs, SXPluginFuncs* reply);

}   // extern "C"

// Host versions at which the table's rules change.
constexpr uint32_t kHostVersionNamePath = 0x09000000;      // from here on the plug-in looks functions up by name
constexpr uint32_t kPluginInterfaceVersion = 0x09000000;   // answered by StavioExtensionVersion
