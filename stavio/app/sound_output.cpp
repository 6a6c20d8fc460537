#include "stavio/app/sound_output.h"

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

bool IsOption(const std::string& argument, const std::string& name)
{
    return argument == name || argument.compare(0, name.size() + 1, name + "=") == 0;
}

// "--name=value" or "--name value".
bool TakeValue(const std::vector<std::string>& arguments, size_t& index, const std::string& name, std::string& value,
               std::string& error)
{
    const std::string& argument = arguments[index];
    if (argument.size() > name.size() && argument.compare(0, name.size() + 1, name + "=") == 0) {
        value = argument.substr(name.size() + 1);
    } else if (index + 1 < arguments.size()) {
        value = arguments[++index];
    }
    if (value.empty()) {
        error = "option " + name + " needs a value";
        return false;
    }
    return true;
}

bool ReadTempo(const std::string& text, double& tempo, std::string& error)
{
    char* end = nullptr;
    errno = 0;
    tempo = std::strtod(text.c_str(), &end);
    if (end == text.c_str() || *end != '\0' || errno != 0 || midi_export::MicrosecondsPerQuarter(tempo) == 0) {
        error = "option --tempo takes quarter notes a minute, 1 to 1000 (got \"" + text + "\")";
        return false;
    }
    return true;
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

bool TakeSoundOption(const std::vector<std::string>& arguments, size_t& index, SoundOptions& options, bool& taken,
                     std::string& error)
{
    const std::string& argument = arguments[index];
    taken = true;
    std::string value;
    if (IsOption(argument, "--midi")) {
        if (!TakeValue(arguments, index, "--midi", value, error)) {
            return false;
        }
        options.midi = value;
    } else if (IsOption(argument, "--audio")) {
        midi_export::AudioFormat format = midi_export::AudioFormat::Wav;
        if (!TakeValue(arguments, index, "--audio", value, error) ||
            !midi_export::AudioFormatOf(value, format, error)) {
            return false;
        }
        options.audio = value;
    } else if (IsOption(argument, "--tempo")) {
        double tempo = 0.0;
        if (!TakeValue(arguments, index, "--tempo", value, error) || !ReadTempo(value, tempo, error)) {
            return false;
        }
        options.tempo = tempo;
    } else if (IsOption(argument, "--sound-font")) {
        if (!TakeValue(arguments, index, "--sound-font", value, error)) {
            return false;
        }
        options.soundFont = value;
    } else {
        taken = false;
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

bool PrepareSound(const SoundOptions& options, midi_export::AudioTools& tools, std::string& error)
{
    if (!options.audio) {
        return true;
    }
    midi_export::AudioFormat format = midi_export::AudioFormat::Wav;
    return midi_export::AudioFormatOf(*options.audio, format, error) &&
           midi_export::FindAudioTools(options.soundFont, tools, error);
}

bool WriteFileAtomically(const std::string& path, const std::vector<uint8_t>& bytes, std::string& error)
{
    const std::filesystem::path target(path);
    const std::filesystem::path folder = target.parent_path().empty() ? "." : target.parent_path();
    std::string temporary = (folder / ("." + target.filename().string() + ".XXXXXX")).string();
    const int fd = ::mkstemp(temporary.data());
    if (fd < 0) {
        error = path + ": cannot write a temporary file in " + folder.string() + ": " + std::strerror(errno);
        return false;
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
        error = path + ": cannot be written: " + std::strerror(errno);
        ::unlink(temporary.c_str());
        return false;
    }
    return true;
}

int WriteSound(const Document& doc, int32_t first, int32_t last, double defaultTempo, const SoundOptions& options,
               const midi_export::AudioTools& tools, std::ostream* report, std::ostream& err)
{
    if (!options.midi && !options.audio) {
        return kExitOk;
    }
    const double tempo = options.tempo.value_or(defaultTempo);
    midi_export::ExportOptions range;
    range.firstMeasure = first;
    range.lastMeasure = last;
    range.microsecondsPerQuarter = midi_export::MicrosecondsPerQuarter(tempo);
    std::vector<uint8_t> midi;
    std::string error;
    if (!midi_export::ExportMidi(doc, range, midi, error)) {
        err << "tamberlyne: cannot export the MIDI: " << error << "\n";
        return kExitFailure;
    }
    const std::string what = Describe(first, last, midi_export::RangeSeconds(doc, range), tempo);
    if (options.midi) {
        if (!WriteFileAtomically(*options.midi, midi, error)) {
            err << "tamberlyne: " << error << "\n";
            return kExitFailure;
        }
        if (report != nullptr) {
            *report << "MIDI: " << *options.midi << " (" << what << ")\n";
        }
    }
    if (options.audio) {
        if (!midi_export::RenderAudio(midi, *options.audio, tools, error)) {
            err << "tamberlyne: " << error << "\n";
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
