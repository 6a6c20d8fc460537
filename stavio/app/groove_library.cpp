#include "stavio/app/groove_library.h"

#include "stavio/app/shipped_folders.h"

#include "toolbox/files.h"
#include "toolbox/folders.h"

#include <unistd.h>

#include <filesystem>
#include <system_error>

namespace stavio::app {

namespace {

namespace fs = std::filesystem;
using toolbox::Status;

// Copies the files (not the folders) of `from` into a new folder `to`, made whole under a
// temporary name and renamed into place, so that a library is never left half-filled.
toolbox::Result<int> CopyLibrary(const std::string& from, const std::string& to)
{
    const std::string staging = to + ".partial-" + std::to_string(getpid());
    std::error_code failure;
    fs::remove_all(staging, failure);
    if (!toolbox::EnsureFolder(staging)) {
        return Status::Failure("cannot create the folder " + staging);
    }
    int copied = 0;
    for (int index = 1;; ++index) {
        const std::optional<toolbox::FolderItem> item = toolbox::FolderItemAt(from, index);
        if (!item) {
            break;
        }
        if (item->isFolder) {
            continue;
        }
        std::vector<uint8_t> bytes;
        if (toolbox::ReadWholeFile(toolbox::FileSpec{from, item->name}, bytes) != toolbox::kNoErr ||
            toolbox::WriteWholeFile(toolbox::FileSpec{staging, item->name}, bytes.data(), bytes.size()) !=
                toolbox::kNoErr) {
            fs::remove_all(staging, failure);
            return Status::Failure("cannot copy " + toolbox::FileSpec{from, item->name}.Path() + " into " + staging);
        }
        ++copied;
    }
    fs::rename(staging, to, failure);
    if (failure) {
        fs::remove_all(staging, failure);
        if (!toolbox::IsFolder(to)) {
            return Status::Failure("cannot put the groove library in place at " + to);
        }
    }
    return copied;
}

std::string WithoutTrailingSlashes(std::string path)
{
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

toolbox::Result<GrooveLibrary> ResolveGivenLibrary(const std::string& option)
{
    std::error_code failure;
    const fs::path given = fs::absolute(WithoutTrailingSlashes(option), failure);
    if (failure || !fs::exists(given, failure)) {
        return Status::Failure("the groove library " + option + " does not exist");
    }
    if (!fs::is_directory(given, failure)) {
        return Status::Failure("the groove library " + option + " is not a folder");
    }
    // The folder keeps the name it was given (a link named "Tamberlyne" works); only "." and
    // ".." are looked up.
    fs::path folder = given.lexically_normal();
    if (folder.filename().empty() || folder.filename() == "." || folder.filename() == "..") {
        folder = fs::canonical(given, failure);
    }
    if (folder.filename() != kGrooveFolderName) {
        return Status::Failure("the groove library must be a folder named \"" + std::string(kGrooveFolderName) +
                               "\" (the plug-in looks for that name), but " + option + " is named \"" +
                               folder.filename().string() + "\"");
    }
    GrooveLibrary library;
    library.folder = folder.string();
    library.applicationFolder = folder.parent_path().string();
    return library;
}

}   // namespace

std::string BundledLibraryFolder()
{
    return ShippedGrooveLibrary();
}

toolbox::Result<GrooveLibrary> ResolveGrooveLibrary(const std::optional<std::string>& libraryOption,
                                                    const std::string& bundled)
{
    if (libraryOption) {
        return ResolveGivenLibrary(*libraryOption);
    }
    const std::string dataFolder = toolbox::UserDataFolder(true);
    if (dataFolder.empty()) {
        return Status::Failure(
            "cannot find a folder for the groove library: set XDG_DATA_HOME or HOME, or use --library DIR");
    }
    GrooveLibrary library;
    library.applicationFolder = toolbox::FileSpec{dataFolder, "tamberlyne"}.Path();
    library.folder = toolbox::FileSpec{library.applicationFolder, kGrooveFolderName}.Path();
    if (toolbox::IsFolder(library.folder)) {
        return library;
    }
    if (!toolbox::IsFolder(bundled)) {
        library.note = "there is no bundled groove library at " + bundled + " to fill " + library.folder + " from";
        return library;
    }
    if (!toolbox::EnsureFolder(library.applicationFolder)) {
        return Status::Failure("cannot create the folder " + library.applicationFolder);
    }
    const toolbox::Result<int> copied = CopyLibrary(bundled, library.folder);
    if (!copied) {
        return copied.status();
    }
    library.filledCount = *copied;
    library.filledFrom = bundled;
    return library;
}

bool IsWritableFolder(const std::string& folder)
{
    return access(folder.c_str(), W_OK | X_OK) == 0;
}

}   // namespace stavio::app
