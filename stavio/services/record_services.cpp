// Slots 9-14: the document's records, through its layout registry.
#include "stavio/services/exported_functions.h"

using stavio::Host;
using stavio::services::OnCurrentHost;

extern "C" {

int32_t SX_LoadEData(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version)
{
    return OnCurrentHost<int32_t>(
        0, [&](Host& host) { return host.document().LoadRecord(tag, key, buffer, size, version); });
}

int32_t SX_SaveEData(EXTAG tag, const EDataID* key, const void* buffer, int32_t size, EVERSION version)
{
    return OnCurrentHost<int32_t>(
        0, [&](Host& host) { return host.document().SaveRecord(tag, key, buffer, size, version); });
}

int32_t SX_CreateEData(EXTAG tag, EDataID* key, const void* buffer, int32_t size, EVERSION version)
{
    return OnCurrentHost<int32_t>(
        0, [&](Host& host) { return host.document().CreateRecord(tag, key, buffer, size, version); });
}

int32_t SX_DeleteEData(EXTAG tag, const EDataID* key, EVERSION version)
{
    return OnCurrentHost<int32_t>(0, [&](Host& host) { return host.document().DeleteRecord(tag, key, version); });
}

int32_t SX_PreviousEData(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version)
{
    return OnCurrentHost<int32_t>(
        0, [&](Host& host) { return host.document().PreviousRecord(tag, key, buffer, size, version); });
}

int32_t SX_NextEData(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version)
{
    return OnCurrentHost<int32_t>(
        0, [&](Host& host) { return host.document().NextRecord(tag, key, buffer, size, version); });
}

}   // extern "C"
