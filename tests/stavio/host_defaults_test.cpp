// What a new document holds, as a plug-in reads it: fonts, clef definitions, the text-expression
// font, percussion map 1 and every staff's channel.
#include "stavio/document/clefs.h"
#include "stavio/document/staff_playback.h"
#include "stavio/document_builder.h"
#include "stavio/host.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace stavio {
namespace {

constexpr EVERSION kV = kPluginApiVersion;

class StavioHostDefaults : public ::testing::Test {
protected:
    void Use(Document doc) { host_.SetDocument(std::move(doc)); }
    const StavioFuncs& T() const { return host_.FunctionTable(); }
    std::string FontName(int16_t number, int32_t capacity = 64) const
    {
        char name[64] = "junk";
        return T().SX_FontNumToName(number, name, capacity, kV) != 0 ? std::string(name) : "<" + std::string(name) + ">";
    }
    int16_t ChannelCodeOf(int inst) const
    {
        return ChannelCode(host_.document(), StaffChannelDefinition(host_.document(), inst)).value_or(-1);
    }

    Host host_;
};

TEST_F(StavioHostDefaults, FontNamesAndNumbersRoundTripAndUnknownNamesAreAdded)
{
    Use(Document());
    EXPECT_EQ(T().SX_FontNameToNum("Times New Roman", kV), 0);
    const int16_t dorvane = T().SX_FontNameToNum("Dorvane", kV);
    const int16_t percussion = T().SX_FontNameToNum("Dorvane Percussion", kV);
    EXPECT_NE(dorvane, percussion);
    EXPECT_EQ(FontName(dorvane), "Dorvane");
    EXPECT_EQ(FontName(percussion), "Dorvane Percussion");
    EXPECT_EQ(T().SX_FontNameToNum("dorvane", kV), dorvane) << "names compare without case";

    const int16_t added = T().SX_FontNameToNum("Engraver Text", kV);
    EXPECT_EQ(static_cast<size_t>(added), host_.document().Fonts().Size() - 1);
    EXPECT_EQ(T().SX_FontNameToNum("Engraver Text", kV), added) << "added once";
    EXPECT_EQ(FontName(added), "Engraver Text");

    EXPECT_EQ(FontName(percussion, 8), "Dorvane") << "cut to the capacity, terminator included";
    EXPECT_EQ(FontName(dorvane, 1), "");
    EXPECT_EQ(FontName(static_cast<int16_t>(added + 1)), "<>") << "unknown number: failure and an empty name";
    EXPECT_EQ(FontName(-1), "<>");
    char untouched = 'x';
    EXPECT_EQ(T().SX_FontNumToName(0, &untouched, 0, kV), 0);
    EXPECT_EQ(untouched, 'x');
    EXPECT_EQ(T().SX_FontNameToNum("", kV), -1);
    EXPECT_EQ(T().SX_FontNameToNum(nullptr, kV), -1);
    EXPECT_EQ(T().SX_FontNameToNum(std::string(300, 'a').c_str(), kV), -1);
}

TEST_F(StavioHostDefaults, ClefTwelveIsThePercussionClefInTheDorvaneFont)
{
    Use(Document());
    for (uint16_t clef = 0; clef < kDefaultClefCount; ++clef) {
        EDataID key{};
        key.words[0] = clef;
        EDTClefDef def{};
        int32_t size = sizeof(def);
        ASSERT_EQ(T().SX_LoadEData(kTagClefDef, &key, &def, &size, kV), 1) << clef;
        EXPECT_EQ(size, 18);
        EXPECT_NE(ClefMeaningOf(clef), nullptr);
        if (clef == kPercussionClef) {
            EXPECT_TRUE(def.flag & kClefUsesFont);
            EXPECT_EQ(FontName(def.font).substr(0, 7), "Dorvane");
            EXPECT_EQ(def.adjust, -10);
            EXPECT_EQ(def.clefchar, 139);
            EXPECT_STREQ(ClefMeaningOf(clef)->sign, "percussion");
        } else {
            EXPECT_FALSE(def.flag & kClefUsesFont) << clef;
        }
    }
    EXPECT_STREQ(ClefMeaningOf(0)->sign, "G");
    EXPECT_EQ(ClefMeaningOf(3)->line, 4);
    EXPECT_EQ(ClefMeaningOf(18), nullptr);

    EDataID pref{};
    pref.other = EOtherID{6, 0};
    EDTFontPref font{};
    int32_t size = sizeof(font);
    ASSERT_EQ(T().SX_LoadEData(kTagDefaultFontPref, &pref, &font, &size, kV), 1);
    EXPECT_EQ(FontName(static_cast<int16_t>(font.fontIDHigh << 8 | font.fontIDLow)), "Times New Roman");
    EXPECT_GT(font.sizeEfx, 0);
}

TEST_F(StavioHostDefaults, PercussionMapOneIsTheGeneralMidiKit)
{
    Use(Document());
    EDataID key{};
    key.other = EOtherID{1, 0};
    EDTGeneric name{};
    int32_t size = sizeof(name);
    ASSERT_EQ(T().SX_LoadEData(kTagPercussionMapName, &key, &name, &size, kV), 1);

    const PercussionMap* map = host_.document().PercussionMapOf(1);
    ASSERT_NE(map, nullptr);
    struct Expected {
        int key;
        int16_t tcd;
        Notehead head;
    };
    const Expected kit[] = {{36, 3, Notehead::Normal}, {38, 7, Notehead::Normal}, {37, 7, Notehead::X},
                            {42, 11, Notehead::X},     {46, 11, Notehead::CircleX}, {44, 1, Notehead::X},
                            {49, 12, Notehead::X},     {51, 10, Notehead::X},      {53, 10, Notehead::Diamond}};
    for (const Expected& piece : kit) {
        const PercussionNote* note = map->ForKey(piece.key);
        ASSERT_NE(note, nullptr) << piece.key;
        EXPECT_EQ(note->tcd, piece.tcd) << piece.key;
        EXPECT_EQ(note->notehead, piece.head) << piece.key;
    }
    EXPECT_EQ(map->notes.size(), 81u - 35u + 1u);
    EXPECT_TRUE(map->ForKey(36)->foot);
    EXPECT_TRUE(map->ForKey(44)->foot);
    EXPECT_FALSE(map->ForKey(38)->foot);
    EXPECT_EQ(map->ForKey(34), nullptr);
    // Position and head lead back to the key; snares share a place and the acoustic one wins.
    std::set<std::pair<int, Notehead>> places;
    for (const PercussionNote& note : map->notes) {
        EXPECT_EQ(map->At(note.tcd, note.notehead)->key, note.key == 40 ? 38 : note.key);
        places.insert({note.tcd, note.notehead});
    }
    EXPECT_EQ(places.size(), map->notes.size() - 1);
    EXPECT_STREQ(NoteheadName(Notehead::CircleX), "circle-x");

    Use(DocumentBuilder().Measures(1).WithoutPercussionMap().Build());
    EXPECT_EQ(host_.document().PercussionMapOf(1), nullptr);
    EXPECT_EQ(T().SX_LoadEData(kTagPercussionMapName, &key, &name, &size, kV), 0);
}

TEST_F(StavioHostDefaults, EveryStaffGetsAChannelOfItsOwnSkippingTheDrumChannel)
{
    DocumentBuilder builder;
    builder.Measures(1);
    for (int staff = 1; staff <= 11; ++staff) {
        builder.Staff(staff == 11 ? "Contrabassoon" : "Staff no. " + std::to_string(staff));
    }
    Use(builder.DrumStaff(11).Build());
    std::set<int32_t> definitions;
    for (int inst = 1; inst <= 10; ++inst) {
        definitions.insert(StaffChannelDefinition(host_.document(), inst));
        EXPECT_NE(ChannelCodeOf(inst), kChannel10Code) << inst;
    }
    EXPECT_EQ(definitions.size(), 10u);
    EXPECT_EQ(ChannelCodeOf(9), 8);
    EXPECT_EQ(ChannelCodeOf(10), 10);
    EXPECT_EQ(ChannelName(host_.document(), StaffChannelDefinition(host_.document(), 2)), "Staff no. 2");
    EXPECT_EQ(ChannelName(host_.document(), StaffChannelDefinition(host_.document(), 11)), "Contrabassoo")
        << "names keep 12 characters";

    // The drum staff: its usage points at a definition with the host's drum channel code.
    EXPECT_EQ(ChannelCodeOf(11), kDrumChannelCode);
    EDataID key{};
    key.other = EOtherID{11, 0};
    EDTDrumStaff drum{};
    int32_t size = sizeof(drum);
    ASSERT_EQ(T().SX_LoadEData(kTagDrumStaff, &key, &drum, &size, kV), 1);
    EXPECT_EQ(drum.percMap, 1);

    // A staff the plug-in makes gets its channel as well.
    key.other = EOtherID{kPickNumber, 0};
    ASSERT_EQ(T().SX_CreateEData(kTagStaffSpec, &key, nullptr, sizeof(EDTStaffSpec2003), kV), 1);
    EXPECT_EQ(ChannelName(host_.document(), StaffChannelDefinition(host_.document(), key.other.cmper)), "Staff 12");
}

TEST_F(StavioHostDefaults, FilledChannelDefinitionsTakeEveryNumberUpTo99AndNoneIsChannel10)
{
    Use(DocumentBuilder().Measures(1).Staff("Drum Set").FillChannelDefinitions().Build());
    for (int number = 1; number <= 99; ++number) {
        const std::optional<int16_t> code = ChannelCode(host_.document(), number);
        ASSERT_TRUE(code.has_value()) << number;
        EXPECT_NE(*code, kChannel10Code) << number;
    }
    EXPECT_EQ(ChannelName(host_.document(), 1), "Drum Set");
    EXPECT_EQ(ChannelName(host_.document(), 42), "Channel 42");
    EDataID key{};
    key.other = EOtherID{kPickNumber, 0};
    EDTGeneric definition{};
    definition.words[0] = kChannel10Code;
    ASSERT_EQ(T().SX_CreateEData(kTagChannelDef, &key, &definition, 12, kV), 1);
    EXPECT_EQ(key.other.cmper, 100);
}

}  // namespace
}  // namespace stavio
