#include "stavio/app/score_fill.h"

#include "stavio/app/commands.h"
#include "stavio/app/demo_score.h"

#include <filesystem>
#include <ostream>

namespace stavio::app {

namespace {

std::string NumberList(const musicxml::ScoreFile& score)
{
    const auto& measures = score.Measures();
    return measures.front().number + " to " + measures.back().number;
}

// One measure number of the score as a document measure; 0 and a message when there is none or
// the number is not unique.
int32_t ResolveMeasure(const musicxml::ScoreFile& score, const std::string& number, std::string& error)
{
    const std::vector<int32_t> found = score.MeasuresNumbered(number);
    if (found.empty()) {
        error = score.Name() + " has no measure numbered " + number + " (its measures are numbered " +
                NumberList(score) + ")";
        return 0;
    }
    if (found.size() > 1) {
        error = score.Name() + " numbers " + std::to_string(found.size()) + " measures " + number + " (at positions " +
                std::to_string(found[0]) + " and " + std::to_string(found[1]) +
                ", counting from 1), so --measures cannot tell which one you mean";
        return 0;
    }
    return found[0];
}

bool ResolveMeasures(const musicxml::ScoreFile& score, const std::string& text, MeasureRange& range, std::string& error)
{
    // "5-12", "7" or "0-4"; a number that itself holds a dash ("12-a") is tried whole first.
    std::string lastError;
    if (int32_t single = score.MeasuresNumbered(text).size() == 1 ? ResolveMeasure(score, text, error) : 0;
        single > 0) {
        range = MeasureRange{single, single};
        return true;
    }
    for (size_t dash = text.find('-'); dash != std::string::npos; dash = text.find('-', dash + 1)) {
        const std::string first = text.substr(0, dash);
        const std::string last = text.substr(dash + 1);
        if (score.MeasuresNumbered(first).empty() && score.MeasuresNumbered(last).empty()) {
            continue;
        }
        const int32_t from = ResolveMeasure(score, first, error);
        const int32_t to = from > 0 ? ResolveMeasure(score, last, error) : 0;
        if (from == 0 || to == 0) {
            return false;
        }
        if (to < from) {
            error =
                "--measures " + text + ": in " + score.Name() + " measure " + last + " comes before measure " + first;
            return false;
        }
        range = MeasureRange{from, to};
        return true;
    }
    if (text.find('-') == std::string::npos) {
        ResolveMeasure(score, text, error);
    } else {
        error = "--measures " + text + ": " + score.Name() + " has no such measures (its measures are numbered " +
                NumberList(score) + ")";
    }
    return false;
}

bool CheckStaff(const musicxml::ScoreFile& score, const std::string& staff, std::string& error)
{
    const auto& staves = score.Staves();
    std::string names;
    size_t matches = 0;
    for (const musicxml::StaffInfo& info : staves) {
        names += (names.empty() ? "" : ", ") + std::string("\"") + info.name + "\"";
        matches += info.name == staff ? 1U : 0U;
    }
    const bool number =
        !staff.empty() && staff.find_first_not_of("0123456789") == std::string::npos && staff.size() < 6;
    if (number) {
        const int value = std::stoi(staff);
        if (value < 1 || value > static_cast<int>(staves.size())) {
            error = score.Name() + " has " + std::to_string(staves.size()) + " staves; --staff " + staff +
                    " is not one of them";
            return false;
        }
        return true;
    }
    if (matches == 0) {
        error = score.Name() + " has no staff named \"" + staff + "\" (its staves: " + names + ")";
        return false;
    }
    if (matches > 1) {
        error = score.Name() + " has " + std::to_string(matches) + " staves named \"" + staff +
                "\"; give the staff's number instead (tamberlyne info lists them)";
        return false;
    }
    return true;
}

std::string DefaultOutput(const std::string& input)
{
    const std::filesystem::path path(input);
    const bool compressed = musicxml::ContainerForPath(input) == musicxml::Container::Compressed;
    return (path.parent_path() / (path.stem().string() + (compressed ? ".drums.mxl" : ".drums.musicxml"))).string();
}

}   // namespace

int PrepareScoreFill(FillOptions& options, std::optional<ScoreFill>& fill, std::ostream& err)
{
    const std::string input = options.score.value_or("");   // none: the demo score
    if (options.inPlace && options.output) {
        err << "tamberlyne: --in-place and -o contradict each other: the filled score goes to one place\n";
        return kExitUsage;
    }
    if (options.inPlace && (input == "-" || input.empty())) {
        err << "tamberlyne: --in-place needs a score file" << (input.empty() ? "" : ", not standard input") << "\n";
        return kExitUsage;
    }
    std::string output = options.inPlace ? input : options.output.value_or(input == "-" ? "-" : DefaultOutput(input));
    if (options.dryRun) {
        output.clear();
    }
    std::error_code ignored;
    if (!output.empty() && output != "-" && !options.inPlace && input != "-" &&
        std::filesystem::equivalent(input, output, ignored)) {
        err << "tamberlyne: -o " << output << " is the score itself; use --in-place to overwrite the input\n";
        return kExitUsage;
    }
    if (!output.empty() && output != "-" && !options.inPlace && !options.force && std::filesystem::exists(output)) {
        err << "tamberlyne: " << output << " exists; use --force to replace it or -o to write elsewhere\n";
        return kExitFailure;
    }

    std::string error;
    std::optional<musicxml::ScoreFile> score =
        input.empty() ? musicxml::ScoreFile::FromBytes(DemoScoreText(), "the demo score", error)
                      : musicxml::ScoreFile::Read(input, error);
    if (!score) {
        err << "tamberlyne: " << error << "\n";
        return kExitFailure;
    }
    if (options.measuresText) {
        MeasureRange range;
        if (!ResolveMeasures(*score, *options.measuresText, range, error)) {
            err << "tamberlyne: " << error << "\n";
            return kExitUsage;
        }
        options.measures = range;
        for (FillStep& step : options.moreFills) {
            if (!ResolveMeasures(*score, step.measuresText, step.measures, error)) {
                err << "tamberlyne: " << error << "\n";
                return kExitUsage;
            }
        }
    }
    if (options.staff && !CheckStaff(*score, *options.staff, error)) {
        err << "tamberlyne: " << error << "\n";
        return kExitUsage;
    }
    fill = ScoreFill{std::move(*score), output, options.json};
    return kExitOk;
}

int FinishScoreFill(const ScoreFill& fill, const Document& after, std::ostream& report, std::ostream& err)
{
    std::string bytes;
    std::string error;
    const musicxml::Container container =
        fill.output.empty() || fill.output == "-" ? musicxml::Container::Same : musicxml::ContainerForPath(fill.output);
    if (!fill.score.Write(after, container, bytes, error)) {
        err << "tamberlyne: " << error << "\n";
        return kExitFailure;
    }
    std::ostream& tell = fill.json ? err : report;
    if (fill.output.empty()) {
        tell << (fill.json ? "tamberlyne: dry run: nothing was written\n" : "Dry run: nothing was written\n");
        return kExitOk;
    }
    if (!musicxml::WriteFileAtomically(fill.output, bytes, error)) {
        err << "tamberlyne: " << error << "\n";
        return kExitFailure;
    }
    if (fill.output != "-") {
        tell << (fill.json ? "tamberlyne: wrote " : "Wrote ") << fill.output << "\n";
    }
    return kExitOk;
}

}   // namespace stavio::app
