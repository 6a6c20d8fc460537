// `tamberlyne grooves`: the groove folder as the plug-in sees it (each groove's meter, the bars
// it repeats, tempo, kit and feel, and why a file would be refused), and `grooves show NAME`:
// a groove's drum grid, imported into a scratch score of its own meter and length.
#include "stavio/app/commands.h"
#include "stavio/app/groove_analysis.h"
#include "stavio/app/groove_library.h"
#include "stavio/app/staff_changes.h"
#include "stavio/dialogs/dialog_text.h"
#include "stavio/document_builder.h"
#include "stavio/midi_import/midi_import.h"
#include "stavio/views/staff_view.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <ostream>
#include <sstream>

namespace stavio::app {

namespace {

namespace fs = std::filesystem;

struct GroovesOptions {
    std::optional<std::string> library;
    std::optional<std::string> show;   // the groove whose grid to print
    bool json = false;
};

bool ParseGroovesOptions(const std::vector<std::string>& arguments, GroovesOptions& options, std::string& error)
{
    for (size_t index = 0; index < arguments.size(); ++index) {
        const std::string& argument = arguments[index];
        if (argument == "--library" || argument.rfind("--library=", 0) == 0) {
            if (argument != "--library") {
                options.library = argument.substr(std::string("--library=").size());
            } else if (index + 1 < arguments.size()) {
                options.library = arguments[++index];
            } else {
                error = "option --library needs a value";
                return false;
            }
        } else if (argument == "--json") {
            options.json = true;
        } else if (argument == "show" && index == 0) {
            if (index + 1 >= arguments.size() || arguments[index + 1].rfind("--", 0) == 0) {
                error = "grooves show needs the name of a groove";
                return false;
            }
            options.show = arguments[++index];
        } else if (argument.rfind("--", 0) == 0) {
            error = "unknown option \"" + argument + "\" for the grooves command";
            return false;
        } else {
            error = "the grooves command takes \"show NAME\" or options only (got \"" + argument + "\")";
            return false;
        }
    }
    if (options.show && options.json) {
        error = "grooves show prints a drum grid; --json is for the list";
        return false;
    }
    return true;
}

// The files the plug-in would list, and those named like grooves it would not, by name.
std::vector<GrooveSummary> ScanFolder(const std::string& folder)
{
    std::vector<GrooveSummary> grooves;
    std::error_code failure;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, failure)) {
        const std::string file = entry.path().filename().string();
        if (entry.is_directory(failure) || !LooksLikeGrooveName(file)) {
            continue;
        }
        if (IsOfferedGrooveName(file)) {
            grooves.push_back(AnalyseGrooveFile(entry.path().string(), file));
        } else if (file != kTemporaryGrooveFileName) {
            GrooveSummary ignored;
            ignored.file = file;
            ignored.name = file.substr(0, file.size() - 4);
            ignored.refusal = "the plug-in lists only names ending in \".mid\", \".MID\" or \".Mid\"";
            grooves.push_back(ignored);
        }
    }
    std::sort(grooves.begin(), grooves.end(), [](const GrooveSummary& a, const GrooveSummary& b) {
        return a.name != b.name ? a.name < b.name : a.file < b.file;
    });
    return grooves;
}

std::string TempoText(double tempo)
{
    std::ostringstream text;
    const double whole = std::round(tempo);
    if (std::fabs(tempo - whole) < 0.05) {
        text << static_cast<long>(whole);
    } else {
        text.setf(std::ios::fixed);
        text.precision(1);
        text << tempo;
    }
    return text.str();
}

std::string KitText(const GrooveSummary& groove)
{
    std::string text;
    for (const KitPiece& piece : groove.kit) {
        text += (text.empty() ? "" : ", ") + piece.name;
    }
    return text;
}

std::string Padded(const std::string& text, size_t width)
{
    return text + std::string(width > text.size() ? width - text.size() : 1, ' ');
}

std::string RightAligned(const std::string& text, size_t width)
{
    return std::string(width > text.size() ? width - text.size() : 1, ' ') + text;
}

void WriteTextList(std::ostream& out, const std::string& folder, const std::vector<GrooveSummary>& grooves)
{
    out << "Groove library: " << folder << "\n";
    size_t nameWidth = std::string("Name").size();
    size_t usable = 0;
    bool closing = false;
    for (const GrooveSummary& groove : grooves) {
        if (groove.Usable()) {
            nameWidth = std::max(nameWidth, groove.name.size());
            ++usable;
            closing = closing || groove.closingHits;
        }
    }
    out << Padded("Name", nameWidth + 2) << "Meter  Bars  Tempo  " << Padded("Feel", 10) << "Kit pieces\n";
    for (const GrooveSummary& groove : grooves) {
        if (!groove.Usable()) {
            continue;
        }
        out << Padded(groove.name, nameWidth + 2) << Padded(groove.Meter(), 7)
            << RightAligned(std::to_string(groove.bars), 4) << (groove.closingHits ? "*" : " ")
            << RightAligned(TempoText(groove.tempo), 6) << "  " << Padded(FeelName(groove.feel), 10) << KitText(groove)
            << "\n";
    }
    if (closing) {
        out << "* ends with closing hits on the next downbeat, which the plug-in leaves out\n";
    }
    out << usable << (usable == 1 ? " groove" : " grooves");
    const size_t refused = grooves.size() - usable;
    if (refused == 0) {
        out << "\n";
        return;
    }
    out << "; " << refused << (refused == 1 ? " file" : " files") << " the plug-in would refuse:\n";
    for (const GrooveSummary& groove : grooves) {
        if (!groove.Usable()) {
            out << "  " << groove.file << ": " << groove.refusal << "\n";
        }
    }
}

void WriteJsonList(std::ostream& out, const std::string& folder, const std::vector<GrooveSummary>& grooves)
{
    out << "{\"library\":" << JsonQuoted(folder) << ",\"grooves\":[";
    bool first = true;
    for (const GrooveSummary& groove : grooves) {
        if (!groove.Usable()) {
            continue;
        }
        out << (first ? "" : ",") << "{\"name\":" << JsonQuoted(groove.name) << ",\"file\":" << JsonQuoted(groove.file)
            << ",\"meter\":\"" << groove.Meter() << "\",\"bars\":" << groove.bars
            << ",\"closingHits\":" << (groove.closingHits ? "true" : "false")
            << ",\"tempo\":" << TempoText(groove.tempo) << ",\"feel\":\"" << FeelName(groove.feel) << "\",\"kit\":[";
        for (size_t i = 0; i < groove.kit.size(); ++i) {
            out << (i > 0 ? "," : "") << "{\"key\":" << groove.kit[i].key
                << ",\"name\":" << JsonQuoted(groove.kit[i].name) << "}";
        }
        out << "]}";
        first = false;
    }
    out << "],\"refused\":[";
    first = true;
    for (const GrooveSummary& groove : grooves) {
        if (!groove.Usable()) {
            out << (first ? "" : ",") << "{\"name\":" << JsonQuoted(groove.name)
                << ",\"file\":" << JsonQuoted(groove.file) << ",\"reason\":" << JsonQuoted(groove.refusal) << "}";
            first = false;
        }
    }
    out << "]}\n";
}

bool IsCompound(const GrooveSummary& groove)
{
    return groove.denominator >= 8 && groove.numerator >= 6 && groove.numerator % 3 == 0;
}

// The groove imported, as the plug-in hands it over, into a score of its own meter and length.
std::optional<std::string> GrooveGrid(const std::string& folder, const GrooveSummary& groove, std::string& error)
{
    std::vector<uint8_t> bytes;
    {
        std::ifstream in(folder + "/" + groove.file, std::ios::binary);
        bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    // A compound meter is written as dotted-quarter beats, as a score would hold it.
    const bool compound = IsCompound(groove);
    const auto beats = static_cast<int16_t>(compound ? groove.numerator / 3 : groove.numerator);
    const auto divbeat = static_cast<int16_t>((compound ? 3 : 1) * 4 * kEduPerQuarter / groove.denominator);
    Document doc = DocumentBuilder().Measures(groove.bars, beats, divbeat).Staff("Drums", "Dr.").DrumStaff(1).Build();
    EREGION region{};
    region.start = EMUSICPOINT{kMainInstrumentList, 1, 1, 0};
    region.end = EMUSICPOINT{kMainInstrumentList, 1, static_cast<uint16_t>(groove.bars), kEndOfMeasure};
    std::string importError;
    if (!midi_import::ImportMidiBytes(doc, region, ImportedTracksImage(bytes, groove.drumTrack), groove.file,
                                      importError)) {
        error = "cannot import " + groove.file + ": " + importError;
        return std::nullopt;
    }
    std::ostringstream out;
    out << groove.name << ": " << groove.Meter() << ", " << groove.bars << (groove.bars == 1 ? " bar" : " bars")
        << (groove.closingHits ? " (and closing hits the plug-in leaves out)" : "") << ", " << TempoText(groove.tempo)
        << " quarter notes a minute, " << FeelName(groove.feel) << " feel\n"
        << views::RenderDrumGrid(doc, doc.SlotToInst(1, kMainInstrumentList), 1, groove.bars);
    return out.str();
}

}   // namespace

std::optional<std::string> GrooveGridText(const std::string& folder, const std::string& name, std::string& error)
{
    const std::vector<GrooveSummary> grooves = ScanFolder(folder);
    const auto found = std::find_if(grooves.begin(), grooves.end(), [&](const GrooveSummary& groove) {
        return groove.name == name || groove.file == name;
    });
    if (found == grooves.end()) {
        error = "there is no groove \"" + name + "\" in " + folder + " (tamberlyne grooves lists them)";
        return std::nullopt;
    }
    if (!found->Usable()) {
        error = "the plug-in would refuse " + found->file + ": " + found->refusal;
        return std::nullopt;
    }
    return GrooveGrid(folder, *found, error);
}

std::string GroovesUsageText()
{
    return "Usage: tamberlyne [options] grooves [--library DIR] [--json]\n"
           "       tamberlyne [options] grooves show NAME [--library DIR]\n"
           "       tamberlyne [options] grooves play NAME -o OUT.wav|OUT.ogg (see grooves play --help)\n"
           "\n"
           "Lists the groove folder as the plug-in sees it: each groove's name, meter, the bars the\n"
           "plug-in repeats (closing hits on the downbeat after the pattern are left out), tempo,\n"
           "feel (straight, triplet, swing or mixed) and kit pieces, and for each file the plug-in\n"
           "would refuse, the reason. \"show NAME\" prints the groove's drum grid as it lands in a\n"
           "score of its own meter; \"play NAME\" renders it as audio.\n"
           "\n"
           "Options:\n"
           "  --library DIR   the groove folder, named \"Tamberlyne\" (default: the per-user library,\n"
           "                  filled from the bundled one on first use)\n"
           "  --json          the list as one JSON object: {\"library\", \"grooves\": [{\"name\", \"file\",\n"
           "                  \"meter\", \"bars\", \"closingHits\", \"tempo\", \"feel\", \"kit\": [{\"key\",\n"
           "                  \"name\"}]}], \"refused\": [{\"name\", \"file\", \"reason\"}]}\n"
           "\n"
           "Exit status: 0 success; 1 when the folder cannot be used, holds no groove the plug-in\n"
           "takes, or NAME is not one of them; 2 for wrong usage.\n";
}

int RunGroovesCommand(const CommandLine& line, std::ostream& out, std::ostream& err)
{
    if (!line.arguments.empty() && line.arguments[0] == "play") {
        CommandLine play = line;
        play.arguments.erase(play.arguments.begin());
        return RunGroovesPlayCommand(play, out, err);
    }
    GroovesOptions options;
    std::string error;
    if (!ParseGroovesOptions(line.arguments, options, error)) {
        err << "tamberlyne: " << error << "\n\n" << GroovesUsageText();
        return kExitUsage;
    }
    const toolbox::Result<GrooveLibrary> resolved = ResolveGrooveLibrary(options.library, BundledLibraryFolder());
    if (!resolved) {
        err << "tamberlyne: " << resolved.Message() << "\n";
        return kExitFailure;
    }
    const GrooveLibrary& library = *resolved;
    if (!library.note.empty()) {
        err << "tamberlyne: note: " << library.note << "\n";
    }
    const std::vector<GrooveSummary> grooves = ScanFolder(library.folder);
    const bool anyUsable =
        std::any_of(grooves.begin(), grooves.end(), [](const GrooveSummary& g) { return g.Usable(); });

    if (options.show) {
        const std::optional<std::string> grid = GrooveGridText(library.folder, *options.show, error);
        if (!grid) {
            err << "tamberlyne: " << error << "\n";
            return kExitFailure;
        }
        out << *grid;
        return kExitOk;
    }

    if (options.json) {
        WriteJsonList(out, library.folder, grooves);
    } else {
        WriteTextList(out, library.folder, grooves);
    }
    if (!anyUsable) {
        err << "tamberlyne: " << library.folder << " holds no groove the plug-in takes\n";
        return kExitFailure;
    }
    return kExitOk;
}

}   // namespace stavio::app
