// Which record layouts the host knows, by tag, size and version.
//
// The host keeps each record in one canonical form and converts to and from the layout a
// caller names with its (size, version) pair. A request whose (tag, size, version) is not
// registered is refused: that is how a caller's wrong size or version shows up at once.
// The table of all layouts is layout_table.cpp.
#pragma once

#include "sdk/types.h"
#include "stavio/document/record_key.h"
#include "stavio/document/record_store.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace stavio {

using Bytes = std::vector<uint8_t>;

constexpr EVERSION kAnyVersionFirst = 0;
constexpr EVERSION kAnyVersionLast = 0xFFFFFFFF;
// Host versions at which record layouts changed.
constexpr EVERSION kV5 = 0x05000000;
constexpr EVERSION kV8 = 0x08000000;
constexpr EVERSION kV9 = 0x09000000;
constexpr EVERSION kV10 = 0x0A000000;

// One layout of a tag: the documented size a caller passes and the versions it belongs to.
struct RecordLayout {
    int32_t size = 0;
    EVERSION firstVersion = kAnyVersionFirst;
    EVERSION lastVersion = kAnyVersionLast;
    // Canonical form -> caller's buffer (which holds `size` bytes, or the record struct).
    std::function<void(const Bytes& canonical, void* buffer)> read;
    // Caller's buffer -> canonical form (an existing record, or the tag's default).
    std::function<void(const void* buffer, Bytes& canonical)> write;

    bool Covers(EVERSION version) const { return version >= firstVersion && version <= lastVersion; }
};

// Everything the host knows about one tag, or about a family of tags (`mask` selects the
// characters that must match: 0xFFFF0000 for every tag beginning with two given characters).
struct TagLayouts {
    EXTAG tag = 0;
    EXTAG mask = 0xFFFFFFFF;
    std::string name;   // what the layout is, for messages and documentation
    KeyKind keyKind = KeyKind::Other;
    bool variableSize = false;   // the record is a run of bytes of any length
    size_t canonicalSize = 0;    // fixed-size tags only
    std::vector<RecordLayout> layouts;
    std::function<Bytes()> makeDefault;   // a new record's content; zeros when empty

    // Optional checks on save and create: whether the document takes a record at this key as
    // the caller gives it (kPickNumber and kAppendIncidence not yet resolved; a record that
    // belongs to a staff needs the staff), and, for variable-size tags, whether the bytes are
    // well formed.
    std::function<bool(const RecordStore& records, const RecordKey& key)> acceptsKey;
    std::function<bool(const uint8_t* bytes, size_t size)> acceptsBytes;

    bool AcceptsKey(const RecordStore& records, const RecordKey& key) const
    {
        return !acceptsKey || acceptsKey(records, key);
    }
    bool AcceptsBytes(const void* bytes, size_t size) const
    {
        return !acceptsBytes || acceptsBytes(static_cast<const uint8_t*>(bytes), size);
    }

    bool Matches(EXTAG candidate) const { return (candidate & mask) == (tag & mask); }
    Bytes DefaultRecord() const;
};

// A layout that is the first `size` bytes of the canonical form.
RecordLayout PrefixLayout(int32_t size, EVERSION firstVersion, EVERSION lastVersion);

class LayoutRegistry {
public:
    // The host's own table (layout_table.cpp).
    static const LayoutRegistry& Standard();

    void Add(TagLayouts tag);
    // An exact tag wins over a family that matches it.
    const TagLayouts* FindTag(EXTAG tag) const;
    // The layout a fixed-size request names, or null when (tag, size, version) is not known.
    const RecordLayout* FindLayout(EXTAG tag, int32_t size, EVERSION version) const;
    // For a size query without a buffer: the layout of that size if known, else the first
    // layout that covers the version.
    const RecordLayout* LayoutForQuery(EXTAG tag, int32_t size, EVERSION version) const;
    // Variable-size tags accept any version.
    bool IsVariable(EXTAG tag) const;

    const std::vector<TagLayouts>& All() const { return tags_; }

private:
    std::vector<TagLayouts> tags_;
};

// The standard table; layout_table.cpp.
std::vector<TagLayouts> StandardLayouts();

std::string TagText(EXTAG tag);   // "SOMS", or hex digits where a character is not printable

}   // namespace stavio
