// A module whose main entry refuses to start.
#include "sdk/funcs.h"

extern "C" __attribute__((visibility("default"))) int32_t main(StavioFuncs*, SXPluginFuncs*)
{
    return 0;
}
