// SPDX-License-Identifier: MIT
#include "kvbase/strings/internal/narrow_text.h"

#include <climits>
#include <cstring>

#include "kvbase/kernels/text_kernels.h"
#include "kvbase/platform/text_api.h"

namespace KV_1_1 {
namespace strings {

namespace {

bool isUtf8(unsigned int codePage) {
  if (codePage == kAnsiCodePage) codePage = platform::text().ansiCodePage();
  return codePage == kUtf8CodePage;
}

}  // namespace

int decodeNarrow(unsigned int codePage, char const* bytes, int size, wchar* units, int capacity) {
  if (!isUtf8(codePage)) return platform::text().decode(codePage, bytes, size, units, capacity);
  if (size == -1) {
    std::size_t const measured = std::strlen(bytes) + 1;
    if (measured > INT_MAX) return 0;
    size = static_cast<int>(measured);
  }
  if (capacity == 0) return kernels().utf16Size(bytes, size);
  if (capacity < size && kernels().utf16Size(bytes, size) > capacity) return 0;
  return kernels().fromUtf8(bytes, size, units);
}

int encodeNarrow(unsigned int codePage, wchar const* units, int size, char* bytes, int capacity) {
  if (!isUtf8(codePage)) return platform::text().encode(codePage, units, size, bytes, capacity);
  if (capacity == 0) {
    long long const needed = kernels().utf8Size(units, size);
    return needed > INT_MAX ? 0 : static_cast<int>(needed);
  }
  if (capacity / 3 < size && kernels().utf8Size(units, size) > capacity) return 0;
  return static_cast<int>(kernels().toUtf8(units, size, bytes));
}

}  // namespace strings
}  // namespace KV_1_1
