#include "stavio/musicxml/xml_text.h"

#include <algorithm>
#include <cstdint>

namespace stavio::musicxml {

namespace {

uint32_t Unit(const std::string& bytes, size_t at, TextEncoding encoding)
{
    const auto first = static_cast<uint8_t>(bytes[at]);
    const auto second = static_cast<uint8_t>(bytes[at + 1]);
    return encoding == TextEncoding::Utf16LittleEndian ? (static_cast<uint32_t>(second) << 8) | first
                                                       : (static_cast<uint32_t>(first) << 8) | second;
}

void AppendUtf8(std::string& out, uint32_t code)
{
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (code >> 18));
        out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

void AppendUnit(std::string& out, uint32_t unit, TextEncoding encoding)
{
    const auto high = static_cast<char>((unit >> 8) & 0xFF);
    const auto low = static_cast<char>(unit & 0xFF);
    if (encoding == TextEncoding::Utf16LittleEndian) {
        out += low;
        out += high;
    } else {
        out += high;
        out += low;
    }
}

bool StartsWith(const std::string& text, size_t at, const char* prefix)
{
    return text.compare(at, std::char_traits<char>::length(prefix), prefix) == 0;
}

// Past the markup that starts at `at` with '<' and is not an element's start or end tag.
size_t SkipSpecial(const std::string& text, size_t at)
{
    if (StartsWith(text, at, "<!--")) {
        const size_t end = text.find("-->", at + 4);
        return end == std::string::npos ? end : end + 3;
    }
    if (StartsWith(text, at, "<![CDATA[")) {
        const size_t end = text.find("]]>", at + 9);
        return end == std::string::npos ? end : end + 3;
    }
    if (StartsWith(text, at, "<?")) {
        const size_t end = text.find("?>", at + 2);
        return end == std::string::npos ? end : end + 2;
    }
    const size_t end = text.find('>', at);
    return end == std::string::npos ? end : end + 1;
}

}   // namespace

TextEncoding DetectEncoding(const std::string& bytes)
{
    if (bytes.size() >= 2 && static_cast<uint8_t>(bytes[0]) == 0xFF && static_cast<uint8_t>(bytes[1]) == 0xFE) {
        return TextEncoding::Utf16LittleEndian;
    }
    if (bytes.size() >= 2 && static_cast<uint8_t>(bytes[0]) == 0xFE && static_cast<uint8_t>(bytes[1]) == 0xFF) {
        return TextEncoding::Utf16BigEndian;
    }
    return TextEncoding::Utf8;
}

bool Utf16ToUtf8(const std::string& bytes, TextEncoding encoding, std::string& utf8)
{
    utf8.clear();
    if (bytes.size() % 2 != 0) {
        return false;
    }
    utf8.reserve(bytes.size() / 2 + bytes.size() / 8);
    for (size_t at = 2; at < bytes.size(); at += 2) {
        uint32_t code = Unit(bytes, at, encoding);
        if (code >= 0xD800 && code < 0xDC00) {
            if (at + 3 >= bytes.size()) {
                return false;
            }
            const uint32_t low = Unit(bytes, at + 2, encoding);
            if (low < 0xDC00 || low >= 0xE000) {
                return false;
            }
            code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
            at += 2;
        } else if (code >= 0xDC00 && code < 0xE000) {
            return false;
        }
        AppendUtf8(utf8, code);
    }
    return true;
}

std::string Utf8ToUtf16(const std::string& utf8, TextEncoding encoding)
{
    std::string out;
    out.reserve(utf8.size() * 2 + 2);
    AppendUnit(out, 0xFEFF, encoding);
    for (size_t at = 0; at < utf8.size();) {
        const auto lead = static_cast<uint8_t>(utf8[at]);
        uint32_t code = lead;
        size_t length = 1;
        if (lead >= 0xF0) {
            code = lead & 0x07U;
            length = 4;
        } else if (lead >= 0xE0) {
            code = lead & 0x0FU;
            length = 3;
        } else if (lead >= 0xC0) {
            code = lead & 0x1FU;
            length = 2;
        }
        for (size_t i = 1; i < length && at + i < utf8.size(); ++i) {
            code = (code << 6) | (static_cast<uint8_t>(utf8[at + i]) & 0x3FU);
        }
        at += length;
        if (code >= 0x10000) {
            code -= 0x10000;
            AppendUnit(out, 0xD800 + (code >> 10), encoding);
            AppendUnit(out, 0xDC00 + (code & 0x3FF), encoding);
        } else {
            AppendUnit(out, code, encoding);
        }
    }
    return out;
}

size_t StartTagEnd(const std::string& text, size_t start)
{
    char quote = 0;
    for (size_t at = start + 1; at < text.size(); ++at) {
        const char c = text[at];
        if (quote != 0) {
            quote = c == quote ? 0 : quote;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '>') {
            return at + 1;
        }
    }
    return std::string::npos;
}

size_t ElementEnd(const std::string& text, size_t start)
{
    int depth = 0;
    size_t at = start;
    while (at != std::string::npos && at < text.size()) {
        at = text.find('<', at);
        if (at == std::string::npos) {
            return at;
        }
        if (StartsWith(text, at, "</")) {
            const size_t end = text.find('>', at);
            if (end == std::string::npos) {
                return end;
            }
            if (--depth == 0) {
                return end + 1;
            }
            at = end + 1;
        } else if (StartsWith(text, at, "<!") || StartsWith(text, at, "<?")) {
            at = SkipSpecial(text, at);
        } else {
            const size_t end = StartTagEnd(text, at);
            if (end == std::string::npos) {
                return end;
            }
            if (text[end - 2] != '/') {
                ++depth;
            } else if (depth == 0) {
                return end;
            }
            at = end;
        }
    }
    return std::string::npos;
}

std::string IndentBefore(const std::string& text, size_t offset)
{
    size_t at = offset;
    while (at > 0 && (text[at - 1] == ' ' || text[at - 1] == '\t')) {
        --at;
    }
    if (at > 0 && text[at - 1] != '\n') {
        return {};
    }
    return text.substr(at, offset - at);
}

std::string LineEndOf(const std::string& text)
{
    const size_t newline = text.find('\n');
    return newline != std::string::npos && newline > 0 && text[newline - 1] == '\r' ? "\r\n" : "\n";
}

std::string LayOut(const std::string& xml, const std::string& indent, const std::string& unit,
                   const std::string& lineEnd)
{
    enum class Token {
        None,
        Start,
        End,
        Empty,
        Text
    };
    std::string out;
    out.reserve(xml.size() * 2);
    Token previous = Token::None;
    int depth = 0;
    auto newLine = [&](int level) {
        out += lineEnd + indent;
        for (int i = 0; i < level; ++i) {
            out += unit;
        }
    };
    size_t at = 0;
    while (at < xml.size()) {
        if (xml[at] != '<') {
            const size_t end = std::min(xml.find('<', at), xml.size());
            out.append(xml, at, end - at);
            at = end;
            previous = Token::Text;
            continue;
        }
        const size_t end = StartTagEnd(xml, at);
        if (end == std::string::npos) {
            out.append(xml, at, std::string::npos);
            break;
        }
        const bool closing = xml[at + 1] == '/';
        const bool empty = !closing && xml[end - 2] == '/';
        if (closing) {
            --depth;
            if (previous == Token::End || previous == Token::Empty) {
                newLine(depth);
            }
            previous = Token::End;
        } else {
            if (previous != Token::None) {
                newLine(depth);
            }
            previous = empty ? Token::Empty : Token::Start;
            depth += empty ? 0 : 1;
        }
        out.append(xml, at, end - at);
        at = end;
    }
    return out;
}

std::string EscapeXml(const std::string& text)
{
    std::string out;
    out.reserve(text.size());
    for (char c : text) {
        switch (c) {
            case '&': out += "&amp;"; break;
            case '<': out += "&lt;"; break;
            case '>': out += "&gt;"; break;
            case '"': out += "&quot;"; break;
            default: out += c;
        }
    }
    return out;
}

}   // namespace stavio::musicxml
