// Cleaning: one or two conversion passes over the image, cutting out the tracks that keep no
// drum messages, and the meter check offered to callers.
#include "tamberlyne/midi/midi_alerts.h"
#include "tamberlyne/midi/midi_arith.h"
#include "tamberlyne/midi/readmidi.h"

namespace {
constexpr int32_t kHighestUnmovedKey = 59;
constexpr uint16_t kMeasureAuxSkipCheck = 0x0040 | 0x0080;
}   // namespace

bool TMidiRead::CleanMidiFile(int32_t /*measurecount*/, LEventRec& Meter, int32_t& _TPQ, bool& foundanydrumnotes,
                              int32_t& lastnotebar, int32_t& lastnotetickinbar)
{
    bool result = DoConversion(foundanydrumnotes, 1);
    if (result && foundanydrumnotes && highestpitchfound > kHighestUnmovedKey) {
        // The second pass reads the image as the first left it: its neutralised messages now
        // count as drum notes of key 0, so remap targets are searched from key 1 upward.
        result = DoConversion(foundanydrumnotes, 2);
        remappedany = true;
    }
    Meter = InitialMeterEvent;
    _TPQ = TPQ;
    lastnotebar = lastdrumnotebar;
    lastnotetickinbar = lastdrumnotetickinbar;
    return result;
}

bool TMidiRead::DoConversion(bool& foundanydrumnotes, int32_t passnum)
{
    struct SettleOnExit {
        TMidiRead& reader;
        ~SettleOnExit() { reader.Image(); }
    } settle{*this};

    InitVariables();
    if (!ReadHeader()) return false;
    foundanydrumnotes = false;
    for (int32_t Track = 1; Track <= TrkCount; ++Track) {
        const int32_t from = inptr;
        bool founddrumnotes = false;
        // Once a drum track is found, later tracks are read as holding no notes to keep.
        if (!LoadTrack(Track, founddrumnotes, !foundanydrumnotes, passnum)) return false;
        if (founddrumnotes) {
            foundanydrumnotes = true;
        } else if (Track > 1) {
            --Track;
            RemoveUpToHereFrom(from);
            --TrkCount;
            outptr = TrkCountIdx;
            WriteWord(static_cast<uint16_t>(TrkCount));
        }
    }
    return !Events.empty();
}

void TMidiRead::CheckTimeSignature(const EDTMeasureSpec& MeasSpec, bool& errorreported, int32_t CurrentBPM,
                                   int32_t CurrentTPB, int32_t /*meas*/)
{
    if ((MeasSpec.auxflag & kMeasureAuxSkipCheck) != 0) return;
    if (errorreported) return;
    // Without ticks per quarter the groove's length is unknown and cannot match.
    const int32_t grooveLength =
        midi_arith::SafeDiv(midi_arith::WrapMul(midi_arith::WrapMul(CurrentBPM, CurrentTPB), 1024), TPQ);
    if (TPQ != 0 && grooveLength == MeasSpec.beats * MeasSpec.divbeat) return;
    errorreported = true;
    Alert(midi_alerts::kTimeSignatureMismatch);
}

void TMidiRead::CheckStop()
{
    if (!Events.empty() && !Events.back().stop) Events.MarkLastAsStop();
}
