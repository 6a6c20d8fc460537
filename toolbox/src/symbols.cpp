#include "toolbox/symbols.h"

#include <dlfcn.h>

namespace toolbox {

void* FunctionPointerForName(const char* name)
{
    if (name == nullptr || name[0] == '\0') return nullptr;
    return dlsym(RTLD_DEFAULT, name);
}

}   // namespace toolbox
