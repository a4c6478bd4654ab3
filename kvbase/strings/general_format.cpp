// SPDX-License-Identifier: MIT
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kvbase/strings/internal/number_text.h"

namespace KV_1_1 {
namespace strings {

namespace {

constexpr int kMostDigits = 18;  // 10^18 fits into 63 bits
constexpr int kMostPlaces = 27;  // 5^27 fits into 63 bits

struct Powers {
  std::uint64_t values[kMostPlaces + 1];

  constexpr explicit Powers(std::uint64_t base, int last) : values() {
    values[0] = 1;
    for (int i = 1; i <= last; ++i) values[i] = values[i - 1] * base;
  }
};
constexpr Powers kFives(5, kMostPlaces);
constexpr Powers kTens(10, kMostDigits);

// An unsigned number of 128 bits.
struct Wide {
  std::uint64_t high;
  std::uint64_t low;
};

Wide product(std::uint64_t a, std::uint64_t b) {
  constexpr std::uint64_t kHalf = 0xFFFFFFFF;
  std::uint64_t const lows = (a & kHalf) * (b & kHalf);
  std::uint64_t const first = (a >> 32) * (b & kHalf);
  std::uint64_t const second = (a & kHalf) * (b >> 32);
  std::uint64_t const middle = (lows >> 32) + (first & kHalf) + (second & kHalf);
  return {(a >> 32) * (b >> 32) + (first >> 32) + (second >> 32) + (middle >> 32), (middle << 32) | (lows & kHalf)};
}

// The number divided by 2^bits, where the quotient fits into 64 bits.
std::uint64_t shifted(Wide number, int bits) {
  if (bits >= 64) return number.high >> (bits - 64);
  return bits == 0 ? number.low : (number.high << (64 - bits)) | (number.low >> bits);
}

// Whether one of the lowest bits is set.
bool hasBitsBelow(Wide number, int bits) {
  std::uint64_t const part = bits < 64 ? number.low : number.high;
  return (part & ((std::uint64_t{1} << bits % 64) - 1)) != 0 || (bits >= 64 && number.low != 0);
}

// The significant digits of a positive value as one number, and the power of ten of the first one.
struct Decimal {
  std::uint64_t digits;
  int exponent;
};

// The value rounded to a number of digits, a tie to the even one, as printf rounds it. Times 10^places the value is
// fraction * 5^places * 2^-shift, which fits into 128 bits, so nothing is rounded twice. False if it would not fit. A value
// with so few places is above 10^-28, so it is a normal number, and less than 128 bits are shifted out.
bool roundToDigits(double value, int precision, Decimal& decimal) {
  constexpr int kFractionBits = 52;
  constexpr int kBias = 1023;
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  int const binaryExponent = static_cast<int>(bits >> kFractionBits) - kBias;
  if (precision > kMostDigits) return false;
  std::uint64_t const one = std::uint64_t{1} << kFractionBits;
  std::uint64_t const fraction = (bits & (one - 1)) | one;

  // The logarithm of 2^binaryExponent, which is not above the value: this exponent is the right one or one too small.
  constexpr int kLogarithmOfTwo = 78913;  // times 2^-18
  int exponent = binaryExponent * kLogarithmOfTwo >> 18;
  for (;; ++exponent) {
    int const places = precision - 1 - exponent;
    int const shift = kFractionBits - binaryExponent - places;
    if (places < 0 || places > kMostPlaces || shift <= 0) return false;
    Wide const scaled = product(fraction, kFives.values[places]);
    std::uint64_t digits = shifted(scaled, shift);
    bool const isHalfOrMore = shifted(scaled, shift - 1) % 2 != 0;
    if (isHalfOrMore && (digits % 2 != 0 || hasBitsBelow(scaled, shift - 1))) ++digits;
    if (digits >= kTens.values[precision]) continue;
    decimal = {digits, exponent};
    return true;
  }
}

// Writes units one behind the other.
class Units {
 public:
  explicit Units(wchar* out) : begin_(out), end_(out) {}

  int count() const { return static_cast<int>(end_ - begin_); }
  void put(wchar unit) { *end_++ = unit; }
  void put(wchar const* units, int n) {
    for (int i = 0; i < n; ++i) put(units[i]);
  }

 private:
  wchar* begin_;
  wchar* end_;
};

// A sign, a zero, the decimal point, three zeros and the digits; with an exponent it is less.
constexpr int kLongestDecimal = 6 + kMostDigits;

int printDecimal(Decimal decimal, bool negative, wchar point, wchar* out) {
  DecimalText const text(static_cast<unsigned long long>(decimal.digits));
  wchar digits[DecimalText::kLongest];
  text.writeTo(digits);
  int const precision = text.length();
  int significant = precision;
  while (significant > 1 && digits[significant - 1] == KVW('0')) --significant;
  Units units(out);
  if (negative) units.put(KVW('-'));
  int const exponent = decimal.exponent;
  if (exponent < -4 || exponent >= precision) {
    units.put(digits[0]);
    if (significant > 1) units.put(point);
    units.put(digits + 1, significant - 1);
    units.put(KVW('e'));
    units.put(exponent < 0 ? KVW('-') : KVW('+'));
    int const size = exponent < 0 ? -exponent : exponent;
    units.put(static_cast<wchar>(KVW('0') + size / 10));
    units.put(static_cast<wchar>(KVW('0') + size % 10));
  } else if (exponent < 0) {
    units.put(KVW('0'));
    units.put(point);
    for (int zeros = -1 - exponent; zeros > 0; --zeros) units.put(KVW('0'));
    units.put(digits, significant);
  } else {
    units.put(digits, exponent + 1);
    if (significant > exponent + 1) {
      units.put(point);
      units.put(digits + exponent + 1, significant - exponent - 1);
    }
  }
  return units.count();
}

}  // namespace

int printGeneral(double value, int precision, wchar* out, int capacity) {
  wchar const point = static_cast<unsigned char>(*std::localeconv()->decimal_point);
  Decimal decimal;
  if (capacity >= kLongestDecimal && roundToDigits(std::fabs(value), precision, decimal)) {
    return printDecimal(decimal, std::signbit(value), point, out);
  }
  char narrow[512];
  char* const end = std::to_chars(narrow, narrow + sizeof narrow, value, std::chars_format::general, precision).ptr;
  int written = 0;
  for (char const* p = narrow; p < end && written < capacity; ++p) {
    out[written++] = *p == '.' ? point : static_cast<unsigned char>(*p);
  }
  return written;
}

}  // namespace strings
}  // namespace KV_1_1
