// A groove file as a score: a scratch document of one drum staff, as long as the groove is
// when the plug-in repeats it, into which the host's MIDI import has written the groove. What
// `grooves play` renders is therefore what a filled score would hold.
#pragma once

#include "stavio/document/document.h"
#include "toolbox/status.h"

#include <optional>
#include <string>

namespace stavio::app {

struct GroovePreview {
    Document document;
    int32_t bars = 0;
    int numerator = 4;
    int denominator = 4;
    double tempo = 120.0;   // quarter notes a minute, from the file
};

// The file of the groove `name` ("Rock 8ths" or "Rock 8ths.mid", the extension in any case) in
// `folder`; nullopt when there is none.
std::optional<std::string> FindGrooveFile(const std::string& folder, const std::string& name);

// Reads the groove at `path`. Its length in bars follows the plug-in's rule: up to the bar of
// its last drum message, less that bar when the message lies in its first 70 % (a closing
// crash on the downbeat is not part of the pattern). A failure with a message for a person when
// the file cannot be read or holds no drum notes.
toolbox::Result<GroovePreview> BuildGroovePreview(const std::string& path);

}   // namespace stavio::app
