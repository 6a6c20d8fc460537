// What the host tests share besides tests/support: record keys, string resources and bundles
// made on the spot from the test modules.
#pragma once

#include "tests/support/test_support.h"

#include <optional>
#include <string>
#include <vector>

namespace stavio::test {

using support::TempFolder;

// The key of the "other" record (cmper, inci).
inline EDataID OtherKey(uint16_t cmper, int16_t inci = 0)
{
    EDataID key{};
    key.other = EOtherID{cmper, inci};
    return key;
}

// Writes a resource file holding the string list `listId`.
void WriteStringList(const std::string& path, int16_t listId, const std::vector<std::string>& entries);

// The path of a test module ("probe_plugin", "main_returns_zero", "no_main").
std::string TestModulePath(const std::string& module);

// Makes "<folder>/<name>.bundle" holding a copy of `module` (if given) as lib<name>.so and, when
// `withResources`, Resources/<name>.rsrc with menu texts (list 20000) and alert texts (20001).
std::string MakeBundle(const std::string& folder, const std::string& name, const std::optional<std::string>& module,
                       bool withResources = true);

}   // namespace stavio::test
