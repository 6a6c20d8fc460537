#include "tamberlyne/host/host_function_names.h"

#include "sdk/funcs.h"

namespace {

// Slot 2 first. The 103 names of the host's exports in table order; slot 82 has none.
// Slots 77 and 78 are reserved words of the table: their names are kept for completeness,
// start-up never looks them up.
constexpr const char* kNames[kFunctionSlotCount] = {
    "SX_LoadQVF",                      //   2
    "SX_SaveQVF",                      //   3
    "SX_FreeQVF",                      //   4
    "SX_InsertEXENTRY",                //   5
    "SX_DeleteEXENTRY",                //   6
    "SX_RebeamRegion",                 //   7
    "SX_RebarRegion",                  //   8
    "SX_LoadEData",                    //   9
    "SX_SaveEData",                    //  10
    "SX_CreateEData",                  //  11
    "SX_DeleteEData",                  //  12
    "SX_PreviousEData",                //  13
    "SX_NextEData",                    //  14
    "SX_Dialog",                       //  15
    "SX_EndDialog",                    //  16
    "SX_GetDlgCntlVal",                //  17
    "SX_SetDlgCntlVal",                //  18
    "SX_SlotToInst",                   //  19
    "SX_InstToSlot",                   //  20
    "SX_ScrollTo",                     //  21
    "SX_ListenToMidi",                 //  22
    "SX_Playback",                     //  23
    "SX_GetCurERegions",               //  24
    "SX_FontNumToName",                //  25
    "SX_FontNameToNum",                //  26
    "SX_RedrawMusic",                  //  27
    "SX_CopyMidi",                     //  28
    "SX_PasteMidi",                    //  29
    "SX_NoteToMidi",                   //  30
    "SX_NoteMover",                    //  31
    "SX_SelectNote",                   //  32
    "SX_GetKeySig",                    //  33
    "SX_SetTimer",                     //  34
    "SX_EnableDlgItem",                //  35
    "SX_SetDlgFocus",                  //  36
    "SX_MidiNoteToString",             //  37
    "SX_StringToMidiNote",             //  38
    "SX_GetDlgItemUser",               //  39
    "SX_SetDlgItemUser",               //  40
    "SX_GetSyllable",                  //  41
    "SX_ParseCaretCommand",            //  42
    "SX_UpdateLayout",                 //  43
    "SX_GetEntryMetrics",              //  44
    "SX_GetQVFEntryMetrics",           //  45
    "SX_FontDialog",                   //  46
    "SX_SymbolDialog",                 //  47
    "SX_SelectionDialog",              //  48
    "SX_SyllableInfo",                 //  49
    "SX_GetMeasureDuration",           //  50
    "SX_GetQVFDuration",               //  51
    "SX_ReduceEntries",                //  52
    "SX_StartMassEdit",                //  53
    "SX_EndMassEdit",                  //  54
    "SX_MassEditProgress",             //  55
    "SX_AlertMessage",                 //  56
    "SX_GetDlgItemVal",                //  57
    "SX_SetDlgItemVal",                //  58
    "SX_GetDlgString",                 //  59
    "SX_SetDlgString",                 //  60
    "SX_GetShowLayer",                 //  61
    "SX_UnnamedQuery62",               //  62: a host query the plug-in never calls
    "SX_SetCurERegionMac",             //  63
    "SX_SetCurrentOrmegaDocument",     //  64
    "SX_GetCurrentOrmegaDocument",     //  65
    "SX_GetNextOrmegaDocument",        //  66
    "SX_GetStavioPathMac",             //  67
    "SX_StartStavioEdit",              //  68
    "SX_EndStavioEdit",                //  69
    "SX_CancelStavioEdit",             //  70
    "SX_GetDocumentPathMac",           //  71
    "SX_SelectExpressionDialog",       //  72
    "SX_MassMoverMac",                 //  73
    "SX_RebuildMenuSystem",            //  74
    "SX_EnableBusyDetection",          //  75
    "SX_ExecuteMenuItem",              //  76
    "reserved1",                       //  77
    "reserved2",                       //  78
    "SX_NewOrmegaDocument",            //  79
    "SX_CloseOrmegaDocument",          //  80
    "SX_IsOrmegaDocumentDirty",        //  81
    nullptr,                           //  82: no name; stays empty on a host resolved by name
    "SX_GetPrintSettings",             //  83
    "SX_PrintCurrentDocument",         //  84
    "SX_PrintDocument",                //  85
    "SX_PrintDocuments",               //  86
    "SX_OpenDocument",                 //  87
    "SX_SaveDocument",                 //  88
    "SX_IsMachO",                      //  89
    "SX_GetMaxLayers",                 //  90
    "SX_ProcessMidiData",              //  91
    "SX_DeleteMidiExpressions",        //  92
    "SX_DeleteTempoRecords",           //  93
    "SX_GetWindowCount",               //  94
    "SX_GetWindowInfoList",            //  95
    "SX_GetCurrentWindowInfo",         //  96
    "SX_GetCurrentWindow",             //  97
    "SX_SetCurrentWindow",             //  98
    "SX_CloseCurrentDocumentWindow",   //  99
    "SX_KillTimer",                    // 100
    "SX_AnalyzeChord",                 // 101
    "SX_InsertMeasures",               // 102
    "SX_DeleteMeasures",               // 103
    "SX_ShowHideDlgItem",              // 104
    "SX_GetDlgCntl",                   // 105
};

}   // namespace

const char* HostFunctionName(int slot)
{
    if (slot < kFirstFunctionSlot || slot > kLastFunctionSlot) {
        return nullptr;
    }
    return kNames[slot - kFirstFunctionSlot];
}
