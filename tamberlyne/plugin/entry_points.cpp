// Nothing crosses into the host as an exception: every entry point answers its failure value
// instead.
#include "tamberlyne/plugin/entry_points.h"

#include "tamberlyne/host/string_resources.h"
#include "tamberlyne/plugin/invocation.h"
#include "tamberlyne/plugin/plugin_globals.h"

namespace {

constexpr int32_t kMenuItemText = 0x4E200001;
constexpr int32_t kStatusMessageText = 0x4E200002;
constexpr int32_t kUndoText = 0x4E200003;
constexpr int16_t kPacketTextSize = 64;

}   // namespace

extern "C" {

uint32_t StavioExtensionVersion(uint32_t hostVersion)
{
    StavVersion = static_cast<int32_t>(hostVersion);
    return kPluginInterfaceVersion;
}

int32_t StavioExtensionInit(EWND /*window*/, uint32_t* flags)
{
    if (flags != nullptr) {
        *flags = 0;
    }
    return 1;
}

int32_t StavioExtensionEnumerate(void* /*unused*/, int32_t menuIndex, SXT_MENUSTRING_PACKET* packet)
{
    if (menuIndex > 0 || packet == nullptr) {
        return 0;   // one command only
    }
    try {
        PlugIn_GetStringResource(kMenuItemText, packet->menuItem, kPacketTextSize);
        PlugIn_GetStringResource(kStatusMessageText, packet->msgString, kPacketTextSize);
        PlugIn_GetStringResource(kUndoText, packet->undoString, kPacketTextSize);
    } catch (...) {
        return 0;
    }
    packet->useGetMenuStatus = 0;
    packet->needSelectedRegion = 0;
    return 1;
}

int32_t StavioExtensionGetMenuStatus(void* /*unused*/)
{
    return 1;
}

int32_t StavioExtensionInvoke(EWND window, uint32_t /*unused*/, const EREGION* selection, const EREGION* document)
{
    try {
        return InvokeGrooveCommand(window, selection, document);
    } catch (...) {
        return 0;
    }
}

void StavioExtensionTerminate()
{}

uint32_t Ext_getversion(uint32_t hostVersion)
{
    return StavioExtensionVersion(hostVersion);
}

int32_t Ext_init(EWND window, uint32_t* flags)
{
    return StavioExtensionInit(window, flags);
}

int32_t Ext_enumerate(void* unused, int32_t menuIndex, SXT_MENUSTRING_PACKET* packet)
{
    return StavioExtensionEnumerate(unused, menuIndex, packet);
}

int32_t Ext_getmenustatus(void* unused)
{
    return StavioExtensionGetMenuStatus(unused);
}

int32_t Ext_invoke(EWND window, uint32_t unused, const EREGION* selection, const EREGION* document)
{
    return StavioExtensionInvoke(window, unused, selection, document);
}

void Ext_terminate()
{
    StavioExtensionTerminate();
}

}   // extern "C"
