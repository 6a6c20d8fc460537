// Length-prefixed ("Pascal") strings: byte 0 holds the length (at most 255), the characters
// follow. The resource files and the dialog code speak them.
#pragma once

#include <string>

// Turns a zero-terminated text into a length-prefixed one in `dst` (256 bytes): byte 0 is the
// text's length capped at 255, followed by that many bytes.
void c2p(unsigned char* dst, const char* text);

// Converts a length-prefixed string to a zero-terminated one in place; returns its length.
int ptocs(unsigned char* text);

// Copies a length-prefixed string, length byte included, from its last byte backwards (so that
// an overlapping copy to a higher address is safe).
void Pstr_Pstr(const unsigned char* src, unsigned char* dst);

// The characters of a length-prefixed string.
std::string PstrToString(const unsigned char* text);
