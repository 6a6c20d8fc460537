// TMidiRead: one Standard MIDI File held as a byte image in the caller's block, read and
// rewritten in place into the form the host imports. Only channel-10 messages of the first
// drum track stay audible; tracks without drums (other than the first) are cut out; drum keys
// above 59 can be moved onto free keys (the reverse map tells the caller what they were).
//
// Every problem is told through the host's alert call, one message per problem and one per
// byte read past the end of the image (the host folds a run of the same message into one line;
// a pass shows at most eight times the image plus 64 K of the latter, see ResetBudgets).
// The reader is safe on any input: all reads, writes and insertions stay inside the block, every
// scan and queue is bounded by the size of the file, and a hostile file at worst produces
// messages and a false result.
#pragma once

#include <cstdint>
#include <limits>

#include "sdk/records.h"
#include "tamberlyne/midi/midi_events.h"
#include "tamberlyne/midi/midi_image.h"

class TMidiRead {
public:
    // `buffer` holds the file's `size` bytes and has room for `capacity` bytes (the caller
    // allocates twice the file's length). `size` follows the image as it grows and shrinks.
    TMidiRead(char* buffer, int32_t& size, int32_t capacity);
    ~TMidiRead();
    TMidiRead(const TMidiRead&) = delete;
    TMidiRead& operator=(const TMidiRead&) = delete;

    // ---- Cleaning -------------------------------------------------------------------------
    bool CleanMidiFile(int32_t measurecount, LEventRec& Meter, int32_t& _TPQ, bool& foundanydrumnotes,
                       int32_t& lastnotebar, int32_t& lastnotetickinbar);
    bool DoConversion(bool& foundanydrumnotes, int32_t passnum);
    void CheckTimeSignature(const EDTMeasureSpec& MeasSpec, bool& errorreported, int32_t CurrentBPM, int32_t CurrentTPB,
                            int32_t meas);
    void CheckStop();

    // ---- Parsing --------------------------------------------------------------------------
    void InitVariables();
    bool ReadHeader();
    void ClearEvent(LEventRec& NewEvent, int32_t CurrentTPB, int32_t EventTick, int32_t CurrentBar, int32_t tickinbar);
    bool LoadTrack(int32_t Track, bool& founddrumnotes, bool TrackMayHaveNotes, int32_t passnum);
    void Enqueue(LEventRec ev);

    // ---- Byte image -----------------------------------------------------------------------
    void Read(unsigned char* destination, int count);
    unsigned char ReadByte();
    void Read2Bytes(unsigned char& first, unsigned char& second);
    void Read3Bytes(unsigned char& first, unsigned char& second, unsigned char& third);
    uint16_t ReadWord();
    int32_t ReadLongInt();
    int32_t ReadNumber();
    void Write(const char* source, int count);
    void WriteByte(char value);
    void Write2Bytes(char first, char second);
    void WriteWord(uint16_t value);
    void WriteLongInt(int32_t value);
    int32_t StartChunk();
    void TerminateChunk();
    void RemoveBytes(int32_t from, int32_t to);
    void RemoveUpToHereFrom(int32_t from);
    // Inserts a zero byte at the cursor inside the current chunk; false (and nothing done)
    // when the block has no room left.
    bool InsertByte();
    // The image, contiguous at the start of the caller's block (edits keep a movable gap in
    // the block while a pass runs; this closes it). Passes and the destructor close it too.
    const char* Image();

    // ---- Byte image state -----------------------------------------------------------------
    char* inbuf;
    int32_t& insize;
    int32_t inptr = 0;
    int32_t outptr = 0;
    int32_t TrkCountIdx = 0;
    int32_t ChunkLengthIdx = 0;
    int32_t CurrentLenOffset = 0;

    // ---- Reading state --------------------------------------------------------------------
    int32_t FromMeasure = 1;     // first measure of interest; > 1 queues a boundary record
    int32_t ToMeasure = 99999;   // last measure of interest; 99999 = open end
    int32_t lastdrumnotebar = 0;
    int32_t lastdrumnotetickinbar = 0;
    bool remappedany = false;
    EventQueue Events;
    LEventRec SMPTEEvent;
    LEventRec InitialMeterEvent;
    LEventRec InitialTempoEvent;
    uint8_t RunningStatus = 0;
    uint8_t Status = 0;
    uint8_t First = 0;
    int32_t CurrentTick = 0;
    int32_t TPQ = 1024;
    int32_t BytesRead = 0;
    int32_t TotalBytesRead = 0;
    int32_t LastNumberRead = 0;
    unsigned char ChunkName[5] = {0, 0, 0, 0, 0};
    int32_t ChunkLength = 0;
    int32_t NextOffset = 0;
    int32_t Format = 0;
    int32_t TrkCount = 0;
    unsigned char LastByte = 0;
    bool PitchUsed[128] = {};
    uint8_t PitchMappedTo[128] = {};     // by key found in the file; 0 = not moved
    uint8_t PitchReverseMap[128] = {};   // by new key: the key it came from
    int32_t highestpitchfound = 0;
    int32_t lowestpitchfound = 127;
    bool GotOnBeginningEvent = false;
    bool GotOnEndingEvent = false;

private:
    struct TrackWalk;
    enum class MetaResult {
        Next,
        EndOfTrack,
        Fail
    };

    void WalkPlainMessages(TrackWalk& walk, bool& founddrumnotes, bool TrackMayHaveNotes, int32_t passnum);
    template <bool MayHaveNotes, bool SecondPass>
    void WalkPlainMessagesIn(TrackWalk& walk, bool& founddrumnotes, int32_t stop);
    void AdvanceTime(TrackWalk& walk, int32_t delta);
    void QueueDueBoundaries(TrackWalk& walk, int32_t delta);
    void QueueBoundary(TrackWalk& walk, int32_t targetBar);
    void SkipSystemExclusive();
    bool HandleChannelMessage(bool& founddrumnotes, bool TrackMayHaveNotes, int32_t passnum, int32_t StatusIndex,
                              int32_t databyteidx, bool UsingRunningStatus, const TrackWalk& walk);
    void RemapDrumKey(int32_t StatusIndex, bool UsingRunningStatus);
    MetaResult HandleMeta(int32_t Track, TrackWalk& walk);
    void ReadMetaData(TrackWalk& walk, int32_t length);
    // Reads and writes go through a window: the stretch of the image around the cursor that
    // lies in one piece in the block (see MidiImage::RunAt), so that a byte costs a
    // compare and a load. A byte outside it takes the slow way, which moves the window or
    // finds the end of the image; every edit of the layout closes the window.
    void ReadInto(unsigned char& destination);
    void ReadOutsideWindow(unsigned char& destination);
    void WriteOutsideWindow(char value);
    void OpenWindowAt(int32_t pos);   // 0 <= pos < insize
    void CloseWindow() { windowLength_ = 0; }
    static void CountOne(int32_t& count) { count += count != std::numeric_limits<int32_t>::max() ? 1 : 0; }

    void SkipEventsPastEnd(int32_t bytesPerEvent);
    void ReportReadsBeyondEnd(int64_t count);
    void Alert(const char* text);
    void ResetBudgets();

    MidiImage image_;
    char* windowBytes_ = nullptr;   // the byte at position windowStart_
    uint32_t windowStart_ = 0;
    uint32_t windowLength_ = 0;
    int64_t sysexScanBudget_ = 0;   // bytes the system-exclusive scans of this pass may still read
    int64_t eofAlertBudget_ = 0;    // end-of-file alerts this pass may still show
};

// The byte reads and writes, inline: cleaning runs through them once per byte.

inline void TMidiRead::ReadInto(unsigned char& destination)
{
    const uint32_t offset = static_cast<uint32_t>(inptr) - windowStart_;
    if (offset < windowLength_) {
        destination = static_cast<unsigned char>(windowBytes_[offset]);
        ++inptr;
        CountOne(BytesRead);
        CountOne(TotalBytesRead);
        return;
    }
    ReadOutsideWindow(destination);
}

inline void TMidiRead::Read(unsigned char* destination, int count)
{
    for (int i = 0; i < count; ++i) ReadInto(destination[i]);
}

inline unsigned char TMidiRead::ReadByte()
{
    ReadInto(LastByte);
    return LastByte;
}

inline void TMidiRead::Read2Bytes(unsigned char& first, unsigned char& second)
{
    ReadInto(first);
    ReadInto(second);
}

inline void TMidiRead::Read3Bytes(unsigned char& first, unsigned char& second, unsigned char& third)
{
    ReadInto(first);
    ReadInto(second);
    ReadInto(third);
}

inline uint16_t TMidiRead::ReadWord()
{
    unsigned char high = 0, low = 0;
    Read2Bytes(high, low);
    return static_cast<uint16_t>(high * 256 + low);
}

inline int32_t TMidiRead::ReadLongInt()
{
    const uint32_t high = ReadWord();
    const uint32_t low = ReadWord();
    return static_cast<int32_t>((high << 16) + low);
}

// No limit on the length: longer runs drop high bits, as 32-bit arithmetic does.
inline int32_t TMidiRead::ReadNumber()
{
    uint32_t value = 0;
    unsigned char byte = 0;
    do {
        byte = ReadByte();
        value = (value << 7) + (byte & 0x7F);
    } while (byte > 127);
    LastNumberRead = static_cast<int32_t>(value);
    return LastNumberRead;
}

// Bytes that would land past the image are dropped: they could never be part of the file.
inline void TMidiRead::WriteByte(char value)
{
    const uint32_t offset = static_cast<uint32_t>(outptr) - windowStart_;
    if (offset < windowLength_) {
        windowBytes_[offset] = value;
    } else {
        WriteOutsideWindow(value);
    }
    CountOne(outptr);
}
