// What the commands write from a document's sound: the MIDI export (--midi, or export -o) and
// its audio through FluidSynth (--audio), with the options they share.
#pragma once

#include "stavio/document/document.h"
#include "stavio/midi_export/audio_render.h"
#include "stavio/midi_export/midi_export.h"

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace stavio::app {

struct SoundOptions {
    std::optional<std::string> midi;        // --midi OUT.mid
    std::optional<std::string> audio;       // --audio OUT.wav|.ogg
    std::optional<double> tempo;            // --tempo BPM, quarter notes a minute
    std::optional<std::string> soundFont;   // --sound-font FILE.sf2
};

// Takes arguments[index] (and its value) when it is one of the sound options: true when it was,
// false when it is no sound option; a failure with a message for a person when its value is
// missing or wrong.
toolbox::Result<bool> TakeSoundOption(const std::vector<std::string>& arguments, size_t& index, SoundOptions& options);

// The usage lines of the options above (`withMidi`: --midi too).
std::string SoundOptionsUsage(bool withMidi);

// Before any work: the audio file's name and FluidSynth with its sound font, when audio is
// asked for (no tools without audio). A failure with a message naming what is missing.
toolbox::Result<midi_export::AudioTools> PrepareSound(const SoundOptions& options);

// The MIDI file's bytes written through a temporary file renamed over `path`.
toolbox::Status WriteFileAtomically(const std::string& path, const std::vector<uint8_t>& bytes);

// Writes the MIDI and/or the audio of measures first..last of `doc`, and a line for each file
// on `report` (none when it is null). The tempo is --tempo, else `defaultTempo`. Returns the
// command's exit status.
int WriteSound(const Document& doc, int32_t first, int32_t last, double defaultTempo, const SoundOptions& options,
               const midi_export::AudioTools& tools, std::ostream* report, std::ostream& err);

// The tempo of a Standard MIDI File (its first tempo event), in quarter notes a minute; 120,
// the file format's own default, when it has none or cannot be read.
double FileTempo(const std::string& path);

}   // namespace stavio::app
