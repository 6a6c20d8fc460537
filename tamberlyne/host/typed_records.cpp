#include "tamberlyne/host/typed_records.h"

#include "sdk/tags.h"
#include "tamberlyne/host/versioned_records.h"

#include <cstring>

namespace {

// The measure-spec pair names the 24-byte layout by an old version; the version correction
// turns it into the one the host knows for that size.
constexpr EVERSION kMeasureSpecVersion = 0x05000000;
constexpr int32_t kInstrumentUsedSize = 24;
constexpr int32_t kMeasureSpecSize = 24;
constexpr uint16_t kNewCmper = 65535;

bool Succeeded(int32_t result)
{
    return static_cast<int16_t>(result) != 0;
}

EDataID OtherKey(int cmper, int inci)
{
    EDataID key{};
    key.other.cmper = static_cast<uint16_t>(cmper);
    key.other.inci = static_cast<int16_t>(inci);
    return key;
}

EDataID DetailKey(int c1, int c2, int inci)
{
    EDataID key{};
    key.detail.cmper1 = static_cast<uint16_t>(c1);
    key.detail.cmper2 = static_cast<uint16_t>(c2);
    key.detail.inci = static_cast<int16_t>(inci);
    return key;
}

EDataID GlobalKey(int number)
{
    EDataID key{};
    key.words[0] = static_cast<uint16_t>(number);
    return key;
}

}   // namespace

bool sx_loadIU(int16_t system, int16_t slot, EDTInstrumentUsed& record)
{
    EDataID key = OtherKey(system, slot);
    int32_t size = kInstrumentUsedSize;
    return Succeeded(SX_LoadEData(kTagInstrumentUsed, &key, &record, &size, kPluginApiVersion));
}

bool sx_saveIU(int16_t system, int16_t slot, EDTInstrumentUsed record)
{
    EDataID key = OtherKey(system, slot);
    return Succeeded(SX_SaveEData(kTagInstrumentUsed, &key, &record, kInstrumentUsedSize, kPluginApiVersion));
}

bool sx_deleteIU(int16_t system, int16_t slot)
{
    EDataID key = OtherKey(system, slot);
    return Succeeded(SX_DeleteEData(kTagInstrumentUsed, &key, kPluginApiVersion));
}

bool sx_loadtextexpression(int16_t id, char* buffer, int32_t& size, EVERSION version)
{
    EDataID key = OtherKey(id, 0);
    return Succeeded(SX_LoadEData(kTagTextExpression, &key, buffer, &size, version));
}

bool sx_loadmeasurespec(int16_t meas, EDTMeasureSpec& record)
{
    EDataID key = OtherKey(meas, 0);
    int32_t size = kMeasureSpecSize;
    return Succeeded(SX_LoadEData(kTagMeasureSpec, &key, &record, &size, kMeasureSpecVersion));
}

bool sx_savemeasurespec(int16_t meas, EDTMeasureSpec& record)
{
    EDataID key = OtherKey(meas, 0);
    return Succeeded(SX_SaveEData(kTagMeasureSpec, &key, &record, kMeasureSpecSize, kMeasureSpecVersion));
}

bool sx_loaddetail(EXTAG tag, int c1, int c2, void* buffer, int size, int inci, EVERSION version)
{
    EDataID key = DetailKey(c1, c2, inci);
    int32_t inOut = size;
    return Succeeded(SX_LoadEData(tag, &key, buffer, &inOut, version));
}

bool sx_savedetail(EXTAG tag, int c1, int c2, const void* buffer, int size, int inci, EVERSION version)
{
    EDataID key = DetailKey(c1, c2, inci);
    return Succeeded(SX_SaveEData(tag, &key, buffer, size, version));
}

bool sx_loadother(EXTAG tag, int cmper, int inci, void* buffer, int size, EVERSION version)
{
    EDataID key = OtherKey(cmper, inci);
    int32_t inOut = size;
    return Succeeded(SX_LoadEData(tag, &key, buffer, &inOut, version));
}

bool sx_saveother(EXTAG tag, int cmper, int inci, const void* buffer, int size, EVERSION version)
{
    EDataID key = OtherKey(cmper, inci);
    return Succeeded(SX_SaveEData(tag, &key, buffer, size, version));
}

bool sx_createother(EXTAG tag, int& cmper, int& inci, const void* buffer, int size, EVERSION version)
{
    if (cmper == kNewCmper) {
        inci = 0;
    }
    EDataID key = OtherKey(cmper & 0xffff, inci & 0xffff);
    const int32_t result = SX_CreateEData(tag, &key, buffer, size, version);
    cmper = key.other.cmper;
    inci = static_cast<uint16_t>(key.other.inci);
    return Succeeded(result);
}

bool sx_deleteother(EXTAG tag, int cmper, int inci)
{
    EDataID key = OtherKey(cmper, inci);
    return Succeeded(SX_DeleteEData(tag, &key, kPluginApiVersion));
}

bool sx_loadglobal(EXTAG tag, int number, void* buffer, int size)
{
    if (buffer != nullptr && size > 0) {
        std::memset(buffer, 0, static_cast<size_t>(size));
    }
    EDataID key = GlobalKey(number);
    int32_t inOut = size;
    return Succeeded(SX_LoadEData(tag, &key, buffer, &inOut, kPluginApiVersion));
}

bool sx_saveglobal(EXTAG tag, int number, void* buffer, int size)
{
    EDataID key = GlobalKey(number);
    return Succeeded(SX_SaveEData(tag, &key, buffer, size, kPluginApiVersion));
}
