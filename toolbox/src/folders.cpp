#include "toolbox/folders.h"

#include "toolbox/files.h"

#include <climits>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace toolbox {

namespace {

std::string& ApplicationFileOverride()
{
    static std::string path;
    return path;
}

std::string& ApplicationNameOverride()
{
    static std::string name;
    return name;
}

std::string HomeFolder()
{
    const char* home = std::getenv("HOME");
    if (home != nullptr && home[0] != '\0') return home;
    char buffer[4096];
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer, sizeof buffer, &found) == 0 && found != nullptr &&
        found->pw_dir != nullptr)
        return found->pw_dir;
    return {};
}

// The folder an XDG base-directory variable names, else `fallback` inside the home folder. The
// variable counts only when it holds an absolute path, as the base-directory rules ask.
std::string BaseFolder(const char* variable, const char* fallback, bool create)
{
    try {
        std::string folder;
        const char* value = std::getenv(variable);
        if (value != nullptr && value[0] == '/') {
            folder = value;
        } else {
            const std::string home = HomeFolder();
            if (home.empty()) return {};
            folder = home + (home.back() == '/' ? "" : "/") + fallback;
        }
        if (create ? EnsureFolder(folder) : IsFolder(folder)) return folder;
        return {};
    } catch (...) {
        return {};
    }
}

}   // namespace

std::string PreferencesFolder(bool create)
{
    try {
        const std::string name = ApplicationName();
        const std::string base = BaseFolder("XDG_CONFIG_HOME", ".config", create);
        if (name.empty() || base.empty()) return {};
        const std::string folder = base + (base.back() == '/' ? "" : "/") + name;
        if (create ? EnsureFolder(folder) : IsFolder(folder)) return folder;
        return {};
    } catch (...) {
        return {};
    }
}

std::string UserDataFolder(bool create)
{
    return BaseFolder("XDG_DATA_HOME", ".local/share", create);
}

std::string ApplicationFile()
{
    try {
        if (!ApplicationFileOverride().empty()) return ApplicationFileOverride();
        char path[PATH_MAX];
        const ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
        if (length <= 0) return {};
        return std::string(path, static_cast<size_t>(length));
    } catch (...) {
        return {};
    }
}

std::string ApplicationFolder()
{
    try {
        const std::string file = ApplicationFile();
        if (file.empty()) return {};
        return FileSpecFromPath(file).folder;
    } catch (...) {
        return {};
    }
}

void SetApplicationFile(const std::string& path)
{
    try {
        ApplicationFileOverride() = path;
    } catch (...) {
        ApplicationFileOverride().clear();
    }
}

std::string ApplicationName()
{
    try {
        if (!ApplicationNameOverride().empty()) return ApplicationNameOverride();
        const std::string file = ApplicationFile();
        if (file.empty()) return {};
        return FileSpecFromPath(file).name;
    } catch (...) {
        return {};
    }
}

void SetApplicationName(const std::string& name)
{
    try {
        ApplicationNameOverride() = name;
    } catch (...) {
        ApplicationNameOverride().clear();
    }
}

}   // namespace toolbox
