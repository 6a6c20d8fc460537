// The pieces of the resource text form that every body shares: quoted strings with escapes,
// type codes, numbers, UTF-8 checks, and a cursor that reads them off one line.
#pragma once

#include "toolbox/resources.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace toolbox::text {

// The length of the valid UTF-8 sequence starting at `pos` (1 to 4), or 0 when the bytes there
// are not valid UTF-8 (stray continuation bytes, overlong forms, surrogates, beyond U+10FFFF).
size_t Utf8SequenceLength(const std::string& bytes, size_t pos);
bool IsValidUtf8(const std::string& bytes);

// The string between double quotes, escaped so that it reads back byte for byte: valid UTF-8
// sequences are written as they are, control bytes and bytes that are not UTF-8 as escapes.
std::string Quote(const std::string& bytes);
// Whether Quote writes the byte sequence at `pos` as an escape that is not \n or \t (the ones
// that make text hard to read).
bool NeedsHardEscape(const std::string& bytes, size_t pos);
std::string FormatType(ResType type);   // with the single quotes, e.g. 'STR#'

// Reads the parts of one line, left to right. Every Read... skips leading blanks; on failure it
// returns false and leaves a message in `error` (without file or line).
class LineCursor {
public:
    explicit LineCursor(const std::string& line) : line_(line) {}

    // True when only blanks and a comment remain.
    bool AtEnd();
    // Takes `symbol` (e.g. "=", "{") if it comes next.
    bool Take(char symbol);
    bool Expect(char symbol, const char* where, std::string& error);
    // A word of letters, digits and '_' that starts with a letter; empty when none comes next.
    std::string ReadWord();
    // A decimal number in [min, max].
    bool ReadNumber(long min, long max, const char* what, long& value, std::string& error);
    bool ReadInt16(const char* what, int16_t& value, std::string& error);
    bool NextIsQuote();
    bool ReadQuoted(std::string& value, std::string& error);
    bool ReadType(ResType& type, std::string& error);
    // Pairs of hex digits up to the end of the line or a comment; blanks between pairs are fine.
    bool ReadHexBytes(std::string& bytes, std::string& error);
    // A short quote of what comes next, for messages.
    std::string Upcoming();

private:
    void SkipBlanks();
    bool ReadDelimited(char quote, std::string& value, std::string& error);

    const std::string& line_;
    size_t pos_ = 0;
};

}   // namespace toolbox::text
