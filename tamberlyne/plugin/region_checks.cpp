// The two checks the driver makes on the working region before it reads the groove.
#include "tamberlyne/host/entry_frames.h"
#include "tamberlyne/host/gateway.h"
#include "tamberlyne/host/typed_records.h"
#include "tamberlyne/plugin/groove_insertion.h"
#include "tamberlyne/plugin/plugin_globals.h"

namespace {

EDTMeasureSpec LoadMeasure(int meas)
{
    EDTMeasureSpec spec{};
    sx_loadmeasurespec(static_cast<int16_t>(meas), spec);
    return spec;
}

// A lone rest is no music to lose, but two or more entries count whatever they are.
bool HoldsNotes(const EXQVF2005a& frame)
{
    return frame.numEntries > 1 ||
           (frame.numEntries == 1 && frame.pent != nullptr && (frame.pent[0].ef & kEntryIsNote) != 0);
}

}   // namespace

bool CheckNoTimeSignatureChanges()
{
    const int first = SelRegion.start.meas;
    const int last = SelRegion.end.meas;
    EDTMeasureSpec previous{};
    for (int meas = first; meas <= last; ++meas) {
        const EDTMeasureSpec spec = LoadMeasure(meas);
        if ((spec.auxflag & kMeasureAuxRefused) != 0) {
            SX_AlertMessage(nullptr, kAlertStop, kAlertRefusedMeasure, nullptr);
            return false;
        }
        if (meas > first && (spec.beats != previous.beats || spec.divbeat != previous.divbeat)) {
            SX_AlertMessage(nullptr, kAlertStop, kAlertTimeSignatureChange, nullptr);
            return false;
        }
        previous = spec;
    }
    return true;
}

bool CheckOverwritingNotes()
{
    const int slot = staffnum + 1;
    const int32_t layers = SX_GetMaxLayers();
    for (int meas = SelRegion.start.meas; meas <= SelRegion.end.meas; ++meas) {
        for (int32_t layer = 0; layer < layers; ++layer) {
            const LoadedFrame frame(0, static_cast<int16_t>(slot), static_cast<int16_t>(meas),
                                    static_cast<int16_t>(layer), 0);
            if (frame && HoldsNotes(*frame.get())) {
                return SX_AlertMessage(nullptr, kAlertQuestion, kAlertOverwriteNotes, nullptr) == kAlertAnswerYes;
            }
        }
    }
    return true;
}
