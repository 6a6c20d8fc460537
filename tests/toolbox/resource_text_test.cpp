// The text form of resource files: what is printed reads back byte for byte, and files that do
// not follow the format are refused with the file and the line.
#include "tests/support/test_support.h"
#include "toolbox/resources.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

using namespace toolbox;

namespace {

constexpr ResType kVrnx = 0x56524E58;   // 'VRNX'
constexpr ResType kData = 0x44415441;   // 'DATA'

std::vector<uint8_t> Bytes(const std::string& text)
{
    return {text.begin(), text.end()};
}

Resource MakeList(int16_t id, std::vector<std::string> entries, std::string name = "")
{
    Resource resource;
    resource.type = kStringListType;
    resource.id = id;
    resource.name = std::move(name);
    resource.strings = std::move(entries);
    return resource;
}

Resource MakeData(ResType type, int16_t id, const std::string& bytes, std::string name = "")
{
    Resource resource;
    resource.type = type;
    resource.id = id;
    resource.name = std::move(name);
    resource.data = Bytes(bytes);
    return resource;
}

void ExpectSameResources(const ResourceFile& expected, const ResourceFile& actual)
{
    ASSERT_EQ(expected.All().size(), actual.All().size());
    for (size_t i = 0; i < expected.All().size(); ++i) {
        const Resource& a = expected.All()[i];
        const Resource& b = actual.All()[i];
        SCOPED_TRACE("resource " + std::to_string(i));
        EXPECT_EQ(a.type, b.type);
        EXPECT_EQ(a.id, b.id);
        EXPECT_EQ(a.name, b.name);
        EXPECT_EQ(a.data, b.data);
        EXPECT_EQ(a.strings, b.strings);
    }
}

// tests/toolbox/files/hand_written.rsrc: a byte-order mark, CRLF and LF lines, tabs, comments,
// escapes, spacing of all kinds in a dialog layout, and no newline at the end.
ResourceFile HandWrittenFile()
{
    const std::string path = support::SourceDir() + "/tests/toolbox/files/hand_written.rsrc";
    ResourceFile file;
    const Status parsed = file.Parse(support::ReadFile(path), path);
    EXPECT_TRUE(parsed) << parsed.Message();
    return file;
}

std::string ParseError(const std::string& text)
{
    ResourceFile file;
    const Status parsed = file.Parse(text, "bad.rsrc");
    EXPECT_EQ(parsed.Code(), kBadResourceFile) << text;
    return parsed.Message();
}

}   // namespace

TEST(ResourceText, AwkwardResourcesSurviveAPrintAndParse)
{
    std::string allBytes;
    for (int b = 0; b < 256; ++b) allBytes += static_cast<char>(b);
    std::string longText;   // long enough to be split over several lines, with characters at the cuts
    for (int i = 0; i < 40; ++i) longText += "Trommel \xC3\xA4\xE2\x82\xAC\xF0\x9F\xA5\x81 ";

    ResourceFile original;
    ASSERT_TRUE(original.Put(MakeList(20001,
                                      {"say \"hi\" \\ back", "two\nlines\tand tab", std::string("zero\0byte", 9), "",
                                       "Caf\xC3\xA9 \xE2\x80\x93 \xE3\x83\x89\xE3\x83\xA9\xE3\x83\xA0",
                                       "stray \xFF\xC3 bytes", "# not a comment", "\x01\x7F\r"},
                                      "Alerts \"quoted\" # too")));
    ASSERT_TRUE(original.Put(MakeList(-32768, {})));
    ASSERT_TRUE(original.Put(MakeData(kStringType, 32767, "single string")));
    ASSERT_TRUE(original.Put(MakeData(kVrnx, 20000, std::string("1\0", 2), "tamberlyne")));
    ASSERT_TRUE(original.Put(MakeData(kData, 0, allBytes)));
    ASSERT_TRUE(original.Put(MakeData(kData, 1, "")));
    ASSERT_TRUE(original.Put(MakeData(kData, 2, "line one\nline two\n\nlast without end")));
    ASSERT_TRUE(original.Put(MakeData(kData, 3, longText)));
    ASSERT_TRUE(original.Put(MakeData(0x61275C01, 4, "odd type code")));   // a ' \ and a control byte in the type
    Resource dialog;
    dialog.type = kDialogLayoutType;
    dialog.id = 20129;
    dialog.strings = {"title = \"Grooves\"", "size = 400 300", "item 1 = button 320 260 390 280 \"OK\""};
    ASSERT_TRUE(original.Put(dialog));

    const std::string printed = original.Print();
    ResourceFile reread;
    const Status parsed = reread.Parse(printed, "printed");
    ASSERT_TRUE(parsed) << parsed.Message() << "\n" << printed;
    ExpectSameResources(original, reread);
    EXPECT_EQ(printed, reread.Print());

    // Text stays readable: one text line per line of the text, binary data goes to hex.
    EXPECT_NE(printed.find("    text = \"line one\\n\"\n    text = \"line two\\n\"\n    text = \"\\n\"\n"),
              std::string::npos);
    EXPECT_NE(printed.find("    text = \"1\\0\"\n"), std::string::npos);
    EXPECT_NE(printed.find("    hex = 00 01 02 03"), std::string::npos);
    EXPECT_NE(printed.find("Caf\xC3\xA9"), std::string::npos);
}

TEST(ResourceText, ReadsAHandWrittenFile)
{
    const ResourceFile file = HandWrittenFile();
    ASSERT_EQ(file.All().size(), 4u);

    const Resource* menu = file.Find(kStringListType, 20000);
    const Resource* setting = file.Find(kVrnx, 20000);
    const Resource* empty = file.Find(kStringType, -5);
    ASSERT_TRUE(menu != nullptr && setting != nullptr && empty != nullptr);
    EXPECT_EQ(menu->name, "Menu");
    EXPECT_EQ(menu->strings, (std::vector<std::string>{"Fill A # kept", ""}));
    EXPECT_EQ(setting->data, (std::vector<uint8_t>{'1', 0, 0x0A, 0xFF, 0x7F, 0, '1'}));
    EXPECT_TRUE(empty->data.empty() && empty->name.empty());
}

TEST(ResourceText, MalformedFilesNameTheFileAndTheLine)
{
    // tests/toolbox/files/malformed.txt: a line "=== " with the refusal, then the file's text.
    std::vector<std::pair<std::string, std::string>> cases;   // (refusal, text)
    std::istringstream lines(support::ReadFile(support::SourceDir() + "/tests/toolbox/files/malformed.txt"));
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("=== ", 0) == 0) {
            cases.emplace_back(line.substr(4), "");
        } else if (!cases.empty()) {
            cases.back().second += line + "\n";
        }
    }
    ASSERT_EQ(cases.size(), 23u);
    for (const auto& [expected, text] : cases) EXPECT_EQ(ParseError(text), expected);
}

TEST(ResourceText, FailuresNameTheFileAndKeepWhatWasThere)
{
    ResourceFile file;
    ASSERT_TRUE(file.Parse("resource 'STR ' 1 {\n    text = \"kept\"\n}\n", "good"));
    EXPECT_FALSE(file.Parse("resource 'STR ' 2 {\n", "bad"));
    ASSERT_EQ(file.All().size(), 1u);
    EXPECT_EQ(file.All()[0].data, Bytes("kept"));

    const Status saved = SaveResourceFile("/nonexistent-folder/saved.rsrc", file);
    EXPECT_EQ(saved.Code(), kDirNotFound);
    EXPECT_EQ(saved.Message(), "/nonexistent-folder/saved.rsrc: folder not found");
    const Result<ResourceFile> loaded = LoadResourceFile("/nonexistent-folder/saved.rsrc");
    EXPECT_EQ(loaded.Message(), saved.Message());
}

TEST(ResourceText, DialogLayoutLinesAreNormalisedAndRead)
{
    const ResourceFile file = HandWrittenFile();
    const Resource* resource = file.Find(kDialogLayoutType, 20129);
    ASSERT_NE(resource, nullptr);
    EXPECT_EQ(resource->strings,
              (std::vector<std::string>{"title = \"Fill with Drum Groove\"", "size = 420 300",
                                        "item 1 = button 330 260 400 280 \"OK\"", "item 4 = user 20 40 220 240",
                                        "item 8 = popup 240 64 400 84 \"Staff:\""}));

    const Result<DialogLayout> read = ReadDialogLayout(*resource);
    ASSERT_TRUE(read) << read.Message();
    const DialogLayout& layout = *read;
    ASSERT_EQ(layout.items.size(), 3u);
    const DialogItemSpec& user = layout.items[1];
    const DialogItemSpec& popup = layout.items[2];
    EXPECT_EQ(layout.title + "|" + user.label + "|" + popup.label, "Fill with Drum Groove||Staff:");
    EXPECT_EQ(support::Ints(layout.width, layout.height, user.number, user.kind, popup.kind, popup.rect.left,
                            popup.rect.bottom),
              support::Ints(420, 300, 4, DialogItemKind::kUserItem, DialogItemKind::kPopup, 240, 84));

    Resource broken = *resource;
    broken.strings.push_back("size = 1 1");
    EXPECT_EQ(ReadDialogLayout(broken).Message(), "line 6: the dialog has a size already");
    EXPECT_EQ(FindDialogItem(layout, DialogItemKind::kPopup, "Staff:"), &popup);
    EXPECT_EQ(FindDialogItem(layout, DialogItemKind::kUserItem), &user);
    EXPECT_EQ(FindDialogItem(layout, DialogItemKind::kPopup, "Style:"), nullptr);
}
