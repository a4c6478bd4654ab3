// SPDX-License-Identifier: MIT
//
// The kernels for pages with one byte a character: every twin against one unit at a time.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

#include "tests/kernels/kernel_twins.h"
#include "tests/support/random_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

using strings::ByteRange;

constexpr int kGreatestLength = 150;
constexpr ByteRange kRanges[] = {{0x80, 0x9F}, {0xFF, 0xFF}, {0, 0xFF},   {0x20, 0x20},
                                 {0x80, 0xFF}, {0, 0},       {0x7F, 0x80}};

bool isExcepted(ByteRange range, int number) {
  return range.low <= number && number <= range.high;
}

// Bytes outside the range, as long as there are any.
std::string bytesOutside(ByteRange range, int length, RandomText& random) {
  std::string bytes;
  while (static_cast<int>(bytes.size()) < length) {
    int const number = random.below(256);
    if (!isExcepted(range, number) || (range.low == 0 && range.high == 0xFF)) bytes += static_cast<char>(number);
  }
  return bytes;
}

wstring widened(std::string const& bytes) {
  wstring units;
  for (char const byte : bytes) units += static_cast<unsigned char>(byte);
  return units;
}

// A copy in a block of exactly its size, so that the sanitizers see each access outside of it.
template <class T>
std::unique_ptr<T[]> exactly(std::basic_string<T> const& text) {
  std::unique_ptr<T[]> block(new T[text.size()]);
  if (!text.empty()) std::memcpy(block.get(), text.data(), text.size() * sizeof(T));
  return block;
}

wstring widenedBy(Twin const& twin, std::string const& bytes, ByteRange except) {
  std::unique_ptr<char[]> const from = exactly(bytes);
  std::unique_ptr<wchar[]> const units(new wchar[bytes.size()]);
  int const n = twin.kernels->widen(from.get(), static_cast<int>(bytes.size()), except, units.get());
  return wstring(units.get(), static_cast<std::size_t>(n));
}

std::string narrowedBy(Twin const& twin, wstring const& units, ByteRange except) {
  std::unique_ptr<wchar[]> const from = exactly(units);
  std::unique_ptr<char[]> const bytes(new char[units.size()]);
  int const n = twin.kernels->narrow(from.get(), static_cast<int>(units.size()), except, bytes.get());
  return std::string(bytes.get(), static_cast<std::size_t>(n));
}

TEST(TextKernelsBytes, CopyUpToTheFirstExceptionAtEveryPlace) {
  for (Twin const& twin : twins()) {
    SCOPED_TRACE(twin.name);
    RandomText random(51);
    for (ByteRange const range : kRanges) {
      SCOPED_TRACE(range.low);
      for (int length = 0; length <= kGreatestLength; ++length) {
        std::string bytes = bytesOutside(range, length, random);
        std::size_t end = range.low == 0 && range.high == 0xFF ? 0 : bytes.size();
        if (length > 0 && random.oneIn(2)) {
          end = end == 0 ? 0 : static_cast<std::size_t>(random.below(length));
          bytes[end] = static_cast<char>(random.between(range.low, range.high));
        }
        std::string const expected = bytes.substr(0, end);
        ASSERT_EQ(widenedBy(twin, bytes, range), widened(expected)) << length;
        ASSERT_EQ(narrowedBy(twin, widened(bytes), range), expected) << length;
      }
    }
  }
}

// The vectors of the units of a long text begin at aligned places.
TEST(TextKernelsBytes, LongTextsFromEveryPlaceInMemory) {
  constexpr ByteRange kExcept = {0xE0, 0xEF};
  RandomText random(52);
  for (Twin const& twin : twins()) {
    SCOPED_TRACE(twin.name);
    for (int n : {511, 512, 600}) {
      for (int shift = 0; shift <= 16; ++shift) {
        std::string bytes = bytesOutside(kExcept, n, random);
        std::unique_ptr<wchar[]> const units(new wchar[static_cast<std::size_t>(n + shift)]);
        // At the front, where the first vectors overlap, and at the end.
        for (int place = 0; place <= n; place += place == 36 ? n - 72 : 1) {
          std::string const copied = bytes.substr(0, static_cast<std::size_t>(place));
          char const kept = bytes[static_cast<std::size_t>(place % n)];
          if (place < n) bytes[static_cast<std::size_t>(place)] = '\xE5';
          ASSERT_EQ(twin.kernels->widen(bytes.data(), n, kExcept, units.get() + shift), place);
          ASSERT_EQ(wstring(units.get() + shift, copied.size()), widened(copied)) << place;
          wstring const all = widened(bytes);
          std::memcpy(units.get() + shift, all.data(), all.size() * sizeof(wchar));
          std::string back(bytes.size(), '\0');
          ASSERT_EQ(twin.kernels->narrow(units.get() + shift, n, kExcept, &back[0]), place);
          ASSERT_EQ(back.substr(0, copied.size()), copied) << place;
          bytes[static_cast<std::size_t>(place % n)] = kept;
        }
      }
    }
  }
}

TEST(TextKernelsBytes, EveryByteAgainstEveryRange) {
  std::string all;
  for (int number = 0; number <= 0xFF; ++number) all += static_cast<char>(number);
  for (Twin const& twin : twins()) {
    SCOPED_TRACE(twin.name);
    for (int low = 0; low <= 0xFF; low += 17) {
      for (int high = low; high <= 0xFF; high += 15) {
        ByteRange const range = {static_cast<unsigned char>(low), static_cast<unsigned char>(high)};
        for (int number = 0; number <= 0xFF; ++number) {
          std::string const bytes(32, static_cast<char>(number));
          std::size_t const copied = isExcepted(range, number) ? 0 : bytes.size();
          ASSERT_EQ(widenedBy(twin, bytes, range).size(), copied) << low << " " << high << " " << number;
          ASSERT_EQ(narrowedBy(twin, widened(bytes), range).size(), copied) << low << " " << high << " " << number;
        }
      }
    }
  }
}

TEST(TextKernelsBytes, EveryUnitBeyondLatin1Ends) {
  constexpr ByteRange kLast = {0xFF, 0xFF};
  for (Twin const& twin : twins()) {
    SCOPED_TRACE(twin.name);
    for (int unit = 0; unit <= 0xFFFF; ++unit) {
      std::size_t const place = static_cast<std::size_t>(unit) % 40;
      wstring text(41, KVW('a'));
      text[place] = static_cast<wchar>(unit);
      int const wide = unit > 0xFF ? static_cast<int>(place) : 41;
      ASSERT_EQ(twin.kernels->findBeyondLatin1(text.data(), 41), wide) << unit;
      ASSERT_EQ(narrowedBy(twin, text, kLast).size(), unit >= 0xFF ? place : 41u) << unit;
    }
  }
}

TEST(TextKernelsBytes, FirstUnitBeyondLatin1AtEveryPlace) {
  for (Twin const& twin : twins()) {
    SCOPED_TRACE(twin.name);
    for (int length = 0; length <= kGreatestLength; ++length) {
      wstring text(static_cast<std::size_t>(length), wchar(0xE4));
      std::unique_ptr<wchar[]> const units = exactly(text);
      ASSERT_EQ(twin.kernels->findBeyondLatin1(units.get(), length), length);
      for (int place = 0; place < length; ++place) {
        units[static_cast<std::size_t>(place)] = place % 2 == 0 ? wchar(0x100) : wchar(0xFFFF);
        ASSERT_EQ(twin.kernels->findBeyondLatin1(units.get(), length), place) << length;
        units[static_cast<std::size_t>(place)] = 0xFF;
      }
    }
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
