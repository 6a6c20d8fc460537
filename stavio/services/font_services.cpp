// Slots 25 and 26: the document's font table.
#include "stavio/services/exported_functions.h"

#include <algorithm>
#include <cstring>
#include <string>

using stavio::Host;
using stavio::services::OnCurrentHost;

extern "C" {

// The name of a font number, zero-terminated and cut to `capacity` bytes; 0 (and an empty
// name where there is room) for a number not in the table.
int32_t SX_FontNumToName(int16_t fontNum, char* name, int32_t capacity, EVERSION)
{
    if (name == nullptr || capacity <= 0) {
        return 0;
    }
    name[0] = '\0';
    return OnCurrentHost<int32_t>(0, [&](Host& host) {
        const std::string* known = host.document().Fonts().NameOf(fontNum);
        if (known == nullptr) {
            return 0;
        }
        const size_t count = std::min(known->size(), static_cast<size_t>(capacity) - 1);
        std::memcpy(name, known->data(), count);
        name[count] = '\0';
        return 1;
    });
}

// The number of a font name; a name the table lacks is added with the next number. -1 for no
// name, an empty one or one too long to keep.
int16_t SX_FontNameToNum(const char* name, EVERSION)
{
    if (name == nullptr) {
        return -1;
    }
    const size_t length = strnlen(name, stavio::FontTable::kMaxNameLength + 1);
    return OnCurrentHost<int16_t>(
        -1, [&](Host& host) { return host.document().Fonts().NumberOf(std::string(name, length)).value_or(-1); });
}

}   // extern "C"
