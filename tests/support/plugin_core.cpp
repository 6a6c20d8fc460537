#include "tests/support/plugin_core.h"

#include "tamberlyne/host/gateway.h"
#include "tamberlyne/host/startup.h"
#include "tests/support/test_support.h"
#include "toolbox/resources.h"

namespace support {

SXPluginFuncs StartPluginCore(StavioFuncs table)
{
    gStavioFuncs = StavioFuncs{};
    gStavioFuncs.size = sizeof(StavioFuncs);
    StavioEditDepth = 0;
    MassEditDepth = 0;
    SXPluginFuncs reply{};
    EXPECT_EQ(PluginMain(&table, &reply), 1);
    return reply;
}

SXPluginFuncs StartPluginCore(stavio::Host& host)
{
    return StartPluginCore(host.FunctionTable());
}

void OpenBundleResources()
{
    toolbox::FileSpec resources;
    toolbox::MakeFileSpec(BundlePath() + "/Resources", "Tamberlyne.rsrc", resources);
    EXPECT_GE(toolbox::OpenResFile(resources, true), 0) << BundleResourcePath();
}

}   // namespace support
