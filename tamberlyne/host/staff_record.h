// A staff's specification ('SOIS') and its names.
#pragma once

#include "sdk/records.h"
#include "tamberlyne/host/cedata.h"
#include "tamberlyne/host/text_object.h"

class CStaffSpec : public CEData {
public:
    CStaffSpec();

    using CEData::Load;
    // Loads the staff record of staff `id`.
    virtual int32_t Load(int16_t id) { return CEData::Load(id, kPluginApiVersion); }

    // Put the staff's full / abbreviated name into `text`. A staff without a usable name (none,
    // unloadable, empty or a single blank) gets "[Staff n]" instead and the call answers 1;
    // otherwise the loaded name stays and the call answers 0.
    int32_t GetFullName(CTextObject* text);
    int32_t GetAbbrivName(CTextObject* text);

    EDTStaffSpec2003& Spec() { return m_spec; }
    const EDTStaffSpec2003& Spec() const { return m_spec; }

private:
    int32_t GetName(int16_t textBlock, CTextObject* text);

    EDTStaffSpec2003 m_spec;
};
