// The plug-in's global state. One instance, alive as long as the bundle is loaded; what one
// invocation leaves here (the working region, the dialog's choices) stays until overwritten.
#pragma once

#include "sdk/types.h"
#include "toolbox/files.h"

#include <vector>

extern int32_t StavVersion;               // host version handed to the version entry point
extern const char TempFileNameDotMid[];   // "Tamberlyne$$Temp$$File.mid"
extern uint32_t dlgFlags;                 // options word of the dialog call; bit 0: new staff
extern int32_t AtLeastSeconds;            // shared settings the groove command does not use
extern int32_t MaxCueLen;
extern int32_t AbsMaxCueLen;
extern EREGION SelRegion;            // the working region of this invocation
extern EREGION DocRegion;            // the whole document, as the host gave it
extern const EREGION* _pSelRegion;   // the host's selection; null when nothing is selected
extern std::vector<bool> SkipStaves;
extern std::vector<toolbox::FileSpec> Files;   // the groove files listed by the dialog
extern toolbox::FileSpec TempFileSpec;         // where the temporary MIDI file is written
extern int16_t IsOpen;
extern int16_t needRefresh;   // 1 when the score changed: the invocation's result
extern uint32_t initFlag;     // last options word; 0xFFFFFFFF: preference not read yet
extern int32_t filenum;       // chosen groove, index into Files
extern int32_t staffnum;      // chosen target staff, from 0
extern int32_t stylenum;      // 0 drum staff style, 1 percussion clef, 2 slash notation

constexpr uint32_t kInitFlagUnread = 0xFFFFFFFF;
