// The document's record store as a plug-in sees it: keys, sizes, versions and the host's rules
// for new numbers, incidences, deletion and walking.
#include "sdk/sdk.h"
#include "stavio/document/canonical.h"
#include "stavio/document/document.h"
#include "stavio/document_builder.h"
#include "tests/stavio/test_support.h"

#include <array>
#include <cstring>
#include <random>

namespace stavio {
namespace {

using test::OtherKey;
constexpr EXTAG kOtherTag = MakeTag('o', 't', 'Q', 'Z');
using support::Ints;

EDTGeneric Words(int16_t first)
{
    EDTGeneric record{};
    record.words[0] = first;
    return record;
}

int16_t FirstWordAt(const Document& doc, uint16_t cmper, int16_t inci)
{
    EDataID key = OtherKey(cmper, inci);
    EDTGeneric record{};
    int32_t size = sizeof(record);
    return doc.LoadRecord(kOtherTag, &key, &record, &size, kPluginApiVersion) != 0 ? record.words[0] : -1;
}

TEST(StavioRecordStore, MeasureSpecIsKnownInBothLayoutsConvertsBetweenThemAndAnswersItsSize)
{
    Document doc = DocumentBuilder().Measures(2, 3, 1024).Build();
    EDataID key = OtherKey(2, 0);

    EDTMeasureSpec2005 wide{};
    int32_t size = sizeof(wide);
    ASSERT_EQ(doc.LoadRecord(kTagMeasureSpec, &key, &wide, &size, kV10), 1);
    EXPECT_EQ(Ints(size, wide.beats), Ints(26, 3));
    wide.frontSpaceExtra = 5;
    wide.backSpaceExtra = 7;
    ASSERT_EQ(doc.SaveRecord(kTagMeasureSpec, &key, &wide, 26, kV10), 1);

    // The 24-byte layout sees everything but the last word, and saving it keeps that word.
    EDTMeasureSpec narrow{};
    size = sizeof(narrow);
    ASSERT_EQ(doc.LoadRecord(kTagMeasureSpec, &key, &narrow, &size, kV9), 1);
    EXPECT_EQ(Ints(size, narrow.frontSpaceExtra), Ints(24, 5));
    narrow.beats = 6;
    ASSERT_EQ(doc.SaveRecord(kTagMeasureSpec, &key, &narrow, 24, 0x09FFFFFF), 1);
    size = sizeof(wide);
    ASSERT_EQ(doc.LoadRecord(kTagMeasureSpec, &key, &wide, &size, 0x0C000000), 1);
    EXPECT_EQ(Ints(wide.beats, wide.backSpaceExtra), Ints(6, 7));

    // Without a buffer the size of the version's layout is answered, and nothing for a missing record.
    for (const auto& [version, measure, found, expected] :
         std::vector<std::array<int64_t, 4>>{{kV9, 2, 1, 24}, {kPluginApiVersion, 2, 1, 26}, {kV9, 3, 0, 0}}) {
        size = 0;
        key = OtherKey(uint16_t(measure), 0);
        const int32_t answer = doc.LoadRecord(kTagMeasureSpec, &key, nullptr, &size, EVERSION(version));
        EXPECT_EQ(Ints(answer, size), Ints(found, expected)) << std::hex << version << " " << measure;
    }
}

TEST(StavioRecordStore, RefusesSizesAndVersionsItDoesNotKnow)
{
    Document doc = DocumentBuilder().Measures(1).Staff("Drums").Build();
    EDataID key = OtherKey(1, 0);
    unsigned char buffer[128] = {};
    struct Case {
        EXTAG tag;
        int32_t size;
        EVERSION version;
    };
    const Case refused[] = {
        {kTagMeasureSpec, 24, kV10},         // 24 bytes belong to 0x09xxxxxx only
        {kTagMeasureSpec, 26, 0x09FFFFFF},   // 26 bytes from 0x0A000000 on
        {kTagMeasureSpec, 25, kV10},
        {kTagMeasureSpec, 24, 0x05000000},
        {kTagStaffSpec, 102, 0x07FFFFFF},
        {kTagStaffSpec, 66, kV8},
        {kTagTextBlock, 26, kV8},
        {kTagGfhold, 12, kV8},
        {MakeTag('o', 't', 'Q', 'Z'), 14, kV10},
        {MakeTag('Z', 'Z', 'Z', 'Z'), 12, kV10},
    };
    for (const Case& request : refused) {
        int32_t size = request.size;
        EXPECT_EQ(Ints(doc.LoadRecord(request.tag, &key, buffer, &size, request.version),
                       doc.SaveRecord(request.tag, &key, buffer, request.size, request.version),
                       doc.CreateRecord(request.tag, &key, buffer, request.size, request.version)),
                  Ints(0, 0, 0))
            << std::hex << request.tag << " " << request.size << " " << request.version;
    }
    int32_t size = 24;
    EXPECT_EQ(doc.LoadRecord(kTagMeasureSpec, &key, buffer, &size, kV9), 1) << "the right request still works";
}

TEST(StavioRecordStore, VariableTextFillsOnlyUpToTheCallersSize)
{
    Document doc;
    const int16_t block = AddTextBlock(doc, "Drum Set");
    ASSERT_GT(block, 0);
    EXPECT_EQ(TextBlockText(doc, block), "Drum Set");

    EDataID blockKey = OtherKey(static_cast<uint16_t>(block), 0);
    EDTTextBlock2004 spec{};
    int32_t size = sizeof(spec);
    ASSERT_EQ(doc.LoadRecord(kTagTextBlock, &blockKey, &spec, &size, kV9), 1);
    EDataID textKey{};
    textKey.text.textnum = static_cast<uint16_t>(spec.textID);
    size = 256;
    ASSERT_EQ(doc.LoadRecord(kTagTextBody, &textKey, nullptr, &size, kPluginApiVersion), 1);
    EXPECT_EQ(size, 8);

    char buffer[8];
    std::memset(buffer, '#', sizeof(buffer));
    size = 4;
    ASSERT_EQ(doc.LoadRecord(kTagTextBody, &textKey, buffer, &size, kPluginApiVersion), 1);
    EXPECT_EQ(std::to_string(size) + std::string(buffer, 8), "4Drum####");
}

TEST(StavioRecordStore, CreateWithoutNumberTakesTheOneAfterTheHighest)
{
    Document doc;
    EDTGeneric record = Words(1);
    EDataID key = OtherKey(kPickNumber, 0);
    ASSERT_EQ(doc.CreateRecord(kOtherTag, &key, &record, 12, kPluginApiVersion), 1);
    EXPECT_EQ(key.other.cmper, 1) << "an empty tag starts at 1";
    for (uint16_t cmper : {9, 5}) {
        key = OtherKey(cmper, 0);
        ASSERT_EQ(doc.CreateRecord(kOtherTag, &key, &record, 12, kPluginApiVersion), 1);
    }
    key = OtherKey(kPickNumber, 3);
    ASSERT_EQ(doc.CreateRecord(kOtherTag, &key, &record, 12, kPluginApiVersion), 1);
    EXPECT_EQ(Ints(key.other.cmper, key.other.inci), Ints(10, 0));
    key = OtherKey(9, 0);
    EXPECT_EQ(doc.CreateRecord(kOtherTag, &key, &record, 12, kPluginApiVersion), 0) << "the key is taken";
}

TEST(StavioRecordStore, AppendedIncidencesFollowTheLastAndDeletionShiftsLaterOnesDown)
{
    Document doc;
    for (int16_t value = 10; value <= 13; ++value) {
        EDataID key = OtherKey(4, -1);
        EDTGeneric record = Words(value);
        ASSERT_EQ(doc.CreateRecord(kOtherTag, &key, &record, 12, kPluginApiVersion), 1);
        EXPECT_EQ(key.other.inci, value - 10);
    }
    EDataID neighbour = OtherKey(5, 0);
    EDTGeneric record = Words(50);
    ASSERT_EQ(doc.SaveRecord(kOtherTag, &neighbour, &record, 12, kPluginApiVersion), 1);

    EDataID doomed = OtherKey(4, 1);
    ASSERT_EQ(doc.DeleteRecord(kOtherTag, &doomed, kPluginApiVersion), 1);
    EXPECT_EQ(Ints(FirstWordAt(doc, 4, 0), FirstWordAt(doc, 4, 1), FirstWordAt(doc, 4, 2), FirstWordAt(doc, 4, 3)),
              Ints(10, 12, 13, -1));
    EXPECT_EQ(FirstWordAt(doc, 5, 0), 50) << "another group does not move";
    doomed = OtherKey(4, 7);
    EXPECT_EQ(doc.DeleteRecord(kOtherTag, &doomed, kPluginApiVersion), 0);
    doomed = OtherKey(4, -1);
    EXPECT_EQ(doc.SaveRecord(kOtherTag, &doomed, &record, 12, kPluginApiVersion), 0) << "save never appends";
}

TEST(StavioRecordStore, NextAndPreviousWalkKeysInOrder)
{
    Document doc;
    for (auto [cmper, inci] : {std::pair<uint16_t, int16_t>{3, 0}, {1, 1}, {1, 0}}) {
        EDataID key = OtherKey(cmper, inci);
        EDTGeneric record = Words(static_cast<int16_t>(cmper * 10 + inci));
        ASSERT_EQ(doc.SaveRecord(kOtherTag, &key, &record, 12, kPluginApiVersion), 1);
    }
    EDataID key = OtherKey(0, 0);
    std::vector<int16_t> seen;
    EDTGeneric record{};
    int32_t size = sizeof(record);
    while (doc.NextRecord(kOtherTag, &key, &record, &size, kPluginApiVersion) != 0) {
        seen.push_back(record.words[0]);
        EXPECT_EQ(record.words[0], key.other.cmper * 10 + key.other.inci) << "the key moves with the record";
    }
    EXPECT_EQ(seen, (std::vector<int16_t>{10, 11, 30}));

    key = OtherKey(3, 0);
    ASSERT_EQ(doc.PreviousRecord(kOtherTag, &key, &record, &size, kPluginApiVersion), 1);
    EXPECT_EQ(Ints(key.other.cmper, key.other.inci), Ints(1, 1));
    key = OtherKey(1, 0);
    EXPECT_EQ(doc.PreviousRecord(kOtherTag, &key, &record, &size, kPluginApiVersion), 0);
    size = 10;
    key = OtherKey(0, 0);
    EXPECT_EQ(doc.NextRecord(kOtherTag, &key, &record, &size, kPluginApiVersion), 0) << "wrong size refused";
}

TEST(StavioRecordStore, OlderStaffSpecIsTheFirst66BytesAndOlderTextBlockCarriesTheTextNumber)
{
    Document doc = DocumentBuilder().Measures(1).Staff("Bass", "B.").Build();
    EDataID key = OtherKey(1, 0);
    EDTStaffSpec2003 spec{};
    int32_t size = sizeof(spec);
    ASSERT_EQ(doc.LoadRecord(kTagStaffSpec, &key, &spec, &size, kV8), 1);
    spec.range[0] = 42;
    ASSERT_EQ(doc.SaveRecord(kTagStaffSpec, &key, &spec, sizeof(spec), kV8), 1);

    unsigned char older[66];
    size = sizeof(older);
    ASSERT_EQ(doc.LoadRecord(kTagStaffSpec, &key, older, &size, kV5), 1);
    EXPECT_EQ(std::memcmp(older, &spec, 66), 0);
    older[0] = 9;   // botBarlineOffset
    ASSERT_EQ(doc.SaveRecord(kTagStaffSpec, &key, older, 66, kV5), 1);
    size = sizeof(spec);
    ASSERT_EQ(doc.LoadRecord(kTagStaffSpec, &key, &spec, &size, kV8), 1);
    EXPECT_EQ(Ints(spec.botBarlineOffset, spec.range[0]), Ints(9, 42))
        << "the older layout leaves the newer fields alone";

    EDataID blockKey = OtherKey(static_cast<uint16_t>(spec.fullName), 0);
    int16_t oldBlock[24];
    size = 48;
    ASSERT_EQ(doc.LoadRecord(kTagTextBlock, &blockKey, oldBlock, &size, kV8), 1);
    EDataID textKey{};
    textKey.text.textnum = static_cast<uint16_t>(oldBlock[0]);
    char name[16] = {};
    size = sizeof(name);
    ASSERT_EQ(doc.LoadRecord(kTagTextBody, &textKey, name, &size, kPluginApiVersion), 1);
    EXPECT_EQ(std::string(name, static_cast<size_t>(size)), "Bass");
}

TEST(StavioRecordStore, FrameDetailFillsTheCallersFrameArrayAndKeepsTheHostsNumbersOnSave)
{
    Document doc = DocumentBuilder().Measures(2).Staff("Drums").Build();
    const int16_t hostFrames[kMaxLayers] = {7, 0, 3, 0};
    ASSERT_TRUE(doc.SetFrameNumbers(1, 2, hostFrames));

    EDataID key{};
    key.detail = EDetailID{1, 2, 0};
    int16_t frames[kMaxLayers] = {-1, -1, -1, -1};
    EDTGfhold2004 hold{};
    hold.frame = frames;
    int32_t size = kGfhold2004Size;
    ASSERT_EQ(doc.LoadRecord(kTagGfhold, &key, &hold, &size, kPluginApiVersion), 1);
    EXPECT_EQ(Ints(size, frames[0], frames[1], frames[2], frames[3]), Ints(kGfhold2004Size, 7, 0, 3, 0));

    hold.clef = kPercussionClef;
    frames[0] = 99;
    ASSERT_EQ(doc.SaveRecord(kTagGfhold, &key, &hold, kGfhold2004Size, kPluginApiVersion), 1);
    int16_t kept[kMaxLayers] = {};
    ASSERT_TRUE(doc.FrameNumbers(1, 2, kept));
    EXPECT_EQ(kept[0], 7);
    hold = EDTGfhold2004{};   // no frame array: the clef alone
    ASSERT_EQ(doc.LoadRecord(kTagGfhold, &key, &hold, &size, kPluginApiVersion), 1);
    EXPECT_EQ(hold.clef, kPercussionClef);
}

TEST(StavioRecordStore, CreatingAStaffSpecAddsAStaffToTheMainList)
{
    Document doc = DocumentBuilder().Measures(3).Staff("Piano").Staff("Bass").Build();
    EDataID key = OtherKey(kPickNumber, 0);
    ASSERT_EQ(doc.CreateRecord(kTagStaffSpec, &key, nullptr, sizeof(EDTStaffSpec2003), kPluginApiVersion), 1);
    EXPECT_EQ(Ints(key.other.cmper, doc.StaffCount(), doc.SlotToInst(3, 0)), Ints(3, 3, 3));

    EDataID listKey = OtherKey(0, 2);   // slot 3 of list 0
    EDTInstrumentUsed entry{};
    int32_t size = sizeof(entry);
    ASSERT_EQ(doc.LoadRecord(kTagInstrumentUsed, &listKey, &entry, &size, kPluginApiVersion), 1);
    EXPECT_EQ(Ints(entry.inst, entry.separ), Ints(3, -2 * kStaffSpacing));
    int16_t frames[kMaxLayers];
    EXPECT_TRUE(doc.FrameNumbers(3, 3, frames)) << "the new staff has a frame detail in every measure";
}

}   // namespace
// The run of numbered records from 1 is kept in step with every change (the document's measure
// count asks it once per import): checked against counting after each of many random changes.
TEST(StavioRecordStore, TheNumberedRunFollowsEveryChange)
{
    RecordStore store;
    std::mt19937 random(11);
    std::uniform_int_distribution<int> number(1, 12), change(0, 4), inci(0, 2);
    const auto counted = [&store] {
        uint16_t run = 0;
        while (store.Find(kOtherTag, RecordKey::Number(uint16_t(run + 1))) != nullptr) ++run;
        return run;
    };
    for (int step = 0; step < 3000; ++step) {
        RecordKey key = RecordKey::Other(uint16_t(number(random)), uint16_t(inci(random) == 0 ? inci(random) : 0));
        switch (change(random)) {
            case 0:
            case 1: store.Put(kOtherTag, key, {1}); break;
            case 2: store.Erase(kOtherTag, key); break;
            case 3: store.Delete(kOtherTag, KeyKind::Other, key); break;
            default: {
                RecordKey picked = RecordKey::Other(kPickNumber, kAppendIncidence);
                if (store.Count(kOtherTag) < 10)
                    store.Create(kOtherTag, KeyKind::Other, picked, {2});
                else
                    store = RecordStore();
            }
        }
        ASSERT_EQ(store.NumberedRun(kOtherTag), counted()) << "after step " << step;
    }
}

}   // namespace stavio
