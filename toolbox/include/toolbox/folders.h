// Well-known folders and the running application.
#pragma once

#include <string>

namespace toolbox {

// $XDG_CONFIG_HOME, else ~/.config. Created when `create` is true; empty when it cannot be had.
std::string PreferencesFolder(bool create);

// $XDG_DATA_HOME, else ~/.local/share. Created when `create` is true; empty when it cannot be had.
std::string UserDataFolder(bool create);

// The running application's executable file and the folder that holds it. A host may name
// another file (tests do) with SetApplicationFile; an empty path goes back to the real one.
// The folder of a relative file name without '/' is empty (the current folder).
std::string ApplicationFile();
std::string ApplicationFolder();
void SetApplicationFile(const std::string& path);

}   // namespace toolbox
