// The byte image: cursors, big-endian reads and writes, variable-length quantities, chunk
// bracketing and the edits that keep chunk lengths right.
#include <algorithm>

#include "tamberlyne/host/gateway.h"
#include "tamberlyne/midi/midi_alerts.h"
#include "tamberlyne/midi/midi_arith.h"
#include "tamberlyne/midi/readmidi.h"

using namespace midi_arith;

void midi_alerts::Show(const char* text)
{
    SX_AlertMessage(nullptr, 0, 0, text, kPluginApiVersion);
}

void TMidiRead::Alert(const char* text)
{
    midi_alerts::Show(text);
}

namespace {
// No real file queues more than one record per three bytes (a tempo change takes seven).
size_t EventLimitFor(int32_t size)
{
    return static_cast<size_t>(std::max(size, 0)) / 3 + 64;
}
}   // namespace

TMidiRead::TMidiRead(char* buffer, int32_t& size, int32_t capacity)
    : inbuf(buffer), insize(size), Events(EventLimitFor(size)), image_(buffer, size, capacity)
{
    insize = image_.Size();
    ResetBudgets();
}

// A track whose length runs far past the image reads zeros up to that length, one message per
// byte: a length field of two gigabytes would mean two billion identical messages. Each pass
// shows them all up to eight times the image plus 64 K (all of them for any cut-short groove
// file), and goes on reading zeros silently past that; the outcome is the same either way.
void TMidiRead::ResetBudgets()
{
    sysexScanBudget_ = int64_t{8} * insize + 65536;
    eofAlertBudget_ = int64_t{8} * insize + 65536;
}

TMidiRead::~TMidiRead()
{
    image_.Settle();
}

const char* TMidiRead::Image()
{
    CloseWindow();
    return image_.Settle();
}

void TMidiRead::ReportReadsBeyondEnd(int64_t count)
{
    for (; count > 0 && eofAlertBudget_ > 0; --count, --eofAlertBudget_) Alert(midi_alerts::kReadBeyondEnd);
}

// A byte of the image outside the window: the window moves to the stretch that holds it. Past
// the image the byte reads as 0, with its message, and the cursor stays.
void TMidiRead::ReadOutsideWindow(unsigned char& destination)
{
    if (inptr >= 0 && inptr < insize) {
        OpenWindowAt(inptr);
        ReadInto(destination);
        return;
    }
    ReportReadsBeyondEnd(1);
    destination = 0;
    CountOne(BytesRead);
    CountOne(TotalBytesRead);
}

void TMidiRead::OpenWindowAt(int32_t pos)
{
    const MidiImage::Run run = image_.RunAt(pos);
    windowStart_ = static_cast<uint32_t>(run.start);
    windowLength_ = static_cast<uint32_t>(run.end - run.start);
    windowBytes_ = run.bytes;
}

void TMidiRead::WriteOutsideWindow(char value)
{
    if (outptr >= 0 && outptr < insize) image_.Set(outptr, static_cast<uint8_t>(value));
}

void TMidiRead::Write(const char* source, int count)
{
    for (int i = 0; i < count; ++i) WriteByte(source[i]);
}

void TMidiRead::Write2Bytes(char first, char second)
{
    WriteByte(first);
    WriteByte(second);
}

void TMidiRead::WriteWord(uint16_t value)
{
    Write2Bytes(static_cast<char>(value >> 8), static_cast<char>(value & 0xFF));
}

void TMidiRead::WriteLongInt(int32_t value)
{
    const uint32_t bits = static_cast<uint32_t>(value);
    WriteWord(static_cast<uint16_t>(bits >> 16));
    WriteWord(static_cast<uint16_t>(bits & 0xFFFF));
}

// A negative length leaves the chunk's end at its length field, so the walk never goes back.
int32_t TMidiRead::StartChunk()
{
    Read(ChunkName, 4);
    ChunkName[4] = 0;
    ChunkLengthIdx = inptr;
    ChunkLength = ReadLongInt();
    NextOffset = SaturatingAdd(inptr, std::max(ChunkLength, 0));
    return ChunkLength;
}

void TMidiRead::TerminateChunk()
{
    inptr = NextOffset;
}

void TMidiRead::RemoveBytes(int32_t from, int32_t to)
{
    from = std::max(from, 0);
    to = std::min(to, insize);
    if (from >= to) return;
    image_.Remove(from, to);
    CloseWindow();
    insize = image_.Size();
}

void TMidiRead::RemoveUpToHereFrom(int32_t from)
{
    const int32_t oldInptr = inptr;
    RemoveBytes(from, inptr);
    NextOffset = std::max(SaturatingAdd(NextOffset, static_cast<int64_t>(from) - oldInptr), 0);
    inptr = from;
}

bool TMidiRead::InsertByte()
{
    if (inptr < 0 || inptr > insize || !image_.Insert(inptr, 0)) return false;
    CloseWindow();
    insize = image_.Size();
    NextOffset = SaturatingAdd(NextOffset, 1);
    ++inptr;
    ChunkLength = WrapAdd(ChunkLength, 1);
    // WriteLongInt at the length field, written straight into the image: the field lies
    // behind the cursor, outside the window.
    const auto bits = static_cast<uint32_t>(ChunkLength);
    for (int32_t k = 0; k < 4; ++k) {
        const int64_t at = int64_t{ChunkLengthIdx} + k;
        if (at >= 0 && at < insize) image_.Set(static_cast<int32_t>(at), static_cast<uint8_t>(bits >> (24 - 8 * k)));
    }
    outptr = SaturatingAdd(ChunkLengthIdx, 4);
    // The walk goes on from the cursor, which now stands at the start of the block's second
    // stretch: the window opens there at once.
    if (inptr < insize) OpenWindowAt(inptr);
    return true;
}
