// SPDX-License-Identifier: MIT
#include "kvbase/kernels/utf8.h"

#include <climits>

#include "kvbase/kernels/text_kernels.h"

namespace KV_1_1 {
namespace strings {

int decodeUtf8(char const* bytes, int size, wchar* units, int capacity) {
  if (size <= 0 || capacity < 0) return 0;
  if (capacity == 0) return kernels().utf16Size(bytes, size);
  // A byte never decodes to more than one unit.
  if (capacity < size && kernels().utf16Size(bytes, size) > capacity) return 0;
  return kernels().fromUtf8(bytes, size, units);
}

int encodeUtf8(wchar const* units, int size, char* bytes, int capacity) {
  if (size <= 0 || capacity < 0) return 0;
  if (capacity == 0) {
    long long const needed = kernels().utf8Size(units, size);
    return needed > INT_MAX ? 0 : static_cast<int>(needed);
  }
  // A unit never takes more than three bytes.
  if (capacity / 3 < size && kernels().utf8Size(units, size) > capacity) return 0;
  return static_cast<int>(kernels().toUtf8(units, size, bytes));
}

}  // namespace strings
}  // namespace KV_1_1
