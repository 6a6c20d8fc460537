// Staff styles and their assignments over a region: the tests that recognise a slash style,
// cutting slash assignments back so that none overlaps a region, and storing a staff's
// assignments in order of their start.
#pragma once

#include "sdk/records.h"
#include "tamberlyne/score/meas_ranges.h"

// What marks a slash style; the values are the host's.
constexpr uint16_t kSlashStyleAltFlag = 0x7101;
constexpr uint16_t kSlashStyleMask2 = 0x1000;

// A style that turns on slash notation (it may change other things too).
bool IsSlashStaffStyle(EDTStaffStyle2003 style);
// A style that changes nothing but the slash setting.
bool IsExclusiveSlashStaffStyle(EDTStaffStyle2003 style);

// Deletes, splits or trims the slash-style assignments of the region's staves so that none
// overlaps the region; with `exclusiveOnly` only styles that do nothing else are touched. A
// region that ends within one EDU of its last measure's end is widened to the measure's end, in
// the caller's region too. True when an assignment changed.
bool RemoveSlashStaffStyles(EREGION& region, bool exclusiveOnly);

// Orders assignments by their start point only.
bool EDTStaffStyleAssignLessThan(const EDTStaffStyleAssign& a, const EDTStaffStyleAssign& b);

// Stores the assignments of every staff of the region in order of their start.
bool SortStaffStyles(const EREGION& region);
