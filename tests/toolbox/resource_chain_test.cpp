// The resource chain over real files: lookup order, shadowing, reopening, writing, and the
// plug-in's own bundle file.
#include "tests/support/test_support.h"
#include "toolbox/resources.h"

#include <array>
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace toolbox;
using support::Ints;
using support::ReadFile;

namespace {

constexpr ResType kVrnx = 0x56524E58;   // 'VRNX'

std::vector<uint8_t> Bytes(const std::string& text)
{
    return {text.begin(), text.end()};
}

class ResourceChain : public ::testing::Test {
protected:
    void TearDown() override { CloseAllResFiles(); }

    FileSpec Spec(const std::string& name) const { return FileSpec{folder_.Path(), name}; }
    FileSpec WriteFile(const std::string& name, const std::string& text) const
    {
        support::WriteFile(folder_ / name, text);
        return Spec(name);
    }

    support::TempFolder folder_;
};

}   // namespace

TEST_F(ResourceChain, LookupsWalkFromTheCurrentFileToTheOldest)
{
    const FileSpec older = WriteFile("older.rsrc", "resource 'STR#' 1 {\n 1 = \"old one\"\n 2 = \"old two\"\n}\n"
                                                   "resource 'STR ' 7 {\n text = \"only in the older file\"\n}\n");
    const FileSpec newer = WriteFile("newer.rsrc", "resource 'STR#' 1 {\n 1 = \"new one\"\n}\n"
                                                   "resource 'STR ' 8 {\n text = \"only in the newer file\"\n}\n");
    const ResFileRef olderRef = OpenResFile(older, true);
    const ResFileRef newerRef = OpenResFile(newer, true);
    ASSERT_TRUE(olderRef > 0 && newerRef > 0 && olderRef != newerRef);
    EXPECT_EQ(CurResFile(), newerRef);

    // The newer list shadows the older one as a whole: its missing entry 2 is not taken from there.
    EXPECT_EQ(GetIndString(1, 1), "new one");
    EXPECT_EQ(GetIndString(1, 2), std::nullopt);
    EXPECT_EQ(ResError(), kResourceNotFound);
    EXPECT_EQ(GetIndString(1, 0), std::nullopt);
    EXPECT_EQ(GetString(7), "only in the older file");
    EXPECT_EQ(ResError(), kNoErr);
    EXPECT_EQ(GetString(8), "only in the newer file");

    // From the older file the newer one is out of sight.
    UseResFile(olderRef);
    EXPECT_EQ(ResError(), kNoErr);
    EXPECT_EQ(GetIndString(1, 2), "old two");
    EXPECT_EQ(GetString(8), std::nullopt);
    EXPECT_EQ(ResError(), kResourceNotFound);
    EXPECT_EQ(GetResource(kStringListType, 99), nullptr);

    UseResFile(1234);
    EXPECT_EQ(ResError(), kResFileNotOpen);
    EXPECT_EQ(CurResFile(), olderRef);
}

TEST_F(ResourceChain, ReopeningAndClosing)
{
    const ResFileRef refA = OpenResFile(WriteFile("a.rsrc", ""), true);
    const ResFileRef refB = OpenResFile(WriteFile("b.rsrc", ""), true);
    const ResFileRef refC = OpenResFile(WriteFile("c.rsrc", ""), true);
    ASSERT_GT(refA, 0);

    // The same file by another path is the same open file; it becomes current, its place stays.
    EXPECT_EQ(OpenResFile(FileSpec{folder_.Path() + "/./", "a.rsrc"}, true), refA);
    EXPECT_EQ(CurResFile(), refA);

    // Closing the current file makes the one opened before it current; the oldest hands over to
    // the newest.
    UseResFile(refC);
    CloseResFile(refC);
    EXPECT_EQ(CurResFile(), refB);
    CloseResFile(refA);
    EXPECT_EQ(CurResFile(), refB);
    UseResFile(refA);
    EXPECT_EQ(Ints(ResError(), CurResFile()), Ints(kResFileNotOpen, refB));

    // "No file current" can be put back as it was found; nothing is found then.
    UseResFile(-1);
    EXPECT_EQ(ResError(), kNoErr);
    EXPECT_EQ(GetResource(kStringListType, 1), nullptr);
    UseResFile(refB);
    CloseResFile(refB);
    EXPECT_EQ(CurResFile(), -1);
}

// Each failure names the file and what is wrong; the classic call answers the same number.
TEST_F(ResourceChain, OpenFailuresNameTheFileAndWhatIsWrong)
{
    const FileSpec broken = WriteFile("broken.rsrc", "resource 'STR#' 1 {\n    1 = oops\n}\n");
    const FileSpec missing = Spec("missing.rsrc");
    const FileSpec noFolder{folder_ / "no-folder", "x.rsrc"};
    struct Case {
        FileSpec spec;
        OSErr code;
        std::string message;
    };
    for (const Case& expected :
         {Case{missing, kFileNotFound, missing.Path() + ": file not found"},
          Case{noFolder, kDirNotFound, noFolder.Path() + ": folder not found"},
          Case{broken, kBadResourceFile, broken.Path() + ":2: expected a quoted string, found 'oops'"}}) {
        const Result<ResFileRef> opened = OpenResourceFile(expected.spec, true);
        EXPECT_FALSE(opened);
        EXPECT_EQ(opened.Message(), expected.message);
        EXPECT_EQ(support::Ints(opened.Code(), OpenResFile(expected.spec, true), ResError()),
                  support::Ints(expected.code, -1, expected.code));
    }
    EXPECT_EQ(CurResFile(), -1);
}

TEST_F(ResourceChain, SettingsAreAddedChangedAndWritten)
{
    const FileSpec prefs = Spec("tamberlyne Prefs");
    EXPECT_EQ(AddResource(Resource{}), kResFileNotOpen);
    ASSERT_EQ(CreateResFile(prefs), kNoErr);
    EXPECT_EQ(CreateResFile(prefs), kDuplicateFile);
    const ResFileRef ref = OpenResFile(prefs, false);
    ASSERT_GT(ref, 0);

    Resource setting;
    setting.type = kVrnx;
    setting.id = 20000;
    setting.name = "tamberlyne";
    setting.data = Bytes(std::string("1\0", 2));
    EXPECT_EQ(AddResource(setting), kNoErr);
    EXPECT_EQ(AddResource(setting), kAddResFailed);
    EXPECT_EQ(ChangeResource(kVrnx, 20001, {}), kResourceNotFound);
    EXPECT_EQ(ChangeResource(kVrnx, 20000, Bytes(std::string("0\0", 2))), kNoErr);
    EXPECT_EQ(WriteResFile(ref), kNoErr);
    EXPECT_EQ(WriteResFile(ref + 100), kResFileNotOpen);
    EXPECT_NE(ReadFile(prefs.Path()).find("resource 'VRNX' 20000 \"tamberlyne\" {\n    text = \"0\\0\"\n}"),
              std::string::npos);
    // Saved again unchanged, the file is left as it is (a write puts a new file in its place).
    const auto inode = [&prefs] {
        struct stat info {};
        return stat(prefs.Path().c_str(), &info) == 0 ? info.st_ino : 0;
    };
    const auto saved = inode();
    EXPECT_EQ(WriteResFile(ref), kNoErr);
    EXPECT_EQ(inode(), saved);
    EXPECT_EQ(ChangeResource(kVrnx, 20000, Bytes(std::string("0\0", 2))), kNoErr);
    EXPECT_EQ(WriteResFile(ref), kNoErr);
    EXPECT_EQ(inode(), saved);

    CloseAllResFiles();
    ASSERT_GT(OpenResFile(prefs, true), 0);
    const Resource* reread = GetResource(kVrnx, 20000);
    ASSERT_NE(reread, nullptr);
    EXPECT_EQ(reread->name, "tamberlyne");
    EXPECT_EQ(reread->data, Bytes(std::string("0\0", 2)));

    // A read-only file changes in memory only.
    EXPECT_EQ(ChangeResource(kVrnx, 20000, Bytes("7")), kNoErr);
    EXPECT_EQ(WriteResFile(CurResFile()), kPermissionErr);
    EXPECT_NE(ReadFile(prefs.Path()).find("\"0\\0\""), std::string::npos);
}

TEST_F(ResourceChain, AFailedWriteLeavesTheOldFileIntact)
{
    const std::string original = "resource 'STR ' 1 {\n    text = \"old\"\n}\n";
    const FileSpec spec = WriteFile("keep.rsrc", original);
    const ResFileRef ref = OpenResFile(spec, false);
    ASSERT_GT(ref, 0);
    Resource big;
    big.type = kStringType;
    big.id = 2;
    big.data.assign(64 * 1024, 'x');
    ASSERT_EQ(AddResource(big), kNoErr);

    // The file system refuses to grow files beyond a few bytes: the write fails half way.
    {
        rlimit old{};
        getrlimit(RLIMIT_FSIZE, &old);
        rlimit small = old;
        small.rlim_cur = 1024;
        const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
        const OSErr err = WriteResFile(ref);
        setrlimit(RLIMIT_FSIZE, &old);
        std::signal(SIGXFSZ, oldHandler);
        EXPECT_EQ(err, kIOErr);
    }
    EXPECT_EQ(ReadFile(spec.Path()), original);
    EXPECT_EQ(FolderItemAt(folder_.Path(), 2), std::nullopt) << "a temporary file was left behind";

    // A folder that may not be written to (root may write anywhere, so this part needs a user).
    if (geteuid() != 0) {
        ASSERT_EQ(chmod(folder_.Path().c_str(), 0555), 0);
        EXPECT_EQ(WriteResFile(ref), kPermissionErr);
        chmod(folder_.Path().c_str(), 0755);
        EXPECT_EQ(ReadFile(spec.Path()), original);
    }
}

TEST_F(ResourceChain, TheBundleFileHoldsEveryTextThePlugInAsksFor)
{
    const Result<ResFileRef> ref =
        OpenResourceFile(FileSpec{support::SourceDir() + "/tamberlyne/resources", "Tamberlyne.rsrc"}, true);
    ASSERT_TRUE(ref) << ref.Message();
    // The plug-in cuts menu texts after 63 bytes and alert texts after 255.
    for (const auto& [list, entries, limit] : {std::array<int16_t, 3>{20000, 3, 64}, {20001, 12, 256}})
        for (int16_t entry = 1; entry <= entries; ++entry) {
            const auto text = GetIndString(list, entry);
            ASSERT_TRUE(text.has_value()) << list << " entry " << entry;
            EXPECT_TRUE(!text->empty() && text->size() < size_t(limit)) << *text;
        }
    EXPECT_EQ(GetIndString(20001, 13), std::nullopt);
    EXPECT_NE(GetIndString(20001, 12)->find("\"Dorvane\""), std::string::npos);
    EXPECT_NE(GetIndString(20001, 8)->find("\"Tamberlyne\""), std::string::npos);
}
