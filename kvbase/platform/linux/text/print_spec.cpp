// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/text/print_spec.h"

#include <cstddef>
#include <limits>

namespace KV_1_1 {
namespace platform {

namespace {

class SpecParser {
 public:
  SpecParser(wchar const*& format, Arguments& arguments, Spec& spec)
      : next_(format), arguments_(arguments), spec_(spec) {}

  bool run() {
    while (bool* const flag = flagOf(*next_)) {
      *flag = true;
      ++next_;
    }
    if (!parseNumber(spec_.width)) return false;
    if (spec_.width < 0) {
      spec_.left = true;
      if (spec_.width == std::numeric_limits<int>::min()) return false;
      spec_.width = -spec_.width;
    }
    if (*next_ == '.') {
      ++next_;
      spec_.precision = 0;
      if (!parseNumber(spec_.precision)) return false;
      if (spec_.precision < 0) spec_.precision = kNoPrecision;
    }
    parseSize();
    spec_.conversion = *next_;
    if (spec_.conversion == 0) return false;
    ++next_;
    return true;
  }

 private:
  bool* flagOf(wchar unit) {
    switch (unit) {
      case '-':
        return &spec_.left;
      case '+':
        return &spec_.plus;
      case ' ':
        return &spec_.blank;
      case '#':
        return &spec_.alternate;
      case '0':
        return &spec_.zero;
      default:
        return nullptr;
    }
  }

  // Parses digits or an asterisk; `value` is unchanged if there is neither. False if the number exceeds int.
  bool parseNumber(int& value) {
    if (*next_ == '*') {
      ++next_;
      value = va_arg(arguments_.list, int);
      return true;
    }
    for (; *next_ >= '0' && *next_ <= '9'; ++next_) {
      int const digit = *next_ - '0';
      if (value > (std::numeric_limits<int>::max() - digit) / 10) return false;
      value = 10 * value + digit;
    }
    return true;
  }

  void parseSize() {
    struct Prefix {
      char text[4];
      Size size;
    };
    static constexpr Prefix kPrefixes[] = {
        {"hh", Size::kChar},      {"h", Size::kShort},    {"ll", Size::kLongLong}, {"l", Size::kLong},
        {"I64", Size::kLongLong}, {"I32", Size::kLong},   {"I", Size::kLongLong},  {"z", Size::kLongLong},
        {"j", Size::kLongLong},   {"t", Size::kLongLong}, {"L", Size::kDefault},   {"w", Size::kWide},
    };
    for (Prefix const& prefix : kPrefixes) {
      std::size_t n = 0;
      while (prefix.text[n] != 0 && next_[n] == static_cast<wchar>(prefix.text[n])) ++n;
      if (prefix.text[n] != 0) continue;
      spec_.size = prefix.size;
      next_ += n;
      return;
    }
  }

  wchar const*& next_;
  Arguments& arguments_;
  Spec& spec_;
};

}  // namespace

bool parseSpec(wchar const*& format, Arguments& arguments, Spec& spec) {
  spec = Spec();
  return SpecParser(format, arguments, spec).run();
}

}  // namespace platform
}  // namespace KV_1_1
