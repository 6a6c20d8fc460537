// Typed record shortcuts, the record classes and the string resources, against the reference
// host's document and the bundle's own resource file.
#include "sdk/tags.h"
#include "tamberlyne/host/staff_record.h"
#include "tamberlyne/host/string_resources.h"
#include "tamberlyne/host/typed_records.h"
#include "tamberlyne/platform/pstring.h"
#include "tests/plugin/plugin_test_support.h"
#include "toolbox/resources.h"

#include <algorithm>
#include <cstring>

using plugin_test::HostSession;
using support::Ints;

namespace {

stavio::Document ThreeStaves()
{
    return stavio::DocumentBuilder().Measures(2).Staff("^font(Times)Drum Set", "Dr.").Staff(" ").Staff("").Build();
}

std::string PlainTextOf(const std::string& text)
{
    CTextObject object;
    object.SetText(text.c_str());
    return object.GetPlainText();
}

}   // namespace

TEST(PluginTypedRecords, InstrumentListAndOtherRecords)
{
    HostSession session(stavio::HostPose::Newer, ThreeStaves());
    EDTInstrumentUsed second{};
    ASSERT_TRUE(sx_loadIU(0, 1, second));
    second.separ = -777;
    ASSERT_TRUE(sx_saveIU(0, 1, second));
    ASSERT_TRUE(sx_deleteIU(0, 0));   // later incidences move down
    EDTInstrumentUsed moved{};
    ASSERT_TRUE(sx_loadIU(0, 0, moved));
    EXPECT_EQ(Ints(moved.inst, moved.separ), Ints(second.inst, -777));
    EXPECT_FALSE(sx_loadIU(0, 2, moved));

    const EXTAG tag = MakeTag('o', 't', 'Z', 'Z');
    EDTGeneric record{{1, 2, 3, 4, 5, 6}};
    int cmper = 7;
    int inci = 0;
    ASSERT_TRUE(sx_createother(tag, cmper, inci, &record, sizeof(record), kPluginApiVersion));
    cmper = 65535;
    inci = 12;   // a new number starts at incidence 0
    ASSERT_TRUE(sx_createother(tag, cmper, inci, &record, sizeof(record), kPluginApiVersion));
    EXPECT_EQ(Ints(cmper, inci), Ints(8, 0));
    inci = -1;   // append an incidence
    ASSERT_TRUE(sx_createother(tag, cmper, inci, &record, sizeof(record), kPluginApiVersion));
    EXPECT_EQ(inci, 1);
    ASSERT_TRUE(sx_deleteother(tag, 8, 0));
    EDTGeneric loaded{};
    ASSERT_TRUE(sx_loadother(tag, 8, 0, &loaded, sizeof(loaded), kPluginApiVersion));
    EXPECT_EQ(loaded.words[5], 6);
    EXPECT_FALSE(sx_loadother(tag, 8, 1, &loaded, sizeof(loaded), kPluginApiVersion));

    std::memset(&loaded, 0xAA, sizeof(loaded));
    EXPECT_FALSE(sx_loadglobal(MakeTag('z', 'z', 'z', 'z'), 12, &loaded, sizeof(loaded)));
    EXPECT_EQ(loaded.words[5], 0);   // zeroed before the load

    int16_t frames[stavio::kMaxLayers] = {3, 0, 0, 0};
    ASSERT_TRUE(session.document().SetFrameNumbers(2, 1, frames));
    int16_t loadedFrames[stavio::kMaxLayers] = {};
    EDTGfhold2004 hold{};
    hold.frame = loadedFrames;
    ASSERT_TRUE(sx_loaddetail(kTagGfhold, 2, 1, &hold, kGfhold2004Size, 0, kPluginApiVersion));
    EXPECT_EQ(loadedFrames[0], 3);
    EXPECT_FALSE(sx_loaddetail(kTagGfhold, 2, 9, &hold, kGfhold2004Size, 0, kPluginApiVersion));
}

TEST(PluginRecordClasses, StaffNamesTextBlocksAndTheFallback)
{
    HostSession session(stavio::HostPose::Newer, ThreeStaves());
    CStaffSpec staff;
    CTextObject name;
    ASSERT_EQ(staff.Load(1), 1);
    EXPECT_EQ(staff.GetFullName(&name), 0);
    EXPECT_EQ(name.GetPlainText(), "Drum Set");
    EXPECT_EQ(staff.GetAbbrivName(&name), 0);
    EXPECT_STREQ(name.GetText(), "Dr.");
    // Staff 2's name is a single blank, staff 3 has no name at all.
    for (const auto& [inst, full] : {std::pair{2, true}, {3, false}}) {
        ASSERT_EQ(staff.Load(inst), 1);
        EXPECT_EQ(full ? staff.GetFullName(&name) : staff.GetAbbrivName(&name), 1);
        EXPECT_EQ(std::string(name.GetText()), "[Staff " + std::to_string(inst) + "]");
    }
    EXPECT_EQ(staff.Load(9), 0);

    CTextObject text;   // the text blocks in order: two names of staff 1, one of staff 2
    ASSERT_EQ(text.LoadTextObject(1), 1);
    std::vector<std::string> texts{text.GetText()};
    while (text.Next() == 1) texts.push_back(text.GetText());
    EXPECT_EQ(texts, (std::vector<std::string>{"^font(Times)Drum Set", "Dr.", " "}));
    EXPECT_EQ(text.LoadTextObject(99), 0);
    EXPECT_STREQ(text.GetText(), "");
}

TEST(PluginRecordClasses, PlainTextDropsFormattingCommands)
{
    EXPECT_EQ(PlainTextOf("^font(Times)Kick"), "Kick");
    EXPECT_EQ(PlainTextOf("a^b(c)d^e(f)g"), "adg");
    EXPECT_EQ(PlainTextOf("^size(12)^nfx(0)"), "");
    // A caret that opens no complete command ends the scan instead of looping.
    EXPECT_EQ(PlainTextOf("a^b(c)x^y"), "ax^y");
    EXPECT_EQ(PlainTextOf("x^(y"), "x^(y");
    EXPECT_EQ(PlainTextOf(std::string(400, 'k')).size(), 271u);   // the first 271 characters only
}

TEST(PluginStringResources, EntriesOfThePluginsFileCutToTheCallersLength)
{
    HostSession session;
    const toolbox::Result<toolbox::ResourceFile> file = toolbox::LoadResourceFile(plugin_test::BundleResourcePath());
    ASSERT_TRUE(file) << file.Message();
    const std::string item = file->Find(toolbox::kStringListType, 20000)->strings.at(0);

    toolbox::UseResFile(-1);   // whatever the host made current, the plug-in's file is used
    char text[64];
    EXPECT_EQ(PlugIn_GetStringResource(0x4E200001, text, sizeof(text)), text);
    EXPECT_EQ(std::string(text), item.substr(0, 63));
    EXPECT_EQ(toolbox::CurResFile(), -1);
    EXPECT_STREQ(PlugIn_GetStringResource(0x4E200001, text, 5), item.substr(0, 4).c_str());
    EXPECT_STREQ(PlugIn_GetStringResource(0x4E200001, text, 1), "");
    EXPECT_EQ(PlugIn_GetStringResource(0x4E200001, text, 0), nullptr);
    EXPECT_STREQ(PlugIn_GetStringResource(0x4E20FFFF, text, sizeof(text)), "");
    unsigned char pstring[256];
    HardGetPString(0x4E200001, pstring);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(pstring + 1), pstring[0]), item);

    // A length byte says at most 255: longer texts are cut there, and nothing lands past the
    // 256 bytes of the string.
    for (const size_t length : {size_t{255}, size_t{256}, size_t{300}}) {
        unsigned char guarded[300];
        std::memset(guarded, 0xAA, sizeof(guarded));
        c2p(guarded, std::string(length, 'x').c_str());
        EXPECT_EQ(PstrToString(guarded), std::string(std::min<size_t>(length, 255), 'x'));
        EXPECT_EQ(guarded[256], 0xAA) << length;
    }
}
