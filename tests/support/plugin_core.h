// The plug-in's code linked into a test and started on the reference host's table, as the
// host's loader starts the bundle.
#pragma once

#include "stavio/host.h"

namespace support {

// Empties the plug-in's function table and edit counters, as a fresh load has them, and runs
// its `main` on `table` (or `host`'s table); answers the plug-in's reply.
SXPluginFuncs StartPluginCore(StavioFuncs table);
SXPluginFuncs StartPluginCore(stavio::Host& host);

// Makes the bundle's resource file current, as the loader does for the plug-in's calls.
void OpenBundleResources();

}   // namespace support
