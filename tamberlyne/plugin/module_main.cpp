// The bundle's main entry, called once by the host right after loading, before any other entry
// point. It lives only in the loadable module: programs that link the plug-in's code directly
// have a main of their own and call PluginMain.
#include "tamberlyne/host/startup.h"
#include "tamberlyne/plugin/entry_points.h"

extern "C" TAMBERLYNE_EXPORT int32_t main(StavioFuncs* hostFuncs, SXPluginFuncs* reply)
{
    try {
        return PluginMain(hostFuncs, reply);
    } catch (...) {
        return 0;
    }
}
