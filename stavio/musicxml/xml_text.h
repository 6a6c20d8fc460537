// Byte-level helpers for MusicXML text: the file's encoding (UTF-8, or UTF-16 with a byte-order
// mark, which the host reads as UTF-8 and writes back in its own encoding), the extent of an
// element in the original bytes, the indentation around it, and escaping of new text.
#pragma once

#include <cstddef>
#include <string>

namespace stavio::musicxml {

enum class TextEncoding {
    Utf8,
    Utf16LittleEndian,
    Utf16BigEndian,
};

// The encoding a byte-order mark names (UTF-8 without one).
TextEncoding DetectEncoding(const std::string& bytes);
// UTF-16 text (after its byte-order mark) as UTF-8; false on a broken surrogate or odd length.
bool Utf16ToUtf8(const std::string& bytes, TextEncoding encoding, std::string& utf8);
// UTF-8 text as UTF-16 with a byte-order mark.
std::string Utf8ToUtf16(const std::string& utf8, TextEncoding encoding);

// The offset just past the element that starts with '<' at `start` (its end tag, or "/>").
// `text` must be well-formed there; comments, CDATA, processing instructions and quoted
// attribute values are skipped. std::string::npos when the element does not end.
size_t ElementEnd(const std::string& text, size_t start);
// The offset just past the start tag that begins at `start`.
size_t StartTagEnd(const std::string& text, size_t start);
// The blanks between the line start and `offset` ("" when other text comes first).
std::string IndentBefore(const std::string& text, size_t offset);
// The file's line end: "\r\n" when its first line ends so, else "\n".
std::string LineEndOf(const std::string& text);

// A one-line element the host made, laid out one child element per line, `indent` plus one
// `unit` deeper per level, for a file that lays its elements out so; text-only elements stay
// on their line. `xml` holds elements and text only (no comments or mixed content).
std::string LayOut(const std::string& xml, const std::string& indent, const std::string& unit,
                   const std::string& lineEnd);

// `text` with &, <, > and " escaped.
std::string EscapeXml(const std::string& text);

}   // namespace stavio::musicxml
