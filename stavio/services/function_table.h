// The table of host functions a plug-in's `main` receives, for one pose of the host.
#pragma once

#include "sdk/funcs.h"
#include "stavio/host.h"

namespace stavio::services {

// Newer pose: every slot 2-105 filled (62, 77 and 78, which have no name, answer 0).
// Older pose: only the slots a host of version 0x08FFFFFF had (2-76); 77-105, among them
// SX_IsMachO, stay empty.
StavioFuncs BuildFunctionTable(HostPose pose);

}   // namespace stavio::services
