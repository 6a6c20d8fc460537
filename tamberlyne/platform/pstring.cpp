#include "tamberlyne/platform/pstring.h"

#include <algorithm>
#include <cstring>

void c2p(unsigned char* dst, const char* text)
{
    const size_t length = std::min<size_t>(std::strlen(text), 255);
    dst[0] = static_cast<unsigned char>(length);
    std::memcpy(dst + 1, text, length);
}

int ptocs(unsigned char* text)
{
    const int length = text[0];
    std::memmove(text, text + 1, static_cast<size_t>(length));
    text[length] = 0;
    return length;
}

void Pstr_Pstr(const unsigned char* src, unsigned char* dst)
{
    for (int i = src[0]; i >= 0; --i) {
        dst[i] = src[i];
    }
}

std::string PstrToString(const unsigned char* text)
{
    return std::string(reinterpret_cast<const char*>(text + 1), text[0]);
}
