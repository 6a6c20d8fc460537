#include "tamberlyne/plugin/groove_shape.h"

#include "tamberlyne/platform/durations.h"

#include <algorithm>

namespace {

constexpr int64_t kFillThresholdPercent = 70;

}   // namespace

int32_t TrimTrailingFill(int32_t lastnotebar, int32_t lastnotetickinbar, int32_t ticksPerMeasure)
{
    if (ticksPerMeasure <= 0 || lastnotebar <= 1) {
        return lastnotebar;
    }
    const int64_t percentOfBar = int64_t{lastnotetickinbar} * 100 / ticksPerMeasure;
    return percentOfBar < kFillThresholdPercent ? lastnotebar - 1 : lastnotebar;
}

bool GrooveMeterFits(const EDTMeasureSpec& FirstMeasure, const LEventRec& Meter, int32_t TPQ)
{
    if (TPQ <= 0) {
        return false;
    }
    int64_t ourbeats = FirstMeasure.beats;
    const int64_t ourMeasEDUlen = int64_t{FirstMeasure.beats} * FirstMeasure.divbeat;
    const int64_t midiMeasEDUlen = int64_t{Meter.TPM} * kEduPerQuarter / TPQ;
    int64_t midibeats = Meter.BPM;
    if (ourbeats != midibeats) {
        if (FirstMeasure.divbeat == DotsBase(FirstMeasure.divbeat)) {
            if (ourbeats == 2 * midibeats || 2 * ourbeats == midibeats) {
                midibeats = ourbeats;
            }
        } else {
            ourbeats *= 3;
        }
    }
    return ourMeasEDUlen == midiMeasEDUlen && ourbeats == midibeats;
}

int32_t ImportLoops(int32_t firstMeas, int32_t lastMeas, int32_t grooveBars)
{
    if (grooveBars <= 0) {
        return 1;
    }
    return std::max<int32_t>(1, (lastMeas - firstMeas + grooveBars) / grooveBars);
}
