#include "stavio/document/layouts.h"

#include <algorithm>
#include <cstring>

namespace stavio {

Bytes TagLayouts::DefaultRecord() const
{
    if (makeDefault) {
        return makeDefault();
    }
    return Bytes(canonicalSize, 0);
}

RecordLayout PrefixLayout(int32_t size, EVERSION firstVersion, EVERSION lastVersion)
{
    const auto count = static_cast<size_t>(size);
    RecordLayout layout;
    layout.size = size;
    layout.firstVersion = firstVersion;
    layout.lastVersion = lastVersion;
    layout.read = [count](const Bytes& canonical, void* buffer) {
        std::memset(buffer, 0, count);
        std::memcpy(buffer, canonical.data(), std::min(count, canonical.size()));
    };
    layout.write = [count](const void* buffer, Bytes& canonical) {
        if (canonical.size() < count) {
            canonical.resize(count, 0);
        }
        std::memcpy(canonical.data(), buffer, count);
    };
    return layout;
}

const LayoutRegistry& LayoutRegistry::Standard()
{
    static const LayoutRegistry registry = [] {
        LayoutRegistry standard;
        for (TagLayouts& tag : StandardLayouts()) {
            standard.Add(std::move(tag));
        }
        return standard;
    }();
    return registry;
}

void LayoutRegistry::Add(TagLayouts tag)
{
    tags_.push_back(std::move(tag));
}

const TagLayouts* LayoutRegistry::FindTag(EXTAG tag) const
{
    const TagLayouts* family = nullptr;
    for (const TagLayouts& known : tags_) {
        if (known.mask == 0xFFFFFFFF && known.tag == tag) {
            return &known;
        }
        if (family == nullptr && known.Matches(tag)) {
            family = &known;
        }
    }
    return family;
}

const RecordLayout* LayoutRegistry::FindLayout(EXTAG tag, int32_t size, EVERSION version) const
{
    const TagLayouts* known = FindTag(tag);
    if (known == nullptr || known->variableSize) {
        return nullptr;
    }
    for (const RecordLayout& layout : known->layouts) {
        if (layout.size == size && layout.Covers(version)) {
            return &layout;
        }
    }
    return nullptr;
}

const RecordLayout* LayoutRegistry::LayoutForQuery(EXTAG tag, int32_t size, EVERSION version) const
{
    if (const RecordLayout* exact = FindLayout(tag, size, version)) {
        return exact;
    }
    const TagLayouts* known = FindTag(tag);
    if (known == nullptr || known->variableSize) {
        return nullptr;
    }
    for (const RecordLayout& layout : known->layouts) {
        if (layout.Covers(version)) {
            return &layout;
        }
    }
    return nullptr;
}

bool LayoutRegistry::IsVariable(EXTAG tag) const
{
    const TagLayouts* known = FindTag(tag);
    return known != nullptr && known->variableSize;
}

std::string TagText(EXTAG tag)
{
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const auto c = static_cast<unsigned char>((tag >> shift) & 0xFF);
        if (c >= 0x20 && c < 0x7F) {
            text += static_cast<char>(c);
        } else {
            static const char kHex[] = "0123456789ABCDEF";
            text += "\\x";
            text += kHex[c >> 4];
            text += kHex[c & 0xF];
        }
    }
    return text;
}

}   // namespace stavio
