// `tamberlyne serve`: the host with a web front end. An HTTP server on the loopback address
// serves the page and a small API; each browser tab has its own document (named by the session
// id the page makes). The plug-in runs on one host thread, one command at a time; while it asks
// something, the page shows it (stavio/dialogs/web_front_end.h) and answers.
//
// API (every call names its tab with ?session=ID):
//   GET  /api/state     what the tab should show: running, what the plug-in asks, undo/redo,
//                       and `changes`; with &since=CHANGES the tab that runs the plug-in gets
//                       its answer when that count moves on (or after a few seconds)
//   GET  /api/score     the tab's score (score_view.h), with its MusicXML for the engraver
//   GET  /api/groove    the drum grid of a groove the plug-in lists (&name=GROOVE), as text
//   POST /api/run       run the plug-in on measures first..last of staff (0: every staff)
//   POST /api/answer    the person's answer: kind=yes|no|ok|press|choose|row|close, item, number
//   POST /api/undo, /api/redo, /api/demo (start again from the demo score)
//   POST /api/upload    a score file as the body (&name=FILE)
//   GET  /api/download  the tab's score as MusicXML (&format=musicxml|mxl)
#pragma once

#include "stavio/document/document.h"
#include "stavio/host.h"
#include "stavio/musicxml/score_file.h"

#include <iosfwd>
#include <memory>
#include <optional>
#include <string>

namespace stavio::web {

constexpr size_t kLargestUpload = 50u * 1024u * 1024u;

struct WebServerSettings {
    HostSettings host;          // its application folder is made the server's groove folder's parent
    std::string assetFolder;    // the page's files
    std::string grooveSource;   // the groove library copied into the server's own folder
    int port = 8080;            // 0: any free port
    bool openBrowser = false;
};

// A tab's score: the file as it was read (the splicing writer's base) and the name shown.
struct LoadedScore {
    std::shared_ptr<const musicxml::ScoreFile> file;
    std::string name;
};
// An uploaded file (`name` only for messages) read as the command line reads a score; nullopt
// and the command line's message, naming the file, when it cannot be.
std::optional<LoadedScore> LoadScoreForSession(const std::string& bytes, const std::string& name, std::string& error);
// The demo score, read from its MusicXML as `tamberlyne fill -o` reads it.
LoadedScore DemoScoreForSession();

// The tab's document as a file (`format` "musicxml" or "mxl"): the bytes that
// `tamberlyne fill -o score.FORMAT` writes. False and a message when it cannot be written.
bool SaveScoreForSession(const musicxml::ScoreFile& file, const Document& document, const std::string& format,
                         std::string& bytes, std::string& error);

// Serves until SIGINT or SIGTERM; prints the address on `out`. Returns the exit status.
int RunWebServer(const WebServerSettings& settings, std::ostream& out, std::ostream& err);

}   // namespace stavio::web
