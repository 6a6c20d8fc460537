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
#include "toolbox/status.h"

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

// Owns a module loaded with dlopen: closes it when it goes. Move-only.
class ModuleHandle {
public:
    ModuleHandle() = default;
    explicit ModuleHandle(void* handle) : handle_(handle) {}
    ~ModuleHandle() { Close(); }
    ModuleHandle(ModuleHandle&& other) noexcept;
    ModuleHandle& operator=(ModuleHandle&& other) noexcept;
    ModuleHandle(const ModuleHandle&) = delete;
    ModuleHandle& operator=(const ModuleHandle&) = delete;

    void* Get() const { return handle_; }
    explicit operator bool() const { return handle_ != nullptr; }
    void Close();

private:
    void* handle_ = nullptr;
};

// Owns an open resource file: takes it out of the chain when it goes. Move-only. The chain
// hands out the same reference for a file opened twice, so a file has at most one owner.
class OwnedResFile {
public:
    OwnedResFile() = default;
    explicit OwnedResFile(toolbox::ResFileRef ref) : ref_(ref) {}
    ~OwnedResFile() { Close(); }
    OwnedResFile(OwnedResFile&& other) noexcept;
    OwnedResFile& operator=(OwnedResFile&& other) noexcept;
    OwnedResFile(const OwnedResFile&) = delete;
    OwnedResFile& operator=(const OwnedResFile&) = delete;

    toolbox::ResFileRef Get() const { return ref_; }
    void Close();

private:
    toolbox::ResFileRef ref_ = -1;
};

// A loaded plug-in, the one owner of its module and its resource file. When it goes (or is
// closed) the plug-in is terminated with its resource file current, then the resource file is
// closed, then the module: the plug-in's code must still be there while it terminates and
// while its file leaves the chain. Move-only; a moved-from module owns nothing.
class PluginModule {
public:
    PluginModule() = default;
    ~PluginModule() { Close(); }
    PluginModule(PluginModule&& other) noexcept;
    PluginModule& operator=(PluginModule&& other) noexcept;
    PluginModule(const PluginModule&) = delete;
    PluginModule& operator=(const PluginModule&) = delete;

    const PluginEntryPoints& Entry() const { return entry_; }
    const PluginInfo& Info() const { return info_; }
    toolbox::ResFileRef ResFile() const { return resFile_.Get(); }
    // True while it holds a started plug-in.
    bool IsStarted() const { return started_; }
    void Close();

private:
    friend toolbox::Result<PluginModule> LoadPluginModule(const std::string&, StavioFuncs&, HostPose, EWND);

    ModuleHandle module_;
    OwnedResFile resFile_;
    PluginEntryPoints entry_;
    PluginInfo info_;
    bool started_ = false;   // init answered yes: terminate is owed
};

// The "*.bundle" folders of a plug-in folder, in name order (empty when it cannot be read).
std::vector<std::string> FindBundles(const std::string& pluginFolder);

// Loads one bundle. A failure names the bundle and what is wrong with it; everything opened on
// the way is closed again.
toolbox::Result<PluginModule> LoadPluginModule(const std::string& bundlePath, StavioFuncs& table, HostPose pose,
                                               EWND window);

}   // namespace stavio
