// SPDX-License-Identifier: MIT
//
// What the models of String's operations share: a text that may be NIL, and numbers and classes of units. The models take
// one unit at a time and share nothing with the library but the system's classes of units beyond ASCII.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "tests/reference/string_model.h"

namespace KV_1_1 {
namespace reference {

// The units that the length counts; none for NIL.
using Text = std::optional<wstring>;

constexpr wchar kQuote = 0x22;
constexpr wchar kBackslash = 0x5C;
constexpr wchar kLineFeed = 0x0A;
constexpr wchar kCarriageReturn = 0x0D;

inline bool isBetween(wchar unit, char first, char last) {
  return unit >= static_cast<wchar>(first) && unit <= static_cast<wchar>(last);
}
// ASCII and full-width.
inline bool isHexadecimal(wchar unit) {
  wchar const plain = unit >= 0xFF01 && unit <= 0xFF5E ? static_cast<wchar>(unit - 0xFF01 + '!') : unit;
  return isBetween(plain, '0', '9') || isBetween(plain, 'a', 'f') || isBetween(plain, 'A', 'F');
}
inline bool isSign(wchar unit) {
  return unit == static_cast<wchar>('+') || unit == static_cast<wchar>('-');
}

// The value of a decimal digit: ASCII, full-width or of a script that the runtime's conversions know. -1 for the rest,
// such as superscripts and digits of younger scripts.
inline int digitValue(wchar unit) {
  static constexpr std::uint16_t kZeros[] = {0x0030, 0x0660, 0x06F0, 0x0966, 0x09E6, 0x0A66, 0x0AE6, 0x0B66, 0x0C66,
                                             0x0CE6, 0x0D66, 0x0E50, 0x0ED0, 0x0F20, 0x1040, 0x17E0, 0x1810, 0xFF10};
  for (std::uint16_t const zero : kZeros)
    if (unit >= zero && unit <= zero + 9) return unit - zero;
  return -1;
}

template <class Accept>
int findFirst(Text const& text, int from, Accept accept) {
  if (!text || from < 0) return -1;
  for (std::size_t i = static_cast<std::size_t>(from); i < text->size(); ++i)
    if (accept((*text)[i])) return static_cast<int>(i);
  return -1;
}
inline int findAlphaNum(Text const& text) {
  return findFirst(text, 0, isWordOrNumber);
}
inline int findGraphic(Text const& text) {
  return findFirst(text, 0, isGraphic);
}

// A decimal number at `from`: an optional sign and digits. `end` is where it ends; `from` if there are no digits.
struct Decimal {
  bool negative = false;
  bool tooLarge = false;  // for 64 bits
  unsigned long long magnitude = 0;
  std::size_t end = 0;
};
inline Decimal scanDecimal(wstring const& units, std::size_t from) {
  Decimal number;
  std::size_t at = from;
  if (at < units.size() && isSign(units[at])) number.negative = units[at++] == static_cast<wchar>('-');
  std::size_t const digits = at;
  for (; at < units.size() && digitValue(units[at]) >= 0; ++at) {
    unsigned long long const digit = static_cast<unsigned long long>(digitValue(units[at]));
    unsigned long long const limit = std::numeric_limits<unsigned long long>::max();
    if (number.magnitude > (limit - digit) / 10) number.tooLarge = true;
    if (!number.tooLarge) number.magnitude = number.magnitude * 10 + digit;
  }
  number.end = at > digits ? at : from;
  return number;
}
// Saturating at the limits of the type.
template <class Signed>
Signed signedDecimal(wstring const& units, std::size_t from) {
  Decimal const number = scanDecimal(units, from);
  unsigned long long const most = static_cast<unsigned long long>(std::numeric_limits<Signed>::max());
  if (number.negative)
    return number.tooLarge || number.magnitude > most ? std::numeric_limits<Signed>::min()
                                                      : static_cast<Signed>(-static_cast<long long>(number.magnitude));
  return number.tooLarge || number.magnitude > most ? std::numeric_limits<Signed>::max()
                                                    : static_cast<Signed>(number.magnitude);
}
// Saturating at the largest value; negative numbers wrap.
template <class Unsigned>
Unsigned unsignedDecimal(Decimal const& number) {
  Unsigned const most = std::numeric_limits<Unsigned>::max();
  if (number.tooLarge || number.magnitude > most) return most;
  Unsigned const value = static_cast<Unsigned>(number.magnitude);
  return number.negative ? static_cast<Unsigned>(0 - value) : value;
}

}  // namespace reference
}  // namespace KV_1_1
