#include "tamberlyne/host/string_resources.h"

#include "tamberlyne/host/startup.h"
#include "tamberlyne/platform/pstring.h"
#include "toolbox/resources.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>

namespace {

// Looks the string up with the plug-in's resource file current, whatever the host has made
// current meanwhile, and restores the host's choice.
std::optional<std::string> LookUp(int32_t id)
{
    const toolbox::ResFileRef previous = toolbox::CurResFile();
    toolbox::UseResFile(gResFile);
    const auto list = static_cast<int16_t>(static_cast<uint32_t>(id) >> 16);
    const auto entry = static_cast<int16_t>(id & 0xffff);
    std::optional<std::string> text = list == 0 ? toolbox::GetString(entry) : toolbox::GetIndString(list, entry);
    toolbox::UseResFile(previous);
    return text;
}

}   // namespace

void HardGetPString(int32_t id, unsigned char* buf)
{
    const std::optional<std::string> text = LookUp(id);
    c2p(buf, text ? text->c_str() : "");
}

char* PlugIn_GetStringResource(int32_t id, char* dst, int16_t len)
{
    if (len <= 0) {
        return nullptr;
    }
    unsigned char text[256];
    HardGetPString(id, text);
    const int length = ptocs(text);
    const size_t count = std::min<size_t>(static_cast<size_t>(length) + 1, static_cast<size_t>(len));
    std::memcpy(dst, text, count);
    dst[len - 1] = 0;
    return dst;
}
