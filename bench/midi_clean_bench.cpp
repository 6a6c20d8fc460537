// Cleaning speed of the MIDI reader: the bundled grooves (a few hundred bytes each) and a
// 5 MB single-track file holding 100,000 one-data-byte messages, each of which grows the
// image by one byte. Both should run at the same rate per byte: the cleaner is linear. The
// large file's run also times the copy of the file into the block that each cleaning starts
// from, and prints the cleaning rate beside it: MB_per_s and times_memcpy (cleaning time per
// byte over copying time per byte). Goals: at least 400 MB/s, and within 100 times memcpy.
#include <benchmark/benchmark.h>

#include <time.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "tamberlyne/host/gateway.h"
#include "tamberlyne/midi/readmidi.h"

namespace {
using Bytes = std::vector<char>;

int32_t IgnoreAlert(EWND, int32_t, int32_t, const char*, EVERSION)
{
    return 0;
}

std::vector<Bytes> LoadGrooves()
{
    std::vector<Bytes> grooves;
    for (const auto& entry : std::filesystem::directory_iterator(TAMBERLYNE_SOURCE_DIR "/grooves/Tamberlyne")) {
        std::ifstream in(entry.path(), std::ios::binary);
        grooves.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    return grooves;
}

void Append(Bytes& out, std::initializer_list<int> bytes)
{
    for (int b : bytes) out.push_back(static_cast<char>(b));
}

// One format 0 track: drum notes (some above key 59, so both passes run) with a program
// change or channel pressure on channel 1 after every few notes, padded to 5 MB.
Bytes LargeFile()
{
    constexpr size_t kTarget = 5u << 20;
    constexpr int kOneByteMessages = 100000;
    Bytes body;
    Append(body, {0x00, 0xFF, 0x51, 0x03, 0x07, 0xA1, 0x20});
    const int notesPerMessage = static_cast<int>((kTarget / 4 - kOneByteMessages) / kOneByteMessages);
    for (int m = 0; m < kOneByteMessages; ++m) {
        Append(body, {0x00, m % 2 ? 0xC0 : 0xD0, m % 128});
        for (int n = 0; n < notesPerMessage; ++n) Append(body, {0x10, 0x99, n % 2 ? 62 : 36, 0x64});
    }
    Append(body, {0x00, 0xFF, 0x2F, 0x00});
    Bytes file;
    const size_t n = body.size();
    Append(file, {'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, 0, 0, 1, 0x01, 0xE0});
    Append(file, {'M', 'T', 'r', 'k', int(n >> 24), int(n >> 16) & 0xFF, int(n >> 8) & 0xFF, int(n) & 0xFF});
    file.insert(file.end(), body.begin(), body.end());
    return file;
}

bool CleanCopied(const Bytes& file, std::vector<char>& block)
{
    int32_t size = static_cast<int32_t>(file.size());
    TMidiRead reader(block.data(), size, static_cast<int32_t>(block.size()));
    LEventRec meter;
    int32_t tpq = 0, lastBar = 0, lastTick = 0;
    bool found = false;
    return reader.CleanMidiFile(0, meter, tpq, found, lastBar, lastTick);
}

bool CleanOnce(const Bytes& file, std::vector<char>& block)
{
    std::memcpy(block.data(), file.data(), file.size());
    return CleanCopied(file, block);
}

void BM_CleanGrooveLibrary(benchmark::State& state)
{
    const std::vector<Bytes> grooves = LoadGrooves();
    std::vector<char> block;
    int64_t bytes = 0;
    for (auto _ : state) {
        for (const Bytes& groove : grooves) {
            block.resize(2 * groove.size());
            benchmark::DoNotOptimize(CleanOnce(groove, block));
            bytes += static_cast<int64_t>(groove.size());
        }
    }
    state.SetBytesProcessed(bytes);
    state.counters["grooves"] = static_cast<double>(grooves.size());
}
BENCHMARK(BM_CleanGrooveLibrary);

// Processor time of this thread: on a shared machine the wall clock mostly measures the others.
double ThreadSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// The cleaning and the copy that precedes it are timed apart, on the thread's processor time.
void BM_CleanLargeFile(benchmark::State& state)
{
    const Bytes file = LargeFile();
    std::vector<char> block(2 * file.size());
    double cleanSeconds = 0, copySeconds = 0;
    for (auto _ : state) {
        const double start = ThreadSeconds();
        std::memcpy(block.data(), file.data(), file.size());
        benchmark::ClobberMemory();
        const double copied = ThreadSeconds();
        if (!CleanCopied(file, block)) state.SkipWithError("cleaning failed");
        const double cleaned = ThreadSeconds();
        copySeconds += copied - start;
        cleanSeconds += cleaned - copied;
    }
    const double bytes = static_cast<double>(state.iterations()) * static_cast<double>(file.size());
    state.SetBytesProcessed(static_cast<int64_t>(bytes));
    state.counters["file_bytes"] = static_cast<double>(file.size());
    state.counters["MB_per_s"] = cleanSeconds > 0 ? bytes / cleanSeconds / 1e6 : 0.0;
    state.counters["memcpy_MB_per_s"] = copySeconds > 0 ? bytes / copySeconds / 1e6 : 0.0;
    state.counters["times_memcpy"] = copySeconds > 0 ? cleanSeconds / copySeconds : 0.0;
}
BENCHMARK(BM_CleanLargeFile)->Unit(benchmark::kMillisecond);
}   // namespace

int main(int argc, char** argv)
{
    gStavioFuncs.SX_AlertMessage = &IgnoreAlert;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
