// `tamberlyne fill`: the plug-in's whole command on the demo score, with its dialog answered
// from the options (or by a person at the terminal), and a report of what changed.
#include "stavio/app/commands.h"
#include "stavio/app/demo_document.h"
#include "stavio/app/fill_options.h"
#include "stavio/app/groove_library.h"
#include "stavio/app/shipped_folders.h"
#include "stavio/app/staff_changes.h"
#include "stavio/dialogs/terminal_front_end.h"
#include "stavio/host.h"
#include "toolbox/folders.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iostream>
#include <memory>
#include <ostream>

namespace stavio::app {

namespace {

constexpr int32_t kGrooveDialogId = 20129;
constexpr int16_t kItemOK = 1;
constexpr int16_t kItemGrooveList = 4;
constexpr int16_t kItemNewStaff = 6;
constexpr int16_t kItemStaffPopup = 8;
constexpr int16_t kItemStylePopup = 11;
constexpr char kPluginBundleName[] = "Tamberlyne.bundle";

bool IsNumber(const std::string& text)
{
    return !text.empty() && text.size() < 6 &&
           std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
}

// "Rock.mid" names the row "Rock": the list shows names without their extension.
std::string GrooveRowName(const std::string& groove)
{
    if (groove.size() > 4) {
        std::string extension = groove.substr(groove.size() - 4);
        std::transform(extension.begin(), extension.end(), extension.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        if (extension == ".mid") {
            return groove.substr(0, groove.size() - 4);
        }
    }
    return groove;
}

// The dialog as the options fill it in: the groove, the staff, the style, the new-staff radio
// button, then OK.
DialogScript ScriptFor(const FillOptions& options)
{
    DialogScript script;
    script.dialogId = kGrooveDialogId;
    if (options.groove) {
        script.actions.push_back(DialogAction::ClickListRowNamed(kItemGrooveList, GrooveRowName(*options.groove)));
    }
    if (options.staff) {
        script.actions.push_back(IsNumber(*options.staff)
                                     ? DialogAction::ChooseEntry(kItemStaffPopup, std::stoi(*options.staff))
                                     : DialogAction::ChooseEntryNamed(kItemStaffPopup, *options.staff));
    }
    if (options.style) {
        script.actions.push_back(DialogAction::ChooseEntry(kItemStylePopup, static_cast<int>(*options.style) + 1));
    }
    if (options.newStaff) {
        script.actions.push_back(DialogAction::PressItem(kItemNewStaff));
    }
    script.actions.push_back(DialogAction::PressItem(kItemOK));
    return script;
}

const char* StyleWord(int32_t style)
{
    switch (style) {
        case kAlertStop: return "stop";
        case kAlertWarning: return "warning";
        case kAlertQuestion: return "question";
        default: return "notice";
    }
}

std::string AnswerWord(int32_t answer)
{
    return answer == kAlertAnswerYes ? "yes" : answer == kAlertAnswerNo ? "no" : "ok";
}

// Why nothing changed, in the plug-in's own words where it gave any.
std::string RefusalMessage(const std::vector<AlertRecord>& alerts, const std::vector<DialogOutcome>& dialogs)
{
    std::string message;
    for (const AlertRecord& alert : alerts) {
        if (!IsQuestion(alert.request.style)) {
            message += (message.empty() ? "" : " ") + alert.request.text;
        }
    }
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
            return "the dialog could not be opened: " + dialog.problem;
        }
        if (!dialog.notes.empty()) {
            return dialog.notes.back();
        }
        return "the dialog was cancelled";
    }
    return "the plug-in changed nothing";
}

EREGION SelectionRegion(const MeasureRange& range, int32_t staves)
{
    EREGION region{};
    region.start = EMUSICPOINT{kMainInstrumentList, 1, static_cast<uint16_t>(range.first), 0};
    region.end = EMUSICPOINT{kMainInstrumentList, static_cast<uint16_t>(staves), static_cast<uint16_t>(range.last),
                             kEndOfMeasure};
    return region;
}

struct FillReport {
    GrooveLibrary library;
    std::optional<MeasureRange> selection;
    int32_t result = 0;
    std::vector<AlertRecord> alerts;
    std::vector<DialogOutcome> dialogs;
    std::string message;   // why nothing changed
};

void WriteTextReport(std::ostream& out, const FillReport& report)
{
    out << "Groove library: " << report.library.folder;
    if (!report.library.filledFrom.empty()) {
        out << " (filled from " << report.library.filledFrom << ": " << report.library.filledCount << " files)";
    }
    out << "\n";
    if (report.selection) {
        out << "Selection: measures " << report.selection->first << "-" << report.selection->last
            << " of every staff\n";
    } else {
        out << "Selection: nothing selected\n";
    }
    for (const AlertRecord& alert : report.alerts) {
        std::string style = StyleWord(alert.request.style);
        style[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(style[0])));
        out << style << ": " << alert.request.text;
        if (IsQuestion(alert.request.style)) {
            out << " -> " << (alert.answer == kAlertAnswerYes ? "Yes" : "No");
        }
        out << "\n";
    }
    for (const DialogOutcome& dialog : report.dialogs) {
        if (!dialog.problem.empty()) {
            out << "Dialog " << dialog.dialogId << " not opened: " << dialog.problem << "\n";
        }
        for (const std::string& note : dialog.notes) {
            out << "Dialog " << dialog.dialogId << ": " << note << "\n";
        }
    }
    out << "Plug-in result: " << report.result
        << (report.result == 1 ? " (the score changed)" : " (the score did not change)") << "\n";
}

void WriteJsonReport(std::ostream& out, const FillReport& report, const Document& before, const Document& after,
                     const EREGION& measures)
{
    out << "{\"library\":" << JsonString(report.library.folder) << ",\"libraryFilledFrom\":"
        << (report.library.filledFrom.empty() ? "null" : JsonString(report.library.filledFrom));
    out << ",\"selection\":";
    if (report.selection) {
        out << "{\"first\":" << report.selection->first << ",\"last\":" << report.selection->last << "}";
    } else {
        out << "null";
    }
    out << ",\"result\":" << report.result << ",\"changed\":" << (report.result == 1 ? "true" : "false");
    out << ",\"alerts\":[";
    for (size_t i = 0; i < report.alerts.size(); ++i) {
        const AlertRecord& alert = report.alerts[i];
        out << (i > 0 ? "," : "") << "{\"style\":\"" << StyleWord(alert.request.style)
            << "\",\"id\":" << alert.request.stringId << ",\"text\":" << JsonString(alert.request.text)
            << ",\"answer\":\"" << AnswerWord(alert.answer) << "\"}";
    }
    out << "],\"dialogs\":[";
    for (size_t i = 0; i < report.dialogs.size(); ++i) {
        const DialogOutcome& dialog = report.dialogs[i];
        out << (i > 0 ? "," : "") << "{\"id\":" << dialog.dialogId
            << ",\"opened\":" << (dialog.opened ? "true" : "false")
            << ",\"shown\":" << (dialog.shown ? "true" : "false") << ",\"result\":" << dialog.result
            << ",\"problem\":" << (dialog.problem.empty() ? "null" : JsonString(dialog.problem)) << ",\"notes\":[";
        for (size_t n = 0; n < dialog.notes.size(); ++n) {
            out << (n > 0 ? "," : "") << JsonString(dialog.notes[n]);
        }
        out << "]}";
    }
    out << "],\"staves\":";
    PrintStaffChanges(out, before, after, measures, ReportFormat::Json);
    out << ",\"message\":" << (report.message.empty() ? "null" : JsonString(report.message)) << "}\n";
}

}   // namespace

int RunFillCommand(const CommandLine& line, std::ostream& out, std::ostream& err)
{
    FillOptions options;
    std::string error;
    if (!ParseFillOptions(line.arguments, options, error)) {
        err << "tamberlyne: " << error << "\n\n" << FillUsageText();
        return kExitUsage;
    }
    if (options.measures && options.measures->last > kDemoMeasures) {
        err << "tamberlyne: the demo score has " << kDemoMeasures << " measures; --measures " << options.measures->first
            << "-" << options.measures->last << " goes past its end\n";
        return kExitUsage;
    }

    FillReport report;
    report.selection = options.measures;
    if (!ResolveGrooveLibrary(options.library, BundledLibraryFolder(), report.library, error)) {
        err << "tamberlyne: " << error << "\n";
        return kExitFailure;
    }
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
    scripted.SetDialogScript(ScriptFor(options));
    // With --json the dialog is shown on the error stream, so that the output stays one JSON value.
    TerminalFrontEnd terminal(std::cin, options.json ? err : out, STDIN_FILENO);
    FrontEnd& frontEnd = interactive ? static_cast<FrontEnd&>(terminal) : static_cast<FrontEnd&>(scripted);

    HostSettings settings = line.settings;
    settings.applicationFolder = report.library.applicationFolder;
    if (settings.pluginFolder.empty()) {
        settings.pluginFolder = ShippedPluginFolder();
    }
    Host host(settings, &frontEnd);
    host.SetDocument(BuildDemoDocument());
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
            err << "tamberlyne: cannot load plug-in " << failure.path << ": " << failure.reason << "\n";
        }
        return kExitFailure;
    }

    const Document before = host.document();
    const int32_t staves = before.StaffCount(kMainInstrumentList);
    const EREGION selection = options.measures ? SelectionRegion(*options.measures, staves) : EREGION{};
    report.result = host.Invoke(plugin, options.measures ? &selection : nullptr);
    report.alerts = interactive ? terminal.Alerts() : scripted.Alerts();
    report.dialogs = frontEnd.DialogLog();
    if (report.result != 1) {
        report.message = RefusalMessage(report.alerts, report.dialogs);
    }

    const EREGION measures = options.measures ? selection : before.WholeRegion();
    if (options.json) {
        WriteJsonReport(out, report, before, host.document(), measures);
    } else {
        WriteTextReport(out, report);
        PrintStaffChanges(out, before, host.document(), measures, ReportFormat::Text);
    }
    if (report.result != 1) {
        err << "tamberlyne: nothing was filled: " << report.message << "\n";
        return kExitFailure;
    }
    return kExitOk;
}

}   // namespace stavio::app
