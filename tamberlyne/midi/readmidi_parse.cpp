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
    ResetBudgets();
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
    while (BytesRead < ChunkLength) {
        WalkPlainMessages(walk, founddrumnotes, TrackMayHaveNotes, passnum);
        if (BytesRead >= ChunkLength) break;

        // Any other event, byte by byte.
        const int32_t eventStart = inptr;
        const int32_t readBeforeEvent = BytesRead;
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
            if (eventStart >= insize) SkipEventsPastEnd(BytesRead - readBeforeEvent);
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

// Past the image every byte reads 0: an event there is a zero delta and a running-status
// message of zeros, and each one leaves the reader exactly as the one before it did. Once one
// has been handled, the rest up to the chunk's length are counted rather than walked.
void TMidiRead::SkipEventsPastEnd(int32_t bytesPerEvent)
{
    const int64_t remaining = int64_t{ChunkLength} - BytesRead;
    if (remaining <= 0 || bytesPerEvent <= 0) return;
    const int64_t reads = (remaining + bytesPerEvent - 1) / bytesPerEvent * bytesPerEvent;
    ReportReadsBeyondEnd(reads);
    BytesRead = SaturatingAdd(BytesRead, reads);
    TotalBytesRead = SaturatingAdd(TotalBytesRead, reads);
}

// Most of a groove is plain channel messages: drum messages that stay as they are and
// running-status messages, which are never edited. They are walked here straight from the
// window with the reader's state in locals, with the same effect as the event-by-event walk:
// cursor, counts, last byte and number read, status, running status, position, drum and pitch
// records, and the keys already given a new place in the second pass. The walk stops, with all
// of that written back, before anything else (meta and system messages, a message to
// neutralise, a key still to be placed, an undefined running status, a quantity of more than
// four bytes), before the last bytes of the window and at the end of the chunk's count; and it
// does not start while a measure-boundary record is still due.
void TMidiRead::WalkPlainMessages(TrackWalk& walk, bool& founddrumnotes, bool TrackMayHaveNotes, int32_t passnum)
{
    constexpr int32_t kLongestMessage = 7;   // four bytes of delta, status and two data bytes
    if ((FromMeasure > 1 && !GotOnBeginningEvent) || !GotOnEndingEvent) return;
    const uint32_t offset = static_cast<uint32_t>(inptr) - windowStart_;
    if (offset >= windowLength_) return;
    const int64_t windowStarts = int64_t{windowLength_} - offset - (kLongestMessage - 1);
    const int64_t chunkStarts = int64_t{ChunkLength} - BytesRead;
    const auto stop = static_cast<int32_t>(std::min(windowStarts, chunkStarts));
    if (stop <= 0) return;
    // One loop per kind of pass and track, so that neither is asked about in the loop.
    if (!TrackMayHaveNotes) {
        WalkPlainMessagesIn<false, false>(walk, founddrumnotes, stop);
    } else if (passnum == 2) {
        WalkPlainMessagesIn<true, true>(walk, founddrumnotes, stop);
    } else {
        WalkPlainMessagesIn<true, false>(walk, founddrumnotes, stop);
    }
}

// Messages may start at offsets below `stop` from the cursor, all of them inside the window.
template <bool MayHaveNotes, bool SecondPass>
void TMidiRead::WalkPlainMessagesIn(TrackWalk& walk, bool& founddrumnotes, int32_t stop)
{
    char* const bytes = windowBytes_ + (static_cast<uint32_t>(inptr) - windowStart_);   // the byte at inptr
    const auto at = [bytes](int32_t i) { return static_cast<uint8_t>(bytes[i]); };
    const int32_t start = inptr;
    const int32_t tpm = walk.CurrentTPM;
    uint8_t running = RunningStatus;
    const int32_t tickinbarBefore = walk.tickinbar, barBefore = walk.CurrentBar;
    int32_t tickinbar = tickinbarBefore, bar = barBefore;
    bool foundDrums = false;
    int32_t lastOutptr = -1;   // past the last key moved, from the cursor
    int32_t last = -1;         // where the last message taken begins
    int32_t i = 0;
    while (i < stop) {
        int32_t n = i;
        uint32_t delta = at(n++);
        if (delta > 127) {
            uint8_t byte = 0;
            delta &= 0x7F;
            do {
                byte = at(n++);
                delta = (delta << 7) + (byte & 0x7F);
            } while (byte > 127 && n - i < 4);
            if (byte > 127) break;
        }
        const int32_t statusAt = n++;
        uint8_t status = at(statusAt);
        const bool usingRunningStatus = status < 0x80;
        if (usingRunningStatus) {
            if (running == 0) break;
            status = running;
        } else if (status >= 0xF0) {
            break;
        } else {
            ++n;
        }
        const int32_t keyAt = n - 1;
        const uint8_t kind = status & 0xF0;
        const bool drum = MayHaveNotes && (status & 0x0F) == 9;
        if (!drum && !usingRunningStatus) break;   // to be neutralised
        const uint8_t key = at(keyAt);
        const bool note = MayHaveNotes && (status & 0xEF) == 0x89 && key < 128;   // note off or on, channel 10
        uint8_t movedTo = 0;
        if (SecondPass && note && key > kHighestUnmovedKey) {
            movedTo = PitchMappedTo[key];
            if (movedTo == 0) break;   // a key still to be placed
        }
        // Notes (nearly all of a groove) take their second data byte in a branch of their own:
        // worked out from the status byte's value, the next message's place would wait for
        // that byte to be loaded.
        if (note) {
            ++n;
        } else if (kind != 0xC0 && kind != 0xD0) {
            ++n;
        }

        running = status;
        tickinbar = WrapAdd(tickinbar, static_cast<int32_t>(delta));
        if (tpm > 0 && tickinbar >= tpm) {
            bar = WrapAdd(bar, tickinbar / tpm);
            tickinbar %= tpm;
        }
        // Written through as they change (few registers are left for them).
        if (drum) {
            foundDrums = true;
            lastdrumnotebar = bar;
            lastdrumnotetickinbar = tickinbar;
        }
        if (note) {
            // A key already marked used lies between the lowest and highest seen: it was seen
            // itself, or is a remap target, which lies above the lowest and below the highest.
            if (!PitchUsed[key]) {
                highestpitchfound = std::max<int32_t>(highestpitchfound, key);
                lowestpitchfound = std::min<int32_t>(lowestpitchfound, key);
                PitchUsed[key] = true;
            }
            if (SecondPass && movedTo != 0) {
                bytes[keyAt] = static_cast<char>(movedTo);
                lastOutptr = keyAt + 1;
            }
        }
        if (SecondPass) First = key;   // the image may no longer hold it
        last = i;
        i = n;
    }
    if (last < 0) return;

    // What the last message taken leaves behind, as reading it byte by byte would.
    uint32_t delta = 0;
    int32_t n = last;
    uint8_t byte = 0;
    do {
        byte = at(n++);
        delta = (delta << 7) + (byte & 0x7F);
    } while (byte > 127);
    LastNumberRead = static_cast<int32_t>(delta);
    LastByte = at(i - 1);
    Status = running;
    RunningStatus = running;
    inptr = start + i;
    BytesRead = SaturatingAdd(BytesRead, i);
    TotalBytesRead = SaturatingAdd(TotalBytesRead, i);
    if (SecondPass && lastOutptr >= 0) outptr = start + lastOutptr;
    // The ticks walked are the measures and ticks in measure walked, in 32-bit arithmetic.
    CurrentTick =
        WrapAdd(CurrentTick, WrapAdd(WrapSub(tickinbar, tickinbarBefore), WrapMul(WrapSub(bar, barBefore), tpm)));
    if (!SecondPass) First = at(at(n) < 0x80 ? n : n + 1);
    if (foundDrums) founddrumnotes = true;
    walk.tickinbar = tickinbar;
    walk.CurrentBar = bar;
}

// Boundary records first (they take the position before the delta), then the position moves.
inline void TMidiRead::AdvanceTime(TrackWalk& walk, int32_t delta)
{
    if (delta > 0 && ((FromMeasure > 1 && !GotOnBeginningEvent) || !GotOnEndingEvent)) QueueDueBoundaries(walk, delta);
    CurrentTick = WrapAdd(CurrentTick, delta);
    walk.tickinbar = WrapAdd(walk.tickinbar, delta);
    // Whole measures leave the tick in measure; a measure of no ticks never ends.
    if (walk.CurrentTPM > 0 && walk.tickinbar >= walk.CurrentTPM) {
        walk.CurrentBar = WrapAdd(walk.CurrentBar, walk.tickinbar / walk.CurrentTPM);
        walk.tickinbar %= walk.CurrentTPM;
    }
}

void TMidiRead::QueueDueBoundaries(TrackWalk& walk, int32_t delta)
{
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
// Past the image the scan would read zeros for ever: it stops at the first of them, and the
// walk goes on past the end like any other read there. A pass's scans together read no more
// than a few times the image: past that, the scan gives up as if the image had ended there.
void TMidiRead::SkipSystemExclusive()
{
    unsigned char skipped[4];
    Read(skipped, 4);
    const int32_t start = std::min(inptr, insize);
    const int32_t limit = static_cast<int32_t>(std::min<int64_t>(insize, start + sysexScanBudget_));
    const int32_t end = image_.Find(start, limit, 0xF7);
    const bool found = end < limit;
    const int32_t consumed = end - start + (found ? 1 : 0);
    sysexScanBudget_ -= consumed;
    BytesRead = SaturatingAdd(BytesRead, consumed);
    TotalBytesRead = SaturatingAdd(TotalBytesRead, consumed);
    if (found) {
        inptr = start + consumed;
        LastByte = 0xF7;
    } else {
        inptr = std::max(inptr, insize);
        LastByte = 0;
        BytesRead = SaturatingAdd(BytesRead, 1);
        TotalBytesRead = SaturatingAdd(TotalBytesRead, 1);
        ReportReadsBeyondEnd(1);
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

// Only the first 1024 bytes of the data are kept (followed by a zero); the rest is skipped,
// each byte missing past the image with its message. A negative length (a quantity of five
// bytes or more that wrapped) reads nothing and would send the cursor back: it goes to the
// end of the image instead, so that the walk never runs over the same bytes again.
void TMidiRead::ReadMetaData(TrackWalk& walk, int32_t length)
{
    const int32_t start = inptr;
    if (length < 0) {
        walk.MetaBuf[0] = 0;
        inptr = std::max(inptr, insize);
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
    ReportReadsBeyondEnd(int64_t{length} - available);
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
