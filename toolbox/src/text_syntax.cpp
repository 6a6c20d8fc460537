#include "text_syntax.h"

#include <cctype>

namespace toolbox::text {

namespace {

constexpr char kHexDigits[] = "0123456789abcdef";

std::string HexByte(unsigned char byte)
{
    return {'\\', 'x', kHexDigits[byte >> 4], kHexDigits[byte & 0xF]};
}

int HexValue(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool IsBlank(char c)
{
    return c == ' ' || c == '\t';
}

// The escape for a byte that is not written as it is, or empty. `quote` is the delimiter of the
// string being written.
std::string EscapeFor(unsigned char byte, char quote)
{
    switch (byte) {
        case '\\': return "\\\\";
        case '\n': return "\\n";
        case '\r': return "\\r";
        case '\t': return "\\t";
        case '\0': return "\\0";
        default: break;
    }
    if (byte == static_cast<unsigned char>(quote)) return std::string{'\\', quote};
    if (byte < 0x20 || byte == 0x7F) return HexByte(byte);
    return {};
}

std::string QuoteWith(const std::string& bytes, char quote, bool asciiOnly)
{
    std::string out(1, quote);
    for (size_t pos = 0; pos < bytes.size();) {
        const auto byte = static_cast<unsigned char>(bytes[pos]);
        if (byte >= 0x80) {
            const size_t length = asciiOnly ? 0 : Utf8SequenceLength(bytes, pos);
            if (length == 0) {
                out += HexByte(byte);
                ++pos;
            } else {
                out.append(bytes, pos, length);
                pos += length;
            }
            continue;
        }
        const std::string escape = EscapeFor(byte, quote);
        if (escape.empty())
            out += static_cast<char>(byte);
        else
            out += escape;
        ++pos;
    }
    out += quote;
    return out;
}

}   // namespace

size_t Utf8SequenceLength(const std::string& bytes, size_t pos)
{
    const auto at = [&](size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned char lead = at(pos);
    if (lead < 0x80) return 1;
    size_t length = 0;
    uint32_t codePoint = 0;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        codePoint = lead & 0x1F;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        codePoint = lead & 0x0F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        codePoint = lead & 0x07;
    } else {
        return 0;
    }
    if (pos + length > bytes.size()) return 0;
    for (size_t i = 1; i < length; ++i) {
        if ((at(pos + i) & 0xC0) != 0x80) return 0;
        codePoint = (codePoint << 6) | (at(pos + i) & 0x3F);
    }
    const bool overlong = (length == 3 && codePoint < 0x800) || (length == 4 && codePoint < 0x10000);
    const bool surrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
    if (overlong || surrogate || codePoint > 0x10FFFF) return 0;
    return length;
}

bool IsValidUtf8(const std::string& bytes)
{
    for (size_t pos = 0; pos < bytes.size();) {
        const size_t length = Utf8SequenceLength(bytes, pos);
        if (length == 0) return false;
        pos += length;
    }
    return true;
}

std::string Quote(const std::string& bytes)
{
    return QuoteWith(bytes, '"', false);
}

bool NeedsHardEscape(const std::string& bytes, size_t pos)
{
    const auto byte = static_cast<unsigned char>(bytes[pos]);
    if (byte == '\n' || byte == '\t') return false;
    if (byte >= 0x80) return Utf8SequenceLength(bytes, pos) == 0;
    return byte < 0x20 || byte == 0x7F;
}

std::string FormatType(ResType type)
{
    std::string code;
    for (int shift = 24; shift >= 0; shift -= 8) code += static_cast<char>((type >> shift) & 0xFF);
    return QuoteWith(code, '\'', true);
}

// ---- LineCursor -----------------------------------------------------------------------------

void LineCursor::SkipBlanks()
{
    while (pos_ < line_.size() && IsBlank(line_[pos_])) ++pos_;
}

bool LineCursor::AtEnd()
{
    SkipBlanks();
    return pos_ >= line_.size() || line_[pos_] == '#';
}

bool LineCursor::Take(char symbol)
{
    SkipBlanks();
    if (pos_ < line_.size() && line_[pos_] == symbol) {
        ++pos_;
        return true;
    }
    return false;
}

bool LineCursor::Expect(char symbol, const char* where, std::string& error)
{
    if (Take(symbol)) return true;
    error = std::string("expected '") + symbol + "' " + where + ", found " + Upcoming();
    return false;
}

std::string LineCursor::ReadWord()
{
    SkipBlanks();
    const size_t start = pos_;
    if (pos_ < line_.size() && std::isalpha(static_cast<unsigned char>(line_[pos_]))) {
        while (pos_ < line_.size() && (std::isalnum(static_cast<unsigned char>(line_[pos_])) || line_[pos_] == '_'))
            ++pos_;
    }
    return line_.substr(start, pos_ - start);
}

bool LineCursor::ReadNumber(long min, long max, const char* what, long& value, std::string& error)
{
    SkipBlanks();
    const size_t start = pos_;
    const bool negative = pos_ < line_.size() && line_[pos_] == '-';
    if (negative) ++pos_;
    const size_t digitsStart = pos_;
    long magnitude = 0;
    bool tooBig = false;
    while (pos_ < line_.size() && std::isdigit(static_cast<unsigned char>(line_[pos_]))) {
        magnitude = magnitude * 10 + (line_[pos_] - '0');
        tooBig = tooBig || magnitude > 1000000;
        if (tooBig) magnitude = 1000000;
        ++pos_;
    }
    const bool endsClean = pos_ >= line_.size() || !std::isalnum(static_cast<unsigned char>(line_[pos_]));
    if (pos_ == digitsStart || !endsClean) {
        pos_ = start;
        error = std::string("expected ") + what + " (a number), found " + Upcoming();
        return false;
    }
    value = negative ? -magnitude : magnitude;
    if (tooBig || value < min || value > max) {
        error = std::string(what) + " " + line_.substr(start, pos_ - start) + " is out of range (" +
                std::to_string(min) + " to " + std::to_string(max) + ")";
        return false;
    }
    return true;
}

bool LineCursor::ReadInt16(const char* what, int16_t& value, std::string& error)
{
    long number = 0;
    if (!ReadNumber(INT16_MIN, INT16_MAX, what, number, error)) return false;
    value = static_cast<int16_t>(number);
    return true;
}

bool LineCursor::NextIsQuote()
{
    SkipBlanks();
    return pos_ < line_.size() && line_[pos_] == '"';
}

bool LineCursor::ReadQuoted(std::string& value, std::string& error)
{
    SkipBlanks();
    if (pos_ >= line_.size() || line_[pos_] != '"') {
        error = "expected a quoted string, found " + Upcoming();
        return false;
    }
    return ReadDelimited('"', value, error);
}

bool LineCursor::ReadType(ResType& type, std::string& error)
{
    SkipBlanks();
    std::string code;
    if (pos_ >= line_.size() || line_[pos_] != '\'') {
        error = "expected a resource type in single quotes (like 'STR#'), found " + Upcoming();
        return false;
    }
    if (!ReadDelimited('\'', code, error)) return false;
    if (code.size() != 4) {
        error = "a resource type has exactly 4 characters, " + QuoteWith(code, '\'', true) + " has " +
                std::to_string(code.size());
        return false;
    }
    type = 0;
    for (char c : code) type = (type << 8) | static_cast<unsigned char>(c);
    return true;
}

bool LineCursor::ReadDelimited(char quote, std::string& value, std::string& error)
{
    value.clear();
    ++pos_;   // the opening quote
    while (pos_ < line_.size()) {
        const char c = line_[pos_++];
        if (c == quote) return true;
        if (c != '\\') {
            if (static_cast<unsigned char>(c) < 0x20 && c != '\t') {
                error = "control character in a string; write it as an escape";
                return false;
            }
            value += c;
            continue;
        }
        if (pos_ >= line_.size()) break;
        const char kind = line_[pos_++];
        switch (kind) {
            case '\\': value += '\\'; break;
            case '"': value += '"'; break;
            case '\'': value += '\''; break;
            case 'n': value += '\n'; break;
            case 'r': value += '\r'; break;
            case 't': value += '\t'; break;
            case '0': value += '\0'; break;
            case 'x': {
                const int high = pos_ < line_.size() ? HexValue(line_[pos_]) : -1;
                const int low = pos_ + 1 < line_.size() ? HexValue(line_[pos_ + 1]) : -1;
                if (high < 0 || low < 0) {
                    error = "\\x in a string needs two hex digits";
                    return false;
                }
                value += static_cast<char>(high * 16 + low);
                pos_ += 2;
                break;
            }
            default: error = std::string("unknown escape '\\") + kind + "' in a string"; return false;
        }
    }
    error = "string is not closed (strings end on the line they start)";
    return false;
}

bool LineCursor::ReadHexBytes(std::string& bytes, std::string& error)
{
    bytes.clear();
    int pending = -1;
    for (SkipBlanks(); pos_ < line_.size() && line_[pos_] != '#'; ++pos_) {
        const char c = line_[pos_];
        if (IsBlank(c)) continue;
        const int digit = HexValue(c);
        if (digit < 0) {
            error = "expected hex digits, found " + Upcoming();
            return false;
        }
        if (pending < 0) {
            pending = digit;
        } else {
            bytes += static_cast<char>(pending * 16 + digit);
            pending = -1;
        }
    }
    if (pending >= 0) {
        error = "odd number of hex digits (each byte takes two)";
        return false;
    }
    return true;
}

std::string LineCursor::Upcoming()
{
    SkipBlanks();
    if (pos_ >= line_.size() || line_[pos_] == '#') return "the end of the line";
    size_t end = pos_;
    while (end < line_.size() && !IsBlank(line_[end]) && end - pos_ < 20) ++end;
    while (end < line_.size() && end > pos_ && (static_cast<unsigned char>(line_[end]) & 0xC0) == 0x80)
        --end;   // never cut a character in two
    return "'" + line_.substr(pos_, end - pos_) + "'";
}

}   // namespace toolbox::text
