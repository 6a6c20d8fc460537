// `tamberlyne grooves play NAME -o OUT.wav|.ogg`: a groove of the library as audio, through the
// same MIDI export as a filled score (groove_preview.h).
#include "stavio/app/commands.h"
#include "stavio/app/groove_library.h"
#include "stavio/app/groove_preview.h"
#include "stavio/app/sound_output.h"

#include <ostream>

namespace stavio::app {

namespace {

struct PlayOptions {
    std::string name;
    std::optional<std::string> library;
    SoundOptions sound;
};

bool ParsePlayOptions(const std::vector<std::string>& arguments, PlayOptions& options, std::string& error)
{
    for (size_t index = 0; index < arguments.size(); ++index) {
        const std::string& argument = arguments[index];
        bool taken = false;
        if (!TakeSoundOption(arguments, index, options.sound, taken, error)) {
            return false;
        }
        if (taken) {
            if (options.sound.midi) {
                error = "unknown option \"--midi\" for grooves play";
                return false;
            }
            continue;
        }
        if (argument == "-o" || argument == "--library") {
            if (index + 1 >= arguments.size() || arguments[index + 1].empty()) {
                error = "option " + argument + " needs a value";
                return false;
            }
            const std::string& value = arguments[++index];
            if (argument == "-o") {
                std::vector<std::string> audio = {"--audio", value};
                size_t at = 0;
                if (!TakeSoundOption(audio, at, options.sound, taken, error)) {
                    return false;
                }
            } else {
                options.library = value;
            }
        } else if (!argument.empty() && argument[0] == '-') {
            error = "unknown option \"" + argument + "\" for grooves play";
            return false;
        } else if (options.name.empty()) {
            options.name = argument;
        } else {
            error = "grooves play takes one groove name (got \"" + options.name + "\" and \"" + argument + "\")";
            return false;
        }
    }
    if (options.name.empty()) {
        error = "grooves play needs the name of a groove";
        return false;
    }
    if (!options.sound.audio) {
        error = "grooves play needs the audio file to write: -o OUT.wav or -o OUT.ogg";
        return false;
    }
    return true;
}

}   // namespace

std::string GroovesPlayUsageText()
{
    return "Usage: tamberlyne grooves play NAME -o OUT.wav|OUT.ogg [options]\n"
           "\n"
           "Renders the groove NAME (\"Rock 8ths\" or \"Rock 8ths.mid\") of the groove library as audio:\n"
           "the groove is imported into a scratch score of one drum staff, as long as the plug-in\n"
           "repeats it, and that score is rendered, so what you hear is what a filled score holds.\n"
           "\n"
           "Options:\n"
           "  -o OUT.wav|OUT.ogg     the audio file to write (replaced whole, or left as it was)\n"
           "  --library DIR          the groove folder (default: the per-user library)\n"
           "  --tempo BPM            quarter notes a minute (default: the groove file's tempo)\n"
           "  --sound-font FILE      the .sf2 sound font (default: /usr/share/sounds/sf2/TimGM6mb.sf2)\n"
           "\n"
           "Rendering needs FluidSynth and a General MIDI sound font (Debian packages fluidsynth and\n"
           "timgm6mb-soundfont).\n"
           "\n"
           "Exit status: 0 when the audio was written, 1 when it could not be, 2 for wrong usage.\n";
}

int RunGroovesPlayCommand(const CommandLine& line, std::ostream& out, std::ostream& err)
{
    PlayOptions options;
    std::string error;
    if (!ParsePlayOptions(line.arguments, options, error)) {
        err << "tamberlyne: " << error << "\n\n" << GroovesPlayUsageText();
        return kExitUsage;
    }
    midi_export::AudioTools tools;
    if (!PrepareSound(options.sound, tools, error)) {
        err << "tamberlyne: " << error << "\n";
        return kExitFailure;
    }
    const toolbox::Result<GrooveLibrary> resolved = ResolveGrooveLibrary(options.library, BundledLibraryFolder());
    if (!resolved) {
        err << "tamberlyne: " << resolved.Message() << "\n";
        return kExitFailure;
    }
    const GrooveLibrary& library = *resolved;
    const std::optional<std::string> path = FindGrooveFile(library.folder, options.name);
    if (!path) {
        err << "tamberlyne: there is no groove \"" << options.name << "\" in " << library.folder << "\n";
        return kExitFailure;
    }
    GroovePreview preview;
    if (!BuildGroovePreview(*path, preview, error)) {
        err << "tamberlyne: " << error << "\n";
        return kExitFailure;
    }
    out << "Groove: " << *path << " (" << preview.numerator << "/" << preview.denominator << ", " << preview.bars
        << (preview.bars == 1 ? " bar" : " bars") << ")\n";
    return WriteSound(preview.document, 1, preview.bars, preview.tempo, options.sound, tools, &out, err);
}

}   // namespace stavio::app
