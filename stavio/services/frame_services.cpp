// Slots 2-6: entry frames, host-allocated copies of one staff-measure-layer each.
#include "stavio/services/exported_functions.h"

using stavio::Host;
using stavio::services::OnCurrentHost;

extern "C" {

// `flags` and `version` change nothing: every frame is the staff-measure-layer itself.
EXQVF2005a* SX_LoadQVF(int16_t IUlist, int16_t slot, int16_t meas, int16_t layer, int32_t, EVERSION)
{
    return OnCurrentHost<EXQVF2005a*>(
        nullptr, [&](Host& host) { return host.Frames().Load(host.document(), IUlist, slot, meas, layer); });
}

int32_t SX_SaveQVF(EXQVF2005a* frame, EVERSION)
{
    return OnCurrentHost<int32_t>(0, [&](Host& host) { return host.Frames().Save(host.document(), frame) ? 1 : 0; });
}

void SX_FreeQVF(EXQVF2005a* frame, EVERSION)
{
    OnCurrentHost<int32_t>(0, [&](Host& host) { return host.Frames().Free(frame) ? 1 : 0; });
}

int32_t SX_InsertEXENTRY(EXQVF2005a* frame, int32_t index, int32_t count, EVERSION)
{
    return OnCurrentHost<int32_t>(0,
                                  [&](Host& host) { return host.Frames().InsertEntries(frame, index, count) ? 1 : 0; });
}

int32_t SX_DeleteEXENTRY(EXQVF2005a* frame, int32_t index, int32_t count, EVERSION)
{
    return OnCurrentHost<int32_t>(0,
                                  [&](Host& host) { return host.Frames().DeleteEntries(frame, index, count) ? 1 : 0; });
}

}   // extern "C"
