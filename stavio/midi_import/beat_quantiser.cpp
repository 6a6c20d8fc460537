#include "stavio/midi_import/beat_quantiser.h"

#include "sdk/frames.h"
#include "sdk/types.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace stavio::midi_import {

namespace {

constexpr int32_t kSixteenth = kEduPerQuarter / 4;
constexpr int32_t kCoarsestStep = 64;   // a stranger beat than this is not subdivided
constexpr int kTripletSlots = 3;

bool IsDotted(int32_t value)
{
    return value > 0 && value % 3 == 0 && ((value / 3) & (value / 3 - 1)) == 0;
}

bool IsCompound(const TimeSignature& meter)
{
    return meter.denominator >= 8 && meter.numerator >= 6 && meter.numerator % 3 == 0;
}

int32_t StepFor(int32_t beat)
{
    for (int32_t step = kSixteenth; step >= kCoarsestStep; step /= 2) {
        if (beat % step == 0) {
            return step;
        }
    }
    return beat;
}

// (grid point, key) of each hit of a beat.
using PlacedKeys = std::vector<std::pair<int, int>>;

// The hits of each grid point, ascending and distinct, as many as an entry holds.
std::vector<QuantisedBeat::Slot> Collect(PlacedKeys& placed)
{
    std::sort(placed.begin(), placed.end());
    placed.erase(std::unique(placed.begin(), placed.end()), placed.end());
    std::vector<QuantisedBeat::Slot> slots;
    for (const auto& [slot, key] : placed) {
        if (slots.empty() || slots.back().slot != slot) {
            slots.push_back(QuantisedBeat::Slot{slot, {}});
        }
        if (slots.back().keys.size() < static_cast<size_t>(kMaxNotesPerEntry)) {
            slots.back().keys.push_back(key);
        }
    }
    return slots;
}

}   // namespace

MeasureGrid GridFor(int32_t beats, int32_t divbeat, TimeSignature meter)
{
    MeasureGrid grid;
    grid.length = beats * divbeat;
    const bool compound = IsDotted(divbeat) || IsCompound(meter);
    if (IsDotted(divbeat)) {
        grid.beat = divbeat;
    } else if (compound) {
        grid.beat = 3 * 4 * kEduPerQuarter / meter.denominator;
    } else {
        grid.beat = std::min<int32_t>(divbeat, kEduPerQuarter);
    }
    if (grid.length <= 0) {
        grid.length = grid.beat = grid.step = 0;
        grid.tripletBeats = false;
        return grid;
    }
    if (grid.beat <= 0 || grid.length % grid.beat != 0) {
        grid.beat = grid.length;
    }
    grid.step = StepFor(grid.beat);
    grid.tripletBeats = !compound && (grid.beat == kEduPerQuarter || grid.beat == kEduPerQuarter / 2);
    return grid;
}

QuantisedBeat QuantiseBeat(const std::vector<Hit>& hits, const MeasureGrid& grid)
{
    const int64_t beat = grid.beat;
    const int64_t step = grid.step;
    const int64_t straightSlots = beat / step;
    PlacedKeys straight;
    PlacedKeys thirds;
    straight.reserve(hits.size());
    thirds.reserve(grid.tripletBeats ? hits.size() : 0);
    int64_t straightError = 0;   // in EDU x 3, to compare with the thirds exactly
    int64_t tripletError = 0;
    bool offTheBeat = false;   // a hit lands on the second or third third
    for (const Hit& hit : hits) {
        const int64_t r = hit.offset;
        const int64_t k = std::clamp<int64_t>(FloorDiv(2 * r + step, 2 * step), 0, straightSlots - 1);
        straightError += 3 * std::llabs(r - k * step);
        straight.emplace_back(static_cast<int>(k), hit.key);
        if (grid.tripletBeats) {
            const int64_t t = std::clamp<int64_t>(FloorDiv(6 * r + beat, 2 * beat), 0, kTripletSlots - 1);
            tripletError += std::llabs(3 * r - t * beat);
            thirds.emplace_back(static_cast<int>(t), hit.key);
            offTheBeat = offTheBeat || t > 0;
        }
    }
    QuantisedBeat quantised;
    quantised.triplet = grid.tripletBeats && offTheBeat && tripletError < straightError;
    quantised.slots = Collect(quantised.triplet ? thirds : straight);
    return quantised;
}

}   // namespace stavio::midi_import
