#include "tamberlyne/host/startup.h"

#include "tamberlyne/host/gateway.h"
#include "tamberlyne/host/host_function_names.h"
#include "tamberlyne/host/table_slots.h"
#include "tamberlyne/plugin/entry_points.h"
#include "toolbox/folders.h"
#include "toolbox/symbols.h"

#include <string>

toolbox::ResFileRef gResFile = -1;
toolbox::FileSpec gStavioFSSpec;
const toolbox::FileSpec* gStavioBundle = nullptr;

namespace {

constexpr uint32_t kReplySize = 32;

// Host versions at which more of the table exists.
constexpr uint32_t kHasShowLayer = 0x04000106;         // slot 61 above this
constexpr uint32_t kHasDocumentCalls = 0x07ffffff;     // slots 62-76 above this
constexpr uint32_t kHasWindowCalls = 0x08ffffff;       // slots 79-100 above this (by name only)
constexpr uint32_t kHasMeasureCalls = 0x0affffff;      // slots 101-103 above this
constexpr uint32_t kHasDialogItemCalls = 0x0b01ffff;   // slots 104-105 above this

// The entry points an older host receives in the reply, in the reply's order.
struct EntryPointTemplate {
    SXGetVersionEntry getversion;
    SXInitEntry init;
    SXEnumerateEntry enumerate;
    SXInvokeEntry invoke;
    SXTerminateEntry terminate;
    SXGetMenuStatusEntry getmenustatus;
};

const EntryPointTemplate templateData = {
    Ext_getversion, Ext_init, Ext_enumerate, Ext_invoke, Ext_terminate, Ext_getmenustatus,
};

// Copies the slots [first, last] from the host's table, never past the size the host declares.
void CopySlots(const StavioFuncs& host, int first, int last)
{
    for (int slot = first; slot <= last; ++slot) {
        if (SlotOffset(slot + 1) > host.size) {
            return;
        }
        SetSlot(gStavioFuncs, slot, GetSlot(host, slot));
    }
}

void LookUpSlot(int slot)
{
    const char* name = HostFunctionName(slot);
    SetSlot(gStavioFuncs, slot, name != nullptr ? GetSXProc(name) : nullptr);
}

void LookUpSlots(int first, int last)
{
    for (int slot = first; slot <= last; ++slot) {
        LookUpSlot(slot);
    }
}

// An older host hands over its whole table; the parts it did not have yet are left empty.
void FillByCopy(const StavioFuncs& host, uint32_t version)
{
    CopySlots(host, 2, 60);
    if (version > kHasShowLayer) {
        CopySlots(host, 61, 61);
    }
    if (version > kHasDocumentCalls) {
        CopySlots(host, 62, 76);
    }
    // An older host's table ended at slot 76; these tests cannot pass below the name-path
    // version and are kept so that the two paths read alike.
    if (version > kHasMeasureCalls) {
        CopySlots(host, 101, 103);
    }
    if (version > kHasDialogItemCalls) {
        CopySlots(host, 104, 105);
    }
}

// A newer host exports every function under its name. The two dialog-item calls are looked up
// with the first block whatever the host's version, and again with their own version test.
void FillByName(uint32_t version)
{
    LookUpSlots(2, 60);
    LookUpSlot(104);
    LookUpSlot(105);
    if (version > kHasShowLayer) {
        LookUpSlot(61);
    }
    if (version > kHasDocumentCalls) {
        LookUpSlots(62, 76);
    }
    if (version > kHasWindowCalls) {
        LookUpSlots(79, 81);   // slot 82 has no name
        LookUpSlots(83, 100);
    }
    if (version > kHasMeasureCalls) {
        LookUpSlots(101, 103);
    }
    if (version > kHasDialogItemCalls) {
        LookUpSlot(104);
        LookUpSlot(105);
    }
}

}   // namespace

int32_t PluginMain(StavioFuncs* hostFuncs, SXPluginFuncs* reply)
{
    if (hostFuncs == nullptr || reply == nullptr || InitializeGlobals() != toolbox::kNoErr) {
        return 0;
    }
    gStavioFuncs.size = hostFuncs->size;
    gStavioFuncs.version = hostFuncs->version;
    const uint32_t version = hostFuncs->version;
    if (version < kHostVersionNamePath) {
        FillByCopy(*hostFuncs, version);
    } else {
        FillByName(version);
    }

    reply->version = kPluginApiVersion;
    reply->size = kReplySize;
    if (version > kHasWindowCalls) {
        return 1;   // a newer host finds the entry points by their exported names
    }
    reply->fpGetversion = templateData.getversion;
    reply->fpInit = templateData.init;
    reply->fpEnumerate = templateData.enumerate;
    reply->fpInvoke = templateData.invoke;
    reply->fpTerminate = templateData.terminate;
    reply->fpGetMenuStatus = templateData.getmenustatus;
    return 1;
}

toolbox::OSErr InitializeGlobals()
{
    gResFile = toolbox::CurResFile();
    const std::string application = toolbox::ApplicationFile();
    if (application.empty()) {
        gStavioBundle = nullptr;
        return -1;
    }
    const std::string::size_type slash = application.rfind('/');
    const std::string folder = slash == std::string::npos ? std::string(".") : application.substr(0, slash);
    const std::string name = slash == std::string::npos ? application : application.substr(slash + 1);
    const toolbox::OSErr status = toolbox::MakeFileSpec(folder.empty() ? "/" : folder, name, gStavioFSSpec);
    gStavioBundle = &gStavioFSSpec;
    return status;
}

const toolbox::FileSpec* GetStavioBundleRef()
{
    return gStavioBundle;
}

// There is no older symbol service to fall back on: the process's global scope holds every
// host export.
void* GetSXProc(const char* name)
{
    return toolbox::FunctionPointerForName(name);
}
