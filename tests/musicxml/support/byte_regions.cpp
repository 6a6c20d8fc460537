#include "tests/musicxml/support/byte_regions.h"

#include <pugixml.hpp>

#include <algorithm>
#include <stdexcept>

namespace musicxml_support {
namespace {

// The file as one character per code unit: a UTF-8 file as it is, a UTF-16 one (after its
// byte-order mark) as each unit's ASCII character, '?' for any other. The markup is ASCII, so
// an offset in the text times the unit width is the offset in the file.
struct UnitText {
    std::string text;
    std::size_t width = 1;
};

UnitText Units(const std::string& bytes)
{
    const auto byte = [&bytes](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const bool little = bytes.size() >= 2 && byte(0) == 0xFF && byte(1) == 0xFE;
    if (!little && !(bytes.size() >= 2 && byte(0) == 0xFE && byte(1) == 0xFF)) return {bytes, 1};
    UnitText units{" ", 2};   // the mark itself
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
        const unsigned low = byte(little ? i : i + 1), high = byte(little ? i + 1 : i);
        units.text += high == 0 && low < 0x80 ? static_cast<char>(low) : '?';
    }
    return units;
}

bool IsSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// Where a node starts in the text: its "<", or its first character for text.
std::size_t Start(const std::string& text, pugi::xml_node node)
{
    const auto at = static_cast<std::size_t>(node.offset_debug());
    return node.type() == pugi::node_pcdata ? at : text.rfind('<', at - 1);
}

// One past a node's last character: where what follows it starts, else where its parent's end
// tag does (white space between nodes is kept as text nodes, so nothing lies in between).
std::size_t End(const std::string& text, pugi::xml_node node)
{
    if (pugi::xml_node next = node.next_sibling()) return Start(text, next);
    if (node.parent().type() == pugi::node_document) return text.rfind('>') + 1;
    return text.rfind('<', End(text, node.parent()) - 1);
}

}   // namespace

std::vector<ElementRange> ScanElements(const std::string& bytes)
{
    const UnitText units = Units(bytes);
    pugi::xml_document document;
    const unsigned flags = pugi::parse_full | pugi::parse_ws_pcdata;
    const pugi::xml_parse_result parsed =
        document.load_buffer(units.text.data(), units.text.size(), flags, pugi::encoding_utf8);
    if (!parsed)
        throw std::runtime_error(std::string("not well-formed: ") + parsed.description() + " at unit " +
                                 std::to_string(parsed.offset));
    std::vector<ElementRange> found;
    std::map<std::string, int> measureCount;   // measures are told apart by their place too: numbers repeat
    const auto add = [&](pugi::xml_node element, int depth) {
        ElementRange range{element.name(), element.name(), "", "", depth, 0, 0};
        range.begin = Start(units.text, element) * units.width;
        range.end = End(units.text, element) * units.width;
        const std::string parent = element.parent().name();
        if (range.name == "part" || range.name == "score-part") {
            range.partId = element.attribute("id").value();
            range.key += " " + range.partId;
        } else if (range.name == "measure" && parent == "part") {
            range.partId = element.parent().attribute("id").value();
            range.number = element.attribute("number").value();
            range.key = "part " + range.partId + " measure " + range.number + " (#" +
                        std::to_string(++measureCount[range.partId]) + ")";
        }
        found.push_back(range);
    };
    for (pugi::xml_node child : document.document_element().children()) {
        if (child.type() != pugi::node_element) continue;
        add(child, 1);
        for (pugi::xml_node grandchild : child.children())
            if (grandchild.type() == pugi::node_element) add(grandchild, 2);
    }
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
    const UnitText units = Units(bytes);
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
            while (start > at && IsSpace(units.text[start / units.width - 1])) start -= units.width;
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
