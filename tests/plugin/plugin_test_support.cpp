#include "tests/plugin/plugin_test_support.h"

#include "tamberlyne/host/gateway.h"
#include "toolbox/resources.h"

#include <algorithm>

namespace plugin_test {

namespace {
RecordCallTap* gTap = nullptr;
SXLoadEDataProc gHostLoad = nullptr;
SXSaveEDataProc gHostSave = nullptr;

int32_t TapLoad(EXTAG tag, EDataID* key, void* buffer, int32_t* size, EVERSION version)
{
    gTap->calls.push_back({false, tag, *key, size != nullptr ? *size : 0, version});
    return gHostLoad(tag, key, buffer, size, version);
}

int32_t TapSave(EXTAG tag, const EDataID* key, const void* buffer, int32_t size, EVERSION version)
{
    gTap->calls.push_back({true, tag, *key, size, version});
    return gHostSave(tag, key, buffer, size, version);
}
}   // namespace

HostSession::HostSession(stavio::HostPose pose, stavio::Document doc)
    : host(stavio::HostSettings{pose, "", ""}, &frontEnd)
{
    host.SetDocument(std::move(doc));
    support::OpenBundleResources();
    support::StartPluginCore(host);
}

HostSession::~HostSession()
{
    toolbox::CloseAllResFiles();
}

std::vector<std::string> HostSession::AlertTexts() const
{
    std::vector<std::string> texts;
    for (const auto& alert : frontEnd.Alerts()) texts.push_back(alert.request.text);
    return texts;
}

RecordCallTap::RecordCallTap()
{
    gTap = this;
    gHostLoad = gStavioFuncs.SX_LoadEData;
    gHostSave = gStavioFuncs.SX_SaveEData;
    gStavioFuncs.SX_LoadEData = &TapLoad;
    gStavioFuncs.SX_SaveEData = &TapSave;
}

RecordCallTap::~RecordCallTap()
{
    gStavioFuncs.SX_LoadEData = gHostLoad;
    gStavioFuncs.SX_SaveEData = gHostSave;
    gTap = nullptr;
}

size_t RecordCallTap::Saves() const
{
    return static_cast<size_t>(std::count_if(calls.begin(), calls.end(), [](const Call& call) { return call.save; }));
}

void PutOther(stavio::Document& doc, EXTAG tag, uint16_t inci, const EDTGeneric& record, uint16_t cmper)
{
    ASSERT_TRUE(doc.Write(tag, stavio::RecordKey::Other(cmper, inci), record));
}

EDTGeneric GetOther(const stavio::Document& doc, EXTAG tag, uint16_t inci, uint16_t cmper)
{
    EDTGeneric record{};
    doc.Read(tag, stavio::RecordKey::Other(cmper, inci), record);
    return record;
}

}   // namespace plugin_test
