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

DialogHostBase::DialogHostBase(stavio::Document doc, stavio::HostPose pose, const std::vector<std::string>& grooves)
    : configEnv("XDG_CONFIG_HOME", config.Path()), host(stavio::HostSettings{pose, "", application.Path()}, &frontEnd)
{
    host.SetDocument(std::move(doc));
    if (!grooves.empty()) MakeGrooveFolder(application.Path(), grooves);
}

DialogHostBase::~DialogHostBase()
{
    toolbox::DisposeAllDialogs();
    toolbox::CloseAllResFiles();
}

int32_t DialogHostBase::Fill(const std::vector<stavio::DialogAction>& actions, const EREGION* selection)
{
    stavio::DialogScript script;
    script.dialogId = 20129;
    script.actions = actions;
    frontEnd.SetDialogScript(script);
    return Invoke(selection);
}

const stavio::DialogOutcome& DialogHostBase::LastDialog() const
{
    static const stavio::DialogOutcome none;
    return frontEnd.DialogLog().empty() ? none : frontEnd.DialogLog().back();
}

std::vector<int32_t> DialogHostBase::AlertIds() const
{
    std::vector<int32_t> ids;
    for (const auto& alert : frontEnd.Alerts()) ids.push_back(alert.request.stringId);
    return ids;
}

std::string DialogHostBase::AllNotes() const
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

BundleHost::BundleHost(stavio::Document doc, stavio::HostPose pose, const std::vector<std::string>& grooves)
    : DialogHostBase(std::move(doc), pose, grooves)
{
    EXPECT_TRUE(host.LoadBundle(BundlePath())) << (host.Failures().empty() ? "" : host.Failures().back().message);
}

BundleHost::~BundleHost()
{
    host.UnloadPlugins();
}

int32_t BundleHost::Invoke(const EREGION* selection)
{
    return host.Invoke(0, selection);
}

uint32_t BundleHost::DialogFlags() const
{
    const auto& requests = host.DialogRequests();
    return requests.empty() || requests.back().flags == nullptr ? 0xDEADBEEF : *requests.back().flags;
}

CoreHost::CoreHost(stavio::Document doc, const std::vector<std::string>& grooves)
    : DialogHostBase(std::move(doc), stavio::HostPose::Newer, grooves)
{
    support::OpenBundleResources();
    support::StartPluginCore(host);
    initFlag = kInitFlagUnread;
    stylenum = 0;
}

CoreHost::~CoreHost() = default;

int32_t CoreHost::Invoke(const EREGION* selection)
{
    const EREGION document = host.document().WholeRegion();
    return StavioExtensionInvoke(nullptr, 0, selection, &document);
}

}   // namespace ui_test
