#include "stavio/app/shipped_folders.h"

#include "toolbox/files.h"
#include "toolbox/folders.h"

#include <filesystem>

// The installed folders relative to the installed program's folder; the build passes the ones
// its install rules use.
#ifndef TAMBERLYNE_INSTALLED_PLUGIN_FOLDER
#define TAMBERLYNE_INSTALLED_PLUGIN_FOLDER "../lib/tamberlyne/PlugIns"
#endif
#ifndef TAMBERLYNE_INSTALLED_GROOVE_LIBRARY
#define TAMBERLYNE_INSTALLED_GROOVE_LIBRARY "../share/tamberlyne/Tamberlyne"
#endif

namespace stavio::app {

namespace {

std::string Shipped(const char* besideProgram, const char* installed)
{
    const std::string programFolder = toolbox::ApplicationFolder();
    const std::string beside = toolbox::FileSpec{programFolder, besideProgram}.Path();
    if (toolbox::IsFolder(beside)) {
        return beside;
    }
    const std::string inPrefix = (std::filesystem::path(programFolder) / installed).lexically_normal().string();
    return toolbox::IsFolder(inPrefix) ? inPrefix : beside;
}

}   // namespace

std::string ShippedPluginFolder()
{
    return Shipped("PlugIns", TAMBERLYNE_INSTALLED_PLUGIN_FOLDER);
}

std::string ShippedGrooveLibrary()
{
    return Shipped("Tamberlyne", TAMBERLYNE_INSTALLED_GROOVE_LIBRARY);
}

}   // namespace stavio::app
