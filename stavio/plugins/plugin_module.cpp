#include "stavio/plugins/plugin_module.h"

#include "stavio/plugins/resource_scope.h"

#include <dlfcn.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

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

bool FindEntryPoints(void* handle, HostPose pose, const SXPluginFuncs& reply, PluginEntryPoints& entry,
                     std::string& reason)
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
        return true;
    }
    reason = pose == HostPose::Newer ? std::string("the module does not export the entry point ") + missing
                                     : std::string("main gave no address for the entry point ") + missing;
    return false;
}

// Releases what a load opened so far.
void Release(void* handle, toolbox::ResFileRef resFile)
{
    if (resFile >= 0) {
        toolbox::CloseResFile(resFile);
    }
    if (handle != nullptr) {
        dlclose(handle);
    }
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

std::optional<PluginModule> LoadPluginModule(const std::string& bundlePath, StavioFuncs& table, HostPose pose,
                                             EWND window, std::string& reason)
{
    std::error_code error;
    if (!fs::is_directory(bundlePath, error)) {
        reason = "not a bundle folder";
        return std::nullopt;
    }
    PluginModule module;
    module.info.bundlePath = bundlePath;
    auto modulePath =
        FirstFile(bundlePath, [](const std::string& name) { return StartsWith(name, "lib") && EndsWith(name, ".so"); });
    if (!modulePath) {
        reason = "the bundle holds no plug-in module (lib*.so)";
        return std::nullopt;
    }
    module.info.modulePath = *modulePath;

    dlerror();
    module.handle = dlopen(modulePath->c_str(), RTLD_NOW | RTLD_LOCAL);
    if (module.handle == nullptr) {
        reason = "cannot load the module: " + DlError();
        return std::nullopt;
    }
    auto mainEntry = Symbol<SXMainEntry>(module.handle, "main");
    if (mainEntry == nullptr) {
        reason = "the module has no entry point \"main\"";
        Release(module.handle, -1);
        return std::nullopt;
    }

    auto resourcePath =
        FirstFile(fs::path(bundlePath) / "Resources", [](const std::string& name) { return EndsWith(name, ".rsrc"); });
    if (!resourcePath) {
        reason = "the bundle holds no resource file (Resources/*.rsrc)";
        Release(module.handle, -1);
        return std::nullopt;
    }
    module.info.resourcePath = *resourcePath;
    {
        const toolbox::ResFileRef previous = toolbox::CurResFile();
        toolbox::FileSpec spec;
        spec.folder = fs::path(*resourcePath).parent_path().string();
        spec.name = fs::path(*resourcePath).filename().string();
        module.resFile = toolbox::OpenResFile(spec, true);
        toolbox::UseResFile(previous);
    }
    if (module.resFile < 0) {
        const std::string detail = toolbox::ResErrorText();
        reason = "cannot open the resource file " + *resourcePath +
                 (detail.empty() ? " (error " + std::to_string(toolbox::ResError()) + ")" : ": " + detail);
        Release(module.handle, -1);
        return std::nullopt;
    }

    ResourceScope scope(module.resFile);
    SXPluginFuncs reply{};
    if (mainEntry(&table, &reply) == 0) {
        reason = "its main entry refused to start (returned 0)";
        Release(module.handle, module.resFile);
        return std::nullopt;
    }
    if (!FindEntryPoints(module.handle, pose, reply, module.entry, reason)) {
        Release(module.handle, module.resFile);
        return std::nullopt;
    }
    module.info.interfaceVersion = module.entry.version(table.version);
    if (module.entry.init(window, &module.info.initFlags) == 0) {
        reason = "its init entry point refused to start (returned 0)";
        Release(module.handle, module.resFile);
        return std::nullopt;
    }
    if (module.entry.enumerate(nullptr, 0, &module.info.menu) == 0) {
        reason = "it offers no menu command (enumerate returned 0)";
        module.entry.terminate();
        Release(module.handle, module.resFile);
        return std::nullopt;
    }
    return module;
}

void UnloadPluginModule(PluginModule& module)
{
    if (module.handle == nullptr) {
        return;
    }
    {
        ResourceScope scope(module.resFile);
        module.entry.terminate();
    }
    Release(module.handle, module.resFile);
    module.handle = nullptr;
    module.resFile = -1;
}

}   // namespace stavio
