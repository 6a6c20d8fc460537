// Feeds arbitrary bytes to the cleaner as a groove file, in a block of twice their length as
// the insertion driver allocates it, once plainly and once with a measure range set (which
// queues boundary records). The sanitizers report any step outside the block or undefined
// arithmetic; the checks below catch a result that breaks the reader's own promises.
#include <cstdlib>
#include <cstring>
#include <vector>

#include "tamberlyne/midi/readmidi.h"

namespace {
void Expect(bool condition)
{
    if (!condition) std::abort();
}

void CleanOnce(const uint8_t* data, size_t size, int32_t fromMeasure, int32_t toMeasure)
{
    const int32_t capacity = static_cast<int32_t>(2 * size);
    std::vector<char> block(static_cast<size_t>(capacity) + 1);
    std::memcpy(block.data(), data, size);
    int32_t length = static_cast<int32_t>(size);
    TMidiRead reader(block.data(), length, capacity);
    reader.FromMeasure = fromMeasure;
    reader.ToMeasure = toMeasure;
    LEventRec meter;
    int32_t tpq = 0, lastBar = 0, lastTick = 0;
    bool found = false;
    const bool result = reader.CleanMidiFile(0, meter, tpq, found, lastBar, lastTick);
    Expect(length >= 0 && length <= capacity);
    Expect(reader.Events.size() <= size / 3 + 64);
    Expect(!result || !reader.Events.empty());
    reader.CheckStop();
    Expect(reader.Events.empty() || reader.Events.back().stop);
    for (int key = 0; key < 128; ++key) Expect(reader.PitchMappedTo[key] <= 59);
}
}   // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size > (1u << 20)) return 0;
    CleanOnce(data, size, 1, 99999);
    CleanOnce(data, size, 2, 3);
    return 0;
}
