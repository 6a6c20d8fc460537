#include "tamberlyne/plugin/groove_import.h"

#include "sdk/tags.h"
#include "tamberlyne/host/entry_frames.h"
#include "tamberlyne/host/gateway.h"
#include "tamberlyne/host/typed_records.h"
#include "tamberlyne/plugin/groove_shape.h"
#include "tamberlyne/plugin/plugin_globals.h"
#include "tamberlyne/score/instruments.h"

#include <algorithm>

namespace {

constexpr int32_t kNewStaffDistance = 250;   // a new staff sits this far below the one above
constexpr int kMaxRespellSteps = 128;        // more than any walk between two MIDI keys takes
constexpr int kMidiKeys = 128;

// Creates a staff and places it below the staff above it; its slot in list 0 (0 when none).
int CreateStaffBelow()
{
    int cmper = kNewRecordNumber;
    int inci = 0;
    if (!sx_createother(kTagStaffSpec, cmper, inci, nullptr, sizeof(EDTStaffSpec2003), kPluginApiVersion)) {
        return 0;
    }
    const int newslot = SX_InstToSlot(cmper, 0);
    if (newslot > 1) {
        TInstruments system(0, true);
        if (static_cast<size_t>(newslot) <= system.data.size()) {
            const size_t index = static_cast<size_t>(newslot) - 1;
            system.data[index].IU.separ = system.data[index - 1].IU.separ - kNewStaffDistance;
        }
        system.SaveSystem(0);
    }
    return newslot;
}

void SetStaff(EREGION& region, int slot)
{
    region.start.IUlist = region.end.IUlist = 0;
    region.start.IUslot = region.end.IUslot = static_cast<uint16_t>(slot);
}

}   // namespace

bool ChooseTargetStaff(uint32_t options, EREGION& DoRegion)
{
    DoRegion = EREGION{};
    const int slot = (options & 1) != 0 ? CreateStaffBelow() : staffnum + 1;
    if (slot <= 0 || slot > 0xFFFF || SX_SlotToInst(slot, 0) <= 0) {
        return false;
    }
    SetStaff(DoRegion, slot);
    DoRegion.start.meas = SelRegion.start.meas;
    DoRegion.end.meas = SelRegion.end.meas;
    DoRegion.start.duraPos = 0;
    DoRegion.end.duraPos = kEndOfMeasure;
    return true;
}

void ImportRepeatedly(EREGION DoRegion, int32_t grooveBars, SxpMidiData& MidiFileDescriptor, const uint8_t* reverseMap)
{
    const int32_t loops = ImportLoops(SelRegion.start.meas, SelRegion.end.meas, grooveBars);
    int32_t first = SelRegion.start.meas;
    for (int32_t loop = 0; loop < loops; ++loop) {
        const int32_t last =
            static_cast<int32_t>(std::min<int64_t>(int64_t{first} + grooveBars - 1, SelRegion.end.meas));
        DoRegion.start.meas = static_cast<uint16_t>(first);
        DoRegion.end.meas = static_cast<uint16_t>(last);
        DoRegion.start.duraPos = 0;
        DoRegion.end.duraPos = kEndOfMeasure;
        MidiFileDescriptor.ereg = DoRegion;
        SX_ProcessMidiData(&MidiFileDescriptor);   // a failed import leaves the measures as they were
        if (reverseMap != nullptr) {
            for (int32_t m = first; m <= last; ++m) {
                LoadedFrame frame(static_cast<int16_t>(DoRegion.start.IUlist),
                                  static_cast<int16_t>(DoRegion.start.IUslot), static_cast<int16_t>(m), 0, 0);
                if (frame) {
                    RespellFrame(frame.get(), reverseMap);
                    frame.Save();
                }
            }
        }
        first = last + 1;
    }
}

void RespellFrame(EXQVF2005a* frame, const uint8_t reverseMap[128])
{
    if (frame == nullptr || frame->pent == nullptr) {
        return;
    }
    for (int16_t e = 0; e < frame->numEntries; ++e) {
        EXENTRY& entry = frame->pent[e];
        if ((entry.ef & kEntryIsNote) == 0 || entry.numNotes <= 0) {
            continue;
        }
        const int notes = std::min<int>(entry.numNotes, kMaxNotesPerEntry);
        for (int n = 0; n < notes; ++n) {
            EXNOTE& note = entry.note[n];
            const int32_t dmidi = SX_NoteToMidi(&note, 0);
            if (dmidi >= 0 && dmidi < kMidiKeys) {
                RespellNote(note, reverseMap[dmidi]);
            }
        }
    }
}

void RespellNote(EXNOTE& note, int32_t mapped)
{
    const int32_t dmidi = SX_NoteToMidi(&note, 0);
    if (mapped <= dmidi) {
        return;
    }
    // Fewer staff steps than the interval can need, so the walk below only ever goes up.
    const int32_t approxtcddiff = (mapped - dmidi) * 7 / 12 - 1;
    if (approxtcddiff > 0) {
        note.tcd = static_cast<int16_t>(note.tcd + approxtcddiff);
    }
    int32_t nowmidi = SX_NoteToMidi(&note, 0);
    for (int step = 0; nowmidi != mapped && step < kMaxRespellSteps; ++step) {
        if (mapped - nowmidi < 2) {
            ++note.alteration;
        } else {
            ++note.tcd;
        }
        nowmidi = SX_NoteToMidi(&note, 0);
    }
}
