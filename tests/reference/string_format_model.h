// SPDX-License-Identifier: MIT
//
// Model of the texts of values.
#pragma once

#include <cmath>
#include <cstdio>

#include "tests/reference/string_text_model.h"

namespace KV_1_1 {
namespace reference {

template <class Integer>
wstring decimalText(Integer value) {
  bool const negative = value < 0;
  wstring text;
  do {
    int const digit = static_cast<int>(value % 10);
    text.insert(text.begin(), static_cast<wchar>('0' + (negative ? -digit : digit)));
    value = static_cast<Integer>(value / 10);
  } while (value != 0);
  return negative ? static_cast<wchar>('-') + text : text;
}

// As many significant digits as show 5 places of a float, 9 of a double around its integer part.
inline int precisionOf(float value) {
  if (value == 0) return 1;
  float const x = std::log10(std::fabs(value));
  return x < 0 ? 4 : static_cast<int>(std::ceil(x)) + 5;
}
inline int precisionOf(double value) {
  if (value == 0) return 1;
  double const x = std::log10(std::fabs(value));
  return x < 0 ? 8 : static_cast<int>(std::ceil(x)) + 9;
}

template <class Real>
std::string realText(Real value) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value > 0 ? "inf" : "-inf";
  char text[400];
  int const length = std::snprintf(text, sizeof text, "%.*g", precisionOf(value), static_cast<double>(value));
  return std::string(text, static_cast<std::size_t>(length));
}

}  // namespace reference
}  // namespace KV_1_1
