// SPDX-License-Identifier: MIT
//
// Texts of the library as UTF-8 and back, for logs and expectations: simple code, independent of the library's own
// conversions. A lone surrogate becomes the three bytes of its number.
#pragma once

#include <string>

#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace testing {

inline std::string narrow(wstring const& text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    bool const pair = c >= 0xD800 && c < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000;
    if (pair) c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00);
    if (c < 0x80) {
      bytes += static_cast<char>(c);
      continue;
    }
    int const tail = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    int const lead = tail == 1 ? 0xC0 : tail == 2 ? 0xE0 : 0xF0;
    bytes += static_cast<char>(lead | (c >> (6 * tail)));
    for (int k = tail - 1; k >= 0; --k) bytes += static_cast<char>(0x80 | ((c >> (6 * k)) & 0x3F));
  }
  return bytes;
}

// Widens ASCII.
inline wstring widen(std::string const& ascii) {
  return wstring(ascii.begin(), ascii.end());
}

}  // namespace testing
}  // namespace KV_1_1
