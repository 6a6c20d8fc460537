#include "stavio/web/web_server.h"

#include "stavio/app/commands.h"
#include "stavio/app/demo_score.h"
#include "stavio/app/groove_library.h"
#include "stavio/app/groove_preview.h"
#include "stavio/dialogs/dialog_text.h"
#include "stavio/dialogs/web_front_end.h"
#include "stavio/midi_export/audio_render.h"
#include "stavio/midi_export/midi_export.h"
#include "stavio/web/score_view.h"
#include "stavio/web/web_assets.h"

#include <httplib.h>
#include <pthread.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <ostream>
#include <sstream>
#include <thread>

extern char** environ;

namespace stavio::web {

namespace {

constexpr char kLoopback[] = "127.0.0.1";
constexpr char kPluginBundleName[] = "Tamberlyne.bundle";
constexpr char kDemoName[] = "Demo score";
constexpr size_t kMostTabs = 32;
// The HTTP library compresses only the content types it knows by their bare name, and it
// prefers brotli at its slowest setting: the score of a 100-measure fill took most of a second
// to compress, for a page on the same machine. The type with its charset goes uncompressed.
constexpr char kJson[] = "application/json; charset=utf-8";
// A tab that runs the plug-in and has not asked for its state for this long is taken as closed.
constexpr uint64_t kPageGoneMs = 60000;
// The longest the tab that runs the plug-in waits for its state to change before it is answered.
constexpr uint64_t kLongestStateWaitMs = 5000;
// The filled measures are heard at the tempo the command line's fill uses without a groove file.
constexpr double kListenTempo = 120.0;

// ---- The server's own folder ---------------------------------------------------------------------

// A folder only this server writes to, removed when it goes.
class WorkFolder {
public:
    bool Make(std::string& error)
    {
        const char* base = std::getenv("TMPDIR");
        std::string pattern =
            std::string(base != nullptr && *base != '\0' ? base : "/tmp") + "/tamberlyne-serve-XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr) {
            error = "cannot make a temporary folder in " + pattern.substr(0, pattern.rfind('/'));
            return false;
        }
        path_ = pattern;
        return true;
    }
    ~WorkFolder()
    {
        if (!path_.empty()) {
            std::error_code ignored;
            std::filesystem::remove_all(path_, ignored);
        }
    }
    const std::string& Path() const { return path_; }

private:
    std::string path_;
};

// ---- The host's thread -----------------------------------------------------------------------------

// The host and the plug-in live on one thread: jobs are queued and run there in order.
class HostThread {
public:
    using Job = std::function<void(Host& host, size_t plugin)>;

    HostThread(HostSettings settings, WebFrontEnd& frontEnd)
        : thread_([this, settings, &frontEnd] { Run(settings, frontEnd); })
    {}
    ~HostThread() { Stop(); }
    // Finishes the jobs already queued and ends the thread.
    void Stop()
    {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            stopping_ = true;
        }
        wake_.notify_all();
        if (thread_.joinable()) {
            thread_.join();
        }
    }
    // Waits until the plug-in is loaded; false (with why) when it could not be.
    bool Ready(std::string& problem)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        wake_.wait(lock, [this] { return started_; });
        problem = startProblem_;
        return problem.empty();
    }
    void Post(Job job)
    {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            jobs_.push_back(std::move(job));
        }
        wake_.notify_all();
    }

private:
    void Run(const HostSettings& settings, WebFrontEnd& frontEnd)
    {
        Host host(settings, &frontEnd);
        host.LoadPlugins();
        size_t plugin = host.Plugins().size();
        for (size_t index = 0; index < host.Plugins().size(); ++index) {
            if (std::filesystem::path(host.Plugins()[index].bundlePath).filename() == kPluginBundleName) {
                plugin = index;
            }
        }
        {
            std::lock_guard<std::mutex> lock(mutex_);
            started_ = true;
            if (plugin == host.Plugins().size()) {
                startProblem_ = "the Tamberlyne plug-in is not in " + host.PluginFolder();
                for (const PluginFailure& failure : host.Failures()) {
                    startProblem_ += "; cannot load plug-in " + failure.message;
                }
            }
        }
        wake_.notify_all();
        for (;;) {
            Job job;
            {
                std::unique_lock<std::mutex> lock(mutex_);
                wake_.wait(lock, [this] { return stopping_ || !jobs_.empty(); });
                if (jobs_.empty()) {
                    return;
                }
                job = std::move(jobs_.front());
                jobs_.pop_front();
            }
            job(host, plugin);
        }
    }

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<Job> jobs_;
    bool stopping_ = false;
    bool started_ = false;
    std::string startProblem_;
    std::thread thread_;
};

// ---- The tabs --------------------------------------------------------------------------------------

struct Tab {
    LoadedScore score = DemoScoreForSession();
    Document document = score.file->document();
    uint64_t scoreVersion = 1;
    std::string lastRun = "null";                        // what the last run of the plug-in gave, as JSON
    std::optional<std::pair<int32_t, int32_t>> filled;   // the measures the last fill changed
    uint64_t lastSeen = 0;
};

bool IsSessionId(const std::string& id)
{
    if (id.size() < 8 || id.size() > 64) {
        return false;
    }
    for (const char c : id) {
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        if (!letter && c != '-' && c != '_') {
            return false;
        }
    }
    return true;
}

// A whole number from a request's parameter within [low, high]; nullopt otherwise.
std::optional<int> NumberParameter(const httplib::Request& request, const char* name, int low, int high)
{
    if (!request.has_param(name)) {
        return std::nullopt;
    }
    const std::string text = request.get_param_value(name);
    if (text.empty() || text.size() > 6 || text.find_first_not_of("-0123456789") != std::string::npos) {
        return std::nullopt;
    }
    int value = 0;
    try {
        value = std::stoi(text);
    } catch (...) {
        return std::nullopt;
    }
    return value >= low && value <= high ? std::optional<int>(value) : std::nullopt;
}

void Fail(httplib::Response& response, int status, const std::string& message)
{
    response.status = status;
    response.set_content("{\"error\":" + JsonQuoted(message) + "}", kJson);
}

std::string AlertsJson(const std::vector<AlertRecord>& alerts)
{
    std::string json = "[";
    for (size_t i = 0; i < alerts.size(); ++i) {
        json += (i > 0 ? "," : "") + std::string("{\"text\":") + JsonQuoted(alerts[i].request.text) +
                ",\"question\":" + (IsQuestion(alerts[i].request.style) ? "true" : "false") +
                ",\"answer\":" + std::to_string(alerts[i].answer) + "}";
    }
    return json + "]";
}

bool ReadWholeFile(const std::string& path, std::string& bytes)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    bytes = content.str();
    return static_cast<bool>(in) || in.eof();
}

class WebServer {
public:
    WebServer(const WebServerSettings& settings, std::string grooveFolder, std::string soundFolder, HostThread& host,
              WebFrontEnd& frontEnd)
        : settings_(settings), grooveFolder_(std::move(grooveFolder)), soundFolder_(std::move(soundFolder)),
          host_(host), frontEnd_(frontEnd)
    {
        Routes();
    }
    httplib::Server& Http() { return http_; }
    void SetOrigin(const std::string& hostPort) { hostPort_ = hostPort; }

private:
    // The tab named by the request, made from the demo score on its first request; null (and
    // the response set) when the id is missing or malformed or there are too many tabs.
    Tab* TabOf(const httplib::Request& request, httplib::Response& response)
    {
        const std::string id = request.get_param_value("session");
        if (!IsSessionId(id)) {
            Fail(response, 400, "the request names no tab (session=ID, 8 to 64 letters, digits, - or _)");
            return nullptr;
        }
        auto found = tabs_.find(id);
        if (found == tabs_.end()) {
            if (tabs_.size() >= kMostTabs) {
                auto oldest = tabs_.end();
                for (auto tab = tabs_.begin(); tab != tabs_.end(); ++tab) {
                    if (tab->first != runningTab_ &&
                        (oldest == tabs_.end() || tab->second.lastSeen < oldest->second.lastSeen)) {
                        oldest = tab;
                    }
                }
                if (oldest == tabs_.end()) {
                    Fail(response, 503, "too many tabs are open");
                    return nullptr;
                }
                tabs_.erase(oldest);
            }
            found = tabs_.emplace(id, Tab{}).first;
        }
        found->second.lastSeen = toolbox::NowMilliseconds();
        return &found->second;
    }

    // The request's tab when the score in it may change: not while the plug-in runs there.
    Tab* EditableTabOf(const httplib::Request& request, httplib::Response& response)
    {
        Tab* tab = TabOf(request, response);
        if (tab != nullptr && runningTab_ == request.get_param_value("session")) {
            Fail(response, 409, "the plug-in is running in this tab");
            return nullptr;
        }
        return tab;
    }

    // Requests come only from the page itself: the Host header must be the address the server
    // printed (a page elsewhere cannot reach the server through a name of its own), and a
    // browser's Origin, when sent, must be that address too.
    bool FromThePage(const httplib::Request& request) const
    {
        const std::string host = request.get_header_value("Host");
        if (host != hostPort_ && host != "localhost" + hostPort_.substr(hostPort_.find(':'))) {
            return false;
        }
        const std::string origin = request.get_header_value("Origin");
        return origin.empty() || origin == "http://" + host;
    }

    void Routes()
    {
        http_.set_payload_max_length(kLargestUpload);
        http_.set_keep_alive_timeout(1);   // so that stopping does not wait long for idle connections
        http_.set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& response) {
            if (!FromThePage(request)) {
                Fail(response, 403, "requests come only from the page at http://" + hostPort_);
                return httplib::Server::HandlerResponse::Handled;
            }
            return httplib::Server::HandlerResponse::Unhandled;
        });
        http_.Get(R"(/[A-Za-z0-9_.\-]*)", [this](const httplib::Request& request, httplib::Response& response) {
            ServeAsset(request, response);
        });
        http_.Get("/api/state", [this](const httplib::Request& request, httplib::Response& response) {
            WaitForStateChange(request);
            std::lock_guard<std::mutex> lock(mutex_);
            if (Tab* tab = TabOf(request, response)) {
                State(request.get_param_value("session"), *tab, response);
            }
        });
        http_.Get("/api/score", [this](const httplib::Request& request, httplib::Response& response) {
            std::lock_guard<std::mutex> lock(mutex_);
            if (Tab* tab = TabOf(request, response)) {
                Score(*tab, response);
            }
        });
        http_.Get("/api/groove", [this](const httplib::Request& request, httplib::Response& response) {
            GrooveGrid(request, response);
        });
        http_.Get("/api/groove-sound", [this](const httplib::Request& request, httplib::Response& response) {
            GrooveSound(request, response);
        });
        http_.Get("/api/listen",
                  [this](const httplib::Request& request, httplib::Response& response) { Listen(request, response); });
        http_.Post("/api/run", [this](const httplib::Request& request, httplib::Response& response) {
            StartRun(request, response);
        });
        http_.Post("/api/answer", [this](const httplib::Request& request, httplib::Response& response) {
            AnswerPlugin(request, response);
        });
        http_.Post(R"(/api/(undo|redo|demo))",
                   [this](const httplib::Request& request, httplib::Response& response) { Edit(request, response); });
        http_.Post("/api/upload",
                   [this](const httplib::Request& request, httplib::Response& response) { Upload(request, response); });
        http_.Get("/api/download", [this](const httplib::Request& request, httplib::Response& response) {
            Download(request, response);
        });
    }

    void ServeAsset(const httplib::Request& request, httplib::Response& response)
    {
        const std::optional<WebAsset> asset = FindAsset(request.path);
        std::string bytes;
        if (!asset || !ReadWholeFile(settings_.assetFolder + "/" + asset->fileName, bytes)) {
            Fail(response, 404, "no such page");
            return;
        }
        response.set_content(std::move(bytes), asset->contentType);
    }

    // The score drawn from its MusicXML (the bytes a download would give, as plain XML); the
    // host's entries besides, for the page's own drawing when the engraver is missing.
    void Score(const Tab& tab, httplib::Response& response)
    {
        std::string musicXml;
        std::string error;
        std::string json = ScoreViewJson(tab.document, tab.score.name);
        json.pop_back();
        json += ",\"musicxml\":";
        json += SaveScoreForSession(*tab.score.file, tab.document, "musicxml", musicXml, error) ? JsonQuoted(musicXml)
                                                                                                : "null";
        response.set_content(json + "}", kJson);
    }

    // Only a groove the plug-in lists is looked up: the name is matched against the folder's
    // listing and never used as a path.
    void GrooveGrid(const httplib::Request& request, httplib::Response& response)
    {
        std::string error;
        const std::optional<std::string> grid =
            app::GrooveGridText(grooveFolder_, request.get_param_value("name"), error);
        if (!grid) {
            Fail(response, 404, error);
            return;
        }
        response.set_content(*grid, "text/plain; charset=utf-8");
    }

    // The groove as it sounds: only a groove the library lists (the name never becomes a path).
    void GrooveSound(const httplib::Request& request, httplib::Response& response)
    {
        const std::string name = request.get_param_value("name");
        std::string error;
        if (!app::GrooveGridText(grooveFolder_, name, error)) {
            Fail(response, 404, error);
            return;
        }
        const std::optional<std::string> path = app::FindGrooveFile(grooveFolder_, name);
        if (!path) {
            Fail(response, 422, "there is no groove \"" + name + "\"");
            return;
        }
        const toolbox::Result<app::GroovePreview> preview = app::BuildGroovePreview(*path);
        if (!preview) {
            Fail(response, 422, preview.Message());
            return;
        }
        SendSound(preview->document, 1, preview->bars, preview->tempo, response);
    }

    // The measures the tab's last fill wrote, as they sound now.
    void Listen(const httplib::Request& request, httplib::Response& response)
    {
        Document document;
        std::pair<int32_t, int32_t> measures;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            Tab* tab = TabOf(request, response);
            if (tab == nullptr) {
                return;
            }
            if (!tab->filled) {
                Fail(response, 409, "nothing has been filled in this tab yet");
                return;
            }
            document = tab->document;
            measures = *tab->filled;
        }
        SendSound(document, measures.first, std::min(measures.second, document.MeasureCount()), kListenTempo, response);
    }

    // Measures first..last of `document` rendered by FluidSynth into the server's own folder,
    // answered as WAV audio; the file goes as soon as it is read.
    void SendSound(const Document& document, int32_t first, int32_t last, double tempo, httplib::Response& response)
    {
        const toolbox::Result<midi_export::AudioTools> tools = midi_export::FindAudioTools(std::nullopt);
        if (!tools) {
            Fail(response, 501, tools.Message());
            return;
        }
        const midi_export::ExportOptions range = midi_export::MeasuresAtTempo(first, last, tempo);
        const toolbox::Result<std::vector<uint8_t>> midi = midi_export::ExportMidi(document, range);
        if (!midi) {
            Fail(response, 422, "cannot export the MIDI: " + midi.Message());
            return;
        }
        const std::string path = soundFolder_ + "/sound-" + std::to_string(++soundsMade_) + ".wav";
        std::string bytes;
        const toolbox::Status rendered = midi_export::RenderAudio(*midi, path, *tools);
        const bool read = rendered && ReadWholeFile(path, bytes);
        std::error_code ignored;
        std::filesystem::remove(path, ignored);
        if (!read) {
            Fail(response, 500, rendered ? "cannot read the rendered audio" : rendered.Message());
            return;
        }
        response.set_content(std::move(bytes), "audio/wav");
    }

    // The tab that runs the plug-in names the `changes` of the state it shows (&since=N): it is
    // answered as soon as the plug-in asks something new or finishes, not on its next look.
    void WaitForStateChange(const httplib::Request& request)
    {
        const std::string since = request.get_param_value("since");
        if (since.empty() || since.size() > 19 || since.find_first_not_of("0123456789") != std::string::npos) {
            return;
        }
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (runningTab_.empty() || runningTab_ != request.get_param_value("session")) {
                return;
            }
        }
        frontEnd_.WaitForChange(std::stoull(since), kLongestStateWaitMs);
    }

    void State(const std::string& id, const Tab& tab, httplib::Response& response)
    {
        const uint64_t changes = frontEnd_.Changes();   // before the rest: a change after it is news
        const bool mine = runningTab_ == id;
        const auto running = tabs_.find(runningTab_);
        if (!mine && running != tabs_.end() && toolbox::NowMilliseconds() > running->second.lastSeen + kPageGoneMs) {
            frontEnd_.Abandon();   // the tab that runs the plug-in is gone: its questions get No
        }
        std::ostringstream json;
        json << "{\"running\":" << (mine ? "true" : "false")
             << ",\"busyElsewhere\":" << (!runningTab_.empty() && !mine ? "true" : "false")
             << ",\"ask\":" << (mine ? frontEnd_.Pending() : "null") << ",\"scoreName\":" << JsonQuoted(tab.score.name)
             << ",\"scoreVersion\":" << tab.scoreVersion << ",\"undo\":" << tab.document.UndoCount()
             << ",\"redo\":" << tab.document.RedoCount() << ",\"filled\":" << (tab.filled ? "true" : "false")
             << ",\"lastRun\":" << tab.lastRun << ",\"changes\":" << changes << "}";
        response.set_content(json.str(), kJson);
    }

    void StartRun(const httplib::Request& request, httplib::Response& response)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        Tab* tab = TabOf(request, response);
        if (tab == nullptr) {
            return;
        }
        if (!runningTab_.empty()) {
            Fail(response, 409, "the plug-in is busy in another tab; try again when it has finished");
            return;
        }
        const int32_t measures = tab->document.MeasureCount();
        const int32_t staves = tab->document.StaffCount(kMainInstrumentList);
        const std::optional<int> first = NumberParameter(request, "first", 1, measures);
        const std::optional<int> last = NumberParameter(request, "last", first.value_or(1), measures);
        const std::optional<int> staff = NumberParameter(request, "staff", 0, staves);
        if (request.has_param("first") && (!first || !last || !staff)) {
            Fail(response, 400,
                 "the selection must be measures first..last (1-" + std::to_string(measures) +
                     ") of staff 0 (every staff) to " + std::to_string(staves));
            return;
        }
        std::optional<EREGION> selection;
        if (first) {
            EREGION region{};
            const uint16_t top = static_cast<uint16_t>(*staff == 0 ? 1 : *staff);
            const uint16_t bottom = static_cast<uint16_t>(*staff == 0 ? staves : *staff);
            region.start = EMUSICPOINT{kMainInstrumentList, top, static_cast<uint16_t>(*first), 0};
            region.end = EMUSICPOINT{kMainInstrumentList, bottom, static_cast<uint16_t>(*last), kEndOfMeasure};
            selection = region;
        }
        const std::string id = request.get_param_value("session");
        runningTab_ = id;
        Document document = tab->document;
        frontEnd_.Resume();
        host_.Post([this, id, selection, document = std::move(document)](Host& host, size_t plugin) mutable {
            RunPlugin(host, plugin, id, selection, std::move(document));
        });
        response.set_content("{\"started\":true}", kJson);
    }

    // On the host's thread.
    void RunPlugin(Host& host, size_t plugin, const std::string& id, const std::optional<EREGION>& selection,
                   Document document)
    {
        const size_t dialogsBefore = frontEnd_.DialogLog().size();
        host.SetDocument(std::move(document));
        const auto started = std::chrono::steady_clock::now();
        const int32_t result = host.Invoke(plugin, selection ? &*selection : nullptr);
        const auto took =
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - started);
        const std::vector<AlertRecord> alerts = frontEnd_.TakeAlerts();
        std::string dialogNotes = "[";
        for (size_t index = dialogsBefore; index < frontEnd_.DialogLog().size(); ++index) {
            const DialogOutcome& outcome = frontEnd_.DialogLog()[index];
            if (!outcome.problem.empty()) {
                dialogNotes += (dialogNotes.size() > 1 ? "," : "") + JsonQuoted(outcome.problem);
            }
            for (const std::string& note : outcome.notes) {
                dialogNotes += (dialogNotes.size() > 1 ? "," : "") + JsonQuoted(note);
            }
        }
        dialogNotes += "]";
        {
            std::lock_guard<std::mutex> lock(mutex_);
            runningTab_.clear();
            const auto tab = tabs_.find(id);
            if (tab != tabs_.end()) {
                RecordRun(tab->second, host, selection, result,
                          "{\"result\":" + std::to_string(result) + ",\"changed\":" + (result == 1 ? "true" : "false") +
                              ",\"alerts\":" + AlertsJson(alerts) + ",\"notes\":" + dialogNotes +
                              ",\"milliseconds\":" + std::to_string(took.count()) + "}");
            }
        }
        frontEnd_.CommandEnded();   // the tab waiting for its state learns now that the run is over
    }

    static void RecordRun(Tab& tab, const Host& host, const std::optional<EREGION>& selection, int32_t result,
                          std::string lastRun)
    {
        if (result == 1) {
            tab.document = host.document();
            ++tab.scoreVersion;
            // Without a selection the plug-in asks for one; the whole score is then what to hear.
            tab.filled = selection ? std::pair<int32_t, int32_t>(selection->start.meas, selection->end.meas)
                                   : std::pair<int32_t, int32_t>(1, tab.document.MeasureCount());
        }
        tab.lastRun = std::move(lastRun);
    }

    void AnswerPlugin(const httplib::Request& request, httplib::Response& response)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (TabOf(request, response) == nullptr) {
            return;
        }
        if (runningTab_ != request.get_param_value("session")) {
            Fail(response, 409, "the plug-in is not running for this tab");
            return;
        }
        const std::string kind = request.get_param_value("kind");
        WebAction action;
        const int16_t item = static_cast<int16_t>(NumberParameter(request, "item", 0, 999).value_or(-1));
        const int number = NumberParameter(request, "number", 0, 99999).value_or(-1);
        if (kind == "yes" || kind == "no" || kind == "ok") {
            action.kind = WebAction::Kind::Answer;
            action.number = kind == "yes" ? kAlertAnswerYes : kind == "no" ? kAlertAnswerNo : kAlertAnswerOk;
        } else if (kind == "press" && item > 0) {
            action.kind = WebAction::Kind::Press;
        } else if (kind == "choose" && item > 0 && number > 0) {
            action.kind = WebAction::Kind::Choose;
        } else if (kind == "row" && item >= 0 && number >= 0) {
            action.kind = WebAction::Kind::ClickRow;
        } else if (kind == "close") {
            action.kind = WebAction::Kind::CloseBox;
        } else {
            Fail(response, 400,
                 "unknown answer: kind=yes|no|ok, press&item=N, choose&item=N&number=N, row&item=N&number=N, close");
            return;
        }
        action.item = item;
        action.number = action.kind == WebAction::Kind::Answer ? action.number : number;
        std::string problem;
        if (!frontEnd_.Answer(action, problem)) {
            Fail(response, 409, problem);
            return;
        }
        response.set_content("{\"answered\":true}", kJson);
    }

    void Edit(const httplib::Request& request, httplib::Response& response)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        Tab* tab = EditableTabOf(request, response);
        if (tab == nullptr) {
            return;
        }
        const std::string what = request.matches[1];
        bool done = true;
        if (what == "undo") {
            done = tab->document.Undo();
        } else if (what == "redo") {
            done = tab->document.Redo();
        } else {
            tab->score = DemoScoreForSession();
            tab->document = tab->score.file->document();
            tab->lastRun = "null";
            tab->filled.reset();
        }
        if (!done) {
            Fail(response, 409, "nothing to " + what);
            return;
        }
        ++tab->scoreVersion;
        response.set_content("{\"done\":true}", kJson);
    }

    void Download(const httplib::Request& request, httplib::Response& response)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        Tab* tab = TabOf(request, response);
        if (tab == nullptr) {
            return;
        }
        const std::string format = request.get_param_value("format") == "mxl" ? "mxl" : "musicxml";
        std::string bytes;
        std::string error;
        if (!SaveScoreForSession(*tab->score.file, tab->document, format, bytes, error)) {
            Fail(response, 501, error);
            return;
        }
        response.set_header("Content-Disposition", "attachment; filename=\"score." + format + "\"");
        response.set_content(std::move(bytes), format == "mxl" ? "application/vnd.recordare.musicxml"
                                                               : "application/vnd.recordare.musicxml+xml");
    }

    void Upload(const httplib::Request& request, httplib::Response& response)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        Tab* tab = EditableTabOf(request, response);
        if (tab == nullptr) {
            return;
        }
        // Only the file's own name is kept, for messages: it never becomes a path.
        std::string name = request.get_param_value("name");
        name = name.substr(name.find_last_of("/\\") == std::string::npos ? 0 : name.find_last_of("/\\") + 1);
        if (name.empty()) {
            name = "score.musicxml";
        }
        std::string error;
        std::optional<LoadedScore> score = LoadScoreForSession(request.body, name, error);
        if (!score) {
            Fail(response, 422, error);
            return;
        }
        tab->document = score->file->document();
        tab->score = std::move(*score);
        tab->lastRun = "null";
        tab->filled.reset();
        ++tab->scoreVersion;
        response.set_content("{\"loaded\":true}", kJson);
    }

    const WebServerSettings& settings_;
    const std::string grooveFolder_;
    const std::string soundFolder_;
    std::atomic<uint64_t> soundsMade_{0};
    HostThread& host_;
    WebFrontEnd& frontEnd_;
    httplib::Server http_;
    std::string hostPort_;
    std::mutex mutex_;   // the tabs and which of them runs the plug-in
    std::map<std::string, Tab> tabs_;
    std::string runningTab_;
};

void OpenBrowser(const std::string& address, std::ostream& err)
{
    const char* arguments[] = {"xdg-open", address.c_str(), nullptr};
    pid_t child = 0;
    // The argument array is not changed by posix_spawnp; its interface predates const.
    if (posix_spawnp(&child, "xdg-open", nullptr, nullptr, const_cast<char* const*>(arguments), environ) != 0) {
        err << "tamberlyne: cannot start the desktop browser (xdg-open); open " << address << " yourself\n";
    }
}

bool CopyGrooves(const std::string& from, const std::string& to, std::string& error)
{
    std::error_code failed;
    std::filesystem::create_directories(to, failed);
    if (!failed && !from.empty() && std::filesystem::is_directory(from, failed)) {
        std::filesystem::copy(from, to, std::filesystem::copy_options::recursive, failed);
    }
    if (failed) {
        error = "cannot copy the groove library " + from + " to " + to + ": " + failed.message();
        return false;
    }
    return true;
}

}   // namespace

// The two calls into the MusicXML reader and writer.
std::optional<LoadedScore> LoadScoreForSession(const std::string& bytes, const std::string& name, std::string& error)
{
    toolbox::Result<musicxml::ScoreFile> file = musicxml::ScoreFile::FromBytes(bytes, name);
    if (!file) {
        error = file.Message();
        return std::nullopt;
    }
    return LoadedScore{std::make_shared<const musicxml::ScoreFile>(std::move(*file)), name};
}

LoadedScore DemoScoreForSession()
{
    std::string error;
    // The same name `fill -o` gives the demo score; it always reads.
    std::optional<LoadedScore> demo = LoadScoreForSession(app::DemoScoreText(), "the demo score", error);
    demo->name = kDemoName;
    return std::move(*demo);
}

bool SaveScoreForSession(const musicxml::ScoreFile& file, const Document& document, const std::string& format,
                         std::string& bytes, std::string& error)
{
    const toolbox::Result<std::string> written = file.Write(document, musicxml::ContainerForPath("score." + format));
    if (!written) {
        error = written.Message();
        return false;
    }
    bytes = *written;
    return true;
}

int RunWebServer(const WebServerSettings& settings, std::ostream& out, std::ostream& err)
{
    if (settings.assetFolder.empty()) {
        err << "tamberlyne: the page's files are missing (web/ beside the program, or share/tamberlyne/web)\n";
        return 1;
    }
    WorkFolder work;
    std::string error;
    if (!work.Make(error) || !CopyGrooves(settings.grooveSource, work.Path() + "/" + app::kGrooveFolderName, error)) {
        err << "tamberlyne: " << error << "\n";
        return 1;
    }
    // SIGINT and SIGTERM are taken by one thread that stops the server; every other thread
    // (made below, so they inherit the mask) leaves them alone.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

    HostSettings hostSettings = settings.host;
    hostSettings.applicationFolder = work.Path();
    WebFrontEnd frontEnd;
    int status = 0;
    {
        HostThread host(hostSettings, frontEnd);
        if (!host.Ready(error)) {
            err << "tamberlyne: " << error << "\n";
            return 1;
        }
        WebServer server(settings, work.Path() + "/" + app::kGrooveFolderName, work.Path(), host, frontEnd);
        const int port = settings.port == 0
                             ? server.Http().bind_to_any_port(kLoopback)
                             : (server.Http().bind_to_port(kLoopback, settings.port) ? settings.port : -1);
        if (port <= 0) {
            err << "tamberlyne: cannot listen on " << kLoopback << ":" << settings.port
                << " (is another program using the port? try --port N)\n";
            return 1;
        }
        const std::string hostPort = std::string(kLoopback) + ":" + std::to_string(port);
        server.SetOrigin(hostPort);
        std::atomic<bool> signalled{false};
        std::thread stopper([&server, &frontEnd, &stopSignals, &signalled] {
            int signal = 0;
            sigwait(&stopSignals, &signal);
            signalled = true;
            frontEnd.Abandon();   // a page waiting for its state is answered, so the server need not wait
            server.Http().stop();
        });
        out << "Tamberlyne is at http://" << hostPort << "/ (Ctrl-C stops it)" << std::endl;
        if (settings.openBrowser) {
            OpenBrowser("http://" + hostPort + "/", err);
        }
        if (!server.Http().listen_after_bind()) {
            status = 1;
        }
        if (server.Http().is_running()) {
            server.Http().stop();
        }
        if (!signalled) {
            pthread_kill(stopper.native_handle(), SIGTERM);
        }
        stopper.join();
        frontEnd.Abandon();   // a plug-in still waiting for the page finishes its command
        host.Stop();          // before the server it reports to goes
    }
    out << "Tamberlyne stopped." << std::endl;
    return status;
}

}   // namespace stavio::web
