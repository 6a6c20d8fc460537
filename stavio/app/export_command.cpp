// `tamberlyne export [SCORE] -o OUT.mid`: a MusicXML score (or the demo score) as a Standard MIDI
// File (stavio/midi_export).
#include "stavio/app/commands.h"
#include "stavio/app/demo_document.h"
#include "stavio/app/fill_options.h"
#include "stavio/app/sound_output.h"
#include "stavio/musicxml/score_file.h"

#include <ostream>

namespace stavio::app {

namespace {

struct ExportCommandOptions {
    std::optional<std::string> score;
    std::optional<MeasureRange> measures;
    SoundOptions sound;
};

toolbox::Status ParseExportOptions(const std::vector<std::string>& arguments, ExportCommandOptions& options)
{
    for (size_t index = 0; index < arguments.size(); ++index) {
        const std::string& argument = arguments[index];
        if (argument == "-o" || argument == "--measures") {
            if (index + 1 >= arguments.size() || arguments[index + 1].empty()) {
                return toolbox::Status::Failure("option " + argument + " needs a value");
            }
            const std::string& value = arguments[++index];
            if (argument == "-o") {
                options.sound.midi = value;
                continue;
            }
            const toolbox::Result<MeasureRange> range = ReadMeasureRange(value);
            if (!range) {
                return range.status();
            }
            options.measures = *range;
            continue;
        }
        const toolbox::Result<bool> taken = TakeSoundOption(arguments, index, options.sound);
        if (!taken) {
            return taken.status();
        }
        if (*taken) {
            continue;
        }
        if (!argument.empty() && argument[0] == '-') {
            return toolbox::Status::Failure("unknown option \"" + argument + "\" for the export command");
        }
        if (options.score) {
            return toolbox::Status::Failure("the export command takes one score (got \"" + *options.score +
                                            "\" and \"" + argument + "\")");
        }
        options.score = argument;
    }
    if (!options.sound.midi && !options.sound.audio) {
        return toolbox::Status::Failure(
            "the export command needs the file to write: -o OUT.mid (or --audio OUT.wav|OUT.ogg)");
    }
    return toolbox::Status::Ok();
}

// The document to export: SCORE read as MusicXML, or the demo score without one.
toolbox::Result<Document> LoadExportDocument(const std::optional<std::string>& score)
{
    if (!score) {
        return BuildDemoDocument();
    }
    toolbox::Result<musicxml::ScoreFile> file = musicxml::ScoreFile::Read(*score);
    if (!file) {
        return file.status();
    }
    return file->document();
}

}   // namespace

std::string ExportUsageText()
{
    return "Usage: tamberlyne [options] export [SCORE] -o OUT.mid [export options]\n"
           "\n"
           "Writes a score as a Standard MIDI File (format 1): a conductor track with the tempo and\n"
           "every meter change, then a track per staff on its channel with its program; drum staves\n"
           "play on channel 10, each note at its kit piece's key. Ties are joined, tuplets scaled.\n"
           "SCORE is a MusicXML file (.musicxml, .xml or compressed .mxl); without it, the demo score\n"
           "of `fill` (16 measures of 4/4, \"Piano\" and \"Drums\").\n"
           "\n"
           "Export options:\n"
           "  -o OUT.mid             the MIDI file to write (replaced whole, or left as it was)\n"
           "  --measures FIRST-LAST  only these measures (default: the whole score)\n"
           "  --audio OUT.wav|OUT.ogg\n"
           "                         render them with FluidSynth and a General MIDI sound font\n"
           "                         (Debian packages fluidsynth and timgm6mb-soundfont)\n"
           "  --tempo BPM            quarter notes a minute (default: 120)\n"
           "  --sound-font FILE      the .sf2 sound font (default: /usr/share/sounds/sf2/TimGM6mb.sf2)\n"
           "\n"
           "Exit status: 0 when the files were written, 1 when they could not be, 2 for wrong usage.\n";
}

int RunExportCommand(const CommandLine& line, std::ostream& out, std::ostream& err)
{
    ExportCommandOptions options;
    if (const toolbox::Status parsed = ParseExportOptions(line.arguments, options); !parsed) {
        err << "tamberlyne: " << parsed.Message() << "\n\n" << ExportUsageText();
        return kExitUsage;
    }
    const toolbox::Result<Document> loaded = LoadExportDocument(options.score);
    if (!loaded) {
        err << "tamberlyne: " << loaded.Message() << "\n";
        return kExitFailure;
    }
    const Document& score = *loaded;
    const toolbox::Result<midi_export::AudioTools> tools = PrepareSound(options.sound);
    if (!tools) {
        err << "tamberlyne: " << tools.Message() << "\n";
        return kExitFailure;
    }
    const MeasureRange range = options.measures.value_or(MeasureRange{1, score.MeasureCount()});
    if (range.last > score.MeasureCount()) {
        err << "tamberlyne: the score has " << score.MeasureCount() << " measures; --measures " << range.first << "-"
            << range.last << " goes past its end\n";
        return kExitUsage;
    }
    return WriteSound(score, range.first, range.last, 120.0, options.sound, *tools, &out, err);
}

}   // namespace stavio::app
