// Turning the system's error numbers into toolbox status numbers, and status numbers into words.
#pragma once

#include "toolbox/errors.h"

#include <string>

namespace toolbox {

// `folder` is the folder of the item the failed call named: ENOENT means a missing file when the
// folder exists and a missing folder otherwise.
OSErr OSErrFromErrno(int error, const std::string& folder);

// A few words for people: "file not found", "permission denied" ...
std::string DescribeOSErr(OSErr err);

}   // namespace toolbox
