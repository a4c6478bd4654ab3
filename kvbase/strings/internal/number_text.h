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

// The decimal text of a number, on the stack.
class DecimalText {
 public:
  explicit DecimalText(long long value);
  explicit DecimalText(unsigned long long value);

  wchar const* units() const { return units_ + start_; }
  int length() const { return kCapacity - start_; }

 private:
  static constexpr int kCapacity = 20;  // the longest: -9223372036854775808, 18446744073709551615

  void write(unsigned long long magnitude, bool negative);

  wchar units_[kCapacity];
  int start_ = kCapacity;
};

// Writes a number in the general format of printf (%g) with the given number of significant digits, in at most
// `capacity` units without terminator; returns how many. The decimal point is that of the C locale.
// REQUIRES: the value is finite.
int printGeneral(double value, int precision, wchar* out, int capacity);

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
// digits only. Too large gives infinity, too small the nearest number there is, 0 included (wcstod).
Parsed<double> readDouble(wchar const* text);

}  // namespace strings
}  // namespace KV_1_1
