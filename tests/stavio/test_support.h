// Shared helpers of the host tests: temporary folders, string resources and bundles made on
// the spot from the test modules.
#pragma once

#include "sdk/sdk.h"

#include <optional>
#include <string>
#include <vector>

namespace stavio::test {

// A fresh folder under the system's temporary folder, removed with everything in it.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    const std::string& Path() const { return path_; }

private:
    std::string path_;
};

// Writes a resource file holding the string list `listId`.
void WriteStringList(const std::string& path, int16_t listId, const std::vector<std::string>& entries);

// The path of a test module ("probe_plugin", "main_returns_zero", "no_main").
std::string TestModulePath(const std::string& module);

// Makes "<folder>/<name>.bundle" holding a copy of `module` (if given) as lib<name>.so and, when
// `withResources`, Resources/<name>.rsrc with menu texts (list 20000) and alert texts (20001).
std::string MakeBundle(const std::string& folder, const std::string& name, const std::optional<std::string>& module,
                       bool withResources = true);

// A region of whole measures.
EREGION Region(uint16_t firstSlot, uint16_t lastSlot, uint16_t firstMeas, uint16_t lastMeas);

}  // namespace stavio::test
