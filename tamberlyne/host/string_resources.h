// User-interface strings from the plug-in's own resource file. An id of the form 0xLLLLNNNN is
// entry NNNN of string list LLLL; an id below 0x10000 is a single string resource.
#pragma once

#include <cstdint>

// Copies string `id` into `dst` as a zero-terminated text of at most len - 1 characters and
// returns `dst`; null when `len` is 0. A missing string gives the empty text.
char* PlugIn_GetStringResource(int32_t id, char* dst, int16_t len);

// Puts string `id` into `buf` (256 bytes) as a length-prefixed string; empty when missing.
void HardGetPString(int32_t id, unsigned char* buf);
