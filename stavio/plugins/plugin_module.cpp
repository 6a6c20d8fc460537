#include "stavio/plugins/plugin_module.h"

#include "stavio/plugins/resource_scope.h"

#include <dlfcn.h>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

namespace stavio {

namespace {

bool EndsWith(const std::string& text, const std::string& end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

bool StartsWith(const std::string& text, const std::string& start)
{
    return text.rfind(start, 0) == 0;
}

// The first regular file of `folder` (in name order) whose name fits.
template <typename Fits>
std::optional<std::string> FirstFile(const fs::path& folder, Fits fits)
{
    std::error_code error;
    std::vector<std::string> names;
    for (fs::directory_iterator item(folder, error), end; !error && item != end; item.increment(error)) {
        const std::string name = item->path().filename().string();
        if (item->is_regular_file(error) && fits(name)) {
            names.push_back(name);
        }
    }
    if (names.empty()) {
        return std::nullopt;
    }
    return (folder / *std::min_element(names.begin(), names.end())).string();
}

std::string DlError()
{
    const char* text = dlerror();
    return text != nullptr ? text : "unknown error";
}

template <typename Function>
Function Symbol(void* handle, const char* name)
{
    return reinterpret_cast<Function>(dlsym(handle, name));
}

toolbox::Status FindEntryPoints(void* handle, HostPose pose, const SXPluginFuncs& reply, PluginEntryPoints& entry)
{
    if (pose == HostPose::Newer) {
        entry.version = Symbol<SXGetVersionEntry>(handle, "StavioExtensionVersion");
        entry.init = Symbol<SXInitEntry>(handle, "StavioExtensionInit");
        entry.enumerate = Symbol<SXEnumerateEntry>(handle, "StavioExtensionEnumerate");
        entry.invoke = Symbol<SXInvokeEntry>(handle, "StavioExtensionInvoke");
        entry.terminate = Symbol<SXTerminateEntry>(handle, "StavioExtensionTerminate");
        entry.menuStatus = Symbol<SXGetMenuStatusEntry>(handle, "StavioExtensionGetMenuStatus");
    } else {
        entry.version = reply.fpGetversion;
        entry.init = reply.fpInit;
        entry.enumerate = reply.fpEnumerate;
        entry.invoke = reply.fpInvoke;
        entry.terminate = reply.fpTerminate;
        entry.menuStatus = reply.fpGetMenuStatus;
    }
    const char* missing = nullptr;
    if (entry.version == nullptr) {
        missing = "StavioExtensionVersion";
    } else if (entry.init == nullptr) {
        missing = "StavioExtensionInit";
    } else if (entry.enumerate == nullptr) {
        missing = "StavioExtensionEnumerate";
    } else if (entry.invoke == nullptr) {
        missing = "StavioExtensionInvoke";
    } else if (entry.terminate == nullptr) {
        missing = "StavioExtensionTerminate";
    }
    if (missing == nullptr) {
        return toolbox::Status::Ok();
    }
    return toolbox::Status::Failure(pose == HostPose::Newer
                                        ? std::string("the module does not export the entry point ") + missing
                                        : std::string("main gave no address for the entry point ") + missing);
}

// Opens the resource file without leaving it current: the plug-in's file is current only
// during calls into the plug-in.
toolbox::Result<toolbox::ResFileRef> OpenAside(const std::string& path)
{
    const toolbox::ResFileRef previous = toolbox::CurResFile();
    toolbox::Result<toolbox::ResFileRef> opened = toolbox::OpenResourceFile(toolbox::FileSpecFromPath(path), true);
    toolbox::UseResFile(previous);
    return opened;
}

}   // namespace

std::vector<std::string> FindBundles(const std::string& pluginFolder)
{
    std::vector<std::string> bundles;
    std::error_code error;
    for (fs::directory_iterator item(pluginFolder, error), end; !error && item != end; item.increment(error)) {
        if (EndsWith(item->path().filename().string(), ".bundle") && item->is_directory(error)) {
            bundles.push_back(item->path().string());
        }
    }
    std::sort(bundles.begin(), bundles.end());
    return bundles;
}

// ---- Owners -------------------------------------------------------------------------------------------

ModuleHandle::ModuleHandle(ModuleHandle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr))
{}

ModuleHandle& ModuleHandle::operator=(ModuleHandle&& other) noexcept
{
    if (this != &other) {
        Close();
        handle_ = std::exchange(other.handle_, nullptr);
    }
    return *this;
}

void ModuleHandle::Close()
{
    if (handle_ != nullptr) {
        dlclose(std::exchange(handle_, nullptr));
    }
}

OwnedResFile::OwnedResFile(OwnedResFile&& other) noexcept : ref_(std::exchange(other.ref_, toolbox::ResFileRef{-1}))
{}

OwnedResFile& OwnedResFile::operator=(OwnedResFile&& other) noexcept
{
    if (this != &other) {
        Close();
        ref_ = std::exchange(other.ref_, toolbox::ResFileRef{-1});
    }
    return *this;
}

void OwnedResFile::Close()
{
    if (ref_ >= 0) {
        toolbox::CloseResFile(std::exchange(ref_, toolbox::ResFileRef{-1}));
    }
}

PluginModule::PluginModule(PluginModule&& other) noexcept
    : module_(std::move(other.module_)), resFile_(std::move(other.resFile_)),
      entry_(std::exchange(other.entry_, PluginEntryPoints{})), info_(std::move(other.info_)),
      started_(std::exchange(other.started_, false))
{}

PluginModule& PluginModule::operator=(PluginModule&& other) noexcept
{
    if (this != &other) {
        Close();
        module_ = std::move(other.module_);
        resFile_ = std::move(other.resFile_);
        entry_ = std::exchange(other.entry_, PluginEntryPoints{});
        info_ = std::move(other.info_);
        started_ = std::exchange(other.started_, false);
    }
    return *this;
}

void PluginModule::Close()
{
    if (started_) {
        started_ = false;
        ResourceScope scope(resFile_.Get());
        entry_.terminate();
    }
    entry_ = PluginEntryPoints{};
    resFile_.Close();
    module_.Close();
}

// ---- Loading --------------------------------------------------------------------------------------------

toolbox::Result<PluginModule> LoadPluginModule(const std::string& bundlePath, StavioFuncs& table, HostPose pose,
                                               EWND window)
{
    const auto failure = [&bundlePath](const std::string& what) {
        return toolbox::Status::Failure(bundlePath + ": " + what);
    };
    std::error_code error;
    if (!fs::is_directory(bundlePath, error)) {
        return failure("not a bundle folder");
    }
    // Whatever goes wrong below, `module` closes what was opened so far as it goes.
    PluginModule module;
    module.info_.bundlePath = bundlePath;
    auto modulePath =
        FirstFile(bundlePath, [](const std::string& name) { return StartsWith(name, "lib") && EndsWith(name, ".so"); });
    if (!modulePath) {
        return failure("the bundle holds no plug-in module (lib*.so)");
    }
    module.info_.modulePath = *modulePath;

    dlerror();
    module.module_ = ModuleHandle(dlopen(modulePath->c_str(), RTLD_NOW | RTLD_LOCAL));
    if (!module.module_) {
        return failure("cannot load the module: " + DlError());
    }
    auto mainEntry = Symbol<SXMainEntry>(module.module_.Get(), "main");
    if (mainEntry == nullptr) {
        return failure("the module has no entry point \"main\"");
    }

    auto resourcePath =
        FirstFile(fs::path(bundlePath) / "Resources", [](const std::string& name) { return EndsWith(name, ".rsrc"); });
    if (!resourcePath) {
        return failure("the bundle holds no resource file (Resources/*.rsrc)");
    }
    module.info_.resourcePath = *resourcePath;
    const toolbox::Result<toolbox::ResFileRef> resFile = OpenAside(*resourcePath);
    if (!resFile) {
        return failure("cannot open the resource file " + resFile.Message());
    }
    module.resFile_ = OwnedResFile(*resFile);

    ResourceScope scope(module.resFile_.Get());
    SXPluginFuncs reply{};
    if (mainEntry(&table, &reply) == 0) {
        return failure("its main entry refused to start (returned 0)");
    }
    const toolbox::Status found = FindEntryPoints(module.module_.Get(), pose, reply, module.entry_);
    if (!found) {
        return found.Within(bundlePath);
    }
    module.info_.interfaceVersion = module.entry_.version(table.version);
    if (module.entry_.init(window, &module.info_.initFlags) == 0) {
        return failure("its init entry point refused to start (returned 0)");
    }
    module.started_ = true;
    if (module.entry_.enumerate(nullptr, 0, &module.info_.menu) == 0) {
        return failure("it offers no menu command (enumerate returned 0)");
    }
    return module;
}

}   // namespace stavio
