#include "tamberlyne/host/staff_record.h"

#include "sdk/tags.h"

#include <cstdio>
#include <cstring>
#include <string>

CStaffSpec::CStaffSpec() : m_spec{}
{
    m_exTag = kTagStaffSpec;
    m_nSpecSize = static_cast<int32_t>(sizeof(EDTStaffSpec2003));
    m_pSpec = &m_spec;
}

int32_t CStaffSpec::GetFullName(CTextObject* text)
{
    return GetName(m_spec.fullName, text);
}

int32_t CStaffSpec::GetAbbrivName(CTextObject* text)
{
    return GetName(m_spec.abbrvName, text);
}

int32_t CStaffSpec::GetName(int16_t textBlock, CTextObject* text)
{
    if (textBlock != 0 && text->LoadTextObject(textBlock) == 1) {
        const std::string plain = text->GetPlainText();
        if (!plain.empty() && plain != " ") {
            return 0;
        }
    }
    char fallback[32];
    std::snprintf(fallback, sizeof(fallback), "[Staff %d]", m_nID);
    text->SetText(fallback);
    return 1;
}
