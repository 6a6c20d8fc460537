// A text block ('SOTX') together with its text ('txbl'). Text may carry formatting commands of
// the form ^name(arguments); GetPlainText strips them.
#pragma once

#include "sdk/records.h"
#include "tamberlyne/host/cedata.h"

#include <memory>
#include <string>

class CTextObject : public CEData {
public:
    CTextObject();
    ~CTextObject() override;

    using CEData::Load;
    // Loads text block `id` and its text. 1 on success; otherwise the failed load's result.
    virtual int32_t Load(int16_t id) { return LoadTextObject(id); }
    int32_t LoadTextObject(int16_t id);
    // Steps to the next text block and loads its text.
    int32_t Next() override;

    // The text without formatting commands. Only the first 271 characters are looked at; a
    // caret that opens no complete command ends the scan and stays with what follows it.
    std::string GetPlainText() const;
    // The text as loaded or set; empty when there is none.
    const char* GetText() const { return m_pText ? m_pText.get() : ""; }
    int32_t SetText(const char* text);
    int16_t GetTextID() const { return m_nTextID; }

private:
    int32_t LoadText();

    char m_szCaret;
    char m_szTagParamStart;
    char m_szTagParamEnd;
    std::unique_ptr<char[]> m_pText;
    EXTAG m_exTxtTag;
    int16_t m_nTextID;
    EDTTextBlock2004 m_block;
};
