// `tamberlyne plugins`: what the plug-in folder offers, and what would not load.
#include "stavio/app/commands.h"
#include "stavio/app/shipped_folders.h"
#include "stavio/host.h"

#include <filesystem>
#include <ostream>

namespace stavio::app {

int RunPluginsCommand(const CommandLine& line, std::ostream& out, std::ostream& err)
{
    if (!line.arguments.empty()) {
        err << "tamberlyne: the plugins command takes no arguments (got \"" << line.arguments.front() << "\")\n"
            << UsageText();
        return kExitUsage;
    }
    HostSettings settings = line.settings;
    if (settings.pluginFolder.empty()) {
        settings.pluginFolder = ShippedPluginFolder();
    }
    Host host(settings);
    const std::string folder = host.PluginFolder();
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error)) {
        err << "tamberlyne: the plug-in folder " << folder << " does not exist or is not a folder\n";
        return kExitFailure;
    }
    host.LoadPlugins();
    out << "Plug-in folder: " << folder << "\n";
    for (const PluginInfo& plugin : host.Plugins()) {
        out << std::filesystem::path(plugin.bundlePath).filename().string() << "\n"
            << "  menu item: " << plugin.MenuItem() << "\n"
            << "  status:    " << plugin.StatusText() << "\n"
            << "  undo:      " << plugin.UndoText() << "\n";
    }
    for (const PluginFailure& failure : host.Failures()) {
        err << "tamberlyne: cannot load plug-in " << failure.message << "\n";
    }
    if (host.Plugins().empty()) {
        err << "tamberlyne: no plug-in loaded from " << folder << "\n";
        return kExitFailure;
    }
    return kExitOk;
}

}   // namespace stavio::app
