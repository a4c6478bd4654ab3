// SPDX-License-Identifier: MIT
//
// Pages with one byte a character are converted by tables. Here every such page is compared with its converter.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <vector>

#include "kvbase/platform/internal/native_backends.h"
#include "kvbase/platform/linux/text/code_page_converter.h"
#include "tests/support/random_text.h"
#include "tests/support/threads.h"

namespace KV_1_1 {
namespace testing {
namespace {

using platform::CodePageConverter;
using platform::NativeText;

constexpr unsigned int kOneBytePages[] = {
    37,    437,   500,   720,   737,   775,   850,   852,   855,   857,   858,   860,   861,   862,   863,   864,
    865,   866,   869,   870,   874,   875,   1026,  1047,  1140,  1141,  1142,  1143,  1144,  1145,  1146,  1147,
    1148,  1149,  1250,  1251,  1252,  1253,  1254,  1255,  1256,  1257,  1258,  10000, 10006, 10007, 10029, 10081,
    20127, 20273, 20277, 20278, 20280, 20284, 20285, 20290, 20297, 20420, 20424, 20838, 20866, 20871, 20924, 21025,
    21866, 28591, 28592, 28593, 28594, 28595, 28596, 28597, 28598, 28599, 28603, 28605, 38598};

std::string encodedBy(CodePageConverter& converter, wstring const& units) {
  std::string bytes(3 * units.size(), '#');
  int const capacity = static_cast<int>(bytes.size());
  bytes.resize(
      static_cast<std::size_t>(converter.encode(units.data(), static_cast<int>(units.size()), &bytes[0], capacity)));
  return bytes;
}

// Measured and converted.
std::string encodedInPage(unsigned int page, wstring const& units) {
  int const size = static_cast<int>(units.size());
  int const needed = NativeText().encode(page, units.data(), size, nullptr, 0);
  std::string bytes(static_cast<std::size_t>(needed), '#');
  if (needed == 0) return bytes;
  EXPECT_EQ(NativeText().encode(page, units.data(), size, &bytes[0], needed), needed);
  if (needed > 1) {
    std::string less = bytes;
    EXPECT_EQ(NativeText().encode(page, units.data(), size, &less[0], needed - 1), 0) << "too little room";
  }
  return bytes;
}

wstring unitsOf(CodePageConverter& converter) {
  wstring units;
  for (int number = 0; number <= 0xFF; ++number) {
    char const byte = static_cast<char>(number);
    wchar unit = KVW('#');
    EXPECT_EQ(converter.decode(&byte, 1, &unit, 1), 1) << number;
    units += unit;
  }
  return units;
}

TEST(CodePageTables, EveryByteDecodesAsByTheConverter) {
  for (unsigned int page : kOneBytePages) {
    SCOPED_TRACE(page);
    CodePageConverter converter(page);
    ASSERT_TRUE(converter.isOpen());
    ASSERT_TRUE(converter.isOneByte());
    wstring const expected = unitsOf(converter);
    std::string all;
    for (int number = 0; number <= 0xFF; ++number) {
      all += static_cast<char>(number);
      wchar unit = KVW('#');
      ASSERT_EQ(NativeText().decode(page, &all.back(), 1, &unit, 1), 1) << number;
      ASSERT_EQ(unit, expected[static_cast<std::size_t>(number)]) << number;
    }
    ASSERT_EQ(NativeText().decode(page, all.data(), 256, nullptr, 0), 256);
    wstring together(256, KVW('#'));
    ASSERT_EQ(NativeText().decode(page, all.data(), 256, &together[0], 256), 256);
    EXPECT_EQ(together, expected);
    EXPECT_EQ(NativeText().decode(page, all.data(), 256, &together[0], 255), 0) << "too little room";
  }
}

// All units that a page has and those near ASCII; of the others each page takes another eighth.
TEST(CodePageTables, UnitsEncodeAsByTheConverter) {
  std::vector<bool> isOfAPage(0x10000);
  for (unsigned int page : kOneBytePages) {
    CodePageConverter converter(page);
    for (wchar const unit : unitsOf(converter)) isOfAPage[unit] = true;
  }
  int turn = 0;
  for (unsigned int page : kOneBytePages) {
    SCOPED_TRACE(page);
    CodePageConverter converter(page);
    ++turn;
    for (int number = 0; number <= 0xFFFF; ++number) {
      bool const isNear = number <= 0x2FF || isOfAPage[static_cast<std::size_t>(number)];
      if (!isNear && (number + turn) % 8 != 0) continue;
      wchar const unit = static_cast<wchar>(number);
      char expected[4] = {};
      char bytes[4] = {};
      int const size = converter.encode(&unit, 1, expected, 4);
      ASSERT_EQ(NativeText().encode(page, &unit, 1, bytes, 4), size) << number;
      ASSERT_EQ(bytes[0], expected[0]) << number;
      ASSERT_EQ(NativeText().encode(page, &unit, 1, nullptr, 0), size) << number;
    }
  }
}

// Whatever stands before a character of the page, it becomes the same byte.
TEST(CodePageTables, EveryTwoCharactersOfAPageEncodeAsByTheConverter) {
  for (unsigned int page : kOneBytePages) {
    CodePageConverter converter(page);
    wstring const units = unitsOf(converter);
    wstring text;
    for (wchar const first : units) {
      for (wchar const second : units) text += {first, second};
    }
    EXPECT_TRUE(encodedInPage(page, text) == encodedBy(converter, text)) << page;
  }
}

// Characters of the page, pairs and lone surrogates, and what the page does not have, in texts of every length.
TEST(CodePageTables, RandomTextsEncodeAsByTheConverter) {
  RandomText random(61);
  for (unsigned int page : kOneBytePages) {
    CodePageConverter converter(page);
    wstring const own = unitsOf(converter);
    for (int length = 1; length <= 140; ++length) {
      wstring text;
      for (int i = 0; i < length; ++i) text += own[static_cast<std::size_t>(random.below(256))];
      if (random.oneIn(2)) {
        text += random.text(random.below(20), RandomUnits::kAnyWithNul);
        text += {wchar(0xD83D), wchar(0xDE00), wchar(0x200B), KVW('a')};
      }
      ASSERT_EQ(encodedInPage(page, text), encodedBy(converter, text)) << page << " " << length;
    }
  }
}

// Ten thousand units in a row take the vectors, the tables and the way from one to the other.
TEST(CodePageTables, LongTextsGoThereAndBack) {
  RandomText random(62);
  for (unsigned int page : {437u, 1251u, 1252u, 28591u, 37u}) {
    SCOPED_TRACE(page);
    CodePageConverter converter(page);
    std::string bytes;
    for (int i = 0; i < 10000; ++i) {
      bytes += static_cast<char>(random.oneIn(50) ? random.below(256) : random.between(0x20, 0x7E));
    }
    wstring units(bytes.size(), KVW('#'));
    wstring expected = units;
    int const size = static_cast<int>(bytes.size());
    ASSERT_EQ(NativeText().decode(page, bytes.data(), size, &units[0], size), size);
    ASSERT_EQ(converter.decode(bytes.data(), size, &expected[0], size), size);
    EXPECT_TRUE(units == expected);
    EXPECT_TRUE(encodedInPage(page, units) == encodedBy(converter, units));
  }
}

TEST(CodePageTables, ManyThreadsConvertAtOnce) {
  for (unsigned int page : {855u, 949u}) {
    SCOPED_TRACE(page);
    std::atomic<int> wrong{0};
    onThreads([page, &wrong](int) {
      CodePageConverter converter(page);
      wstring const text = KVW("\u0416a\u3042\uD55C\u00E9");
      std::string const expected = encodedBy(converter, text);
      for (int round = 0; round < 200; ++round) wrong += encodedInPage(page, text) != expected ? 1 : 0;
    });
    EXPECT_EQ(wrong, 0);
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
