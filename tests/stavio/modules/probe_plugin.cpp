// A small plug-in that uses the host through the binary interface the way a real one does:
// the name path or the copy path by host version, texts from its own resource file, an alert,
// an edit bracket, a new staff and a dialog request with the handler in the form the pose
// expects. The tests read back what it saw through the Probe... functions.
#include "sdk/sdk.h"
#include "toolbox/resources.h"

#include <dlfcn.h>

#include <cstring>

#define PROBE_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

StavioFuncs gTable{};
bool gNamePath = false;
int gNamesFound = 0;
uint32_t gHostVersion = 0;
int gTerminateCalls = 0;

int32_t DialogHandler(EDLG, uint32_t, intptr_t, intptr_t, void*)
{
    return 0;
}
SXTransitionVector gTransitionVector{&DialogHandler, nullptr};

template <typename Function>
void Resolve(Function& slot, const char* name)
{
    slot = reinterpret_cast<Function>(dlsym(RTLD_DEFAULT, name));
    gNamesFound += slot != nullptr ? 1 : 0;
}

void CopyString(int16_t index, char* field)
{
    auto text = toolbox::GetIndString(20000, index);
    std::strncpy(field, text ? text->c_str() : "", 63);
    field[63] = '\0';
}

}   // namespace

PROBE_EXPORT uint32_t StavioExtensionVersion(uint32_t hostVersion)
{
    gHostVersion = hostVersion;
    return kPluginInterfaceVersion;
}

PROBE_EXPORT int32_t StavioExtensionInit(EWND, uint32_t* flags)
{
    *flags = 0;
    return 1;
}

PROBE_EXPORT int32_t StavioExtensionEnumerate(void*, int32_t menuIndex, SXT_MENUSTRING_PACKET* packet)
{
    if (menuIndex > 0 || !toolbox::GetIndString(20000, 1)) return 0;
    CopyString(1, packet->menuItem);
    CopyString(2, packet->msgString);
    CopyString(3, packet->undoString);
    return 1;
}

PROBE_EXPORT int32_t StavioExtensionGetMenuStatus(void*)
{
    return 1;
}

PROBE_EXPORT int32_t StavioExtensionInvoke(EWND window, uint32_t, const EREGION* selection, const EREGION*)
{
    if (selection == nullptr &&
        gTable.SX_AlertMessage(window, kAlertQuestion, 0x4E210001, nullptr, kPluginApiVersion) != kAlertAnswerYes) {
        return 0;
    }
    gTable.SX_StartStavioEdit("Probe Edit", kPluginApiVersion);
    EDataID key{};
    key.other.cmper = 0xFFFF;
    gTable.SX_CreateEData(kTagStaffSpec, &key, nullptr, sizeof(EDTStaffSpec2003), kPluginApiVersion);
    gTable.SX_EndStavioEdit(kPluginApiVersion);
    const bool machO = gTable.SX_IsMachO != nullptr && gTable.SX_IsMachO(kPluginApiVersion) != 0;
    static uint32_t flags = 0;
    void* handler = machO ? reinterpret_cast<void*>(&DialogHandler) : static_cast<void*>(&gTransitionVector);
    gTable.SX_Dialog(20129, handler, nullptr, 1, &flags, kPluginApiVersion);
    return 1;
}

PROBE_EXPORT void StavioExtensionTerminate()
{
    ++gTerminateCalls;
}

PROBE_EXPORT int32_t main(StavioFuncs* host, SXPluginFuncs* reply)
{
    if (host == nullptr || reply == nullptr) return 0;
    gTable.size = host->size;
    gTable.version = host->version;
    gNamePath = host->version >= kHostVersionNamePath;
    if (gNamePath) {
        Resolve(gTable.SX_AlertMessage, "SX_AlertMessage");
        Resolve(gTable.SX_StartStavioEdit, "SX_StartStavioEdit");
        Resolve(gTable.SX_EndStavioEdit, "SX_EndStavioEdit");
        Resolve(gTable.SX_CreateEData, "SX_CreateEData");
        Resolve(gTable.SX_Dialog, "SX_Dialog");
        Resolve(gTable.SX_IsMachO, "SX_IsMachO");
        Resolve(gTable.SX_GetDlgCntl, "SX_GetDlgCntl");
        Resolve(gTable.SX_SetOrmegaDocumentDirty, "SX_SetOrmegaDocumentDirty");
    } else {
        std::memcpy(reinterpret_cast<char*>(&gTable) + SlotOffset(2),
                    reinterpret_cast<const char*>(host) + SlotOffset(2), SlotOffset(77) - SlotOffset(2));
        reply->fpGetversion = &StavioExtensionVersion;
        reply->fpInit = &StavioExtensionInit;
        reply->fpEnumerate = &StavioExtensionEnumerate;
        reply->fpInvoke = &StavioExtensionInvoke;
        reply->fpTerminate = &StavioExtensionTerminate;
        reply->fpGetMenuStatus = &StavioExtensionGetMenuStatus;
    }
    reply->size = 32;
    reply->version = kPluginApiVersion;
    return 1;
}

PROBE_EXPORT int ProbeUsedNamePath()
{
    return gNamePath ? 1 : 0;
}
PROBE_EXPORT int ProbeNamesFound()
{
    return gNamesFound;
}
PROBE_EXPORT uint32_t ProbeHostVersion()
{
    return gHostVersion;
}
PROBE_EXPORT int ProbeTerminateCalls()
{
    return gTerminateCalls;
}
PROBE_EXPORT void* ProbeDialogHandler()
{
    return reinterpret_cast<void*>(&DialogHandler);
}
