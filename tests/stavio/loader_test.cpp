// Loading bundles through the binary interface: broken bundles are reported with their path
// and the reason, a working plug-in runs in both poses of the host.
#include "stavio/document_builder.h"
#include "stavio/host.h"
#include "tests/stavio/test_support.h"
#include "toolbox/resources.h"

#include <dlfcn.h>

#include <filesystem>
#include <fstream>

namespace stavio {
namespace {

// What the probe plug-in saw, read from the loaded module itself.
class ProbeView {
public:
    explicit ProbeView(const std::string& modulePath) : handle_(dlopen(modulePath.c_str(), RTLD_NOW | RTLD_NOLOAD)) {}
    ~ProbeView()
    {
        if (handle_ != nullptr) dlclose(handle_);
    }
    bool Loaded() const { return handle_ != nullptr; }
    template <typename Result>
    Result Ask(const char* name) const
    {
        auto function = reinterpret_cast<Result (*)()>(dlsym(handle_, name));
        return function != nullptr ? function() : Result{};
    }

private:
    void* handle_;
};

const PluginFailure* FailureFor(const Host& host, const std::string& bundleName)
{
    for (const PluginFailure& failure : host.Failures()) {
        if (std::filesystem::path(failure.path).filename() == bundleName) return &failure;
    }
    return nullptr;
}

TEST(StavioPluginLoader, ReportsEachBrokenBundleWithItsPathAndReasonAndGoesOn)
{
    test::TempFolder folder;
    test::MakeBundle(folder.Path(), "Empty", std::nullopt);
    const std::string garbage = test::MakeBundle(folder.Path(), "Garbage", std::nullopt);
    std::ofstream(garbage + "/libGarbage.so") << "this is not a library\n";
    test::MakeBundle(folder.Path(), "NoMain", test::TestModulePath("no_main"));
    test::MakeBundle(folder.Path(), "Refuses", test::TestModulePath("main_returns_zero"));
    test::MakeBundle(folder.Path(), "Unresourced", test::TestModulePath("probe_plugin"), false);
    test::MakeBundle(folder.Path(), "Probe", test::TestModulePath("probe_plugin"));
    std::filesystem::create_directory(folder.Path() + "/NotABundle");
    std::ofstream(folder.Path() + "/Loose.bundle") << "a file, not a folder\n";

    Host host(HostSettings{HostPose::Newer, folder.Path(), ""});
    EXPECT_EQ(host.LoadPlugins(), 1u);
    ASSERT_EQ(host.Plugins().size(), 1u);
    EXPECT_EQ(host.Plugins()[0].MenuItem(), "Probe Command");
    EXPECT_EQ(host.Failures().size(), 5u);

    struct Expected {
        const char* bundle;
        const char* reason;
    };
    for (const Expected& expected :
         {Expected{"Empty.bundle", "no plug-in module (lib*.so)"}, Expected{"Garbage.bundle", "libGarbage.so"},
          Expected{"NoMain.bundle", "no entry point \"main\""},
          Expected{"Refuses.bundle", "refused to start (returned 0)"},
          Expected{"Unresourced.bundle", "no resource file"}}) {
        const PluginFailure* failure = FailureFor(host, expected.bundle);
        ASSERT_NE(failure, nullptr) << expected.bundle;
        EXPECT_EQ(failure->path, folder.Path() + "/" + expected.bundle);
        EXPECT_NE(failure->reason.find(expected.reason), std::string::npos) << failure->reason;
    }
    EXPECT_NE(FailureFor(host, "Garbage.bundle")->reason.find("cannot load the module"), std::string::npos);
}

class StavioProbe : public ::testing::TestWithParam<HostPose> {};

TEST_P(StavioProbe, LoadsInvokesAndUnloadsThroughTheBinaryInterface)
{
    test::TempFolder folder;
    const std::string bundle = test::MakeBundle(folder.Path(), "Probe", test::TestModulePath("probe_plugin"));
    ScriptedFrontEnd script({kAlertAnswerYes});
    Host host(HostSettings{GetParam(), folder.Path(), ""}, &script);
    host.SetDocument(DocumentBuilder().Measures(4).Staff("Piano").Build());

    const toolbox::ResFileRef before = toolbox::CurResFile();
    ASSERT_TRUE(host.LoadBundle(bundle)) << host.Failures().front().reason;
    EXPECT_EQ(toolbox::CurResFile(), before) << "the plug-in's file is current only during its calls";
    const PluginInfo& info = host.Plugins().front();
    EXPECT_EQ(info.StatusText() + "|" + info.UndoText(), "Probe status|Undo Probe");
    EXPECT_EQ(info.interfaceVersion, kPluginInterfaceVersion);

    ProbeView probe(info.modulePath);
    ASSERT_TRUE(probe.Loaded());
    const bool newer = GetParam() == HostPose::Newer;   // every name the probe asks for is exported
    EXPECT_EQ(support::Ints(probe.Ask<int>("ProbeUsedNamePath"), probe.Ask<int>("ProbeNamesFound"),
                            probe.Ask<uint32_t>("ProbeHostVersion")),
              support::Ints(newer ? 1 : 0, newer ? 8 : 0, host.TableVersion()));

    // Nothing selected: the probe asks, is told Yes, adds a staff in one edit bracket and asks
    // for its dialog with the handler in the form this pose expects.
    EXPECT_EQ(host.Invoke(0, nullptr), 1);
    ASSERT_EQ(script.Alerts().size(), 1u);
    EXPECT_EQ(script.Alerts()[0].request.text, "Nothing is selected. Use the whole score?");
    EXPECT_EQ(host.document().UndoName(), "Probe Edit");
    ASSERT_EQ(host.DialogRequests().size(), 1u);
    EXPECT_EQ(support::Ints(host.document().StaffCount(), host.DialogRequests()[0].dialogId), support::Ints(2, 20129));
    EXPECT_EQ(reinterpret_cast<void*>(host.DialogRequests()[0].handler), probe.Ask<void*>("ProbeDialogHandler"));

    // Asked again with no answer left: No, and nothing changes.
    EXPECT_EQ(host.Invoke(0, nullptr), 0);
    EXPECT_EQ(support::Ints(host.document().StaffCount(), host.MenuStatus(0)), support::Ints(2, 1));

    host.UnloadPlugins();
    EXPECT_EQ(probe.Ask<int>("ProbeTerminateCalls"), 1);
    EXPECT_TRUE(host.Plugins().empty());
}

INSTANTIATE_TEST_SUITE_P(Poses, StavioProbe, ::testing::Values(HostPose::Newer, HostPose::Older),
                         [](const auto& instance) { return instance.param == HostPose::Newer ? "Newer" : "Older"; });

}   // namespace
}   // namespace stavio
