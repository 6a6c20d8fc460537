#include "tamberlyne/host/cedata.h"

#include "tamberlyne/host/versioned_records.h"

namespace {
constexpr uint16_t kNewCmper = 0xffff;

EDataID RecordKey(uint16_t id)
{
    EDataID key{};
    key.other.cmper = id;
    return key;
}
}   // namespace

CEData::CEData() : m_nID(0), m_pSpec(nullptr), m_exTag(0), m_nSpecSize(0), m_dataID{}
{}

CEData::~CEData() = default;

int32_t CEData::Next()
{
    if (m_pSpec == nullptr) {
        return 0;
    }
    int32_t size = m_nSpecSize;
    const int32_t result = SX_NextEData(m_exTag, &m_dataID, m_pSpec, &size, kPluginApiVersion);
    if (result != 0) {
        m_nID = static_cast<int16_t>(m_dataID.other.cmper);
    }
    return result;
}

int32_t CEData::Create()
{
    if (m_pSpec == nullptr) {
        return 0;
    }
    m_dataID = RecordKey(kNewCmper);
    const int32_t result = SX_CreateEData(m_exTag, &m_dataID, m_pSpec, m_nSpecSize, kPluginApiVersion);
    if (result != 0) {
        m_nID = static_cast<int16_t>(m_dataID.other.cmper);
    }
    return result;
}

int32_t CEData::Delete(int16_t id)
{
    m_dataID = RecordKey(static_cast<uint16_t>(id));
    return SX_DeleteEData(m_exTag, &m_dataID, kPluginApiVersion);
}

int32_t CEData::Save(int16_t id, EVERSION version)
{
    if (m_pSpec == nullptr) {
        return 0;
    }
    m_dataID = RecordKey(static_cast<uint16_t>(id));
    m_nID = id;
    return SX_SaveEData(m_exTag, &m_dataID, m_pSpec, m_nSpecSize, version);
}

int32_t CEData::Load(int16_t id, EVERSION version)
{
    if (m_pSpec == nullptr) {
        return 0;
    }
    m_dataID = RecordKey(static_cast<uint16_t>(id));
    m_nID = id;
    int32_t size = m_nSpecSize;
    return SX_LoadEData(m_exTag, &m_dataID, m_pSpec, &size, version);
}
