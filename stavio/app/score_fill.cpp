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

// One measure number of the score as a document measure; a failure when there is none or the
// number is not unique.
toolbox::Result<int32_t> ResolveMeasure(const musicxml::ScoreFile& score, const std::string& number)
{
    const std::vector<int32_t> found = score.MeasuresNumbered(number);
    if (found.empty()) {
        return toolbox::Status::Failure(score.Name() + " has no measure numbered " + number +
                                        " (its measures are numbered " + NumberList(score) + ")");
    }
    if (found.size() > 1) {
        return toolbox::Status::Failure(score.Name() + " numbers " + std::to_string(found.size()) + " measures " +
                                        number + " (at positions " + std::to_string(found[0]) + " and " +
                                        std::to_string(found[1]) +
                                        ", counting from 1), so --measures cannot tell which one you mean");
    }
    return found[0];
}

toolbox::Result<MeasureRange> ResolveMeasures(const musicxml::ScoreFile& score, const std::string& text)
{
    // "5-12", "7" or "0-4"; a number that itself holds a dash ("12-a") is tried whole first.
    if (score.MeasuresNumbered(text).size() == 1) {
        const int32_t single = score.MeasuresNumbered(text).front();
        return MeasureRange{single, single};
    }
    for (size_t dash = text.find('-'); dash != std::string::npos; dash = text.find('-', dash + 1)) {
        const std::string first = text.substr(0, dash);
        const std::string last = text.substr(dash + 1);
        if (score.MeasuresNumbered(first).empty() && score.MeasuresNumbered(last).empty()) {
            continue;
        }
        const toolbox::Result<int32_t> from = ResolveMeasure(score, first);
        if (!from) {
            return from.status();
        }
        const toolbox::Result<int32_t> to = ResolveMeasure(score, last);
        if (!to) {
            return to.status();
        }
        if (*to < *from) {
            return toolbox::Status::Failure("--measures " + text + ": in " + score.Name() + " measure " + last +
                                            " comes before measure " + first);
        }
        return MeasureRange{*from, *to};
    }
    if (text.find('-') == std::string::npos) {
        return ResolveMeasure(score, text).status();
    }
    return toolbox::Status::Failure("--measures " + text + ": " + score.Name() +
                                    " has no such measures (its measures are numbered " + NumberList(score) + ")");
}

toolbox::Status CheckStaff(const musicxml::ScoreFile& score, const std::string& staff)
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
            return toolbox::Status::Failure(score.Name() + " has " + std::to_string(staves.size()) +
                                            " staves; --staff " + staff + " is not one of them");
        }
        return toolbox::Status::Ok();
    }
    if (matches == 0) {
        return toolbox::Status::Failure(score.Name() + " has no staff named \"" + staff + "\" (its staves: " + names +
                                        ")");
    }
    if (matches > 1) {
        return toolbox::Status::Failure(score.Name() + " has " + std::to_string(matches) + " staves named \"" + staff +
                                        "\"; give the staff's number instead (tamberlyne info lists them)");
    }
    return toolbox::Status::Ok();
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

    toolbox::Result<musicxml::ScoreFile> score = input.empty()
                                                     ? musicxml::ScoreFile::FromBytes(DemoScoreText(), "the demo score")
                                                     : musicxml::ScoreFile::Read(input);
    if (!score) {
        err << "tamberlyne: " << score.Message() << "\n";
        return kExitFailure;
    }
    if (options.measuresText) {
        const toolbox::Result<MeasureRange> range = ResolveMeasures(*score, *options.measuresText);
        if (!range) {
            err << "tamberlyne: " << range.Message() << "\n";
            return kExitUsage;
        }
        options.measures = *range;
        for (FillStep& step : options.moreFills) {
            const toolbox::Result<MeasureRange> stepRange = ResolveMeasures(*score, step.measuresText);
            if (!stepRange) {
                err << "tamberlyne: " << stepRange.Message() << "\n";
                return kExitUsage;
            }
            step.measures = *stepRange;
        }
    }
    if (options.staff) {
        if (const toolbox::Status staff = CheckStaff(*score, *options.staff); !staff) {
            err << "tamberlyne: " << staff.Message() << "\n";
            return kExitUsage;
        }
    }
    fill = ScoreFill{std::move(*score), output, options.json};
    return kExitOk;
}

int FinishScoreFill(const ScoreFill& fill, const Document& after, std::ostream& report, std::ostream& err)
{
    const musicxml::Container container =
        fill.output.empty() || fill.output == "-" ? musicxml::Container::Same : musicxml::ContainerForPath(fill.output);
    const toolbox::Result<std::string> bytes = fill.score.Write(after, container);
    if (!bytes) {
        err << "tamberlyne: " << bytes.Message() << "\n";
        return kExitFailure;
    }
    std::ostream& tell = fill.json ? err : report;
    if (fill.output.empty()) {
        tell << (fill.json ? "tamberlyne: dry run: nothing was written\n" : "Dry run: nothing was written\n");
        return kExitOk;
    }
    if (const toolbox::Status written = musicxml::WriteFileAtomically(fill.output, *bytes); !written) {
        err << "tamberlyne: " << written.Message() << "\n";
        return kExitFailure;
    }
    if (fill.output != "-") {
        tell << (fill.json ? "tamberlyne: wrote " : "Wrote ") << fill.output << "\n";
    }
    return kExitOk;
}

}   // namespace stavio::app
