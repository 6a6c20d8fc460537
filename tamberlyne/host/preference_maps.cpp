#include "tamberlyne/host/preference_maps.h"

#include "sdk/records.h"
#include "sdk/tags.h"
#include "tamberlyne/host/gateway.h"

#include <cstring>

namespace {

constexpr EXTAG kTagPlaybackPrefs = 0x7066504C;     // 'pfPL'
constexpr EXTAG kTagPianoBracePrefs = 0x70665042;   // 'pfPB'
constexpr EXTAG kTagPageFormatPrefs = 0x70665046;   // 'pfPF'

constexpr int kWordsPerOtherRecord = 6;

// Rows: bProcessed, the tag's last two characters, cmper, inci, structOffset, offsetInInci,
// bytesize, conversion.
PREFERENCE_LOCATION_MAPRECORD EDTPlaybackPrefs_MAP_ARRAY[] = {
    {0, '1', '3', 0, 0, 0, 1, 2, MC_NONE},  {0, '3', '9', 0, 0, 2, 3, 2, MC_NONE},
    {0, '3', '6', 0, 0, 4, 0, 2, MC_NONE},  {0, '3', '6', 0, 0, 6, 5, 2, MC_NONE},
    {0, '3', '7', 0, 0, 8, 0, 2, MC_NONE},  {0, '3', '7', 0, 0, 10, 1, 2, MC_NONE},
    {0, '3', '7', 0, 0, 12, 2, 2, MC_NONE},
};

PREFERENCE_LOCATION_MAPRECORD EDTPianoBracePrefs_MAP_ARRAY[] = {
    {0, '6', '5', 0, 0, 0, 0, 4, MC_MACFOURBYTE},  {0, '6', '5', 0, 0, 4, 2, 4, MC_MACFOURBYTE},
    {0, '6', '5', 0, 0, 8, 4, 4, MC_MACFOURBYTE},  {0, '6', '0', 0, 0, 12, 0, 4, MC_MACFOURBYTE},
    {0, '6', '0', 0, 0, 16, 2, 4, MC_MACFOURBYTE}, {0, '6', '0', 0, 0, 20, 4, 4, MC_MACFOURBYTE},
    {0, '6', '1', 0, 0, 24, 0, 4, MC_MACFOURBYTE}, {0, '6', '1', 0, 0, 28, 2, 4, MC_MACFOURBYTE},
    {0, '6', '4', 0, 0, 32, 0, 4, MC_MACFOURBYTE}, {0, '6', '4', 0, 0, 36, 2, 4, MC_MACFOURBYTE},
    {0, '4', '5', 0, 0, 40, 0, 4, MC_MACFOURBYTE},
};

PREFERENCE_LOCATION_MAPRECORD EDTPageFormatPrefsScore_MAP_ARRAY[] = {
    {0, '7', '0', 0, 0, 0, 0, 4, MC_MACFOURBYTE},   // pageHeight
    {0, '7', '0', 0, 0, 4, 2, 4, MC_MACFOURBYTE},   // pageWidth
    {0, '7', '0', 0, 0, 8, 4, 2, MC_NONE},          // pagePercent
    {0, '7', '0', 0, 0, 10, 5, 2, MC_NONE},         // systemPercent
    {0, '7', '1', 0, 0, 12, 0, 2, MC_NONE},         // rawStaffHeight
    {0, '7', '1', 0, 0, 14, 1, 2, MC_NONE},         // leftPageTopMargin
    {0, '7', '1', 0, 0, 16, 2, 2, MC_NONE},         // leftPageLeftMargin
    {0, '7', '1', 0, 0, 18, 3, 2, MC_NONE},         // leftPageBottomMargin
    {0, '7', '1', 0, 0, 20, 4, 2, MC_NONE},         // leftPageRightMargin
    {0, '7', '1', 0, 0, 22, 5, 2, MC_INVERTBOOL},   // facingPages (kept as "same margins on all pages")
    {0, '7', '2', 0, 0, 24, 0, 2, MC_NONE},         // rightPageTopMargin
    {0, '7', '2', 0, 0, 26, 1, 2, MC_NONE},         // rightPageLeftMargin
    {0, '7', '2', 0, 0, 28, 2, 2, MC_NONE},         // rightPageBottomMargin
    {0, '7', '2', 0, 0, 30, 3, 2, MC_NONE},         // rightPageRightMargin
    {0, '7', '3', 0, 0, 32, 0, 2, MC_NONE},         // systemTopMargin
    {0, '7', '3', 0, 0, 34, 1, 2, MC_NONE},         // systemLeftMargin
    {0, '7', '3', 0, 0, 36, 2, 2, MC_NONE},         // systemBottomMargin
    {0, '7', '3', 0, 0, 38, 3, 2, MC_NONE},         // systemRightMargin
    {0, '7', '3', 0, 0, 40, 4, 2, MC_NONE},         // systemDistance
    {0, '7', '4', 0, 0, 42, 0, 2, MC_NONE},         // firstSystemTopMargin
    {0, '7', '4', 0, 0, 44, 1, 2, MC_NONE},         // firstSystemLeftMargin
    {0, '7', '4', 0, 0, 46, 2, 2, MC_SIGNEDBYTE},   // firstPageSystemCount (low byte of its word)
};

template <size_t N>
constexpr int16_t RowCount(const PREFERENCE_LOCATION_MAPRECORD (&)[N])
{
    return static_cast<int16_t>(N);
}

struct ArrayMapRow {
    EXTAG prefTag;
    uint16_t maxCmper;   // 0: any cmper; otherwise cmper 1 to maxCmper only
    EXTAG otherTag;
    int16_t count;
    bool inciFromCmper;   // first incidence cmper - 1, else 0
};

constexpr ArrayMapRow kArrayMap[] = {
    {MakeTag('p', 'f', 'P', 'F'), 1, MakeTag('o', 't', '7', '7'), 4, false},
    {MakeTag('p', 'f', 'G', 'D'), 0, MakeTag('o', 't', '7', '9'), 1, false},
    {MakeTag('p', 'f', 'G', 'G'), 0, MakeTag('o', 't', '8', '8'), 11, false},
    {MakeTag('p', 'f', 'G', 'b'), 4, MakeTag('o', 't', '9', '8'), 1, true},
    {MakeTag('p', 'f', 'G', 'd'), 0, MakeTag('o', 't', '8', '0'), 1, false},
    {MakeTag('p', 'f', 'G', 's'), 1, MakeTag('o', 't', '9', '1'), 1, false},
    {MakeTag('p', 'f', 'M', 'M'), 0, MakeTag('o', 't', '2', '5'), 2, false},
    {MakeTag('p', 'f', 'N', 'D'), 0, MakeTag('o', 't', '0', '4'), 1, false},
    {MakeTag('p', 'f', 'N', 'd'), 0, MakeTag('o', 't', '6', '6'), 1, false},
    {MakeTag('p', 'f', 'S', 'C'), 0, MakeTag('o', 't', '5', '2'), 2, false},
    {MakeTag('p', 'f', 'S', 'N'), 128, MakeTag('o', 't', '4', '0'), 1, true},
    {MakeTag('p', 'f', 'S', 'P'), 0, MakeTag('o', 't', '9', '4'), 3, false},
    {MakeTag('p', 'f', 'S', 'l'), 15, MakeTag('o', 't', '2', '6'), 1, true},
    {MakeTag('p', 'f', 'T', 'C'), 0, MakeTag('o', 't', '8', '6'), 5, false},
    {MakeTag('p', 'f', 'T', 'I'), 0, MakeTag('o', 't', '8', '4'), 4, false},
    {MakeTag('p', 'f', 'T', 'X'), 0, MakeTag('o', 't', '7', '8'), 8, false},
    {MakeTag('p', 'f', 'T', 'p'), 0, MakeTag('o', 't', '8', '5'), 4, false},
    {MakeTag('p', 'f', 'T', 's'), 9, MakeTag('o', 't', '9', '0'), 1, true},
};

// A ranged row is tested as cmper - 1 in 16 unsigned bits, so cmper 0 never matches one.
bool CmperMatches(const ArrayMapRow& row, int16_t cmper)
{
    if (row.maxCmper == 0) {
        return true;
    }
    const auto fromOne = static_cast<uint16_t>(static_cast<uint16_t>(cmper) - 1);
    return fromOne < row.maxCmper;
}

EXTAG OtherTagOf(const PREFERENCE_LOCATION_MAPRECORD& row)
{
    return MakeTag('o', 't', row.firstChar, row.secondChar);
}

EDataID OtherKeyOf(const PREFERENCE_LOCATION_MAPRECORD& row)
{
    EDataID key{};
    key.other.cmper = row.cmper != 0 ? row.cmper : kPreferenceCmper;
    key.other.inci = row.inci;
    return key;
}

bool SameRecord(const PREFERENCE_LOCATION_MAPRECORD& a, const PREFERENCE_LOCATION_MAPRECORD& b)
{
    return a.firstChar == b.firstChar && a.secondChar == b.secondChar && a.cmper == b.cmper && a.inci == b.inci;
}

// A row places its field inside the record's words and inside the caller's buffer of `capacity`
// bytes; rows that would reach outside either are left alone.
bool RowFits(const PREFERENCE_LOCATION_MAPRECORD& row, int32_t capacity)
{
    const int words = row.bytesize == 4 ? 2 : 1;
    return (row.bytesize == 2 || row.bytesize == 4) && row.offsetInInci >= 0 &&
           row.offsetInInci + words <= kWordsPerOtherRecord && row.structOffset >= 0 &&
           row.structOffset + row.bytesize <= capacity;
}

EDTGeneric LoadOtherRecord(const PREFERENCE_LOCATION_MAPRECORD& row)
{
    EDTGeneric record{};
    EDataID key = OtherKeyOf(row);
    int32_t size = kOtherRecordSize;
    gStavioFuncs.SX_LoadEData(OtherTagOf(row), &key, &record, &size, kPluginApiVersion);
    return record;
}

int32_t ReadFourByteField(const EDTGeneric& record, const PREFERENCE_LOCATION_MAPRECORD& row)
{
    const uint16_t high = static_cast<uint16_t>(record.words[row.offsetInInci]);
    const uint16_t low = static_cast<uint16_t>(record.words[row.offsetInInci + 1]);
    int32_t value = static_cast<int32_t>((static_cast<uint32_t>(high) << 16) | low);
    if (row.conversion == MC_WINFOURBYTE) {
        swapFB(&value);
    }
    return value;
}

int16_t ReadTwoByteField(const EDTGeneric& record, const PREFERENCE_LOCATION_MAPRECORD& row)
{
    const int16_t word = record.words[row.offsetInInci];
    switch (row.conversion) {
        case MC_INVERTBOOL: return word == 0 ? 1 : 0;
        case MC_SIGNEDBYTE: return static_cast<int16_t>(static_cast<uint16_t>(word) & 0x00ff);
        default: return word;
    }
}

void StoreField(const EDTGeneric& record, const PREFERENCE_LOCATION_MAPRECORD& row, char* buffer)
{
    if (row.bytesize == 4) {
        const int32_t value = ReadFourByteField(record, row);
        std::memcpy(buffer + row.structOffset, &value, sizeof(value));
    } else {
        const int16_t value = ReadTwoByteField(record, row);
        std::memcpy(buffer + row.structOffset, &value, sizeof(value));
    }
}

// Puts one field of the caller's record back into the record's words; true when a word changed.
bool PutField(const char* buffer, const PREFERENCE_LOCATION_MAPRECORD& row, EDTGeneric& record)
{
    int16_t* words = record.words;
    const int k = row.offsetInInci;
    if (row.bytesize == 4) {
        int32_t value = 0;
        std::memcpy(&value, buffer + row.structOffset, sizeof(value));
        if (row.conversion == MC_WINFOURBYTE) {
            swapFB(&value);
        }
        const auto bits = static_cast<uint32_t>(value);
        const auto high = static_cast<int16_t>(bits >> 16);
        const auto low = static_cast<int16_t>(bits & 0xffff);
        if (words[k] == high && words[k + 1] == low) {
            return false;
        }
        words[k] = high;
        words[k + 1] = low;
        return true;
    }
    int16_t value = 0;
    std::memcpy(&value, buffer + row.structOffset, sizeof(value));
    int16_t stored = value;
    switch (row.conversion) {
        case MC_INVERTBOOL:
            if ((words[k] != 0) != (value != 0)) {
                return false;   // the kept flag already says the opposite of the field
            }
            stored = value == 0 ? 1 : 0;
            break;
        case MC_SIGNEDBYTE:
            stored = static_cast<int16_t>((static_cast<uint16_t>(words[k]) & 0xff00) |
                                          (static_cast<uint16_t>(value) & 0x00ff));
            break;
        default: break;
    }
    if (words[k] == stored) {
        return false;
    }
    words[k] = stored;
    return true;
}

void ClearProcessed(PREFERENCE_LOCATION_MAPRECORD* map, int16_t rows)
{
    for (int16_t i = 0; i < rows; ++i) {
        map[i].bProcessed = 0;
    }
}

// Hands each row that shares map[first]'s "other" record and is not handled yet to `handleRow`,
// in map order, and marks it handled.
template <typename HandleRow>
void HandleGroup(PREFERENCE_LOCATION_MAPRECORD* map, int16_t rows, int16_t first, HandleRow handleRow)
{
    for (int16_t j = first; j < rows; ++j) {
        if (map[j].bProcessed != 0 || !SameRecord(map[first], map[j])) {
            continue;
        }
        handleRow(map[j]);
        map[j].bProcessed = 1;
    }
}

}   // namespace

bool mapPrefStruct(EXTAG tag, int16_t cmper, PREFERENCE_LOCATION_MAPRECORD** map, int16_t* rows)
{
    PREFERENCE_LOCATION_MAPRECORD* found = nullptr;
    int16_t count = 0;
    if (tag == kTagPlaybackPrefs) {
        found = EDTPlaybackPrefs_MAP_ARRAY;
        count = RowCount(EDTPlaybackPrefs_MAP_ARRAY);
    } else if (tag == kTagPianoBracePrefs) {
        found = EDTPianoBracePrefs_MAP_ARRAY;
        count = RowCount(EDTPianoBracePrefs_MAP_ARRAY);
    } else if (tag == kTagPageFormatPrefs && cmper == 0) {
        found = EDTPageFormatPrefsScore_MAP_ARRAY;
        count = RowCount(EDTPageFormatPrefsScore_MAP_ARRAY);
    }
    if (found == nullptr) {
        return false;
    }
    if (map != nullptr) {
        *map = found;
    }
    if (rows != nullptr) {
        *rows = count;
    }
    return true;
}

bool mapPrefTag(EXTAG tag, int16_t cmper, EXTAG* otherTag, int16_t* count, int16_t* firstInci)
{
    if (otherTag != nullptr) {
        *otherTag = 0;
    }
    for (const ArrayMapRow& row : kArrayMap) {
        if (row.prefTag != tag || !CmperMatches(row, cmper)) {
            continue;
        }
        if (otherTag != nullptr) {
            *otherTag = row.otherTag;
        }
        if (count != nullptr) {
            *count = row.count;
        }
        if (firstInci != nullptr) {
            *firstInci = row.inciFromCmper ? static_cast<int16_t>(cmper - 1) : 0;
        }
        return true;
    }
    return false;
}

int32_t fragmentStructLoad(char* buffer, int32_t* size, PREFERENCE_LOCATION_MAPRECORD* map, int16_t rows)
{
    if (size == nullptr) {
        return 0;
    }
    const int32_t capacity = *size;
    int32_t total = 0;
    for (int16_t i = 0; i < rows; ++i) {
        total += map[i].bytesize;
    }
    *size = total;
    if (buffer == nullptr) {
        return 1;
    }
    ClearProcessed(map, rows);
    for (int16_t i = 0; i < rows; ++i) {
        if (map[i].bProcessed != 0) {
            continue;
        }
        const EDTGeneric record = LoadOtherRecord(map[i]);
        HandleGroup(map, rows, i, [&](const PREFERENCE_LOCATION_MAPRECORD& row) {
            if (RowFits(row, capacity)) {
                StoreField(record, row, buffer);
            }
        });
    }
    return 1;
}

int32_t fragmentStructSave(const char* buffer, int32_t size, PREFERENCE_LOCATION_MAPRECORD* map, int16_t rows)
{
    if (buffer == nullptr || size < 2 * rows) {
        return 0;
    }
    ClearProcessed(map, rows);
    for (int16_t i = 0; i < rows; ++i) {
        if (map[i].bProcessed != 0) {
            continue;
        }
        EDTGeneric record = LoadOtherRecord(map[i]);
        bool changed = false;
        HandleGroup(map, rows, i, [&](const PREFERENCE_LOCATION_MAPRECORD& row) {
            if (RowFits(row, size) && PutField(buffer, row, record)) {
                changed = true;
            }
        });
        if (changed) {
            EDataID key = OtherKeyOf(map[i]);
            gStavioFuncs.SX_SaveEData(OtherTagOf(map[i]), &key, &record, kOtherRecordSize, kPluginApiVersion);
        }
    }
    return 1;
}

void swapFB(int32_t* value)
{
    const auto bits = static_cast<uint32_t>(*value);
    *value = static_cast<int32_t>((bits << 16) | (bits >> 16));
}
