// Symbol lookup in the running application (the process's global scope).
#pragma once

namespace toolbox {

// The address of the function exported under `name` by the application or a library it loaded,
// or null.
void* FunctionPointerForName(const char* name);

}   // namespace toolbox
