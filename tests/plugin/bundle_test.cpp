// The real bundle, loaded by the reference host on both table paths and driven only through
// what the module exports.
#include "tests/plugin/plugin_test_support.h"
#include "toolbox/resources.h"

#include <dlfcn.h>

using stavio::HostPose;

namespace {

std::string MenuText(size_t entry)
{
    const toolbox::Result<toolbox::ResourceFile> file = toolbox::LoadResourceFile(plugin_test::BundleResourcePath());
    EXPECT_TRUE(file) << file.Message();
    const toolbox::Resource* list = file ? file->Find(toolbox::kStringListType, 20000) : nullptr;
    return list != nullptr ? list->strings.at(entry - 1).substr(0, 63) : "";
}

EREGION Region(uint16_t meas, TIME_EDU startPos)
{
    return support::Region(1, 2, meas, meas, startPos);
}

class BundleInHost : public ::testing::TestWithParam<HostPose> {
protected:
    void SetUp() override
    {
        host_.SetDocument(stavio::DocumentBuilder().Measures(4).Staff("Drum Set").Staff("Piano").Build());
        ASSERT_TRUE(host_.LoadBundle(plugin_test::BundlePath())) << host_.Failures().back().message;
    }
    void TearDown() override
    {
        host_.UnloadPlugins();
        toolbox::CloseAllResFiles();
    }

    stavio::ScriptedFrontEnd frontEnd_;
    stavio::Host host_{stavio::HostSettings{GetParam(), "", ""}, &frontEnd_};
};

}   // namespace

TEST_P(BundleInHost, EnumeratesItsCommandFromItsResources)
{
    ASSERT_EQ(host_.Plugins().size(), 1u);
    const stavio::PluginInfo& plugin = host_.Plugins()[0];
    EXPECT_EQ(plugin_test::Ints(plugin.interfaceVersion, plugin.initFlags, host_.MenuStatus(0)),
              plugin_test::Ints(0x09000000, 0, 1));
    EXPECT_EQ((std::vector<std::string>{plugin.MenuItem(), plugin.StatusText(), plugin.UndoText()}),
              (std::vector<std::string>{MenuText(1), MenuText(2), MenuText(3)}));
}

// The host resolves the handler for its pose: the first word of a transition vector on the
// older path, the pointer itself on the newer one. Either way it must be the plug-in's code.
TEST_P(BundleInHost, WholeMeasuresOpenTheGrooveDialogWithTheHandlerInTheHostsForm)
{
    const EREGION selection = Region(1, 0);
    EXPECT_EQ(host_.Invoke(0, &selection), 0);
    EXPECT_TRUE(frontEnd_.Alerts().empty());
    ASSERT_EQ(host_.DialogRequests().size(), 1u);
    const stavio::DialogRequest& dialog = host_.DialogRequests()[0];
    EXPECT_EQ(plugin_test::Ints(dialog.dialogId, dialog.modal), plugin_test::Ints(20129, 1));
    Dl_info info{};
    ASSERT_NE(dladdr(reinterpret_cast<const void*>(dialog.handler), &info), 0);
    EXPECT_EQ(std::string(info.dli_fname), host_.Plugins()[0].modulePath);
    EXPECT_EQ(dialog.handler(nullptr, kDlgMsgInit, 0, 0, dialog.flags), 0);
}

INSTANTIATE_TEST_SUITE_P(PluginBundle, BundleInHost, ::testing::Values(HostPose::Older, HostPose::Newer),
                         [](const auto& instance) {
                             return instance.param == HostPose::Older ? "CopyPath" : "NamePath";
                         });

TEST(PluginBundleMain, ReplyCarriesEntryPointsOnlyOnTheCopyPath)
{
    const std::string module = plugin_test::BundlePath() + "/libtamberlyne.so";
    void* handle = dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(handle, nullptr) << dlerror();
    auto mainEntry = reinterpret_cast<SXMainEntry>(dlsym(handle, "main"));
    ASSERT_NE(mainEntry, nullptr);
    for (HostPose pose : {HostPose::Older, HostPose::Newer}) {
        stavio::Host host(stavio::HostSettings{pose, "", ""});
        StavioFuncs table = host.FunctionTable();
        SXPluginFuncs reply{};
        ASSERT_EQ(mainEntry(&table, &reply), 1);
        EXPECT_EQ(plugin_test::Ints(reply.size, reply.version), plugin_test::Ints(32, 0x0c000000));
        const bool copyPath = pose == HostPose::Older;
        const std::pair<const void*, const char*> entries[] = {
            {reinterpret_cast<const void*>(reply.fpGetversion), "Ext_getversion"},
            {reinterpret_cast<const void*>(reply.fpInit), "Ext_init"},
            {reinterpret_cast<const void*>(reply.fpEnumerate), "Ext_enumerate"},
            {reinterpret_cast<const void*>(reply.fpInvoke), "Ext_invoke"},
            {reinterpret_cast<const void*>(reply.fpTerminate), "Ext_terminate"},
            {reinterpret_cast<const void*>(reply.fpGetMenuStatus), "Ext_getmenustatus"},
        };
        for (const auto& [address, name] : entries) {
            EXPECT_EQ(address, copyPath ? dlsym(handle, name) : nullptr) << name;
        }
    }
    dlclose(handle);
}
