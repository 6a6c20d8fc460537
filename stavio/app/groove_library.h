// Where `tamberlyne fill` finds its grooves. The plug-in looks for a folder named "Tamberlyne"
// inside the host application's folder, so the host's application folder is made the groove
// folder's parent. The groove folder must be writable: the plug-in writes its temporary MIDI
// file there.
#pragma once

#include "toolbox/status.h"

#include <optional>
#include <string>

namespace stavio::app {

constexpr char kGrooveFolderName[] = "Tamberlyne";

struct GrooveLibrary {
    std::string folder;              // the folder holding the .mid files
    std::string applicationFolder;   // its parent: what the host reports as its own folder
    std::string filledFrom;          // the bundled library copied into it just now (else empty)
    int filledCount = 0;             // how many files were copied
    std::string note;                // something a person should know (the library is missing ...)
};

// The bundled library: "Tamberlyne" beside the running program, else the installed one.
std::string BundledLibraryFolder();

// With `libraryOption`: that folder, which must exist, be a folder and be named "Tamberlyne".
// Without: the per-user library ($XDG_DATA_HOME, else ~/.local/share, then
// tamberlyne/Tamberlyne), filled from `bundled` when it does not exist yet. A failure names the
// folder and what is wrong with it, for a person.
toolbox::Result<GrooveLibrary> ResolveGrooveLibrary(const std::optional<std::string>& libraryOption,
                                                    const std::string& bundled);

// Whether files can be created in the folder.
bool IsWritableFolder(const std::string& folder);

}   // namespace stavio::app
