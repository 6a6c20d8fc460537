#include "tamberlyne/score/staff_styles.h"

#include "sdk/tags.h"
#include "tamberlyne/host/gateway.h"
#include "tamberlyne/host/typed_records.h"

#include <algorithm>
#include <vector>

namespace {

bool LoadAssignment(int inst, int inci, EDTStaffStyleAssign& assignment)
{
    assignment = EDTStaffStyleAssign{};
    return sx_loadother(kTagStaffStyleAssign, inst, inci, &assignment, sizeof(assignment), kPluginApiVersion);
}

bool SaveAssignment(int inst, int inci, const EDTStaffStyleAssign& assignment)
{
    return sx_saveother(kTagStaffStyleAssign, inst, inci, &assignment, sizeof(assignment), kPluginApiVersion);
}

bool IsStyleToCut(int16_t styleNumber, bool exclusiveOnly)
{
    EDTStaffStyle2003 style{};
    if (!sx_loadother(kTagStaffStyle, styleNumber, 0, &style, sizeof(style), kPluginApiVersion)) {
        return false;
    }
    return exclusiveOnly ? IsExclusiveSlashStaffStyle(style) : IsSlashStaffStyle(style);
}

// A region that ends one EDU short of its last measure's end (or later) runs to the end.
void WidenRegionEnd(EREGION& region)
{
    const int64_t end = region.end.duraPos;
    if (end > 0 && end + 1 >= SX_GetMeasureDuration(0, region.end.meas)) {
        region.end.duraPos = kEndOfMeasure;
    }
}

// Cuts the slash assignments of one staff; true when one changed. After a deletion or a split
// the same incidence is looked at again (the host moves later incidences down; a split's first
// piece is then found outside the region). Should the host refuse the change, the walk moves on
// instead of meeting the same assignment for ever.
bool CutStaffAssignments(int inst, const EREGION& region, bool exclusiveOnly)
{
    bool changed = false;
    int inci = 0;
    EDTStaffStyleAssign assignment;
    while (LoadAssignment(inst, inci, assignment)) {
        if (!IsStyleToCut(assignment.style, exclusiveOnly)) {
            ++inci;
            continue;
        }
        bool atStart = false;
        if (MeasRangeFullyIncluded(assignment.range, region)) {
            changed = true;
            if (!sx_deleteother(kTagStaffStyleAssign, inst, inci)) {
                ++inci;
            }
        } else if (MeasRangeFullyIncluded(region, assignment.range)) {
            changed = true;
            EDTStaffStyleAssign tail = assignment;
            tail.range.start = PointAfterRegion(region);
            assignment.range.end = PointBeforeRegion(region);
            const bool saved = SaveAssignment(inst, inci, assignment);
            int tailInci = kAppendIncidence;
            int tailInst = inst;
            sx_createother(kTagStaffStyleAssign, tailInst, tailInci, &tail, sizeof(tail), kPluginApiVersion);
            if (!saved) {
                ++inci;
            }
        } else if (MeasRangePartiallyIncluded(assignment.range, region, atStart)) {
            if (atStart) {
                assignment.range.end = PointBeforeRegion(region);
            } else {
                assignment.range.start = PointAfterRegion(region);
            }
            SaveAssignment(inst, inci, assignment);
            changed = true;
            ++inci;
        } else {
            ++inci;
        }
    }
    return changed;
}

}   // namespace

bool IsSlashStaffStyle(EDTStaffStyle2003 style)
{
    return style.altFlag == kSlashStyleAltFlag && (style.mask2 & kSlashStyleMask2) != 0;
}

bool IsExclusiveSlashStaffStyle(EDTStaffStyle2003 style)
{
    return style.altFlag == kSlashStyleAltFlag && style.mask1 == 0 && style.mask2 == kSlashStyleMask2 &&
           style.mask3 == 0;
}

bool RemoveSlashStaffStyles(EREGION& region, bool exclusiveOnly)
{
    WidenRegionEnd(region);
    bool changed = false;
    for (int slot = region.start.IUslot; slot <= region.end.IUslot; ++slot) {
        const int inst = SX_SlotToInst(slot, region.start.IUlist);
        if (CutStaffAssignments(inst, region, exclusiveOnly)) {
            changed = true;
        }
    }
    return changed;
}

bool EDTStaffStyleAssignLessThan(const EDTStaffStyleAssign& a, const EDTStaffStyleAssign& b)
{
    if (a.range.start.meas != b.range.start.meas) {
        return a.range.start.meas < b.range.start.meas;
    }
    return a.range.start.edu < b.range.start.edu;
}

bool SortStaffStyles(const EREGION& region)
{
    std::vector<EDTStaffStyleAssign> assignments;
    for (int slot = region.start.IUslot; slot <= region.end.IUslot; ++slot) {
        const int inst = SX_SlotToInst(slot, region.start.IUlist);
        assignments.clear();
        EDTStaffStyleAssign assignment;
        while (LoadAssignment(inst, 0, assignment)) {
            assignments.push_back(assignment);
            if (!sx_deleteother(kTagStaffStyleAssign, inst, 0)) {
                break;
            }
        }
        // Assignments with the same start are equivalent; their order among themselves is open.
        std::sort(assignments.begin(), assignments.end(), EDTStaffStyleAssignLessThan);
        for (size_t k = 0; k < assignments.size(); ++k) {
            SaveAssignment(inst, static_cast<int>(k), assignments[k]);
        }
    }
    return true;
}
