// The host's MIDI import over a 1,000-measure region: from one long played file (sixteenth
// hi-hats, kick and snare, a swung beat in every fourth bar, every hit a few ticks off), and
// the way the plug-in drives it, one import of a two-bar groove per repetition. The target is
// well under a second for the whole region.
#include "stavio/document_builder.h"
#include "stavio/midi_import/midi_import.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int kMeasures = 1000;
constexpr int kTicksPerQuarter = 480;

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
    std::vector<uint8_t> file{'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, 0, 0, 1};
    PutWord(file, kTicksPerQuarter, 2);
    file.insert(file.end(), {'M', 'T', 'r', 'k'});
    PutWord(file, static_cast<uint32_t>(body.size()), 4);
    file.insert(file.end(), body.begin(), body.end());
    return file;
}

stavio::Document DrumDocument()
{
    return stavio::DocumentBuilder().Measures(kMeasures).Staff("Drum Set").DrumStaff(1).Build();
}

EREGION Region(int first, int last)
{
    EREGION region{};
    region.start = {0, 1, static_cast<uint16_t>(first), 0};
    region.end = {0, 1, static_cast<uint16_t>(last), 0x7FFFFFFF};
    return region;
}

void BM_ImportThousandMeasuresFromOneFile(benchmark::State& state)
{
    const std::vector<uint8_t> file = LongPlayedFile(kMeasures);
    stavio::Document doc = DrumDocument();
    std::string error;
    for (auto _ : state) {
        if (!stavio::midi_import::ImportMidiBytes(doc, Region(1, kMeasures), file, "long.mid", error)) {
            state.SkipWithError(error.c_str());
            break;
        }
    }
    state.counters["measures/s"] = benchmark::Counter(kMeasures, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_ImportThousandMeasuresFromOneFile)->Unit(benchmark::kMillisecond);

void BM_ImportThousandMeasuresByRepeatingAGroove(benchmark::State& state)
{
    const std::string groove = std::string(TAMBERLYNE_SOURCE_DIR) + "/grooves/Tamberlyne/Pop 16ths.mid";
    constexpr int kGrooveBars = 2;
    stavio::Document doc = DrumDocument();
    std::string error;
    for (auto _ : state) {
        for (int first = 1; first <= kMeasures; first += kGrooveBars) {
            if (!stavio::midi_import::ImportMidiFile(doc, Region(first, first + kGrooveBars - 1), groove, error)) {
                state.SkipWithError(error.c_str());
                return;
            }
        }
    }
    state.counters["measures/s"] = benchmark::Counter(kMeasures, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_ImportThousandMeasuresByRepeatingAGroove)->Unit(benchmark::kMillisecond);

}   // namespace

BENCHMARK_MAIN();
