#include "tests/support/test_support.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace fs = std::filesystem;

namespace support {

TempFolder::TempFolder()
{
    std::string pattern = (fs::temp_directory_path() / "tamberlyne-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) ADD_FAILURE() << "cannot make a temporary folder";
    path_ = pattern;
}

TempFolder::~TempFolder()
{
    std::error_code ignored;
    fs::permissions(path_, fs::perms::owner_all, fs::perm_options::add, ignored);
    fs::remove_all(path_, ignored);
}

ScopedEnv::ScopedEnv(const char* name, const std::optional<std::string>& value) : name_(name)
{
    if (const char* old = std::getenv(name)) old_ = old;
    if (value) {
        setenv(name, value->c_str(), 1);
    } else {
        unsetenv(name);
    }
}

ScopedEnv::~ScopedEnv()
{
    if (old_) {
        setenv(name_.c_str(), old_->c_str(), 1);
    } else {
        unsetenv(name_.c_str());
    }
}

void WriteFile(const std::string& path, const std::string& bytes)
{
    std::ofstream file(path, std::ios::binary);
    file << bytes;
    EXPECT_TRUE(file.good()) << path;
}

std::string ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

std::vector<uint8_t> ReadBytes(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

bool Has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

void ExpectHas(const std::string& text, const std::vector<std::string>& parts)
{
    for (const std::string& part : parts) {
        if (!Has(text, part)) ADD_FAILURE() << "missing \"" << part << "\" in:\n" << text;
    }
}

std::string BuildDir()
{
    const char* dir = std::getenv("TAMBERLYNE_BUILD_DIR");
    return dir != nullptr ? dir : TAMBERLYNE_BUILD_TREE;
}

std::string SourceDir()
{
    const char* dir = std::getenv("TAMBERLYNE_SOURCE_DIR");
    return dir != nullptr ? dir : TAMBERLYNE_SOURCE_TREE;
}

std::string BundlePath()
{
    return BuildDir() + "/bin/PlugIns/Tamberlyne.bundle";
}
std::string BundleResourcePath()
{
    return BundlePath() + "/Resources/Tamberlyne.rsrc";
}
std::string GrooveLibrary()
{
    return SourceDir() + "/grooves/Tamberlyne";
}

EREGION Region(uint16_t firstSlot, uint16_t lastSlot, uint16_t firstMeas, uint16_t lastMeas, int32_t startPos,
               int32_t endPos)
{
    return EREGION{EMUSICPOINT{0, firstSlot, firstMeas, startPos}, EMUSICPOINT{0, lastSlot, lastMeas, endPos}};
}

CommandRun RunTamberlyne(const std::string& arguments, const std::string& environment, const std::string& input)
{
    TempFolder folder;
    WriteFile(folder / "in", input);
    const std::string command = "env " + environment + " " + BuildDir() + "/bin/tamberlyne " + arguments + " <" +
                                folder / "in" + " >" + folder / "out" + " 2>" + folder / "err";
    const int raw = std::system(command.c_str());
    return CommandRun{WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, ReadFile(folder / "out"), ReadFile(folder / "err")};
}

}   // namespace support
