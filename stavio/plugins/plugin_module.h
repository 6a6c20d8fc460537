// One plug-in bundle loaded through the binary interface: its module, its resource file and
// its entry points.
//
// A bundle is a folder "<Name>.bundle" holding the module "lib<name>.so" and the resource file
// "Resources/<Name>.rsrc". Loading runs `main` with the host's table, finds the entry points
// (by name for a newer host, from `main`'s reply for an older one), then asks the plug-in for
// its version, initialises it and has it describe its menu command.
#pragma once

#include "sdk/funcs.h"
#include "stavio/host.h"
#include "toolbox/resources.h"

#include <optional>
#include <string>
#include <vector>

namespace stavio {

struct PluginEntryPoints {
    SXGetVersionEntry version = nullptr;
    SXInitEntry init = nullptr;
    SXEnumerateEntry enumerate = nullptr;
    SXInvokeEntry invoke = nullptr;
    SXTerminateEntry terminate = nullptr;
    SXGetMenuStatusEntry menuStatus = nullptr;   // optional
};

struct PluginModule {
    void* handle = nullptr;
    toolbox::ResFileRef resFile = -1;
    PluginEntryPoints entry;
    PluginInfo info;
};

// The "*.bundle" folders of a plug-in folder, in name order (empty when it cannot be read).
std::vector<std::string> FindBundles(const std::string& pluginFolder);

// Loads one bundle. On failure returns nothing and sets `reason`; everything opened is closed.
std::optional<PluginModule> LoadPluginModule(const std::string& bundlePath, StavioFuncs& table, HostPose pose,
                                             EWND window, std::string& reason);

// Terminates the plug-in and releases its module and resource file.
void UnloadPluginModule(PluginModule& module);

}   // namespace stavio
