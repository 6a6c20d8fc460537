// A host record owned by the plug-in: a buffer of the record's size, its tag and the key of the
// last operation. Derived classes allocate the buffer and name the tag.
#pragma once

#include "sdk/types.h"

class CEData {
public:
    CEData();
    virtual ~CEData();
    CEData(const CEData&) = delete;
    CEData& operator=(const CEData&) = delete;

    // Steps to the record after the current key and loads it.
    virtual int32_t Next();
    // Adds a new record with the buffer's contents under a number the host chooses.
    virtual int32_t Create();
    virtual int32_t Delete(int16_t id);
    virtual int32_t Save(int16_t id, EVERSION version);
    // Loads record (id, 0) into the buffer; false without a buffer.
    virtual int32_t Load(int16_t id, EVERSION version);

    void SetID(int16_t id) { m_nID = id; }
    int16_t GetID() const { return m_nID; }

protected:
    int16_t m_nID;
    void* m_pSpec;
    EXTAG m_exTag;
    int32_t m_nSpecSize;
    EDataID m_dataID;
};
