// Where the command finds what ships with it: the plug-in folder and the bundled groove library.
// Both are looked up from the command's own executable, so that a build tree runs as it is and
// an installed tree can be moved to another prefix.
#pragma once

#include <string>

namespace stavio::app {

// "PlugIns" beside the program (a build tree), else the installed plug-in folder
// (lib/tamberlyne/PlugIns next to bin/). When neither exists: the one beside the program.
std::string ShippedPluginFolder();

// "Tamberlyne" beside the program (a build tree), else the installed groove library
// (share/tamberlyne/Tamberlyne next to bin/). When neither exists: the one beside the program.
std::string ShippedGrooveLibrary();

}   // namespace stavio::app
