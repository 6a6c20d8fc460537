#include "toolbox/system.h"

namespace toolbox {

uint32_t SystemQuery(uint32_t selector)
{
    constexpr uint32_t kSystemVersionSelector = 0x73797376;   // 'sysv'
    return selector == kSystemVersionSelector ? kModernSystemVersion : 0;
}

}   // namespace toolbox
