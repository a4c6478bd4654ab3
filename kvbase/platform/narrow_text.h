// SPDX-License-Identifier: MIT
//
// Conversion between narrow text and the text of the library by the number of a code page. UTF-8 is converted by the
// library's own kernels, alike on both systems, and every other page by the text backend; this is the only place that
// tells the two apart.
//
// Decoding and encoding work in two steps: capacity 0 asks for the size, a second call with that size converts.
#pragma once

#include <climits>
#include <cstddef>
#include <cstring>

#include "kvbase/kernels/utf8.h"
#include "kvbase/platform/text_api.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

constexpr unsigned int kAnsiCodePage = 0;  // whatever TextApi::ansiCodePage returns
constexpr unsigned int kUtf8CodePage = 65001;

// Whether the code page is UTF-8, be it as the ANSI code page.
inline bool isUtf8(TextApi& text, unsigned int codePage) {
  return codePage == kUtf8CodePage || (codePage == kAnsiCodePage && text.ansiCodePage() == kUtf8CodePage);
}

// The size of a narrow text with its terminator; 0 if that is beyond the range of int.
inline int measureNarrow(char const* bytes) {
  std::size_t const size = std::strlen(bytes) + 1;
  return size <= INT_MAX ? static_cast<int>(size) : 0;
}

// Decodes `size` bytes (-1: up to the terminator, which is converted too). Returns the number of units, 0 on failure:
// nothing to convert, a code page that the system does not have, too little room, a result beyond the range of int.
inline int decodeNarrow(TextApi& text, unsigned int codePage, char const* bytes, int size, wchar* units, int capacity) {
  if (size == -1) size = measureNarrow(bytes);
  return isUtf8(text, codePage) ? strings::decodeUtf8(bytes, size, units, capacity)
                                : text.decode(codePage, bytes, size, units, capacity);
}

// Encodes `size` units. Returns the number of bytes, 0 on failure.
inline int encodeNarrow(TextApi& text, unsigned int codePage, wchar const* units, int size, char* bytes, int capacity) {
  return isUtf8(text, codePage) ? strings::encodeUtf8(units, size, bytes, capacity)
                                : text.encode(codePage, units, size, bytes, capacity);
}

}  // namespace platform
}  // namespace KV_1_1
