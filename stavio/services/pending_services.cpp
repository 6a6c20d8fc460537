// Host functions this host does not offer yet: each answers failure and touches nothing.
#include "stavio/services/exported_functions.h"

extern "C" {

int32_t SX_StartMassEdit(EVERSION)
{
    return 0;
}
int32_t SX_EndMassEdit(EVERSION)
{
    return 0;
}

int32_t SX_AnalyzeChord(const EREGION*, char* result, int32_t capacity, EVERSION)
{
    if (result != nullptr && capacity > 0) {
        result[0] = '\0';
    }
    return 0;
}

#define STAVIO_DEFINE_UNTYPED_SLOT(name)                                                                               \
    int32_t name()                                                                                                     \
    {                                                                                                                  \
        return 0;                                                                                                      \
    }
STAVIO_UNTYPED_SLOTS(STAVIO_DEFINE_UNTYPED_SLOT)
#undef STAVIO_DEFINE_UNTYPED_SLOT

}   // extern "C"
