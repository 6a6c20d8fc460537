#include "tamberlyne/score/slash_notation.h"

#include "sdk/tags.h"
#include "tamberlyne/host/entry_frames.h"
#include "tamberlyne/host/gateway.h"
#include "tamberlyne/host/typed_records.h"
#include "tamberlyne/score/beat_rule.h"
#include "tamberlyne/score/measure_record.h"
#include "tamberlyne/score/staff_styles.h"

#include <cstring>

const char kSlashStyleName[] = "Quillodeon Slash Notation";

namespace {

constexpr int kFirstStyle = 1;
constexpr int kLastStyle = 999;
constexpr uint16_t kSlashStyleSfflag = 1;
constexpr int16_t kFirstLayer = 0;

}   // namespace

TAddSlashNotation::TAddSlashNotation(const EREGION* region) : SelRegion(*region)
{}

bool TAddSlashNotation::Run()
{
    if (!CheckRegion()) {
        return false;
    }
    FillWithRests();
    RemoveSlashStaffStyles(SelRegion, true);
    ApplyStaffStyle();
    SortStaffStyles(SelRegion);
    return true;
}

bool TAddSlashNotation::CheckRegion()
{
    return true;
}

// Whole measures are filled, whatever positions the region has at its edges.
bool TAddSlashNotation::FillWithRests()
{
    FrameDetail detail;
    for (int meas = SelRegion.start.meas; meas <= SelRegion.end.meas; ++meas) {
        EDTMeasureSpec2005 spec;
        if (!LoadMeasureSpec(meas, spec)) {
            return false;
        }
        for (int slot = SelRegion.start.IUslot; slot <= SelRegion.end.IUslot; ++slot) {
            const int inst = SX_SlotToInst(slot, SelRegion.start.IUlist);
            if (inst <= 0) {
                continue;
            }
            detail.Load(inst, meas);
            // Music in any layer keeps the measure as it is.
            if (detail.FrameSum(0, FrameDetail::kLayersExamined) == 0) {
                FillMeasureWithRests(inst, SelRegion.start.IUlist, slot, meas, spec);
            }
        }
    }
    return true;
}

bool TAddSlashNotation::FillMeasureWithRests(int /*inst*/, int IUlist, int slot, int meas,
                                             const EDTMeasureSpec2005& spec)
{
    LoadedFrame frame(static_cast<int16_t>(IUlist), static_cast<int16_t>(slot), static_cast<int16_t>(meas),
                      kFirstLayer);
    if (!frame) {
        return true;
    }
    const BeatRule rule = AddingBeatRule(spec);
    for (int beat = 0; beat < rule.beats; ++beat) {
        if (!AddARest(frame.get(), rule.divbeat)) {
            break;
        }
    }
    frame.Save();
    return true;
}

int TAddSlashNotation::FindOrMakeStaffStyle()
{
    for (int cmper = kFirstStyle; cmper <= kLastStyle; ++cmper) {
        EDTStaffStyle2003 style{};
        if (sx_loadother(kTagStaffStyle, cmper, 0, &style, sizeof(style), kPluginApiVersion) &&
            IsExclusiveSlashStaffStyle(style)) {
            return cmper;
        }
    }
    EDTStaffStyle2003 style{};
    style.altFlag = kSlashStyleAltFlag;
    style.mask2 = kSlashStyleMask2;
    style.sfflag = kSlashStyleSfflag;
    static_assert(sizeof(kSlashStyleName) <= sizeof(style.styleName), "the style name fits");
    std::memcpy(style.styleName, kSlashStyleName, sizeof(kSlashStyleName));
    int cmper = kNewRecordNumber;
    int inci = 0;
    sx_createother(kTagStaffStyle, cmper, inci, &style, sizeof(style), kPluginApiVersion);
    return cmper;
}

bool TAddSlashNotation::ApplyStaffStyle()
{
    EDTStaffStyleAssign assignment{};
    assignment.style = static_cast<int16_t>(FindOrMakeStaffStyle());
    assignment.range.start = EXMEASPOINT{static_cast<int16_t>(SelRegion.start.meas), SelRegion.start.duraPos};
    assignment.range.end = EXMEASPOINT{static_cast<int16_t>(SelRegion.end.meas), SelRegion.end.duraPos};
    // A slot without a staff is not skipped: the host refuses that record itself.
    for (int slot = SelRegion.start.IUslot; slot <= SelRegion.end.IUslot; ++slot) {
        int inst = SX_SlotToInst(slot, SelRegion.start.IUlist);
        int inci = kAppendIncidence;
        sx_createother(kTagStaffStyleAssign, inst, inci, &assignment, sizeof(assignment), kPluginApiVersion);
    }
    return true;
}

bool TAddSlashNotation::AddARest(EXQVF2005a* frame, int duration)
{
    const int16_t index = frame->numEntries;
    SX_InsertEXENTRY(frame, index, 1);
    if (frame->pent == nullptr || frame->numEntries <= index) {
        return false;
    }
    EXENTRY& rest = frame->pent[index];
    rest.dura = static_cast<int16_t>(duration);
    rest.actdur = duration;
    if (index > 0) {
        // The first entry keeps the start the host gave it.
        const EXENTRY& previous = frame->pent[index - 1];
        rest.elldur = previous.elldur + previous.actdur;
    }
    rest.ef = kSlashRestFlags;
    return true;
}
