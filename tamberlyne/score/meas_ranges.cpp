#include "tamberlyne/score/meas_ranges.h"

// Each test is a chain of steps in a fixed order; the first that decides wins. The chains are
// kept as they are (not reduced to point comparisons) because their edge behaviour on unusual
// ranges is what the callers rely on.

bool MeasRangeFullyIncluded(const EXMEASRANGE& range, EREGION region)
{
    if (range.start.meas < region.start.meas) {
        return false;
    }
    if (range.end.meas > region.end.meas) {
        return false;
    }
    if (range.start.meas == region.start.meas && range.start.edu < region.start.duraPos) {
        return false;
    }
    if (range.end.meas != region.end.meas) {
        return true;
    }
    return range.end.edu <= region.end.duraPos;
}

bool MeasRangeFullyIncluded(EREGION region, const EXMEASRANGE& range)
{
    if (region.start.meas < range.start.meas) {
        return false;
    }
    if (region.end.meas > range.end.meas) {
        return false;
    }
    if (region.start.meas == range.start.meas && region.start.duraPos < range.start.edu) {
        return false;
    }
    if (region.end.meas != range.end.meas) {
        return true;
    }
    return region.end.duraPos <= range.end.edu;
}

bool MeasRangePartiallyIncludedAtStart(const EXMEASRANGE& range, EREGION region)
{
    if (range.start.meas > region.start.meas) {
        return false;
    }
    if (range.end.meas > region.end.meas) {
        return false;
    }
    if (range.start.meas == region.start.meas && range.start.edu > region.start.duraPos) {
        return false;
    }
    if (range.end.meas == region.end.meas && range.end.edu > region.end.duraPos) {
        return false;
    }
    if (range.end.meas < region.start.meas) {
        return false;
    }
    if (range.end.meas != region.start.meas) {
        return true;
    }
    return range.end.edu >= region.start.duraPos;
}

bool MeasRangePartiallyIncludedAtEnd(const EXMEASRANGE& range, EREGION region)
{
    if (range.start.meas < region.start.meas) {
        return false;
    }
    if (range.end.meas < region.end.meas) {
        return false;
    }
    if (range.start.meas == region.start.meas && range.start.edu < region.start.duraPos) {
        return false;
    }
    if (range.start.meas > region.end.meas) {
        return false;
    }
    if (range.start.meas == region.end.meas && range.start.edu > region.end.duraPos) {
        return false;
    }
    if (region.end.meas != range.end.meas) {
        return true;
    }
    return range.end.edu >= region.end.duraPos;
}

bool MeasRangePartiallyIncluded(const EXMEASRANGE& range, EREGION region, bool& atStart)
{
    atStart = true;
    if (MeasRangePartiallyIncludedAtStart(range, region)) {
        return true;
    }
    atStart = false;
    return MeasRangePartiallyIncludedAtEnd(range, region);
}

EXMEASPOINT PointBeforeRegion(const EREGION& region)
{
    if (region.start.duraPos == 0) {
        return EXMEASPOINT{static_cast<int16_t>(region.start.meas - 1), kEndOfMeasure};
    }
    return EXMEASPOINT{static_cast<int16_t>(region.start.meas), region.start.duraPos - 1};
}

EXMEASPOINT PointAfterRegion(const EREGION& region)
{
    if (region.end.duraPos == kEndOfMeasure) {
        return EXMEASPOINT{static_cast<int16_t>(region.end.meas + 1), 0};
    }
    return EXMEASPOINT{static_cast<int16_t>(region.end.meas), region.end.duraPos + 1};
}
