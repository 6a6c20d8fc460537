#include "tamberlyne/host/versioned_records.h"

#include "sdk/tags.h"
#include "tamberlyne/host/gateway.h"
#include "tamberlyne/host/preference_maps.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace {

constexpr int32_t kStaffSystemDefSize = 66;
constexpr int32_t kZeroFilled48Size = 48;
constexpr int32_t kZeroFilled108Size = 108;

constexpr EVERSION kMapPreferencesOnSaveAbove = 0x07ffffff;

void WarnDeveloper(const char* text)
{
    SX_AlertMessage(nullptr, 0, 0, text, kPluginApiVersion);
}

// A record whose 2004 layout (`record2004`) has a size of its own: the older size always means
// the older layout, and the 2004 size asked for under an older version is the caller's mistake,
// put right with a warning.
void CorrectFor2004Layout(int32_t size, int32_t olderSize, int32_t size2004, const char* record2004, EVERSION& version)
{
    if (size == olderSize && version > 0x08000000) {
        version = 0x08000000;
    } else if (size == size2004 && version <= 0x08ffffff) {
        const std::string warning =
            std::string("Warning to plug-in developer: ") + record2004 + " used with wrong version parameter";
        WarnDeveloper(warning.c_str());
        version = 0x09000000;
    }
}

uint16_t CmperOf(const EDataID* key)
{
    return key != nullptr ? key->words[0] : 0;
}

EDataID OtherKey(uint16_t cmper, int16_t inci)
{
    EDataID key{};
    key.other.cmper = cmper;
    key.other.inci = inci;
    return key;
}

int32_t HostLoad(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version)
{
    return gStavioFuncs.SX_LoadEData(tag, key, buffer, size, version);
}

bool AllZero(const unsigned char* bytes, size_t count)
{
    return std::all_of(bytes, bytes + count, [](unsigned char byte) { return byte == 0; });
}

// Two record kinds are zeroed before the host sees the buffer, so that a load that fails half
// way can still be told apart from one that found nothing. Answers the result when the host
// failed; otherwise the load goes on as for any other record.
bool LoadPreZeroed(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version, int32_t zeroSize,
                   int32_t& result)
{
    const int32_t wanted = size != nullptr ? *size : 0;
    const size_t count = wanted > 0 ? static_cast<size_t>(std::min(wanted, zeroSize)) : 0;
    std::memset(buffer, 0, count);
    if (HostLoad(tag, key, buffer, size, version) != 0) {
        return false;
    }
    result = AllZero(static_cast<const unsigned char*>(buffer), count) ? 0 : 1;
    return true;
}

// A staff system definition the host does not hold exists all the same when its 12-byte "other"
// record does: it is then delivered empty.
bool LoadStaffSystemDef(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version, int32_t& result)
{
    if (HostLoad(tag, key, buffer, size, version) != 0) {
        return false;
    }
    EDataID otherKey = OtherKey(CmperOf(key), 0);
    EDTGeneric other{};
    int32_t otherSize = kOtherRecordSize;
    if (HostLoad(kTagStaffSystemDefOther, &otherKey, &other, &otherSize, kPluginApiVersion) == 0) {
        result = 0;
        return true;
    }
    if (buffer != nullptr) {
        const int32_t count = std::clamp(size != nullptr ? *size : 0, 0, kStaffSystemDefSize);
        std::memset(buffer, 0, static_cast<size_t>(count));
    } else if (size != nullptr) {
        *size = kStaffSystemDefSize;
    }
    result = 1;
    return true;
}

int32_t LoadPreferenceArray(const PreferenceArrayMap& map, void* buffer, int32_t* size)
{
    const int32_t total = map.count * kOtherRecordSize;
    if (buffer == nullptr) {
        if (size != nullptr) {
            *size = total;
        }
        return 1;
    }
    if (size == nullptr || *size < total) {
        return 0;
    }
    auto* out = static_cast<unsigned char*>(buffer);
    for (int16_t i = 0; i < map.count; ++i) {
        EDataID key = OtherKey(kPreferenceCmper, static_cast<int16_t>(map.firstInci + i));
        EDTGeneric piece{};
        int32_t pieceSize = kOtherRecordSize;
        HostLoad(map.otherTag, &key, &piece, &pieceSize, kPluginApiVersion);   // a missing piece stays zero
        std::memcpy(out + i * kOtherRecordSize, &piece, kOtherRecordSize);
    }
    *size = total;
    return 1;
}

int32_t SavePreferenceArray(const PreferenceArrayMap& map, const void* buffer, int32_t size)
{
    const int32_t total = map.count * kOtherRecordSize;
    if (buffer == nullptr || size < total) {
        return 0;
    }
    const auto* in = static_cast<const unsigned char*>(buffer);
    for (int16_t i = 0; i < map.count; ++i) {
        EDataID key = OtherKey(kPreferenceCmper, static_cast<int16_t>(map.firstInci + i));
        gStavioFuncs.SX_SaveEData(map.otherTag, &key, in + i * kOtherRecordSize, kOtherRecordSize, kPluginApiVersion);
    }
    return 1;
}

}   // namespace

void HandleOrmegaVersion(EXTAG tag, int32_t size, EVERSION& version)
{
    if (size == 0) {
        return;
    }
    switch (tag) {
        case kTagMeasureSpec:
            if (size == 24) {
                version = 0x09000000;
            } else if (size == 26 && version <= 0x09ffffff) {
                version = 0x0a000000;
            }
            break;
        case kTagStaffSystemSpec:
        case kTagStaffSystemSpecAlt:
            if (size == 22) {
                version = 0x05000000;
            } else if (size == 24 && version <= 0x05ffffff) {
                version = 0x06000000;
            } else if (size == 28 && version <= 0x09ffffff) {
                version = 0x0a000000;
            }
            break;
        case kTagStaffSpec:
            if (size == 66) {
                version = 0x05000000;
            } else if (size == 102) {
                version = 0x08000000;
            }
            break;
        case kTagTextBlock: CorrectFor2004Layout(size, 48, 26, "EDTTextBlock2004", version); break;
        case kTagShapeExpression: CorrectFor2004Layout(size, 12, 34, "EDTShapeExpression2004", version); break;
        case kTagGfhold: CorrectFor2004Layout(size, 12, 10, "EDTGfhold2004", version); break;
        default: break;
    }
}

int32_t SX_LoadEData(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version)
{
    EVERSION corrected = version;
    HandleOrmegaVersion(tag, size != nullptr ? *size : 0, corrected);

    // These three kinds may answer before the general path; when the host succeeds they go on
    // and are loaded a second time below.
    int32_t result = 0;
    if (tag == kTagZeroFilled48 && buffer != nullptr) {
        if (LoadPreZeroed(tag, key, buffer, size, corrected, kZeroFilled48Size, result)) {
            return result;
        }
    } else if (tag == kTagZeroFilled108 && buffer != nullptr) {
        if (LoadPreZeroed(tag, key, buffer, size, corrected, kZeroFilled108Size, result)) {
            return result;
        }
    } else if (tag == kTagStaffSystemDef) {
        if (LoadStaffSystemDef(tag, key, buffer, size, corrected, result)) {
            return result;
        }
    }

    const int16_t cmper = static_cast<int16_t>(CmperOf(key));
    PREFERENCE_LOCATION_MAPRECORD* fieldMap = nullptr;
    int16_t rows = 0;
    if (mapPrefStruct(tag, cmper, &fieldMap, &rows)) {
        return fragmentStructLoad(static_cast<char*>(buffer), size, fieldMap, rows);
    }
    PreferenceArrayMap arrayMap;
    if (mapPrefTag(tag, cmper, &arrayMap.otherTag, &arrayMap.count, &arrayMap.firstInci)) {
        return LoadPreferenceArray(arrayMap, buffer, size);
    }
    return HostLoad(tag, key, buffer, size, corrected);
}

int32_t SX_SaveEData(EXTAG tag, EDataID* key, const void* buffer, int32_t size, EVERSION version)
{
    EVERSION corrected = version;
    HandleOrmegaVersion(tag, size, corrected);
    // Only callers that know the newer hosts get their preferences split; older callers' saves
    // go to the host as they are.
    if (version > kMapPreferencesOnSaveAbove) {
        const int16_t cmper = static_cast<int16_t>(CmperOf(key));
        PREFERENCE_LOCATION_MAPRECORD* fieldMap = nullptr;
        int16_t rows = 0;
        if (mapPrefStruct(tag, cmper, &fieldMap, &rows)) {
            return fragmentStructSave(static_cast<const char*>(buffer), size, fieldMap, rows);
        }
        PreferenceArrayMap arrayMap;
        if (mapPrefTag(tag, cmper, &arrayMap.otherTag, &arrayMap.count, &arrayMap.firstInci)) {
            return SavePreferenceArray(arrayMap, buffer, size);
        }
    }
    return gStavioFuncs.SX_SaveEData(tag, key, buffer, size, corrected);
}

int32_t SX_CreateEData(EXTAG tag, EDataID* key, const void* buffer, int32_t size, EVERSION version)
{
    HandleOrmegaVersion(tag, size, version);
    return gStavioFuncs.SX_CreateEData(tag, key, buffer, size, version);
}

int32_t SX_DeleteEData(EXTAG tag, EDataID* key, EVERSION version)
{
    return gStavioFuncs.SX_DeleteEData(tag, key, version);
}

int32_t SX_PreviousEData(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version)
{
    HandleOrmegaVersion(tag, size != nullptr ? *size : 0, version);
    return gStavioFuncs.SX_PreviousEData(tag, key, buffer, size, version);
}

int32_t SX_NextEData(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version)
{
    HandleOrmegaVersion(tag, size != nullptr ? *size : 0, version);
    return gStavioFuncs.SX_NextEData(tag, key, buffer, size, version);
}
