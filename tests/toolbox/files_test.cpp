// Files, folders, well-known folders and symbol lookup, on a real file system.
#include "tests/support/test_support.h"
#include "toolbox/files.h"
#include "toolbox/folders.h"
#include "toolbox/symbols.h"

#include <sys/stat.h>
#include <unistd.h>

using namespace toolbox;
using support::ScopedEnv;
using support::TempFolder;

TEST(Files, FolderItemsComeInByteOrderOfTheirNames)
{
    TempFolder folder;
    for (const char* name : {"b.mid", "B.MID", "\xC3\xA4.mid", "a.mid", "Z"}) support::WriteFile(folder / name, "x");
    ASSERT_EQ(mkdir((folder / "sub").c_str(), 0755), 0);

    std::vector<std::string> names;
    std::vector<bool> folders;
    for (int index = 1; const auto item = FolderItemAt(folder.Path(), index); ++index) {
        names.push_back(item->name);
        folders.push_back(item->isFolder);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"B.MID", "Z", "a.mid", "b.mid", "sub", "\xC3\xA4.mid"}));
    EXPECT_EQ(folders, (std::vector<bool>{false, false, false, false, true, false}));
    EXPECT_EQ(FolderItemAt(folder.Path(), 0), std::nullopt);
    EXPECT_EQ(FolderItemAt(folder / "missing", 1), std::nullopt);
}

TEST(Files, WholeFilesAndTheirErrors)
{
    TempFolder folder;
    FileSpec spec;
    ASSERT_EQ(MakeFileSpec(folder.Path(), "data.bin", spec), kNoErr);
    EXPECT_FALSE(Exists(spec));
    std::vector<uint8_t> bytes;
    EXPECT_EQ(ReadWholeFile(spec, bytes), kFileNotFound);
    EXPECT_EQ(ReadWholeFile(FileSpec{folder / "gone", "data.bin"}, bytes), kDirNotFound);
    EXPECT_EQ(WriteWholeFile(FileSpec{folder / "gone", "data.bin"}, "x", 1), kDirNotFound);

    const std::vector<uint8_t> written = {0, 1, 2, 0xFF, 0, '\n'};
    ASSERT_EQ(WriteWholeFile(spec, written.data(), written.size()), kNoErr);
    ASSERT_EQ(ReadWholeFile(spec, bytes), kNoErr);
    EXPECT_EQ(bytes, written);

    // Replacing a file keeps its permissions and leaves nothing else in the folder.
    ASSERT_EQ(chmod(spec.Path().c_str(), 0640), 0);
    ASSERT_EQ(WriteWholeFile(spec, nullptr, 0), kNoErr);
    struct stat info {};
    ASSERT_EQ(stat(spec.Path().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0640u);
    EXPECT_EQ(info.st_size, 0);
    EXPECT_EQ(FolderItemAt(folder.Path(), 2), std::nullopt);

    // A scratch file is written in place: a shorter one leaves nothing of the longer behind.
    ASSERT_EQ(WriteScratchFile(spec, written.data(), written.size()), kNoErr);
    ASSERT_EQ(WriteScratchFile(spec, "ab", 2), kNoErr);
    ASSERT_EQ(ReadWholeFile(spec, bytes), kNoErr);
    EXPECT_EQ(bytes, (std::vector<uint8_t>{'a', 'b'}));
    EXPECT_EQ(WriteScratchFile(FileSpec{folder / "gone", "data.bin"}, "x", 1), kDirNotFound);
    EXPECT_EQ(WriteScratchFile(FileSpec{folder.Path(), "a/b"}, "x", 1), kBadName);

    EXPECT_EQ(CreateFile(spec, 0, 0), kDuplicateFile);
    EXPECT_EQ(DeleteFile(spec), kNoErr);
    EXPECT_EQ(DeleteFile(spec), kFileNotFound);
    EXPECT_EQ(CreateFile(spec, 0x4D4F5550, 0x4D696469), kNoErr);
    EXPECT_TRUE(Exists(spec));

    if (geteuid() != 0) {   // root reads everything
        ASSERT_EQ(chmod(spec.Path().c_str(), 0), 0);
        EXPECT_EQ(ReadWholeFile(spec, bytes), kPermissionErr);
    }
}

TEST(Files, SpecificationsAndFolders)
{
    TempFolder folder;
    FileSpec spec;
    EXPECT_EQ(MakeFileSpec(folder.Path(), "a/b", spec), kBadName);
    EXPECT_EQ(MakeFileSpec(folder.Path(), "..", spec), kBadName);
    EXPECT_EQ(MakeFileSpec(folder / "missing", "Prefs", spec), kDirNotFound);
    EXPECT_EQ(spec.Path(), folder / "missing/Prefs");
    EXPECT_EQ(FileSpecFromPath("/name").Path(), "/name");
    EXPECT_EQ(FileSpecFromPath("name").folder, "");
    EXPECT_EQ((FileSpec{"dir/", "x"}.Path()), "dir/x");

    support::WriteFile(folder / "file", "");
    for (const auto& [path, made] : std::vector<std::pair<std::string, bool>>{{folder / "one/two/three", true},
                                                                              {folder / "one/two", true},
                                                                              {folder / "file", false},
                                                                              {folder / "file/below", false},
                                                                              {"", false}})
        EXPECT_EQ(EnsureFolder(path), made) << path;
    EXPECT_TRUE(IsFolder(folder / "one/two/three"));
}

// Preferences go into the application's own folder under the XDG configuration folder.
TEST(Folders, PreferencesAndDataFoldersFollowTheXdgVariables)
{
    TempFolder home;
    ScopedEnv homeVariable("HOME", home.Path());
    {
        ScopedEnv config("XDG_CONFIG_HOME", home / "config");
        ScopedEnv data("XDG_DATA_HOME", home / "data");
        EXPECT_EQ(PreferencesFolder(false), "") << "not there and not to be created";
        EXPECT_EQ(PreferencesFolder(true), home / "config/toolbox_tests");
        EXPECT_TRUE(IsFolder(home / "config/toolbox_tests"));
        EXPECT_EQ(PreferencesFolder(false), home / "config/toolbox_tests");
        EXPECT_EQ(UserDataFolder(true), home / "data");
    }
    {
        ScopedEnv config("XDG_CONFIG_HOME", std::nullopt);
        ScopedEnv data("XDG_DATA_HOME", "relative/paths/do/not/count");
        SetApplicationName("stavio");
        EXPECT_EQ(ApplicationName(), "stavio");
        EXPECT_EQ(PreferencesFolder(true), home / ".config/stavio");
        EXPECT_EQ(UserDataFolder(true), home / ".local/share");
        SetApplicationName("");
    }
    ScopedEnv config("XDG_CONFIG_HOME", "");
    EXPECT_EQ(ApplicationName(), "toolbox_tests");
    EXPECT_EQ(PreferencesFolder(false), "") << "~/.config/toolbox_tests was not made";
}

TEST(Folders, ApplicationFileCanBeNamedByTheHost)
{
    EXPECT_TRUE(IsFolder(ApplicationFolder()));
    EXPECT_EQ(ApplicationFolder() + "/toolbox_tests", ApplicationFile());
    SetApplicationFile("/opt/stavio/bin/tamberlyne");
    EXPECT_EQ(ApplicationFile(), "/opt/stavio/bin/tamberlyne");
    EXPECT_EQ(ApplicationFolder(), "/opt/stavio/bin");
    SetApplicationFile("");
    EXPECT_EQ(ApplicationFolder() + "/toolbox_tests", ApplicationFile());
}

TEST(Symbols, FunctionsAreFoundInTheGlobalScope)
{
    EXPECT_EQ(FunctionPointerForName("getpid"), reinterpret_cast<void*>(&getpid));
    EXPECT_EQ(FunctionPointerForName("SX_NoSuchFunction"), nullptr);
    EXPECT_EQ(FunctionPointerForName(nullptr), nullptr);
}
