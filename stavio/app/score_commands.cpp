// `tamberlyne info SCORE` and `tamberlyne convert IN -o OUT`: what a MusicXML score holds as
// the host reads it, and the score between its plain and compressed forms.
#include "stavio/app/commands.h"
#include "stavio/app/staff_changes.h"
#include "stavio/dialogs/dialog_text.h"
#include "stavio/musicxml/score_file.h"

#include <filesystem>
#include <ostream>

namespace stavio::app {

namespace {

std::string MeterText(const musicxml::MeasureInfo& measure)
{
    return std::to_string(measure.beats) + "/" + std::to_string(measure.beatType);
}

void WriteInfoText(std::ostream& out, const musicxml::ScoreFile& score)
{
    const auto& measures = score.Measures();
    out << score.Name() << ": MusicXML" << (score.Stored() == musicxml::Container::Compressed ? " (.mxl)" : "") << ", "
        << measures.size() << " measures (numbered " << measures.front().number << " to " << measures.back().number
        << ")\n";
    out << "Meters:";
    for (size_t i = 0; i < measures.size(); ++i) {
        if (i == 0 || MeterText(measures[i]) != MeterText(measures[i - 1])) {
            out << " " << MeterText(measures[i]) << " from measure " << measures[i].number;
        }
    }
    out << "\n";
    for (size_t i = 0; i < measures.size(); ++i) {
        if (measures[i].implicit) {
            out << "Measure " << measures[i].number << " is a pickup (implicit)\n";
        }
    }
    out << "Staves:\n";
    for (const musicxml::StaffInfo& staff : score.Staves()) {
        const musicxml::PartInfo& part = score.Parts()[staff.part];
        out << "  " << staff.inst << "  " << staff.name << "  (part " << part.id;
        if (part.staves > 1) {
            out << ", staff " << staff.staffInPart << " of " << part.staves;
        }
        if (part.midiChannel > 0) {
            out << ", MIDI channel " << part.midiChannel;
        }
        out << ")" << (staff.drum ? "  drum staff" : "") << "\n";
    }
}

void WriteInfoJson(std::ostream& out, const musicxml::ScoreFile& score)
{
    out << "{\"file\":" << JsonQuoted(score.Name()) << ",\"container\":\""
        << (score.Stored() == musicxml::Container::Compressed ? "mxl" : "musicxml") << "\",\"parts\":[";
    for (size_t i = 0; i < score.Parts().size(); ++i) {
        const musicxml::PartInfo& part = score.Parts()[i];
        out << (i > 0 ? "," : "") << "{\"id\":" << JsonQuoted(part.id) << ",\"name\":" << JsonQuoted(part.name)
            << ",\"staves\":" << part.staves << ",\"midiChannel\":" << part.midiChannel
            << ",\"midiProgram\":" << part.midiProgram << ",\"drum\":" << (part.drum ? "true" : "false") << "}";
    }
    out << "],\"staves\":[";
    for (size_t i = 0; i < score.Staves().size(); ++i) {
        const musicxml::StaffInfo& staff = score.Staves()[i];
        out << (i > 0 ? "," : "") << "{\"number\":" << staff.inst << ",\"name\":" << JsonQuoted(staff.name)
            << ",\"part\":" << JsonQuoted(score.Parts()[staff.part].id) << ",\"staffInPart\":" << staff.staffInPart
            << ",\"drum\":" << (staff.drum ? "true" : "false") << "}";
    }
    out << "],\"measures\":[";
    for (size_t i = 0; i < score.Measures().size(); ++i) {
        const musicxml::MeasureInfo& measure = score.Measures()[i];
        out << (i > 0 ? "," : "") << "{\"number\":" << JsonQuoted(measure.number)
            << ",\"implicit\":" << (measure.implicit ? "true" : "false") << ",\"time\":\"" << MeterText(measure)
            << "\",\"fifths\":" << measure.fifths << "}";
    }
    out << "]}\n";
}

}   // namespace

int RunInfoCommand(const CommandLine& line, std::ostream& out, std::ostream& err)
{
    std::string path;
    bool json = false;
    for (const std::string& argument : line.arguments) {
        if (argument == "--json") {
            json = true;
        } else if (path.empty() && (argument == "-" || argument.empty() || argument[0] != '-')) {
            path = argument;
        } else {
            err << "tamberlyne: info takes one score and --json (got \"" << argument << "\")\n\n" << InfoUsageText();
            return kExitUsage;
        }
    }
    if (path.empty()) {
        err << "tamberlyne: info needs a score (a .musicxml, .xml or .mxl file, or - for standard input)\n\n"
            << InfoUsageText();
        return kExitUsage;
    }
    const toolbox::Result<musicxml::ScoreFile> score = musicxml::ScoreFile::Read(path);
    if (!score) {
        err << "tamberlyne: " << score.Message() << "\n";
        return kExitFailure;
    }
    if (json) {
        WriteInfoJson(out, *score);
    } else {
        WriteInfoText(out, *score);
    }
    return kExitOk;
}

int RunConvertCommand(const CommandLine& line, std::ostream& /*out*/, std::ostream& err)
{
    std::string input;
    std::string output;
    bool force = false;
    const auto& arguments = line.arguments;
    for (size_t i = 0; i < arguments.size(); ++i) {
        if ((arguments[i] == "-o" || arguments[i] == "--output") && i + 1 < arguments.size()) {
            output = arguments[++i];
        } else if (arguments[i] == "--force") {
            force = true;
        } else if (input.empty() && (arguments[i] == "-" || arguments[i][0] != '-')) {
            input = arguments[i];
        } else {
            err << "tamberlyne: convert: unexpected \"" << arguments[i] << "\"\n\n" << ConvertUsageText();
            return kExitUsage;
        }
    }
    if (input.empty() || output.empty()) {
        err << "tamberlyne: convert needs a score and -o OUT\n\n" << ConvertUsageText();
        return kExitUsage;
    }
    std::error_code ignored;
    if (output != "-" && input != "-" && std::filesystem::equivalent(input, output, ignored)) {
        err << "tamberlyne: " << output << " is the input itself; convert writes a new file\n";
        return kExitUsage;
    }
    if (output != "-" && !force && std::filesystem::exists(output)) {
        err << "tamberlyne: " << output << " exists; use --force to replace it\n";
        return kExitFailure;
    }
    const toolbox::Result<musicxml::ScoreFile> score = musicxml::ScoreFile::Read(input);
    if (!score) {
        err << "tamberlyne: " << score.Message() << "\n";
        return kExitFailure;
    }
    const musicxml::Container container =
        output == "-" ? musicxml::Container::Same : musicxml::ContainerForPath(output);
    const toolbox::Result<std::string> bytes = score->Write(score->document(), container);
    const toolbox::Status written = bytes ? musicxml::WriteFileAtomically(output, *bytes) : bytes.status();
    if (!written) {
        err << "tamberlyne: " << written.Message() << "\n";
        return kExitFailure;
    }
    return kExitOk;
}

std::string InfoUsageText()
{
    return "Usage: tamberlyne info SCORE [--json]\n"
           "\n"
           "Reads a MusicXML score (.musicxml, .xml or .mxl; - reads standard input) and tells what the\n"
           "host sees in it: its parts and staves (numbered as --staff takes them), which are drum\n"
           "staves, its measures with the score's own numbers, and its meters.\n";
}

std::string ConvertUsageText()
{
    return "Usage: tamberlyne convert IN -o OUT [--force]\n"
           "\n"
           "Writes the score IN as OUT: a .mxl name gives a compressed score, any other name plain\n"
           "MusicXML. Nothing else changes: the score's text is copied byte for byte. An existing OUT\n"
           "is replaced only with --force; - as OUT writes standard output.\n";
}

}   // namespace stavio::app
