// SPDX-License-Identifier: MIT
//
// UTF-8 as the library converts it, alike on every system. Each longest piece of bytes that begins a valid sequence but
// does not complete it, each byte that cannot begin one, and each lone surrogate becomes U+FFFD.
#pragma once

#include <climits>

#include "kvbase/kernels/text_kernels.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace strings {

// Both functions work in two steps: with capacity 0 they return the size of the result; with a capacity that suffices
// they convert and return the size written. 0 on failure: nothing to convert, too little room, a result beyond the range
// of int.
inline int decodeUtf8(char const* bytes, int size, wchar* units, int capacity) {
  if (size <= 0 || capacity < 0) return 0;
  if (capacity == 0) return kernels().utf16Size(bytes, size);
  // A byte never decodes to more than one unit.
  if (capacity < size && kernels().utf16Size(bytes, size) > capacity) return 0;
  return kernels().fromUtf8(bytes, size, units, capacity);
}

inline int encodeUtf8(wchar const* units, int size, char* bytes, int capacity) {
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
