// `tamberlyne fill SCORE`: the fill command on a MusicXML score. The score is read into the
// host's document before the plug-in runs; afterwards only what the plug-in changed is spliced
// into the score's own bytes and written (atomically) to the output.
#pragma once

#include "stavio/app/fill_options.h"
#include "stavio/musicxml/score_file.h"

#include <iosfwd>
#include <optional>
#include <string>

namespace stavio::app {

struct ScoreFill {
    musicxml::ScoreFile score;
    std::string output;   // the path written, "-" for standard output, "" for a dry run
    bool json = false;    // the report is JSON: what was written is told on the error stream
};

// Reads options.score (without one, the demo score as MusicXML, for -o), turns --measures (the score's own numbers) into the document's measures
// (options.measures), checks --staff against the score's staves and settles the output path.
// On a problem tells `err` (naming the file) and returns the exit status; kExitOk otherwise.
int PrepareScoreFill(FillOptions& options, std::optional<ScoreFill>& fill, std::ostream& err);

// Writes the filled score: the changes between the score as read and `after`. The exit status.
int FinishScoreFill(const ScoreFill& fill, const Document& after, std::ostream& report, std::ostream& err);

}   // namespace stavio::app
