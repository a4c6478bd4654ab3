// SPDX-License-Identifier: MIT
//
// UTF-8 by the library's own kernels: every twin against the slow reference, with malformed input on both sides.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

#include "tests/kernels/kernel_twins.h"
#include "tests/reference/string_encoding.h"
#include "tests/support/guarded_block.h"
#include "tests/support/random_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

// A copy in a block of exactly its size.
template <class T>
std::unique_ptr<T[]> exact(std::basic_string<T> const& text) {
  std::unique_ptr<T[]> block(new T[text.size()]);
  if (!text.empty()) std::memcpy(block.get(), text.data(), text.size() * sizeof(T));
  return block;
}

std::string encoded(Twin const& twin, wstring const& text) {
  int const n = static_cast<int>(text.size());
  std::unique_ptr<wchar[]> const units = exact(text);
  long long const size = twin.kernels->utf8Size(units.get(), n);
  std::unique_ptr<char[]> const bytes(new char[static_cast<std::size_t>(size)]);
  EXPECT_EQ(twin.kernels->toUtf8(units.get(), n, bytes.get()), size);
  return std::string(bytes.get(), static_cast<std::size_t>(size));
}

wstring decoded(Twin const& twin, std::string const& text) {
  int const n = static_cast<int>(text.size());
  std::unique_ptr<char[]> const bytes = exact(text);
  int const size = twin.kernels->utf16Size(bytes.get(), n);
  EXPECT_GE(n, size);
  wstring result;
  for (int const room : {size, (size + n) / 2, n}) {
    std::unique_ptr<wchar[]> const units(new wchar[static_cast<std::size_t>(room)]);
    EXPECT_EQ(twin.kernels->fromUtf8(bytes.get(), n, units.get(), room), size);
    wstring const text(units.get(), static_cast<std::size_t>(size));
    EXPECT_TRUE(room == size || text == result) << "in room for " << room;
    result = text;
  }
  return result;
}

TEST(TextKernelsUtf8, RandomTextToUtf8) {
  for (Twin const& twin : twins()) {
    SCOPED_TRACE(twin.name);
    RandomText random(31);
    for (int length = 0; length <= 130; ++length) {
      for (RandomUnits const kind : {RandomUnits::kAscii, RandomUnits::kAny, RandomUnits::kAnyWithNul}) {
        for (int round = 0; round < 5; ++round) {
          wstring const text = random.text(length, kind);
          ASSERT_EQ(encoded(twin, text), reference::toUtf8(text)) << "length " << length << " round " << round;
        }
      }
    }
    wstring const large = random.text(100000, RandomUnits::kAny);
    EXPECT_TRUE(reference::toUtf8(large) == encoded(twin, large));
  }
}

TEST(TextKernelsUtf8, SizesAreCountedBeyondAnyLane) {
  constexpr int n = 3 << 18;
  wstring const text(n, 0x20AC);
  for (Twin const& twin : twins()) EXPECT_EQ(twin.kernels->utf8Size(text.data(), n), 3ll * n) << twin.name;
}

TEST(TextKernelsUtf8, RandomBytesFromUtf8) {
  for (Twin const& twin : twins()) {
    SCOPED_TRACE(twin.name);
    RandomText random(32);
    for (int length = 0; length <= 130; ++length) {
      for (int round = 0; round < 12; ++round) {
        std::string const bytes = random.utf8(length);
        ASSERT_EQ(decoded(twin, bytes), reference::fromUtf8(bytes)) << "length " << length << " round " << round;
      }
    }
    std::string const large = random.utf8(100000);
    EXPECT_TRUE(reference::fromUtf8(large) == decoded(twin, large));
  }
}

TEST(TextKernelsUtf8, EveryUnitAmongAscii) {
  // The distance is odd, so the units come to stand at every place of a vector.
  wstring text;
  for (int value = 0; value <= 0xFFFF; ++value) text += static_cast<wchar>(value) + wstring(16, KVW('a'));
  std::string const expected = reference::toUtf8(text);
  for (Twin const& twin : twins()) EXPECT_TRUE(encoded(twin, text) == expected) << twin.name;
}

TEST(TextKernelsUtf8, SurrogatesAtTheEdgesOfBlocks) {
  for (Twin const& twin : twins()) {
    SCOPED_TRACE(twin.name);
    for (std::size_t n = 1; n <= 70; ++n) {
      for (std::size_t place = 0; place < n; ++place) {
        for (wchar const filler : {KVW('a'), wchar(0xD83D), wchar(0xDE00), wchar(0x20AC)}) {
          wstring text(n, filler);
          text[place] = wchar(0xD83D);
          if (place + 1 < n) text[place + 1] = wchar(0xDE00);
          ASSERT_EQ(encoded(twin, text), reference::toUtf8(text)) << n << " " << place;
        }
      }
    }
  }
}

// The units of every character of some planes: where the number has its first and its last bits.
TEST(TextKernelsUtf8, EveryCharacterThereAndBack) {
  for (int plane : {0, 1, 2, 8, 16}) {
    SCOPED_TRACE(plane);
    wstring all;
    for (int low = 0; low <= 0xFFFF; ++low) {
      int const offset = (plane - 1) * 0x10000 + low;
      if (plane > 0) {
        all += static_cast<wchar>(0xD800 + offset / 0x400);
        all += static_cast<wchar>(0xDC00 + offset % 0x400);
      } else if (low < 0xD800 || low > 0xDFFF) {
        all += static_cast<wchar>(low);
      }
    }
    std::string const expected = reference::toUtf8(all);
    for (Twin const& twin : twins()) {
      EXPECT_TRUE(encoded(twin, all) == expected) << twin.name;
      EXPECT_TRUE(decoded(twin, expected) == all) << twin.name;
    }
  }
}

TEST(TextKernelsUtf8, EveryPairOfBytesAndEveryStartOfThree) {
  for (int first = 0x80; first <= 0xFF; ++first) {
    for (int second = 0; second <= 0xFF; ++second) {
      std::string const two = {static_cast<char>(first), static_cast<char>(second)};
      for (char const* tail : {"", "a", "\x80", "\xBF\xBF\xBF"}) {
        std::string const bytes = two + tail;
        wstring const expected = reference::fromUtf8(bytes);
        for (Twin const& twin : twins())
          ASSERT_EQ(decoded(twin, bytes), expected) << twin.name << first << " " << second;
      }
    }
  }
}

TEST(TextKernelsUtf8, OneWrongByteInARunOfLongSequences) {
  std::string run;
  for (int i = 0; i < 20; ++i) run += "\xE2\x82\xAC";
  for (std::size_t place = 0; place < run.size(); ++place) {
    for (char const wrong : {'\0', 'A', '\x80', '\xBF', '\xC2', '\xE0', '\xED', '\xF0', '\xFF'}) {
      std::string bytes = run;
      bytes[place] = wrong;
      wstring const expected = reference::fromUtf8(bytes);
      for (Twin const& twin : twins()) ASSERT_EQ(decoded(twin, bytes), expected) << twin.name << " " << place;
    }
  }
}

TEST(TextKernelsUtf8, OneWrongByteInARunOfFours) {
  std::string run;
  for (int i = 0; i < 20; ++i) run += i % 2 == 0 ? "\xF0\x9F\x98\x80" : "\xF4\x8F\xBF\xBF";
  for (std::size_t place = 0; place < run.size(); ++place) {
    for (int wrong = 0; wrong <= 0xFF; wrong += wrong < 0x7F ? 0x7F : 1) {
      std::string bytes = run;
      bytes[place] = static_cast<char>(wrong);
      wstring const expected = reference::fromUtf8(bytes);
      for (Twin const& twin : twins()) ASSERT_EQ(decoded(twin, bytes), expected) << twin.name << " " << place;
    }
  }
}

TEST(TextKernelsUtf8, OneWrongUnitInARunOfPairs) {
  wstring run;
  for (int i = 0; i < 24; ++i) run += {wchar(i % 2 == 0 ? 0xD83D : 0xDBFF), wchar(i % 3 == 0 ? 0xDC00 : 0xDFFF)};
  for (std::size_t place = 0; place < run.size(); ++place) {
    for (int const wrong : {0, 0x41, 0x7FF, 0x800, 0xD7FF, 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFFFF}) {
      wstring units = run;
      units[place] = static_cast<wchar>(wrong);
      std::string const expected = reference::toUtf8(units);
      for (Twin const& twin : twins()) ASSERT_EQ(encoded(twin, units), expected) << twin.name << " " << place;
    }
  }
}

// A run of each kind of character, cut off at every byte: behind it nothing may be read or written.
TEST(TextKernelsUtf8, RunsEndAtEveryByte) {
  for (char const* const character :
       {"a", "\xC3\xA4", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "a\xC3\xA4\xE2\x82\xAC", "\xE2\x82"}) {
    std::string run;
    while (run.size() < 150) run += character;
    for (std::size_t size = 0; size <= run.size(); ++size) {
      std::string const bytes = run.substr(0, size);
      wstring const units = reference::fromUtf8(bytes);
      for (Twin const& twin : twins()) {
        ASSERT_EQ(decoded(twin, bytes), units) << twin.name << " " << size;
        ASSERT_EQ(encoded(twin, units), reference::toUtf8(units)) << twin.name << " " << size;
      }
    }
  }
}

// The end of a text may be the end of what can be read, and the end of a result that of what can be written.
TEST(TextKernelsUtf8, NothingIsTouchedBehindTheEnd) {
  constexpr std::size_t kMost = 150;
  GuardedBlock const bytesBlock(3 * kMost);
  GuardedBlock const unitsBlock(kMost * sizeof(wchar));
  auto const lastUnits = [&](std::size_t n) { return reinterpret_cast<wchar*>(unitsBlock.last(n * sizeof(wchar))); };
  for (char const* const character : {"a", "\xC3\xA4", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "a\xC3\xA4\xE2\x82\xAC",
                                      "\xE2\x82", "a\xF0\x9F\x98\x80\xC3\xA4\xFF\xE2\x82\xAC\xED\xA0\x80"}) {
    std::string run;
    while (run.size() < kMost) run += character;
    for (std::size_t size = 0; size <= kMost; ++size) {
      std::string const bytes = run.substr(0, size);
      wstring const units = reference::fromUtf8(bytes);
      int const n = static_cast<int>(units.size());
      std::string const back = reference::toUtf8(units);
      for (Twin const& twin : twins()) {
        SCOPED_TRACE(std::string(twin.name) + " " + std::to_string(size));
        char* const from = bytesBlock.last(size);
        std::memcpy(from, bytes.data(), size);
        ASSERT_EQ(twin.kernels->utf16Size(from, static_cast<int>(size)), n);
        ASSERT_EQ(twin.kernels->fromUtf8(from, static_cast<int>(size), lastUnits(units.size()), n), n);
        ASSERT_EQ(wstring(lastUnits(units.size()), units.size()), units);
        ASSERT_EQ(twin.kernels->utf8Size(lastUnits(units.size()), n), static_cast<long long>(back.size()));
        char* const to = bytesBlock.last(back.size());
        ASSERT_EQ(twin.kernels->toUtf8(lastUnits(units.size()), n, to), static_cast<long long>(back.size()));
        ASSERT_EQ(std::string(to, back.size()), back);
      }
    }
  }
}

TEST(TextKernelsUtf8, MalformedBytesByName) {
  struct Row {
    char const* name;
    std::string bytes;
    int replacements;  // what remains is "a" on either side
  } const rows[] = {
      {"a tail alone",
       "a\x80"
       "a",
       1},
      {"two tails alone",
       "a\x80\xBF"
       "a",
       2},
      {"over-long NUL",
       "a\xC0\x80"
       "a",
       2},
      {"over-long three",
       "a\xE0\x80\x80"
       "a",
       3},
      {"over-long four",
       "a\xF0\x80\x80\x80"
       "a",
       4},
      {"a surrogate",
       "a\xED\xA0\x80"
       "a",
       3},
      {"beyond the last character",
       "a\xF4\x90\x80\x80"
       "a",
       4},
      {"a lead of five",
       "a\xF8\x88\x80\x80\x80"
       "a",
       5},
      {"two of three",
       "a\xE2\x82"
       "a",
       1},
      {"three of four",
       "a\xF0\x9F\x98"
       "a",
       1},
      {"two of four",
       "a\xF0\x9F"
       "a",
       1},
      {"a lead alone",
       "a\xC3"
       "a",
       1},
      {"lead after lead",
       "a\xE2\x82\xE2\x82"
       "a",
       2},
      {"FE and FF",
       "a\xFE\xFF"
       "a",
       2},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    wstring const expected = KVW('a') + wstring(static_cast<std::size_t>(row.replacements), wchar(0xFFFD)) + KVW('a');
    EXPECT_EQ(expected, reference::fromUtf8(row.bytes));
    for (Twin const& twin : twins()) EXPECT_EQ(decoded(twin, row.bytes), expected) << twin.name;
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
