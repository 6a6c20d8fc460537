#include "stavio/app/fill_options.h"

#include "stavio/app/command_line.h"

#include <cctype>

namespace stavio::app {

namespace {

using toolbox::Status;

bool ReadMeasureNumber(const std::string& text, int& number)
{
    if (text.empty() || text.size() > 5) {
        return false;
    }
    for (char c : text) {
        if (!std::isdigit(static_cast<unsigned char>(c))) {
            return false;
        }
    }
    number = std::stoi(text);
    return number >= 1;
}

toolbox::Result<GrooveStyle> ReadStyle(const std::string& text)
{
    for (GrooveStyle candidate : {GrooveStyle::DrumStaff, GrooveStyle::PercussionClef, GrooveStyle::Slashes}) {
        if (text == StyleOptionName(candidate)) {
            return candidate;
        }
    }
    return Status::Failure("option --style takes drums, percussion-clef or slashes (got \"" + text + "\")");
}

// The value of option `name` made into what `read` gives, kept in `target`.
template <typename Target, typename Read>
Status TakeInto(const std::vector<std::string>& arguments, size_t& index, const std::string& name, Target& target,
                Read read)
{
    const toolbox::Result<std::string> value = TakeOptionValue(arguments, index, name);
    if (!value) {
        return value.status();
    }
    auto made = read(*value);
    if (!made) {
        return made.status();
    }
    target = *made;
    return Status::Ok();
}

}   // namespace

// "5-12" or "7".
toolbox::Result<MeasureRange> ReadMeasureRange(const std::string& text)
{
    const size_t dash = text.find('-');
    const std::string first = text.substr(0, dash);
    const std::string last = dash == std::string::npos ? first : text.substr(dash + 1);
    MeasureRange range;
    if (!ReadMeasureNumber(first, range.first) || !ReadMeasureNumber(last, range.last)) {
        return Status::Failure("option --measures takes FIRST-LAST or one measure number, counting from 1 (got \"" +
                               text + "\")");
    }
    if (range.last < range.first) {
        return Status::Failure("option --measures: the last measure " + last + " comes before the first " + first);
    }
    return range;
}

const char* StyleOptionName(GrooveStyle style)
{
    switch (style) {
        case GrooveStyle::DrumStaff: return "drums";
        case GrooveStyle::PercussionClef: return "percussion-clef";
        case GrooveStyle::Slashes: return "slashes";
    }
    return "drums";
}

toolbox::Result<FillOptions> ParseFillOptions(const std::vector<std::string>& arguments)
{
    const auto text = [](const std::string& value) { return toolbox::Result<std::string>(value); };
    FillOptions options;
    std::vector<FillStep> fills;
    for (size_t index = 0; index < arguments.size(); ++index) {
        const std::string& argument = arguments[index];
        Status taken;
        if (IsOption(argument, "--measures")) {
            taken = TakeInto(arguments, index, "--measures", options.measuresText, text);
        } else if (IsOption(argument, "--fill")) {
            std::optional<std::string> value;
            taken = TakeInto(arguments, index, "--fill", value, text);
            if (taken) {
                const size_t equals = value->find('=');
                if (equals == std::string::npos || equals == 0 || equals + 1 == value->size()) {
                    return Status::Failure("option --fill takes MEASURES=GROOVE, such as 1-8=\"Rock 8ths\" (got \"" +
                                           *value + "\")");
                }
                fills.push_back(FillStep{value->substr(0, equals), MeasureRange{}, value->substr(equals + 1)});
            }
        } else if (argument == "-o" || IsOption(argument, "--output")) {
            taken = TakeInto(arguments, index, argument == "-o" ? "-o" : "--output", options.output, text);
        } else if (argument == "--in-place" || argument == "--force" || argument == "--dry-run") {
            (argument == "--in-place" ? options.inPlace
             : argument == "--force"  ? options.force
                                      : options.dryRun) = true;
        } else if (argument == "-" && !options.score) {
            options.score = argument;
        } else if (IsOption(argument, "--groove")) {
            taken = TakeInto(arguments, index, "--groove", options.groove, text);
        } else if (IsOption(argument, "--staff")) {
            taken = TakeInto(arguments, index, "--staff", options.staff, text);
        } else if (IsOption(argument, "--style")) {
            taken = TakeInto(arguments, index, "--style", options.style, ReadStyle);
        } else if (IsOption(argument, "--library")) {
            taken = TakeInto(arguments, index, "--library", options.library, text);
        } else if (argument == "--new-staff") {
            options.newStaff = true;
        } else if (argument == "--yes" || argument == "--no") {
            const bool yes = argument == "--yes";
            if (options.answerYes && *options.answerYes != yes) {
                return Status::Failure("options --yes and --no contradict each other");
            }
            options.answerYes = yes;
        } else if (argument == "--interactive") {
            options.interactive = true;
        } else if (argument == "--json") {
            options.json = true;
        } else if (const toolbox::Result<bool> sound = TakeSoundOption(arguments, index, options.sound);
                   !sound || *sound) {
            taken = sound.status();
        } else if (!argument.empty() && argument[0] == '-') {
            return Status::Failure("unknown option \"" + argument + "\" for the fill command");
        } else if (!options.score) {
            options.score = argument;
        } else {
            return Status::Failure("the fill command takes one score (got \"" + *options.score + "\" and \"" +
                                   argument + "\")");
        }
        if (!taken) {
            return taken;
        }
    }
    if (!fills.empty()) {
        if (options.measuresText || options.groove) {
            return Status::Failure("--fill names its measures and groove itself; leave out --measures and --groove");
        }
        options.measuresText = fills.front().measuresText;
        options.groove = fills.front().groove;
        options.moreFills.assign(fills.begin() + 1, fills.end());
    }
    // A score's measures are its own numbers, resolved against the score (score_fill.h).
    if (options.measuresText && !options.score) {
        const toolbox::Result<MeasureRange> range = ReadMeasureRange(*options.measuresText);
        if (!range) {
            return range.status();
        }
        options.measures = *range;
        for (FillStep& step : options.moreFills) {
            const toolbox::Result<MeasureRange> stepRange = ReadMeasureRange(step.measuresText);
            if (!stepRange) {
                return stepRange.status();
            }
            step.measures = *stepRange;
        }
    }
    return options;
}

std::string FillUsageText()
{
    return "Usage: tamberlyne [options] fill [SCORE] [fill options]\n"
           "\n"
           "Runs the Tamberlyne plug-in on a demo score (16 measures of 4/4, a piano staff \"Piano\"\n"
           "and a drum staff \"Drums\") through the host's whole interface, and prints what changed.\n"
           "The plug-in's dialog is answered from the options below; in a terminal without --groove\n"
           "it is shown and you choose yourself.\n"
           "\n"
           "With SCORE (a .musicxml, .xml or .mxl file, or - for standard input) the plug-in fills\n"
           "that score instead, and the result is written beside it as NAME.drums.musicxml (or\n"
           "NAME.drums.mxl): only the filled measures of the target staff and what the plug-in\n"
           "changed on it are rewritten, every other byte is the input's.\n"
           "\n"
           "Fill options:\n"
           "  --measures FIRST-LAST  select these measures on every staff; with SCORE, the measure\n"
           "                         numbers the score shows (a pickup is often 0; default: nothing is\n"
           "                         selected, and the plug-in asks whether to fill the whole score)\n"
           "  --groove NAME          the groove to choose in the dialog's list (\"Rock\" or \"Rock.mid\")\n"
           "  --fill MEASURES=GROOVE instead of --measures and --groove: fill these measures with this\n"
           "                         groove; give it again for more (--fill 1-8=\"Rock 8ths\" --fill\n"
           "                         9-16=\"Half-Time Groove\"): the plug-in runs once per fill on the\n"
           "                         same score, one undo step each, and one result is written\n"
           "  --staff NAME|NUMBER    the staff to choose in the staff pop-up (by name or from 1);\n"
           "                         default: the dialog's choice, the last drum staff\n"
           "  --style drums|percussion-clef|slashes\n"
           "                         the notation style (default: the dialog's choice)\n"
           "  --new-staff            put the groove on a new staff\n"
           "  --yes, --no            the answer to the plug-in's questions (default: No)\n"
           "  --library DIR          the groove folder: DIR holds the .mid files and must be named\n"
           "                         \"Tamberlyne\" (default: the per-user library, filled from the\n"
           "                         bundled one on first use)\n"
           "  --interactive          show the dialog in the terminal and let you choose\n"
           "  -o, --output OUT       write the filled score to OUT (- for standard output; the\n"
           "                         report then goes to standard error)\n"
           "  --in-place             write the filled score over SCORE itself\n"
           "  --force                replace an existing OUT\n"
           "  --dry-run              show what would change (the drum grid) and write nothing\n"
           "  --json                 print the result as JSON (an interactive dialog is then shown\n"
           "                         on the error stream)\n" +
           SoundOptionsUsage(true) +
           "\n"
           "Exit status: 0 when the groove's notes landed, 1 when the plug-in did not fill the\n"
           "measures (it refused, or no note of the groove landed; the reason is printed), 2 for\n"
           "wrong usage.\n";
}

}   // namespace stavio::app
