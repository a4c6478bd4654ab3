// SPDX-License-Identifier: MIT
//
// Numbers to and from text by the rules of the C runtime of Windows, on every system. Texts to read are NUL-terminated.
//
// Reading an integer takes leading white space, one sign, and decimal digits: ASCII, full-width, and those of the
// scripts that the runtime knows.
#pragma once

#include <cstdint>

#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace strings {

// The decimal text of an integer, written to where it is needed: a text on the stack that is copied as vectors right after
// it was written in units makes the processor wait.
class DecimalText {
 public:
  static constexpr int kLongest = 20;  // -9223372036854775808, 18446744073709551615

  explicit DecimalText(long long value)
      : DecimalText(value < 0 ? 0 - static_cast<unsigned long long>(value) : static_cast<unsigned long long>(value),
                    value < 0) {}
  explicit DecimalText(unsigned long long value) : DecimalText(value, false) {}

  int length() const { return length_; }
  // Writes length() units.
  void writeTo(wchar* place) const;

 private:
  DecimalText(unsigned long long magnitude, bool negative)
      : magnitude_(magnitude), length_((negative ? 1 : 0) + digitsOf(magnitude)), negative_(negative) {}

  static int digitsOf(unsigned long long number) {
    int digits = 1;
    for (; number >= 10000; number /= 10000) digits += 4;
    return digits + (number >= 10) + (number >= 100) + (number >= 1000);
  }

  unsigned long long magnitude_;
  int length_;
  bool negative_;
};

// Writes a number in the general format of printf (%g) with the given number of significant digits, in at most
// `capacity` units without terminator; returns how many. The decimal point is that of the C locale.
// REQUIRES: the value is finite.
int printGeneral(double value, int precision, wchar* out, int capacity);

// ASCII digits at the front of a text, added to `value` modulo 2^64; returns their end.
inline wchar const* readAsciiDigits(wchar const* text, std::uint64_t& value) {
  for (; *text >= KVW('0') && *text <= KVW('9'); ++text) {
    value = value * 10 + static_cast<std::uint64_t>(*text - KVW('0'));
  }
  return text;
}

// A number at the front of a text, and an end.
template <class Value>
struct Parsed {
  Value value;
  wchar const* end;
};

// The number; 0 if there is none. Both saturate at the limits of their result (_wtoi, _wtoi64). The end is that of the
// ASCII digits behind white space and sign, of which there may be none; digits of other scripts stand further on.
Parsed<int> readInt(wchar const* text);
Parsed<long long> readInt64(wchar const* text);

// An unsigned number and its end; 0 and the text itself if there is none. Both saturate at the largest value, and a minus
// sign negates modulo 2^32 or 2^64 (wcstoul, _wcstoui64).
Parsed<std::uint32_t> readUnsigned32(wchar const* text);
Parsed<std::uint64_t> readUnsigned64(wchar const* text);

// A floating-point number: decimal or hexadecimal (0x1.8p3), "inf", "infinity", "nan", without regard to case, ASCII
// digits only, with the decimal point of the C locale. Too large gives infinity, too small the nearest number there is, 0
// included (wcstod).
Parsed<double> readDouble(wchar const* text);

}  // namespace strings
}  // namespace KV_1_1
