// What a new document holds, as a plug-in reads it: fonts, clef definitions, the text-expression
// font, percussion map 1 and every staff's channel.
#include "stavio/document/clefs.h"
#include "stavio/document/staff_playback.h"
#include "stavio/document_builder.h"
#include "stavio/host.h"
#include "tests/stavio/test_support.h"

#include <set>
#include <string>

namespace stavio {
namespace {

using test::OtherKey;
constexpr EVERSION kV = kPluginApiVersion;
using support::Ints;

class StavioHostDefaults : public ::testing::Test {
protected:
    void Use(Document doc) { host_.SetDocument(std::move(doc)); }
    const StavioFuncs& T() const { return host_.FunctionTable(); }
    std::string FontName(int16_t number, int32_t capacity = 64) const
    {
        char name[64] = "junk";
        return T().SX_FontNumToName(number, name, capacity, kV) != 0 ? std::string(name)
                                                                     : "<" + std::string(name) + ">";
    }
    // Loads the "other" record (cmper, 0) through the table, as a plug-in does.
    template <typename Record>
    int32_t LoadOther(EXTAG tag, uint16_t cmper, Record& record) const
    {
        EDataID key = OtherKey(cmper, 0);
        int32_t size = sizeof(Record);
        return T().SX_LoadEData(tag, &key, &record, &size, kV);
    }
    // -1 when the staff has no channel definition.
    int ChannelCodeOf(int inst) const
    {
        const std::optional<uint16_t> code =
            ChannelCode(host_.document(), StaffChannelDefinition(host_.document(), inst));
        return code ? int{*code} : -1;
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
    EXPECT_EQ(Ints(T().SX_FontNameToNum("", kV), T().SX_FontNameToNum(nullptr, kV),
                   T().SX_FontNameToNum(std::string(300, 'a').c_str(), kV)),
              Ints(-1, -1, -1));
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
        ASSERT_NE(ClefMeaningOf(clef), nullptr);
        EXPECT_EQ((def.flag & kClefUsesFont) != 0, clef == kPercussionClef) << clef;
        if (clef == kPercussionClef) {
            EXPECT_EQ(FontName(def.font).substr(0, 7), "Dorvane");
            EXPECT_EQ(Ints(def.adjust, def.clefchar), Ints(-10, 139));
            EXPECT_STREQ(ClefMeaningOf(clef)->sign, "percussion");
        }
    }
    EXPECT_STREQ(ClefMeaningOf(0)->sign, "G");
    EXPECT_EQ(ClefMeaningOf(3)->line, 4);
    EXPECT_EQ(ClefMeaningOf(18), nullptr);

    EDTFontPref font{};
    ASSERT_EQ(LoadOther(kTagDefaultFontPref, 6, font), 1);
    EXPECT_EQ(FontName(static_cast<int16_t>(font.fontIDHigh << 8 | font.fontIDLow)), "Times New Roman");
    EXPECT_GT(font.sizeEfx, 0);
}

TEST_F(StavioHostDefaults, PercussionMapOneIsTheGeneralMidiKit)
{
    Use(Document());
    EDTGeneric name{};
    ASSERT_EQ(LoadOther(kTagPercussionMapName, 1, name), 1);

    const PercussionMap* map = host_.document().PercussionMapOf(1);
    ASSERT_NE(map, nullptr);
    struct Expected {
        int key;
        int16_t tcd;
        Notehead head;
    };
    const Expected kit[] = {{36, 3, Notehead::Normal}, {38, 7, Notehead::Normal},   {37, 7, Notehead::X},
                            {42, 11, Notehead::X},     {46, 11, Notehead::CircleX}, {44, 1, Notehead::X},
                            {49, 12, Notehead::X},     {51, 10, Notehead::X},       {53, 10, Notehead::Diamond}};
    for (const Expected& piece : kit) {
        const PercussionNote* note = map->ForKey(piece.key);
        ASSERT_NE(note, nullptr) << piece.key;
        EXPECT_EQ(note->tcd, piece.tcd) << piece.key;
        EXPECT_EQ(note->notehead, piece.head) << piece.key;
    }
    EXPECT_EQ(map->notes.size(), 81u - 35u + 1u);
    EXPECT_EQ(Ints(map->ForKey(36)->foot, map->ForKey(44)->foot, map->ForKey(38)->foot), Ints(true, true, false));
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
    EXPECT_EQ(LoadOther(kTagPercussionMapName, 1, name), 0);
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
    EXPECT_EQ(Ints(definitions.size(), ChannelCodeOf(9), ChannelCodeOf(10)), Ints(10, 8, 10));
    EXPECT_EQ(ChannelName(host_.document(), StaffChannelDefinition(host_.document(), 2)), "Staff no. 2");
    EXPECT_EQ(ChannelName(host_.document(), StaffChannelDefinition(host_.document(), 11)), "Contrabassoo")
        << "names keep 12 characters";

    // The drum staff: its usage points at a definition with the host's drum channel code.
    EXPECT_EQ(ChannelCodeOf(11), kDrumChannelCode);
    EDTDrumStaff drum{};
    ASSERT_EQ(LoadOther(kTagDrumStaff, 11, drum), 1);
    EXPECT_EQ(drum.percMap, 1);

    // A staff the plug-in makes gets its channel as well.
    EDataID key = OtherKey(kPickNumber, 0);
    ASSERT_EQ(T().SX_CreateEData(kTagStaffSpec, &key, nullptr, sizeof(EDTStaffSpec2003), kV), 1);
    EXPECT_EQ(ChannelName(host_.document(), StaffChannelDefinition(host_.document(), key.other.cmper)), "Staff 12");
}

}   // namespace
}   // namespace stavio
