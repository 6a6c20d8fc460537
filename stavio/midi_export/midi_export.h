// The host's MIDI export: a document, or a range of its measures, as a Standard MIDI File.
//
// Format 1, 1024 ticks to the quarter (one tick per EDU). Track 1 is the conductor: the tempo
// and a time signature at the start and wherever the meter changes. Then one track per staff of
// instrument list 0, in slot order, named after the staff's channel: on the channel of its
// channel definition with that definition's program, a drum staff (channel code 9 or 0x8009)
// on channel 10 without a program change. Each note of every layer sounds from its entry's
// position for the entry's actual (tuplet-scaled) duration; chords give one note per key;
// notes tied forward are joined with the note of the same key that follows. A note's key is
// SX_NoteToMidi's: the host keeps a drum note at the pitch of its kit key, which the percussion
// map names and places on the staff. Every track ends at the end of the range's last measure.
#pragma once

#include "stavio/document/document.h"
#include "toolbox/status.h"

#include <cstdint>
#include <string>
#include <vector>

namespace stavio::midi_export {

constexpr int kTicksPerQuarter = kEduPerQuarter;
constexpr int32_t kDefaultMicrosecondsPerQuarter = 500000;   // 120 quarters a minute
constexpr uint8_t kExportVelocity = 96;                      // the document holds no dynamics
constexpr int kDrumChannel = 9;                              // MIDI channel 10, counted from 0

struct ExportOptions {
    int32_t firstMeasure = 1;
    int32_t lastMeasure = 0;   // 0: the document's last measure
    int32_t microsecondsPerQuarter = kDefaultMicrosecondsPerQuarter;
};

// Quarters a minute as the file's tempo (rounded to the microsecond); 0 for a tempo outside 1..1000.
int32_t MicrosecondsPerQuarter(double quartersPerMinute);
// Measures `first`..`last` at `quartersPerMinute` quarters a minute.
ExportOptions MeasuresAtTempo(int32_t first, int32_t last, double quartersPerMinute);

// The file's bytes; a failure, with a message for a person, when the range is not measures of
// the document or the tempo is out of range.
toolbox::Result<std::vector<uint8_t>> ExportMidi(const Document& doc, const ExportOptions& options);

// How long the range plays, in seconds (0 when the range is not the document's).
double RangeSeconds(const Document& doc, const ExportOptions& options);

}   // namespace stavio::midi_export
