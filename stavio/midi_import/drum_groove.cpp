#include "stavio/midi_import/drum_groove.h"

#include "sdk/types.h"

#include <algorithm>

namespace stavio::midi_import {

namespace {

constexpr uint8_t kDrumNoteOn = 0x99;
constexpr int kLargestDenominatorPower = 6;   // x/64
// Far past the last bar a region can have (65,535 measures of 255/1); what lies beyond is
// never imported, and the rest fits an onset's 56 bits.
constexpr int64_t kFurthestEdu = int64_t{1} << 54;

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
    size_t hits = 0;
    for (const SmfTrack& track : file.tracks) {
        hits += static_cast<size_t>(std::count_if(track.events.begin(), track.events.end(), [](const SmfEvent& event) {
            return event.status == kDrumNoteOn && event.data2 > 0;
        }));
    }
    groove.onsets.reserve(hits);
    for (const SmfTrack& track : file.tracks) {
        for (const SmfEvent& event : track.events) {
            if (event.status == kDrumNoteOn && event.data2 > 0) {
                const int64_t edu = int64_t{event.tick} * kEduPerQuarter / ticksPerQuarter;
                if (edu < kFurthestEdu) {
                    groove.onsets.push_back(DrumOnset{edu, static_cast<int8_t>(event.data1)});
                }
            }
        }
    }
    std::sort(groove.onsets.begin(), groove.onsets.end(),
              [](const DrumOnset& a, const DrumOnset& b) { return a.edu != b.edu ? a.edu < b.edu : a.key < b.key; });
    return groove;
}

}   // namespace stavio::midi_import
