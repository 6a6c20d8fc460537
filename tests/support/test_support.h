// What every test folder shares (GoogleTest comes with it): temporary folders, environment
// variables set for a scope, whole files, where the build and the sources lie, regions, and the
// `tamberlyne` command run as a person runs it.
#pragma once

#include "sdk/sdk.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace support {

// A fresh folder under the system's temporary folder, removed with everything in it.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    const std::string& Path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

// Sets (or, with nullopt, unsets) an environment variable and puts it back at the end.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const std::optional<std::string>& value);
    ~ScopedEnv();
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    std::string name_;
    std::optional<std::string> old_;
};

void WriteFile(const std::string& path, const std::string& bytes);
std::string ReadFile(const std::string& path);
std::vector<uint8_t> ReadBytes(const std::string& path);
bool Has(const std::string& text, const std::string& part);
// Fails the test, naming each missing part and showing the text, unless every part is in it.
void ExpectHas(const std::string& text, const std::vector<std::string>& parts);

// Several numbers of any integer or enum types, to compare at once: EXPECT_EQ(Ints(a, b), Ints(1, 2)).
template <typename... Values>
std::vector<int64_t> Ints(Values... values)
{
    return {static_cast<int64_t>(values)...};
}

std::string BuildDir();             // $TAMBERLYNE_BUILD_DIR, else this build
std::string SourceDir();            // $TAMBERLYNE_SOURCE_DIR, else this checkout
std::string BundlePath();           // the plug-in's bundle in the build
std::string BundleResourcePath();   // and its resource file
std::string GrooveLibrary();        // the committed groove library, "<source>/grooves/Tamberlyne"

// Whole measures (or from startPos to endPos) of slots firstSlot..lastSlot of list 0.
EREGION Region(uint16_t firstSlot, uint16_t lastSlot, uint16_t firstMeas, uint16_t lastMeas, int32_t startPos = 0,
               int32_t endPos = kEndOfMeasure);

struct CommandRun {
    int status = -1;
    std::string out;
    std::string err;
};
// Runs the built `tamberlyne` with `arguments`, `environment` (NAME=value ...) added, and
// `input` on its standard input.
CommandRun RunTamberlyne(const std::string& arguments, const std::string& environment = "",
                         const std::string& input = "");

}   // namespace support
