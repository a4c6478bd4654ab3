// SPDX-License-Identifier: MIT
//
// Code pages, print and character classes, for the native backend of either system.
#include "kvbase/platform/text_api.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "kvbase/platform/narrow_text.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

platform::TextApi& text() {
  return platform::nativeText();
}

wstring decoded(unsigned int page, std::string const& bytes) {
  int const size = static_cast<int>(bytes.size());
  int const needed = platform::decodeNarrow(text(), page, bytes.data(), size, nullptr, 0);
  wstring units(static_cast<std::size_t>(needed), KVW('#'));
  EXPECT_EQ(needed == 0 ? 0 : platform::decodeNarrow(text(), page, bytes.data(), size, &units[0], needed), needed);
  return units;
}

std::string encoded(unsigned int page, wstring const& units) {
  int const size = static_cast<int>(units.size());
  int const needed = platform::encodeNarrow(text(), page, units.data(), size, nullptr, 0);
  std::string bytes(static_cast<std::size_t>(needed), '#');
  EXPECT_EQ(needed == 0 ? 0 : platform::encodeNarrow(text(), page, units.data(), size, &bytes[0], needed), needed);
  return bytes;
}

// The result, and the units written up to the terminator, which is shown as "$", or up to the capacity.
std::string print(std::size_t capacity, wchar const* format, ...) {
  std::vector<wchar> out(capacity + 1, KVW('#'));
  va_list arguments;
  va_start(arguments, format);
  int const n = text().print(out.data(), capacity, format, arguments);
  va_end(arguments);
  EXPECT_EQ(out[capacity], KVW('#')) << "nothing is written beyond the capacity";
  for (wchar& unit : out) {
    if (unit == 0) unit = KVW('$');
  }
  std::size_t const written = n < 0 ? capacity : std::min(capacity, static_cast<std::size_t>(n) + 1);
  return std::to_string(n) + ":" + narrow(wstring(out.data(), written));
}

TEST(TextApiTest, CodePagesConvertBothWays) {
  struct Row {
    char const* name;
    unsigned int page;
    std::string bytes;
    wstring units;
  };
  Row const rows[] = {
      {"ASCII", 20127, "plain", KVW("plain")},
      {"western", 1252, "\xE4\x80", KVW("\u00E4\u20AC")},
      {"cyrillic", 1251, "\xC0\xFF", KVW("\u0410\u044F")},
      {"latin-1", 28591, "\xE4\xFF", KVW("\u00E4\u00FF")},
      {"koi8", 20866, "\xC1", KVW("\u0430")},
      {"old PC", 437, "\x84\xE1", KVW("\u00E4\u00DF")},
      {"old PC, western", 850, "\x84\x9B", KVW("\u00E4\u00F8")},
      {"japanese", 932, "\x93\xFA\x96\x7B", KVW("\u65E5\u672C")},
      {"chinese", 936, "\xD6\xD0", KVW("\u4E2D")},
      {"korean", 949, "\xC7\xD1", KVW("\uD55C")},
      {"UTF-8", 65001, "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", KVW("\u00E4\u20AC\U0001F600")},
      {"inner NUL", 1252, std::string("a\0b", 3), wstring(KVW("a\0b"), 3)},
      {"inner NUL in UTF-8", 65001, std::string("a\0b", 3), wstring(KVW("a\0b"), 3)},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(narrow(decoded(row.page, row.bytes)), narrow(row.units));
    EXPECT_EQ(encoded(row.page, row.units), row.bytes);
  }
}

TEST(TextApiTest, AsciiStandsForItselfWhereverThePageHasIt) {
  for (unsigned int page : {437u,  850u,  852u,  866u,  874u,  932u,  936u,   949u,   950u,   1250u,  1251u, 1252u,
                            1253u, 1254u, 1255u, 1256u, 1257u, 1258u, 20127u, 20866u, 28591u, 28592u, 65001u}) {
    SCOPED_TRACE(page);
    std::string bytes;
    wstring units;
    for (int c = 0; c < 128; ++c) {
      bytes += static_cast<char>(c);
      units += static_cast<wchar>(c);
    }
    EXPECT_EQ(decoded(page, bytes), units);
    EXPECT_EQ(encoded(page, units), bytes);
  }
}

TEST(TextApiTest, ConversionFailsWithZero) {
  wchar units[4];
  char bytes[4];
  for (unsigned int page : {1252u, 65001u}) {
    SCOPED_TRACE(page);
    EXPECT_EQ(platform::decodeNarrow(text(), page, "abc", 0, units, 4), 0) << "no bytes";
    EXPECT_EQ(platform::decodeNarrow(text(), page, "abc", 3, units, 2), 0) << "too little room";
    EXPECT_EQ(platform::decodeNarrow(text(), page, "abc", -1, units, 4), 4) << "with the terminator";
    EXPECT_EQ(units[3], 0);
    EXPECT_EQ(platform::decodeNarrow(text(), page, "abc", -1, units, 3), 0);
    EXPECT_EQ(platform::encodeNarrow(text(), page, KVW("abc"), 0, bytes, 4), 0);
    EXPECT_EQ(platform::encodeNarrow(text(), page, KVW("abc"), 3, bytes, 2), 0);
    EXPECT_EQ(platform::encodeNarrow(text(), page, KVW("abc"), 3, bytes, 3), 3);
  }
  for (unsigned int page : {1200u, 1201u, 4242u, 64999u, 999999u}) {
    SCOPED_TRACE(page);
    EXPECT_EQ(platform::decodeNarrow(text(), page, "abc", 3, nullptr, 0), 0) << "no such page, not for ASCII either";
    EXPECT_EQ(platform::decodeNarrow(text(), page, "abc", 3, units, 4), 0);
    EXPECT_EQ(platform::encodeNarrow(text(), page, KVW("abc"), 3, bytes, 4), 0);
  }
}

TEST(TextApiTest, WhatAPageDoesNotHaveIsReplaced) {
  EXPECT_EQ(encoded(1252, KVW("a\uFF22c")), "aBc") << "by what looks alike";
  EXPECT_EQ(encoded(1252, KVW("a\u3042b")), "a?b");
  EXPECT_EQ(encoded(437, KVW("a\u3042b")), "a?b");
  for (unsigned int page : {874u, 932u, 1252u}) EXPECT_EQ(encoded(page, KVW("a\u200B\uFEFFb")), "a??b") << page;
  EXPECT_EQ(encoded(65001, wstring(1, static_cast<wchar>(0xD800))), "\xEF\xBF\xBD");
  EXPECT_EQ(decoded(65001,
                    "a\xFF"
                    "b"),
            KVW("a\uFFFDb"));
}

TEST(TextApiTest, PageZeroIsTheAnsiCodePage) {
  unsigned int const page = text().ansiCodePage();
  EXPECT_NE(page, 0u);
  std::string const bytes = encoded(page, KVW("\u00E4"));
  EXPECT_EQ(encoded(0, KVW("\u00E4")), bytes);
  EXPECT_EQ(decoded(0, bytes), decoded(page, bytes));
}

TEST(TextApiTest, PrintsEachConversion) {
  EXPECT_EQ(print(64, KVW("plain %% text")), "12:plain % text$");
  EXPECT_EQ(print(64, KVW("%d %i %u"), -5, 7, 4000000000u), "15:-5 7 4000000000$");
  EXPECT_EQ(print(64, KVW("%08x|%8X|%-6x|%#x|%#o"), 0xbeefu, 0xBEEFu, 1u, 255u, 8u),
            "33:0000beef|    BEEF|1     |0xff|010$");
  EXPECT_EQ(print(64, KVW("%+d|% d|%05d|%.3d|%6.3d|%.0d"), 5, 5, -5, 5, -5, 0), "23:+5| 5|-0005|005|  -005|$");
  EXPECT_EQ(print(64, KVW("%lu %ld"), static_cast<ulong32>(4294967295u), -1), "13:4294967295 -1$");
  EXPECT_EQ(print(64, KVW("%lld %I64d"), std::numeric_limits<long long>::min(), static_cast<long long>(-1)),
            "23:-9223372036854775808 -1$");
  EXPECT_EQ(print(64, KVW("%llu %I64x"), ~0ull, ~0ull), "37:18446744073709551615 ffffffffffffffff$");
  EXPECT_EQ(print(64, KVW("%zu %jd %td %I32d"), static_cast<std::size_t>(-1), static_cast<std::intmax_t>(-1),
                  static_cast<std::ptrdiff_t>(-2), 3),
            "28:18446744073709551615 -1 -2 3$");
  EXPECT_EQ(print(64, KVW("%hd %hu"), 65535 + 1 + 3, 65535 + 1 + 4), "3:3 4$");
  EXPECT_EQ(print(64, KVW("%*d|%-*d|%*d|%.*d"), 4, 1, 4, 2, -4, 3, 2, 4), "17:   1|2   |3   |04$");
}

TEST(TextApiTest, PrintsFloatingPoint) {
  EXPECT_EQ(print(64, KVW("%g %.8g %g"), 0.1, 1.5e-7, 1e100), "18:0.1 1.5e-07 1e+100$");
  EXPECT_EQ(print(64, KVW("%f|%.2f|%8.1f|%-8.1f|%08.2f"), 1.5, 2.346, 1.26, 1.26, -1.5),
            "40:1.500000|2.35|     1.3|1.3     |-0001.50$");
  EXPECT_EQ(print(64, KVW("%e %.3E"), 12345.678, 0.00012), "22:1.234568e+04 1.200E-04$");
  EXPECT_EQ(print(64, KVW("%g %g"), std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()),
            "8:inf -inf$");
  EXPECT_EQ(print(64, KVW("%.3a %A"), 1.0, -2.5), "32:0x1.000p+0 -0X1.4000000000000P+1$");
  double const nan = std::copysign(std::numeric_limits<double>::quiet_NaN(), 1.0);
  double const indefinite = std::copysign(nan, -1.0);
  EXPECT_EQ(print(64, KVW("%g %g %12f"), nan, indefinite, indefinite), "26:nan -nan(ind)    -nan(ind)$");
  EXPECT_EQ(print(400, KVW("%.0f"), 1e300).substr(0, 8), "301:1000");
}

TEST(TextApiTest, PrintsTexts) {
  EXPECT_EQ(print(64, KVW("%ls|%s|%hs|%S"), KVW("wide"), KVW("w\u00E4"), "narrow", "n"), "16:wide|w\u00E4|narrow|n$");
  EXPECT_EQ(print(64, KVW("%.2ls|%6ls|%-6ls|%.2hs"), KVW("abcdef"), KVW("ab"), KVW("ab"), "xyz"),
            "19:ab|    ab|ab    |xy$");
  EXPECT_EQ(print(64, KVW("%ls"), static_cast<wchar const*>(nullptr)), "6:(null)$");
  EXPECT_EQ(print(64, KVW("%hs"), static_cast<char const*>(nullptr)), "6:(null)$");
  EXPECT_EQ(print(64, KVW("%c%lc%hc"), 'a', 0xE4, 'b'),
            "3:a\u00E4"
            "b$");
  EXPECT_EQ(print(64, KVW("%5c|%-3c|"), 'a', 'b'), "10:    a|b  |$");
  EXPECT_EQ(print(64, KVW("%p"), reinterpret_cast<void*>(std::uintptr_t{0xBEEF})), "16:000000000000BEEF$");
}

TEST(TextApiTest, PrintWritesATerminatorOnlyIntoRoom) {
  EXPECT_EQ(print(5, KVW("%ls"), KVW("abcd")), "4:abcd$");
  EXPECT_EQ(print(5, KVW("%ls"), KVW("abcde")), "5:abcde");
  EXPECT_EQ(print(5, KVW("%ls"), KVW("abcdef")), "-1:abcde");
  EXPECT_EQ(print(5, KVW("ab%8d"), 1), "-1:ab   ");
  EXPECT_EQ(print(5, KVW("%d%ls"), 123, KVW("456")), "-1:12345");
}

TEST(TextApiTest, ClassesBeyondAscii) {
  using platform::kAlpha;
  using platform::kDigit;
  using platform::kGraphic;
  using platform::kSpace;
  struct Row {
    char const* name;
    unsigned unit;
    unsigned classes;
  };
  Row const rows[] = {
      {"no-break space", 0xA0, kSpace},
      {"next line", 0x85, kSpace},
      {"ideographic space", 0x3000, kSpace},
      {"line separator", 0x2028, kSpace},
      {"a with diaeresis", 0xE4, kAlpha | kGraphic},
      {"cyrillic letter", 0x430, kAlpha | kGraphic},
      {"kanji", 0x65E5, kAlpha | kGraphic},
      {"arabic digit", 0x661, kDigit | kGraphic},
      {"full-width digit", 0xFF11, kDigit | kGraphic},
      {"superscript two", 0xB2, kDigit | kGraphic},
      {"control", 0x81, 0},
      {"em dash", 0x2014, kGraphic},
      {"guillemet", 0xAB, kGraphic},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(text().classesOf(static_cast<wchar>(row.unit)), row.classes);
  }
}

TEST(TextApiTest, SpacesAreThoseOfTheRuntime) {
  std::vector<unsigned> spaces;
  for (unsigned unit = 0x80; unit <= 0xFFFF; ++unit) {
    if ((text().classesOf(static_cast<wchar>(unit)) & platform::kSpace) != 0) spaces.push_back(unit);
  }
  EXPECT_EQ(spaces, (std::vector<unsigned>{0x85, 0xA0, 0x1680, 0x2000, 0x2001, 0x2002, 0x2003, 0x2004, 0x2005, 0x2006,
                                           0x2007, 0x2008, 0x2009, 0x200A, 0x2028, 0x2029, 0x202F, 0x205F, 0x3000}));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
