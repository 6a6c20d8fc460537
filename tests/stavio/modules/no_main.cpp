// A loadable library that is no plug-in: it has no main entry.
#include <cstdint>

extern "C" __attribute__((visibility("default"))) int32_t NotAPlugInEntry()
{
    return 1;
}
