#include "tests/stavio/test_support.h"

#include "toolbox/resources.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace stavio::test {

namespace {
toolbox::Resource StringList(int16_t listId, const std::vector<std::string>& entries)
{
    toolbox::Resource list;
    list.type = toolbox::kStringListType;
    list.id = listId;
    list.strings = entries;
    return list;
}
}   // namespace

void WriteStringList(const std::string& path, int16_t listId, const std::vector<std::string>& entries)
{
    toolbox::ResourceFile file;
    ASSERT_TRUE(file.Put(StringList(listId, entries)));
    const toolbox::Status saved = toolbox::SaveResourceFile(path, file);
    ASSERT_TRUE(saved) << saved.Message();
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
    if (module) fs::copy_file(*module, bundle / ("lib" + name + ".so"), fs::copy_options::overwrite_existing);
    if (withResources) {
        toolbox::ResourceFile file;
        EXPECT_TRUE(file.Put(StringList(20000, {name + " Command", name + " status", "Undo " + name})));
        EXPECT_TRUE(file.Put(StringList(20001, {"Nothing is selected. Use the whole score?"})));
        EXPECT_TRUE(toolbox::SaveResourceFile((bundle / "Resources" / (name + ".rsrc")).string(), file));
    }
    return bundle.string();
}

}   // namespace stavio::test
