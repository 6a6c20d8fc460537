// Well-known folders and the running application.
#pragma once

#include <string>

namespace toolbox {

// The application's own preferences folder, as a Linux desktop keeps them: $XDG_CONFIG_HOME/<name>,
// else ~/.config/<name>, where <name> is ApplicationName(). Created (with the folders above it)
// when `create` is true; empty when it cannot be had.
std::string PreferencesFolder(bool create);

// $XDG_DATA_HOME, else ~/.local/share. Created when `create` is true; empty when it cannot be had.
std::string UserDataFolder(bool create);

// The running application's executable file and the folder that holds it. A host may name
// another file (tests do) with SetApplicationFile; an empty path goes back to the real one.
// The folder of a relative file name without '/' is empty (the current folder).
std::string ApplicationFile();
std::string ApplicationFolder();
void SetApplicationFile(const std::string& path);

// The application's name, which names its own folders: the name a host gave with
// SetApplicationName, else the name of its executable file. An empty name goes back to that.
std::string ApplicationName();
void SetApplicationName(const std::string& name);

}   // namespace toolbox
