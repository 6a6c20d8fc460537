// `tamberlyne serve`: the page on the loopback address (stavio/web/web_server.h).
#include "stavio/app/commands.h"
#include "stavio/app/groove_library.h"
#include "stavio/web/web_assets.h"
#include "stavio/web/web_server.h"
#include "toolbox/files.h"
#include "toolbox/folders.h"

#include <ostream>

namespace stavio::app {

std::string ServeUsageText()
{
    return "Usage: tamberlyne serve [--port N] [--open]\n"
           "\n"
           "Serves the Tamberlyne page on this computer only (127.0.0.1) and prints its address.\n"
           "Each browser tab has its own score; Ctrl-C stops the server.\n"
           "\n"
           "  --port N   the port to listen on (default 8080; 0 picks a free one)\n"
           "  --open     open the page in the desktop browser\n";
}

int RunServeCommand(const CommandLine& line, std::ostream& out, std::ostream& err)
{
    web::WebServerSettings settings;
    for (size_t index = 0; index < line.arguments.size(); ++index) {
        const std::string& argument = line.arguments[index];
        if (argument == "--open") {
            settings.openBrowser = true;
        } else if (argument == "--port" && index + 1 < line.arguments.size()) {
            const std::string& port = line.arguments[++index];
            if (port.empty() || port.size() > 5 || port.find_first_not_of("0123456789") != std::string::npos ||
                std::stoi(port) > 65535) {
                err << "tamberlyne: --port takes a number from 0 to 65535, not \"" << port << "\"\n\n"
                    << ServeUsageText();
                return kExitUsage;
            }
            settings.port = std::stoi(port);
        } else {
            err << "tamberlyne: unknown serve option \"" << argument << "\"\n\n" << ServeUsageText();
            return kExitUsage;
        }
    }
    settings.host = line.settings;
    if (settings.host.pluginFolder.empty()) {
        settings.host.pluginFolder = toolbox::FileSpec{toolbox::ApplicationFolder(), "PlugIns"}.Path();
    }
    settings.assetFolder = web::WebAssetFolder();
    // The person's own groove folder when they have one, else the bundled library: the server
    // works on a copy in its own folder, since the plug-in writes its temporary file there.
    const std::string dataFolder = toolbox::UserDataFolder(false);
    const std::string own =
        dataFolder.empty()
            ? std::string()
            : toolbox::FileSpec{toolbox::FileSpec{dataFolder, "tamberlyne"}.Path(), kGrooveFolderName}.Path();
    settings.grooveSource = !own.empty() && toolbox::IsFolder(own) ? own : BundledLibraryFolder();
    return web::RunWebServer(settings, out, err);
}

}   // namespace stavio::app
