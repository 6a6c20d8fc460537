// Reading the header and walking track chunks: musical position, running status, event
// records, and the in-place edits of a track (neutralising, drum key remapping).
#include <algorithm>
#include <cstring>
#include <limits>

#include "tamberlyne/midi/midi_alerts.h"
#include "tamberlyne/midi/midi_arith.h"
#include "tamberlyne/midi/readmidi.h"

using namespace midi_arith;

namespace {
constexpr uint8_t kNeutralStatus = 0x89;   // note off, channel 10
constexpr uint8_t kNeutralKey = 0x00;
constexpr uint8_t kNeutralVelocity = 0x40;
constexpr int32_t kHighestUnmovedKey = 59;
constexpr int32_t kMetaBufSize = 1025;

// 2 raised to `exponent` as a 32-bit number; powers past 2^30 do not fit and come out as
// INT32_MIN, which is what a 32-bit conversion of them gives (and makes the beat length 0).
int32_t PowerOfTwo(uint8_t exponent)
{
    return exponent <= 30 ? (int32_t{1} << exponent) : std::numeric_limits<int32_t>::min();
}

bool IsChunk(const unsigned char (&name)[5], const char* expected)
{
    return std::memcmp(name, expected, 5) == 0;
}
}   // namespace

// The local meter and position of one track walk, and the record being filled.
struct TMidiRead::TrackWalk {
    int32_t CurrentTPB;
    int32_t CurrentTPM;
    int32_t CurrentBPM = 4;
    int32_t CurrentDenominator = 4;
    int32_t CurrentBar = 1;
    int32_t tickinbar = 0;
    bool EventChanged = false;
    LEventRec NewEvent;
    unsigned char MetaBuf[kMetaBufSize] = {};

    explicit TrackWalk(int32_t tpq) : CurrentTPB(tpq), CurrentTPM(WrapMul(4, tpq)) {}
};

void TMidiRead::InitVariables()
{
    TPQ = 1024;
    CurrentLenOffset = 0;
    BytesRead = 0;
    TotalBytesRead = 0;
    inptr = 0;
    readPastEnd_ = false;
    sysexScanBudget_ = int64_t{8} * insize + 65536;
    ClearEvent(SMPTEEvent, 1024, 1, 1, 0);
    ClearEvent(InitialMeterEvent, TPQ, 1, 1, 0);
    InitialMeterEvent.BPM = 4;
    InitialMeterEvent.Denominator = 4;
    ClearEvent(InitialTempoEvent, TPQ, 1, 1, 0);
    InitialTempoEvent.MicsPerBeat = 1000000;
    InitialTempoEvent.Speed = 60.0;
}

// TPB is deliberately left alone: a record keeps the beat length of its previous use.
void TMidiRead::ClearEvent(LEventRec& NewEvent, int32_t CurrentTPB, int32_t EventTick, int32_t CurrentBar,
                           int32_t tickinbar)
{
    NewEvent.Tick = EventTick;
    NewEvent.Bar = CurrentBar;
    NewEvent.tickinbar = tickinbar;
    NewEvent.EDUinbar = SafeDiv(WrapMul(tickinbar, 1024), CurrentTPB);
    NewEvent.Beat = IsMultiple(tickinbar, CurrentTPB) ? WrapAdd(SafeDiv(tickinbar, CurrentTPB), 1) : 0;
    NewEvent.MicsPerBeat = 0;
    NewEvent.Speed = 0.0;
    NewEvent.stop = false;
    NewEvent.BPM = 0;
    NewEvent.TPM = 0;
    NewEvent.Denominator = 0;
    NewEvent.hr = NewEvent.mn = NewEvent.se = NewEvent.fr = NewEvent.ff = 0;
}

bool TMidiRead::ReadHeader()
{
    StartChunk();
    if (!IsChunk(ChunkName, "MThd")) {
        Alert(midi_alerts::kBadHeaderId);
        return false;
    }
    if (ChunkLength <= 5) {
        Alert(midi_alerts::kBadHeaderLength);
        return false;
    }
    if (ChunkLength > 6) Alert(midi_alerts::kLongHeader);
    Format = ReadWord();
    if (Format > 2) {
        Alert(midi_alerts::kBadFormat);
        return false;
    }
    TrkCountIdx = inptr;
    TrkCount = ReadWord();
    if (TrkCount <= 0) {
        Alert(midi_alerts::kNoTracks);
        return false;
    }
    if (Format == 2 && TrkCount > 1) Alert(midi_alerts::kFormat2FirstTrackOnly);
    if (TrkCount > 1 && Format == 0) {
        Alert(midi_alerts::kFormat0OneTrack);
        return false;
    }
    TPQ = ReadWord();
    if (TPQ > 32767) {
        // Time code division: frames per second in the upper byte, taken as it stands.
        int32_t rate = (TPQ >> 8) & 0xFF;
        if (rate == 29) rate = 30;
        if (rate != 24 && rate != 25 && rate != 30) Alert(midi_alerts::kUnusualFrameRate);
        TPQ = (TPQ & 0xFF) * rate;
    }
    TerminateChunk();
    InitialMeterEvent.TPB = TPQ;
    InitialMeterEvent.TPM = 4 * TPQ;
    return true;
}

bool TMidiRead::LoadTrack(int32_t Track, bool& founddrumnotes, bool TrackMayHaveNotes, int32_t passnum)
{
    readPastEnd_ = false;
    StartChunk();
    if (!IsChunk(ChunkName, "MTrk")) {
        Alert(midi_alerts::kBadTrackId);
        return false;
    }
    BytesRead = 0;
    CurrentTick = 0;
    RunningStatus = 0;
    GotOnBeginningEvent = Track > 1;
    GotOnEndingEvent = Track > 1 || ToMeasure == 99999;

    TrackWalk walk(TPQ);
    // A read that finds no byte ends the walk once its event is handled: past the image
    // there is nothing left to parse.
    while (BytesRead < ChunkLength && !readPastEnd_) {
        AdvanceTime(walk, ReadNumber());

        const int32_t StatusIndex = inptr;
        bool UsingRunningStatus = false;
        Status = ReadByte();
        if (Status < 0x80) {
            First = Status;
            if (RunningStatus == 0) {
                Alert(midi_alerts::kRunningStatusUndefined);
                return false;
            }
            Status = RunningStatus;
            UsingRunningStatus = true;
        } else {
            First = ReadByte();
            if (Status <= 0xEF) RunningStatus = Status;
        }

        if (Status == 0xF0) {
            SkipSystemExclusive();
            continue;
        }
        const int32_t databyteidx = inptr;
        const uint8_t kind = Status & 0xF0;
        if (Status != 0xFF && kind != 0xC0 && kind != 0xD0) ReadByte();

        if (Status != 0xFF) {
            if (!HandleChannelMessage(founddrumnotes, TrackMayHaveNotes, passnum, StatusIndex, databyteidx,
                                      UsingRunningStatus, walk))
                return false;
            continue;
        }
        switch (HandleMeta(Track, walk)) {
            case MetaResult::Next: break;
            case MetaResult::EndOfTrack: return true;
            case MetaResult::Fail: return false;
        }
    }

    if (walk.EventChanged) Enqueue(walk.NewEvent);
    ClearEvent(walk.NewEvent, walk.CurrentTPB, CurrentTick, walk.CurrentBar, walk.tickinbar);
    walk.NewEvent.stop = true;
    Enqueue(walk.NewEvent);
    Alert(midi_alerts::kEndOfTrackMissing);
    TerminateChunk();
    return true;
}

// Boundary records first (they take the position before the delta), then the position moves.
void TMidiRead::AdvanceTime(TrackWalk& walk, int32_t delta)
{
    if (delta > 0) {
        // Only whole measures of the delta count here, whatever the tick in the measure.
        const int32_t barAfter = WrapAdd(walk.CurrentBar, SafeDiv(delta, walk.CurrentTPM));
        if (FromMeasure > 1 && !GotOnBeginningEvent && barAfter >= FromMeasure) {
            QueueBoundary(walk, FromMeasure);
            GotOnBeginningEvent = true;
        }
        const int32_t endBar = WrapAdd(ToMeasure, 1);
        if (!GotOnEndingEvent && barAfter >= endBar) {
            QueueBoundary(walk, endBar);
            GotOnEndingEvent = true;
        }
    }
    CurrentTick = WrapAdd(CurrentTick, delta);
    walk.tickinbar = WrapAdd(walk.tickinbar, delta);
    // Whole measures leave the tick in measure; a measure of no ticks never ends.
    if (walk.CurrentTPM > 0 && walk.tickinbar >= walk.CurrentTPM) {
        walk.CurrentBar = WrapAdd(walk.CurrentBar, walk.tickinbar / walk.CurrentTPM);
        walk.tickinbar %= walk.CurrentTPM;
    }
}

// A record at the first tick of `targetBar`, reckoned from the start of the current measure.
void TMidiRead::QueueBoundary(TrackWalk& walk, int32_t targetBar)
{
    if (walk.EventChanged) Enqueue(walk.NewEvent);
    LEventRec& ev = walk.NewEvent;
    ClearEvent(ev, walk.CurrentTPB, CurrentTick, walk.CurrentBar, walk.tickinbar);
    ev.EDUinbar = 0;
    ev.tickinbar = 0;
    ev.BPM = walk.CurrentBPM;
    ev.Denominator = walk.CurrentDenominator;
    ev.TPB = walk.CurrentTPB;
    ev.TPM = walk.CurrentTPM;
    ev.Bar = walk.CurrentBar;
    ev.Tick = WrapSub(CurrentTick, walk.tickinbar);
    const int64_t barsToGo = static_cast<int64_t>(targetBar) - ev.Bar;
    ev.Tick = Wrap(ev.Tick + barsToGo * walk.CurrentTPM);
    ev.Bar = targetBar;
    walk.EventChanged = true;
}

// Four bytes after the length byte are skipped unseen, then everything up to the next 0xF7.
// The scan stops at the end of the image, and a pass's scans together read no more than a
// few times the image: past that, the scan gives up as if the image had ended.
void TMidiRead::SkipSystemExclusive()
{
    unsigned char skipped[4];
    Read(skipped, 4);
    if (readPastEnd_) return;
    const int32_t start = inptr;
    const int32_t limit = static_cast<int32_t>(std::min<int64_t>(insize, start + sysexScanBudget_));
    const int32_t end = image_.Find(start, limit, 0xF7);
    const bool found = end < limit;
    const int32_t consumed = end - start + (found ? 1 : 0);
    sysexScanBudget_ -= consumed;
    BytesRead = SaturatingAdd(BytesRead, consumed);
    TotalBytesRead = SaturatingAdd(TotalBytesRead, consumed);
    inptr = start + consumed;
    if (found) {
        LastByte = 0xF7;
    } else {
        LastByte = 0;
        BytesRead = SaturatingAdd(BytesRead, 1);
        TotalBytesRead = SaturatingAdd(TotalBytesRead, 1);
        ReportReadBeyondEnd();
    }
}

bool TMidiRead::HandleChannelMessage(bool& founddrumnotes, bool TrackMayHaveNotes, int32_t passnum, int32_t StatusIndex,
                                     int32_t databyteidx, bool UsingRunningStatus, const TrackWalk& walk)
{
    if (TrackMayHaveNotes && (Status & 0x0F) == 9) {
        founddrumnotes = true;
        lastdrumnotebar = walk.CurrentBar;
        lastdrumnotetickinbar = walk.tickinbar;
        const uint8_t kind = Status & 0xF0;
        // A "key" of 128 or more is a status byte out of place, not a key: nothing to record.
        if ((kind == 0x80 || kind == 0x90) && First < 128) {
            if (First > highestpitchfound) highestpitchfound = First;
            if (First < lowestpitchfound) lowestpitchfound = First;
            PitchUsed[First] = true;
            if (passnum == 2 && First > kHighestUnmovedKey) RemapDrumKey(StatusIndex, UsingRunningStatus);
        }
        return true;
    }
    if (UsingRunningStatus) return true;
    outptr = StatusIndex;
    WriteByte(static_cast<char>(kNeutralStatus));
    if (inptr == databyteidx && !InsertByte()) return false;
    outptr = StatusIndex + 1;
    Write2Bytes(static_cast<char>(kNeutralKey), static_cast<char>(kNeutralVelocity));
    return true;
}

// Keys are served in the order of their first notes; a key with no free target stays.
void TMidiRead::RemapDrumKey(int32_t StatusIndex, bool UsingRunningStatus)
{
    const uint8_t key = First;
    if (PitchMappedTo[key] == 0) {
        for (int32_t p = lowestpitchfound + 1; p <= kHighestUnmovedKey; ++p) {
            if (!PitchUsed[p]) {
                PitchUsed[p] = true;
                PitchReverseMap[p] = key;
                PitchMappedTo[key] = static_cast<uint8_t>(p);
                break;
            }
        }
    }
    if (PitchMappedTo[key] != 0) {
        outptr = UsingRunningStatus ? StatusIndex : StatusIndex + 1;
        WriteByte(static_cast<char>(PitchMappedTo[key]));
    }
}

// Only the first 1024 bytes of the data are kept (followed by a zero); the rest is skipped.
// A length running past the image (or a negative one) ends the walk there.
void TMidiRead::ReadMetaData(TrackWalk& walk, int32_t length)
{
    const int32_t start = inptr;
    if (length < 0) {
        walk.MetaBuf[0] = 0;
        inptr = std::max(inptr, insize);
        ReportReadBeyondEnd();
        return;
    }
    const int32_t stored = std::min(length, kMetaBufSize - 1);
    const int32_t available = static_cast<int32_t>(std::clamp<int64_t>(int64_t{insize} - start, 0, length));
    const int32_t copied = std::min(stored, available);
    image_.CopyOut(start, walk.MetaBuf, copied);
    std::memset(walk.MetaBuf + copied, 0, static_cast<size_t>(stored - copied + 1));
    BytesRead = SaturatingAdd(BytesRead, length);
    TotalBytesRead = SaturatingAdd(TotalBytesRead, length);
    inptr = SaturatingAdd(start, length);
    if (available < length) ReportReadBeyondEnd();
}

TMidiRead::MetaResult TMidiRead::HandleMeta(int32_t Track, TrackWalk& walk)
{
    ReadMetaData(walk, ReadNumber());
    LEventRec& ev = walk.NewEvent;
    // Records of one tick are gathered into one: tempo, meter and offset together.
    if (walk.EventChanged && CurrentTick != ev.Tick) {
        Enqueue(ev);
        walk.EventChanged = false;
        ClearEvent(ev, walk.CurrentTPB, CurrentTick, walk.CurrentBar, walk.tickinbar);
    } else if (!walk.EventChanged) {
        ClearEvent(ev, walk.CurrentTPB, CurrentTick, walk.CurrentBar, walk.tickinbar);
    }
    const bool atTrackStart = Track == 1 && CurrentTick == 0;
    const unsigned char* data = walk.MetaBuf;
    switch (First) {
        case 0x2F:   // end of track; later tracks drop a record still being filled
            TerminateChunk();
            if (Track == 1) {
                ev.stop = true;
                Enqueue(ev);
            }
            return MetaResult::EndOfTrack;
        case 0x51:   // tempo
            ev.MicsPerBeat = data[0] * 65536 + data[1] * 256 + data[2];
            ev.Speed = ev.MicsPerBeat != 0 ? 60000000.0 / ev.MicsPerBeat : 0.0;
            if (atTrackStart) InitialTempoEvent = ev;
            walk.EventChanged = true;
            return MetaResult::Next;
        case 0x54:   // SMPTE offset
            ev.hr = data[0];
            ev.mn = data[1];
            ev.se = data[2];
            ev.fr = data[3];
            ev.ff = data[4];
            if (atTrackStart) SMPTEEvent = ev;
            walk.EventChanged = true;
            return MetaResult::Next;
        case 0x58:   // time signature
            if (CurrentTick > 0) {
                Alert(midi_alerts::kTimeSignatureChange);
                return MetaResult::Fail;
            }
            if (!IsMultiple(walk.tickinbar, walk.CurrentTPB)) {
                Alert(midi_alerts::kOffbeatTimeSignature);
                ev.Beat = 1;
                CurrentTick = WrapSub(CurrentTick, walk.tickinbar);
                walk.tickinbar = 0;
            }
            walk.CurrentBPM = ev.BPM = data[0];
            walk.CurrentDenominator = ev.Denominator = PowerOfTwo(data[1]);
            walk.CurrentTPB = ev.TPB = SafeDiv(WrapMul(4, TPQ), walk.CurrentDenominator);
            walk.CurrentTPM = ev.TPM = WrapMul(walk.CurrentBPM, walk.CurrentTPB);
            if (Track == 1 && CurrentTick == 0) InitialMeterEvent = ev;
            walk.EventChanged = true;
            return MetaResult::Next;
        default: return MetaResult::Next;
    }
}

void TMidiRead::Enqueue(LEventRec ev)
{
    if (ev.Bar == FromMeasure && ev.tickinbar == 0) GotOnBeginningEvent = true;
    if (ev.Bar == WrapAdd(ToMeasure, 1) && ev.tickinbar == 0) GotOnEndingEvent = true;
    Events.Add(ev);
}
