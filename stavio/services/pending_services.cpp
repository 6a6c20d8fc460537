// Host functions this host does not offer yet: each answers failure and touches nothing.
#include "stavio/services/exported_functions.h"

extern "C" {

EXQVF2005a* SX_LoadQVF(int16_t, int16_t, int16_t, int16_t, int32_t, EVERSION) { return nullptr; }
int32_t SX_SaveQVF(EXQVF2005a*, EVERSION) { return 0; }
void SX_FreeQVF(EXQVF2005a*, EVERSION) {}
int32_t SX_InsertEXENTRY(EXQVF2005a*, int32_t, int32_t, EVERSION) { return 0; }
int32_t SX_DeleteEXENTRY(EXQVF2005a*, int32_t, int32_t, EVERSION) { return 0; }

int32_t SX_FontNumToName(int16_t, char* name, int32_t capacity, EVERSION)
{
    if (name != nullptr && capacity > 0) {
        name[0] = '\0';
    }
    return 0;
}
int16_t SX_FontNameToNum(const char*, EVERSION) { return 0; }

int32_t SX_StartMassEdit(EVERSION) { return 0; }
int32_t SX_EndMassEdit(EVERSION) { return 0; }
int32_t SX_ProcessMidiData(SxpMidiData*, EVERSION) { return -1; }

int32_t SX_AnalyzeChord(const EREGION*, char* result, int32_t capacity, EVERSION)
{
    if (result != nullptr && capacity > 0) {
        result[0] = '\0';
    }
    return 0;
}

#define STAVIO_DEFINE_UNTYPED_SLOT(name) \
    int32_t name() { return 0; }
STAVIO_UNTYPED_SLOTS(STAVIO_DEFINE_UNTYPED_SLOT)
#undef STAVIO_DEFINE_UNTYPED_SLOT

}  // extern "C"
