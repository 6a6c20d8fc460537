// Loading bundles through the binary interface: broken bundles are reported by name and leave
// nothing open, a loaded module has one owner, a working plug-in runs in both poses of the host.
#include "stavio/document_builder.h"
#include "stavio/host.h"
#include "stavio/plugins/plugin_module.h"
#include "tests/stavio/test_support.h"
#include "toolbox/resources.h"

#include <dlfcn.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>

namespace stavio {
namespace {

// What the probe plug-in saw, read from the loaded module itself. Opened with `keepLoaded`, it
// holds the module in memory, so that its counters can be read after the host lets go of it.
class ProbeView {
public:
    explicit ProbeView(const std::string& modulePath, bool keepLoaded = false)
        : handle_(dlopen(modulePath.c_str(), RTLD_NOW | (keepLoaded ? 0 : RTLD_NOLOAD)))
    {}
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

// The menu text (list 20000, entry 1) that a lookup from a new file at the head of the chain
// finds: a bundle's resource file left in the chain would answer it.
std::optional<std::string> MenuTextInChain(const std::string& folder)
{
    test::WriteStringList(folder + "/Head.rsrc", 1, {"head"});
    const toolbox::ResFileRef previous = toolbox::CurResFile();
    const toolbox::ResFileRef head = toolbox::OpenResFile(toolbox::FileSpec{folder, "Head.rsrc"}, true);
    std::optional<std::string> text = toolbox::GetIndString(20000, 1);
    toolbox::CloseResFile(head);
    toolbox::UseResFile(previous);
    return text;
}

const PluginFailure* FailureFor(const Host& host, const std::string& bundleName)
{
    for (const PluginFailure& failure : host.Failures()) {
        if (std::filesystem::path(failure.path).filename() == bundleName) return &failure;
    }
    return nullptr;
}

// Each broken bundle is told with a message that names it, and leaves nothing open behind; a
// plug-in that started before its load failed is terminated first.
TEST(StavioPluginLoader, ReportsEachBrokenBundleByNameAndReleasesWhatItOpened)
{
    test::TempFolder folder;
    test::MakeBundle(folder.Path(), "Empty", std::nullopt);
    const std::string garbage = test::MakeBundle(folder.Path(), "Garbage", std::nullopt);
    std::ofstream(garbage + "/libGarbage.so") << "this is not a library\n";
    test::MakeBundle(folder.Path(), "NoMain", test::TestModulePath("no_main"));
    test::MakeBundle(folder.Path(), "Refuses", test::TestModulePath("main_returns_zero"));
    const std::string broken =
        test::MakeBundle(folder.Path(), "Unreadable", test::TestModulePath("probe_plugin"), false);
    std::ofstream(broken + "/Resources/Unreadable.rsrc") << "resource 'STR#' 20000 {\n    1 = oops\n}\n";
    test::MakeBundle(folder.Path(), "Unresourced", test::TestModulePath("probe_plugin"), false);
    const std::string menuless =
        test::MakeBundle(folder.Path(), "Menuless", test::TestModulePath("probe_plugin"), false);
    test::WriteStringList(menuless + "/Resources/Menuless.rsrc", 20001, {"no menu texts here"});
    test::MakeBundle(folder.Path(), "Probe", test::TestModulePath("probe_plugin"));
    std::filesystem::create_directory(folder.Path() + "/NotABundle");
    std::ofstream(folder.Path() + "/Loose.bundle") << "a file, not a folder\n";

    Host host(HostSettings{HostPose::Newer, folder.Path(), ""});
    // Held here so that its count of terminations can be read once the host lets go. "Menuless"
    // loads before "Probe" (name order), so that no file in the chain lends it menu texts.
    auto startedProbe = std::make_unique<ProbeView>(menuless + "/libMenuless.so", true);
    EXPECT_EQ(host.LoadPlugins(), 1u);
    ASSERT_EQ(host.Plugins().size(), 1u);
    EXPECT_EQ(host.Plugins()[0].MenuItem(), "Probe Command");
    EXPECT_EQ(host.Failures().size(), 7u);
    EXPECT_EQ(startedProbe->Ask<int>("ProbeTerminateCalls"), 1);
    startedProbe.reset();

    struct Expected {
        const char* bundle;
        std::string message;   // after "<bundle path>: "
    };
    for (const Expected& expected :
         {Expected{"Empty", "the bundle holds no plug-in module (lib*.so)"},
          Expected{"Garbage", "cannot load the module: " + garbage + "/libGarbage.so"},
          Expected{"NoMain", "the module has no entry point \"main\""},
          Expected{"Refuses", "its main entry refused to start (returned 0)"},
          Expected{"Unreadable", "cannot open the resource file " + broken +
                                     "/Resources/Unreadable.rsrc:2: expected a quoted string, found 'oops'"},
          Expected{"Unresourced", "the bundle holds no resource file (Resources/*.rsrc)"},
          Expected{"Menuless", "it offers no menu command (enumerate returned 0)"}}) {
        const std::string bundle = folder.Path() + "/" + expected.bundle + ".bundle";
        const PluginFailure* failure = FailureFor(host, std::string(expected.bundle) + ".bundle");
        ASSERT_NE(failure, nullptr) << expected.bundle;
        EXPECT_EQ(failure->path, bundle);
        EXPECT_EQ(failure->message.substr(0, bundle.size() + 2 + expected.message.size()),
                  bundle + ": " + expected.message);
        EXPECT_FALSE(ProbeView(bundle + "/lib" + expected.bundle + ".so").Loaded()) << expected.bundle;
    }
    EXPECT_EQ(MenuTextInChain(folder.Path()), "Probe Command") << "only the plug-in that loaded stays";
    host.UnloadPlugins();
    EXPECT_EQ(MenuTextInChain(folder.Path()), std::nullopt);
}

// The loaded module has one owner: a move hands it on, and it terminates and closes once.
TEST(StavioPluginLoader, ALoadedModuleMovesAndClosesOnce)
{
    test::TempFolder folder;
    const std::string bundle = test::MakeBundle(folder.Path(), "Probe", test::TestModulePath("probe_plugin"));
    Host host(HostSettings{HostPose::Newer, folder.Path(), ""});
    StavioFuncs table = host.FunctionTable();
    char window = 0;
    const std::string modulePath = bundle + "/libProbe.so";
    const ProbeView probe(modulePath, true);
    {
        toolbox::Result<PluginModule> loaded = LoadPluginModule(bundle, table, HostPose::Newer, &window);
        ASSERT_TRUE(loaded) << loaded.Message();
        PluginModule moved(std::move(*loaded));
        PluginModule owner;
        owner = std::move(moved);
        EXPECT_EQ(support::Ints(loaded->IsStarted(), moved.IsStarted(), owner.IsStarted()),
                  support::Ints(false, false, true));
        EXPECT_EQ(loaded->ResFile(), -1);
        EXPECT_EQ(MenuTextInChain(folder.Path()), "Probe Command");

        moved.Close();   // owns nothing: nothing happens
        EXPECT_EQ(probe.Ask<int>("ProbeTerminateCalls"), 0);
        owner = PluginModule();   // assigning over it closes what it held
        EXPECT_EQ(probe.Ask<int>("ProbeTerminateCalls"), 1);
        EXPECT_EQ(MenuTextInChain(folder.Path()), std::nullopt);
    }
    EXPECT_EQ(probe.Ask<int>("ProbeTerminateCalls"), 1) << "closed once, not again when it went";
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
    ASSERT_TRUE(host.LoadBundle(bundle)) << host.Failures().front().message;
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
