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

toolbox::Status ParsePlayOptions(const std::vector<std::string>& arguments, PlayOptions& options)
{
    for (size_t index = 0; index < arguments.size(); ++index) {
        const std::string& argument = arguments[index];
        const toolbox::Result<bool> taken = TakeSoundOption(arguments, index, options.sound);
        if (!taken) {
            return taken.status();
        }
        if (*taken) {
            if (options.sound.midi) {
                return toolbox::Status::Failure("unknown option \"--midi\" for grooves play");
            }
            continue;
        }
        if (argument == "-o" || argument == "--library") {
            if (index + 1 >= arguments.size() || arguments[index + 1].empty()) {
                return toolbox::Status::Failure("option " + argument + " needs a value");
            }
            const std::string& value = arguments[++index];
            if (argument == "-o") {
                std::vector<std::string> audio = {"--audio", value};
                size_t at = 0;
                if (const toolbox::Result<bool> output = TakeSoundOption(audio, at, options.sound); !output) {
                    return output.status();
                }
            } else {
                options.library = value;
            }
        } else if (!argument.empty() && argument[0] == '-') {
            return toolbox::Status::Failure("unknown option \"" + argument + "\" for grooves play");
        } else if (options.name.empty()) {
            options.name = argument;
        } else {
            return toolbox::Status::Failure("grooves play takes one groove name (got \"" + options.name + "\" and \"" +
                                            argument + "\")");
        }
    }
    if (options.name.empty()) {
        return toolbox::Status::Failure("grooves play needs the name of a groove");
    }
    if (!options.sound.audio) {
        return toolbox::Status::Failure("grooves play needs the audio file to write: -o OUT.wav or -o OUT.ogg");
    }
    return toolbox::Status::Ok();
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
    if (const toolbox::Status parsed = ParsePlayOptions(line.arguments, options); !parsed) {
        err << "tamberlyne: " << parsed.Message() << "\n\n" << GroovesPlayUsageText();
        return kExitUsage;
    }
    const toolbox::Result<midi_export::AudioTools> tools = PrepareSound(options.sound);
    if (!tools) {
        err << "tamberlyne: " << tools.Message() << "\n";
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
    const toolbox::Result<GroovePreview> built = BuildGroovePreview(*path);
    if (!built) {
        err << "tamberlyne: " << built.Message() << "\n";
        return kExitFailure;
    }
    const GroovePreview& preview = *built;
    out << "Groove: " << *path << " (" << preview.numerator << "/" << preview.denominator << ", " << preview.bars
        << (preview.bars == 1 ? " bar" : " bars") << ")\n";
    return WriteSound(preview.document, 1, preview.bars, preview.tempo, options.sound, *tools, &out, err);
}

}   // namespace stavio::app
