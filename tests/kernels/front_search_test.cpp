// SPDX-License-Identifier: MIT
//
// Searches that begin in place give what the scalar kernels give, and read nothing outside their range.
#include "kvbase/kernels/front_search.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tests/support/random_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

using Units = std::vector<wchar>;

// Two texts of the same length, in exact blocks, that agree but for one unit in most cases.
struct Pair {
  Pair(RandomText& random, int length, RandomUnits kind) {
    wstring const text = random.text(length, kind);
    first.assign(text.begin(), text.end());
    second = first;
    if (length > 0 && !random.oneIn(3)) second[static_cast<std::size_t>(random.below(length))] = random.unit(kind);
  }
  Units first;
  Units second;
};

template <class Check>
void forPairs(Check check) {
  constexpr RandomUnits kKinds[] = {RandomUnits::kFew, RandomUnits::kAscii, RandomUnits::kAny,
                                    RandomUnits::kAnyWithNul};
  RandomText random(41);
  for (int round = 0; round < 20; ++round) {
    for (int length = 0; length <= 70; ++length) {
      for (RandomUnits const kind : kKinds) check(random, Pair(random, length, kind), length);
    }
  }
}

TEST(FrontSearch, MismatchIsThatOfTheScalarKernel) {
  forPairs([](RandomText&, Pair const& pair, int n) {
    wchar const* const a = pair.first.data();
    wchar const* const b = pair.second.data();
    int const expected = strings::kScalarKernels.mismatch(a, b, n);
    int const folded = strings::kScalarKernels.mismatchIgnoringCase(a, b, n);
    ASSERT_EQ(strings::mismatchFromFront(a, b, n), expected) << n;
    ASSERT_EQ(strings::mismatchIgnoringCaseFromFront(a, b, n), folded) << n;
    if (n < strings::kFrontUnits) return;
    ASSERT_EQ(strings::mismatchInFront(a, b), std::min(expected, strings::kFrontUnits)) << n;
    ASSERT_EQ(strings::mismatchIgnoringCaseInFront(a, b), std::min(folded, strings::kFrontUnits)) << n;
    if (expected >= strings::kFrontUnits) ASSERT_EQ(strings::mismatchInPlaceBehindFront(a, b, n), expected) << n;
    if (folded >= strings::kFrontUnits) ASSERT_EQ(strings::mismatchIgnoringCaseBehindFront(a, b, n), folded) << n;
  });
}

// Random texts differ early for the most part.
TEST(FrontSearch, AnyOneUnitDiffers) {
  for (int n = strings::kFrontUnits; n <= 130; ++n) {
    Units const first(static_cast<std::size_t>(n), KVW('a'));
    for (int at = 0; at < n; ++at) {
      for (wchar const unit : {KVW('b'), wchar(0)}) {
        Units second = first;
        second[static_cast<std::size_t>(at)] = unit;
        ASSERT_EQ(strings::mismatchFromFront(first.data(), second.data(), n), at) << n;
        if (at < strings::kFrontUnits) continue;
        ASSERT_EQ(strings::mismatchInPlaceBehindFront(first.data(), second.data(), n), at) << n;
        ASSERT_EQ(strings::mismatchInPlaceBehindFront(second.data(), second.data(), n), unit == 0 ? at : n) << n;
        ASSERT_EQ(strings::findUnitFromFront(second.data(), KVW('b'), n), at) << n;
      }
    }
  }
}

TEST(FrontSearch, LengthAtAnyAlignment) {
  for (std::size_t offset = 0; offset < 16; ++offset) {
    for (int length = 0; length <= 40; ++length) {
      Units units(offset + static_cast<std::size_t>(length) + 1, KVW('a'));
      std::fill_n(units.begin(), offset, wchar(0));  // NULs in front of the text are not its end
      units.back() = 0;
      ASSERT_EQ(strings::lengthFromFront(units.data() + offset), length) << offset;
    }
  }
}

TEST(FrontSearch, UnitIsThatOfTheScalarKernel) {
  forPairs([](RandomText& random, Pair const& pair, int n) {
    for (wchar const unit : {KVW('a'), wchar(0), wchar(0xFFFF), random.unit(RandomUnits::kAscii)})
      ASSERT_EQ(strings::findUnitFromFront(pair.first.data(), unit, n),
                strings::kScalarKernels.findUnit(pair.first.data(), unit, n))
          << n;
  });
}

TEST(FrontSearch, TextIsThatOfTheScalarKernel) {
  forPairs([](RandomText& random, Pair const& pair, int n) {
    for (int m = 1; m <= 9; ++m) {
      wstring needle = random.text(m, random.oneIn(2) ? RandomUnits::kFew : RandomUnits::kAscii);
      // Half of the needles are in the text.
      if (m <= n && random.oneIn(2))
        needle.assign(pair.first.data() + random.below(n - m + 1), static_cast<std::size_t>(m));
      if (needle.find(wchar(0)) != wstring::npos) continue;
      ASSERT_EQ(strings::findTextFromFront(pair.first.data(), n, needle.data(), m),
                strings::kScalarKernels.findText(pair.first.data(), n, needle.data(), m))
          << n << ", " << m;
    }
  });
}

TEST(FrontSearch, RangeIsThatOfTheScalarKernel) {
  forPairs([](RandomText&, Pair const& pair, int n) {
    ASSERT_EQ(strings::findRangeFromFront(pair.first.data(), n, KVW('0'), KVW('9')),
              strings::kScalarKernels.findRange(pair.first.data(), n, KVW('0'), KVW('9')))
        << n;
    ASSERT_EQ(strings::findRangeFromFront(pair.first.data(), n, KVW('b'), 0x7F),
              strings::kScalarKernels.findRange(pair.first.data(), n, KVW('b'), 0x7F))
        << n;
  });
}

TEST(FrontSearch, EveryUnitIsInItsRange) {
  for (int value = 0; value <= 0xFFFF; ++value) {
    Units const text(8, static_cast<wchar>(value));
    for (wchar const low : {wchar(0), KVW('-'), KVW('0'), wchar(0x7F)})
      ASSERT_EQ(strings::findRangeFromFront(text.data(), 8, low, std::max(low, KVW('9'))),
                strings::kScalarKernels.findRange(text.data(), 8, low, std::max(low, KVW('9'))))
          << value;
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
