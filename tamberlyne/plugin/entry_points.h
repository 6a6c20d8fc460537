// The plug-in's entry points. Each exists under two exported names; the short Ext_ name only
// forwards (an older host receives the Ext_ addresses in the start-up reply, a newer one looks
// the long names up). Signatures are those of the host's entry-point types.
#pragma once

#include "sdk/funcs.h"

#define TAMBERLYNE_EXPORT __attribute__((visibility("default")))

extern "C" {

// Remembers the host's version; answers the plug-in interface version.
TAMBERLYNE_EXPORT uint32_t StavioExtensionVersion(uint32_t hostVersion);
// Clears the flags word; answers 1.
TAMBERLYNE_EXPORT int32_t StavioExtensionInit(EWND window, uint32_t* flags);
// Index 0 (or below) fills the packet of the one menu command and answers 1; above 0 answers 0.
TAMBERLYNE_EXPORT int32_t StavioExtensionEnumerate(void* unused, int32_t menuIndex, SXT_MENUSTRING_PACKET* packet);
// Always enabled.
TAMBERLYNE_EXPORT int32_t StavioExtensionGetMenuStatus(void* unused);
// Runs the groove command on the selection; answers 1 when the score must be redrawn.
TAMBERLYNE_EXPORT int32_t StavioExtensionInvoke(EWND window, uint32_t unused, const EREGION* selection,
                                                const EREGION* document);
TAMBERLYNE_EXPORT void StavioExtensionTerminate();

TAMBERLYNE_EXPORT uint32_t Ext_getversion(uint32_t hostVersion);
TAMBERLYNE_EXPORT int32_t Ext_init(EWND window, uint32_t* flags);
TAMBERLYNE_EXPORT int32_t Ext_enumerate(void* unused, int32_t menuIndex, SXT_MENUSTRING_PACKET* packet);
TAMBERLYNE_EXPORT int32_t Ext_getmenustatus(void* unused);
TAMBERLYNE_EXPORT int32_t Ext_invoke(EWND window, uint32_t unused, const EREGION* selection, const EREGION* document);
TAMBERLYNE_EXPORT void Ext_terminate();

}   // extern "C"
