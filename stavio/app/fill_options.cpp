#include "stavio/app/fill_options.h"

#include <cctype>

namespace stavio::app {

namespace {

// "--name=value" or "--name value".
bool TakeValue(const std::vector<std::string>& arguments, size_t& index, const std::string& name, std::string& value,
               std::string& error)
{
    const std::string& argument = arguments[index];
    if (argument.size() > name.size() && argument.compare(0, name.size() + 1, name + "=") == 0) {
        value = argument.substr(name.size() + 1);
    } else if (index + 1 < arguments.size()) {
        value = arguments[++index];
    } else {
        error = "option " + name + " needs a value";
        return false;
    }
    if (value.empty()) {
        error = "option " + name + " needs a value";
        return false;
    }
    return true;
}

bool IsOption(const std::string& argument, const std::string& name)
{
    return argument == name || argument.compare(0, name.size() + 1, name + "=") == 0;
}

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

bool ReadStyle(const std::string& text, GrooveStyle& style, std::string& error)
{
    for (GrooveStyle candidate : {GrooveStyle::DrumStaff, GrooveStyle::PercussionClef, GrooveStyle::Slashes}) {
        if (text == StyleOptionName(candidate)) {
            style = candidate;
            return true;
        }
    }
    error = "option --style takes drums, percussion-clef or slashes (got \"" + text + "\")";
    return false;
}

}   // namespace

// "5-12" or "7".
bool ReadMeasureRange(const std::string& text, MeasureRange& range, std::string& error)
{
    const size_t dash = text.find('-');
    const std::string first = text.substr(0, dash);
    const std::string last = dash == std::string::npos ? first : text.substr(dash + 1);
    if (!ReadMeasureNumber(first, range.first) || !ReadMeasureNumber(last, range.last)) {
        error = "option --measures takes FIRST-LAST or one measure number, counting from 1 (got \"" + text + "\")";
        return false;
    }
    if (range.last < range.first) {
        error = "option --measures: the last measure " + last + " comes before the first " + first;
        return false;
    }
    return true;
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

bool ParseFillOptions(const std::vector<std::string>& arguments, FillOptions& options, std::string& error)
{
    for (size_t index = 0; index < arguments.size(); ++index) {
        const std::string& argument = arguments[index];
        std::string value;
        if (IsOption(argument, "--measures")) {
            MeasureRange range;
            if (!TakeValue(arguments, index, "--measures", value, error) || !ReadMeasureRange(value, range, error)) {
                return false;
            }
            options.measures = range;
        } else if (IsOption(argument, "--groove")) {
            if (!TakeValue(arguments, index, "--groove", value, error)) {
                return false;
            }
            options.groove = value;
        } else if (IsOption(argument, "--staff")) {
            if (!TakeValue(arguments, index, "--staff", value, error)) {
                return false;
            }
            options.staff = value;
        } else if (IsOption(argument, "--style")) {
            GrooveStyle style = GrooveStyle::DrumStaff;
            if (!TakeValue(arguments, index, "--style", value, error) || !ReadStyle(value, style, error)) {
                return false;
            }
            options.style = style;
        } else if (IsOption(argument, "--library")) {
            if (!TakeValue(arguments, index, "--library", value, error)) {
                return false;
            }
            options.library = value;
        } else if (argument == "--new-staff") {
            options.newStaff = true;
        } else if (argument == "--yes" || argument == "--no") {
            const bool yes = argument == "--yes";
            if (options.answerYes && *options.answerYes != yes) {
                error = "options --yes and --no contradict each other";
                return false;
            }
            options.answerYes = yes;
        } else if (argument == "--interactive") {
            options.interactive = true;
        } else if (argument == "--json") {
            options.json = true;
        } else if (bool taken = false; !TakeSoundOption(arguments, index, options.sound, taken, error)) {
            return false;
        } else if (taken) {
            continue;
        } else if (!argument.empty() && argument[0] == '-') {
            error = "unknown option \"" + argument + "\" for the fill command";
            return false;
        } else {
            error = "the fill command takes no arguments besides its options (got \"" + argument + "\")";
            return false;
        }
    }
    return true;
}

std::string FillUsageText()
{
    return "Usage: tamberlyne [options] fill [fill options]\n"
           "\n"
           "Runs the Tamberlyne plug-in on a demo score (16 measures of 4/4, a piano staff \"Piano\"\n"
           "and a drum staff \"Drums\") through the host's whole interface, and prints what changed.\n"
           "The plug-in's dialog is answered from the options below; in a terminal without --groove\n"
           "it is shown and you choose yourself.\n"
           "\n"
           "Fill options:\n"
           "  --measures FIRST-LAST  select these measures on every staff (default: nothing is\n"
           "                         selected, and the plug-in asks whether to fill the whole score)\n"
           "  --groove NAME          the groove to choose in the dialog's list (\"Rock\" or \"Rock.mid\")\n"
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
           "  --json                 print the result as JSON (an interactive dialog is then shown\n"
           "                         on the error stream)\n" +
           SoundOptionsUsage(true) +
           "\n"
           "Exit status: 0 when the score changed, 1 when the plug-in refused or nothing changed\n"
           "(its message is printed), 2 for wrong usage.\n";
}

}   // namespace stavio::app
