// SPDX-License-Identifier: MIT
#include "kvbase/strings/internal/number_text.h"

#include <charconv>
#include <clocale>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

#include "kvbase/strings/internal/character_class.h"

namespace KV_1_1 {
namespace strings {

namespace {

constexpr wchar kPairs[] =
    KVW("0001020304050607080910111213141516171819202122232425262728293031323334353637383940414243444546474849")
        KVW("5051525354555657585960616263646566676869707172737475767778798081828384858687888990919293949596979899");

// Writes two digits in front of `end`; returns their place.
wchar* writePair(std::size_t number, wchar* end) {
  return static_cast<wchar*>(std::memcpy(end - 2, kPairs + 2 * number, 2 * sizeof(wchar)));
}

// The zeros of the decimal digits that the C runtime converts.
constexpr wchar kZeros[] = {0x0030, 0x0660, 0x06F0, 0x0966, 0x09E6, 0x0A66, 0x0AE6, 0x0B66, 0x0C66,
                            0x0CE6, 0x0D66, 0x0E50, 0x0ED0, 0x0F20, 0x1040, 0x17E0, 0x1810, 0xFF10};

// The value of a digit; -1 if the unit is none of those.
int digitValue(wchar unit) {
  if (unit >= KVW('0') && unit <= KVW('9')) return unit - KVW('0');
  if (unit < 0x80) return -1;
  for (wchar const zero : kZeros) {
    if (unit >= zero && unit < zero + 10) return unit - zero;
  }
  return -1;
}

struct Magnitude {
  std::uint64_t value;
  bool negative;
  bool tooLarge;
  wchar const* end;  // null if there is no digit
  wchar const* endOfAscii;
};

// The digits of any script, with the limit in view.
template <std::uint64_t kLimit>
Magnitude readAllDigits(wchar const* const digits, Magnitude number) {
  number.value = 0;
  wchar const* text = digits;
  for (int digit; (digit = digitValue(*text)) >= 0; ++text) {
    std::uint64_t const added = static_cast<std::uint64_t>(digit);
    // The division is needed near the limit only.
    if (number.value < kLimit / 10 || number.value <= (kLimit - added) / 10) {
      number.value = number.value * 10 + added;
    } else {
      number.tooLarge = true;
    }
  }
  if (text != digits) number.end = text;
  return number;
}

// Reads sign and digits; tooLarge says that the magnitude exceeds the limit.
template <std::uint64_t kLimit>
Magnitude readMagnitude(wchar const* text) {
  while (hasClass(*text, platform::kSpace)) ++text;
  bool const negative = *text == KVW('-');
  if (negative || *text == KVW('+')) ++text;
  std::uint64_t value = 0;
  wchar const* const end = readAsciiDigits(text, value);
  // 19 digits do not wrap around, and no digit of another script follows an ASCII unit.
  if (end - text <= 19 && *end < 0x80) return {value, negative, value > kLimit, end != text ? end : nullptr, end};
  return readAllDigits<kLimit>(text, {0, negative, false, nullptr, end});
}

template <class Value>
Parsed<Value> readSigned(wchar const* text) {
  // A negative number saturates at the smallest value, whose magnitude is one more than that of the largest.
  constexpr Value kLargest = std::numeric_limits<Value>::max();
  Magnitude const number = readMagnitude<static_cast<std::uint64_t>(kLargest)>(text);
  if (number.tooLarge) return {number.negative ? std::numeric_limits<Value>::min() : kLargest, number.endOfAscii};
  Value const value = static_cast<Value>(number.value);
  return {number.negative ? static_cast<Value>(-value) : value, number.endOfAscii};
}

template <class Value>
Parsed<Value> readUnsigned(wchar const* text) {
  constexpr Value kLargest = std::numeric_limits<Value>::max();
  Magnitude const number = readMagnitude<kLargest>(text);
  if (number.end == nullptr) return {0, text};
  if (number.tooLarge) return {kLargest, number.end};
  Value const value = static_cast<Value>(number.value);
  return {number.negative ? static_cast<Value>(0 - value) : value, number.end};
}

// Reads digits with at most one point among them, if that is the whole number and its digits make an exact double. The
// power of ten is exact too, so the one division rounds as the conversion has to.
bool readShortDecimal(wchar const* text, Parsed<double>& number) {
  constexpr int kExactDigits = 15;
  static constexpr double kPowersOfTen[kExactDigits + 1] = {1,   1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                            1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
  bool const negative = *text == KVW('-');
  if (negative || *text == KVW('+')) ++text;
  std::uint64_t digits = 0;
  wchar const* end = readAsciiDigits(text, digits);
  std::ptrdiff_t count = end - text;
  std::ptrdiff_t places = 0;
  if (*end == KVW('.')) {
    wchar const* const fraction = end + 1;
    end = readAsciiDigits(fraction, digits);
    places = end - fraction;
    count += places;
  }
  // A letter may go on with an exponent or with hexadecimal digits.
  if (count == 0 || count > kExactDigits || hasClass(*end, platform::kAlpha)) return false;
  double const value = static_cast<double>(static_cast<std::int64_t>(digits)) / kPowersOfTen[places];
  number = {negative ? -value : value, end};
  return true;
}

// The units that can belong to a number, as chars with a terminator. They are on the stack unless there are very many.
class NarrowNumber {
 public:
  explicit NarrowNumber(wchar const* text) {
    while (text[size_] != 0 && text[size_] < 0x80 && hasClass(text[size_], platform::kGraphic)) ++size_;
    char* chars = brief_;
    if (size_ >= sizeof brief_) {
      long_.resize(size_);
      chars = &long_[0];
      first_ = chars;
    }
    for (std::size_t i = 0; i < size_; ++i) chars[i] = static_cast<char>(text[i]);
    chars[size_] = 0;
  }
  NarrowNumber(NarrowNumber const&) = delete;
  NarrowNumber& operator=(NarrowNumber const&) = delete;

  char const* begin() const { return first_; }
  char const* end() const { return first_ + size_; }

 private:
  std::size_t size_ = 0;
  char brief_[128];
  std::string long_;
  char const* first_ = brief_;
};

bool isHexadecimal(char const* digits) {
  return digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X');
}

}  // namespace

// Four digits a division, since each division waits for the one before it.
void DecimalText::writeTo(wchar* place) const {
  wchar* next = place + length_;
  unsigned long long rest = magnitude_;
  for (; rest >= 10000; rest /= 10000) {
    unsigned int const four = static_cast<unsigned int>(rest % 10000);
    next = writePair(four / 100, writePair(four % 100, next));
  }
  unsigned int front = static_cast<unsigned int>(rest);
  if (front >= 100) {
    next = writePair(front % 100, next);
    front /= 100;
  }
  if (front >= 10) {
    writePair(front, next);
  } else {
    next[-1] = static_cast<wchar>(KVW('0') + front);
  }
  if (negative_) *place = KVW('-');
}

Parsed<int> readInt(wchar const* text) {
  return readSigned<int>(text);
}

Parsed<long long> readInt64(wchar const* text) {
  return readSigned<long long>(text);
}

Parsed<std::uint32_t> readUnsigned32(wchar const* text) {
  return readUnsigned<std::uint32_t>(text);
}

Parsed<std::uint64_t> readUnsigned64(wchar const* text) {
  return readUnsigned<std::uint64_t>(text);
}

Parsed<double> readDouble(wchar const* text) {
  wchar const* start = text;
  while (hasClass(*start, platform::kSpace)) ++start;
  bool const hasPoint = *std::localeconv()->decimal_point == '.';
  Parsed<double> brief{};
  if (hasPoint && readShortDecimal(start, brief)) return brief;
  NarrowNumber const narrow(start);
  char const* const first = narrow.begin();
  char const* const digits = first + (*first == '+' || *first == '-' ? 1 : 0);

  // from_chars is the faster one, but it does not accept a plus sign, the prefix of hexadecimal numbers or a locale's
  // decimal point, and it gives no value when a number is out of range. strtod does the rest.
  double value = 0;
  bool const plain = *digits != '+' && *digits != '-' && !isHexadecimal(digits) && hasPoint;
  if (plain) {
    auto const [end, error] = std::from_chars(digits, narrow.end(), value);
    if (error == std::errc::invalid_argument) return {0, text};
    if (error == std::errc()) return {*first == '-' ? -value : value, start + (end - first)};
  }
  char* end = nullptr;
  value = std::strtod(first, &end);
  if (end == first) return {0, text};
  return {value, start + (end - first)};
}

}  // namespace strings
}  // namespace KV_1_1
