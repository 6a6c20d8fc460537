// Audio from the host's MIDI: FluidSynth, run as a child process, renders a Standard MIDI File
// with a General MIDI sound font into a WAV or Ogg Vorbis file.
//
// The MIDI goes to a private temporary folder that is removed afterwards; the audio is written
// to a temporary file beside the target and renamed over it only when FluidSynth succeeded, so
// a failed render leaves the target as it was.
#pragma once

#include "toolbox/status.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace stavio::midi_export {

constexpr char kFluidSynthPackage[] = "fluidsynth";
constexpr char kSoundFontPackage[] = "timgm6mb-soundfont";
constexpr int kAudioSampleRate = 44100;

enum class AudioFormat {
    Wav,
    Ogg,
};

// From the file name: ".wav" or ".ogg" (any case). A failure with a message for any other name.
toolbox::Result<AudioFormat> AudioFormatOf(const std::string& path);

struct AudioTools {
    std::string fluidsynth;   // the program's path
    std::string soundFont;    // the .sf2 file
};

// FluidSynth from the PATH, and the sound font: `soundFontOption` when given, else the Debian
// General MIDI fonts (/usr/share/sounds/sf2/TimGM6mb.sf2, then default-GM.sf2). A failure, with
// a message naming the Debian package to install, when either is missing.
toolbox::Result<AudioTools> FindAudioTools(const std::optional<std::string>& soundFontOption);

// Renders `midi` into `outputPath` at 44.1 kHz, stereo. A failure, with a message, when
// FluidSynth fails or writes nothing; the target is then untouched.
toolbox::Status RenderAudio(const std::vector<uint8_t>& midi, const std::string& outputPath, const AudioTools& tools);

}   // namespace stavio::midi_export
