// `tamberlyne serve`: the host with a web front end. An HTTP server on the loopback address
// serves the page and a small API; each browser tab has its own document (named by the session
// id the page makes). The plug-in runs on one host thread, one command at a time; while it asks
// something, the page shows it (stavio/dialogs/web_front_end.h) and answers.
//
// API (every call names its tab with ?session=ID):
//   GET  /api/state     what the tab should show: running, what the plug-in asks, undo/redo
//   GET  /api/score     the tab's score (score_view.h)
//   POST /api/run       run the plug-in on measures first..last of staff (0: every staff)
//   POST /api/answer    the person's answer: kind=yes|no|ok|press|choose|row|close, item, number
//   POST /api/undo, /api/redo, /api/demo (start again from the demo score)
//   POST /api/upload    a score file as the body (&name=FILE)
//   GET  /api/download  the tab's score as MusicXML
#pragma once

#include "stavio/document/document.h"
#include "stavio/host.h"

#include <iosfwd>
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

// A score the page uploaded, read into a document. nullopt and a message for the person when
// the file cannot be read.
struct LoadedScore {
    Document document;
    std::string name;
};
std::optional<LoadedScore> LoadScoreForSession(const std::string& bytes, const std::string& name, std::string& error);

// The tab's score as a file to download (`format` "musicxml" or "mxl"): the bytes that
// `tamberlyne fill -o` writes. False and a message when it cannot be written.
bool SaveScoreForSession(const Document& document, const std::string& format, std::string& bytes, std::string& error);

// Serves until SIGINT or SIGTERM; prints the address on `out`. Returns the exit status.
int RunWebServer(const WebServerSettings& settings, std::ostream& out, std::ostream& err);

}   // namespace stavio::web
