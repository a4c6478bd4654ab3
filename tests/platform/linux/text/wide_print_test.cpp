// SPDX-License-Identifier: MIT
//
// Rules of the Linux formatter only: wrong formats, extreme sizes, texts without terminator.
#include "kvbase/platform/linux/text/wide_print.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/support/allocation_failure.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

struct Printed {
  int result;
  wstring units;
};

int printTo(wchar* out, std::size_t capacity, wchar const* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  int const n = platform::widePrint(out, capacity, format, arguments);
  va_end(arguments);
  return n;
}

// Prints into a block of exactly the capacity, so that a sanitizer detects a write beyond it, and full of units, so that a
// missing terminator shows.
template <class... Values>
Printed print(std::size_t capacity, wchar const* format, Values... values) {
  std::unique_ptr<wchar[]> const out(new wchar[capacity]);
  std::fill_n(out.get(), capacity, KVW('~'));
  int const n = printTo(out.get(), capacity, format, values...);
  return {n, wstring(out.get(), n < 0 ? capacity : static_cast<std::size_t>(n))};
}

TEST(WidePrint, WrongFormatsEndAndLeaveWhatWasWritten) {
  int stored = 7;
  for (wchar const* format : {KVW("ab%n"), KVW("ab%"), KVW("ab%y"), KVW("ab%5"), KVW("ab%-"), KVW("ab%l"), KVW("ab%I6"),
                              KVW("ab%.3"), KVW("ab%5%"), KVW("ab%99999999999d"), KVW("ab%.99999999999d")}) {
    Printed const printed = print(8, format, &stored);
    EXPECT_EQ(printed.result, -1) << narrow(format);
    EXPECT_EQ(narrow(printed.units.c_str()), "ab") << narrow(format);
  }
  EXPECT_EQ(stored, 7) << "%n stores nothing";
}

TEST(WidePrint, ExhaustedMemoryLeavesWhatWasWritten) {
  std::string const longText(300, 'x');
  for (AllocationSweep sweep; sweep.next();) {
    wchar out[400];
    std::fill_n(out, 400, KVW('~'));
    sweep.run([&] { printTo(out, 400, KVW("ab%hs"), longText.c_str()); });
    EXPECT_EQ(narrow(out), sweep.failed() ? "ab" : "ab" + longText);
  }
}

TEST(WidePrint, HugeWidthsAreCut) {
  EXPECT_EQ(print(4, KVW("%2147483647d"), 1).result, -1);
  EXPECT_EQ(print(4, KVW("%-2147483647d"), 1).units, KVW("1   "));
  EXPECT_EQ(print(4, KVW("%.2147483647d"), 1).units, KVW("0000"));
  EXPECT_EQ(print(4, KVW("%.2147483647f"), 1.5).units, KVW("1.50"));
  EXPECT_EQ(print(4, KVW("%.20f"), 0.99999999).units, KVW("0.99")) << "cut, not rounded";
  EXPECT_EQ(print(4, KVW("%*d"), -2147483647 - 1, 1).result, -1);
  EXPECT_EQ(print(0, KVW("a")).result, -1);
  EXPECT_EQ(print(0, KVW("")).result, 0);
}

TEST(WidePrint, ANegativePrecisionIsNone) {
  EXPECT_EQ(narrow(print(16, KVW("%.*f|%.*ls"), -1, 1.5, -5, KVW("ab")).units), "1.500000|ab");
}

TEST(WidePrint, LongFloatsAreExact) {
  Printed const printed = print(3000, KVW("%.2000f"), 0.1);
  ASSERT_EQ(printed.result, 2002);
  std::vector<char> expected(3000);
  std::snprintf(expected.data(), expected.size(), "%.2000f", 0.1);
  EXPECT_EQ(narrow(printed.units), expected.data());
  EXPECT_EQ(narrow(print(8, KVW("%Lg"), 2.5).units), "2.5");
  for (std::size_t size = 510; size <= 514; ++size) {
    EXPECT_EQ(narrow(print(600, KVW("%.*f"), static_cast<int>(size - 2), 0.0).units),
              "0." + std::string(size - 2, '0'));
  }
}

TEST(WidePrint, TextsWithPrecisionNeedNoTerminator) {
  wchar const wide[] = {'a', 'b', 'c'};
  EXPECT_EQ(narrow(print(16, KVW("%.3ls|"), static_cast<wchar const*>(wide)).units), "abc|");
  std::unique_ptr<char[]> const bytes(new char[3]{'x', 'y', 'z'});
  EXPECT_EQ(narrow(print(16, KVW("%.3hs|"), bytes.get()).units), "xyz|");
  std::unique_ptr<char[]> const utf8(new char[4]{'\xC3', '\xA4', '\xC3', '\xB6'});
  EXPECT_EQ(narrow(print(16, KVW("%.2hs|"), utf8.get()).units), "\u00E4\u00F6|");
  EXPECT_EQ(narrow(print(16, KVW("%.1hs|"), utf8.get()).units), "\u00E4|");
  EXPECT_EQ(narrow(print(16, KVW("%.3hs|"), "\u20AC\u20AC\u20AC\u20AC").units), "\u20AC\u20AC\u20AC|");
  EXPECT_EQ(print(16, KVW("%.1hs|"), "\U0001F600").units, wstring({0xD83D, '|'})) << "half of a character";
  EXPECT_EQ(narrow(print(16, KVW("%.9hs|"), "\u20ACa").units), "\u20ACa|");
  EXPECT_EQ(narrow(print(16, KVW("%.0hs|"), "x").units), "|");
  EXPECT_EQ(narrow(print(16, KVW("%.2ls"), static_cast<wchar const*>(nullptr)).units), "(n");
}

TEST(WidePrint, ANarrowCharacterIsDecoded) {
  EXPECT_EQ(narrow(print(16, KVW("%hc%C%lC%c|"), 'a', 'b', 0xE4, 0xE4).units), "ab\u00E4\u00E4|");
  EXPECT_EQ(narrow(print(16, KVW("%hc%C|"), 0xE4, 0xE4).units), "\uFFFD\uFFFD|");
}

TEST(WidePrint, SmallIntegersAreCutToTheirSize) {
  EXPECT_EQ(narrow(print(16, KVW("%hhd %hhu"), 255, 257).units), "-1 1");
  EXPECT_EQ(narrow(print(16, KVW("%05ls"), KVW("ab")).units), "000ab");
  EXPECT_EQ(narrow(print(16, KVW("%05g"), 1.0 / 0.0).units), "  inf");
}

// Integers and floating point numbers are compared with snprintf, which has the same rules for these.
TEST(WidePrint, AgreesWithTheRuntimeOnNumbers) {
  std::mt19937_64 random(11);
  char const* const flags[] = {"", "-", "+", " ", "#", "0", "-#", "+0", "#0", " 0", "+-", "#+"};
  char const* const sizes[] = {"", "4", "12", "30"};
  char const* const precisions[] = {"", ".", ".0", ".1", ".5", ".20"};
  for (char const* flag : flags) {
    for (char const* size : sizes) {
      for (char const* precision : precisions) {
        std::string const head = std::string("%") + flag + size + precision;
        for (char conversion : std::string("diuoxXeEfFgGaA")) {
          std::string const text(1, conversion);
          bool const isInteger = std::string("diuoxX").find(conversion) != std::string::npos;
          for (int i = 0; i < 6; ++i) {
            unsigned long long const bits = i == 0 ? 0 : random() >> (random() % 64);
            double const number = static_cast<double>(static_cast<long long>(bits)) / 1000.0;
            char expected[512];
            Printed printed;
            std::string const native = head + (isInteger ? "ll" : "") + text;
            if (isInteger) {
              std::snprintf(expected, sizeof expected, native.c_str(), bits);
              printed = print(512, widen(native).c_str(), bits);
            } else {
              bool const hasOwnDefault = *precision == 0 && (conversion == 'a' || conversion == 'A');
              std::string const whole = hasOwnDefault ? head + ".13" + text : native;
              std::snprintf(expected, sizeof expected, whole.c_str(), number);
              printed = print(512, widen(native).c_str(), number);
            }
            ASSERT_EQ(narrow(printed.units), expected) << native << " of " << bits;
          }
        }
      }
    }
  }
}

TEST(WidePrint, RandomFormatsStayInBounds) {
  std::mt19937 random(5);
  std::string const alphabet = "%%%%dluxXohgeIi64.*-+ #05c32zjthwC";
  for (int i = 0; i < 100000; ++i) {
    wstring format;
    for (std::size_t n = random() % 12; n > 0; --n) format += static_cast<wchar>(alphabet[random() % alphabet.size()]);
    std::size_t const capacity = random() % 40;
    Printed const printed =
        print(capacity, format.c_str(), 1, 2, 3, 4, 5, 6, 7, 8, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0);
    ASSERT_GE(printed.result, -1);
    ASSERT_LE(printed.result, static_cast<int>(capacity));
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
