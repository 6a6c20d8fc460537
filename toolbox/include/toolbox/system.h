// The system-version query. The toolbox presents itself as a modern system, so version checks
// written for old systems take their modern branch.
#pragma once

#include <cstdint>

namespace toolbox {

constexpr uint32_t kModernSystemVersion = 0x1040;   // the 'sysv' answer: 10.4 or later

// Answers a system query by its four-character selector; 0 when the selector is unknown.
uint32_t SystemQuery(uint32_t selector);

}   // namespace toolbox
