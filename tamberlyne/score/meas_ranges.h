// Where a staff style assignment's measure range lies against a region. Points are compared as
// (measure, position) pairs; a position of kEndOfMeasure is the measure's end.
#pragma once

#include "sdk/records.h"

// The range lies inside the region.
bool MeasRangeFullyIncluded(const EXMEASRANGE& range, EREGION region);
// The region lies inside the range.
bool MeasRangeFullyIncluded(EREGION region, const EXMEASRANGE& range);
// The range starts at or before the region and ends inside it.
bool MeasRangePartiallyIncludedAtStart(const EXMEASRANGE& range, EREGION region);
// The range starts inside the region and ends at or after its end.
bool MeasRangePartiallyIncludedAtEnd(const EXMEASRANGE& range, EREGION region);
// Either of the two; `atStart` tells which.
bool MeasRangePartiallyIncluded(const EXMEASRANGE& range, EREGION region, bool& atStart);

// The last point before the region: the end of the previous measure when the region starts at
// a measure's beginning.
EXMEASPOINT PointBeforeRegion(const EREGION& region);
// The first point after the region: the next measure's beginning when the region runs to its
// last measure's end.
EXMEASPOINT PointAfterRegion(const EREGION& region);
