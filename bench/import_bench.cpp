// The host's MIDI import: speed per measure and memory.
//
// - A fill as the plug-in does it: its own loop (ImportRepeatedly) over 100, 1,000 and 10,000
//   measures, one import of a two-bar groove per repetition through the host's function table.
//   The cost per measure must not grow with the document: 10,000 measures well under 100 ms.
// - One long played file (sixteenth hi-hats, kick and snare, a swung beat in every fourth bar,
//   every hit a few ticks off) into 1,000 measures.
// - The 5 MB file of the cleaner's benchmark (a million drum notes among 100,000 one-data-byte
//   messages) into 10,000 measures: time, and the peak memory of a process that does only that,
//   from the file on disk as the host does (at most 40 MB), so that nothing else counts.
#include "sdk/sdk.h"
#include "stavio/document_builder.h"
#include "stavio/host.h"
#include "stavio/midi_import/midi_import.h"
#include "tamberlyne/host/gateway.h"
#include "tamberlyne/host/startup.h"
#include "tamberlyne/plugin/groove_import.h"
#include "tamberlyne/plugin/plugin_globals.h"

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int kTicksPerQuarter = 480;
constexpr int kLargeFileMeasures = 10000;
constexpr char kMeasureImportMemory[] = "--measure-import-memory";

void PutNumber(std::vector<uint8_t>& out, uint32_t value)
{
    std::vector<uint8_t> groups{static_cast<uint8_t>(value & 0x7F)};
    while ((value >>= 7) != 0) {
        groups.push_back(static_cast<uint8_t>(0x80 | (value & 0x7F)));
    }
    out.insert(out.end(), groups.rbegin(), groups.rend());
}

void PutWord(std::vector<uint8_t>& out, uint32_t value, int bytes)
{
    for (int i = bytes - 1; i >= 0; --i) {
        out.push_back(static_cast<uint8_t>(value >> (8 * i)));
    }
}

std::vector<uint8_t> FormatZero(int ticksPerQuarter, const std::vector<uint8_t>& body)
{
    std::vector<uint8_t> file{'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, 0, 0, 1};
    PutWord(file, static_cast<uint32_t>(ticksPerQuarter), 2);
    file.insert(file.end(), {'M', 'T', 'r', 'k'});
    PutWord(file, static_cast<uint32_t>(body.size()), 4);
    file.insert(file.end(), body.begin(), body.end());
    return file;
}

// A format 0 file of `bars` bars of 4/4, played loosely.
std::vector<uint8_t> LongPlayedFile(int bars)
{
    std::mt19937 random(7);
    std::uniform_int_distribution<int> looseness(-8, 8);
    std::vector<std::pair<int64_t, int>> hits;   // tick, key
    for (int bar = 0; bar < bars; ++bar) {
        for (int beat = 0; beat < 4; ++beat) {
            const int64_t start = (int64_t{bar} * 4 + beat) * kTicksPerQuarter;
            const bool swung = bar % 4 == 3;
            for (int step = 0; step < (swung ? 3 : 4); step += swung ? 2 : 1) {
                hits.push_back({start + step * kTicksPerQuarter / (swung ? 3 : 4), 42});
            }
            hits.push_back({start, beat % 2 == 0 ? 36 : 38});
        }
    }
    std::sort(hits.begin(), hits.end());
    std::vector<uint8_t> body{0x00, 0xFF, 0x58, 0x04, 0x04, 0x02, 0x18, 0x08};
    int64_t now = 0;
    for (const auto& [tick, key] : hits) {
        const int64_t played = std::max<int64_t>(now, tick + looseness(random));
        PutNumber(body, static_cast<uint32_t>(played - now));
        body.insert(body.end(), {0x99, static_cast<uint8_t>(key), 100});
        now = played;
    }
    body.insert(body.end(), {0x00, 0xFF, 0x2F, 0x00});
    return FormatZero(kTicksPerQuarter, body);
}

// The cleaner benchmark's 5 MB file: one track of drum notes 16 ticks apart with a program
// change or channel pressure on channel 1 after every few notes.
std::vector<uint8_t> LargeFile()
{
    constexpr size_t kTarget = 5u << 20;
    constexpr int kOneByteMessages = 100000;
    std::vector<uint8_t> body{0x00, 0xFF, 0x51, 0x03, 0x07, 0xA1, 0x20};
    const int notesPerMessage = static_cast<int>((kTarget / 4 - kOneByteMessages) / kOneByteMessages);
    for (int m = 0; m < kOneByteMessages; ++m) {
        body.insert(body.end(), {0x00, static_cast<uint8_t>(m % 2 != 0 ? 0xC0 : 0xD0), static_cast<uint8_t>(m % 128)});
        for (int n = 0; n < notesPerMessage; ++n) {
            body.insert(body.end(), {0x10, 0x99, static_cast<uint8_t>(n % 2 != 0 ? 62 : 36), 0x64});
        }
    }
    body.insert(body.end(), {0x00, 0xFF, 0x2F, 0x00});
    return FormatZero(kTicksPerQuarter, body);
}

stavio::Document DrumDocument(int measures)
{
    return stavio::DocumentBuilder().Measures(measures).Staff("Drum Set").DrumStaff(1).Build();
}

EREGION Region(int first, int last)
{
    EREGION region{};
    region.start = {0, 1, static_cast<uint16_t>(first), 0};
    region.end = {0, 1, static_cast<uint16_t>(last), kEndOfMeasure};
    return region;
}

// The plug-in's code started on a host that holds a drum document, as the loader starts it.
class PluginOnHost {
public:
    explicit PluginOnHost(int measures)
    {
        host_.SetDocument(DrumDocument(measures));
        host_.MakeCurrent();
        gStavioFuncs = StavioFuncs{};
        gStavioFuncs.size = sizeof(StavioFuncs);
        StavioFuncs table = host_.FunctionTable();
        SXPluginFuncs reply{};
        started_ = PluginMain(&table, &reply) == 1;
    }
    bool Started() const { return started_; }

    // The plug-in's import loop over measures 1..measures of staff 1.
    void Fill(const std::string& folder, const std::string& name, int measures, int grooveBars)
    {
        SelRegion = Region(1, measures);
        SxpMidiData data{};
        std::snprintf(data.midiFile.folder, sizeof(data.midiFile.folder), "%s", folder.c_str());
        std::snprintf(data.midiFile.name, sizeof(data.midiFile.name), "%s", name.c_str());
        ImportRepeatedly(Region(1, measures), grooveBars, data, nullptr);
    }
    const stavio::Document& Document() { return host_.document(); }

private:
    stavio::Host host_;
    bool started_ = false;
};

void BM_FillWithATwoBarGrooveThroughThePlugInsLoop(benchmark::State& state)
{
    const auto measures = static_cast<int>(state.range(0));
    PluginOnHost plugin(measures);
    if (!plugin.Started()) {
        state.SkipWithError("the plug-in did not start");
        return;
    }
    for (auto _ : state) {
        plugin.Fill(std::string(TAMBERLYNE_SOURCE_DIR) + "/grooves/Tamberlyne", "Pop 16ths.mid", measures, 2);
    }
    if (plugin.Document().FrameNumber(1, measures, 0) == 0) {
        state.SkipWithError("the last measure was not filled");
    }
    state.counters["per_measure"] =
        benchmark::Counter(measures, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_FillWithATwoBarGrooveThroughThePlugInsLoop)
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond);

void BM_ImportThousandMeasuresFromOneFile(benchmark::State& state)
{
    constexpr int kMeasures = 1000;
    const std::vector<uint8_t> file = LongPlayedFile(kMeasures);
    stavio::Document doc = DrumDocument(kMeasures);
    std::string error;
    for (auto _ : state) {
        if (!stavio::midi_import::ImportMidiBytes(doc, Region(1, kMeasures), file, "long.mid", error)) {
            state.SkipWithError(error.c_str());
            break;
        }
    }
    state.counters["per_measure"] =
        benchmark::Counter(kMeasures, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_ImportThousandMeasuresFromOneFile)->Unit(benchmark::kMillisecond);

// Imports the 5 MB file into a fresh 10,000-measure document; false with `error` when refused.
bool ImportLargeFile(const std::vector<uint8_t>& file, std::string& error)
{
    stavio::Document doc = DrumDocument(kLargeFileMeasures);
    return stavio::midi_import::ImportMidiBytes(doc, Region(1, kLargeFileMeasures), file, "large.mid", error);
}

// The peak resident memory (kB) of this program run on its own to import the file at `path`
// from disk, as the host does; -1 when that run failed. The run reports its own high-water
// mark: what a spawned process inherits in its accounting from its parent does not count.
long ImportPeakKilobytes(const std::string& path)
{
    char self[4096] = {};
    if (readlink("/proc/self/exe", self, sizeof(self) - 1) <= 0) {
        return -1;
    }
    const std::string command = "'" + std::string(self) + "' " + kMeasureImportMemory + " '" + path + "'";
    FILE* run = popen(command.c_str(), "r");
    if (run == nullptr) {
        return -1;
    }
    long peak = -1;
    if (std::fscanf(run, "%ld", &peak) != 1) {
        peak = -1;
    }
    return pclose(run) == 0 ? peak : -1;
}

// VmHWM of /proc/self/status: this process's peak resident memory in kB.
long OwnPeakKilobytes()
{
    FILE* status = std::fopen("/proc/self/status", "r");
    if (status == nullptr) {
        return -1;
    }
    char line[256];
    long peak = -1;
    while (std::fgets(line, sizeof(line), status) != nullptr) {
        if (std::sscanf(line, "VmHWM: %ld", &peak) == 1) {
            break;
        }
    }
    std::fclose(status);
    return peak;
}

long LargeFilePeakKilobytes(const std::vector<uint8_t>& bytes)
{
    char path[] = "/tmp/import_bench_XXXXXX";
    const int fd = mkstemp(path);
    if (fd < 0) {
        return -1;
    }
    const bool written = write(fd, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    close(fd);
    const long peak = written ? ImportPeakKilobytes(path) : -1;
    unlink(path);
    return peak;
}

void BM_ImportFiveMegabytesIntoTenThousandMeasures(benchmark::State& state)
{
    const std::vector<uint8_t> file = LargeFile();
    std::string error;
    for (auto _ : state) {
        if (!ImportLargeFile(file, error)) {
            state.SkipWithError(error.c_str());
            return;
        }
    }
    state.counters["file_MB"] = static_cast<double>(file.size()) / (1 << 20);
    state.counters["peak_MB"] = static_cast<double>(LargeFilePeakKilobytes(file)) / 1024;
}
BENCHMARK(BM_ImportFiveMegabytesIntoTenThousandMeasures)->Unit(benchmark::kMillisecond);

}   // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::strcmp(argv[1], kMeasureImportMemory) == 0) {
        stavio::Document doc = DrumDocument(kLargeFileMeasures);
        std::string error;
        const bool imported = stavio::midi_import::ImportMidiFile(doc, Region(1, kLargeFileMeasures), argv[2], error);
        if (!imported) {
            std::fprintf(stderr, "%s\n", error.c_str());
            return 1;
        }
        std::printf("%ld\n", OwnPeakKilobytes());
        return 0;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
