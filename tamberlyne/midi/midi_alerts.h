// The MIDI reader's messages. They are fixed texts of the code (not string resources) and
// reach the user through the host's alert call.
#pragma once

namespace midi_alerts {

constexpr const char* kReadBeyondEnd = "Parsing error - trying to read beyond EOF.";
constexpr const char* kBadHeaderId = "Invalid header chunk ID";
constexpr const char* kBadHeaderLength = "Invalid header chunk length";
constexpr const char* kLongHeader = "Header longer than version defined in Midi Specs 1.0 - additinal bytes ignored.";
constexpr const char* kBadFormat = "Invalid format ID";
constexpr const char* kNoTracks = "No tracks in file";
constexpr const char* kFormat2FirstTrackOnly = "Only track 1 will be read from a format 2 file.";
constexpr const char* kFormat0OneTrack = "Number of tracks should be 1 for format 0 files";
constexpr const char* kUnusualFrameRate = "Unusual number of frames per second";
constexpr const char* kBadTrackId = "Invalid track chunk ID";
constexpr const char* kRunningStatusUndefined = "Running status is used but undefined";
constexpr const char* kTimeSignatureChange = "This Midi file contains time signature changes. This is not supported.";
constexpr const char* kOffbeatTimeSignature =
    "Invalid offbeat time signature specification found and shifted backwards onto the full beat 1.";
constexpr const char* kEndOfTrackMissing = "End of track meta event missing";
constexpr const char* kTimeSignatureMismatch = "Time signature mismatch.";

void Show(const char* text);

}   // namespace midi_alerts
