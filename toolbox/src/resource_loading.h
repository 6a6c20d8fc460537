// Loading a resource file with the status the resource chain needs.
#pragma once

#include "toolbox/resources.h"

#include <string>

namespace toolbox {

// kNoErr, the file system's status when the file cannot be read, kBadResourceFile when it does
// not parse, kMemFull. `error` names the file ("<path>: <what>" or "<path>:<line>: <what>").
OSErr LoadResourceFileStatus(const std::string& path, ResourceFile& file, std::string& error);

}   // namespace toolbox
