#include "stavio/host.h"

#include "stavio/plugins/plugin_module.h"
#include "stavio/plugins/resource_scope.h"
#include "stavio/services/function_table.h"
#include "toolbox/folders.h"
#include "toolbox/resources.h"

#include <cstdio>
#include <cstring>
#include <filesystem>

namespace stavio {

namespace {

Host* gCurrentHost = nullptr;

std::string PacketText(const char* field, size_t capacity)
{
    return std::string(field, strnlen(field, capacity));
}

}   // namespace

std::string PluginInfo::MenuItem() const
{
    return PacketText(menu.menuItem, sizeof(menu.menuItem));
}
std::string PluginInfo::StatusText() const
{
    return PacketText(menu.msgString, sizeof(menu.msgString));
}
std::string PluginInfo::UndoText() const
{
    return PacketText(menu.undoString, sizeof(menu.undoString));
}

struct Host::Impl {
    HostSettings settings;
    FrontEnd* frontEnd = nullptr;
    ScriptedFrontEnd silentFrontEnd;   // when nobody gave one: questions are answered No
    Document document;
    FrameLedger frames;
    StavioFuncs table{};
    std::vector<PluginModule> modules;
    std::vector<PluginInfo> plugins;
    std::vector<PluginFailure> failures;
    bool hasSelection = false;
    EREGION selection{};
    int32_t redraws = 0;
    std::vector<DialogRequest> dialogs;
    char window = 0;   // the address stands for the host's score window

    EWND Window() { return &window; }
};

Host::Host(HostSettings settings, FrontEnd* frontEnd) : impl_(std::make_unique<Impl>())
{
    impl_->settings = std::move(settings);
    impl_->frontEnd = frontEnd;
    impl_->table = services::BuildFunctionTable(impl_->settings.pose);
    MakeCurrent();
}

Host::~Host()
{
    UnloadPlugins();
    if (gCurrentHost == this) {
        gCurrentHost = nullptr;
    }
}

Host* Host::Current()
{
    return gCurrentHost;
}

void Host::MakeCurrent()
{
    gCurrentHost = this;
}

const HostSettings& Host::Settings() const
{
    return impl_->settings;
}
HostPose Host::Pose() const
{
    return impl_->settings.pose;
}
uint32_t Host::TableVersion() const
{
    return impl_->table.version;
}
const StavioFuncs& Host::FunctionTable() const
{
    return impl_->table;
}

std::string Host::ApplicationFolder() const
{
    return impl_->settings.applicationFolder.empty() ? toolbox::ApplicationFolder() : impl_->settings.applicationFolder;
}

std::string Host::PluginFolder() const
{
    return impl_->settings.pluginFolder.empty() ? ApplicationFolder() + "/PlugIns" : impl_->settings.pluginFolder;
}

Document& Host::document()
{
    return impl_->document;
}
const Document& Host::document() const
{
    return impl_->document;
}
void Host::SetDocument(Document doc)
{
    impl_->document = std::move(doc);
}

FrameLedger& Host::Frames()
{
    return impl_->frames;
}
size_t Host::LiveFrameCount() const
{
    return impl_->frames.LiveCount();
}
size_t Host::RefusedFrameFrees() const
{
    return impl_->frames.RefusedFrees();
}

FrontEnd& Host::frontEnd()
{
    return impl_->frontEnd != nullptr ? *impl_->frontEnd : impl_->silentFrontEnd;
}
void Host::SetFrontEnd(FrontEnd* frontEnd)
{
    impl_->frontEnd = frontEnd;
}

// ---- Plug-ins --------------------------------------------------------------------------------------------

size_t Host::LoadPlugins()
{
    const std::string folder = PluginFolder();
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error)) {
        impl_->failures.push_back(
            PluginFailure{folder, folder + ": the plug-in folder does not exist or is not a folder"});
        return 0;
    }
    size_t loaded = 0;
    for (const std::string& bundle : FindBundles(folder)) {
        if (LoadBundle(bundle)) {
            ++loaded;
        }
    }
    return loaded;
}

bool Host::LoadBundle(const std::string& bundlePath)
{
    MakeCurrent();
    toolbox::Result<PluginModule> module =
        LoadPluginModule(bundlePath, impl_->table, impl_->settings.pose, impl_->Window());
    if (!module) {
        impl_->failures.push_back(PluginFailure{bundlePath, module.Message()});
        return false;
    }
    impl_->plugins.push_back(module->Info());
    impl_->modules.push_back(std::move(*module));
    return true;
}

void Host::UnloadPlugins()
{
    MakeCurrent();
    // The newest goes first, as each went into the resource chain after the ones before it.
    while (!impl_->modules.empty()) {
        impl_->modules.pop_back();
    }
    impl_->plugins.clear();
}

const std::vector<PluginInfo>& Host::Plugins() const
{
    return impl_->plugins;
}
const std::vector<PluginFailure>& Host::Failures() const
{
    return impl_->failures;
}

int32_t Host::Invoke(size_t plugin, const EREGION* selection)
{
    if (plugin >= impl_->modules.size()) {
        return 0;
    }
    const PluginModule& module = impl_->modules[plugin];
    MakeCurrent();
    impl_->hasSelection = selection != nullptr;
    impl_->selection = selection != nullptr ? *selection : EREGION{};
    const EREGION documentRegion = impl_->document.WholeRegion();
    int32_t result = 0;
    {
        ResourceScope scope(module.ResFile());
        result = module.Entry().invoke(impl_->Window(), 0, selection, &documentRegion);
    }
    impl_->hasSelection = false;
    return result;
}

int32_t Host::MenuStatus(size_t plugin)
{
    if (plugin >= impl_->modules.size()) {
        return 0;
    }
    const PluginModule& module = impl_->modules[plugin];
    if (module.Entry().menuStatus == nullptr) {
        return 1;
    }
    MakeCurrent();
    ResourceScope scope(module.ResFile());
    return module.Entry().menuStatus(nullptr);
}

// ---- Requests of the plug-in -----------------------------------------------------------------------------

bool Host::CurrentSelection(EREGION& selection) const
{
    if (impl_->hasSelection) {
        selection = impl_->selection;
    }
    return impl_->hasSelection;
}

int32_t Host::RedrawCount() const
{
    return impl_->redraws;
}
void Host::NoteRedraw()
{
    ++impl_->redraws;
}

const std::vector<DialogRequest>& Host::DialogRequests() const
{
    return impl_->dialogs;
}

int32_t Host::RequestDialog(int32_t dialogId, SXDialogHandlerRef handler, void* userData, int32_t modal,
                            uint32_t* flags)
{
    DialogRequest request;
    request.dialogId = dialogId;
    request.userData = userData;
    request.modal = modal;
    request.flags = flags;
    if (impl_->settings.pose == HostPose::Older) {
        // A host without SX_IsMachO is handed an old-style transition vector: the handler is
        // its first word.
        const auto* vector = static_cast<const SXTransitionVector*>(handler);
        request.handler = vector != nullptr ? vector->code : nullptr;
    } else {
        request.handler = reinterpret_cast<SXDialogHandler>(handler);
    }
    impl_->dialogs.push_back(request);
    return 0;
}

int32_t Host::Alert(int32_t style, int32_t stringId, const char* text)
{
    AlertRequest request;
    request.style = style;
    request.stringId = stringId;
    if (text != nullptr) {
        request.text = text;
    } else {
        request.text = ResolveAlertText(stringId);
        if (request.text.empty()) {
            char missing[64];
            std::snprintf(missing, sizeof(missing), "(text 0x%08X not found)", static_cast<unsigned>(stringId));
            request.text = missing;
        }
    }
    return frontEnd().Alert(request);
}

std::string ResolveAlertText(int32_t stringId)
{
    const auto id = static_cast<uint32_t>(stringId);
    const auto list = static_cast<int16_t>(id >> 16);
    const auto index = static_cast<int16_t>(id & 0xFFFF);
    std::optional<std::string> text = list != 0 ? toolbox::GetIndString(list, index) : toolbox::GetString(index);
    return text.value_or(std::string());
}

}   // namespace stavio
