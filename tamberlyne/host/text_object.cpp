#include "tamberlyne/host/text_object.h"

#include "sdk/tags.h"
#include "tamberlyne/host/versioned_records.h"

#include <cstring>

namespace {
constexpr size_t kPlainTextBufferSize = 272;
constexpr int32_t kTextSizeQuery = 256;
}   // namespace

CTextObject::CTextObject()
    : m_szCaret('^'), m_szTagParamStart('('), m_szTagParamEnd(')'), m_exTxtTag(kTagTextBody), m_nTextID(0), m_block{}
{
    m_exTag = kTagTextBlock;
    m_nSpecSize = static_cast<int32_t>(sizeof(EDTTextBlock2004));
    m_pSpec = &m_block;
}

CTextObject::~CTextObject() = default;

int32_t CTextObject::LoadTextObject(int16_t id)
{
    const int32_t result = CEData::Load(id, kPluginApiVersion);
    m_pText.reset();
    if (result != 1) {
        return result;
    }
    return LoadText();
}

int32_t CTextObject::Next()
{
    const int32_t result = CEData::Next();
    m_pText.reset();
    if (result != 1) {
        return result;
    }
    return LoadText();
}

// The text of the loaded block: ask its size, then load it into a buffer with a spare byte.
int32_t CTextObject::LoadText()
{
    m_nTextID = m_block.textID;
    EDataID key{};
    key.text.textnum = static_cast<uint16_t>(m_nTextID);
    int32_t size = kTextSizeQuery;
    SX_LoadEData(m_exTxtTag, &key, nullptr, &size, kPluginApiVersion);
    if (size < 0) {
        size = 0;
    }
    m_pText.reset(new char[static_cast<size_t>(size) + 1]());
    return SX_LoadEData(m_exTxtTag, &key, m_pText.get(), &size, kPluginApiVersion);
}

std::string CTextObject::GetPlainText() const
{
    char text[kPlainTextBufferSize] = {};
    std::strncpy(text, GetText(), kPlainTextBufferSize - 1);

    char* caret = std::strchr(text, m_szCaret);
    while (caret != nullptr) {
        char* open = std::strchr(caret + 1, m_szTagParamStart);
        char* close = open != nullptr ? std::strchr(open + 1, m_szTagParamEnd) : nullptr;
        if (close == nullptr) {
            break;
        }
        std::memmove(caret, close + 1, std::strlen(close + 1) + 1);
        caret = std::strchr(caret, m_szCaret);
    }
    return text;
}

int32_t CTextObject::SetText(const char* text)
{
    const size_t length = text != nullptr ? std::strlen(text) : 0;
    m_pText.reset(new char[length + 1]());
    if (length > 0) {
        std::memcpy(m_pText.get(), text, length);
    }
    return 1;
}
