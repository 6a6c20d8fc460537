#include "tamberlyne/score/remove_slash_notation.h"

#include "tamberlyne/host/entry_frames.h"
#include "tamberlyne/host/gateway.h"
#include "tamberlyne/score/beat_rule.h"
#include "tamberlyne/score/measure_record.h"
#include "tamberlyne/score/staff_styles.h"

namespace {

constexpr int16_t kFirstLayer = 0;

bool IsBeatRest(const EXENTRY& entry, int divbeat)
{
    return entry.dura == divbeat && entry.actdur == divbeat && entry.numNotes <= 1 && entry.ef == kSlashRestFlags &&
           (entry.xef & ~kSlashRestAllowedXef) == 0;
}

// The first layer holds exactly the beat rests slash notation would have written.
bool HoldsOnlyBeatRests(const EXQVF2005a& frame, const BeatRule& rule)
{
    if (rule.beats <= 0 || frame.numEntries != rule.beats || frame.pent == nullptr) {
        return false;
    }
    for (int16_t i = 0; i < frame.numEntries; ++i) {
        if (!IsBeatRest(frame.pent[i], rule.divbeat)) {
            return false;
        }
    }
    return true;
}

}   // namespace

TRemoveSlashNotation::TRemoveSlashNotation(const EREGION* region) : SelRegion(*region)
{}

bool TRemoveSlashNotation::Run(EWND /*window*/)
{
    if (!RemoveSlashStaffStyles(SelRegion, false)) {
        return true;
    }
    SortStaffStyles(SelRegion);
    RemoveUnneededRests();
    return true;
}

// Only measures the region covers whole are touched.
void TRemoveSlashNotation::RemoveUnneededRests()
{
    int first = SelRegion.start.meas;
    if (SelRegion.start.duraPos != 0) {
        ++first;
    }
    int last = SelRegion.end.meas;
    if (static_cast<int64_t>(SelRegion.end.duraPos) < int64_t{SX_GetMeasureDuration(0, SelRegion.end.meas)} - 1) {
        --last;
    }
    FrameDetail detail;
    for (int meas = first; meas <= last; ++meas) {
        EDTMeasureSpec2005 spec;
        if (!LoadMeasureSpec(meas, spec)) {
            return;
        }
        for (int slot = SelRegion.start.IUslot; slot <= SelRegion.end.IUslot; ++slot) {
            const int inst = SX_SlotToInst(slot, SelRegion.start.IUlist);
            if (inst <= 0) {
                continue;
            }
            detail.Load(inst, meas);
            if (detail.FrameNumber(0) != 0 && detail.FrameSum(1, FrameDetail::kLayersExamined - 1) == 0) {
                RemoveUnneededRests(SelRegion.start.IUlist, slot, meas, 0, spec);
            }
        }
    }
}

bool TRemoveSlashNotation::RemoveUnneededRests(int IUlist, int slot, int meas, int /*unused*/,
                                               const EDTMeasureSpec2005& spec)
{
    LoadedFrame frame(static_cast<int16_t>(IUlist), static_cast<int16_t>(slot), static_cast<int16_t>(meas),
                      kFirstLayer);
    if (frame && HoldsOnlyBeatRests(*frame.get(), RemovingBeatRule(spec))) {
        SX_DeleteEXENTRY(frame.get(), 0, frame->numEntries);
        frame.Save();
    }
    return true;
}
