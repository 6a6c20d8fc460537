// What `tamberlyne fill` tells about the staves after the plug-in ran, as far as the host can
// tell from its records: each staff's name, whether it plays on the drum channel, its clef and
// drum-staff record in the filled measures, its staff styles and entries, and the playback
// labels (text expressions) in those measures, each with what it was before.
//
// This is the place for richer views of a staff (a drum grid, a JSON view of its notes): the
// fill command prints whatever PrintStaffChanges writes.
#pragma once

#include "sdk/types.h"
#include "stavio/document/document.h"

#include <iosfwd>

namespace stavio::app {

enum class ReportFormat {
    Text,
    Json
};

// Writes the staves of `after` (a staff that is new has no "before"). `measures` is the region
// the command worked on; only its measure numbers are used. Text: a few lines per staff. Json:
// one JSON array, one object per staff.
void PrintStaffChanges(std::ostream& out, const Document& before, const Document& after, const EREGION& measures,
                       ReportFormat format);

// A JSON string literal of `text`.
std::string JsonString(const std::string& text);

}   // namespace stavio::app
