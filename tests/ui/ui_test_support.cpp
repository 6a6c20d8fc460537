#include "tests/ui/ui_test_support.h"

#include "tamberlyne/host/gateway.h"
#include "tamberlyne/host/startup.h"
#include "tamberlyne/plugin/entry_points.h"
#include "tamberlyne/plugin/plugin_globals.h"
#include "toolbox/dialogs.h"
#include "toolbox/resources.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace ui_test {

std::string BuildDir()
{
    const char* dir = std::getenv("TAMBERLYNE_BUILD_DIR");
    return dir != nullptr ? dir : "build";
}

std::string BundlePath() { return BuildDir() + "/bin/PlugIns/Tamberlyne.bundle"; }
std::string BundleResourcePath() { return BundlePath() + "/Resources/Tamberlyne.rsrc"; }

TempFolder::TempFolder()
{
    std::string pattern = (fs::temp_directory_path() / "tamberlyne-ui-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        ADD_FAILURE() << "cannot make a temporary folder";
    }
    path_ = pattern;
}

TempFolder::~TempFolder()
{
    std::error_code ignored;
    fs::permissions(path_, fs::perms::owner_all, fs::perm_options::add, ignored);
    fs::remove_all(path_, ignored);
}

ScopedEnv::ScopedEnv(const char* name, const std::string& value) : name_(name)
{
    if (const char* old = std::getenv(name)) {
        old_ = old;
    }
    setenv(name, value.c_str(), 1);
}

ScopedEnv::~ScopedEnv()
{
    if (old_) {
        setenv(name_.c_str(), old_->c_str(), 1);
    } else {
        unsetenv(name_.c_str());
    }
}

void WriteFile(const std::string& path, const std::string& bytes)
{
    std::ofstream file(path, std::ios::binary);
    file << bytes;
    ASSERT_TRUE(file.good()) << path;
}

std::string ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

std::string MakeGrooveFolder(const std::string& applicationFolder, const std::vector<std::string>& names)
{
    const std::string folder = applicationFolder + "/Tamberlyne";
    fs::create_directories(folder);
    for (const std::string& name : names) {
        WriteFile(folder + "/" + name, "not a groove: " + name);
    }
    return folder;
}

stavio::Document Score(const std::vector<StaffNames>& staves, int measures)
{
    stavio::DocumentBuilder builder;
    builder.Measures(measures);
    for (size_t slot = 1; slot <= staves.size(); ++slot) {
        builder.Staff(staves[slot - 1].full, staves[slot - 1].abbreviated);
        if (staves[slot - 1].drums) {
            builder.DrumStaff(static_cast<int>(slot));
        }
    }
    return builder.Build();
}

EREGION Measures(uint16_t first, uint16_t last, uint16_t staves)
{
    return EREGION{EMUSICPOINT{0, 1, first, 0}, EMUSICPOINT{0, staves, last, kEndOfMeasure}};
}

DialogView ViewOf(const stavio::DialogSession& session)
{
    const toolbox::Dialog& dialog = session.Dialog();
    DialogView view;
    view.shown = dialog.IsShown();
    if (const toolbox::ListControl* list = session.ListInItem(4)) {
        for (int row = 0; row < list->Rows(); ++row) {
            view.grooveRows.push_back(*list->CellText(toolbox::Cell{row, 0}));
        }
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
    if (inspect) {
        inspect(session);
    }
    ScriptedFrontEnd::RunDialog(session);
}

DialogHostBase::DialogHostBase(stavio::Document doc, stavio::HostPose pose)
    : configEnv("XDG_CONFIG_HOME", config.Path()), host(stavio::HostSettings{pose, "", application.Path()}, &frontEnd)
{
    host.SetDocument(std::move(doc));
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
    for (const auto& alert : frontEnd.Alerts()) {
        ids.push_back(alert.request.stringId);
    }
    return ids;
}

std::string DialogHostBase::AllNotes() const
{
    std::string notes;
    for (const stavio::DialogOutcome& dialog : frontEnd.DialogLog()) {
        for (const std::string& note : dialog.notes) {
            notes += note + "\n";
        }
    }
    return notes;
}

BundleHost::BundleHost(stavio::Document doc, stavio::HostPose pose) : DialogHostBase(std::move(doc), pose)
{
    EXPECT_TRUE(host.LoadBundle(BundlePath())) << (host.Failures().empty() ? "" : host.Failures().back().reason);
}

BundleHost::~BundleHost() { host.UnloadPlugins(); }

int32_t BundleHost::Invoke(const EREGION* selection) { return host.Invoke(0, selection); }

uint32_t BundleHost::DialogFlags() const
{
    const auto& requests = host.DialogRequests();
    return requests.empty() || requests.back().flags == nullptr ? 0xDEADBEEF : *requests.back().flags;
}

CoreHost::CoreHost(stavio::Document doc) : DialogHostBase(std::move(doc), stavio::HostPose::Newer)
{
    gStavioFuncs = StavioFuncs{};
    gStavioFuncs.size = sizeof(StavioFuncs);
    StavioEditDepth = 0;
    toolbox::FileSpec resources;
    toolbox::MakeFileSpec(BundlePath() + "/Resources", "Tamberlyne.rsrc", resources);
    EXPECT_GE(toolbox::OpenResFile(resources, true), 0) << BundleResourcePath();
    StavioFuncs table = host.FunctionTable();
    SXPluginFuncs reply{};
    EXPECT_EQ(PluginMain(&table, &reply), 1);
    initFlag = kInitFlagUnread;
    stylenum = 0;
}

CoreHost::~CoreHost() = default;

int32_t CoreHost::Invoke(const EREGION* selection)
{
    const EREGION document = host.document().WholeRegion();
    return StavioExtensionInvoke(nullptr, 0, selection, &document);
}

}  // namespace ui_test
