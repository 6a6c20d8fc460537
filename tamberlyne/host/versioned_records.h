// Host data records through the host table, with the caller's version word corrected for the
// record layouts that callers commonly mislabel, and preference records that newer hosts keep
// as 12-byte "other" records served in their old whole-record form.
#pragma once

#include "sdk/types.h"

// Loads a record. `size` is in-out: capacity in, bytes delivered out; a null buffer asks only
// for the size. Non-zero on success.
int32_t SX_LoadEData(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version);
// Saves (replaces or adds) a record. Non-zero on success.
int32_t SX_SaveEData(EXTAG tag, EDataID* key, const void* buffer, int32_t size, EVERSION version);
// Creates a record; the host writes the key it chose into `key`.
int32_t SX_CreateEData(EXTAG tag, EDataID* key, const void* buffer, int32_t size, EVERSION version);
int32_t SX_DeleteEData(EXTAG tag, EDataID* key, EVERSION version);
// Step to the record before / after `key`; the host writes the key it reached into `key`.
int32_t SX_PreviousEData(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version);
int32_t SX_NextEData(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version);

// The size tells which layout a caller really holds: a size known to be older forces the version
// down, one known to be newer forces it up. Three mislabels of the newest layouts also warn the
// plug-in's developer. A size of 0 changes nothing.
void HandleOrmegaVersion(EXTAG tag, int32_t size, EVERSION& version);
