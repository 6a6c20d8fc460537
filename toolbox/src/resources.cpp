// The text form of resource files (see toolbox/RESOURCES.md): parsing, printing, loading, saving.
#include "toolbox/resources.h"

#include "dialog_layout.h"
#include "os_errors.h"
#include "text_syntax.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

namespace toolbox {

namespace {

enum class BodyKind {
    kStringList,
    kDialogLayout,
    kData
};

BodyKind BodyKindOf(ResType type)
{
    if (type == kStringListType) return BodyKind::kStringList;
    if (type == kDialogLayoutType) return BodyKind::kDialogLayout;
    return BodyKind::kData;
}

std::string Describe(ResType type, int16_t id)
{
    return "resource " + text::FormatType(type) + " " + std::to_string(id);
}

bool ExpectLineEnd(text::LineCursor& cursor, std::string& error)
{
    if (cursor.AtEnd()) return true;
    error = "unexpected " + cursor.Upcoming() + " at the end of the line";
    return false;
}

// One pass over the text, line by line. A block that is open collects its body lines.
class Parser {
public:
    bool Run(const std::string& text, std::vector<Resource>& resources, std::string& error);

private:
    struct OpenBlock {
        Resource resource;
        size_t headerLine = 0;
        DialogLayoutReader dialog;
    };

    bool ReadLine(const std::string& line, std::vector<Resource>& resources, std::string& error);
    bool ReadHeader(text::LineCursor& cursor, std::string& error);
    bool ReadBodyLine(const std::string& line, std::string& error);
    bool ReadStringListEntry(text::LineCursor& cursor, std::string& error);
    bool ReadDataLine(text::LineCursor& cursor, std::string& error);

    std::optional<OpenBlock> open_;
    std::map<std::pair<ResType, int16_t>, size_t> firstLineOf_;
    size_t lineNumber_ = 0;
};

bool Parser::Run(const std::string& text, std::vector<Resource>& resources, std::string& error)
{
    static const std::string kByteOrderMark = "\xEF\xBB\xBF";
    size_t start = text.compare(0, kByteOrderMark.size(), kByteOrderMark) == 0 ? kByteOrderMark.size() : 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        std::string line = text.substr(start, end - start);
        if (!line.empty() && line.back() == '\r') line.pop_back();
        ++lineNumber_;
        std::string what;
        if (!ReadLine(line, resources, what)) {
            error = std::to_string(lineNumber_) + ": " + what;
            return false;
        }
        start = end + 1;
    }
    if (open_) {
        error = std::to_string(open_->headerLine) + ": " + Describe(open_->resource.type, open_->resource.id) +
                " is not closed (a line with '}' is missing)";
        return false;
    }
    return true;
}

bool Parser::ReadLine(const std::string& line, std::vector<Resource>& resources, std::string& error)
{
    if (!text::IsValidUtf8(line)) {
        error = "invalid UTF-8 (resource files are UTF-8 text; write other bytes as \\xHH escapes)";
        return false;
    }
    text::LineCursor cursor(line);
    if (cursor.AtEnd()) return true;
    if (!open_) return ReadHeader(cursor, error);
    if (cursor.Take('}')) {
        if (!ExpectLineEnd(cursor, error)) return false;
        resources.push_back(std::move(open_->resource));
        open_.reset();
        return true;
    }
    return ReadBodyLine(line, error);
}

bool Parser::ReadHeader(text::LineCursor& cursor, std::string& error)
{
    if (cursor.Take('}')) {
        error = "'}' without an open resource";
        return false;
    }
    const std::string keyword = cursor.ReadWord();
    if (keyword != "resource") {
        error = "expected 'resource', found " + (keyword.empty() ? cursor.Upcoming() : "'" + keyword + "'");
        return false;
    }
    OpenBlock block;
    block.headerLine = lineNumber_;
    if (!cursor.ReadType(block.resource.type, error) || !cursor.ReadInt16("resource id", block.resource.id, error))
        return false;
    if (cursor.NextIsQuote() && !cursor.ReadQuoted(block.resource.name, error)) return false;
    if (!cursor.Expect('{', "at the end of the resource header", error) || !ExpectLineEnd(cursor, error)) return false;
    const auto key = std::make_pair(block.resource.type, block.resource.id);
    const auto [first, inserted] = firstLineOf_.emplace(key, lineNumber_);
    if (!inserted) {
        error =
            Describe(key.first, key.second) + " appears twice (first at line " + std::to_string(first->second) + ")";
        return false;
    }
    open_ = std::move(block);
    return true;
}

bool Parser::ReadBodyLine(const std::string& line, std::string& error)
{
    text::LineCursor cursor(line);
    switch (BodyKindOf(open_->resource.type)) {
        case BodyKind::kStringList: return ReadStringListEntry(cursor, error);
        case BodyKind::kDialogLayout: {
            std::string normalized;
            if (!open_->dialog.ReadLine(line, normalized, error)) return false;
            open_->resource.strings.push_back(std::move(normalized));
            return true;
        }
        case BodyKind::kData: return ReadDataLine(cursor, error);
    }
    return false;
}

bool Parser::ReadStringListEntry(text::LineCursor& cursor, std::string& error)
{
    std::vector<std::string>& entries = open_->resource.strings;
    long number = 0;
    if (!cursor.ReadNumber(1, INT16_MAX, "entry number", number, error)) return false;
    if (static_cast<size_t>(number) != entries.size() + 1) {
        error = "entry " + std::to_string(number) + " is out of order: entries count from 1 without gaps, " +
                "this one must be " + std::to_string(entries.size() + 1);
        return false;
    }
    std::string entry;
    if (!cursor.Expect('=', "after the entry number", error) || !cursor.ReadQuoted(entry, error) ||
        !ExpectLineEnd(cursor, error))
        return false;
    entries.push_back(std::move(entry));
    return true;
}

bool Parser::ReadDataLine(text::LineCursor& cursor, std::string& error)
{
    const std::string key = cursor.ReadWord();
    std::string bytes;
    if (key == "text") {
        if (!cursor.Expect('=', "after 'text'", error) || !cursor.ReadQuoted(bytes, error) ||
            !ExpectLineEnd(cursor, error))
            return false;
    } else if (key == "hex") {
        if (!cursor.Expect('=', "after 'hex'", error) || !cursor.ReadHexBytes(bytes, error)) return false;
    } else {
        error = "expected 'text = \"...\"' or 'hex = ...' in the data of " +
                Describe(open_->resource.type, open_->resource.id) + ", found " +
                (key.empty() ? cursor.Upcoming() : "'" + key + "'");
        return false;
    }
    open_->resource.data.insert(open_->resource.data.end(), bytes.begin(), bytes.end());
    return true;
}

// ---- Printing ------------------------------------------------------------------------------------

constexpr const char* kIndent = "    ";
constexpr size_t kTextChunk = 96;
constexpr size_t kHexBytesPerLine = 32;

bool PrintsAsText(const std::string& bytes)
{
    if (!text::IsValidUtf8(bytes)) return false;
    size_t hardEscapes = 0;
    for (size_t pos = 0; pos < bytes.size(); ++pos) {
        if (text::NeedsHardEscape(bytes, pos)) ++hardEscapes;
    }
    return hardEscapes <= 1 + bytes.size() / 4;
}

void PrintTextLines(const std::string& bytes, std::string& out)
{
    std::string chunk;
    for (size_t pos = 0; pos < bytes.size();) {
        const size_t length = text::Utf8SequenceLength(bytes, pos);
        chunk.append(bytes, pos, length);
        const bool lineEnds = bytes[pos] == '\n';
        pos += length;
        if (lineEnds || chunk.size() >= kTextChunk || pos == bytes.size()) {
            out += kIndent + std::string("text = ") + text::Quote(chunk) + "\n";
            chunk.clear();
        }
    }
}

void PrintHexLines(const std::vector<uint8_t>& data, std::string& out)
{
    static const char kDigits[] = "0123456789abcdef";
    for (size_t start = 0; start < data.size(); start += kHexBytesPerLine) {
        out += kIndent + std::string("hex =");
        for (size_t i = start; i < data.size() && i < start + kHexBytesPerLine; ++i) {
            out += ' ';
            out += kDigits[data[i] >> 4];
            out += kDigits[data[i] & 0xF];
        }
        out += '\n';
    }
}

void PrintResource(const Resource& resource, std::string& out)
{
    out += "resource " + text::FormatType(resource.type) + " " + std::to_string(resource.id);
    if (!resource.name.empty()) out += " " + text::Quote(resource.name);
    out += " {\n";
    switch (BodyKindOf(resource.type)) {
        case BodyKind::kStringList:
            for (size_t i = 0; i < resource.strings.size(); ++i)
                out += kIndent + std::to_string(i + 1) + " = " + text::Quote(resource.strings[i]) + "\n";
            break;
        case BodyKind::kDialogLayout:
            for (const std::string& line : resource.strings) out += kIndent + line + "\n";
            break;
        case BodyKind::kData: {
            const std::string bytes(resource.data.begin(), resource.data.end());
            if (PrintsAsText(bytes))
                PrintTextLines(bytes, out);
            else
                PrintHexLines(resource.data, out);
            break;
        }
    }
    out += "}\n";
}

std::string PrintAll(const std::vector<Resource>& resources)
{
    std::string out;
    for (size_t i = 0; i < resources.size(); ++i) {
        if (i > 0) out += '\n';
        PrintResource(resources[i], out);
    }
    return out;
}

}   // namespace

// ---- ResourceFile --------------------------------------------------------------------------------

Status ResourceFile::Parse(const std::string& text, const std::string& sourceName)
{
    try {
        std::vector<Resource> parsed;
        Parser parser;
        std::string where;
        if (!parser.Run(text, parsed, where)) {
            return Status::Failure(sourceName + ":" + where, kBadResourceFile);
        }
        resources_ = std::move(parsed);
        return Status::Ok();
    } catch (...) {
        return Status::Failure(sourceName + ": out of memory", kMemFull);
    }
}

std::string ResourceFile::Print() const
{
    try {
        return PrintAll(resources_);
    } catch (...) {
        return {};   // only when memory runs out; SaveResourceFile reports that case
    }
}

const Resource* ResourceFile::Find(ResType type, int16_t id) const
{
    for (const Resource& resource : resources_) {
        if (resource.type == type && resource.id == id) return &resource;
    }
    return nullptr;
}

Resource* ResourceFile::Find(ResType type, int16_t id)
{
    return const_cast<Resource*>(static_cast<const ResourceFile&>(*this).Find(type, id));
}

Status ResourceFile::Put(Resource resource)
{
    if (Resource* existing = Find(resource.type, resource.id)) {
        *existing = std::move(resource);
        return Status::Ok();
    }
    try {
        resources_.push_back(std::move(resource));
        return Status::Ok();
    } catch (...) {
        return Status::Failure(Describe(resource.type, resource.id) + ": out of memory", kMemFull);
    }
}

bool ResourceFile::Remove(ResType type, int16_t id)
{
    for (auto it = resources_.begin(); it != resources_.end(); ++it) {
        if (it->type == type && it->id == id) {
            resources_.erase(it);
            return true;
        }
    }
    return false;
}

// ---- Files on disk --------------------------------------------------------------------------------

Result<ResourceFile> LoadResourceFile(const std::string& path)
{
    try {
        std::vector<uint8_t> bytes;
        const OSErr err = ReadWholeFile(FileSpecFromPath(path), bytes);
        if (err != kNoErr) {
            return Status::Failure(path + ": " + DescribeOSErr(err), err);
        }
        ResourceFile file;
        const Status parsed = file.Parse(std::string(bytes.begin(), bytes.end()), path);
        if (!parsed) {
            return parsed;
        }
        return file;
    } catch (...) {
        return Status::Failure(path + ": out of memory", kMemFull);
    }
}

Status SaveResourceFile(const std::string& path, const ResourceFile& file)
{
    try {
        const std::string text = PrintAll(file.All());
        // A file that already says this stays as it is: saved unchanged on every run, it
        // would cost two flushes to disk each time.
        std::vector<uint8_t> onDisk;
        if (ReadWholeFile(FileSpecFromPath(path), onDisk) == kNoErr && onDisk.size() == text.size() &&
            std::equal(onDisk.begin(), onDisk.end(), text.begin(),
                       [](uint8_t byte, char c) { return byte == static_cast<uint8_t>(c); })) {
            return Status::Ok();
        }
        const OSErr err = WriteWholeFile(FileSpecFromPath(path), text.data(), text.size());
        return err == kNoErr ? Status::Ok() : Status::Failure(path + ": " + DescribeOSErr(err), err);
    } catch (...) {
        return Status::Failure(path + ": out of memory", kMemFull);
    }
}

}   // namespace toolbox
