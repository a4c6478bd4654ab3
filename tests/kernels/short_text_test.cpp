// SPDX-License-Identifier: MIT
//
// Short texts of ASCII, and those of plain characters of a page, are told from all others, and converted as the scalar
// kernels convert them; nothing outside their range is read or written.
#include "kvbase/kernels/short_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "kvbase/kernels/text_kernels.h"
#include "tests/support/random_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

using UnitBlock = std::vector<wchar>;
using ByteBlock = std::vector<char>;

constexpr int kBeyond = strings::kLongestInPlace + 10;

bool isConvertedInPlace(int n) {
  return n >= strings::kHalf && n <= strings::kLongestInPlace;
}

TEST(ShortAscii, OneOtherCharacterAnywhere) {
  for (int n = 1; n <= kBeyond; ++n) {
    UnitBlock units(static_cast<std::size_t>(n), 0x7F);
    ByteBlock bytes(static_cast<std::size_t>(n), 0x7F);
    EXPECT_EQ(strings::isShortAscii(units.data(), n), isConvertedInPlace(n)) << n;
    EXPECT_EQ(strings::isShortAscii(bytes.data(), n), isConvertedInPlace(n)) << n;
    for (std::size_t at = 0; at < units.size(); ++at) {
      for (unsigned int const other : {0x80u, 0x100u, 0x8041u}) {
        units[at] = static_cast<wchar>(other);
        EXPECT_FALSE(strings::isShortAscii(units.data(), n)) << other << " at " << at << " of " << n;
        units[at] = 0;
      }
      bytes[at] = '\x80';
      EXPECT_FALSE(strings::isShortAscii(bytes.data(), n)) << at << " of " << n;
      bytes[at] = 0;
    }
  }
}

TEST(ShortAscii, TheSameCharactersInBothDirections) {
  RandomText random(53);
  for (int n = strings::kHalf; n <= strings::kLongestInPlace; ++n) {
    wstring const text = random.text(n, RandomUnits::kAscii);
    UnitBlock const units(text.begin(), text.end());
    ByteBlock bytes(units.size());
    strings::narrowShortAscii(units.data(), n, bytes.data());
    EXPECT_TRUE(std::equal(units.begin(), units.end(), bytes.begin())) << n;
    UnitBlock back(units.size());
    strings::widenShortAscii(bytes.data(), n, back.data());
    EXPECT_EQ(back, units) << n;
  }
}

constexpr strings::ByteRange kOthers[] = {{0x80, 0x9F}, {0xFF, 0xFF}, {0, 0xFF}, {0, 0}, {0x7F, 0x80}};

// What the scalar kernels copy decides whether a text is converted in place, and into what.
void expectSameAsScalar(ByteBlock const& bytes, UnitBlock const& units, strings::ByteRange others) {
  int const n = static_cast<int>(bytes.size());
  UnitBlock wide(bytes.size());
  UnitBlock expectedWide(bytes.size());
  bool const isPlain = strings::kScalarKernels.widen(bytes.data(), n, others, expectedWide.data()) == n;
  ASSERT_EQ(strings::widenShort(bytes.data(), n, others, wide.data()), isPlain && isConvertedInPlace(n));
  if (isPlain && isConvertedInPlace(n)) ASSERT_EQ(wide, expectedWide);

  ByteBlock narrow(units.size());
  ByteBlock expectedNarrow(units.size());
  bool const hasBytes = strings::kScalarKernels.narrow(units.data(), n, others, expectedNarrow.data()) == n;
  ASSERT_EQ(strings::narrowShort(units.data(), n, others, narrow.data()), hasBytes && isConvertedInPlace(n));
  if (hasBytes && isConvertedInPlace(n)) ASSERT_EQ(narrow, expectedNarrow);

  bool const isLatin1 = strings::kScalarKernels.findBeyondLatin1(units.data(), n) == n;
  ASSERT_EQ(strings::isShortLatin1(units.data(), n), isLatin1 && isConvertedInPlace(n));
}

TEST(ShortPageText, OneOtherCharacterAnywhere) {
  RandomText random(54);
  for (strings::ByteRange const others : kOthers) {
    for (int n = 1; n <= kBeyond; ++n) {
      ByteBlock bytes;
      for (int i = 0; i < n; ++i) bytes.push_back(static_cast<char>(random.between(0x20, 0x7E)));
      if (random.oneIn(2)) std::fill(bytes.begin(), bytes.end(), static_cast<char>(random.between(0xA0, 0xFE)));
      UnitBlock units;
      for (char const byte : bytes) units.push_back(static_cast<unsigned char>(byte));
      expectSameAsScalar(bytes, units, others);
      for (std::size_t at = 0; at < units.size(); ++at) {
        SCOPED_TRACE(::testing::Message() << at << " of " << n << ", range from " << int{others.low});
        char const byte = bytes[at];
        wchar const unit = units[at];
        for (int const number : {int{others.low}, int{others.high}, 0x7F, 0xFF, 0x100, 0x8041, 0xFFFF}) {
          bytes[at] = static_cast<char>(number);
          units[at] = static_cast<wchar>(number);
          expectSameAsScalar(bytes, units, others);
        }
        bytes[at] = byte;
        units[at] = unit;
      }
    }
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
