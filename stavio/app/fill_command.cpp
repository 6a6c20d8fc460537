// `tamberlyne fill`: the plug-in's whole command on the demo score, with its dialog answered
// from the options (or by a person at the terminal), and a report of what changed.
#include "stavio/app/commands.h"
#include "stavio/app/demo_document.h"
#include "stavio/app/fill_options.h"
#include "stavio/app/groove_dialog_script.h"
#include "stavio/app/groove_library.h"
#include "stavio/app/groove_preview.h"
#include "stavio/app/score_fill.h"
#include "stavio/app/shipped_folders.h"
#include "stavio/app/sound_output.h"
#include "stavio/app/staff_changes.h"
#include "stavio/dialogs/dialog_text.h"
#include "stavio/dialogs/terminal_front_end.h"
#include "stavio/document/host_tags.h"
#include "stavio/host.h"
#include "toolbox/folders.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iostream>
#include <memory>
#include <ostream>
#include <regex>

namespace stavio::app {

namespace {

constexpr char kPluginBundleName[] = "Tamberlyne.bundle";

std::string AnswerWord(int32_t answer)
{
    return answer == kAlertAnswerYes ? "yes" : answer == kAlertAnswerNo ? "no" : "ok";
}

// An alert the plug-in gave several times in a row is told once, with how often.
struct ToldAlert {
    AlertRecord alert;
    size_t times = 1;

    std::string Text() const
    {
        return alert.request.text + (times > 1 ? " (repeated " + std::to_string(times) + " times)" : "");
    }
};

std::vector<ToldAlert> CollapseRepeats(const std::vector<AlertRecord>& alerts)
{
    std::vector<ToldAlert> told;
    for (const AlertRecord& alert : alerts) {
        if (!told.empty() && told.back().alert.request.style == alert.request.style &&
            told.back().alert.request.text == alert.request.text && told.back().alert.answer == alert.answer) {
            ++told.back().times;
        } else {
            told.push_back(ToldAlert{alert});
        }
    }
    return told;
}

// A note of the host's dialog runner in a person's words: what went wrong, without the
// runner's item and dialog numbers.
std::string ForAPerson(const std::string& note)
{
    std::string text = note;
    const std::string couldNot = "could not ";
    const size_t why = text.find(": ");
    if (text.rfind(couldNot, 0) == 0 && why != std::string::npos) {
        text = text.substr(why + 2);   // what stood in the way says more than the action
    }
    for (const char* cancelled : {"; the dialog was cancelled", "; it was cancelled"}) {
        const size_t at = text.find(cancelled);
        if (at != std::string::npos) {
            text.erase(at);
        }
    }
    static const std::regex labelledItem(R"(item \d+ \(("[^"]*")\))");
    static const std::regex itemAfterLabel(R"( \(item \d+\))");
    static const std::regex numbered(R"(\b(item|pop-up|dialog) \d+)");
    text = std::regex_replace(text, labelledItem, "$1");
    text = std::regex_replace(text, itemAfterLabel, "");
    return std::regex_replace(text, numbered, "the $1");
}

// The texts of the plug-in's notices (not its questions), repeats told once.
std::string NoticesText(const std::vector<AlertRecord>& alerts)
{
    std::string text;
    for (const ToldAlert& told : CollapseRepeats(alerts)) {
        if (!IsQuestion(told.alert.request.style)) {
            text += (text.empty() ? "" : " ") + told.Text();
        }
    }
    return text;
}

// Why the measures were not filled, in the plug-in's own words where it gave any.
std::string RefusalReason(const std::vector<AlertRecord>& alerts, const std::vector<DialogOutcome>& dialogs)
{
    const std::string message = NoticesText(alerts);
    if (!message.empty()) {
        return message;
    }
    for (const AlertRecord& alert : alerts) {
        if (IsQuestion(alert.request.style) && alert.answer != kAlertAnswerYes) {
            return "the plug-in asked \"" + alert.request.text + "\" and the answer was No";
        }
    }
    for (const DialogOutcome& dialog : dialogs) {
        if (!dialog.problem.empty()) {
            return "its dialog could not be opened: " + ForAPerson(dialog.problem);
        }
        if (!dialog.notes.empty()) {
            return ForAPerson(dialog.notes.back());
        }
        return "its dialog was cancelled";
    }
    return "the plug-in changed nothing";
}

std::string NotFilled(const std::string& reason)
{
    return "The plug-in did not fill the measures: " + reason;
}

// Whether the plug-in put any note into the measures: a frame of `measures` that changed and
// holds a note.
bool NotesLanded(const Document& before, const Document& after, const EREGION& measures)
{
    for (const auto& [key, bytes] : after.Records().All(kHostTagEntries)) {
        const int32_t meas = key.group2;
        if (meas < measures.start.meas || meas > measures.end.meas) {
            continue;
        }
        const RecordStore::Bytes* was = before.Records().Find(kHostTagEntries, key);
        if (was != nullptr && *was == bytes) {
            continue;
        }
        const std::optional<FrameContent> frame = after.Frame(key.group1, meas, key.inci);
        if (frame && std::any_of(frame->entries.begin(), frame->entries.end(),
                                 [](const EXENTRY& entry) { return (entry.ef & kEntryIsNote) != 0; })) {
            return true;
        }
    }
    return false;
}

EREGION SelectionRegion(const MeasureRange& range, int32_t staves)
{
    EREGION region{};
    region.start = EMUSICPOINT{kMainInstrumentList, 1, static_cast<uint16_t>(range.first), 0};
    region.end = EMUSICPOINT{kMainInstrumentList, static_cast<uint16_t>(staves), static_cast<uint16_t>(range.last),
                             kEndOfMeasure};
    return region;
}

// Each --fill after the first runs the plug-in again on the same document (its own undo step),
// with the dialog answered for that fill's groove; `invoke` answers the plug-in's result.
template <typename Invoke>
void RunMoreFills(const FillOptions& options, int32_t staves, Invoke invoke)
{
    for (const FillStep& step : options.moreFills) {
        FillOptions stepOptions = options;
        stepOptions.groove = step.groove;
        stepOptions.measures = step.measures;
        if (invoke(stepOptions, SelectionRegion(step.measures, staves)) != 1) {
            return;
        }
    }
}

struct FillReport {
    GrooveLibrary library;
    std::optional<MeasureRange> selection;
    std::vector<std::string> scoreNumbers;   // a score's own measure numbers, by position
    int32_t result = 0;
    std::vector<AlertRecord> alerts;
    std::vector<DialogOutcome> dialogs;
    bool notesLanded = false;
    std::string message;   // why the measures were not filled, for a person
};

void WriteTextReport(std::ostream& out, const FillReport& report)
{
    out << "Groove library: " << report.library.folder;
    if (!report.library.filledFrom.empty()) {
        out << " (filled from " << report.library.filledFrom << ": " << report.library.filledCount << " files)";
    }
    out << "\n";
    if (report.selection) {
        out << "Selection: measures " << MeasureName(report.scoreNumbers, report.selection->first) << "-"
            << MeasureName(report.scoreNumbers, report.selection->last) << " of every staff\n";
    } else {
        out << "Selection: nothing selected\n";
    }
    for (const ToldAlert& told : CollapseRepeats(report.alerts)) {
        std::string style = AlertStyleWord(told.alert.request.style);
        style[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(style[0])));
        out << style << ": " << told.Text();
        if (IsQuestion(told.alert.request.style)) {
            out << " -> " << (told.alert.answer == kAlertAnswerYes ? "Yes" : "No");
        }
        out << "\n";
    }
    out << "Plug-in result: " << report.result;
    if (report.result != 1) {
        out << " (the score did not change)\n";
    } else {
        out << (report.notesLanded ? " (the score changed)" : " (no notes landed)") << "\n";
    }
    if (!report.message.empty()) {
        out << report.message << "\n";
    }
}

void WriteJsonReport(std::ostream& out, const FillReport& report, const Document& before, const Document& after,
                     const EREGION& measures)
{
    out << "{\"library\":" << JsonQuoted(report.library.folder) << ",\"libraryFilledFrom\":"
        << (report.library.filledFrom.empty() ? "null" : JsonQuoted(report.library.filledFrom));
    out << ",\"selection\":";
    if (report.selection) {
        // first/last count the document's measures from 1; a score adds its own numbers for them.
        out << "{\"first\":" << report.selection->first << ",\"last\":" << report.selection->last;
        if (!report.scoreNumbers.empty()) {
            out << ",\"firstNumber\":" << JsonQuoted(MeasureName(report.scoreNumbers, report.selection->first))
                << ",\"lastNumber\":" << JsonQuoted(MeasureName(report.scoreNumbers, report.selection->last));
        }
        out << "}";
    } else {
        out << "null";
    }
    out << ",\"result\":" << report.result << ",\"changed\":" << (report.message.empty() ? "true" : "false");
    out << ",\"alerts\":[";
    for (size_t i = 0; i < report.alerts.size(); ++i) {
        const AlertRecord& alert = report.alerts[i];
        out << (i > 0 ? "," : "") << "{\"style\":\"" << AlertStyleWord(alert.request.style)
            << "\",\"id\":" << alert.request.stringId << ",\"text\":" << JsonQuoted(alert.request.text)
            << ",\"answer\":\"" << AnswerWord(alert.answer) << "\"}";
    }
    out << "],\"dialogs\":[";
    for (size_t i = 0; i < report.dialogs.size(); ++i) {
        const DialogOutcome& dialog = report.dialogs[i];
        out << (i > 0 ? "," : "") << "{\"id\":" << dialog.dialogId
            << ",\"opened\":" << (dialog.opened ? "true" : "false")
            << ",\"shown\":" << (dialog.shown ? "true" : "false") << ",\"result\":" << dialog.result
            << ",\"problem\":" << (dialog.problem.empty() ? "null" : JsonQuoted(dialog.problem)) << ",\"notes\":[";
        for (size_t n = 0; n < dialog.notes.size(); ++n) {
            out << (n > 0 ? "," : "") << JsonQuoted(dialog.notes[n]);
        }
        out << "]}";
    }
    out << "],\"staves\":";
    PrintStaffChanges(out, before, after, measures, ReportFormat::Json, report.scoreNumbers);
    out << ",\"message\":" << (report.message.empty() ? "null" : JsonQuoted(report.message)) << "}\n";
}

}   // namespace

int RunFillCommand(const CommandLine& line, std::ostream& standardOut, std::ostream& err)
{
    const toolbox::Result<FillOptions> parsed = ParseFillOptions(line.arguments);
    if (!parsed) {
        err << "tamberlyne: " << parsed.Message() << "\n\n" << FillUsageText();
        return kExitUsage;
    }
    FillOptions options = *parsed;
    std::optional<ScoreFill> scoreFill;   // a MusicXML score instead of the demo score
    if (options.score || options.output) {
        if (const int status = PrepareScoreFill(options, scoreFill, err); status != kExitOk) {
            return status;
        }
    }
    // The report; it goes to the error stream when the filled score goes to standard output.
    std::ostream& out = scoreFill && scoreFill->output == "-" ? err : standardOut;
    if (!scoreFill && options.measures && options.measures->last > kDemoMeasures) {
        err << "tamberlyne: the demo score has " << kDemoMeasures << " measures; --measures " << options.measures->first
            << "-" << options.measures->last << " goes past its end\n";
        return kExitUsage;
    }

    const toolbox::Result<midi_export::AudioTools> audioTools = PrepareSound(options.sound);
    if (!audioTools) {
        err << "tamberlyne: " << audioTools.Message() << "\n";
        return kExitFailure;
    }

    FillReport report;
    report.selection = options.measures;
    if (scoreFill) {
        for (const musicxml::MeasureInfo& measure : scoreFill->score.Measures()) {
            report.scoreNumbers.push_back(measure.number);
        }
    }
    toolbox::Result<GrooveLibrary> library = ResolveGrooveLibrary(options.library, BundledLibraryFolder());
    if (!library) {
        err << "tamberlyne: " << library.Message() << "\n";
        return kExitFailure;
    }
    report.library = std::move(*library);
    if (toolbox::IsFolder(report.library.folder) && !IsWritableFolder(report.library.folder)) {
        err << "tamberlyne: the groove folder " << report.library.folder
            << " is read-only; the plug-in writes its temporary MIDI file there. Make it writable or use "
               "--library DIR.\n";
        return kExitFailure;
    }
    if (!report.library.note.empty()) {
        err << "tamberlyne: note: " << report.library.note << "\n";
    }

    const bool interactive = options.interactive || (isatty(STDIN_FILENO) != 0 && !options.groove);
    ScriptedFrontEnd scripted;
    scripted.SetDefaultAnswer(options.answerYes.value_or(false) ? kAlertAnswerYes : kAlertAnswerNo);
    // With --json the dialog is shown on the error stream, so that the output stays one JSON value.
    TerminalFrontEnd terminal(std::cin, options.json ? err : out, STDIN_FILENO);
    FrontEnd& frontEnd = interactive ? static_cast<FrontEnd&>(terminal) : static_cast<FrontEnd&>(scripted);

    HostSettings settings = line.settings;
    settings.applicationFolder = report.library.applicationFolder;
    if (settings.pluginFolder.empty()) {
        settings.pluginFolder = ShippedPluginFolder();
    }
    Host host(settings, &frontEnd);
    host.SetDocument(scoreFill ? scoreFill->score.document() : BuildDemoDocument());
    host.LoadPlugins();
    size_t plugin = host.Plugins().size();
    for (size_t index = 0; index < host.Plugins().size(); ++index) {
        if (std::filesystem::path(host.Plugins()[index].bundlePath).filename() == kPluginBundleName) {
            plugin = index;
        }
    }
    if (plugin == host.Plugins().size()) {
        err << "tamberlyne: the Tamberlyne plug-in is not in " << host.PluginFolder() << "\n";
        for (const PluginFailure& failure : host.Failures()) {
            err << "tamberlyne: cannot load plug-in " << failure.message << "\n";
        }
        return kExitFailure;
    }
    const toolbox::Result<DialogScript> script = GrooveDialogScript(options, host.Plugins()[plugin].resourcePath);
    if (!script) {
        err << "tamberlyne: " << script.Message() << "\n";
        return kExitFailure;
    }
    scripted.SetDialogScript(*script);

    // What the score was before the plug-in ran: a score's own document is that already, so a
    // big score is not held once more.
    std::optional<Document> demoBefore;
    if (!scoreFill) {
        demoBefore = host.document();
    }
    const Document& before = scoreFill ? scoreFill->score.document() : *demoBefore;
    const int32_t staves = before.StaffCount(kMainInstrumentList);
    EREGION selection = options.measures ? SelectionRegion(*options.measures, staves) : EREGION{};
    report.result = host.Invoke(plugin, options.measures ? &selection : nullptr);
    RunMoreFills(options, staves, [&](const FillOptions& step, const EREGION& region) {
        const toolbox::Result<DialogScript> stepScript = GrooveDialogScript(step, host.Plugins()[plugin].resourcePath);
        if (!stepScript) {
            return report.result = 0;
        }
        scripted.SetDialogScript(*stepScript);
        return report.result = report.result == 1 ? host.Invoke(plugin, &region) : report.result;
    });
    if (!options.moreFills.empty()) {
        // The report covers every filled measure.
        for (const FillStep& step : options.moreFills) {
            selection.start.meas = std::min<uint16_t>(selection.start.meas, static_cast<uint16_t>(step.measures.first));
            selection.end.meas = std::max<uint16_t>(selection.end.meas, static_cast<uint16_t>(step.measures.last));
        }
        report.selection = MeasureRange{selection.start.meas, selection.end.meas};
    }
    terminal.EndRepeats();
    report.alerts = interactive ? terminal.Alerts() : scripted.Alerts();
    report.dialogs = frontEnd.DialogLog();
    const EREGION measures = options.measures ? selection : before.WholeRegion();
    report.notesLanded = report.result == 1 && NotesLanded(before, host.document(), measures);
    if (report.result != 1) {
        report.message = NotFilled(RefusalReason(report.alerts, report.dialogs));
    } else if (!report.notesLanded) {
        const std::string said = NoticesText(report.alerts);
        report.message = NotFilled("no note of the groove landed in the measures" +
                                   (said.empty() ? std::string() : " (the plug-in said: " + said + ")"));
    }

    if (options.json) {
        WriteJsonReport(out, report, before, host.document(), measures);
    } else {
        WriteTextReport(out, report);
        if (report.message.empty()) {
            PrintStaffChanges(out, before, host.document(), measures, ReportFormat::Text, report.scoreNumbers);
        }
    }
    if (!report.message.empty()) {
        err << "tamberlyne: " << report.message << "\n";
        return kExitFailure;
    }
    if (scoreFill) {
        if (const int status = FinishScoreFill(*scoreFill, host.document(), out, err); status != kExitOk) {
            return status;
        }
    }
    // The filled measures' sound, at the groove's own tempo.
    const std::optional<std::string> groove =
        options.groove ? FindGrooveFile(report.library.folder, *options.groove) : std::nullopt;
    return WriteSound(host.document(), measures.start.meas, measures.end.meas, groove ? FileTempo(*groove) : 120.0,
                      options.sound, *audioTools, options.json ? nullptr : &out, err);
}

}   // namespace stavio::app
