// The remembered option: the preferences file read at the first opening after load and written
// on OK, with the plug-in's code linked in so that the remembered word can be read back.
#include "tamberlyne/plugin/plugin_globals.h"
#include "tamberlyne/ui/prefs.h"
#include "tests/support/plugin_core.h"
#include "tests/ui/ui_test_support.h"
#include "toolbox/resources.h"

#include <cstring>
#include <filesystem>

using stavio::DialogAction;
using namespace ui_test;

namespace {

const std::vector<StaffNames> kPianoAndDrums = {{"Piano"}, {"Drums", "", true}};

// The file in the application's own preferences folder: here the application is this test
// program (the command's own folder is checked in fill_command_test).
std::string PrefsPath(const DialogHost& session)
{
    return session.config.Path() + "/ui_tests/tamberlyne Prefs";
}

// A preferences file holding `data` as the option's resource.
void WritePrefs(const DialogHost& session, const std::string& data)
{
    toolbox::ResourceFile file;
    toolbox::Resource option;
    option.type = kPrefsResourceType;
    option.id = 20000;
    option.name = "tamberlyne";
    option.data.assign(data.begin(), data.end());
    ASSERT_TRUE(file.Put(option));
    std::filesystem::create_directories(std::filesystem::path(PrefsPath(session)).parent_path());
    ASSERT_TRUE(toolbox::SaveResourceFile(PrefsPath(session), file));
}

// The option's resource in the file on disk.
std::optional<toolbox::Resource> StoredOption(const DialogHost& session)
{
    const toolbox::Result<toolbox::ResourceFile> file = toolbox::LoadResourceFile(PrefsPath(session));
    if (!file) return std::nullopt;
    const toolbox::Resource* option = file->Find(kPrefsResourceType, 20000);
    return option != nullptr ? std::optional<toolbox::Resource>(*option) : std::nullopt;
}

// Opens and cancels the dialog once; answers the remembered option afterwards.
uint32_t OptionAfterOpening(DialogHost& session)
{
    const EREGION selection = Measures(1, 4, 2);
    session.Fill({DialogAction::PressItem(2)}, &selection);
    return initFlag;
}

}   // namespace

TEST(GrooveDialogPrefs, NoFileMeansOneAndTheFirstOKCreatesIt)
{
    DialogHost session(Score(kPianoAndDrums), PlugIn::Linked);
    EXPECT_EQ(OptionAfterOpening(session), 1u);
    EXPECT_FALSE(std::filesystem::exists(PrefsPath(session))) << "Cancel writes nothing";

    // OK reads the dialog and remembers its options even when it then refuses to go on.
    const EREGION selection = Measures(1, 4, 2);
    session.Fill({DialogAction::PressItem(6), DialogAction::PressItem(1)}, &selection);
    const std::optional<toolbox::Resource> stored = StoredOption(session);
    ASSERT_TRUE(stored.has_value());
    EXPECT_EQ(stored->name, "tamberlyne");
    EXPECT_EQ(stored->data, (std::vector<uint8_t>{'1', 0}));
    EXPECT_EQ(initFlag, 1u);

    session.Fill({DialogAction::PressItem(1)}, &selection);
    EXPECT_EQ(StoredOption(session)->data, (std::vector<uint8_t>{'0', 0}));
    EXPECT_EQ(initFlag, 0u);
    EXPECT_EQ(session.AlertIds(), (std::vector<int32_t>{0x4E210009, 0x4E210009}));
}

TEST(GrooveDialogPrefs, StoredTextsAreReadAndOnlyZeroAndOneAreKept)
{
    // Any number but 0 and 1 is 1, judged on the whole number and not on its low 32 bits.
    using namespace std::string_literals;
    const std::vector<std::pair<std::string, uint32_t>> cases = {
        {"0\0"s, 0u},
        {"1\0"s, 1u},
        {"2\0"s, 1u},
        {"4294967295\0"s, 1u},
        {"4294967296\0"s, 1u},
        {"4294967297\0"s, 1u},
        {"-4294967296\0"s, 1u},
        {"99999999999999999999\0"s, 1u},
        {"-1\0"s, 1u},
        {""s, 1u},
        {"zero\0"s, 1u},
        {" 0 and more\0"s, 0u},
        {"0"s, 0u},   // no terminator
    };
    for (const auto& [text, expected] : cases) {
        DialogHost session(Score(kPianoAndDrums), PlugIn::Linked);
        WritePrefs(session, text);
        EXPECT_EQ(OptionAfterOpening(session), expected) << "stored \"" << text << "\"";
        EXPECT_TRUE(session.frontEnd.Alerts().empty());
    }
}

TEST(GrooveDialogPrefs, TheOptionIsReadOnlyAtTheFirstOpening)
{
    DialogHost session(Score(kPianoAndDrums), PlugIn::Linked);
    WritePrefs(session, std::string("0\0", 2));
    EXPECT_EQ(OptionAfterOpening(session), 0u);
    toolbox::CloseAllResFiles();
    WritePrefs(session, std::string("1\0", 2));
    support::OpenBundleResources();
    EXPECT_EQ(OptionAfterOpening(session), 0u);
}

TEST(GrooveDialogPrefs, ABrokenPreferencesFileIsIgnoredSilently)
{
    DialogHost session(Score(kPianoAndDrums), PlugIn::Linked);
    std::filesystem::create_directories(std::filesystem::path(PrefsPath(session)).parent_path());
    WriteFile(PrefsPath(session), "resource 'VRNX' 20000 {\n    text = \"0\n");
    EXPECT_EQ(OptionAfterOpening(session), 1u);
    const EREGION selection = Measures(1, 4, 2);
    session.Fill({DialogAction::PressItem(1)}, &selection);
    EXPECT_EQ(session.AlertIds(), (std::vector<int32_t>{0x4E210009})) << "no message about the file";
    EXPECT_EQ(ReadFile(PrefsPath(session)), "resource 'VRNX' 20000 {\n    text = \"0\n") << "left as it was";
}

TEST(Prefs, GetSettingsCopiesWhatFitsAndZeroFillsTheRest)
{
    TempFolder base;   // the preferences folder does not exist yet: the first write makes it
    ScopedEnv env("XDG_CONFIG_HOME", base.Path() + "/not/yet");
    char buffer[8];
    EXPECT_EQ(GetSettings(5, buffer, sizeof(buffer), "unit Prefs"), 0) << "no file";

    const std::string longText(150, 'x');
    ASSERT_EQ(PutSettings(5, longText.c_str(), 150, "unit", "unit Prefs"), 0);
    EXPECT_TRUE(std::filesystem::is_regular_file(base.Path() + "/not/yet/ui_tests/unit Prefs"));
    char big[100];
    std::memset(big, '?', sizeof(big));
    EXPECT_EQ(GetSettings(5, big, sizeof(big), "unit Prefs"), 100);
    EXPECT_EQ(std::string(big, sizeof(big)), std::string(100, 'x'));

    ASSERT_EQ(PutSettings(5, "ab", 3, "unit", "unit Prefs"), 0);   // an existing resource is changed
    std::memset(buffer, '?', sizeof(buffer));
    EXPECT_EQ(GetSettings(5, buffer, sizeof(buffer), "unit Prefs"), 3);
    EXPECT_EQ(std::string(buffer, sizeof(buffer)), std::string("ab\0\0\0\0\0\0", 8));
    EXPECT_EQ(GetSettings(6, buffer, sizeof(buffer), "unit Prefs"), 0) << "no such resource";

    // The file stays open in the chain, and the current file is put back each time.
    const toolbox::ResFileRef current = toolbox::CurResFile();
    GetSettings(5, buffer, sizeof(buffer), "unit Prefs");
    EXPECT_EQ(toolbox::CurResFile(), current);
    toolbox::CloseAllResFiles();
}
