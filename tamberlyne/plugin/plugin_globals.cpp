#include "tamberlyne/plugin/plugin_globals.h"

int32_t StavVersion = 0;
const char TempFileNameDotMid[] = "Tamberlyne$$Temp$$File.mid";
uint32_t dlgFlags = 0;
int32_t AtLeastSeconds = 20;
int32_t MaxCueLen = 5;
int32_t AbsMaxCueLen = 15;
EREGION SelRegion = {};
EREGION DocRegion = {};
const EREGION* _pSelRegion = nullptr;
std::vector<bool> SkipStaves;
std::vector<toolbox::FileSpec> Files;
toolbox::FileSpec TempFileSpec;
int16_t IsOpen = 0;
int16_t needRefresh = 0;
uint32_t initFlag = kInitFlagUnread;
int32_t filenum = 0;
int32_t staffnum = 0;
int32_t stylenum = 0;
