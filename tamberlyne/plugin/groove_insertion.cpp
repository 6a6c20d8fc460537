// The insertion runs in one call from the dialog's OK button, inside the host's edit bracket.
// Everything it allocates (the groove's bytes, the reader, frames, the temporary file) is owned
// by a holder, so every return and every exception gives it back.
#include "tamberlyne/plugin/groove_insertion.h"

#include "sdk/tags.h"
#include "tamberlyne/host/entry_frames.h"
#include "tamberlyne/host/gateway.h"
#include "tamberlyne/host/typed_records.h"
#include "tamberlyne/midi/readmidi.h"
#include "tamberlyne/plugin/groove_file.h"
#include "tamberlyne/plugin/groove_import.h"
#include "tamberlyne/plugin/groove_shape.h"
#include "tamberlyne/plugin/plugin_globals.h"
#include "tamberlyne/plugin/staff_preparation.h"
#include "tamberlyne/score/playback_labels.h"
#include "tamberlyne/score/slash_notation.h"

#include <vector>

namespace {

enum GrooveStyle {
    kDrumStaffStyle = 0,
    kPercussionClefStyle = 1,
    kSlashStyle = 2
};

constexpr uint16_t kNewStaffAltFlag = 0x1700;
constexpr uint16_t kKeptAltFlagBits = 0x9FFE;   // clears 0x6001

void Warn(int32_t alert)
{
    SX_AlertMessage(nullptr, kAlertWarning, alert, nullptr);
}

// The groove as the cleaner leaves it, with what the driver needs to place it.
struct CleanedGroove {
    LEventRec Meter;
    int32_t TPQ = 0;
    bool foundanydrumnotes = false;
    int32_t lastnotebar = 0;
    int32_t lastnotetickinbar = 0;
};

// Only the new staff's look is set outright; an existing staff keeps its own, less the bits
// that would hide the drum notation.
void SetStaffAltFlag(int inst, uint32_t options)
{
    EDTStaffSpec2003 spec{};
    if (!sx_loadother(kTagStaffSpec, inst, 0, &spec, sizeof(spec), kPluginApiVersion)) {
        return;
    }
    spec.altFlag = options != 0 ? kNewStaffAltFlag : static_cast<uint16_t>(spec.altFlag & kKeptAltFlagBits);
    sx_saveother(kTagStaffSpec, inst, 0, &spec, sizeof(spec), kPluginApiVersion);
}

void PrepareStaff(int inst, int16_t clefBeforeImport, uint32_t options)
{
    if (stylenum == kDrumStaffStyle) {
        MakeDrumStyle(inst);
    } else {
        // Slash notation keeps the staff's own clef.
        PutClef(inst, stylenum == kSlashStyle ? clefBeforeImport : kPercussionClef);
    }
    if (stylenum == kSlashStyle) {
        EREGION slashRegion = SelRegion;
        slashRegion.start.IUlist = slashRegion.end.IUlist = 0;
        slashRegion.start.IUslot = slashRegion.end.IUslot = static_cast<uint16_t>(SX_InstToSlot(inst, 0));
        TAddSlashNotation(&slashRegion).Run();
    } else {
        SetStaffAltFlag(inst, options);
    }
    MakeCH10(inst);
    TurnHumanPlaybackOff(inst, SelRegion.start.meas);
    if (SelRegion.end.meas < DocRegion.end.meas) {
        TurnHumanPlaybackOn(inst, SelRegion.end.meas + 1);
    }
}

// Imports the written temporary file over the region and prepares the staff. False when there
// is no target staff (nothing is then changed).
bool FillRegion(uint32_t options, const TMidiRead& MW, int32_t grooveBars, TemporaryMidiFile& temporary)
{
    SxpMidiData MidiFileDescriptor{};
    EREGION DoRegion{};
    if (!ToHostFileSpec(TempFileSpec, MidiFileDescriptor.midiFile) || !ChooseTargetStaff(options, DoRegion)) {
        return false;
    }
    const int inst = SX_SlotToInst(DoRegion.start.IUslot, DoRegion.start.IUlist);
    FrameDetail first_Gfhold;
    first_Gfhold.Load(inst, SelRegion.start.meas);   // the staff's clef from before the import

    ImportRepeatedly(DoRegion, grooveBars, MidiFileDescriptor, MW.remappedany ? MW.PitchReverseMap : nullptr);
    temporary.Delete();
    PrepareStaff(inst, first_Gfhold.record().clef, options);
    return true;
}

bool InsertGroove(uint32_t options)
{
    if (!CheckNoTimeSignatureChanges()) {
        return false;
    }
    if (options == 0 && !CheckOverwritingNotes()) {   // a new staff holds nothing to lose
        return false;
    }

    std::vector<char> inbuffer;
    int32_t fsize = 0;
    if (filenum < 0 || static_cast<size_t>(filenum) >= Files.size() ||
        !ReadGrooveFile(Files[static_cast<size_t>(filenum)], inbuffer, fsize)) {
        Warn(kAlertGrooveUnreadable);
        return false;
    }
    TMidiRead MW(inbuffer.data(), fsize, static_cast<int32_t>(inbuffer.size()));
    CleanedGroove groove;
    if (!MW.CleanMidiFile(DocRegion.end.meas, groove.Meter, groove.TPQ, groove.foundanydrumnotes, groove.lastnotebar,
                          groove.lastnotetickinbar)) {
        return false;   // the reader has told the user what is wrong with the file
    }
    if (!groove.foundanydrumnotes || groove.lastnotebar <= 0) {
        Warn(kAlertNoDrumNotes);
        return false;
    }
    const int32_t grooveBars = TrimTrailingFill(groove.lastnotebar, groove.lastnotetickinbar, groove.Meter.TPM);

    EDTMeasureSpec FirstMeasure{};
    sx_loadmeasurespec(static_cast<int16_t>(SelRegion.start.meas), FirstMeasure);
    if (!GrooveMeterFits(FirstMeasure, groove.Meter, groove.TPQ)) {
        Warn(kAlertMeterMismatch);
        return false;
    }

    // A temporary file that cannot be written leaves the score as it is, yet the command ends
    // as done: the dialog closes as after an insertion.
    TemporaryMidiFile temporary(TempFileSpec);
    if (temporary.Write(MW.Image(), fsize)) {
        if (!FillRegion(options, MW, grooveBars, temporary)) {
            return false;   // no target staff: nothing was changed
        }
    }
    needRefresh = 1;
    return true;
}

}   // namespace

bool DoYourThing(EDLG /*dialog*/, uint32_t* optionsWord)
{
    // Nothing may leave the plug-in as an exception; what was done before one stays done.
    try {
        return InsertGroove(optionsWord != nullptr ? *optionsWord : 0);
    } catch (...) {
        return false;
    }
}
