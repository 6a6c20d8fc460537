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
    return image_.Settle();
}

void TMidiRead::ReportReadsBeyondEnd(int64_t count)
{
    for (; count > 0 && eofAlertBudget_ > 0; --count, --eofAlertBudget_) Alert(midi_alerts::kReadBeyondEnd);
}

void TMidiRead::Read(unsigned char* destination, int count)
{
    for (int i = 0; i < count; ++i) {
        if (inptr >= 0 && inptr < insize) {
            destination[i] = image_.At(inptr);
            ++inptr;
        } else {
            ReportReadsBeyondEnd(1);
            destination[i] = 0;
        }
        BytesRead = SaturatingAdd(BytesRead, 1);
        TotalBytesRead = SaturatingAdd(TotalBytesRead, 1);
    }
}

unsigned char TMidiRead::ReadByte()
{
    Read(&LastByte, 1);
    return LastByte;
}

void TMidiRead::Read2Bytes(unsigned char& first, unsigned char& second)
{
    Read(&first, 1);
    Read(&second, 1);
}

void TMidiRead::Read3Bytes(unsigned char& first, unsigned char& second, unsigned char& third)
{
    Read(&first, 1);
    Read(&second, 1);
    Read(&third, 1);
}

uint16_t TMidiRead::ReadWord()
{
    unsigned char high = 0, low = 0;
    Read2Bytes(high, low);
    return static_cast<uint16_t>(high * 256 + low);
}

int32_t TMidiRead::ReadLongInt()
{
    const uint32_t high = ReadWord();
    const uint32_t low = ReadWord();
    return static_cast<int32_t>((high << 16) + low);
}

// No limit on the length: longer runs drop high bits, as 32-bit arithmetic does.
int32_t TMidiRead::ReadNumber()
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
void TMidiRead::Write(const char* source, int count)
{
    for (int i = 0; i < count; ++i) {
        if (outptr >= 0 && outptr < insize) image_.Set(outptr, static_cast<uint8_t>(source[i]));
        outptr = SaturatingAdd(outptr, 1);
    }
}

void TMidiRead::WriteByte(char value)
{
    Write(&value, 1);
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
    insize = image_.Size();
    NextOffset = SaturatingAdd(NextOffset, 1);
    ++inptr;
    ChunkLength = WrapAdd(ChunkLength, 1);
    outptr = ChunkLengthIdx;
    WriteLongInt(ChunkLength);
    return true;
}
