// MusicXML scores in the host: open, save, and open + fill + save of the big generated score
// (2,000 measures of 8 parts, about 12 MB), written once into a temporary folder.
//
// - Open: the file's bytes into a host document (ScoreFile::FromBytes).
// - Open + save unchanged: the same, then the splicing writer (Write), in this process.
// - Open + fill + save as a person runs it: the built `tamberlyne fill` command on the file,
//   a groove over every measure of the drum part, written to a new file; the whole command is
//   timed as a child process (loading the plug-in, the groove library, reading, filling,
//   writing), with its preferences and data in the temporary folder.
//
// Each reports the file's size and the megabytes per second it gets through: over this
// process's CPU time for the first two, over the command's wall time for the third.
// bench/compare_scores.sh times the same command against MuseScore 3 on the same file.
#include "bench/big_score.h"
#include "stavio/musicxml/score_file.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern char** environ;

namespace {

namespace fs = std::filesystem;
using stavio::musicxml::Container;
using stavio::musicxml::ScoreFile;

constexpr int kMeasures = 2000;
constexpr int kParts = 8;
constexpr double kMegabyte = 1 << 20;

// The temporary folder with the score, the command's output, preferences and data. Made on first
// use, removed when the program ends.
struct Workspace {
    fs::path folder;
    fs::path score;
    fs::path output;
    std::string bytes;

    Workspace()
    {
        std::string pattern = (fs::temp_directory_path() / "score_bench.XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            std::perror("score_bench: cannot make a temporary folder");
            std::exit(1);
        }
        folder = pattern;
        score = folder / "big.musicxml";
        output = folder / "big.drums.musicxml";
        bytes = bench::BigScore(kMeasures, kParts);
        std::ofstream(score, std::ios::binary) << bytes;
        fs::create_directories(folder / "config");
        fs::create_directories(folder / "data");
        // The child inherits these: its preferences and groove data stay in the folder.
        setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1);
        setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
    }
    ~Workspace()
    {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;
};

Workspace& Shared()
{
    static Workspace workspace;
    return workspace;
}

void ReportSize(benchmark::State& state, size_t bytes)
{
    const double megabytes = static_cast<double>(bytes) / kMegabyte;
    state.counters["file_MB"] = megabytes;
    state.counters["MB_per_s"] = benchmark::Counter(megabytes, benchmark::Counter::kIsIterationInvariantRate);
}

void BM_OpenBigScore(benchmark::State& state)
{
    const Workspace& work = Shared();
    for (auto _ : state) {
        toolbox::Result<ScoreFile> score = ScoreFile::FromBytes(work.bytes, work.score.string());
        if (!score) {
            state.SkipWithError(score.Message().c_str());
            return;
        }
        benchmark::DoNotOptimize(score->Measures().size());
    }
    ReportSize(state, work.bytes.size());
}
BENCHMARK(BM_OpenBigScore)->Unit(benchmark::kMillisecond);

void BM_OpenAndSaveBigScoreUnchanged(benchmark::State& state)
{
    const Workspace& work = Shared();
    for (auto _ : state) {
        toolbox::Result<ScoreFile> score = ScoreFile::FromBytes(work.bytes, work.score.string());
        if (!score) {
            state.SkipWithError(score.Message().c_str());
            return;
        }
        toolbox::Result<std::string> saved = score->Write(score->document(), Container::Same);
        if (!saved || saved->size() != work.bytes.size()) {
            state.SkipWithError(saved ? "the unchanged score did not come back the same size"
                                      : saved.Message().c_str());
            return;
        }
        benchmark::DoNotOptimize(saved->data());
    }
    ReportSize(state, work.bytes.size());
}
BENCHMARK(BM_OpenAndSaveBigScoreUnchanged)->Unit(benchmark::kMillisecond);

// Runs the command and waits; its output goes nowhere unless it fails, when it is shown.
bool Run(const std::vector<std::string>& arguments, const fs::path& log, std::string& error)
{
    std::vector<char*> argv;
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    pid_t child = 0;
    const int spawned = posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) {
        error = "cannot run " + arguments[0];
        return false;
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) {
        return true;
    }
    std::ifstream in(log);
    error = arguments[0] + " failed: " + std::string(std::istreambuf_iterator<char>(in), {});
    return false;
}

void BM_OpenFillAndSaveBigScoreWithTheCommand(benchmark::State& state)
{
    const Workspace& work = Shared();
    const std::vector<std::string> command{TAMBERLYNE_PROGRAM,
                                           "fill",
                                           work.score.string(),
                                           "--measures",
                                           "1-" + std::to_string(kMeasures),
                                           "--groove",
                                           "Rock 8ths",
                                           "--staff",
                                           "Drum Set",
                                           "--yes",
                                           "-o",
                                           work.output.string(),
                                           "--force"};
    std::string error;
    for (auto _ : state) {
        if (!Run(command, work.folder / "fill.log", error)) {
            state.SkipWithError(error.c_str());
            return;
        }
    }
    if (fs::file_size(work.output) == work.bytes.size()) {
        state.SkipWithError("the filled score has the input's size: nothing was filled");
        return;
    }
    ReportSize(state, work.bytes.size());
    state.counters["out_MB"] = static_cast<double>(fs::file_size(work.output)) / kMegabyte;
}
BENCHMARK(BM_OpenFillAndSaveBigScoreWithTheCommand)->Unit(benchmark::kMillisecond)->UseRealTime();

}   // namespace

BENCHMARK_MAIN();
