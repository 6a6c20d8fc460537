#include "tests/stavio/test_support.h"

#include "toolbox/resources.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace fs = std::filesystem;

namespace stavio::test {

TempFolder::TempFolder()
{
    std::string pattern = (fs::temp_directory_path() / "stavio-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        ADD_FAILURE() << "cannot make a temporary folder";
    }
    path_ = pattern;
}

TempFolder::~TempFolder()
{
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

void WriteStringList(const std::string& path, int16_t listId, const std::vector<std::string>& entries)
{
    toolbox::ResourceFile file;
    toolbox::Resource list;
    list.type = toolbox::kStringListType;
    list.id = listId;
    list.strings = entries;
    file.Put(list);
    ASSERT_EQ(toolbox::SaveResourceFile(path, file), toolbox::kNoErr) << path;
}

std::string TestModulePath(const std::string& module)
{
    return std::string(STAVIO_TEST_MODULE_DIR) + "/lib" + module + ".so";
}

std::string MakeBundle(const std::string& folder, const std::string& name, const std::optional<std::string>& module,
                       bool withResources)
{
    const fs::path bundle = fs::path(folder) / (name + ".bundle");
    fs::create_directories(bundle / "Resources");
    if (module) {
        fs::copy_file(*module, bundle / ("lib" + name + ".so"), fs::copy_options::overwrite_existing);
    }
    if (withResources) {
        toolbox::ResourceFile file;
        toolbox::Resource menu;
        menu.type = toolbox::kStringListType;
        menu.id = 20000;
        menu.strings = {name + " Command", name + " status", "Undo " + name};
        file.Put(menu);
        toolbox::Resource alerts = menu;
        alerts.id = 20001;
        alerts.strings = {"Nothing is selected. Use the whole score?"};
        file.Put(alerts);
        EXPECT_EQ(toolbox::SaveResourceFile((bundle / "Resources" / (name + ".rsrc")).string(), file),
                  toolbox::kNoErr);
    }
    return bundle.string();
}

EREGION Region(uint16_t firstSlot, uint16_t lastSlot, uint16_t firstMeas, uint16_t lastMeas)
{
    EREGION region{};
    region.start = EMUSICPOINT{0, firstSlot, firstMeas, 0};
    region.end = EMUSICPOINT{0, lastSlot, lastMeas, kEndOfMeasure};
    return region;
}

}  // namespace stavio::test
