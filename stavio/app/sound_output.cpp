#include "stavio/app/sound_output.h"

#include "stavio/app/command_line.h"

#include "stavio/app/commands.h"
#include "stavio/midi_import/smf_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iomanip>
#include <ostream>
#include <sstream>

namespace stavio::app {

namespace {

toolbox::Result<double> ReadTempo(const std::string& text)
{
    char* end = nullptr;
    errno = 0;
    const double tempo = std::strtod(text.c_str(), &end);
    if (end == text.c_str() || *end != '\0' || errno != 0 || midi_export::MicrosecondsPerQuarter(tempo) == 0) {
        return toolbox::Status::Failure("option --tempo takes quarter notes a minute, 1 to 1000 (got \"" + text +
                                        "\")");
    }
    return tempo;
}

std::string Describe(int32_t first, int32_t last, double seconds, double tempo)
{
    std::ostringstream text;
    text << (first == last ? "measure " + std::to_string(first)
                           : "measures " + std::to_string(first) + "-" + std::to_string(last))
         << ", " << std::fixed << std::setprecision(2) << seconds << " s at " << std::setprecision(0) << tempo
         << " quarter notes a minute";
    return text.str();
}

}   // namespace

toolbox::Result<bool> TakeSoundOption(const std::vector<std::string>& arguments, size_t& index, SoundOptions& options)
{
    const std::string& argument = arguments[index];
    const bool midi = IsOption(argument, "--midi");
    const bool audio = IsOption(argument, "--audio");
    const bool tempo = IsOption(argument, "--tempo");
    const bool soundFont = IsOption(argument, "--sound-font");
    if (!midi && !audio && !tempo && !soundFont) {
        return false;
    }
    const std::string name = midi ? "--midi" : audio ? "--audio" : tempo ? "--tempo" : "--sound-font";
    const toolbox::Result<std::string> value = TakeOptionValue(arguments, index, name);
    if (!value) {
        return value.status();
    }
    if (midi) {
        options.midi = *value;
    } else if (audio) {
        if (const toolbox::Result<midi_export::AudioFormat> format = midi_export::AudioFormatOf(*value); !format) {
            return format.status();
        }
        options.audio = *value;
    } else if (tempo) {
        const toolbox::Result<double> quarters = ReadTempo(*value);
        if (!quarters) {
            return quarters.status();
        }
        options.tempo = *quarters;
    } else {
        options.soundFont = *value;
    }
    return true;
}

std::string SoundOptionsUsage(bool withMidi)
{
    std::string text;
    if (withMidi) {
        text += "  --midi OUT.mid         write the filled measures as a Standard MIDI File (every staff\n"
                "                         on its channel, drums on channel 10)\n";
    }
    text += "  --audio OUT.wav|OUT.ogg\n"
            "                         render them with FluidSynth and a General MIDI sound font\n"
            "                         (Debian packages fluidsynth and timgm6mb-soundfont)\n"
            "  --tempo BPM            quarter notes a minute (default: the groove file's tempo)\n"
            "  --sound-font FILE      the .sf2 sound font (default: /usr/share/sounds/sf2/TimGM6mb.sf2)\n";
    return text;
}

toolbox::Result<midi_export::AudioTools> PrepareSound(const SoundOptions& options)
{
    if (!options.audio) {
        return midi_export::AudioTools{};
    }
    if (const toolbox::Result<midi_export::AudioFormat> format = midi_export::AudioFormatOf(*options.audio); !format) {
        return format.status();
    }
    return midi_export::FindAudioTools(options.soundFont);
}

toolbox::Status WriteFileAtomically(const std::string& path, const std::vector<uint8_t>& bytes)
{
    const std::filesystem::path target(path);
    const std::filesystem::path folder = target.parent_path().empty() ? "." : target.parent_path();
    std::string temporary = (folder / ("." + target.filename().string() + ".XXXXXX")).string();
    const int fd = ::mkstemp(temporary.data());
    if (fd < 0) {
        return toolbox::Status::Failure(path + ": cannot write a temporary file in " + folder.string() + ": " +
                                        std::strerror(errno));
    }
    ::fchmod(fd, 0644);   // the person's file, not a private temporary one
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t wrote = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (wrote < 0 && errno == EINTR) {
            continue;
        }
        if (wrote <= 0) {
            break;
        }
        done += static_cast<size_t>(wrote);
    }
    const bool whole = done == bytes.size() && ::close(fd) == 0;
    if (!whole || ::rename(temporary.c_str(), path.c_str()) != 0) {
        const toolbox::Status failure = toolbox::Status::Failure(path + ": cannot be written: " + std::strerror(errno));
        ::unlink(temporary.c_str());
        return failure;
    }
    return toolbox::Status::Ok();
}

int WriteSound(const Document& doc, int32_t first, int32_t last, double defaultTempo, const SoundOptions& options,
               const midi_export::AudioTools& tools, std::ostream* report, std::ostream& err)
{
    if (!options.midi && !options.audio) {
        return kExitOk;
    }
    const double tempo = options.tempo.value_or(defaultTempo);
    const midi_export::ExportOptions range = midi_export::MeasuresAtTempo(first, last, tempo);
    const toolbox::Result<std::vector<uint8_t>> midi = midi_export::ExportMidi(doc, range);
    if (!midi) {
        err << "tamberlyne: cannot export the MIDI: " << midi.Message() << "\n";
        return kExitFailure;
    }
    const std::string what = Describe(first, last, midi_export::RangeSeconds(doc, range), tempo);
    if (options.midi) {
        if (const toolbox::Status written = WriteFileAtomically(*options.midi, *midi); !written) {
            err << "tamberlyne: " << written.Message() << "\n";
            return kExitFailure;
        }
        if (report != nullptr) {
            *report << "MIDI: " << *options.midi << " (" << what << ")\n";
        }
    }
    if (options.audio) {
        if (const toolbox::Status rendered = midi_export::RenderAudio(*midi, *options.audio, tools); !rendered) {
            err << "tamberlyne: " << rendered.Message() << "\n";
            return kExitFailure;
        }
        if (report != nullptr) {
            *report << "Audio: " << *options.audio << " (" << what << ")\n";
        }
    }
    return kExitOk;
}

double FileTempo(const std::string& path)
{
    midi_import::SmfFile file;
    std::string error;
    return midi_import::ReadSmfFile(path, file, error) ? midi_import::StartTempo(file) : midi_import::kDefaultFileTempo;
}

}   // namespace stavio::app
