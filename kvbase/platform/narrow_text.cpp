// SPDX-License-Identifier: MIT
#include "kvbase/platform/narrow_text.h"

#include <climits>
#include <cstring>

#include "kvbase/kernels/utf8.h"

namespace KV_1_1 {
namespace platform {

bool isUtf8(TextApi& text, unsigned int codePage) {
  return (codePage == kAnsiCodePage ? text.ansiCodePage() : codePage) == kUtf8CodePage;
}

int measureNarrow(char const* bytes) {
  std::size_t const size = std::strlen(bytes) + 1;
  return size <= INT_MAX ? static_cast<int>(size) : 0;
}

int decodeNarrow(TextApi& text, unsigned int codePage, char const* bytes, int size, wchar* units, int capacity) {
  if (size == -1) size = measureNarrow(bytes);
  return isUtf8(text, codePage) ? strings::decodeUtf8(bytes, size, units, capacity)
                                : text.decode(codePage, bytes, size, units, capacity);
}

int encodeNarrow(TextApi& text, unsigned int codePage, wchar const* units, int size, char* bytes, int capacity) {
  return isUtf8(text, codePage) ? strings::encodeUtf8(units, size, bytes, capacity)
                                : text.encode(codePage, units, size, bytes, capacity);
}

}  // namespace platform
}  // namespace KV_1_1
