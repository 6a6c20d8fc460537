#include "stavio/midi_import/drum_groove.h"

#include "sdk/types.h"

#include <algorithm>

namespace stavio::midi_import {

namespace {

constexpr uint8_t kDrumNoteOn = 0x99;
constexpr int kLargestDenominatorPower = 6;   // x/64

// The first time signature at tick 0, tracks in file order.
TimeSignature InitialMeter(const SmfFile& file)
{
    for (const SmfTrack& track : file.tracks) {
        for (const SmfEvent& event : track.events) {
            if (event.tick > 0) {
                break;
            }
            if (!event.IsMeta(kMetaTimeSignature)) {
                continue;
            }
            const EventData data = file.DataOf(event);
            if (data.size >= 2 && data[0] > 0 && data[1] <= kLargestDenominatorPower) {
                return TimeSignature{data[0], 1 << data[1]};
            }
        }
    }
    return TimeSignature{};
}

}   // namespace

DrumGroove DrumGrooveOf(const SmfFile& file)
{
    DrumGroove groove;
    groove.meter = InitialMeter(file);
    groove.barLength = static_cast<int64_t>(groove.meter.numerator) * 4 * kEduPerQuarter / groove.meter.denominator;
    const int64_t ticksPerQuarter = std::max(1, file.ticksPerQuarter);
    for (const SmfTrack& track : file.tracks) {
        for (const SmfEvent& event : track.events) {
            if (event.status == kDrumNoteOn && event.data2 > 0) {
                groove.onsets.push_back(DrumOnset{event.tick * kEduPerQuarter / ticksPerQuarter, event.data1});
            }
        }
    }
    std::sort(groove.onsets.begin(), groove.onsets.end(),
              [](const DrumOnset& a, const DrumOnset& b) { return a.edu != b.edu ? a.edu < b.edu : a.key < b.key; });
    return groove;
}

}   // namespace stavio::midi_import
