// Temporary folders and environment variables that tests change and put back.
#pragma once

#include <cstdlib>
#include <fstream>
#include <ftw.h>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace toolbox_test {

// A fresh folder under $TMPDIR (or /tmp), removed with everything in it at the end.
class TempFolder {
public:
    TempFolder()
    {
        const char* base = std::getenv("TMPDIR");
        std::string pattern = std::string(base != nullptr && base[0] != '\0' ? base : "/tmp") + "/toolbox-XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr)
            throw std::runtime_error("mkdtemp failed");
        path_ = pattern;
    }
    ~TempFolder()
    {
        nftw(path_.c_str(), [](const char* path, const struct stat*, int, FTW*) { return remove(path); }, 16,
             FTW_DEPTH | FTW_PHYS);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::string& Path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

// Sets (or, with nullopt, unsets) an environment variable and restores it at the end.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const std::optional<std::string>& value) : name_(name)
    {
        if (const char* old = std::getenv(name))
            old_ = old;
        if (value)
            setenv(name, value->c_str(), 1);
        else
            unsetenv(name);
    }
    ~ScopedEnv()
    {
        if (old_)
            setenv(name_.c_str(), old_->c_str(), 1);
        else
            unsetenv(name_.c_str());
    }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    std::string name_;
    std::optional<std::string> old_;
};

inline void WriteText(const std::string& path, const std::string& text)
{
    std::ofstream(path, std::ios::binary) << text;
}

inline std::string ReadText(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace toolbox_test
