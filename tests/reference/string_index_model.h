// SPDX-License-Identifier: MIT
//
// Model of the number at the end of a text.
#pragma once

#include "tests/reference/string_format_model.h"

namespace KV_1_1 {
namespace reference {

// Where the digits at the very end begin.
inline std::size_t runStart(wstring const& units) {
  std::size_t start = units.size();
  while (start > 0 && isDigit(units[start - 1])) --start;
  return start;
}

inline unsigned int indexOf(Text const& text) {
  return text ? static_cast<unsigned int>(signedDecimal<int>(*text, runStart(*text))) : 0;
}

inline void setIndex(Text& text, unsigned int index) {
  wstring const front = text ? text->substr(0, runStart(*text)) : wstring();
  text = index == 0 && !front.empty() ? front : front + decimalText(index);
}

inline void stepIndex(Text& text, int step) {
  std::size_t const start = text ? runStart(*text) : 0;
  std::size_t const size = text ? text->size() - start : 0;
  if (size == 0) {
    text = text.value_or(wstring()) + static_cast<wchar>('1');
    return;
  }
  std::int64_t const sum = static_cast<std::int64_t>(signedDecimal<int>(*text, start)) + step;
  wstring digits = decimalText(static_cast<std::int32_t>(static_cast<std::uint32_t>(sum)));
  if (digits.size() < size) digits.insert(0, size - digits.size(), static_cast<wchar>('0'));
  for (std::size_t i = 0; i < size; ++i) (*text)[start + i] = digits[i];
  *text += digits.substr(size);
}

}  // namespace reference
}  // namespace KV_1_1
