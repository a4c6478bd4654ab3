// SPDX-License-Identifier: MIT
//
// Short texts of ASCII are told from all others, and converted as the scalar kernels convert them; nothing outside their
// range is read or written.
#include "kvbase/kernels/short_ascii.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

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

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
