// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/text/wide_print.h"

#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <string>

#include "kvbase/kernels/utf8_character.h"
#include "kvbase/platform/linux/small_buffer.h"
#include "kvbase/platform/linux/text/print_spec.h"
#include "kvbase/platform/narrow_text.h"

namespace KV_1_1 {
namespace platform {

namespace {

// No double has more decimals that are not zero. A precision beyond this number and beyond the capacity makes no
// difference, because the text is cut and the stored part of it is the same.
constexpr int kMostDecimals = 1100;

// Stores units up to its capacity. The first unit beyond it marks the text as cut; all later ones are dropped. However the
// printing ends, what is stored ends in a terminator if there is room for it: the array has not been initialised.
class Sink {
 public:
  Sink(wchar* out, std::size_t capacity) : out_(out), capacity_(std::min<std::size_t>(capacity, kMost)) {}
  ~Sink() {
    if (size_ < capacity_) out_[size_] = 0;
  }
  Sink(Sink const&) = delete;
  Sink& operator=(Sink const&) = delete;

  bool isCut() const { return cut_; }
  std::size_t size() const { return size_; }
  int capacity() const { return static_cast<int>(capacity_); }

  void fill(wchar unit, std::size_t n) {
    n = taken(n);
    std::fill_n(out_ + size_, n, unit);
    size_ += n;
  }
  template <class Unit>
  void append(Unit const* text, std::size_t n) {
    n = taken(n);
    std::copy_n(text, n, out_ + size_);
    size_ += n;
  }

 private:
  static constexpr std::size_t kMost = std::numeric_limits<int>::max();

  std::size_t taken(std::size_t n) {
    std::size_t const room = cut_ ? 0 : capacity_ - size_;
    cut_ = cut_ || n > room;
    return std::min(n, room);
  }

  wchar* const out_;
  std::size_t const capacity_;
  std::size_t size_ = 0;
  bool cut_ = false;
};

class Printer {
 public:
  Printer(Sink& sink, wchar const* format, Arguments& arguments) : sink_(sink), next_(format), arguments_(arguments) {}

  // False if the format is wrong or the text is cut.
  bool run() {
    while (!sink_.isCut()) {
      wchar const* const text = next_;
      while (*next_ != 0 && *next_ != '%') ++next_;
      sink_.append(text, static_cast<std::size_t>(next_ - text));
      if (*next_ == 0) break;
      ++next_;
      if (*next_ == '%') {
        sink_.append(next_++, 1);
        continue;
      }
      if (!parseSpec(next_, arguments_, spec_) || !convert()) return false;
    }
    return !sink_.isCut();
  }

 private:
  bool convert() {
    bool const wide = spec_.size == Size::kLong || spec_.size == Size::kLongLong || spec_.size == Size::kWide;
    bool const narrow = spec_.size == Size::kShort || spec_.size == Size::kChar;
    switch (spec_.conversion) {
      case 'd':
      case 'i':
        printSigned();
        return true;
      case 'u':
        printUnsigned(unsignedArgument(), 10, "");
        return true;
      case 'o':
        printUnsigned(unsignedArgument(), 8, "");
        return true;
      case 'x':
        printUnsigned(unsignedArgument(), 16, "0x");
        return true;
      case 'X':
        printUnsigned(unsignedArgument(), 16, "0X");
        return true;
      case 'p':
        printPointer();
        return true;
      case 'a':
      case 'A':
      case 'e':
      case 'E':
      case 'f':
      case 'F':
      case 'g':
      case 'G':
        printFloat();
        return true;
      case 'c':
        printCharacter(narrow);
        return true;
      case 'C':
        printCharacter(!wide);
        return true;
      case 's':
        printText(narrow);
        return true;
      case 'S':
        printText(!wide);
        return true;
      default:
        return false;
    }
  }

  long long signedArgument() {
    switch (spec_.size) {
      case Size::kLongLong:
        return va_arg(arguments_.list, long long);
      case Size::kChar:
        return static_cast<signed char>(va_arg(arguments_.list, int));
      case Size::kShort:
        return static_cast<short>(va_arg(arguments_.list, int));
      default:
        return va_arg(arguments_.list, int);
    }
  }
  unsigned long long unsignedArgument() {
    switch (spec_.size) {
      case Size::kLongLong:
        return va_arg(arguments_.list, unsigned long long);
      case Size::kChar:
        return static_cast<unsigned char>(va_arg(arguments_.list, unsigned int));
      case Size::kShort:
        return static_cast<unsigned short>(va_arg(arguments_.list, unsigned int));
      default:
        return va_arg(arguments_.list, unsigned int);
    }
  }

  void printSigned() {
    long long const value = signedArgument();
    unsigned long long const magnitude =
        value < 0 ? 0 - static_cast<unsigned long long>(value) : static_cast<unsigned long long>(value);
    printDigits(value < 0 ? "-" : spec_.plus ? "+" : spec_.blank ? " " : "", magnitude, 10, false);
  }

  void printUnsigned(unsigned long long value, unsigned base, char const* prefix) {
    printDigits(spec_.alternate && value != 0 ? prefix : "", value, base, prefix[0] != 0 && prefix[1] == 'X');
  }

  void printPointer() {
    auto const value = reinterpret_cast<std::uintptr_t>(va_arg(arguments_.list, void*));
    spec_.precision = 2 * sizeof value;
    printDigits("", value, 16, true);
  }

  // Prints an integer: prefix, zeros up to the precision, digits.
  void printDigits(char const* prefix, unsigned long long value, unsigned base, bool upper) {
    char digits[32];
    char* begin = std::end(digits);
    char const* const symbols = upper ? "0123456789ABCDEF" : "0123456789abcdef";
    for (; value != 0; value /= base) *--begin = symbols[value % base];
    auto const size = static_cast<std::size_t>(std::end(digits) - begin);
    std::size_t least = spec_.precision == kNoPrecision ? 1 : static_cast<std::size_t>(spec_.precision);
    if (base == 8 && spec_.alternate) least = std::max(least, size + 1);
    bool const zeroFill = spec_.zero && spec_.precision == kNoPrecision;
    printField(prefix, strlen(prefix), least > size ? least - size : 0, begin, size, zeroFill);
  }

  void printFloat() {
    double const value = va_arg(arguments_.list, double);
    bool const isHexadecimal = spec_.conversion == 'a' || spec_.conversion == 'A';
    if (spec_.precision == kNoPrecision) spec_.precision = isHexadecimal ? 13 : 6;

    SmallBuffer<char, 512> buffer;
    buffer.resize(512);
    std::size_t size = printFloatTo(buffer, value);
    if (size >= buffer.size()) {
      buffer.resize(size + 1);
      printFloatTo(buffer, value);
    }
    if (isIndefinite(value)) size = static_cast<std::size_t>(stpcpy(buffer.data() + size, "(ind)") - buffer.data());

    char const* const text = buffer.data();
    bool const hasSign = text[0] == '-' || text[0] == '+' || text[0] == ' ';
    std::size_t const prefix = (hasSign ? 1u : 0u) + (isHexadecimal && std::isfinite(value) ? 2u : 0u);
    printField(text, prefix, 0, text + prefix, size - prefix, spec_.zero && std::isfinite(value));
  }

  // Returns the size of the whole text, as snprintf does.
  std::size_t printFloatTo(SmallBuffer<char, 512>& buffer, double value) const {
    char format[16], *f = format;
    *f++ = '%';
    if (spec_.plus) *f++ = '+';
    if (spec_.blank) *f++ = ' ';
    if (spec_.alternate) *f++ = '#';
    f = std::copy_n(".*", 2, f);
    *f++ = static_cast<char>(spec_.conversion);
    *f = 0;
    int const precision = std::min(spec_.precision, std::max(kMostDecimals, sink_.capacity()));
    return static_cast<std::size_t>(snprintf(buffer.data(), buffer.size(), format, precision, value));
  }

  // The default NaN of x86, which Windows prints as nan(ind).
  static bool isIndefinite(double value) {
    std::uint64_t bits;
    memcpy(&bits, &value, sizeof bits);
    return bits == 0xFFF8000000000000;
  }

  void printCharacter(bool narrow) {
    int const argument = va_arg(arguments_.list, int);
    wchar unit = static_cast<wchar>(argument);
    char const byte = static_cast<char>(argument);
    if (narrow) decodeNarrow(nativeText(), kAnsiCodePage, &byte, 1, &unit, 1);
    printField("", 0, 0, &unit, 1, spec_.zero);
  }

  void printText(bool narrow) {
    void const* const text = va_arg(arguments_.list, void*);
    std::size_t const most = spec_.precision == kNoPrecision ? static_cast<std::size_t>(std::numeric_limits<int>::max())
                                                             : static_cast<std::size_t>(spec_.precision);
    if (text == nullptr) {
      printUnits(KVW("(null)"), most);
    } else if (narrow) {
      printNarrow(static_cast<char const*>(text), most);
    } else {
      printUnits(static_cast<wchar const*>(text), most);
    }
  }

  // Prints at most `most` units of a text, which needs a terminator only if it is shorter.
  void printUnits(wchar const* text, std::size_t most) {
    std::size_t size = 0;
    while (size < most && text[size] != 0) ++size;
    printField("", 0, 0, text, size, spec_.zero);
  }

  // Prints at most `most` units of a narrow text and reads no byte beyond them.
  void printNarrow(char const* bytes, std::size_t most) {
    SmallBuffer<wchar, 256> units;
    std::size_t size = strnlen(bytes, most);
    for (;;) {
      units.resize(size);
      int const n = decodeNarrow(nativeText(), kAnsiCodePage, bytes, static_cast<int>(size), units.data(),
                                 static_cast<int>(size));
      units.resize(static_cast<std::size_t>(n));
      if (n == 0 || (units.size() >= most && !endsWithinCharacter(bytes, size)) || bytes[size] == 0) break;
      size += strnlen(bytes + size, std::max<std::size_t>(1, most - std::min(most, units.size())));
    }
    printField("", 0, 0, units.data(), std::min(units.size(), most), spec_.zero);
  }

  // Whether the last bytes are the beginning of an incomplete UTF-8 sequence.
  static bool endsWithinCharacter(char const* bytes, std::size_t size) {
    if (!isUtf8(nativeText(), kAnsiCodePage)) return false;
    for (std::size_t tail = 1; tail <= 3 && tail <= size; ++tail) {
      auto const byte = static_cast<unsigned char>(bytes[size - tail]);
      bool const isContinuation = (byte & 0xC0) == 0x80;
      if (!isContinuation) return strings::utf8SequenceSize(byte) > static_cast<int>(tail);
    }
    return false;
  }

  // Prints one field: blanks up to the width or zeros after the prefix, the zeros of the precision, the text.
  template <class Unit>
  void printField(char const* prefix, std::size_t prefixSize, std::size_t zeros, Unit const* text, std::size_t size,
                  bool zeroFill) {
    std::size_t const taken = prefixSize + zeros + size;
    auto const width = static_cast<std::size_t>(spec_.width);
    std::size_t const padding = width > taken ? width - taken : 0;
    if (!spec_.left && !zeroFill) sink_.fill(' ', padding);
    sink_.append(prefix, prefixSize);
    if (!spec_.left && zeroFill) sink_.fill('0', padding);
    sink_.fill('0', zeros);
    sink_.append(text, size);
    if (spec_.left) sink_.fill(' ', padding);
  }

  Sink& sink_;
  wchar const* next_;
  Arguments& arguments_;
  Spec spec_;
};

}  // namespace

int widePrint(wchar* out, std::size_t capacity, wchar const* format, va_list arguments) {
  Sink sink(out, capacity);
  Arguments copy;
  va_copy(copy.list, arguments);
  bool const isDone = Printer(sink, format, copy).run();
  va_end(copy.list);
  return isDone ? static_cast<int>(sink.size()) : -1;
}

}  // namespace platform
}  // namespace KV_1_1
