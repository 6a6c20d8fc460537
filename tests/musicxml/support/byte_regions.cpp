#include "tests/musicxml/support/byte_regions.h"

#include <algorithm>
#include <stdexcept>

namespace musicxml_support {
namespace {

// The file as a sequence of code units: bytes, or 16-bit units after a byte-order mark. Only
// ASCII matters for finding tags; any other unit reads as 0x80.
class Units {
public:
    explicit Units(const std::string& bytes) : bytes_(bytes)
    {
        if (bytes.size() >= 2 && static_cast<unsigned char>(bytes[0]) == 0xFF &&
            static_cast<unsigned char>(bytes[1]) == 0xFE) {
            width_ = 2;
            littleEndian_ = true;
        } else if (bytes.size() >= 2 && static_cast<unsigned char>(bytes[0]) == 0xFE &&
                   static_cast<unsigned char>(bytes[1]) == 0xFF) {
            width_ = 2;
        }
    }
    std::size_t Width() const { return width_; }
    std::size_t Size() const { return bytes_.size() / width_; }
    std::size_t Byte(std::size_t unit) const { return unit * width_; }
    char At(std::size_t unit) const
    {
        if (unit >= Size()) return '\0';
        if (width_ == 1) return bytes_[unit];
        auto low = static_cast<unsigned char>(bytes_[unit * 2 + (littleEndian_ ? 0 : 1)]);
        auto high = static_cast<unsigned char>(bytes_[unit * 2 + (littleEndian_ ? 1 : 0)]);
        return high == 0 && low < 0x80 ? static_cast<char>(low) : '\x80';
    }
    bool StartsWith(std::size_t unit, const std::string& text) const
    {
        for (std::size_t i = 0; i < text.size(); ++i)
            if (At(unit + i) != text[i]) return false;
        return true;
    }
    // The unit after the next `text` from `unit`.
    std::size_t After(std::size_t unit, const std::string& text) const
    {
        while (unit < Size() && !StartsWith(unit, text)) ++unit;
        if (unit >= Size()) throw std::runtime_error("unterminated markup, looking for " + text);
        return unit + text.size();
    }

private:
    const std::string& bytes_;
    std::size_t width_ = 1;
    bool littleEndian_ = false;
};

bool IsNameChar(char c)
{
    return c != '\0' && c != '>' && c != '/' && c != ' ' && c != '\t' && c != '\r' && c != '\n' && c != '=';
}

bool IsSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

struct Tag {
    std::string name;
    std::map<std::string, std::string> attributes;
    bool closing = false;
    bool empty = false;
    std::size_t end = 0;   // unit after ">"
};

Tag ReadTag(const Units& units, std::size_t at)
{
    Tag tag;
    std::size_t i = at + 1;
    if (units.At(i) == '/') {
        tag.closing = true;
        ++i;
    }
    while (IsNameChar(units.At(i))) tag.name += units.At(i++);
    while (i < units.Size() && units.At(i) != '>') {
        if (IsSpace(units.At(i))) {
            ++i;
        } else if (units.At(i) == '/') {
            tag.empty = true;
            ++i;
        } else {
            std::string name;
            while (IsNameChar(units.At(i))) name += units.At(i++);
            while (IsSpace(units.At(i))) ++i;
            if (units.At(i) != '=') throw std::runtime_error("attribute without a value in <" + tag.name + ">");
            ++i;
            while (IsSpace(units.At(i))) ++i;
            char quote = units.At(i++);
            std::string value;
            while (i < units.Size() && units.At(i) != quote) value += units.At(i++);
            ++i;
            tag.attributes[name] = value;
            tag.empty = false;
        }
    }
    if (i >= units.Size()) throw std::runtime_error("unterminated tag <" + tag.name);
    tag.end = i + 1;
    return tag;
}

// The unit after a DOCTYPE, which may hold an internal subset in brackets.
std::size_t SkipDoctype(const Units& units, std::size_t at)
{
    int brackets = 0;
    for (std::size_t i = at; i < units.Size(); ++i) {
        char c = units.At(i);
        if (c == '"' || c == '\'') {
            do ++i;
            while (i < units.Size() && units.At(i) != c);
        } else if (c == '[') {
            ++brackets;
        } else if (c == ']') {
            --brackets;
        } else if (c == '>' && brackets == 0) {
            return i + 1;
        }
    }
    throw std::runtime_error("unterminated DOCTYPE");
}

struct Open {
    ElementRange range;
    std::size_t beginUnit = 0;
};

}   // namespace

std::vector<ElementRange> ScanElements(const std::string& bytes)
{
    Units units(bytes);
    std::vector<ElementRange> found;
    std::vector<Open> stack;
    std::size_t i = 0;
    while (i < units.Size()) {
        if (units.At(i) != '<') {
            ++i;
        } else if (units.StartsWith(i, "<!--")) {
            i = units.After(i + 4, "-->");
        } else if (units.StartsWith(i, "<![CDATA[")) {
            i = units.After(i + 9, "]]>");
        } else if (units.StartsWith(i, "<?")) {
            i = units.After(i + 2, "?>");
        } else if (units.StartsWith(i, "<!")) {
            i = SkipDoctype(units, i + 2);
        } else {
            Tag tag = ReadTag(units, i);
            if (tag.closing) {
                if (stack.empty() || stack.back().range.name != tag.name)
                    throw std::runtime_error("</" + tag.name + "> closes nothing open");
                ElementRange range = stack.back().range;
                stack.pop_back();
                range.end = units.Byte(tag.end);
                if (range.depth >= 1 && range.depth <= 2) found.push_back(range);
            } else {
                ElementRange range;
                range.name = tag.name;
                range.depth = static_cast<int>(stack.size());
                range.begin = units.Byte(i);
                const std::string parent = stack.empty() ? "" : stack.back().range.name;
                if (tag.name == "part" || tag.name == "score-part") {
                    range.partId = tag.attributes["id"];
                    range.key = tag.name + " " + range.partId;
                } else if (tag.name == "measure" && parent == "part") {
                    range.partId = stack.back().range.partId;
                    range.number = tag.attributes["number"];
                    range.key = "part " + range.partId + " measure " + range.number;
                } else {
                    range.key = tag.name;
                }
                if (tag.empty) {
                    range.end = units.Byte(tag.end);
                    if (range.depth >= 1 && range.depth <= 2) found.push_back(range);
                } else {
                    stack.push_back({range, i});
                }
            }
            i = tag.end;
        }
    }
    if (!stack.empty()) throw std::runtime_error("<" + stack.back().range.name + "> is never closed");
    std::sort(found.begin(), found.end(),
              [](const ElementRange& a, const ElementRange& b) { return a.begin < b.begin; });
    // Measures are told apart by their place in the part too: numbers can repeat.
    std::map<std::string, int> measureCount;
    for (ElementRange& range : found)
        if (range.name == "measure" && !range.partId.empty())
            range.key += " (#" + std::to_string(++measureCount[range.partId]) + ")";
    return found;
}

namespace {

struct Masked {
    std::string text;
    // Where each kept stretch of the original landed: (offset in text, offset in the file).
    std::vector<std::pair<std::size_t, std::size_t>> kept;
};

Masked Mask(const std::string& bytes, const AllowedChanges& allowed)
{
    std::vector<ElementRange> ranges = ScanElements(bytes);
    Units units(bytes);
    Masked masked;
    std::size_t at = 0;
    auto keep = [&](std::size_t until) {
        if (until <= at) return;
        masked.kept.emplace_back(masked.text.size(), at);
        masked.text.append(bytes, at, until - at);
        at = until;
    };
    for (const ElementRange& range : ranges) {
        if (range.begin < at) continue;   // inside a range already masked
        bool isNew = (range.name == "part" || range.name == "score-part") && allowed.newParts.count(range.partId);
        auto target = allowed.measures.find(range.partId);
        bool mayChange =
            target != allowed.measures.end() &&
            (range.name == "score-part" || (range.name == "measure" && target->second.count(range.number)));
        if (isNew) {
            std::size_t start = range.begin;   // drop the white space that leads up to it as well
            while (start > at && IsSpace(units.At(start / units.Width() - 1))) start -= units.Width();
            keep(start);
            at = range.end;
        } else if (mayChange) {
            keep(range.begin);
            masked.text += "\x01" + range.key + "\x01";
            at = range.end;
        }
    }
    keep(bytes.size());
    return masked;
}

std::string Around(const std::string& text, std::size_t at)
{
    std::size_t from = at > 40 ? at - 40 : 0;
    std::string shown = text.substr(from, 80);
    for (char& c : shown)
        if (c == '\r') c = '~';   // line ends matter here: show them
    return "\"" + shown + "\"";
}

std::string Where(const std::string& bytes, const Masked& masked, std::size_t textOffset)
{
    std::size_t fileOffset = textOffset;
    for (const auto& [textAt, fileAt] : masked.kept)
        if (textAt <= textOffset) fileOffset = fileAt + (textOffset - textAt);
    std::string where = "outside every part";
    for (const ElementRange& range : ScanElements(bytes))
        if (range.begin <= fileOffset && fileOffset < range.end)
            where = range.key;   // the innermost wins: it comes later
    return where + ", byte " + std::to_string(fileOffset);
}

}   // namespace

std::string FirstUnexpectedChange(const std::string& input, const std::string& output, const AllowedChanges& allowed)
{
    Masked before = Mask(input, allowed);
    Masked after = Mask(output, allowed);
    if (before.text == after.text) return "";
    auto mismatch = std::mismatch(before.text.begin(), before.text.end(), after.text.begin(), after.text.end());
    auto offset = static_cast<std::size_t>(mismatch.first - before.text.begin());
    return "changed at " + Where(input, before, offset) + " (output " + Where(output, after, offset) +
           "):\n  input:  " + Around(before.text, offset) + "\n  output: " + Around(after.text, offset);
}

}   // namespace musicxml_support
