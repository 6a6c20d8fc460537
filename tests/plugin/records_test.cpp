// The version-correcting record layer against the reference host's strict record store, and
// the preference records it serves from 12-byte "other" records.
#include "sdk/tags.h"
#include "tamberlyne/host/gateway.h"
#include "tamberlyne/host/preference_maps.h"
#include "tamberlyne/host/typed_records.h"
#include "tamberlyne/host/versioned_records.h"
#include "tests/plugin/plugin_test_support.h"

#include <array>
#include <cstring>
#include <set>
#include <tuple>
#include <vector>

using namespace plugin_test;

namespace {

EDataID Key(uint16_t cmper)
{
    EDataID key{};
    key.other.cmper = cmper;
    return key;
}

EDTGeneric Words(int16_t w0, int16_t w1 = 0, int16_t w2 = 0, int16_t w3 = 0, int16_t w4 = 0, int16_t w5 = 0)
{
    return EDTGeneric{{w0, w1, w2, w3, w4, w5}};
}

template <typename Record>
int32_t Load(EXTAG tag, uint16_t cmper, Record& record, int32_t size = sizeof(Record))
{
    EDataID key = Key(cmper);
    return SX_LoadEData(tag, &key, &record, &size, kPluginApiVersion);
}

template <typename Record>
int32_t Save(EXTAG tag, const Record& record, int32_t size = sizeof(Record), EVERSION version = kPluginApiVersion)
{
    EDataID key = Key(0);
    return SX_SaveEData(tag, &key, &record, size, version);
}

const char kTextBlockWarning[] = "Warning to plug-in developer: EDTTextBlock2004 used with wrong version parameter";

}   // namespace

TEST(PluginVersionCorrection, EveryRowOfTheTable)
{
    HostSession session;
    struct Case {
        EXTAG tag;
        int32_t size;
        EVERSION in, out;
        const char* warning;
    };
    const Case cases[] = {
        {Tag("SOMS"), 24, 0x0c000000, 0x09000000, nullptr},
        {Tag("SOMS"), 26, 0x09ffffff, 0x0a000000, nullptr},
        {Tag("SOMS"), 26, 0x0c000000, 0x0c000000, nullptr},
        {Tag("SOSS"), 22, 0x0c000000, 0x05000000, nullptr},
        {kTagStaffSystemSpecAlt, 24, 0x05ffffff, 0x06000000, nullptr},
        {Tag("SOSS"), 24, 0x06000000, 0x06000000, nullptr},
        {Tag("SOSS"), 28, 0x09ffffff, 0x0a000000, nullptr},
        {Tag("SOIS"), 66, 0x0c000000, 0x05000000, nullptr},
        {Tag("SOIS"), 102, 0x0c000000, 0x08000000, nullptr},
        {Tag("SOTX"), 48, 0x08000001, 0x08000000, nullptr},
        {Tag("SOTX"), 26, 0x08ffffff, 0x09000000, kTextBlockWarning},
        {Tag("SOTX"), 26, 0x09000000, 0x09000000, nullptr},
        {Tag("otDO"), 12, 0x0c000000, 0x08000000, nullptr},
        {Tag("otDO"), 34, 0x08000000, 0x09000000,
         "Warning to plug-in developer: EDTShapeExpression2004 used with wrong version parameter"},
        {Tag("SDGF"), 12, 0x0c000000, 0x08000000, nullptr},
        {Tag("SDGF"), 10, 0x05000000, 0x09000000,
         "Warning to plug-in developer: EDTGfhold2004 used with wrong version parameter"},
        {Tag("SOMS"), 0, 0x05000000, 0x05000000, nullptr},
        {Tag("SOIu"), 24, 0x05000000, 0x05000000, nullptr},
    };
    for (const Case& c : cases) {
        session.frontEnd.ClearAlerts();
        EVERSION version = c.in;
        HandleOrmegaVersion(c.tag, c.size, version);
        const std::string label = stavio::TagText(c.tag) + " size " + std::to_string(c.size);
        EXPECT_EQ(version, c.out) << label;
        EXPECT_EQ(session.AlertTexts(), c.warning ? std::vector<std::string>{c.warning} : std::vector<std::string>{})
            << label;
    }
}

TEST(PluginVersionCorrection, MislabelledRequestsBecomeOnesTheStrictHostAccepts)
{
    HostSession session;
    EDTMeasureSpec spec{};
    ASSERT_TRUE(sx_loadmeasurespec(2, spec));   // passes 0x05000000 with the 24-byte layout
    EXPECT_EQ(spec.divbeat, 1024);
    EDataID key = Key(2);
    int32_t size = 24;
    EXPECT_EQ(gStavioFuncs.SX_LoadEData(kTagMeasureSpec, &key, &spec, &size, 0x05000000), 0);
    spec.beats = 3;
    ASSERT_TRUE(sx_savemeasurespec(2, spec));
    EDTMeasureSpec2005 stored{};
    ASSERT_TRUE(session.document().Read(kTagMeasureSpec, stavio::RecordKey::Other(2, 0), stored, 0x0a000000));
    EXPECT_EQ(stored.beats, 3);

    const int16_t block = stavio::AddTextBlock(session.document(), "Kick");
    RecordCallTap tap;
    EDTTextBlock2004 record{};
    key = Key(static_cast<uint16_t>(block));
    size = sizeof(record);
    EXPECT_EQ(SX_LoadEData(kTagTextBlock, &key, &record, &size, 0x08000000), 1);
    EXPECT_EQ(session.AlertTexts(), std::vector<std::string>{kTextBlockWarning});
    ASSERT_EQ(tap.calls.size(), 1u);
    EXPECT_EQ(tap.calls[0].version, 0x09000000u);
}

TEST(PluginPreferenceMaps, PlaybackAndPageFormatAreAssembledFromTheirOtherRecords)
{
    HostSession session;
    stavio::Document& doc = session.document();
    PutOther(doc, Tag("ot13"), 0, Words(-1, 64));
    PutOther(doc, Tag("ot39"), 0, Words(0, 0, 0, 120));
    PutOther(doc, Tag("ot36"), 0, Words(2, 0, 0, 0, 0, 33));
    PutOther(doc, Tag("ot37"), 0, Words(5, 9, 0x0101));
    PutOther(doc, Tag("ot37"), 1, Words(77, 77, 77));   // another incidence: not read
    EDTPlaybackPrefs p{};
    ASSERT_EQ(Load(Tag("pfPL"), 0, p), 1);
    EXPECT_EQ(
        Ints(p.baseKeyVelocity, p.tempo, p.playbackStartMode, p.swing, p.startMeasure, p.stopMeasure, p.playbackFlags),
        Ints(64, 120, 2, 33, 5, 9, 0x0101));

    PutOther(doc, Tag("ot70"), 0, Words(0, 3168, 1, static_cast<int16_t>(0x8000), 100, 85));
    PutOther(doc, Tag("ot71"), 0, Words(96, 144, 150, 160, 170, 1));   // same margins everywhere
    PutOther(doc, Tag("ot72"), 0, Words(11, 12, 13, 14));
    PutOther(doc, Tag("ot74"), 0, Words(31, 32, 0x7f04, 99));
    RecordCallTap tap;
    EDTPageFormatPrefs page{};
    page.systemDistance = 55;   // 'ot73' is missing: its fields read 0
    int32_t size = sizeof(page);
    EDataID key = Key(0);
    ASSERT_EQ(SX_LoadEData(Tag("pfPF"), &key, &page, &size, kPluginApiVersion), 1);
    EXPECT_EQ(size, 48);
    EXPECT_EQ(tap.calls.size(), 5u);   // one load per "other" record, not per field
    // The width high half first, facing pages kept inverted, the system count's low byte only.
    EXPECT_EQ(Ints(page.pageHeight, page.pageWidth, page.systemPercent, page.leftPageRightMargin, page.facingPages,
                   page.rightPageRightMargin, page.systemDistance, page.firstSystemLeftMargin,
                   page.firstPageSystemCount),
              Ints(3168, 0x00018000, 85, 170, 0, 14, 0, 32, 4));

    // Low-half-first fields are exchanged.
    PREFERENCE_LOCATION_MAPRECORD map[] = {{0, '7', '0', 0, 0, 0, 2, 4, MC_WINFOURBYTE}};
    int32_t value = 0;
    size = sizeof(value);
    ASSERT_EQ(fragmentStructLoad(reinterpret_cast<char*>(&value), &size, map, 1), 1);
    EXPECT_EQ(value, static_cast<int32_t>(0x80000001));
}

TEST(PluginPreferenceMaps, ArrayRowsAndTheirRanges)
{
    HostSession session;
    for (uint16_t inci = 0; inci < 4; ++inci) {
        PutOther(session.document(), Tag("ot77"), inci, Words(static_cast<int16_t>(inci + 1)));
    }
    PutOther(session.document(), Tag("ot40"), 127, Words(1234));
    EDTGeneric pieces[4] = {};
    ASSERT_EQ(Load(Tag("pfPF"), 1, pieces), 1);
    EXPECT_EQ(Ints(pieces[0].words[0], pieces[3].words[0]), Ints(1, 4));
    EXPECT_EQ(Load(Tag("pfPF"), 1, pieces, 47), 0);
    ASSERT_EQ(Load(Tag("pfSN"), 128, pieces[0]), 1);
    EXPECT_EQ(pieces[0].words[0], 1234);

    RecordCallTap tap;   // outside the maps the request reaches the host, which has no 'pf' records
    int32_t size = 0;
    EDataID key = Key(0);
    EXPECT_EQ(SX_LoadEData(Tag("pfTX"), &key, nullptr, &size, kPluginApiVersion), 1);   // a size query: no host call
    EXPECT_EQ(size, 96);
    EXPECT_EQ(Load(Tag("pfPF"), 2, pieces), 0);
    EXPECT_EQ(Load(Tag("pfSN"), 129, pieces[0]), 0);
    ASSERT_EQ(tap.calls.size(), 2u);
    EXPECT_EQ(tap.calls[1].tag, Tag("pfSN"));

    EXTAG other = 0;
    int16_t count = 0;
    int16_t first = 0;
    EXPECT_TRUE(mapPrefTag(Tag("pfGb"), 4, &other, &count, &first));
    EXPECT_EQ(Ints(other, first), Ints(Tag("ot98"), 3));
    EXPECT_TRUE(mapPrefTag(Tag("pfGG"), 0, &other, &count, &first));
    EXPECT_EQ(count, 11);
    for (auto [tag, cmper] : {std::pair{Tag("pfGb"), 0},
                              {Tag("pfGb"), 5},
                              {Tag("pfSl"), 16},
                              {Tag("pfTs"), 10},
                              {Tag("pfGs"), 2},
                              {Tag("pfSN"), -1},
                              {Tag("pfPL"), 0}}) {
        EXPECT_FALSE(mapPrefTag(tag, static_cast<int16_t>(cmper), &other, &count, &first)) << cmper;
        EXPECT_EQ(other, 0u);
    }
}

// Every field map covers its record exactly once, gives each field words of its own, and a record
// saved through it into the host's "other" records loads back unchanged.
TEST(PluginPreferenceMaps, EveryFieldMapRoundTripsThroughTheHostsOtherRecords)
{
    struct Case {
        EXTAG tag;
        int16_t rows;
        int32_t size;
    };
    for (const Case& c : {Case{Tag("pfDP"), 36, 72}, Case{Tag("pfEX"), 25, 52}, Case{Tag("pfMS"), 49, 102},
                          Case{Tag("pfPB"), 11, 44}, Case{Tag("pfPF"), 22, 48}, Case{Tag("pfPL"), 7, 14},
                          Case{Tag("pfRP"), 20, 40}, Case{Tag("pfSI"), 23, 60}, Case{Tag("pfSS"), 43, 100}}) {
        const std::string label = stavio::TagText(c.tag);
        PREFERENCE_LOCATION_MAPRECORD* map = nullptr;
        int16_t rows = 0;
        ASSERT_TRUE(mapPrefStruct(c.tag, 0, &map, &rows)) << label;
        ASSERT_EQ(rows, c.rows) << label;
        std::vector<int> byteUse(static_cast<size_t>(c.size));
        std::set<std::tuple<char, char, int, int, int>> words;
        for (int i = 0; i < rows; ++i) {
            const PREFERENCE_LOCATION_MAPRECORD& row = map[i];
            for (int b = 0; b < row.bytesize; ++b) ++byteUse.at(static_cast<size_t>(row.structOffset + b));
            for (int w = 0; w < row.bytesize / 2; ++w) {
                EXPECT_TRUE(
                    words.emplace(row.firstChar, row.secondChar, row.cmper, row.inci, row.offsetInInci + w).second)
                    << label << " row " << i;
                EXPECT_LT(row.offsetInInci + w, 6) << label << " row " << i;
            }
        }
        EXPECT_EQ(byteUse, std::vector<int>(byteUse.size(), 1)) << label << ": each byte in exactly one field";

        HostSession session;
        EDataID key = Key(0);
        int32_t size = 0;
        {
            RecordCallTap tap;   // a size query asks no host
            EXPECT_EQ(SX_LoadEData(c.tag, &key, nullptr, &size, kPluginApiVersion), 1);
            EXPECT_TRUE(tap.calls.empty()) << label;
        }
        EXPECT_EQ(size, c.size) << label;
        // A value for each field that its conversion can carry: flags 0/1, bytes 0-255, words and
        // 32-bit values with their high bits set.
        std::vector<char> record(static_cast<size_t>(c.size));
        for (int i = 0; i < rows; ++i) {
            const PREFERENCE_LOCATION_MAPRECORD& row = map[i];
            char* field = record.data() + row.structOffset;
            if (row.bytesize == 4) {
                const auto value = static_cast<int32_t>(0x80010000u + static_cast<uint32_t>(i) * 0x00030005u);
                std::memcpy(field, &value, sizeof(value));
                continue;
            }
            int16_t value = static_cast<int16_t>(-1000 + 37 * i);
            if (row.conversion == MC_INVERTBOOL) value = static_cast<int16_t>(i % 2);
            if (row.conversion == MC_SIGNEDBYTE) value = static_cast<int16_t>(200 + i);
            std::memcpy(field, &value, sizeof(value));
        }
        ASSERT_EQ(SX_SaveEData(c.tag, &key, record.data(), c.size, kPluginApiVersion), 1) << label;
        std::vector<char> loaded(static_cast<size_t>(c.size), '\x5a');
        ASSERT_EQ(SX_LoadEData(c.tag, &key, loaded.data(), &size, kPluginApiVersion), 1) << label;
        EXPECT_EQ(loaded, record) << label;
    }
    EXPECT_FALSE(mapPrefStruct(Tag("pfPF"), 1, nullptr, nullptr));
}

TEST(PluginPreferenceSave, OnlyNewCallersMapAndOnlyChangedRecordsAreWritten)
{
    HostSession session;
    stavio::Document& doc = session.document();
    PutOther(doc, Tag("ot39"), 0, Words(0, 0, 0, 120));
    EDTPlaybackPrefs playback{};
    playback.tempo = 90;
    for (const auto& [version, saved, tempo] : {std::array<int32_t, 3>{0x07ffffff, 0, 120}, {0x08000000, 1, 90}}) {
        EXPECT_EQ(Save(Tag("pfPL"), playback, sizeof(playback), EVERSION(version)),
                  saved);   // older: to the host, which refuses
        EXPECT_EQ(GetOther(doc, Tag("ot39")).words[3], tempo);
    }

    PutOther(doc, Tag("ot71"), 0, Words(96, 144, 150, 160, 170, 1));
    PutOther(doc, Tag("ot74"), 0, Words(31, 32, 0x7f04, 99));
    EDTPageFormatPrefs page{};
    ASSERT_EQ(Load(Tag("pfPF"), 0, page), 1);
    RecordCallTap tap;
    ASSERT_EQ(Save(Tag("pfPF"), page), 1);
    EXPECT_EQ(tap.Saves(), 0u);

    // A kept flag word other than 0 and 1 is rewritten when it is not the word the field gives.
    PutOther(doc, Tag("ot71"), 0, Words(96, 144, 150, 160, 170, 2));
    ASSERT_EQ(Load(Tag("pfPF"), 0, page), 1);
    ASSERT_EQ(page.facingPages, 0);
    ASSERT_EQ(Save(Tag("pfPF"), page), 1);
    EXPECT_EQ(Ints(tap.Saves(), GetOther(doc, Tag("ot71")).words[5]), Ints(1, 1));

    tap.calls.clear();
    page.rightPageTopMargin = 50;
    page.facingPages = 1;
    page.firstPageSystemCount = 0x1ff;
    ASSERT_EQ(Save(Tag("pfPF"), page), 1);
    EXPECT_EQ(tap.Saves(), 3u);
    const EDTGeneric ot74 = GetOther(doc, Tag("ot74"));   // the high byte of word 2 is kept
    EXPECT_EQ(Ints(GetOther(doc, Tag("ot72")).words[0], GetOther(doc, Tag("ot71")).words[5], uint16_t(ot74.words[2]),
                   ot74.words[3]),
              Ints(50, 0, 0x7fff, 99));

    // The size is tested against twice the number of rows; fields past it are not read.
    page.systemDistance = 7;
    tap.calls.clear();
    EXPECT_EQ(Save(Tag("pfPF"), page, 43), 0);
    EXPECT_TRUE(tap.calls.empty());
    EXPECT_EQ(Save(Tag("pfPF"), page, 44), 1);
    EXPECT_EQ(GetOther(doc, Tag("ot73")).words[4], 7);

    EDTGeneric pieces[8] = {};
    pieces[7].words[0] = 107;
    EXPECT_EQ(Save(Tag("pfTX"), pieces, 95), 0);
    ASSERT_EQ(Save(Tag("pfTX"), pieces), 1);
    EXPECT_EQ(GetOther(doc, Tag("ot78"), 7).words[0], 107);
}

TEST(PluginSpecialRecords, StaffSystemFallbackAndPreZeroedLoads)
{
    HostSession session;
    unsigned char buffer[120];
    std::memset(buffer, 0xAA, sizeof(buffer));
    EXPECT_EQ(Load(kTagStaffSystemDef, 3, buffer, 66), 0);
    PutOther(session.document(), kTagStaffSystemDefOther, 0, Words(1), 3);
    EXPECT_EQ(Load(kTagStaffSystemDef, 3, buffer, 66), 1);
    EXPECT_EQ(Ints(buffer[65], buffer[66]), Ints(0, 0xAA)) << "nothing past the caller's size";
    EDataID key = Key(3);
    int32_t size = 0;
    EXPECT_EQ(SX_LoadEData(kTagStaffSystemDef, &key, nullptr, &size, kPluginApiVersion), 1);
    EXPECT_EQ(size, 66);

    std::memset(buffer, 0xAA, sizeof(buffer));
    EXPECT_EQ(Load(kTagZeroFilled108, 1, buffer, 108), 0);   // the host filled nothing
    EXPECT_EQ(Ints(buffer[107], buffer[108]), Ints(0, 0xAA));
    EXPECT_EQ(Load(kTagZeroFilled48, 1, buffer, 40), 0);
}
