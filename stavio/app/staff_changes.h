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
#include <string>
#include <vector>

namespace stavio::app {

enum class ReportFormat {
    Text,
    Json
};

// The number a person sees for the document's measure `meas` (1..): the score's own number
// (`scoreNumbers[meas - 1]`, "0" for a pickup, "12a"), or the position itself when the score
// gives none (the demo score).
std::string MeasureName(const std::vector<std::string>& scoreNumbers, int32_t meas);

// Writes the staves of `after` (a staff that is new has no "before"). `measures` is the region
// the command worked on; only its measure numbers are used, told as `scoreNumbers` names them.
// Text: a few lines per staff. Json: one JSON array, one object per staff.
void PrintStaffChanges(std::ostream& out, const Document& before, const Document& after, const EREGION& measures,
                       ReportFormat format, const std::vector<std::string>& scoreNumbers = {});

}   // namespace stavio::app
