#include "tests/ui/ui_test_support.h"

#include "tamberlyne/plugin/entry_points.h"
#include "tamberlyne/plugin/plugin_globals.h"
#include "tests/support/plugin_core.h"
#include "toolbox/dialogs.h"
#include "toolbox/resources.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace ui_test {

std::string MakeGrooveFolder(const std::string& applicationFolder, const std::vector<std::string>& names)
{
    const std::string folder = applicationFolder + "/Tamberlyne";
    fs::create_directories(folder);
    for (const std::string& name : names) WriteFile(folder + "/" + name, "not a groove: " + name);
    return folder;
}

stavio::Document Score(const std::vector<StaffNames>& staves, int measures)
{
    stavio::DocumentBuilder builder;
    builder.Measures(measures);
    for (size_t slot = 1; slot <= staves.size(); ++slot) {
        builder.Staff(staves[slot - 1].full, staves[slot - 1].abbreviated);
        if (staves[slot - 1].drums) builder.DrumStaff(static_cast<int>(slot));
    }
    return builder.Build();
}

DialogView ViewOf(const stavio::DialogSession& session)
{
    const toolbox::Dialog& dialog = session.Dialog();
    DialogView view;
    view.shown = dialog.IsShown();
    if (const toolbox::ListControl* list = session.ListInItem(4)) {
        for (int row = 0; row < list->Rows(); ++row) view.grooveRows.push_back(*list->CellText(toolbox::Cell{row, 0}));
    }
    if (const toolbox::DialogItem* staff = dialog.Item(8)) {
        for (int entry = 1; entry <= staff->MenuEntryCount(); ++entry) {
            view.staffEntries.push_back(*staff->MenuEntryText(entry));
        }
        view.staffChoice = staff->Value();
        view.staffEnabled = staff->IsEnabled() && staff->IsVisible();
    }
    view.style = dialog.ItemValue(11);
    view.newStaffRadio = dialog.ItemValue(6);
    view.chosenStaffRadio = dialog.ItemValue(7);
    return view;
}

void InspectingFrontEnd::RunDialog(stavio::DialogSession& session)
{
    if (inspect) inspect(session);
    ScriptedFrontEnd::RunDialog(session);
}

DialogHost::DialogHost(stavio::Document doc, PlugIn plugIn, stavio::HostPose pose,
                       const std::vector<std::string>& grooves)
    : configEnv("XDG_CONFIG_HOME", config.Path()), host(stavio::HostSettings{pose, "", application.Path()}, &frontEnd),
      plugIn_(plugIn)
{
    host.SetDocument(std::move(doc));
    if (!grooves.empty()) MakeGrooveFolder(application.Path(), grooves);
    if (plugIn == PlugIn::Bundle) {
        EXPECT_TRUE(host.LoadBundle(BundlePath())) << (host.Failures().empty() ? "" : host.Failures().back().message);
        return;
    }
    support::OpenBundleResources();
    support::StartPluginCore(host);
    initFlag = kInitFlagUnread;
    stylenum = 0;
}

DialogHost::~DialogHost()
{
    if (plugIn_ == PlugIn::Bundle) host.UnloadPlugins();
    toolbox::DisposeAllDialogs();
    toolbox::CloseAllResFiles();
}

int32_t DialogHost::Fill(const std::vector<stavio::DialogAction>& actions, const EREGION* selection)
{
    frontEnd.SetDialogScript(stavio::DialogScript{20129, actions});
    if (plugIn_ == PlugIn::Bundle) return host.Invoke(0, selection);
    const EREGION document = host.document().WholeRegion();
    return StavioExtensionInvoke(nullptr, 0, selection, &document);
}

const stavio::DialogOutcome& DialogHost::LastDialog() const
{
    static const stavio::DialogOutcome none;
    return frontEnd.DialogLog().empty() ? none : frontEnd.DialogLog().back();
}

std::vector<int32_t> DialogHost::AlertIds() const
{
    std::vector<int32_t> ids;
    for (const auto& alert : frontEnd.Alerts()) ids.push_back(alert.request.stringId);
    return ids;
}

std::string DialogHost::AllNotes() const
{
    return ui_test::AllNotes(frontEnd);
}

std::string AllNotes(const stavio::ScriptedFrontEnd& frontEnd)
{
    std::string notes;
    for (const stavio::DialogOutcome& dialog : frontEnd.DialogLog())
        for (const std::string& note : dialog.notes) notes += note + "\n";
    return notes;
}

uint32_t DialogHost::DialogFlags() const
{
    const auto& requests = host.DialogRequests();
    return requests.empty() || requests.back().flags == nullptr ? 0xDEADBEEF : *requests.back().flags;
}

}   // namespace ui_test
