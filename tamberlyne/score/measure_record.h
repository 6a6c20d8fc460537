// The measure specification in its full (26-byte) layout, as the score utilities read it.
#pragma once

#include "sdk/tags.h"
#include "tamberlyne/host/typed_records.h"

inline bool LoadMeasureSpec(int meas, EDTMeasureSpec2005& spec)
{
    spec = EDTMeasureSpec2005{};
    return sx_loadother(kTagMeasureSpec, meas, 0, &spec, sizeof(spec), kPluginApiVersion);
}

inline bool SaveMeasureSpec(int meas, const EDTMeasureSpec2005& spec)
{
    return sx_saveother(kTagMeasureSpec, meas, 0, &spec, sizeof(spec), kPluginApiVersion);
}
