// SPDX-License-Identifier: MIT
//
// Model of the escapes of control characters, on an array of units as in the payload.
#pragma once

#include "tests/reference/string_text_model.h"

namespace KV_1_1 {
namespace reference {

// The letter of a short escape, NUL if the unit has none.
inline wchar escapeLetter(wchar unit) {
  switch (unit) {
    case kLineFeed:
      return static_cast<wchar>('n');
    case kCarriageReturn:
      return static_cast<wchar>('r');
    case kQuote:
    case kBackslash:
      return unit;
    default:
      return 0;
  }
}

// The text as it reads afterwards, up to its first NUL.
inline Text controlsToEsc(Text const& text, bool unicode) {
  if (!text || text->empty()) return text;
  std::size_t shortEscapes = 0;
  std::size_t wideUnits = 0;
  for (wchar const unit : *text) {
    if (escapeLetter(unit) != 0) ++shortEscapes;
    if (unit >= 0x80) ++wideUnits;
  }
  if (shortEscapes == 0 && wideUnits == 0) return text;

  std::size_t const room = text->size() + shortEscapes + 5 * wideUnits;
  wstring array = *text + wchar();
  array.resize(room + 1, static_cast<wchar>('?'));
  std::ptrdiff_t w = static_cast<std::ptrdiff_t>(room);
  auto const store = [&](wchar unit) { array[static_cast<std::size_t>(w--)] = unit; };
  for (std::size_t i = text->size() + 1; i-- > 0;) {
    wchar const unit = array[i];
    if (escapeLetter(unit) != 0) {
      store(escapeLetter(unit));
      store(kBackslash);
    } else if (unit >= 0x80 && unicode) {
      for (int shift = 0; shift < 16; shift += 4) store(static_cast<wchar>("0123456789ABCDEF"[(unit >> shift) & 0xF]));
      store(static_cast<wchar>('u'));
      store(kBackslash);
    } else {
      store(unit);
    }
  }
  return visible(array);
}

struct Decoded {
  int result = -1;
  Text text;                // as it reads afterwards, up to its first NUL
  bool textSettled = true;  // false: only the result is specified
};

// Four hexadecimal digits as strtol in radix 16 takes them; decimal digits of other scripts count, other letters end.
inline wchar hexadecimalValue(wstring const& units, std::size_t from) {
  int value = 0;
  for (std::size_t i = from; i < from + 4; ++i) {
    int digit = digitValue(units[i]);
    if (isBetween(units[i], 'a', 'f')) digit = units[i] - 'a' + 10;
    if (isBetween(units[i], 'A', 'F')) digit = units[i] - 'A' + 10;
    if (digit < 0) break;
    value = value * 16 + digit;
  }
  return static_cast<wchar>(value);
}

inline Decoded escToControls(Text const& text, bool unicode) {
  Decoded decoded;
  decoded.text = text;
  if (!text || text->empty()) return decoded;
  std::size_t const length = text->size();
  std::size_t const first = visible(*text).find(kBackslash);
  if (first == wstring::npos || first + 1 >= length) return decoded;

  wstring units = *text;
  std::size_t s = first + 1;
  std::size_t d = first + 1;
  bool pending = true;
  bool bad = false;
  while (!bad) {
    wchar const unit = units[s];
    units[d] = unit;
    if (pending) {
      pending = false;
      if (unit == kQuote || unit == kBackslash) {
        units[--d] = unit;
      } else if (unit == static_cast<wchar>('n')) {
        units[--d] = kLineFeed;
      } else if (unit == static_cast<wchar>('r')) {
        units[--d] = kCarriageReturn;
      } else if (unit == static_cast<wchar>('u') && unicode) {
        bad = s + 4 >= length;
        for (std::size_t i = s + 1; !bad && i <= s + 4; ++i) bad = !isHexadecimal(units[i]);
        if (bad) break;
        units[--d] = hexadecimalValue(units, s + 1);
        s += 4;
      } else if (unit != static_cast<wchar>('u')) {
        bad = true;
        break;
      }
    } else if (unit == kBackslash) {
      pending = true;
    }
    ++s;
    ++d;
    if (s < length) continue;
    if (d < length) units[d] = 0;
    decoded.text = visible(units);
    return decoded;
  }

  decoded.result = static_cast<int>(s) - 1;
  if (s <= d) return decoded;
  wstring const front = substr(units, static_cast<int>(first), static_cast<int>(d) - 1);
  wstring const again = *controlsToEsc(front, true);
  std::size_t const needed = s - 1 - first;
  decoded.textSettled = again.size() >= needed;
  if (!decoded.textSettled) return decoded;
  units.replace(first, needed, again, 0, needed);
  units[s - 1] = kBackslash;
  decoded.text = visible(units);
  return decoded;
}

}  // namespace reference
}  // namespace KV_1_1
